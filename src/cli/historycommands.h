#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace fleetwright {

// fleetwright-check history FOLDER: the folder's journaled operations, newest first, one line each:
//
//     12<TAB>2026-11-25 16:02:41<TAB>Delete 2 sections<TAB>aircraft.cfg, aircraft.corvane
//     11<TAB>2026-11-25 15:58:10<TAB>Renumber<TAB>aircraft.cfg<TAB>undone
//
// The time is local; files are named from the folder. Exit 0, also when nothing is journaled.
int runHistoryCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);

// fleetwright-check undo FOLDER [--force], redo FOLDER [--force] and restore FOLDER --before ID [--force]:
// the program's Undo, Redo and History's restore. Exit 0 when done; CHECK_EXIT_NO_REPORT (2), with the reason
// on err, when there is nothing to undo or redo, the ID is not one of the folder's operations, a file was
// changed outside since its journaled change and --force is not given (nothing is written then), or a file
// could not be written.
int runUndoCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);
int runRedoCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);
int runRestoreCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);

// The folder an operation is journaled under: absolute, without "." and ".." steps or a separator at the end,
// so that "renumber ." and "undo ./" mean the same folder.
std::filesystem::path journalFolder(const std::filesystem::path &folder);

extern const char *const HISTORY_OPTIONS_HELP;

} // namespace fleetwright
