// Finding FSX and FS9 at start-up: their folders from the registry, their airlines.cfg, FSX's sim folders.
#include "environment/simulatorenvironment.h"

#include <cstdint>
#include <exception>
#include <filesystem>
#include <optional>
#include <utility>

#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/paths.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "environment/startupsettings.h"
#include "platform/codepage.h"
#include "platform/fileio.h"
#include "platform/filelookup.h"
#include "platform/utf8.h"

namespace fleetwright {

namespace fs = std::filesystem;

using platform::FileLookup;
using platform::LookupKind;

namespace {

// The existing spelling of path, or path as it is when nothing of that name exists.
std::u16string existingSpelling(const std::u16string &path)
{
    if (const std::optional<fs::path> resolved = FileLookup::resolve(fs::path(path)))
        return resolved->u16string();
    return path;
}

bool folderExists(const std::u16string &path)
{
    return !path.empty() && FileLookup::exists(fs::path(path), LookupKind::Folders);
}

bool fileExists(const std::u16string &path)
{
    return !path.empty() && FileLookup::exists(fs::path(path), LookupKind::Files);
}

// The registry text of a simulator folder: trimmed, one trailing backslash cut.
std::u16string simulatorFolder(const platform::RegistryReader &registry, const std::u16string &key,
                               std::u16string_view valueName)
{
    std::u16string folder = Trim(registry.GetRegistryValue(key, valueName));
    if (!folder.empty() && folder.back() == u'\\')
        folder.pop_back();
    return folder;
}

// Runs one step of the stretch in which errors are skipped: an error ends the step, is noted, and the
// caller goes on with the next one.
template<typename Step> void skippingErrors(std::vector<std::u16string> &skipped, Step step)
{
    try {
        step();
    } catch (const RuntimeError &error) {
        skipped.push_back(error.description());
    } catch (const std::exception &error) {
        skipped.push_back(platform::fromUtf8(error.what()));
    }
}

// Reads an airlines.cfg into lines. False when the file cannot be read; lines stay as they were then.
bool readAirlines(const std::u16string &path, std::vector<std::u16string> &lines, std::vector<std::u16string> &skipped)
{
    const std::optional<std::string> bytes = platform::readWholeFile(fs::path(path)).bytes;
    if (!bytes) {
        skipped.push_back(u"Cannot read " + path);
        return false;
    }
    lines = splitAtCrLf(platform::fromCodePage(*bytes));
    return true;
}

void addSimFolder(SimulatorEnvironment &env, std::u16string entry, std::u16string path)
{
    env.simFolderEntries.push_back(std::move(entry));
    env.SimFolderPaths.push_back(std::move(path));
}

// fsx.cfg replaces the folder scan by the SimObjectPaths keys of its [Main] section:
//
//     [Main]
//     SimObjectPaths.0=SimObjects\Airplanes
//     SimObjectPaths.1=SimObjects\Rotorcraft
//     SimObjectPaths.6=D:\AI Traffic
void readSimObjectPaths(SimulatorEnvironment &env, const platform::RegistryReader &registry,
                        const std::u16string &fsxFolder)
{
    clsIniFile fsxCfg;
    fsxCfg.setPath(env.FsxCfgPath);
    fsxCfg.setSection(u"Main");
    std::vector<std::u16string> keys;
    std::int32_t count = 0;
    fsxCfg.EnumerateCurrentSection(keys, count);
    env.simFolderEntries.clear();
    env.SimFolderPaths.clear();
    for (const std::u16string &key : keys) {
        skippingErrors(env.skippedErrors, [&] {
            if (LCase(key).find(u"simobjectpaths") == std::u16string::npos)
                return;
            fsxCfg.setKey(key);
            const std::u16string raw = fsxCfg.Value();
            const std::u16string low = LCase(raw);
            std::u16string folder =
                low.size() >= 2 && low[1] == u':' ? registry.nativePath(raw) : joinPathAlways(fsxFolder, low);
            if (!folderExists(folder))
                return;
            // A relative value is stored lower-cased, as the simulator's folders were taken to ignore case;
            // where they do not, the folder's own spelling is kept so that the path leads there.
            folder = existingSpelling(folder);
            std::u16string name = low;
            if (name.starts_with(u"simobjects\\"))
                name.erase(0, 11);
            // The prefix-cut lower-case name against the raw entries: it rarely matches, so a value given
            // twice comes in twice. The sim folder list relies on staying parallel to the combo.
            bool listed = false;
            try {
                listed = CheckIfExistInCombo(env.simFolderEntries, name);
            } catch (const RuntimeError &error) {
                // The overflow is skipped like every error here, and the entry goes in.
                env.skippedErrors.push_back(error.description());
            }
            if (!listed)
                addSimFolder(env, raw, std::move(folder));
        });
    }
}

void detectFsx(SimulatorEnvironment &env, const platform::RegistryReader &registry, std::u16string_view prefix,
               std::u16string_view appDataFolder)
{
    env.FsxFolder =
        simulatorFolder(registry, std::u16string(prefix) + u"Microsoft Games\\Flight Simulator\\10.0", u"SetupPath");
    std::u16string folder;
    bool found = false;
    skippingErrors(env.skippedErrors, [&] {
        if (!env.FsxFolder.empty())
            folder = registry.nativePath(env.FsxFolder);
        found = folderExists(folder);
    });
    if (!found) {
        env.simFolderEnabled = false;
        env.panelPaints.push_back({5, u"n/a", PanelColour::Red});
        env.FsxFound = false;
        env.panelPaints.push_back({6, u"ATC", PanelColour::Red});
        return;
    }
    env.panelPaints.push_back({5, u"found", PanelColour::Green});

    skippingErrors(env.skippedErrors, [&] {
        const std::u16string airlines = joinPathAlways(folder, u"airlines.cfg");
        if (fileExists(airlines)) {
            env.FsxAirlinesPath = existingSpelling(airlines);
            // An unreadable file leaves the flag as it was.
            if (readAirlines(env.FsxAirlinesPath, env.FsxAirlines, env.skippedErrors))
                env.FsxFound = true;
        } else {
            env.FsxFound = false;
        }
        env.panelPaints.push_back({6, u"ATC", env.FsxFound ? PanelColour::Green : PanelColour::Red});
    });

    skippingErrors(env.skippedErrors, [&] {
        env.FsxSimObjectsRoot = existingSpelling(joinPathAlways(folder, u"SimObjects"));
        env.FsxEffectsFolder = existingSpelling(joinPathAlways(folder, u"Effects"));
    });
    env.fsxOptionEnabled = true;
    env.fsxOptionSelected = true;

    skippingErrors(env.skippedErrors, [&] {
        FileLookup listing(fs::path(env.FsxSimObjectsRoot) / u"*.", LookupKind::FilesAndFolders);
        for (const std::u16string &name : listing.names()) {
            if (name.find(u'.') == std::u16string::npos)
                addSimFolder(env, name, joinPathAlways(env.FsxSimObjectsRoot, name));
        }
        if (!env.simFolderEntries.empty())
            env.simFolderEnabled = true;
    });

    bool haveFsxCfg = false;
    skippingErrors(env.skippedErrors, [&] {
        env.FsxCfgPath = joinPathAlways(appDataFolder, u"Microsoft\\FSX\\fsx.cfg");
        haveFsxCfg = fileExists(env.FsxCfgPath);
        if (haveFsxCfg)
            env.FsxCfgPath = existingSpelling(env.FsxCfgPath);
    });
    if (haveFsxCfg)
        skippingErrors(env.skippedErrors, [&] { readSimObjectPaths(env, registry, folder); });
}

void detectFs9(SimulatorEnvironment &env, const platform::RegistryReader &registry, std::u16string_view prefix)
{
    std::u16string folder;
    bool found = false;
    skippingErrors(env.skippedErrors, [&] {
        env.Fs9Folder =
            simulatorFolder(registry, std::u16string(prefix) + u"Microsoft Games\\Flight Simulator\\9.0", u"EXE Path");
        if (!env.Fs9Folder.empty())
            folder = registry.nativePath(env.Fs9Folder);
        found = folderExists(folder);
    });
    if (!found) {
        env.panelPaints.push_back({2, u"n/a", PanelColour::Red, true});
        env.Fs9Found = false;
        env.panelPaints.push_back({3, u"ATC", PanelColour::Red});
        return;
    }
    env.panelPaints.push_back({2, u"found", PanelColour::Green, true});
    skippingErrors(env.skippedErrors, [&] {
        env.Fs9AircraftRoot = existingSpelling(joinPathAlways(folder, u"Aircraft"));
        env.Fs9EffectsFolder = existingSpelling(joinPathAlways(folder, u"Effects"));
    });

    // FS9 keeps airlines.cfg in its Aircraft folder, not beside the simulator as FSX does.
    skippingErrors(env.skippedErrors, [&] {
        const std::u16string airlines = joinPathAlways(env.Fs9AircraftRoot, u"airlines.cfg");
        if (fileExists(airlines)) {
            env.Fs9AirlinesPath = existingSpelling(airlines);
            if (readAirlines(env.Fs9AirlinesPath, env.Fs9Airlines, env.skippedErrors))
                env.Fs9Found = true;
        } else {
            env.Fs9Found = false;
        }
        env.panelPaints.push_back({3, u"ATC", env.Fs9Found ? PanelColour::Green : PanelColour::Red});
    });

    env.fs9OptionEnabled = true;
    // FSX takes the selection when both are there.
    env.fs9OptionSelected = env.FsxSimObjectsRoot.empty();
}

} // namespace

std::u16string registryPrefixFor(bool is64BitOS)
{
    return is64BitOS ? u"SOFTWARE\\Wow6432Node\\Microsoft\\" : u"SOFTWARE\\Microsoft\\";
}

SimulatorEnvironment SimulatorEnvironment::detect(const platform::RegistryReader &registry,
                                                  std::u16string_view registryPrefix, std::u16string_view appDataFolder)
{
    SimulatorEnvironment env;
    detectFsx(env, registry, registryPrefix, appDataFolder);
    detectFs9(env, registry, registryPrefix);
    return env;
}

bool CheckIfExistInCombo(const std::vector<std::u16string> &entries, const std::u16string &text)
{
    // The counter runs from 0 to the last index; stepping past 32767 overflows.
    constexpr std::size_t COUNTER_LIMIT = 32768;
    for (std::size_t i = 0; i < entries.size() && i < COUNTER_LIMIT; ++i) {
        if (entries[i] == text)
            return true;
    }
    if (entries.size() >= COUNTER_LIMIT)
        throw RuntimeError::overflow(u"CheckIfExistInCombo");
    return false;
}

std::vector<std::u16string> splitAtCrLf(std::u16string_view text)
{
    std::vector<std::u16string> lines;
    if (text.empty())
        return lines;
    for (;;) {
        const std::size_t end = text.find(u"\r\n");
        lines.emplace_back(text.substr(0, end));
        if (end == std::u16string_view::npos)
            break;
        text.remove_prefix(end + 2);
    }
    return lines;
}

} // namespace fleetwright
