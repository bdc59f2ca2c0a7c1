#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/aircraftfilestore.h"
#include "core/runtimeerror.h"
#include "core/scripteddialogs.h"
#include "platform/utf8.h"
#include "common/tempdir.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

using namespace fleetwright;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

using Lines = std::vector<std::u16string>;

// The number and text of the RuntimeError that run throws; nothing when it throws none.
std::optional<std::pair<int, std::u16string>> runtimeErrorOf(const std::function<void()> &run)
{
    try {
        run();
    } catch (const RuntimeError &error) {
        return std::make_pair(error.number(), error.description());
    }
    return std::nullopt;
}

} // namespace

TEST(FileToArray, OneStrippedElementPerLine)
{
    const struct
    {
        const char *name;
        std::string bytes;
        Lines expected;
    } rows[] = {
        {"last line without line end", "a\r\nb\r\nc", {u"a", u"b", u"c"}},
        {"last line with line end", "a\r\nb\r\nc\r\n", {u"a", u"b", u"c"}},
        {"one line end only", "\r\n", {u""}},
        {"blank lines stay", "[fltsim.0]\r\n\r\n\r\ntitle=x\r\n", {u"[fltsim.0]", u"", u"", u"title=x"}},
        {"comments cut",
         "title=abc // note\r\n   // only a comment\r\ndescription=see a//b\r\ntexture=x\t// y\r\n",
         {u"title=abc", u"", u"description=see a", u"texture=x\t"}},
        {"blanks trimmed, tabs kept", "  key=value  \r\n\tkey=value\t\r\n", {u"key=value", u"\tkey=value\t"}},
        {"LF and lone CR end lines too", "a\nb\rc\r\n\r\nd\n\re", {u"a", u"b", u"c", u"", u"d", u"", u"e"}},
        {"CR at the very end", "a\r", {u"a"}},
        {"Windows-1252 text", "title=Caf\xE9 \x80 \x9F\r\n", {u"title=Caf\u00E9 \u20AC \u0178"}},
        {"semicolon comments are text here", "; painted by // Jo\r\n", {u"; painted by"}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        TempDir dir;
        writeBytes(dir / "aircraft.cfg", row.bytes);
        Lines lines;
        FileToArray(widePath(dir / "aircraft.cfg"), lines);
        EXPECT_EQ(lines, row.expected);
    }
}

TEST(FileToArray, ArrayPassedInBecomesTheFilesLinesOrStaysWithNothingToRead)
{
    TempDir dir;
    const Lines previous = {u"one", u"two", u"three", u"four"};
    ScriptedDialogs dialogs;

    writeBytes(dir / "short.cfg", "x\r\ny");
    Lines lines = previous;
    FileToArray(widePath(dir / "short.cfg"), lines, &dialogs);
    EXPECT_EQ(lines, (Lines {u"x", u"y"}));

    // No line to store: the array stays as it came, which for the fresh array callers pass means empty.
    writeBytes(dir / "empty.cfg", "");
    lines = previous;
    FileToArray(widePath(dir / "empty.cfg"), lines, &dialogs);
    EXPECT_EQ(lines, previous);
    Lines fresh;
    FileToArray(widePath(dir / "empty.cfg"), fresh, &dialogs);
    EXPECT_TRUE(fresh.empty());

    lines = previous;
    FileToArray(widePath(dir / "missing.cfg"), lines, &dialogs);
    EXPECT_EQ(lines, previous);

    fs::create_directory(dir / "folder.cfg");
    FileToArray(widePath(dir / "folder.cfg"), lines, &dialogs);
    EXPECT_EQ(lines, previous);

    FileToArray(u"", lines, &dialogs);
    EXPECT_EQ(lines, previous);

    EXPECT_TRUE(dialogs.records().empty());
}

TEST(FileToArray, FindsTheFileWithoutRegardToCase)
{
    TempDir dir;
    writeBytes(dir / "Model" / "MODEL.CFG", "[models]\r\nnormal=plane\r\n");
    Lines lines;
    FileToArray(widePath(dir / "model" / "model.cfg"), lines);
    EXPECT_EQ(lines, (Lines {u"[models]", u"normal=plane"}));
}

TEST(FileToArray, ServesEventsAfterEveryLine)
{
    TempDir dir;
    writeBytes(dir / "aircraft.cfg", "a\r\nb\r\nc");
    Lines lines;
    std::vector<std::size_t> seen;
    FileToArray(widePath(dir / "aircraft.cfg"), lines, nullptr, [&] { seen.push_back(lines.size()); });
    EXPECT_EQ(seen, (std::vector<std::size_t> {1, 2, 3}));
}

TEST(FileToArray, UnreadableFileShowsTheCommonErrorBox)
{
#ifdef _WIN32
    GTEST_SKIP() << "needs a named pipe in the file's place";
#else
    TempDir dir;
    const fs::path pipe = dir / "aircraft.cfg";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const Lines previous = {u"kept"};
    Lines lines = previous;
    ScriptedDialogs dialogs;
    FileToArray(widePath(pipe), lines, &dialogs);
    EXPECT_EQ(lines, previous);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0].kind, DialogKind::Plain);
    EXPECT_EQ(dialogs.records()[0].text,
              u"A runtime error has occured\r\n\r\nError number: 70\r\nError description: Permission denied\r\n"
              u"Procedure FileToArray\r\nLine: 0\r\nFormular frm_Main");

    // Without dialogs nothing is shown and nothing is thrown.
    FileToArray(widePath(pipe), lines);
    EXPECT_EQ(lines, previous);
#endif
}

TEST(ArrayRemoveItem, RemovesInsideTheBoundsAndKeepsALastElement)
{
    const struct
    {
        Lines before;
        std::int32_t index;
        Lines after;
    } rows[] = {
        {{u"a", u"b", u"c"}, 0, {u"b", u"c"}},
        {{u"a", u"b", u"c"}, 1, {u"a", u"c"}},
        {{u"a", u"b", u"c"}, 2, {u"a", u"b"}},
        {{u"a", u"b"}, 1, {u"a"}},
        {{u"a"}, 0, {u"a"}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(::testing::Message() << row.before.size() << " elements, index " << row.index);
        Lines array = row.before;
        ArrayRemoveItem(array, row.index);
        EXPECT_EQ(array, row.after);
        array = row.before;
        ArrayRemoveItem(&array, row.index);
        EXPECT_EQ(array, row.after);
    }
}

TEST(ArrayRemoveItem, RaisesSubscriptAndTypeErrors)
{
    const struct
    {
        Lines before;
        std::int32_t index;
    } outside[] = {
        {{u"a", u"b", u"c"}, 3},
        {{u"a", u"b", u"c"}, -1},
        {{u"a"}, 1},
        {{}, 0},
    };
    for (const auto &row : outside) {
        SCOPED_TRACE(::testing::Message() << row.before.size() << " elements, index " << row.index);
        Lines array = row.before;
        const auto error = runtimeErrorOf([&] { ArrayRemoveItem(array, row.index); });
        ASSERT_TRUE(error);
        EXPECT_EQ(error->first, 9);
        EXPECT_EQ(error->second, u"Subscript out of Range");
        EXPECT_EQ(array, row.before);
    }
    const auto error = runtimeErrorOf([] { ArrayRemoveItem(static_cast<Lines *>(nullptr), 0); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->first, 13);
    EXPECT_EQ(error->second, u"Type Mismatch");
}

TEST(MakeBackup, BackupPathReplacesTheLastFourCharacters)
{
    EXPECT_EQ(backupPath(u"C:\\FS9\\Aircraft\\b737\\aircraft.cfg"), u"C:\\FS9\\Aircraft\\b737\\aircraft.corvane");
    EXPECT_EQ(backupPath(u"/home/u/sim/aircraft.cfg"), u"/home/u/sim/aircraft.corvane");
    EXPECT_EQ(backupPath(u"x.cfg"), u"x.corvane");
    EXPECT_EQ(backupPath(u"abcd"), u".corvane");
    const auto error = runtimeErrorOf([] { backupPath(u"cfg"); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->first, 5);
}

TEST(MakeBackup, CopiesOnceAndNeverReplacesTheFirstBackup)
{
    TempDir dir;
    const fs::path cfg = dir / "aircraft.cfg";
    const fs::path backup = dir / "aircraft.corvane";
    const std::string original = "[fltsim.0]\r\ntitle=Caf\xE9\r\n\x00\xFF"s;
    writeBytes(cfg, original);

    MakeBackup(widePath(cfg), false);
    EXPECT_FALSE(fs::exists(backup));

    MakeBackup(widePath(cfg), true);
    ASSERT_TRUE(fs::exists(backup));
    EXPECT_EQ(readBytes(backup), original);

    fs::last_write_time(backup, fs::file_time_type::clock::now() - std::chrono::hours(48));
    const auto stamp = fs::last_write_time(backup); // as the file system keeps it
    writeBytes(cfg, "[fltsim.0]\r\ntitle=changed\r\n");
    MakeBackup(widePath(cfg), true);
    MakeBackup(widePath(cfg), true);
    EXPECT_EQ(readBytes(backup), original);
    EXPECT_EQ(fs::last_write_time(backup), stamp);
}

TEST(MakeBackup, BackupSpelledOtherwiseCounts)
{
    TempDir dir;
    writeBytes(dir / "aircraft.cfg", "new");
    writeBytes(dir / "AIRCRAFT.CORVANE", "old");
    MakeBackup(widePath(dir / "aircraft.cfg"), true);
    EXPECT_EQ(readBytes(dir / "AIRCRAFT.CORVANE"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()), 2);
}

TEST(MakeBackup, FailedCopyRaisesTheRunTimesNumbers)
{
    TempDir dir;
    writeBytes(dir / "blocked" / "aircraft.cfg", "x");
    fs::create_directory(dir / "blocked" / "aircraft.corvane");
    const struct
    {
        const char *name;
        fs::path cfg;
        int number;
        std::u16string description;
    } rows[] = {
        {"file missing", dir / "aircraft.cfg", 53, u"File not found"},
        {"folder missing", dir / "gone" / "aircraft.cfg", 76, u"Path not found"},
        {"a folder where the backup goes", dir / "blocked" / "aircraft.cfg", 70, u"Permission denied"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        try {
            MakeBackup(widePath(row.cfg), true);
            ADD_FAILURE() << "no error";
        } catch (const RuntimeError &error) {
            EXPECT_EQ(error.number(), row.number);
            EXPECT_EQ(error.description(), row.description);
            EXPECT_EQ(error.procedure(), u"MakeBackup");
        }
    }
    EXPECT_TRUE(fs::is_directory(dir / "blocked" / "aircraft.corvane"));
    EXPECT_FALSE(fs::exists(dir / "aircraft.corvane"));
    EXPECT_FALSE(fs::exists(dir / "gone"));
}

TEST(CheckedRows, PositionsAsTextAndTheirSections)
{
    EXPECT_EQ(checkedRowList({true, false, true}), (Lines {u"0", u"2"}));
    EXPECT_EQ(checkedRowList({false, false}), Lines {});
    EXPECT_EQ(checkedRowList({}), Lines {});

    std::vector<bool> rows(32767, false);
    rows[10] = rows[32766] = true;
    EXPECT_EQ(checkedRowList(rows), (Lines {u"10", u"32766"}));
    rows.push_back(false);
    const auto error = runtimeErrorOf([&] { checkedRowList(rows); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->first, 6);
    EXPECT_EQ(error->second, u"Overflow");

    // Row r stands for the section in place r + 1 of the whole file.
    const Lines checked = {u"0", u"2", u"10"};
    const struct
    {
        std::int32_t place;
        bool expected;
    } places[] = {{1, true}, {2, false}, {3, true}, {4, false}, {11, true}, {0, false}, {-1, false}};
    for (const auto &row : places) {
        SCOPED_TRACE(::testing::Message() << "place " << row.place);
        EXPECT_EQ(sectionIsChecked(row.place, checked), row.expected);
    }
}

TEST(ConfirmUpdate, AsksOnlyWhenConfirmationIsOn)
{
    ScriptedDialogs dialogs;
    EXPECT_TRUE(confirmUpdate(dialogs, false));
    EXPECT_TRUE(dialogs.records().empty());

    dialogs.pushAnswer(true);
    dialogs.pushAnswer(false);
    dialogs.pushAnswer(false);
    EXPECT_TRUE(confirmUpdate(dialogs, true));
    EXPECT_FALSE(confirmUpdate(dialogs, true));
    EXPECT_FALSE(confirmUpdate(dialogs, true, u"Delete the checked sections?"));
    const std::vector<DialogRecord> expected = {
        {DialogKind::Question, u"", u"Are you sure?"},
        {DialogKind::Question, u"", u"Are you sure?"},
        {DialogKind::Question, u"", u"Delete the checked sections?"},
    };
    EXPECT_EQ(dialogs.records(), expected);
}
