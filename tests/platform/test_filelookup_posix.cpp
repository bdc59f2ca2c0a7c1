// Lookups where the file system tells case apart: which of several spellings wins, and the listing order.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/filelookup.h"
#include "common/tempdir.h"

using namespace fleetwright::platform;
using fleetwright::test::TempDir;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

TEST(FileLookupPosix, ExactSpellingWinsElseListingOrder)
{
    TempDir dir;
    writeBytes(dir / "model.cfg", "");
    writeBytes(dir / "Model.cfg", "");
    writeBytes(dir / "MODEL.cfg", "");
    struct Row
    {
        const char *asked;
        const char *found;
    };
    const Row rows[] = {
        {"model.cfg", "model.cfg"},  {"Model.cfg", "Model.cfg"},
        {"MODEL.cfg", "MODEL.cfg"},  {"model.CFG", "MODEL.cfg"}, // no exact spelling: the first in listing order
        {"Model.cfg.", "Model.cfg"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.asked);
        EXPECT_EQ(FileLookup::resolve(dir / row.asked), dir / row.found);
    }
}

TEST(FileLookupPosix, ResolveGivesTheRealSpelling)
{
    TempDir dir;
    writeBytes(dir / "FS9" / "Aircraft" / "B737" / "Model" / "Boeing.MDL", "");
    // "b737" matches the asked spelling exactly but holds no model; "TEXTURE" is a file, no folder.
    writeBytes(dir / "FS9" / "Aircraft" / "b737" / "marker", "");
    writeBytes(dir / "FS9" / "Aircraft" / "B737" / "TEXTURE", "");
    writeBytes(dir / "FS9" / "Aircraft" / "B737" / "texture" / "a.bmp", "");

    EXPECT_EQ(FileLookup::resolve(dir / "fs9" / "aircraft" / "b737" / "model" / "boeing.mdl"),
              dir / "FS9" / "Aircraft" / "B737" / "Model" / "Boeing.MDL")
        << "the exact spelling b737 exists but leads nowhere";
    EXPECT_EQ(FileLookup::resolve(dir / "fs9" / "AIRCRAFT" / "B737" / "Texture" / "A.BMP"),
              dir / "FS9" / "Aircraft" / "B737" / "texture" / "a.bmp");
    EXPECT_EQ(FileLookup::resolve(dir / "fs9" / "aircraft" / ""), dir / "FS9" / "Aircraft" / "");
    EXPECT_EQ(FileLookup::resolve(dir / "fs9" / "aircraft" / "." / "B737" / ".." / "b737" / "MARKER"),
              dir / "FS9" / "Aircraft" / "." / "B737" / ".." / "b737" / "marker");
}

TEST(FileLookupPosix, ListingOrderAndOddEntries)
{
    TempDir dir;
    for (const char *name : {"b.air", "_x.air", "Z.air", "a.AIR", "A.air", "texture.air"})
        writeBytes(dir / name, "");
    fs::create_directory_symlink("nowhere", dir / "dangling.air");
    fs::create_directory(dir / "real");
    fs::create_directory_symlink("real", dir / "linked.air");
    // A name that is no UTF-8 cannot be named in the engine's text; it is left out, not mangled.
    writeBytes(dir / std::string("bad\xff.air"), "");

    const std::vector<std::u16string> files = FileLookup(dir / "*.air", LookupKind::Files).names();
    const std::vector<std::u16string> expectedFiles = {u"A.air",       u"a.AIR", u"b.air",
                                                       u"texture.air", u"Z.air", u"_x.air"};
    EXPECT_EQ(files, expectedFiles);
    const std::vector<std::u16string> folders = FileLookup(dir / "*.air", LookupKind::Folders).names();
    EXPECT_EQ(folders, std::vector<std::u16string> {u"linked.air"});
    // Wine's own lookup lets every name through "*.", so this rule is checked here only.
    const std::vector<std::u16string> plain = FileLookup(dir / "*.", LookupKind::FilesAndFolders).names();
    EXPECT_EQ(plain, std::vector<std::u16string> {u"real"});
}
