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

// fleetwright-check remove-keys FOLDER KEY... [--no-backup]: the delete of the key removal dialog with the
// given keys marked, as the dialog lists them (trimmed, lower case); keys no [fltsim.x] section holds are
// named on err and skipped. Prints the keys and the dialog's report. Exit codes as renumber's.
int runRemoveKeysCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);

// fleetwright-check air-type FILE [--set 0|1|2]: the aircraft type of an .air file as the form reads it, or
// the form's patch of it, in place and without a backup. CHECK_EXIT_NO_REPORT when the file is missing,
// cannot be opened or, with --set, has no aircraft section.
int runAirTypeCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);

// fleetwright-check mdl-info FILE: the version and radius of a model file as the form shows them, read by the
// form's routine, so the file has to stand in a "model" or "model.NAME" folder.
int runMdlInfoCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);

extern const char *const EDIT_OPTIONS_HELP;

} // namespace fleetwright
