#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/settingsstore.h"

namespace fleetwright {

// ListSeparator: joins the rows of a list kept in one string (stored options, airline search). Nothing
// escapes it.
inline constexpr char16_t LIST_SEPARATOR = u'\u00A6';

// The list in text, split at LIST_SEPARATOR. An empty text is a list with no elements; "a¦" has two, the
// second empty.
std::vector<std::u16string> splitList(std::u16string_view text);
std::u16string joinList(const std::vector<std::u16string> &elements);

// The program's settings with the default that each read passes (the defaults are never written back,
// "AnalyzeOptions" aside).
struct SettingDefault
{
    std::u16string_view name;
    std::u16string_view defaultValue;
};
inline constexpr SettingDefault SETTING_DEFAULTS[] = {
    // 22 ones, one fewer than there are report options: start-up fills the text up.
    {u"AnalyzeOptions",
     u"1\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A6"
     u"1\u00A61\u00A61\u00A61\u00A61\u00A61"},
    {u"ToolTips", u"1"},
    {u"IsZandor", u"1"},
    {u"AutoBackup", u"1"},
    {u"Update", u"1"},
    {u"Editor", u"1"},
    {u"Resizeable", u"0"},
    {u"DataGrid",
     u"0\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60"},
    {u"Path", u""},
    {u"AutoUpdate", u"1"},
    {u"LastCheck", u"0"},
};

// The default of a setting of SETTING_DEFAULTS; empty for any other name.
std::u16string settingDefault(std::u16string_view name);
// The stored text of a setting, or its default.
std::u16string readSetting(const platform::SettingsStore &store, std::u16string_view name);
// The stored text of a setting, or its default, as a boolean. Throws RuntimeError 13 for a text that is no
// boolean.
bool readBoolSetting(const platform::SettingsStore &store, std::u16string_view name);

// Trims blanks; with strict, CR, LF, TAB and every other character of code 0 to 31, and every character
// whose code in the machine's 8-bit code page is 127 to 255 (so "é" and "€" too), become blanks. Then runs
// of blanks shrink to one. "C:\Temp\  x\r\n" is "C:\Temp\ x " with strict.
std::u16string CleanText(std::u16string_view text, bool strict);

// TempFolder from the system's temporary folder: CleanText(path, true), trimmed, with a separator added
// when it does not end in one. A temporary folder whose name holds such characters or double blanks is
// mangled by this, as it always was.
std::u16string tempFolderFrom(std::u16string_view systemTempPath);
// tempFolderFrom the platform's temporary folder.
std::u16string computeTempFolder();

// The report options "AnalyzeOptions" as start-up leaves them: 23 digits joined by "¦", 45 characters.
// A shorter text of odd length is filled up with "¦1" until it has 45 characters. A text that filling can
// never bring to 45 (even length, or longer than 45) is rebuilt from its first 23 elements: an element that
// is "0" or "1" is kept, any other becomes "1", and elements past the 23rd are dropped. save tells whether the
// text changed and is to be stored.
struct AnalyzeOptionsRepair
{
    std::u16string text;
    bool save = false;
};
AnalyzeOptionsRepair repairAnalyzeOptions(std::u16string_view stored);
// Reads "AnalyzeOptions", repairs it and stores the repaired text. Returns AnalyzeOptionsText.
std::u16string loadAnalyzeOptions(const platform::SettingsStore &store);

// The flags that start-up reads while its errors are still shown: "ToolTips" and "IsZandor". A stored text
// that is no boolean throws RuntimeError 13 naming the procedure Form_Load; the common error box shows it.
struct StartFlags
{
    bool ToolTipsOn = true;
    bool RememberFolderOn = true;
};
StartFlags readStartFlags(const platform::SettingsStore &store);

// The option flags that start-up reads later, where errors are skipped: "AutoBackup", "Update", "Editor",
// "Resizeable". A flag whose stored text is no boolean is nothing: the menu item keeps its design state and
// the flag is copied from it.
struct OptionFlags
{
    std::optional<bool> AutoBackupOn;
    std::optional<bool> ConfirmUpdates;
    std::optional<bool> InternalEditorOn;
    std::optional<bool> ResizableOn;
};
OptionFlags readOptionFlags(const platform::SettingsStore &store);

// The grid columns (counted from 1) that DataGridOptions hides: element k of its list that is exactly "-1"
// hides column k + 3. The grid has 17 columns; a "-1" past the 15th element names a column that is not
// there: missingColumns lists those, whose errors start-up skips.
struct HiddenColumns
{
    std::vector<int> columns;
    std::vector<int> missingColumns;
};
HiddenColumns hiddenGridColumns(std::u16string_view dataGridOptions);

// Where the folder browser starts. folder is the stored "Path" when RememberFolderOn, else the program's
// folder. An empty folder changes nothing. Otherwise the form sets Drive1.Drive = drive (the folder's first
// two characters) while LoadGuard is loadGuardWhileDriveChanges (true for a folder longer than 3
// characters, so the drive's root is not loaded first), then LoadGuard = false and Dir1.Path = folder.
// LoadGuard is false from here on in every case.
struct StartingFolder
{
    std::u16string folder;
    bool changeFolder = false;
    bool loadGuardWhileDriveChanges = false;
    std::u16string drive;
};
StartingFolder startingFolder(bool rememberFolderOn, std::u16string_view storedPath, std::u16string_view programFolder);

// The manual "Fleetwright-Readme.pdf" in the program's folder, else in its sub-folder "Manuals": the path
// for ManualFilePath and the folder for ManualAttach. Nothing when it is in neither (mnu_Manual is then
// disabled).
struct ManualLocation
{
    std::u16string ManualFilePath;
    std::u16string folder;
};
std::optional<ManualLocation> findManual(std::u16string_view programFolder);

} // namespace fleetwright
