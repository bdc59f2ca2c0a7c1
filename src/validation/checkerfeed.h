#pragma once

#include <optional>
#include <string>

#include "core/runtimeerror.h"

namespace fleetwright {

class clsIniFile;
class Dialogs;

// What a validation run reads from the main form besides the folder: the number of rows of ListView1 and the
// text of txt_FSXVersion, which picks the texture format. Moving the folder browser to a folder leaves them as
// the load and the opening of row 1 set them:
//
//     ResetValues         txt_FSXVersion ""            (so an earlier folder's model never counts)
//     the folder load     rows: one per [fltsim.x] section
//     ListView1_DblClick  row 1: model.cfg "normal=" -> model\<name>.mdl, tag "MDLX" -> "FSX",
//                         "MDL8"/"MDL9" -> "FS8/9", else "n/a"; a missing or unreadable file leaves ""
struct ValidationFeed
{
    int gridRowCount = 0;
    std::u16string textureFormatText;
    // The fault that ended the folder load (a wing_span too large for a number). The rows read up to it stay
    // in the grid and row 1 is not opened, as in the form.
    std::optional<RuntimeError> loadFault;
};

// Loads folder (native, as the folder browser holds it) into AircraftIni as the folder browser's change does
// and opens row 1 as ListView1_DblClick does, for a validation run without the main form: the command-line
// checker and the batch. The boxes the form would show on the way (a load fault in the common error box, a
// model.cfg that will not read, a model file that cannot be opened) go through dialogs; none stops the feed.
// Nothing is written: the settings value "Path" and the air file's type stay the form's business.
ValidationFeed feedValidationFromFolder(const std::u16string &folder, clsIniFile &AircraftIni, Dialogs &dialogs);

} // namespace fleetwright
