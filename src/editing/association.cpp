#include "editing/association.h"

#include "core/aircraftfilestore.h"
#include "core/clsinifile.h"
#include "core/runtimeerror.h"

namespace fleetwright {

namespace {

constexpr char16_t DEFAULT_ENTRY[] = u"<default>";

// The default folder is written as one blank, not as an empty value.
std::u16string folderValue(const std::u16string &picked)
{
    return picked == DEFAULT_ENTRY ? std::u16string(u" ") : picked;
}

} // namespace

bool associateFiles(clsIniFile &AircraftIni, const AssociationInput &input, Dialogs &dialogs)
{
    if (!input.rowSection)
        throw RuntimeError::objectVariableNotSet(u"cmd_Associate_Click");
    if (!confirmUpdate(dialogs, input.ConfirmUpdates))
        return false;
    MakeBackup(AircraftIni.path(), input.AutoBackupOn);

    clsIniFile::Batch batch(AircraftIni);
    if (!input.texture.empty()) {
        AircraftIni.setSection(*input.rowSection);
        AircraftIni.setKey(u"texture");
        AircraftIni.setValue(folderValue(input.texture));
    }
    if (!input.model.empty()) {
        AircraftIni.setKey(u"model");
        AircraftIni.setValue(folderValue(input.model));
    }
    if (!input.airfile.empty()) {
        AircraftIni.setKey(u"sim");
        AircraftIni.setValue(input.airfile);
    }
    return true;
}

} // namespace fleetwright
