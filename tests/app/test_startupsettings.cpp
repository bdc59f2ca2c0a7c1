// Settings and decisions of start-up: the temporary folder, the report options, the flags, hidden grid
// columns, the starting folder and the manual.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/startupsettings.h"
#include "core/runtimeerror.h"
#include "common/tempdir.h"
#include "common/environment.h"

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
    struct Row
    {
        std::u16string text;
        bool strict;
        std::u16string clean;
    };
    const std::vector<Row> rows = {
        {u"  C:\\Temp\\  ", false, u"C:\\Temp\\"},
        {u"a    b  c", false, u"a b c"},
        {u"a\tb\r\nc", false, u"a\tb\r\nc"},
        {u"a\tb\r\nc", true, u"a b c"},
        {u"C:\\Temp\\  x\r\n", true, u"C:\\Temp\\ x "},
        {u"\u00E9t\u00E9\u20AC\u007F|\u0081", true, u" t | "},
        {u"\u0100\u4E2D~", true, u"\u0100\u4E2D~"},
        {u"\tx", true, u" x"},
        {u"", true, u""},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.text.size());
        EXPECT_EQ(CleanText(row.text, row.strict), row.clean);
    }

    const std::u16string separator(1, SEPARATOR);
    EXPECT_EQ(tempFolderFrom(u" /tmp/x \r\n"), u"/tmp/x" + separator);
    EXPECT_EQ(tempFolderFrom(u"Temp"), u"Temp" + separator);
    EXPECT_EQ(tempFolderFrom(u"Temp" + separator), u"Temp" + separator);
    EXPECT_EQ(tempFolderFrom(u"My  Temp"), u"My Temp" + separator);
    EXPECT_EQ(computeTempFolder().back(), SEPARATOR);
}

TEST(StartupSettings, AnalyzeOptionsRepair)
{
    const std::u16string full = repeated(u"1", 23);
    ASSERT_EQ(full.size(), 45u);

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
    struct Row
    {
        std::u16string stored;
        std::u16string repaired;
    };
    const std::vector<Row> rows = {
        {u"", full},
        {u"0\u00A60\u00A60\u00A600", u"0\u00A60\u00A60\u00A61\u00A6" + repeated(u"1", 19)},
        {u"0\u00A6x\u00A6 0\u00A6-1\u00A60\u00A6", u"0\u00A61\u00A61\u00A61\u00A60\u00A6" + repeated(u"1", 18)},
        {repeated(u"0", 24), repeated(u"0", 23)},
        {repeated(u"0", 22) + u"\u00A60\u00A6", repeated(u"0", 23)},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.stored.size());
        const AnalyzeOptionsRepair repair = repairAnalyzeOptions(row.stored);
        EXPECT_EQ(repair.text, row.repaired);
        EXPECT_TRUE(repair.save);
    }
}

TEST(StartupSettings, StoreOnFirstStartAndAfter)
{
    const ScratchSettings scratch;
    const platform::SettingsStore &store = scratch.store();

    const StartFlags start = readStartFlags(store);
    EXPECT_TRUE(start.ToolTipsOn);
    EXPECT_TRUE(start.RememberFolderOn);
    const OptionFlags options = readOptionFlags(store);
    EXPECT_EQ(options.AutoBackupOn, true);
    EXPECT_EQ(options.ConfirmUpdates, true);
    EXPECT_EQ(options.InternalEditorOn, true);
    EXPECT_EQ(options.ResizableOn, false);
    EXPECT_TRUE(readBoolSetting(store, u"AutoUpdate"));
    EXPECT_TRUE(hiddenGridColumns(readSetting(store, u"DataGrid")).columns.empty());
    EXPECT_EQ(readSetting(store, u"Path"), u"");
    EXPECT_EQ(store.GetSetting(u"ToolTips", u"none"), u"none") << "defaults are not written back";

    // The report options are the one value that start-up fills up and stores.
    EXPECT_EQ(loadAnalyzeOptions(store), repeated(u"1", 23));
    EXPECT_EQ(store.GetSetting(u"AnalyzeOptions"), repeated(u"1", 23));
    ASSERT_TRUE(store.SaveSetting(u"AnalyzeOptions", u"1\u00A61"));
    EXPECT_EQ(loadAnalyzeOptions(store), repeated(u"1", 23));
    EXPECT_EQ(store.GetSetting(u"AnalyzeOptions"), repeated(u"1", 23));

    ASSERT_TRUE(store.SaveSetting(u"ToolTips", u"0"));
    ASSERT_TRUE(store.SaveSetting(u"IsZandor", u"False"));
    ASSERT_TRUE(store.SaveSetting(u"Resizeable", u"-1"));
    ASSERT_TRUE(store.SaveSetting(u"Editor", u"maybe"));
    EXPECT_FALSE(readStartFlags(store).ToolTipsOn);
    EXPECT_FALSE(readStartFlags(store).RememberFolderOn);
    const OptionFlags changed = readOptionFlags(store);
    EXPECT_EQ(changed.ResizableOn, true);
    EXPECT_FALSE(changed.InternalEditorOn.has_value()) << "skipped: the menu keeps its design state";
    EXPECT_EQ(changed.AutoBackupOn, true);

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
    struct Row
    {
        std::u16string options;
        std::vector<int> columns;
        std::vector<int> missing;
    };
    const std::vector<Row> rows = {
        {settingDefault(u"DataGrid"), {}, {}},
        {u"", {}, {}},
        {u"-1", {3}, {}},
        {u"-1\u00A60\u00A6-1\u00A6 -1\u00A6-1.0\u00A61", {3, 5}, {}},
        {repeated(u"-1", 17), {3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}, {18, 19}},
        {repeated(u"0", 15) + u"\u00A60\u00A6-1", {}, {19}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.options.size());
        const HiddenColumns hidden = hiddenGridColumns(row.options);
        EXPECT_EQ(hidden.columns, row.columns);
        EXPECT_EQ(hidden.missingColumns, row.missing);
    }
}

TEST(StartupSettings, StartingFolder)
{
    const StartingFolder remembered = startingFolder(true, u"D:\\FS9\\Aircraft\\B737", u"C:\\Program");
    EXPECT_EQ(remembered.folder, u"D:\\FS9\\Aircraft\\B737");
    EXPECT_TRUE(remembered.changeFolder);
    EXPECT_TRUE(remembered.loadGuardWhileDriveChanges);
    EXPECT_EQ(remembered.drive, u"D:");

    const StartingFolder program = startingFolder(false, u"D:\\FS9", u"/opt/fleetwright");
    EXPECT_EQ(program.folder, u"/opt/fleetwright");
    EXPECT_EQ(program.drive, u"/o");

    // A drive root: the guard is off, so the drive change itself loads.
    const StartingFolder root = startingFolder(true, u"E:\\", u"C:\\Program");
    EXPECT_TRUE(root.changeFolder);
    EXPECT_FALSE(root.loadGuardWhileDriveChanges);

    const StartingFolder none = startingFolder(true, u"", u"C:\\Program");
    EXPECT_FALSE(none.changeFolder);
    EXPECT_FALSE(none.loadGuardWhileDriveChanges);
}

TEST(StartupSettings, Manual)
{
    TempDir program;
    EXPECT_FALSE(findManual(widePath(program.path())).has_value());

    writeBytes(program / "Manuals" / "fleetwright-readme.PDF", "%PDF");
    const std::optional<ManualLocation> inManuals = findManual(widePath(program.path()));
    ASSERT_TRUE(inManuals.has_value());
    EXPECT_TRUE(fs::equivalent(fs::path(inManuals->ManualFilePath), program / "Manuals" / "fleetwright-readme.PDF"));
    EXPECT_TRUE(fs::equivalent(fs::path(inManuals->folder), program / "Manuals"));

    writeBytes(program / "Fleetwright-Readme.pdf", "%PDF");
    const std::optional<ManualLocation> beside = findManual(widePath(program.path()));
    ASSERT_TRUE(beside.has_value());
    EXPECT_TRUE(fs::equivalent(fs::path(beside->ManualFilePath), program / "Fleetwright-Readme.pdf"));
    EXPECT_TRUE(fs::equivalent(fs::path(beside->folder), program.path()));
}

TEST(StartupSettings, ListSplit)
{
    EXPECT_TRUE(splitList(u"").empty());
    EXPECT_EQ(splitList(u"a\u00A6\u00A6b|c\u00A6"), (std::vector<std::u16string> {u"a", u"", u"b|c", u""}));
    EXPECT_EQ(joinList(splitList(u"1\u00A60\u00A61")), u"1\u00A60\u00A61");
    EXPECT_EQ(splitList(settingDefault(u"DataGrid")).size(), 15u);
}
