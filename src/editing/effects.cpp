#include "editing/effects.h"

#include "core/aircraftfilestore.h"
#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"

namespace fleetwright {

namespace {

std::u16string decimalText(int number)
{
    const std::string digits = std::to_string(number);
    return std::u16string(digits.begin(), digits.end());
}

} // namespace

const std::array<EffectDefaultValue, EFFECT_COUNT> EFFECT_DEFAULTS = {{
    {u"fx_wake", false},
    {u"fx_spray", false},
    {u"fx_tchdrt", false},
    {u"fx_sparks", false},
    {u"fx_tchdwn", true},
    {u"fx_contrail_l", false},
    {u"fx_engstrt", true},
    {u"fx_vaportrail_l", false},
    {u"fx_vaportrail_r", false},
    {u"fx_wingtipvortice_l", true},
    {u"fx_wingtipvortice_r", true},
}};

std::u16string effectValue(const std::u16string &box, bool runsOnce)
{
    return runsOnce ? box + u",1" : box;
}

void EffectDefault(EffectFields &fields, int EffectIndex)
{
    if (EffectIndex < 0 || EffectIndex >= static_cast<int>(EFFECT_COUNT))
        return;
    const auto index = static_cast<std::size_t>(EffectIndex);
    fields.effectNames[index] = EFFECT_DEFAULTS[index].name;
    fields.effectRunsOnce[index] = EFFECT_DEFAULTS[index].runsOnce;
}

void EffectDisable(EffectFields &fields, int EffectIndex)
{
    if (EffectIndex < 0 || EffectIndex >= static_cast<int>(EFFECT_COUNT))
        throw RuntimeError::subscriptOutOfRange(u"EffectDisable");
    const auto index = static_cast<std::size_t>(EffectIndex);
    fields.effectNames[index].clear();
    fields.effectRunsOnce[index] = false;
}

std::u16string effectNameFromFile(const std::u16string &fileName)
{
    const std::size_t separator = fileName.find_last_of(u"\\/");
    std::u16string name = separator == std::u16string::npos ? fileName : fileName.substr(separator + 1);
    if (name.size() >= 3 && LCase(name.substr(name.size() - 3)) == u".fx")
        name.resize(name.size() - 3);
    return name;
}

std::optional<std::u16string> EffectSelect(int EffectIndex, const std::u16string &aircraftCfgPath, Dialogs &dialogs)
{
    if (EffectIndex == -1) {
        dialogs.information(SELECT_EFFECT_BOX_FIRST, u"");
        return std::nullopt;
    }
    const std::size_t separator = aircraftCfgPath.find_last_of(u"\\/");
    const std::u16string folder =
        separator == std::u16string::npos ? aircraftCfgPath : aircraftCfgPath.substr(0, separator);
    const std::optional<std::u16string> file = dialogs.openFile(u"", EFFECT_FILE_FILTER, folder);
    if (!file || file->empty())
        return std::nullopt;
    return effectNameFromFile(*file);
}

bool cmd_Effect_Update(clsIniFile &AircraftIni, const EffectUpdateInput &input, bool confirmUpdates, bool autoBackupOn,
                       Dialogs &dialogs)
{
    if (!confirmUpdate(dialogs, confirmUpdates))
        return false;
    MakeBackup(AircraftIni.path(), autoBackupOn);
    if (!input.selectedPosition)
        throw RuntimeError::objectVariableNotSet(u"cmd_Effect_Update_Click");
    clsIniFile::Batch batch(AircraftIni);
    if (input.description != input.DescriptionOnLoad) {
        AircraftIni.setSection(u"fltsim." + decimalText(*input.selectedPosition - 1));
        AircraftIni.setKey(u"description");
        AircraftIni.setValue(input.description);
    }
    AircraftIni.setSection(u"effects");
    for (std::size_t k = 0; k < EFFECT_COUNT; ++k) {
        AircraftIni.setKey(EFFECT_KEYS[k]);
        AircraftIni.setValue(effectValue(input.fields.effectNames[k], input.fields.effectRunsOnce[k]));
    }
    batch.commit();
    return true;
}

} // namespace fleetwright
