#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace fleetwright {

// Exit codes of fleetwright-check.
inline constexpr int CHECK_EXIT_OK = 0;
inline constexpr int CHECK_EXIT_USAGE = 2; // no command, an unknown one, or wrong arguments

// Runs one fleetwright-check command. args are the arguments after the program name, as the user typed
// them; regular output goes to out, usage errors to err. Returns the exit code.
int runCheckerCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);

} // namespace fleetwright
