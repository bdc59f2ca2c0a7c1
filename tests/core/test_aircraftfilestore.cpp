#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "common/tempdir.h"
#include "core/aircraftfilestore.h"
#include "core/errorbox.h"
#include "core/runtimeerror.h"
#include "core/scripteddialogs.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;
using namespace std::string_literals;
using Lines = std::vector<std::u16string>;
using Records = std::vector<DialogRecord>;

namespace {

// The common error box text of the RuntimeError that run throws; empty when it throws none.
std::u16string errorOf(const std::function<void()> &run)
{
    try {
        run();
    } catch (const RuntimeError &error) {
        return commonErrorText(error);
    }
    return {};
}

std::u16string errorText(int number, const std::u16string &description, const std::u16string &procedure = {})
{
    return commonErrorText(RuntimeError(number, description, procedure));
}

} // namespace

TEST(FileToArray, OneStrippedElementPerLine)
{
    const std::tuple<std::string, Lines> rows[] = {
        {"a\r\nb\r\nc", {u"a", u"b", u"c"}},
        {"a\r\nb\r\nc\r\n", {u"a", u"b", u"c"}},
        {"\r\n", {u""}},
        {"[fltsim.0]\r\n\r\n\r\ntitle=x\r\n", {u"[fltsim.0]", u"", u"", u"title=x"}},
        {"a\nb\rc\r\n\r\nd\n\re", {u"a", u"b", u"c", u"", u"d", u"", u"e"}},
        {"a\r", {u"a"}},
        // StripComment: the text before the first "//", blanks (not tabs) trimmed; Windows-1252 text.
        {"title=abc // note\r\n   // only\r\n  k=v  \r\n\tk=x\t// y\r\na//b\r\nsub/dir /x\r\na ///b // c\r\n",
         {u"title=abc", u"", u"k=v", u"\tk=x\t", u"a", u"sub/dir /x", u"a"}},
        {"url=http://x\r\n    \r\n//\r\n[fltsim.0]//x\r\nCaf\xE9 \x80 \x9F \r\n",
         {u"url=http:", u"", u"", u"[fltsim.0]", u"Caf\u00E9 \u20AC \u0178"}},
    };
    for (const auto &[bytes, expected] : rows) {
        TempDir dir;
        writeBytes(dir / "aircraft.cfg", bytes);
        Lines lines;
        std::vector<std::size_t> served;
        FileToArray(widePath(dir / "aircraft.cfg"), lines, nullptr, [&] { served.push_back(lines.size()); });
        EXPECT_EQ(lines, expected) << testing::PrintToString(bytes);
        ASSERT_EQ(served.size(), expected.size());
        EXPECT_EQ(served.back(), expected.size());
    }
}

TEST(FileToArray, FindsTheFileInAnyCaseAndLeavesTheArrayWithNothingToRead)
{
    TempDir dir;
    ScriptedDialogs dialogs;
    writeBytes(dir / "Model" / "MODEL.CFG", "x\r\ny");
    writeBytes(dir / "empty.cfg", "");
    fs::create_directory(dir / "folder.cfg");
    const Lines previous = {u"one", u"two", u"three"};
    Lines lines = previous;
    FileToArray(widePath(dir / "model" / "model.cfg"), lines, &dialogs);
    EXPECT_EQ(lines, (Lines {u"x", u"y"}));
    for (const fs::path &nothing : {dir / "empty.cfg", dir / "missing.cfg", dir / "folder.cfg", fs::path()}) {
        lines = previous;
        FileToArray(widePath(nothing), lines, &dialogs);
        EXPECT_EQ(lines, previous) << nothing;
    }
    EXPECT_TRUE(dialogs.records().empty());
#ifndef _WIN32
    // A file that exists and will not open: a pipe with no writer.
    ASSERT_EQ(::mkfifo((dir / "pipe.cfg").c_str(), 0600), 0);
    FileToArray(widePath(dir / "pipe.cfg"), lines, &dialogs);
    FileToArray(widePath(dir / "pipe.cfg"), lines);
    EXPECT_EQ(lines, previous);
    EXPECT_EQ(dialogs.records(),
              (Records {{DialogKind::Plain, u"", errorText(70, u"Permission denied", u"FileToArray")}}));
#endif
}

TEST(ArrayRemoveItem, RemovesInsideTheBoundsKeepsALastElementAndRaisesOutside)
{
    const std::u16string outside = errorText(9, u"Subscript out of Range", u"ArrayRemoveItem");
    const std::tuple<Lines, std::int32_t, Lines, std::u16string> rows[] = {
        {{u"a", u"b", u"c"}, 0, {u"b", u"c"}, u""},
        {{u"a", u"b", u"c"}, 2, {u"a", u"b"}, u""},
        {{u"a", u"b"}, 1, {u"a"}, u""},
        {{u"a"}, 0, {u"a"}, u""},
        {{u"a", u"b"}, 2, {u"a", u"b"}, outside},
        {{u"a", u"b"}, -1, {u"a", u"b"}, outside},
        {{}, 0, {}, outside},
    };
    for (const auto &[before, index, after, error] : rows) {
        Lines array = before;
        EXPECT_EQ(errorOf([&] { ArrayRemoveItem(array, index); }), error) << index;
        EXPECT_EQ(array, after);
        array = before;
        EXPECT_EQ(errorOf([&] { ArrayRemoveItem(&array, index); }), error) << index;
        EXPECT_EQ(array, after);
    }
    EXPECT_EQ(errorOf([] { ArrayRemoveItem(static_cast<Lines *>(nullptr), 0); }),
              errorText(13, u"Type Mismatch", u"ArrayRemoveItem"));
}

TEST(MakeBackup, CopiesOnceBesideTheFileAndNeverReplacesTheFirstBackup)
{
    EXPECT_EQ(backupPath(u"C:\\FS9\\Aircraft\\b737\\aircraft.cfg"), u"C:\\FS9\\Aircraft\\b737\\aircraft.corvane");
    EXPECT_EQ(backupPath(u"abcd"), u".corvane");
    EXPECT_EQ(errorOf([] { backupPath(u"cfg"); }), errorText(5, u"Invalid procedure call or argument", u"MakeBackup"));

    TempDir dir;
    const fs::path cfg = dir / "aircraft.cfg";
    const std::string original = "[fltsim.0]\r\ntitle=Caf\xE9\r\n\x00\xFF"s;
    writeBytes(cfg, original);
    MakeBackup(widePath(cfg), false);
    EXPECT_FALSE(fs::exists(dir / "aircraft.corvane"));
    MakeBackup(widePath(cfg), true);
    EXPECT_EQ(readBytes(dir / "aircraft.corvane"), original);
    // A backup that exists, in any spelling, is never written again.
    const fs::path backup = dir / "AIRCRAFT.CORVANE";
    fs::rename(dir / "aircraft.corvane", backup);
    fs::last_write_time(backup, fs::file_time_type::clock::now() - std::chrono::hours(48));
    const auto stamp = fs::last_write_time(backup);
    writeBytes(cfg, "[fltsim.0]\r\ntitle=changed\r\n");
    MakeBackup(widePath(cfg), true);
    EXPECT_EQ(readBytes(backup), original);
    EXPECT_EQ(fs::last_write_time(backup), stamp);
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()), 2);

    // A failed copy raises the run time's numbers and leaves no backup behind.
    writeBytes(dir / "blocked" / "aircraft.cfg", "x");
    fs::create_directory(dir / "blocked" / "aircraft.corvane");
    const std::tuple<fs::path, int, std::u16string> failures[] = {
        {dir / "missing" / "aircraft.cfg", 53, u"File not found"},
        {dir / "gone" / "aircraft.cfg", 76, u"Path not found"},
        {dir / "blocked" / "aircraft.cfg", 70, u"Permission denied"},
    };
    fs::create_directory(dir / "missing");
    for (const auto &[file, number, description] : failures)
        EXPECT_EQ(errorOf([&] { MakeBackup(widePath(file), true); }), errorText(number, description, u"MakeBackup"));
    EXPECT_TRUE(fs::is_empty(dir / "missing"));
    EXPECT_FALSE(fs::exists(dir / "gone"));
    EXPECT_TRUE(fs::is_directory(dir / "blocked" / "aircraft.corvane"));
}

TEST(CheckedRows, PositionsAsTextAndTheirSections)
{
    EXPECT_EQ(checkedRowList({true, false, true}), (Lines {u"0", u"2"}));
    EXPECT_EQ(checkedRowList({}), Lines {});
    std::vector<bool> rows(32767, false);
    rows[10] = rows[32766] = true;
    EXPECT_EQ(checkedRowList(rows), (Lines {u"10", u"32766"}));
    rows.push_back(false);
    EXPECT_EQ(errorOf([&] { checkedRowList(rows); }), errorText(6, u"Overflow"));
    // Row r stands for the section in place r + 1 of the whole file.
    const Lines checked = {u"0", u"2", u"10"};
    for (const auto &[place, expected] : std::vector<std::pair<std::int32_t, bool>> {
             {1, true}, {2, false}, {3, true}, {4, false}, {11, true}, {0, false}, {-1, false}}) {
        EXPECT_EQ(sectionIsChecked(place, checked), expected) << "place " << place;
    }
}

TEST(ConfirmUpdate, AsksOnlyWhenConfirmationIsOn)
{
    ScriptedDialogs dialogs;
    EXPECT_TRUE(confirmUpdate(dialogs, false));
    dialogs.pushAnswer(true);
    dialogs.pushAnswer(false);
    EXPECT_TRUE(confirmUpdate(dialogs, true));
    EXPECT_FALSE(confirmUpdate(dialogs, true, u"Delete?"));
    EXPECT_EQ(dialogs.records(),
              (Records {{DialogKind::Question, u"", u"Are you sure?"}, {DialogKind::Question, u"", u"Delete?"}}));
}

TEST(CommonErrorBox, NamesErrorRoutineAndForm)
{
    ScriptedDialogs dialogs;
    showCommonError(dialogs, RuntimeError(53, u"File not found", u"MakeBackup"));
    EXPECT_EQ(dialogs.records(),
              (Records {{DialogKind::Plain, u"",
                         u"A runtime error has occured\r\n\r\nError number: 53\r\nError "
                         u"description: File not found\r\nProcedure MakeBackup\r\nLine: 0\r\n"
                         u"Formular frm_Main"}}));
    EXPECT_EQ(commonErrorText(RuntimeError(-2147217865, u"Table not found", u"Form_Load"), u"frm_ParkingCode"),
              u"A runtime error has occured\r\n\r\nError number: -2147217865\r\nError description: Table not found\r\n"
              u"Procedure Form_Load\r\nLine: 0\r\nFormular frm_ParkingCode");
}

// Every other test relies on a box without a scripted answer failing instead of getting a made-up answer.
TEST(ScriptedDialogs, FailsOnABoxItHasNoAnswerFor)
{
    ScriptedDialogs dialogs;
    dialogs.pushButton(2);
    EXPECT_THROW(dialogs.question(u"Delete fltsim.3?", u"Remove"), std::logic_error);
    EXPECT_EQ(dialogs.threeButtonQuestion(u"Which?", u"", u"a", u"b", u"c"), 2);
    EXPECT_THROW(dialogs.inputBox(u"Enter", u"", u""), std::logic_error);
}

// The checker commands answer every question with No, the version question with the button set, and pass
// every box on.
TEST(NeverAskDialogs, AnswersWithoutAskingAndPassesBoxesOn)
{
    Records sunk;
    NeverAskDialogs dialogs(false, [&](const DialogRecord &record) { sunk.push_back(record); });
    dialogs.setButton(2);
    EXPECT_FALSE(dialogs.question(u"Are you sure?", u""));
    EXPECT_EQ(dialogs.threeButtonQuestion(u"Which?", u"", u"a", u"b", u"c"), 2);
    EXPECT_EQ(dialogs.yesNoCancel(u"Save?", u""), 2);
    EXPECT_EQ(dialogs.inputBox(u"Enter", u"", u"default"), std::nullopt);
    dialogs.critical(u"read-only", u"Fleetwright");
    EXPECT_TRUE(dialogs.messages().empty());
    ASSERT_EQ(sunk.size(), 5u);
    EXPECT_EQ(sunk[4], (DialogRecord {DialogKind::Critical, u"Fleetwright", u"read-only"}));
    EXPECT_TRUE(NeverAskDialogs(true).question(u"Are you sure?", u""));
}
