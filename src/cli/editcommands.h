#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace fleetwright {

// fleetwright-check renumber FOLDER [--no-backup] and sort-keys FOLDER [--no-backup]: the very routines the
// program's menus run, without a question, with the backup the program takes unless --no-backup. Exit 0 when
// done, CHECK_EXIT_NO_REPORT (2) when aircraft.cfg is missing or cannot be read or written, CHECK_EXIT_USAGE
// for a wrong command line.
int runRenumberCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);
int runSortKeysCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);

extern const char *const EDIT_OPTIONS_HELP;

} // namespace fleetwright
