#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "cli/checkercommands.h"

namespace fleetwright::test {

// One fleetwright-check command run in-process: its exit code and what it wrote to either stream.
struct CheckRun
{
    int exitCode;
    std::string out;
    std::string err;
};

inline CheckRun check(const std::vector<std::string> &args)
{
    std::ostringstream out;
    std::ostringstream err;
    const int exitCode = runCheckerCommand(args, out, err);
    return {exitCode, out.str(), err.str()};
}

inline const std::string TRY = "\nTry 'fleetwright-check --help' for the list of commands.\n";
inline const std::string ALL_ON(23, '1');

// Simulators and the stored options out of the way: every run says what it checks against.
inline std::vector<std::string> hermetic(std::vector<std::string> args, const std::string &options = ALL_ON)
{
    args.insert(args.end(), {"--fs9", "", "--fsx", "", "--options", options});
    return args;
}

} // namespace fleetwright::test
