#include <gtest/gtest.h>

#include "core/clsinifile.h"
#include "core/scripteddialogs.h"
#include "editing/sortkeys.h"
#include "common/tempdir.h"

using namespace fleetwright;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;

TEST(SortArray, ShellSortByCodeKeepsTheEmptyLastRow)
{
    KeyTable table = {{u"ui_type", u"1"},  {u"atc_id", u"2"}, {u"title", u"3"}, {u"//atc_id", u"4"},
                      {u"atc_id_2", u"5"}, {u"atc", u"6"},    {u"", u""}};
    SortArray(table, 0);
    const std::vector<std::u16string> names = {u"//atc_id", u"atc", u"atc_id", u"atc_id_2", u"title", u"ui_type", u""};
    for (std::size_t i = 0; i < names.size(); ++i)
        EXPECT_EQ(table[i][0], names[i]) << i;
    EXPECT_EQ(table[2][1], u"2");
}

TEST(DoSortKeys, RewritesEveryVariationInTheFixedOrder)
{
    TempDir dir;
    const auto file = dir / "aircraft.cfg";
    writeBytes(file,
               "[fltsim.0]\r\nui_type=Skyliner\r\nAtc_Id=CV-1 // reg\r\n; keep me\r\nmodel=\r\n"
               "description=\r\ntitle=\"Skyliner\"\r\nsim=sky\r\n//atc_id=x\r\n"
               "[general]\r\nz=1\r\na=2\r\n[fltsim.1]\r\ntitle=Only\r\n[fltsim.2]\r\n");
    clsIniFile ini;
    ini.setPath(widePath(file));
    ScriptedDialogs dialogs;
    DoSortKeys(ini, true, dialogs);
    // The first key goes right under the emptied header, the others behind it: a comment line stays in its
    // section, below the keys.
    EXPECT_EQ(readBytes(file),
              "[fltsim.0]\r\ntitle=Skyliner\r\nmodel= \r\nsim=sky\r\n//atc_id=x\r\n"
              "atc_id=CV-1 // reg\r\ndescription=\r\nui_type=Skyliner\r\n; keep me\r\n"
              "[general]\r\nz=1\r\na=2\r\n[fltsim.1]\r\ntitle=Only\r\n[fltsim.2]\r\n");
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0].text, u"The keys in the [fltsim.x] sections have been sorted");
    EXPECT_TRUE(std::filesystem::exists(dir / "aircraft.corvane"));
}
