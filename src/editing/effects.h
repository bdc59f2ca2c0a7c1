#pragma once

#include <array>
#include <optional>
#include <string>

#include "folderview/folderload.h"

namespace fleetwright {

class Dialogs;
class clsIniFile;

// The effects tab: the eleven effects of [effects] and the description of the open variation.
//
//     box "fx_wake", check off   ->  wake=fx_wake
//     box "fx_wake", check on    ->  wake=fx_wake,1      the effect runs only once
//     box "",        check off   ->  wake=               the effect is disabled; the key stays
//     box "",        check on    ->  wake=,1

struct EffectDefaultValue
{
    const char16_t *name;
    bool runsOnce;
};
// What "Set default effect" puts in, by the index of EFFECT_KEYS.
extern const std::array<EffectDefaultValue, EFFECT_COUNT> EFFECT_DEFAULTS;

// The effect files (the boxes txt_effects) and whether each runs once (the checks chk_Effect), by index.
struct EffectFields
{
    std::array<std::u16string, EFFECT_COUNT> effectNames;
    std::array<bool, EFFECT_COUNT> effectRunsOnce {};
};

// The value written for a box and its check.
std::u16string effectValue(const std::u16string &box, bool runsOnce);

// The default name and check into the element EffectIndex; nothing when no box was entered (-1). The file
// is not touched.
void EffectDefault(EffectFields &fields, int EffectIndex);
// Empties the box and clears the check of the element EffectIndex. It has no guard of its own: an index
// outside 0 to 10 throws RuntimeError 9 "Subscript out of range".
void EffectDisable(EffectFields &fields, int EffectIndex);

// The name that the effect file chosen by the user puts into the box of EffectIndex: what stands behind the
// file name's last folder separator, less a ".fx" in any case. Nothing when the user cancels, and nothing
// with a message when no box was entered yet. The dialog opens in the folder of aircraftCfgPath.
std::optional<std::u16string> EffectSelect(int EffectIndex, const std::u16string &aircraftCfgPath, Dialogs &dialogs);
// "C:\x\FX_TEST.FX" gives "FX_TEST"; "abc" gives "abc".
std::u16string effectNameFromFile(const std::u16string &fileName);

inline const std::u16string SELECT_EFFECT_BOX_FIRST =
    u"Please click in a effect textbox first to select the effect you want to update";
inline const std::u16string EFFECT_FILE_FILTER = u"Effect (*.fx) | *.fx";

// What cmd_Effect_Update writes: the selected row's position from 1 (none when no row is selected), the
// description box and the description as the row was opened, the eleven boxes and checks.
struct EffectUpdateInput
{
    std::optional<int> selectedPosition;
    std::u16string description;
    std::u16string DescriptionOnLoad;
    EffectFields fields;
};

// Asks (when confirmUpdates), takes the backup, then writes a changed description into [fltsim.<position
// less 1>], named by the row's place and not its section, and all eleven effect keys, so a key the section
// lacks is added. True when it wrote, and the caller reloads. No selected row throws RuntimeError 91 after the
// backup; a read-only file loses the keys without a word.
bool cmd_Effect_Update(clsIniFile &AircraftIni, const EffectUpdateInput &input, bool confirmUpdates, bool autoBackupOn,
                       Dialogs &dialogs);

} // namespace fleetwright
