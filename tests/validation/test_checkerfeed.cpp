#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "batchfixtures.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "validation/checkerfeed.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

ValidationFeed feed(const fs::path &folder, NeverAskDialogs &dialogs)
{
    clsIniFile AircraftIni;
    return feedValidationFromFolder(widePath(folder), AircraftIni, dialogs);
}

} // namespace

TEST(CheckerFeed, RowOneModelDecidesTheTextureFormat)
{
    struct Row
    {
        const char *name;
        std::string mdl; // empty: no model file
        bool withModelCfg;
        std::u16string expected;
    };
    const std::vector<Row> rows = {
        {"FSX model", modelBytes("MDLX"), true, u"FSX"},
        {"FS9 model", modelBytes("MDL9"), true, u"FS8/9"},
        {"FS8 model", modelBytes("MDL8"), true, u"FS8/9"},
        {"other tag", modelBytes("RIFF"), true, u"n/a"},
        // What ResetValues left: empty.
        {"no model file", "", true, u""},
        {"no model.cfg", modelBytes("MDLX"), false, u""},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        TempDir dir;
        writeBytes(dir / "aircraft.cfg",
                   crlf("[fltsim.0]\ntitle=a\nmodel=fsx\n[fltsim.1]\ntitle=b\nmodel=\n[fltsim.2]\ntitle=c\n"));
        if (row.withModelCfg)
            writeBytes(dir / "model.fsx" / "model.cfg", crlf("normal=plane.MDL\n"));
        if (!row.mdl.empty())
            writeBytes(dir / "model.fsx" / "plane.mdl", row.mdl);
        // Row 2's model is never opened.
        writeBytes(dir / "model" / "model.cfg", crlf("normal=other\n"));
        writeBytes(dir / "model" / "other.mdl", modelBytes("MDL9"));
        NeverAskDialogs dialogs;
        const ValidationFeed fed = feed(dir.path(), dialogs);
        EXPECT_EQ(fed.gridRowCount, 3);
        EXPECT_EQ(fed.textureFormatText, row.expected);
        EXPECT_FALSE(fed.loadFault);
        EXPECT_TRUE(dialogs.messages().empty());
    }
}

TEST(CheckerFeed, FoldersWithoutVariations)
{
    TempDir dir;
    NeverAskDialogs dialogs;
    const ValidationFeed none = feed(dir.path(), dialogs);
    EXPECT_EQ(none.gridRowCount, 0);
    EXPECT_EQ(none.textureFormatText, u"");

    writeBytes(dir / "aircraft.cfg", crlf("[general]\natc_type=X\n[fltsimx]\ntitle=not a variation\n"));
    const ValidationFeed empty = feed(dir.path(), dialogs);
    EXPECT_EQ(empty.gridRowCount, 0);
    EXPECT_FALSE(empty.loadFault);
    EXPECT_TRUE(dialogs.messages().empty());
}

TEST(CheckerFeed, UnreadableModelFileIsToldAndLeavesTheFormatEmpty)
{
    TempDir dir;
    writeBytes(dir / "aircraft.cfg", crlf("[fltsim.0]\ntitle=a\nmodel=\n"));
    writeBytes(dir / "model" / "model.cfg", crlf("normal=short\n"));
    writeBytes(dir / "model" / "short.mdl", modelBytes("MDL9", 20)); // no radius byte
    NeverAskDialogs dialogs;
    const ValidationFeed fed = feed(dir.path(), dialogs);
    EXPECT_EQ(fed.gridRowCount, 1);
    EXPECT_EQ(fed.textureFormatText, u"");
    ASSERT_EQ(dialogs.messages().size(), 1u);
    EXPECT_EQ(dialogs.messages()[0].kind, DialogKind::Critical);
    EXPECT_TRUE(dialogs.messages()[0].text.starts_with(u"The model file:"));
}

TEST(CheckerFeed, LoadFaultKeepsTheRowsReadAndOpensNoRow)
{
    TempDir dir;
    writeBytes(dir / "aircraft.cfg",
               crlf("[fltsim.0]\ntitle=a\nmodel=\n[geometry]\nwing_span=1e400\n[fltsim.1]\ntitle=b\n"));
    writeBytes(dir / "model" / "model.cfg", crlf("normal=plane\n"));
    writeBytes(dir / "model" / "plane.mdl", modelBytes("MDLX"));
    NeverAskDialogs dialogs;
    const ValidationFeed fed = feed(dir.path(), dialogs);
    ASSERT_TRUE(fed.loadFault);
    EXPECT_EQ(fed.loadFault->number(), 6);
    EXPECT_EQ(fed.loadFault->procedure(), u"Dir1_Change");
    EXPECT_EQ(fed.gridRowCount, 1);
    EXPECT_EQ(fed.textureFormatText, u"");
    ASSERT_EQ(dialogs.messages().size(), 1u);
    EXPECT_NE(dialogs.messages()[0].text.find(u"Procedure Dir1_Change"), std::u16string::npos);
}
