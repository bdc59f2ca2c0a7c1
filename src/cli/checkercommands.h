#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace fleetwright {

// Exit codes of fleetwright-check.
inline constexpr int CHECK_EXIT_OK = 0;        // done; a validation report without errors
inline constexpr int CHECK_EXIT_ERRORS = 1;    // the validation report has errors
inline constexpr int CHECK_EXIT_NO_REPORT = 2; // a folder was refused, or its run ended without a report
inline constexpr int CHECK_EXIT_USAGE = 64;    // no command, an unknown one, or wrong arguments

// Runs one fleetwright-check command. args are the arguments after the program name, as the user typed
// them; regular output (a report sent to "-") goes to out, messages and usage errors to err. Returns the exit
// code.
int runCheckerCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);

} // namespace fleetwright
