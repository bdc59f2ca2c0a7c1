// Settings and decisions of start-up: the temporary folder, the report options, the flags, hidden grid
// columns, the starting folder and the manual.
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "app/startupsettings.h"
#include "common/environment.h"
#include "common/tempdir.h"
#include "core/runtimeerror.h"

using namespace fleetwright;
using fleetwright::test::ScratchSettings;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

namespace {

const char16_t SEPARATOR = static_cast<char16_t>(fs::path::preferred_separator);

std::u16string repeated(const std::u16string &element, int count)
{
    return joinList(std::vector<std::u16string>(count, element));
}

} // namespace

TEST(StartupSettings, CleanText)
{
    const std::tuple<std::u16string, bool, std::u16string> rows[] = {
        {u"  C:\\Temp\\  ", false, u"C:\\Temp\\"},
        {u"a    b  c", false, u"a b c"},
        {u"a\tb\r\nc", false, u"a\tb\r\nc"},
        {u"a\tb\r\nc", true, u"a b c"},
        {u"C:\\Temp\\  x\r\n", true, u"C:\\Temp\\ x "},
        {u"\u00E9t\u00E9\u20AC\u007F|\u0081", true, u" t | "},
    };
    for (const auto &[text, strict, clean] : rows)
        EXPECT_EQ(CleanText(text, strict), clean) << text.size();

    const std::u16string separator(1, SEPARATOR);
    EXPECT_EQ(tempFolderFrom(u" /tmp/x \r\n"), u"/tmp/x" + separator);
    EXPECT_EQ(tempFolderFrom(u"My  Temp"), u"My Temp" + separator);
    EXPECT_EQ(computeTempFolder().back(), SEPARATOR);
}

TEST(StartupSettings, AnalyzeOptionsRepair)
{
    const std::u16string full = repeated(u"1", 23);

    const AnalyzeOptionsRepair first = repairAnalyzeOptions(settingDefault(u"AnalyzeOptions"));
    EXPECT_EQ(settingDefault(u"AnalyzeOptions").size(), 43u);
    EXPECT_EQ(first.text, full);
    EXPECT_TRUE(first.save);

    const std::u16string stored = u"0\u00A6" + repeated(u"1", 21) + u"\u00A60";
    const AnalyzeOptionsRepair kept = repairAnalyzeOptions(stored);
    EXPECT_EQ(kept.text, stored);
    EXPECT_FALSE(kept.save);

    EXPECT_EQ(repairAnalyzeOptions(u"0\u00A60").text, u"0\u00A60\u00A6" + repeated(u"1", 21));

    // Texts that filling up would never bring to 45 characters.
    const std::pair<std::u16string, std::u16string> rows[] = {
        {u"", full},
        {u"0\u00A60\u00A60\u00A600", u"0\u00A60\u00A60\u00A61\u00A6" + repeated(u"1", 19)},
        {u"0\u00A6x\u00A6 0\u00A6-1\u00A60\u00A6", u"0\u00A61\u00A61\u00A61\u00A60\u00A6" + repeated(u"1", 18)},
        {repeated(u"0", 24), repeated(u"0", 23)},
        {repeated(u"0", 22) + u"\u00A60\u00A6", repeated(u"0", 23)},
    };
    for (const auto &[stored, repaired] : rows) {
        EXPECT_EQ(repairAnalyzeOptions(stored).text, repaired) << stored.size();
        EXPECT_TRUE(repairAnalyzeOptions(stored).save);
    }
}

TEST(StartupSettings, StoreOnFirstStartAndAfter)
{
    const ScratchSettings scratch;
    const platform::SettingsStore &store = scratch.store();
    EXPECT_TRUE(readStartFlags(store).ToolTipsOn && readStartFlags(store).RememberFolderOn);
    const OptionFlags options = readOptionFlags(store);
    EXPECT_TRUE(options.AutoBackupOn.value_or(false) && options.ConfirmUpdates.value_or(false)
                && options.InternalEditorOn.value_or(false));
    EXPECT_EQ(options.ResizableOn, false);
    EXPECT_TRUE(readBoolSetting(store, u"AutoUpdate"));
    EXPECT_EQ(readSetting(store, u"Path"), u"");
    EXPECT_EQ(store.GetSetting(u"ToolTips", u"none"), u"none") << "defaults are not written back";
    // The report options are the one value that start-up fills up and stores.
    ASSERT_TRUE(store.SaveSetting(u"AnalyzeOptions", u"1\u00A61"));
    EXPECT_EQ(loadAnalyzeOptions(store), repeated(u"1", 23));
    EXPECT_EQ(store.GetSetting(u"AnalyzeOptions"), repeated(u"1", 23));

    for (const auto &[name, value] :
         {std::pair {u"ToolTips", u"0"}, {u"IsZandor", u"False"}, {u"Resizeable", u"-1"}, {u"Editor", u"maybe"}})
        ASSERT_TRUE(store.SaveSetting(name, value));
    EXPECT_FALSE(readStartFlags(store).ToolTipsOn || readStartFlags(store).RememberFolderOn);
    const OptionFlags changed = readOptionFlags(store);
    EXPECT_EQ(changed.ResizableOn, true);
    EXPECT_FALSE(changed.InternalEditorOn.has_value()) << "skipped: the menu keeps its design state";
    ASSERT_TRUE(store.SaveSetting(u"IsZandor", u"yes"));
    try {
        readStartFlags(store);
        ADD_FAILURE() << "a text that is no boolean was read";
    } catch (const RuntimeError &error) {
        EXPECT_EQ(error.number(), 13);
        EXPECT_EQ(error.procedure(), u"Form_Load");
    }
}

TEST(StartupSettings, HiddenGridColumns)
{
    const std::tuple<std::u16string, std::vector<int>, std::vector<int>> rows[] = {
        {settingDefault(u"DataGrid"), {}, {}},
        {u"", {}, {}},
        {u"-1", {3}, {}},
        {u"-1\u00A60\u00A6-1\u00A6 -1\u00A6-1.0\u00A61", {3, 5}, {}},
        {repeated(u"-1", 17), {3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}, {18, 19}},
        {repeated(u"0", 15) + u"\u00A60\u00A6-1", {}, {19}},
    };
    for (const auto &[options, columns, missing] : rows) {
        EXPECT_EQ(hiddenGridColumns(options).columns, columns) << options.size();
        EXPECT_EQ(hiddenGridColumns(options).missingColumns, missing) << options.size();
    }
}

TEST(StartupSettings, StartingFolder)
{
    const StartingFolder remembered = startingFolder(true, u"D:\\FS9\\Aircraft\\B737", u"C:\\Program");
    EXPECT_EQ(remembered.folder + u"|" + remembered.drive, u"D:\\FS9\\Aircraft\\B737|D:");
    EXPECT_TRUE(remembered.changeFolder && remembered.loadGuardWhileDriveChanges);
    const StartingFolder program = startingFolder(false, u"D:\\FS9", u"/opt/fleetwright");
    EXPECT_EQ(program.folder + u"|" + program.drive, u"/opt/fleetwright|/o");
    // A drive root: the guard is off, so the drive change itself loads.
    const StartingFolder root = startingFolder(true, u"E:\\", u"C:\\Program");
    EXPECT_TRUE(root.changeFolder && !root.loadGuardWhileDriveChanges);
    EXPECT_FALSE(startingFolder(true, u"", u"C:\\Program").changeFolder);
}

TEST(StartupSettings, Manual)
{
    TempDir program;
    EXPECT_FALSE(findManual(widePath(program.path())).has_value());
    writeBytes(program / "Manuals" / "fleetwright-readme.PDF", "%PDF");
    EXPECT_TRUE(fs::equivalent(fs::path(findManual(widePath(program.path())).value().folder), program / "Manuals"));
    writeBytes(program / "Fleetwright-Readme.pdf", "%PDF");
    const ManualLocation beside = findManual(widePath(program.path())).value();
    EXPECT_TRUE(fs::equivalent(fs::path(beside.ManualFilePath), program / "Fleetwright-Readme.pdf"));
    EXPECT_TRUE(fs::equivalent(fs::path(beside.folder), program.path()));
}
