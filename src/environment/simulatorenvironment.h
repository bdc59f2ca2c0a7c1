#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/simulatorregistry.h"

namespace fleetwright {

// The colours of the status panels; the colour carries the meaning.
enum class PanelColour
{
    Green,
    Red,
    Grey,
};

// One paint of a panel of StatusBar1, in white text centred on the colour. clearTextFirst: the panel's own
// text is emptied before it is painted (the FS9 panel is).
struct PanelPaint
{
    int panel = 0;
    std::u16string text;
    PanelColour colour = PanelColour::Grey;
    bool clearTextFirst = false;

    bool operator==(const PanelPaint &) const = default;
};

// The key prefix under which a 32-bit program finds the simulators: "SOFTWARE\Wow6432Node\Microsoft\" on a
// 64-bit system (Is64BitOS), else "SOFTWARE\Microsoft\".
std::u16string registryPrefixFor(bool is64BitOS);

// What start-up learns about the two simulators on this machine: their folders, the sim folder list of FSX,
// both airlines.cfg files as raw lines, and what the form is to show. The form applies it in this order:
// FSX's panels, options and combo, then FS9's, then the panels in the order of panelPaints.
//
// All paths are native. Where a folder is built from a simulator folder (its "Aircraft", "SimObjects",
// "Effects", a relative SimObjectPaths value) and exists under another spelling of case, the existing
// spelling is used; on Windows every path is exactly the text the simulator folder and the names make.
struct SimulatorEnvironment
{
    // The registry texts, trimmed and with one trailing backslash cut (a second one stays): "C:\FS9" or
    // "C:\FS9\". Empty when the value is missing or empty.
    std::u16string Fs9Folder;
    std::u16string FsxFolder;

    std::u16string Fs9AircraftRoot;   // FS9 folder + "Aircraft"; empty when FS9 was not found
    std::u16string FsxSimObjectsRoot; // FSX folder + "SimObjects"; empty when FSX was not found
    std::u16string FsxCfgPath;        // the user's fsx.cfg, set when FSX was found, existing or not
    std::u16string Fs9EffectsFolder;
    std::u16string FsxEffectsFolder;

    // combo_SimFolder: its entries, and the full path of each by the same index.
    std::vector<std::u16string> simFolderEntries;
    std::vector<std::u16string> SimFolderPaths;
    // combo_SimFolder.Enabled when start-up sets it; nothing when the combo keeps its design state.
    std::optional<bool> simFolderEnabled;

    // Enabled only when the simulator was found; otherwise the buttons keep their design state (disabled,
    // not selected).
    bool fs9OptionEnabled = false;
    bool fs9OptionSelected = false;
    bool fsxOptionEnabled = false;
    bool fsxOptionSelected = false;

    // The airlines.cfg files: found and loaded, path (empty when not found), lines split at CR LF.
    bool Fs9Found = false;
    bool FsxFound = false;
    std::u16string Fs9AirlinesPath;
    std::u16string FsxAirlinesPath;
    std::vector<std::u16string> Fs9Airlines;
    std::vector<std::u16string> FsxAirlines;

    std::vector<PanelPaint> panelPaints;

    // Errors met and skipped on the way (a file that cannot be read, a name that cannot be a path), one
    // line each. Start-up goes on past them and shows none.
    std::vector<std::u16string> skippedErrors;

    // FSX detection, then FS9 detection. registryPrefix is RegistryPrefix; appDataFolder is the user's
    // roaming application data folder (GetSpecialFolder(0x1A)), where FSX keeps fsx.cfg. Never throws: from
    // the FSX registry read on, every error is skipped and the next step runs.
    static SimulatorEnvironment detect(const platform::RegistryReader &registry, std::u16string_view registryPrefix,
                                       std::u16string_view appDataFolder);
};

// Whether one of the combo's entries equals text, exactly and case-sensitively. The entries are counted with
// a 16-bit counter, as the combo's own index is: past 32768 entries without a match that counter overflows,
// which throws RuntimeError 6.
bool CheckIfExistInCombo(const std::vector<std::u16string> &entries, const std::u16string &text);

// Lines of a text file decoded from Windows-1252, split at CR LF only; a file that ends in CR LF gives a last
// element that is empty, and an empty file gives no lines at all.
std::vector<std::u16string> splitAtCrLf(std::u16string_view text);

} // namespace fleetwright
