// The settings and small decisions of start-up that need no window.
#include "environment/startupsettings.h"

#include <filesystem>
#include <utility>

#include "core/paths.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "platform/codepage.h"
#include "platform/filelookup.h"
#include "platform/tempfolder.h"

namespace fleetwright {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t ANALYZE_OPTIONS_LENGTH = 45;
constexpr std::size_t ANALYZE_OPTION_COUNT = 23;
constexpr int FIRST_OPTIONAL_COLUMN = 3;
constexpr int GRID_COLUMNS = 17;

// Codes 127 to 255 are those of the 8-bit code page, so "€" (128 there) goes and a character the code page
// lacks stays.
bool isStrictlyCleaned(char16_t ch)
{
    if (ch < 32 || ch == 127)
        return true;
    const auto byte = static_cast<unsigned char>(platform::wideToCodePage(ch));
    return byte >= 128 && platform::codePageToWide(byte) == ch;
}

std::optional<bool> skippedBool(const platform::SettingsStore &store, std::u16string_view name)
{
    try {
        return readBoolSetting(store, name);
    } catch (const RuntimeError &) {
        return std::nullopt;
    }
}

} // namespace

std::vector<std::u16string> splitList(std::u16string_view text)
{
    std::vector<std::u16string> elements;
    if (text.empty())
        return elements;
    for (;;) {
        const std::size_t end = text.find(LIST_SEPARATOR);
        elements.emplace_back(text.substr(0, end));
        if (end == std::u16string_view::npos)
            break;
        text.remove_prefix(end + 1);
    }
    return elements;
}

std::u16string joinList(const std::vector<std::u16string> &elements)
{
    std::u16string text;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (i > 0)
            text.push_back(LIST_SEPARATOR);
        text += elements[i];
    }
    return text;
}

std::u16string settingDefault(std::u16string_view name)
{
    for (const SettingDefault &setting : SETTING_DEFAULTS) {
        if (setting.name == name)
            return std::u16string(setting.defaultValue);
    }
    return {};
}

std::u16string readSetting(const platform::SettingsStore &store, std::u16string_view name)
{
    return store.GetSetting(name, settingDefault(name));
}

bool readBoolSetting(const platform::SettingsStore &store, std::u16string_view name)
{
    return store.GetBoolSetting(name, settingDefault(name));
}

std::u16string CleanText(std::u16string_view text, bool strict)
{
    std::u16string clean = Trim(text);
    if (strict) {
        for (char16_t &ch : clean) {
            if (isStrictlyCleaned(ch))
                ch = u' ';
        }
    }
    std::u16string single;
    single.reserve(clean.size());
    for (const char16_t ch : clean) {
        if (ch == u' ' && !single.empty() && single.back() == u' ')
            continue;
        single.push_back(ch);
    }
    return single;
}

std::u16string tempFolderFrom(std::u16string_view systemTempPath)
{
    return withTrailingSeparator(Trim(CleanText(systemTempPath, true)));
}

std::u16string computeTempFolder()
{
    return tempFolderFrom(platform::TempFolderPath());
}

AnalyzeOptionsRepair repairAnalyzeOptions(std::u16string_view stored)
{
    AnalyzeOptionsRepair repair {std::u16string(stored), false};
    if (stored.size() == ANALYZE_OPTIONS_LENGTH)
        return repair;
    repair.save = true;
    if (stored.size() < ANALYZE_OPTIONS_LENGTH && stored.size() % 2 == 1) {
        while (repair.text.size() < ANALYZE_OPTIONS_LENGTH)
            repair.text += u"\u00A61";
        return repair;
    }
    // Filling up by two characters at a time would never stop here.
    const std::vector<std::u16string> elements = splitList(stored);
    std::vector<std::u16string> options;
    for (std::size_t i = 0; i < ANALYZE_OPTION_COUNT; ++i) {
        const bool readable = i < elements.size() && (elements[i] == u"0" || elements[i] == u"1");
        options.push_back(readable ? elements[i] : u"1");
    }
    repair.text = joinList(options);
    return repair;
}

std::u16string loadAnalyzeOptions(const platform::SettingsStore &store)
{
    AnalyzeOptionsRepair repair = repairAnalyzeOptions(readSetting(store, u"AnalyzeOptions"));
    if (repair.save)
        store.SaveSetting(u"AnalyzeOptions", repair.text);
    return std::move(repair.text);
}

StartFlags readStartFlags(const platform::SettingsStore &store)
{
    try {
        StartFlags flags;
        flags.ToolTipsOn = readBoolSetting(store, u"ToolTips");
        flags.RememberFolderOn = readBoolSetting(store, u"IsZandor");
        return flags;
    } catch (RuntimeError &error) {
        error.setProcedure(u"Form_Load");
        throw;
    }
}

OptionFlags readOptionFlags(const platform::SettingsStore &store)
{
    OptionFlags flags;
    flags.AutoBackupOn = skippedBool(store, u"AutoBackup");
    flags.ConfirmUpdates = skippedBool(store, u"Update");
    flags.InternalEditorOn = skippedBool(store, u"Editor");
    flags.ResizableOn = skippedBool(store, u"Resizeable");
    return flags;
}

HiddenColumns hiddenGridColumns(std::u16string_view dataGridOptions)
{
    HiddenColumns hidden;
    const std::vector<std::u16string> elements = splitList(dataGridOptions);
    for (std::size_t k = 0; k < elements.size(); ++k) {
        if (elements[k] != u"-1")
            continue;
        const int column = static_cast<int>(k) + FIRST_OPTIONAL_COLUMN;
        (column <= GRID_COLUMNS ? hidden.columns : hidden.missingColumns).push_back(column);
    }
    return hidden;
}

StartingFolder startingFolder(bool rememberFolderOn, std::u16string_view storedPath, std::u16string_view programFolder)
{
    StartingFolder start;
    start.folder = std::u16string(rememberFolderOn ? storedPath : programFolder);
    start.changeFolder = !start.folder.empty();
    start.loadGuardWhileDriveChanges = start.folder.size() > 3;
    start.drive = start.folder.substr(0, 2);
    return start;
}

std::optional<ManualLocation> findManual(std::u16string_view programFolder)
{
    const std::u16string manualsFolder = joinPathAlways(programFolder, u"Manuals");
    for (const std::u16string &folder : {std::u16string(programFolder), manualsFolder}) {
        const std::u16string path = joinPathAlways(folder, u"Fleetwright-Readme.pdf");
        if (!platform::FileLookup::exists(fs::path(path), platform::LookupKind::Files))
            continue;
        const fs::path found = platform::FileLookup::resolve(fs::path(path)).value_or(fs::path(path));
        return ManualLocation {found.u16string(), found.parent_path().u16string()};
    }
    return std::nullopt;
}

} // namespace fleetwright
