#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>
#include <windows.h>

#include <gtest/gtest.h>

#include "profilepair.h"
#include "common/tempdir.h"

// Boundaries held against the Win32 profile calls, and the places where Wine's calls depart from the rules
// and ours keep them.

using fleetwright::test::escaped;
using fleetwright::test::ProfilePair;
using fleetwright::test::readBytes;
using fleetwright::test::splitList;
using fleetwright::test::TempDir;

namespace {

using Names = std::vector<std::string>;

// "key0007" and so on: the stem and a number padded with zeros to width characters.
std::string numberedName(const std::string &stem, int number, std::size_t width)
{
    std::string digits = std::to_string(number);
    if (stem.size() + digits.size() < width)
        digits.insert(0, width - stem.size() - digits.size(), '0');
    return stem + digits;
}

// Names that make a list of exactly total characters, each with its NUL: all width characters long but the
// first, which takes up the rest.
Names namesFilling(const std::string &stem, std::size_t total, std::size_t width)
{
    const std::size_t count = total / (width + 1);
    Names names;
    names.push_back(numberedName(stem, 0, width + total % (width + 1)));
    for (std::size_t i = 1; i < count; ++i)
        names.push_back(numberedName(stem, static_cast<int>(i), width));
    return names;
}

} // namespace

TEST(ProfileReference, LongValuesAndNameListsAreCutAlike)
{
    TempDir dir;
    int number = 0;
    const auto check = [&](const std::string &what, const std::string &bytes, const ProfilePair::Reads &reads) {
        SCOPED_TRACE(what);
        auto pair = std::make_unique<ProfilePair>(dir.path(), "long" + std::to_string(number++), bytes);
        const std::string differences = pair->differences(reads);
        EXPECT_TRUE(differences.empty()) << differences;
        return pair;
    };
    const auto value = [&](const std::string &what, const std::string &text) {
        return check(what, "[a]\r\nlong=" + text + "\r\n", {})->ours().value("a", "long");
    };

    EXPECT_EQ(value("5000 characters", std::string(5000, 'x')), std::string(4095, 'x'));
    EXPECT_EQ(value("5000 characters quoted", "\"" + std::string(5000, 'x') + "\""), std::string(4095, 'x'));
    // Around the boundary the closing quotation mark may or may not fit into the buffer (4095 quoted
    // characters are a departure of Wine's, below).
    for (const std::size_t length : {4093u, 4094u, 4095u, 4096u}) {
        const std::string inner(length, 'q');
        const std::string expected = inner.substr(0, 4095);
        if (length != 4095) {
            EXPECT_EQ(value(std::to_string(length) + " quoted", "'" + inner + "'"), expected);
        }
        EXPECT_EQ(value(std::to_string(length) + " plain", inner), expected);
    }

    // Lists of 8189 to 8200 characters, with the name on the boundary of several lengths.
    for (const std::size_t total : {8189u, 8190u, 8191u, 8192u, 8193u, 8200u}) {
        for (const std::size_t width : {7u, 9u, 40u}) {
            const std::string what = "lists of " + std::to_string(total) + " in names of " + std::to_string(width);
            const std::size_t expected = std::min<std::size_t>(total, 8190);

            std::string keys = "[keys]\r\n";
            for (const auto &name : namesFilling("key", total, width))
                keys += name + "=1\r\n";
            ProfilePair::Reads lists;
            lists.values = false;
            EXPECT_EQ(check(what + ", keys", keys, lists)->ours().keyList("keys").size(), expected) << what;

            std::string sections;
            for (const auto &name : namesFilling("s", total, width))
                sections += "[" + name + "]\r\n";
            lists.listedSections = false;
            EXPECT_EQ(check(what + ", sections", sections, lists)->ours().sectionList().size(), expected) << what;
        }
    }
}

TEST(ProfileReference, QuotedValuesReadAlikeAndWriteBackBare)
{
    const struct
    {
        std::string text, read;
    } rows[] = {
        {"\"abc\"", "abc"}, {"'abc'", "abc"}, {"\"abc'", "\"abc'"}, {"\"", "\""},         {"'", "'"},
        {"\"\"", ""},       {"''", ""},       {"\"a\"b\"", "a\"b"}, {"\" x \"", " x "},   {"'\"'", "\""},
        {"\"'\"", "'"},     {"'a", "'a"},     {"a'", "a'"},         {"\"it's\"", "it's"}, {"''''", "''"},
    };
    TempDir dir;
    int number = 0;
    for (const auto &row : rows) {
        SCOPED_TRACE(escaped(row.text));
        ProfilePair pair(dir.path(), "quoted" + std::to_string(number++), "[fltsim.0]\r\ntitle=" + row.text + "\r\n");
        EXPECT_EQ(pair.ours().value("fltsim.0", "title"), row.read);
        EXPECT_EQ(pair.theirs().value("fltsim.0", "title"), row.read);

        pair.ours().writeValue("fltsim.0", "title", row.read);
        pair.theirs().writeValue("fltsim.0", "title", row.read);
        EXPECT_EQ(readBytes(pair.oursFile()), "[fltsim.0]\r\ntitle=" + row.read + "\r\n");
        // Wine drops the leading blanks of a written value; there only the reads can agree.
        ProfilePair::Reads reads;
        reads.fileBytes = row.read.empty() || row.read.front() != ' ';
        const std::string differences = pair.differences(reads);
        EXPECT_TRUE(differences.empty()) << differences;
    }
}

TEST(ProfileReference, PassedNamesAreTrimmedAlikeOnReading)
{
    TempDir dir;
    ProfilePair pair(dir.path(), "trimmed", "[fltsim.0]\r\ntitle=a\r\n");
    EXPECT_EQ(pair.ours().value(" fltsim.0\t", "\ttitle "), "a");
    EXPECT_EQ(pair.theirs().value(" fltsim.0\t", "\ttitle "), "a");
    pair.ours().writeValue(" fltsim.0 ", " title ", "b");
    pair.theirs().writeValue(" fltsim.0 ", " title ", "b");
    pair.ours().writeValue(" new ", " k ", "c");
    pair.theirs().writeValue(" new ", " k ", "c");
    // Wine writes a new name with its trailing blanks ("[new ]", "k =c"); both read back the same.
    EXPECT_EQ(readBytes(pair.oursFile()), "[fltsim.0]\r\ntitle=b\r\n[new]\r\nk=c\r\n");
    ProfilePair::Reads reads;
    reads.fileBytes = false;
    const std::string differences = pair.differences(reads);
    EXPECT_TRUE(differences.empty()) << differences;
}

TEST(ProfileReference, MissingFilesAndFoldersAlike)
{
    TempDir dir;
    ProfilePair pair(dir.path(), "missing", "");
    std::filesystem::remove(pair.oursFile());
    std::filesystem::remove(pair.theirsFile());

    EXPECT_EQ(pair.ours().value("fltsim.0", "title"), "");
    EXPECT_EQ(pair.theirs().value("fltsim.0", "title"), "");
    EXPECT_EQ(pair.ours().sectionList(), pair.theirs().sectionList());

    // Deleting in a file that is not there makes no file.
    pair.ours().deleteKey("fltsim.0", "title", false);
    pair.theirs().deleteKey("fltsim.0", "title");
    pair.ours().deleteSection("fltsim.0");
    pair.theirs().deleteSection("fltsim.0");
    EXPECT_FALSE(std::filesystem::exists(pair.oursFile()));
    EXPECT_FALSE(std::filesystem::exists(pair.theirsFile()));

    // Writing creates it.
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

// Root (and an elevated Windows account, which Wine's root is) writes into read-only files through the Win32
// calls, so the Win32 side refuses only for an ordinary user; the Windows check runs this case again as one
// and says so through FLEETWRIGHT_WINE_UNPRIVILEGED.
TEST(ProfileReference, ReadOnlyFileRefusesWritesOnBothSides)
{
    const char *unprivileged = std::getenv("FLEETWRIGHT_WINE_UNPRIVILEGED");
    if (!unprivileged || std::string(unprivileged) != "1")
        GTEST_SKIP() << "needs an unprivileged user; scripts/windows-check.sh runs it as one";

    TempDir dir;
    const std::string bytes = "[fltsim.0]\r\ntitle=Cessna\r\nmodel=\r\n[general]\r\natc_type=x\r\n";
    ProfilePair pair(dir.path(), "readonly", bytes);
    for (const auto &file : {pair.oursFile(), pair.theirsFile()})
        ASSERT_TRUE(SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY)) << file.string();

    pair.ours().writeValue("fltsim.0", "title", "changed");
    EXPECT_FALSE(pair.theirs().writeValue("fltsim.0", "title", "changed"));
    pair.ours().writeValue("fltsim.0", "sim", "new");
    EXPECT_FALSE(pair.theirs().writeValue("fltsim.0", "sim", "new"));
    pair.ours().writeValue("new", "key", "1");
    EXPECT_FALSE(pair.theirs().writeValue("new", "key", "1"));
    pair.ours().deleteKey("fltsim.0", "model", true);
    EXPECT_FALSE(pair.theirs().deleteKey("fltsim.0", "model"));
    pair.ours().deleteSection("general");
    EXPECT_FALSE(pair.theirs().deleteSection("general"));

    EXPECT_EQ(readBytes(pair.oursFile()), bytes);
    EXPECT_EQ(readBytes(pair.theirsFile()), bytes);
    const std::string differences = pair.differences();
    EXPECT_TRUE(differences.empty()) << differences;
    EXPECT_EQ(pair.ours().value("fltsim.0", "title"), "Cessna");

    for (const auto &file : {pair.oursFile(), pair.theirsFile()})
        SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
}

// Wine's calls depart from the rules in the cases below; only our side is held to the rules, and whatever the
// two sides can still agree on is compared.
TEST(WineDepartures, AWriteChangesOnlyItsOwnLine)
{
    // Wine rewrites the whole file: blank lines go, lines are trimmed, blanks around "=" vanish.
    const std::string head = "; top\r\n\r\n[fltsim.0]\r\n  title = Cessna 172  \r\n\r\n";
    const std::string tail = "\r\n[general]\r\natc_type = x\r\n\r\n";
    TempDir dir;
    ProfilePair pair(dir.path(), "rewrite", head + "model=old" + tail);
    pair.ours().writeValue("fltsim.0", "model", "new");
    pair.theirs().writeValue("fltsim.0", "model", "new");
    EXPECT_EQ(readBytes(pair.oursFile()), head + "model=new" + tail);

    ProfilePair::Reads reads;
    reads.fileBytes = false;
    const std::string differences = pair.differences(reads);
    EXPECT_TRUE(differences.empty()) << differences;
}

TEST(WineDepartures, AWrittenValueKeepsItsBlanks)
{
    // Wine loses a written value's leading blanks when it next rewrites the file.
    TempDir dir;
    ProfilePair pair(dir.path(), "blanks", "[fltsim.0]\r\ntitle=x\r\n");
    pair.ours().writeValue("fltsim.0", "model", " ");
    pair.theirs().writeValue("fltsim.0", "model", " ");
    pair.ours().writeValue("fltsim.0", "texture", "  blue");
    pair.theirs().writeValue("fltsim.0", "texture", "  blue");
    EXPECT_EQ(readBytes(pair.oursFile()), "[fltsim.0]\r\ntitle=x\r\nmodel= \r\ntexture=  blue\r\n");

    ProfilePair::Reads reads;
    reads.fileBytes = false;
    const std::string differences = pair.differences(reads);
    EXPECT_TRUE(differences.empty()) << differences;
}

TEST(WineDepartures, ACommentLineIsNoKey)
{
    // Wine returns the text behind "=" of a ";" line asked for by its name; it lists no such name either.
    TempDir dir;
    ProfilePair pair(dir.path(), "comment", "[fltsim.0]\r\n;atc_id=N123\r\ntitle=x\r\n");
    EXPECT_EQ(pair.ours().value("fltsim.0", ";atc_id"), "");
    EXPECT_EQ(pair.ours().keyNames("fltsim.0"), Names {"title"});
    EXPECT_EQ(pair.ours().keyNames("fltsim.0"), splitList(pair.theirs().keyList("fltsim.0"), false));
}

TEST(WineDepartures, AKeyOfNoNameFirstInItsSectionIsListed)
{
    // Wine lists no key at all for such a section.
    TempDir dir;
    ProfilePair pair(dir.path(), "nameless", "[fltsim.0]\r\n=x\r\ntitle=y\r\n");
    EXPECT_EQ(pair.ours().keyNames("fltsim.0"), (Names {"", "title"}));
    EXPECT_EQ(pair.ours().keyList("fltsim.0"), std::string("\0title\0", 7));
    EXPECT_EQ(pair.ours().value("fltsim.0", "title"), pair.theirs().value("fltsim.0", "title"));
}

TEST(WineDepartures, ANewKeyGoesBehindTheLastKeyNotBehindTrailingLines)
{
    // Wine appends a new key behind everything its section holds, comments and "="-less lines included.
    TempDir dir;
    ProfilePair pair(dir.path(), "trailing", "[fltsim.0]\r\ntitle=x\r\n; trailing comment\r\n[general]\r\n");
    pair.ours().writeValue("fltsim.0", "model", "m");
    pair.theirs().writeValue("fltsim.0", "model", "m");
    EXPECT_EQ(readBytes(pair.oursFile()), "[fltsim.0]\r\ntitle=x\r\nmodel=m\r\n; trailing comment\r\n[general]\r\n");

    ProfilePair::Reads reads;
    reads.fileBytes = false;
    const std::string differences = pair.differences(reads);
    EXPECT_TRUE(differences.empty()) << differences;
}

TEST(WineDepartures, NamesFoldTheCodePagesLettersToo)
{
    // Wine matches names without regard to the case of ASCII letters only; "é" never finds "É" there.
    TempDir dir;
    ProfilePair pair(dir.path(), "fold", "[\xC9t\xE9]\r\n\xE9l\xE8ve=1\r\n[\x9F]\r\n\xD8=2\r\n");
    EXPECT_EQ(pair.ours().value("\xC9t\xE9", "\xE9l\xE8ve"), "1");
    EXPECT_EQ(pair.theirs().value("\xC9t\xE9", "\xE9l\xE8ve"), "1");
    EXPECT_EQ(pair.ours().value("\xE9T\xC9", "\xC9L\xC8VE"), "1");
    EXPECT_EQ(pair.ours().value("\xFF", "\xF8"), "2");
    EXPECT_EQ(pair.ours().keyNames("\xFF"), Names {"\xD8"});
}

TEST(WineDepartures, AQuotedValueOfTheFullLengthKeepsItsLastCharacter)
{
    // Wine drops the last character as if it were the closing mark, which the buffer cut off already.
    TempDir dir;
    const std::string inner(4095, 'q');
    ProfilePair pair(dir.path(), "quoted4095", "[a]\r\nlong=\"" + inner + "\"\r\n");
    EXPECT_EQ(pair.ours().value("a", "long"), inner);
}
