#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/tempdir.h"
#include "profilepair.h"

// Boundaries held against the Win32 profile calls, and the places where Wine's calls depart from the rules
// and ours keep them.

using fleetwright::test::escaped;
using fleetwright::test::ProfilePair;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;

namespace {

std::vector<std::string> split(const std::string &text, char at)
{
    std::vector<std::string> parts;
    for (std::size_t start = 0, end = 0; end != std::string::npos; start = end + 1)
        parts.push_back(text.substr(start, (end = text.find(at, start)) - start));
    return parts;
}

// A small file and steps on both copies: "w|section|key|value" writes on both sides; "R|section|key|value" is
// what both read, "r|section|key|value" what we read; "n|section|a,b" the key names we enumerate and "l|..."
// our raw key list, "," for each NUL. Then, as compare says, the reads (1) or also the file bytes (2) of the
// two sides must agree; expected, where given, is our file after the steps.
struct Case
{
    std::string name, file;
    std::vector<std::string> steps;
    std::string expected;
    int compare;
};

std::vector<Case> cases()
{
    const std::string full(4095, 'q');
    // clang-format off
    std::vector<Case> all = {
        {"PassedNamesAreTrimmed", "[fltsim.0]\r\ntitle=a\r\n", {"R| fltsim.0\t|\ttitle |a", "w| fltsim.0 | title |b",
            "w| new | k |c"}, "[fltsim.0]\r\ntitle=b\r\n[new]\r\nk=c\r\n", 1},
        // The departures: Wine rewrites the whole file on a write, dropping blank lines, blanks around "=" and a
        // written value's leading blanks; reads a ";" line by its name and lists no key in a section that starts
        // with "=x"; appends a new key behind the section's comments; folds no letter but ASCII ones, and drops
        // the last character of a quoted value of the full length as if it were the closing mark.
        {"WriteChangesOnlyItsOwnLine", "; top\r\n\r\n[fltsim.0]\r\n  title = C 172  \r\n\r\nmodel=old\r\n\r\n[b]\r\n"
            "c = x\r\n\r\n", {"w|fltsim.0|model|new"}, "; top\r\n\r\n[fltsim.0]\r\n  title = C 172  \r\n\r\n"
            "model=new\r\n\r\n[b]\r\nc = x\r\n\r\n", 1},
        {"WrittenValueKeepsItsBlanks", "[fltsim.0]\r\ntitle=x\r\n", {"w|fltsim.0|model| ", "w|fltsim.0|texture|  blue"},
            "[fltsim.0]\r\ntitle=x\r\nmodel= \r\ntexture=  blue\r\n", 1},
        {"CommentLineIsNoKey", "[fltsim.0]\r\n;atc_id=N123\r\ntitle=x\r\n", {"r|fltsim.0|;atc_id|",
            "n|fltsim.0|title"}, "", 1},
        {"KeyOfNoNameFirstIsListed", "[fltsim.0]\r\n=x\r\ntitle=y\r\n", {"n|fltsim.0|,title", "l|fltsim.0|,title,",
            "R|fltsim.0|title|y"}, "", 0},
        {"NewKeyGoesBehindTheLastKey", "[fltsim.0]\r\ntitle=x\r\n; trailing comment\r\n[general]\r\n",
            {"w|fltsim.0|model|m"}, "[fltsim.0]\r\ntitle=x\r\nmodel=m\r\n; trailing comment\r\n[general]\r\n", 1},
        {"NamesFoldTheCodePagesLetters", "[\xC9t\xE9]\r\n\xE9l\xE8ve=1\r\n[\x9F]\r\n\xD8=2\r\n",
            {"R|\xC9t\xE9|\xE9l\xE8ve|1", "r|\xE9T\xC9|\xC9L\xC8VE|1", "r|\xFF|\xF8|2", "n|\xFF|\xD8"}, "", 1},
        {"QuotedValueOfTheFullLength", "[a]\r\nlong=\"" + full + "\"\r\n", {"r|a|long|" + full}, "", 0}};
    // Quotation marks around a value are dropped on reading ("as written|as read"); it is written back bare.
    for (const char *row : {"\"abc\"|abc", "'abc'|abc", "\"abc'|\"abc'", "\"|\"", "'|'", "\"\"|", "''|", "\"a\"b\"|a\"b",
             "\" x \"| x ", "'\"'|\"", "\"'\"|'", "'a|'a", "a'|a'", "\"it's\"|it's", "''''|''"}) {
        // clang-format on
        const std::vector<std::string> part = split(row, '|');
        const std::string &read = part[1];
        all.push_back({row,
                       "[fltsim.0]\r\ntitle=" + part[0] + "\r\n",
                       {"R|fltsim.0|title|" + read, "w|fltsim.0|title|" + read},
                       "[fltsim.0]\r\ntitle=" + read + "\r\n",
                       read[0] == ' ' ? 1 : 2});
    }
    return all;
}

} // namespace

TEST(ProfileReference, SmallFilesAndWineDepartures)
{
    ASSERT_EQ(GetACP(), 1252u) << "Wine must run with the ANSI code page 1252 (LC_ALL=C.UTF-8)";
    TempDir dir;
    int number = 0;
    for (const Case &c : cases()) {
        SCOPED_TRACE(escaped(c.name));
        ProfilePair pair(dir.path(), "case" + std::to_string(number++), c.file);
        for (const std::string &step : c.steps) {
            const std::vector<std::string> part = split(step, '|');
            if (step[0] == 'w') {
                pair.ours().writeValue(part[1], part[2], part[3]);
                pair.theirs().writeValue(part[1], part[2], part[3]);
            } else if (step[0] == 'n') {
                EXPECT_EQ(pair.ours().keyNames(part[1]), split(part[2], ',')) << escaped(step);
            } else if (step[0] == 'l') {
                std::string list = part[2];
                std::replace(list.begin(), list.end(), ',', '\0');
                EXPECT_EQ(pair.ours().keyList(part[1]), list);
            } else {
                EXPECT_EQ(pair.ours().value(part[1], part[2]), part[3]) << escaped(step);
                if (step[0] == 'R') {
                    EXPECT_EQ(pair.theirs().value(part[1], part[2]), part[3]) << escaped(step);
                }
            }
        }
        if (!c.expected.empty()) {
            EXPECT_EQ(readBytes(pair.oursFile()), c.expected);
        }
        if (c.compare > 0) {
            ProfilePair::Reads reads;
            reads.fileBytes = c.compare == 2;
            const std::string differences = pair.differences(reads);
            EXPECT_TRUE(differences.empty()) << differences;
        }
    }
}

TEST(ProfileReference, LongValuesAndNameListsAreCutAlike)
{
    TempDir dir;
    int number = 0;
    const auto agree = [&](const std::string &bytes, const ProfilePair::Reads &reads) {
        auto pair = std::make_unique<ProfilePair>(dir.path(), "long" + std::to_string(number++), bytes);
        const std::string differences = pair->differences(reads);
        EXPECT_TRUE(differences.empty()) << differences;
        return pair;
    };
    const auto value = [&](const std::string &text) {
        return agree("[a]\r\nlong=" + text + "\r\n", {})->ours().value("a", "long");
    };
    // Around the boundary the closing quotation mark may or may not fit (4095 quoted characters are a departure).
    for (const std::size_t length : {4093u, 4094u, 4095u, 4096u, 5000u}) {
        const std::string inner(length, 'q');
        EXPECT_EQ(value(inner), inner.substr(0, 4095)) << length;
        if (length != 4095) {
            EXPECT_EQ(value("'" + inner + "'"), inner.substr(0, 4095)) << length;
        }
    }
    // Lists of 8189 to 8200 characters, each name with its NUL, all "width" long but the first, which takes the
    // rest: so the boundary falls on names of several lengths.
    for (const std::size_t total : {8189u, 8190u, 8191u, 8192u, 8193u, 8200u}) {
        for (const std::size_t width : {7u, 9u, 40u}) {
            std::string keys = "[keys]\r\n", sections;
            for (std::size_t i = 0; i < total / (width + 1); ++i) {
                const std::string digits = std::to_string(i);
                const std::size_t length = i == 0 ? width + total % (width + 1) : width;
                keys += "k" + std::string(length - 1 - digits.size(), '0') + digits + "=1\r\n";
                sections += "[s" + std::string(length - 1 - digits.size(), '0') + digits + "]\r\n";
            }
            ProfilePair::Reads lists;
            lists.values = false;
            const std::size_t expected = std::min<std::size_t>(total, 8190);
            EXPECT_EQ(agree(keys, lists)->ours().keyList("keys").size(), expected) << total << " in " << width;
            lists.listedSections = false;
            EXPECT_EQ(agree(sections, lists)->ours().sectionList().size(), expected) << total << " in " << width;
        }
    }
}

TEST(ProfileReference, MissingFilesAndFoldersAlike)
{
    TempDir dir;
    ProfilePair pair(dir.path(), "missing", "");
    std::filesystem::remove(pair.oursFile());
    std::filesystem::remove(pair.theirsFile());
    EXPECT_EQ(pair.ours().value("fltsim.0", "title"), "");
    EXPECT_EQ(pair.ours().sectionList(), pair.theirs().sectionList());
    // Deleting in a file that is not there makes no file; writing does.
    pair.ours().deleteKey("fltsim.0", "title", false);
    pair.theirs().deleteKey("fltsim.0", "title");
    pair.ours().deleteSection("fltsim.0");
    pair.theirs().deleteSection("fltsim.0");
    EXPECT_FALSE(std::filesystem::exists(pair.oursFile()));
    EXPECT_FALSE(std::filesystem::exists(pair.theirsFile()));
    pair.ours().writeValue("fltsim.0", "title", "Cessna");
    EXPECT_TRUE(pair.theirs().writeValue("fltsim.0", "title", "Cessna"));
    const std::string differences = pair.differences();
    EXPECT_TRUE(differences.empty()) << differences;
    EXPECT_EQ(readBytes(pair.oursFile()), "[fltsim.0]\r\ntitle=Cessna\r\n");
    // A missing folder takes no file on either side.
    ProfilePair nowhere(dir.path() / "no-such-folder", "nowhere", "");
    std::filesystem::remove_all(dir.path() / "no-such-folder");
    nowhere.ours().writeValue("fltsim.0", "title", "Cessna");
    EXPECT_FALSE(nowhere.theirs().writeValue("fltsim.0", "title", "Cessna"));
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "no-such-folder"));
}
