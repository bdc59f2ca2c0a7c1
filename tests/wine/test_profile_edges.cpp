#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/tempdir.h"
#include "profilepair.h"

// Boundaries held against the Win32 profile calls, and the places where Wine's calls depart from the rules
// and ours keep them.

using namespace fleetwright::test;

TEST(ProfileReference, SmallFilesAndWineDepartures)
{
    ASSERT_EQ(GetACP(), 1252u) << "Wine must run with the ANSI code page 1252 (LC_ALL=C.UTF-8)";
    TempDir dir;
    int number = 0;
    // Steps: "w|section|key|value" writes on both sides; "R|section|key|value" is what both read, "r|..." what
    // we read; "n|section|a,b," the key names we enumerate, "l|..." our raw key list, a "," for each NUL. Then
    // the reads (compare 1) or also the bytes (2) of both sides agree; our file ends as expected, or as it was.
    const auto check = [&](const std::string &file, const std::vector<std::string> &steps, const std::string &expected,
                           int compare) {
        SCOPED_TRACE(escaped(file));
        ProfilePair pair(dir.path(), "case" + std::to_string(number++), file);
        for (const std::string &step : steps) {
            const std::vector<std::string> part = split(step, '|');
            const char *section = part[1].c_str(), *key = part[2].c_str();
            if (step[0] == 'w') {
                pair.edit(part[1], key, part[3].c_str());
                continue;
            }
            std::string wanted = part.back();
            if (step[0] == 'n' || step[0] == 'l')
                std::replace(wanted.begin(), wanted.end(), ',', '\0');
            EXPECT_EQ(step[0] == 'n' ? pair.enumerated(section) : pair.ours(section, step[0] == 'l' ? nullptr : key),
                      wanted)
                << escaped(step);
            if (step[0] == 'R') {
                EXPECT_EQ(pair.theirs(section, key), wanted) << escaped(step);
            }
        }
        EXPECT_EQ(readBytes(pair.oursFile), expected.empty() ? file : expected);
        Reads reads;
        reads.fileBytes = compare == 2;
        const std::string differences = compare > 0 ? pair.differences(reads) : "";
        EXPECT_TRUE(differences.empty()) << differences;
    };
    check("[fltsim.0]\r\ntitle=a\r\n", {"R| fltsim.0\t|\ttitle |a", "w| fltsim.0 | title |b", "w| new | k |c"},
          "[fltsim.0]\r\ntitle=b\r\n[new]\r\nk=c\r\n", 1);
    // The departures: Wine rewrites the whole file on a write, dropping blank lines, blanks around "=" and a
    // written value's leading blanks; reads a ";" line by its name and lists no key in a section that starts
    // with "=x"; appends a new key behind the section's comments; folds no letter but ASCII ones, and drops
    // the last character of a quoted value of the full length as if it were the closing mark.
    check("[a]\r\n\r\n  t = C 172  \r\n\r\nm=old\r\n", {"w|a|m|new", "w|a|x| ", "w|a|y|  blue"},
          "[a]\r\n\r\n  t = C 172  \r\n\r\nm=new\r\nx= \r\ny=  blue\r\n", 1);
    check("[a]\r\n;id=N123\r\nt=x\r\n", {"r|a|;id|", "n|a|t,"}, "", 1);
    check("[a]\r\n=x\r\nt=y\r\n", {"n|a|,t,", "l|a|,t,", "R|a|t|y"}, "", 0);
    check("[a]\r\nt=x\r\n; trailing comment\r\n[b]\r\n", {"w|a|m|m"},
          "[a]\r\nt=x\r\nm=m\r\n; trailing comment\r\n[b]\r\n", 1);
    check("[\xC9t\xE9]\r\n\xE9l\xE8ve=1\r\n[\x9F]\r\n\xD8=2\r\n",
          {"R|\xC9t\xE9|\xE9l\xE8ve|1", "r|\xE9T\xC9|\xC9L\xC8VE|1", "r|\xFF|\xF8|2", "n|\xFF|\xD8,"}, "", 1);
    const std::string full(4095, 'q');
    check("[a]\r\nlong=\"" + full + "\"\r\n", {"r|a|long|" + full}, "", 0);
    // Quotation marks around a value are dropped on reading ("as written|as read"); it is written back bare.
    for (const std::string &row :
         split("\"abc\"|abc;'abc'|abc;\"abc'|\"abc';\"|\";'|';\"\"|;''|;\"a\"b\"|a\"b;\" x \"| x ;"
               "'\"'|\";\"'\"|';'a|'a;a'|a';\"it's\"|it's;''''|''",
               ';')) {
        const std::string read = split(row, '|')[1];
        check("[a]\r\nt=" + split(row, '|')[0] + "\r\n", {"R|a|t|" + read, "w|a|t|" + read},
              "[a]\r\nt=" + read + "\r\n", read[0] == ' ' ? 1 : 2);
    }
}

TEST(ProfileReference, LongValuesAndNameListsAreCutAlike)
{
    TempDir dir;
    int number = 0;
    const auto agree = [&](const std::string &bytes, const Reads &reads) {
        auto pair = std::make_unique<ProfilePair>(dir.path(), "long" + std::to_string(number++), bytes);
        const std::string differences = pair->differences(reads);
        EXPECT_TRUE(differences.empty()) << differences;
        return pair;
    };
    // Around the boundary the closing quotation mark may or may not fit (4095 quoted characters are a departure).
    for (const std::size_t length : {4093u, 4094u, 4095u, 4096u, 5000u}) {
        const std::string inner(length, 'q');
        for (const std::string &value : {inner, length == 4095 ? inner : "'" + inner + "'"})
            EXPECT_EQ(agree("[a]\r\nlong=" + value + "\r\n", {})->ours("a", "long"), inner.substr(0, 4095)) << length;
    }
    // Lists of 8189 to 8200 characters, each name with its NUL, all "width" long but the first, which takes the
    // rest: so the boundary falls on names of several lengths.
    for (const std::size_t total : {8189u, 8190u, 8191u, 8192u, 8193u, 8200u}) {
        for (const std::size_t width : {7u, 9u, 40u}) {
            std::string keys = "[keys]\r\n", sections;
            for (std::size_t i = 0; i < total / (width + 1); ++i) {
                const std::string digits = std::to_string(i);
                const std::string name =
                    std::string((i == 0 ? width + total % (width + 1) : width) - 1 - digits.size(), '0') + digits;
                keys += "k" + name + "=1\r\n";
                sections += "[s" + name + "]\r\n";
            }
            Reads lists;
            lists.values = false;
            const std::size_t expected = std::min<std::size_t>(total, 8190);
            EXPECT_EQ(agree(keys, lists)->ours("keys", nullptr).size(), expected) << total << " in " << width;
            lists.listedSections = false;
            EXPECT_EQ(agree(sections, lists)->ours(nullptr, nullptr).size(), expected) << total << " in " << width;
        }
    }
}

TEST(ProfileReference, MissingFilesAndFoldersAlike)
{
    TempDir dir;
    ProfilePair pair(dir.path(), "missing", "");
    std::filesystem::remove(pair.oursFile);
    std::filesystem::remove(pair.theirsFile);
    EXPECT_EQ(pair.ours("fltsim.0", "title"), "");
    EXPECT_EQ(pair.ours(nullptr, nullptr), pair.theirs(nullptr, nullptr));
    // Deleting in a file that is not there makes no file; writing does.
    pair.edit("fltsim.0", "title", nullptr);
    pair.edit("fltsim.0", nullptr, nullptr);
    EXPECT_FALSE(std::filesystem::exists(pair.oursFile));
    EXPECT_FALSE(std::filesystem::exists(pair.theirsFile));
    EXPECT_TRUE(pair.edit("fltsim.0", "title", "Cessna"));
    const std::string differences = pair.differences();
    EXPECT_TRUE(differences.empty()) << differences;
    EXPECT_EQ(readBytes(pair.oursFile), "[fltsim.0]\r\ntitle=Cessna\r\n");
    // A missing folder takes no file on either side.
    ProfilePair nowhere(dir.path() / "no-such-folder", "nowhere", "");
    std::filesystem::remove_all(dir.path() / "no-such-folder");
    EXPECT_FALSE(nowhere.edit("fltsim.0", "title", "Cessna"));
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "no-such-folder"));
}
