#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/fileio.h"
#include "platform/filelookup.h"
#include "platform/utf8.h"
#include "common/tempdir.h"

using namespace fleetwright::platform;
using fleetwright::test::TempDir;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

namespace {

std::vector<std::u16string> sortedNames(const fs::path &wildcardPath, LookupKind kind)
{
    std::vector<std::u16string> names = FileLookup(wildcardPath, kind).names();
    std::sort(names.begin(), names.end(), [](const auto &a, const auto &b) { return listingOrderLess(a, b); });
    return names;
}

// An aircraft folder as the validation walks it.
void buildAircraft(const fs::path &folder)
{
    writeBytes(folder / "aircraft.cfg", "[fltsim.0]\r\n");
    writeBytes(folder / "Boeing.air", "");
    writeBytes(folder / "extra.AIR", "");
    writeBytes(folder / "old.air.bak", "");
    writeBytes(folder / "texture.txt", "");
    writeBytes(folder / "texture" / "a.bmp", "");
    writeBytes(folder / "Texture.KLM" / "b.bmp", "");
    writeBytes(folder / "model" / "Boeing.MDL", "");
    fs::create_directory(folder / "textures");
}

} // namespace

TEST(FileLookup, WildcardRules)
{
    struct Row
    {
        const char16_t *pattern;
        const char16_t *name;
        bool matches;
    };
    const Row rows[] = {
        {u"*.air", u"Boeing.AIR", true},
        {u"*.air", u"boeing.air.bak", false},
        {u"*.air", u"air", false},
        {u"*.air", u".air", true},
        {u"*.mdl", u"x.mdlx", false},
        {u"model.cfg", u"Model.CFG", true},
        {u"MODEL.CFG", u"model.cfg", true},
        // A point before "*" or at the end of the pattern also matches the end of the name.
        {u"texture.*", u"texture", true},
        {u"texture.*", u"Texture.KLM", true},
        {u"texture.*", u"texture.a.b", true},
        {u"texture.*", u"textures", false},
        {u"texture.*", u"texture_old", false},
        {u"a.b.*", u"A.B", true},
        {u"a.b.*", u"a.bc", false},
        {u"a.b.*", u"a.b.", true},
        {u"*bmp", u"x.bmp", true},
        {u"*bmp", u"bm", false},
        {u"abc", u"abcd", false},
        {u"texture.", u"texture", true},
        {u"texture.", u"texture.x", false},
        // "*." is a name without a point.
        {u"*.", u"readme", true},
        {u"*.", u"readme.txt", false},
        {u"*.", u"a.b.c", false},
        {u"*", u"anything.x", true},
        {u"*.*", u"noext", true},
        {u"*.*", u"a.b", true},
        {u"*.*", u".hidden", true},
        {u"*.b", u"x.b.b", true},
        {u"a*b*c", u"axxbyyc", true},
        {u"a*b*c", u"axxbyy", false},
        {u"a*", u"a", true},
        // "?" is one character, or nothing before a point or at the end.
        {u"?", u"a", true},
        {u"?", u"ab", false},
        {u"a?c", u"abc", true},
        {u"a?c", u"ac", false},
        {u"a?c", u"a.c", false},
        {u"file?.txt", u"file1.txt", true},
        {u"file?.txt", u"file.txt", true},
        {u"file?.txt", u"file12.txt", false},
        {u"a??", u"a", true},
        {u"a??", u"abcd", false},
        // Letters of the code page fold like ASCII ones; the signs among them do not.
        {u"\u00E9*", u"\u00C9clair", true},
        {u"\u00FF", u"\u0178", true},
        {u"\u0161koda", u"\u0160KODA", true},
        {u"\u00D7", u"\u00F7", false},
        {u"\u00DF", u"SS", false},
        {u"", u"a", false},
        {u"", u"", false},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(toUtf8(row.pattern) + " ~ " + toUtf8(row.name));
        EXPECT_EQ(matchesWildcard(row.pattern, row.name), row.matches);
    }
}

TEST(FileLookup, CaseFoldingAndOrder)
{
    EXPECT_EQ(foldName(u"fltsim.\u00E9\u0161\u0153\u017E\u00FF\u00E0\u00FE"),
              u"FLTSIM.\u00C9\u0160\u0152\u017D\u0178\u00C0\u00DE");
    EXPECT_EQ(foldName(u"\u00F7\u00D7\u00DF\u00B5[]_"), u"\u00F7\u00D7\u00DF\u00B5[]_");
    EXPECT_TRUE(sameNameIgnoringCase(u"Texture.KLM", u"texture.klm"));
    EXPECT_FALSE(sameNameIgnoringCase(u"texture", u"texture."));

    std::vector<std::u16string> names = {u"_x", u"b", u"texture.KLM", u"Z", u"A", u"Texture.a", u"a.txt", u"texture"};
    std::sort(names.begin(), names.end(), [](const auto &a, const auto &b) { return listingOrderLess(a, b); });
    // Upper-cased and compared ordinally: "_" (0x5F) comes after "Z" (0x5A), a name before its longer forms.
    const std::vector<std::u16string> expected = {u"A",         u"a.txt",       u"b", u"texture",
                                                  u"Texture.a", u"texture.KLM", u"Z", u"_x"};
    EXPECT_EQ(names, expected);
    // Names that differ only in case still have a fixed order.
    EXPECT_TRUE(listingOrderLess(u"MODEL.cfg", u"Model.cfg"));
    EXPECT_FALSE(listingOrderLess(u"Model.cfg", u"MODEL.cfg"));
    EXPECT_FALSE(listingOrderLess(u"same", u"same"));
}

TEST(FileLookup, Lookups)
{
    TempDir dir;
    const fs::path aircraft = dir / "Aircraft";
    buildAircraft(aircraft);
    using Names = std::vector<std::u16string>;
    struct Row
    {
        const char *pattern;
        LookupKind kind;
        Names names;
    };
    const Row rows[] = {
        {"*.air", LookupKind::Files, {u"Boeing.air", u"extra.AIR"}},
        {"*.AIR", LookupKind::FilesAndFolders, {u"Boeing.air", u"extra.AIR"}},
        {"texture.*", LookupKind::FilesAndFolders, {u"texture", u"Texture.KLM", u"texture.txt"}},
        {"texture.*", LookupKind::Folders, {u"texture", u"Texture.KLM"}},
        {"texture.*", LookupKind::Files, {u"texture.txt"}},
        {"model.*", LookupKind::FilesAndFolders, {u"model"}},
        {"*", LookupKind::Folders, {u"model", u"texture", u"Texture.KLM", u"textures"}},
        {"AIRCRAFT.CFG", LookupKind::Files, {u"aircraft.cfg"}},
        {"*.mdl", LookupKind::Files, {}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.pattern);
        EXPECT_EQ(sortedNames(aircraft / row.pattern, row.kind), row.names);
        // The folder part ignores case as well, as the lower-cased folder prefix of a report relies on.
        EXPECT_EQ(sortedNames(dir / "aircraft" / row.pattern, row.kind), row.names);
    }
    EXPECT_EQ(sortedNames(aircraft / "model" / "*.mdl", LookupKind::Files), Names {u"Boeing.MDL"});
    EXPECT_TRUE(FileLookup(dir / "missing" / "*.air", LookupKind::FilesAndFolders).names().empty());
    EXPECT_TRUE(FileLookup(aircraft / "", LookupKind::FilesAndFolders).names().empty());

    FileLookup lookup(dir / "AIRCRAFT" / "*.air");
    std::vector<std::u16string> handedOut;
    while (const std::optional<std::u16string> name = lookup.next())
        handedOut.push_back(*name);
    EXPECT_EQ(handedOut, lookup.names());
    EXPECT_EQ(handedOut.size(), 2u);
    EXPECT_EQ(lookup.next(), std::nullopt);
}

TEST(FileLookup, ResolveAndExists)
{
    TempDir dir;
    buildAircraft(dir / "Aircraft");
    {
        SCOPED_TRACE("mixed case in every component");
        const std::optional<fs::path> resolved = FileLookup::resolve(dir / "AIRCRAFT" / "MODEL" / "boeing.mdl");
        ASSERT_TRUE(resolved);
        EXPECT_EQ(fileIdentity(*resolved), fileIdentity(dir / "Aircraft" / "model" / "Boeing.MDL"));
        EXPECT_TRUE(FileLookup::exists(dir / "aircraft" / "texture.klm" / "B.BMP"));
    }
    {
        SCOPED_TRACE("trailing points and blanks are dropped");
        EXPECT_TRUE(FileLookup::exists(dir / "aircraft" / "texture.", LookupKind::Folders));
        EXPECT_TRUE(FileLookup::exists(dir / "aircraft" / "Model. ", LookupKind::Folders));
        EXPECT_TRUE(FileLookup::exists(dir / "aircraft" / "texture." / "A.bmp"));
        EXPECT_TRUE(FileLookup::exists(dir / "aircraft" / "aircraft.cfg.", LookupKind::Files));
    }
    {
        SCOPED_TRACE("kinds and missing paths");
        EXPECT_FALSE(FileLookup::exists(dir / "aircraft" / "texture", LookupKind::Files));
        EXPECT_TRUE(FileLookup::exists(dir / "aircraft" / "texture", LookupKind::FilesAndFolders));
        EXPECT_FALSE(FileLookup::exists(dir / "aircraft" / "aircraft.cfg", LookupKind::Folders));
        EXPECT_FALSE(FileLookup::exists(dir / "aircraft" / "model.cfg"));
        EXPECT_FALSE(FileLookup::resolve(dir / "aircraft" / "nothing" / "a.bmp"));
        EXPECT_FALSE(FileLookup::resolve(dir / "aircraft" / "aircraft.cfg" / "x"));
        EXPECT_FALSE(FileLookup::resolve(fs::path()));
    }
}
