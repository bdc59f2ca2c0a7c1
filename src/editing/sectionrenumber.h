#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace fleetwright {

class Dialogs;
class clsIniFile;

// What the delete needs of the grid: the selected row, each row's text (the section name in capitals) and
// sub-item 1 (the title), and the check marks, all by row from 0.
struct GridRows
{
    std::optional<std::size_t> selectedRow;
    std::vector<std::u16string> texts;
    std::vector<std::u16string> titles;
    std::vector<bool> checked;
};

// Numbers every [fltsim.x] header of the file from 0 in file order through the one whole-file rewrite there
// is: the file is read as a line array (comments cut, lines trimmed), headers are replaced, and every line is
// written back with CR LF, so all "//" comments and line-end blanks go, in every section. The new file
// replaces the old one whole, never half-written.
//
// Throws RuntimeError, which ends the operation with the file as it stood: 9 "Subscript out of range" for a
// missing or empty file, 6 "Overflow" for more than 32768 lines, 75 "Path/File access error" when the file
// cannot be opened for writing (read-only), 57 "Device I/O error" when the new file cannot be written.
void Renumber_fltsim(const std::u16string &aircraftCfgPath, bool autoBackupOn, Dialogs *dialogs = nullptr);

// The user's command: asks "Are you sure?" when confirmUpdates, then renumbers. True when the file was
// renumbered and the folder is to be reloaded.
bool FlightSimSectionRenumber(const std::u16string &aircraftCfgPath, bool confirmUpdates, bool autoBackupOn,
                              Dialogs &dialogs);

// Deletes the checked variation sections (row r stands for the section in place r of the whole file), or the
// selected row's section when none is checked, then renumbers. The backup comes before the question, so No
// leaves one behind. True when sections were deleted and renumbered and the folder is to be reloaded; false
// when nothing was selected or the answer was No. Faults of the rewrite throw as Renumber_fltsim's.
bool FlightSimSectionDelete(clsIniFile &AircraftIni, const GridRows &grid, bool confirmUpdates, bool autoBackupOn,
                            Dialogs &dialogs);

} // namespace fleetwright
