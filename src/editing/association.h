#pragma once

#include <optional>
#include <string>

namespace fleetwright {

class Dialogs;
class clsIniFile;

// What the three boxes of the texture, model and air file tab hold: the picked name, "<default>", or empty
// when nothing is picked.
//
//     combo_Texture  "Blue"       ->  texture=Blue
//     combo_Model    "<default>"  ->  model=         (one blank: the model folder without a suffix)
//     combo_Airfile  "sky.air"    ->  sim=sky.air    (as it stands)
struct AssociationInput
{
    // The text of the selected grid row; nothing when no row is selected.
    std::optional<std::u16string> rowSection;
    std::u16string texture;
    std::u16string model;
    std::u16string airfile;
    bool ConfirmUpdates = true;
    bool AutoBackupOn = true;
};

// The write of the cmd_Associate click, up to the reload: asks "Are you sure?" when ConfirmUpdates, takes the
// backup, and writes what was picked. Returns false when the answer was No (nothing written, no backup).
//
// Only a picked texture sets the section to the row's. With no texture picked, model and sim go to whatever
// section AircraftIni was last left on: after a row was opened that is the row's own, after DoSortKeys the
// last variation section. Users have long met it that way, so it stays.
//
// No selected row throws RuntimeError 91, and a failed backup the error of MakeBackup; both end the
// operation before anything is written.
bool associateFiles(clsIniFile &AircraftIni, const AssociationInput &input, Dialogs &dialogs);

} // namespace fleetwright
