#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "common/scripteddialogs.h"
#include "common/tempdir.h"
#include "core/aircraftfilestore.h"
#include "core/errorbox.h"
#include "core/runtimeerror.h"

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

} // namespace

// Lines start out as a longer array: the file's lines replace it; an empty file leaves it, and so do a missing
// file, a folder and no path at all.
TEST(FileToArray, OneStrippedElementPerLineOfTheFileFoundInAnyCase)
{
    const Lines previous = {u"one", u"two", u"three", u"four"};
    const std::tuple<std::string, Lines> rows[] = {
        {"\r\n", {u""}},
        {"", previous},
        {"[fltsim.0]\r\n\r\n\r\ntitle=x\r\n", {u"[fltsim.0]", u"", u"", u"title=x"}},
        {"a\nb\rc\r\n\r\nd\n\re", {u"a", u"b", u"c", u"", u"d", u"", u"e"}},
        {"a\r", {u"a"}},
        // StripComment: the text before the first "//", blanks (not tabs) trimmed; Windows-1252 text.
        {"title=abc // note\r\n   // only\r\n  k=v  \r\n\tk=x\t// y\r\na//b\r\nsub/dir /x\r\na ///b // c\r\n",
         {u"title=abc", u"", u"k=v", u"\tk=x\t", u"a", u"sub/dir /x", u"a"}},
        {"url=http://x\r\n    \r\n//\r\n[fltsim.0]//x\r\nCaf\xE9 \x80 \x9F \r\n",
         {u"url=http:", u"", u"", u"[fltsim.0]", u"Caf\u00E9 \u20AC \u0178"}},
    };
    ScriptedDialogs dialogs;
    for (const auto &[bytes, expected] : rows) {
        TempDir dir;
        writeBytes(dir / "Model" / "MODEL.CFG", bytes);
        Lines lines = previous;
        std::vector<std::size_t> served;
        FileToArray(widePath(dir / "model" / "model.cfg"), lines, &dialogs, [&] { served.push_back(lines.size()); });
        for (const fs::path &nothing : {dir / "Model", dir / "missing.cfg", fs::path()})
            FileToArray(widePath(nothing), lines, &dialogs);
        EXPECT_EQ(lines, expected) << testing::PrintToString(bytes);
        EXPECT_EQ(served.size(), bytes.empty() ? 0 : expected.size());
        EXPECT_TRUE(served.empty() || served.back() == expected.size());
    }
    EXPECT_TRUE(dialogs.records().empty());
#ifndef _WIN32
    // A file that exists and will not open: a pipe with no writer.
    TempDir dir;
    ASSERT_EQ(::mkfifo((dir / "pipe.cfg").c_str(), 0600), 0);
    Lines lines = previous;
    FileToArray(widePath(dir / "pipe.cfg"), lines, &dialogs);
    FileToArray(widePath(dir / "pipe.cfg"), lines);
    EXPECT_EQ(lines, previous);
    EXPECT_EQ(
        dialogs.records(),
        (Records {{DialogKind::Plain, u"", commonErrorText(RuntimeError(70, u"Permission denied", u"FileToArray"))}}));
#endif
}

TEST(ArrayRemoveItem, RemovesInsideTheBoundsKeepsALastElementAndRaisesOutside)
{
    const std::u16string outside = commonErrorText(RuntimeError(9, u"Subscript out of Range", u"ArrayRemoveItem"));
    const std::tuple<Lines, std::int32_t, Lines, std::u16string> rows[] = {
        {{u"a", u"b", u"c"}, 0, {u"b", u"c"}, u""},
        {{u"a", u"b", u"c"}, 2, {u"a", u"b"}, u""},
        {{u"a"}, 0, {u"a"}, u""},
        {{u"a", u"b"}, 2, {u"a", u"b"}, outside},
        {{u"a", u"b"}, -1, {u"a", u"b"}, outside},
        {{}, 0, {}, outside},
    };
    for (const auto &[before, index, after, error] : rows) {
        Lines array = before;
        EXPECT_EQ(errorOf([&] { ArrayRemoveItem(&array, index); }), error) << index;
        EXPECT_EQ(array, after);
    }
    EXPECT_EQ(errorOf([] { ArrayRemoveItem(static_cast<Lines *>(nullptr), 0); }),
              commonErrorText(RuntimeError(13, u"Type Mismatch", u"ArrayRemoveItem")));
}

TEST(MakeBackup, CopiesOnceBesideTheFileAndNeverReplacesTheFirstBackup)
{
    EXPECT_EQ(backupPath(u"C:\\FS9\\Aircraft\\b737\\aircraft.cfg"), u"C:\\FS9\\Aircraft\\b737\\aircraft.corvane");
    EXPECT_EQ(backupPath(u"abcd"), u".corvane");
    EXPECT_EQ(errorOf([] { backupPath(u"cfg"); }),
              commonErrorText(RuntimeError(5, u"Invalid procedure call or argument", u"MakeBackup")));

    TempDir dir;
    const fs::path cfg = dir / "aircraft.cfg";
    const std::string original = "[fltsim.0]\r\ntitle=Caf\xE9\r\n\x00\xFF"s;
    writeBytes(cfg, original);
    MakeBackup(widePath(cfg), false);
    EXPECT_FALSE(fs::exists(dir / "aircraft.corvane"));
    MakeBackup(widePath(cfg), true);
    EXPECT_EQ(readBytes(dir / "aircraft.corvane"), original);
    // A backup that exists, in any spelling, is never written again.
    fs::rename(dir / "aircraft.corvane", dir / "AIRCRAFT.CORVANE");
    writeBytes(cfg, "[fltsim.0]\r\ntitle=changed\r\n");
    MakeBackup(widePath(cfg), true);
    EXPECT_EQ(readBytes(dir / "AIRCRAFT.CORVANE"), original);
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()), 2);

    // A failed copy raises the run time's numbers and leaves no backup behind.
    writeBytes(dir / "blocked" / "aircraft.cfg", "x");
    fs::create_directory(dir / "blocked" / "aircraft.corvane");
    fs::create_directory(dir / "missing");
    const std::tuple<std::string, int, std::u16string> failures[] = {
        {"missing", 53, u"File not found"}, {"gone", 76, u"Path not found"}, {"blocked", 70, u"Permission denied"}};
    for (const auto &[folder, number, description] : failures) {
        EXPECT_EQ(errorOf([&] { MakeBackup(widePath(dir / folder / "aircraft.cfg"), true); }),
                  commonErrorText(RuntimeError(number, description, u"MakeBackup")));
    }
    EXPECT_TRUE(fs::is_empty(dir / "missing"));
    EXPECT_FALSE(fs::exists(dir / "gone"));
    EXPECT_TRUE(fs::is_directory(dir / "blocked" / "aircraft.corvane"));
}

TEST(CheckedRows, PositionsAsTextAndTheirSections)
{
    std::vector<bool> rows(32767, false);
    rows[0] = rows[10] = rows[32766] = true;
    EXPECT_EQ(checkedRowList(rows), (Lines {u"0", u"10", u"32766"}));
    rows.push_back(false);
    EXPECT_EQ(errorOf([&] { checkedRowList(rows); }), commonErrorText(RuntimeError(6, u"Overflow")));
    // Row r stands for the section in place r + 1 of the whole file.
    std::vector<bool> checked;
    for (const std::int32_t place : {1, 2, 3, 4, 11, 0, -1})
        checked.push_back(sectionIsChecked(place, {u"0", u"2", u"10"}));
    EXPECT_EQ(checked, (std::vector<bool> {true, false, true, false, true, false, false}));
}

// Every other test relies on a box without a scripted answer failing instead of getting a made-up answer.
TEST(Dialogs, ConfirmationErrorTextAndTheScriptedAndNeverAskingKinds)
{
    ScriptedDialogs dialogs;
    EXPECT_TRUE(confirmUpdate(dialogs, false));
    dialogs.pushAnswer(true);
    dialogs.pushAnswer(false);
    EXPECT_TRUE(confirmUpdate(dialogs, true));
    EXPECT_FALSE(confirmUpdate(dialogs, true, u"Delete?"));
    EXPECT_THROW(dialogs.question(u"Delete fltsim.3?", u"Remove"), std::logic_error);
    EXPECT_EQ(dialogs.records(),
              (Records {{DialogKind::Question, u"", u"Are you sure?"},
                        {DialogKind::Question, u"", u"Delete?"},
                        {DialogKind::Question, u"Remove", u"Delete fltsim.3?"}}));
    EXPECT_EQ(commonErrorText(RuntimeError(-2147217865, u"Table not found", u"Form_Load"), u"frm_ParkingCode"),
              u"A runtime error has occured\r\n\r\nError number: -2147217865\r\nError description: Table not found\r\n"
              u"Procedure Form_Load\r\nLine: 0\r\nFormular frm_ParkingCode");

    // The checker commands answer every question with No, the version question with the button set, and pass
    // every box on.
    Records sunk;
    NeverAskDialogs never(false, [&](const DialogRecord &record) { sunk.push_back(record); });
    never.setButton(2);
    EXPECT_FALSE(never.question(u"Are you sure?", u""));
    EXPECT_EQ(never.threeButtonQuestion(u"Which?", u"", u"a", u"b", u"c"), 2);
    EXPECT_EQ(never.yesNoCancel(u"Save?", u""), 2);
    EXPECT_EQ(never.inputBox(u"Enter", u"", u"default"), std::nullopt);
    never.critical(u"read-only", u"Fleetwright");
    EXPECT_TRUE(never.messages().empty());
    ASSERT_EQ(sunk.size(), 5u);
    EXPECT_EQ(sunk[4], (DialogRecord {DialogKind::Critical, u"Fleetwright", u"read-only"}));
    EXPECT_TRUE(NeverAskDialogs(true).question(u"Are you sure?", u""));
}
