#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/clsinifile.h"
#include "core/scripteddialogs.h"
#include "editing/aircraftcfgtest.h"
#include "editing/updateall.h"
#include "platform/fileio.h"
#include "common/tempdir.h"

using namespace fleetwright;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;

namespace {

// Numbered with a gap, out of order, one variation without the key, comments on and off written lines.
const std::string ORIGINAL = "[fltsim.0]\r\ntitle=A\r\natc_airline=Old // was\r\n; maker's note\r\n"
                             "[fltsim.2]\r\ntitle=C // charlie\r\n"
                             "[fltsim.1]\r\ntitle=B\r\natc_airline=Old\r\n"
                             "[general]\r\natc_type=SKY\r\n";

class UpdateAll : public test::AircraftCfgTest
{
protected:
    void SetUp() override { write(ORIGINAL); }
};

} // namespace

TEST_F(UpdateAll, NoCheckMeansEveryVariationAndNoBackup)
{
    dialogs.pushAnswer(true);
    EXPECT_TRUE(updateAll(ini, u"atc_airline", u"Sky", {false, false, false}, true, dialogs));
    EXPECT_EQ(readBytes(file),
              "[fltsim.0]\r\ntitle=A\r\natc_airline=Sky\r\n; maker's note\r\n"
              "[fltsim.2]\r\ntitle=C // charlie\r\natc_airline=Sky\r\n"
              "[fltsim.1]\r\ntitle=B\r\natc_airline=Sky\r\n"
              "[general]\r\natc_type=SKY\r\n");
    EXPECT_FALSE(std::filesystem::exists(dir / "aircraft.corvane"));
    EXPECT_EQ(dialogs.records().at(0).text, u"Are you sure?");
    // Section and Key stay on the last variation.
    EXPECT_EQ(ini.Section(), u"fltsim.1");
    EXPECT_EQ(ini.Key(), u"atc_airline");

    // An empty field writes "key=" everywhere.
    EXPECT_TRUE(updateAll(ini, u"atc_airline", u"", {}, false, dialogs));
    EXPECT_EQ(readBytes(file),
              "[fltsim.0]\r\ntitle=A\r\natc_airline=\r\n; maker's note\r\n"
              "[fltsim.2]\r\ntitle=C // charlie\r\natc_airline=\r\n"
              "[fltsim.1]\r\ntitle=B\r\natc_airline=\r\n"
              "[general]\r\natc_type=SKY\r\n");
}

TEST_F(UpdateAll, CheckedRowsGoByPlaceInTheFile)
{
    // Rows 0 and 2: the first and the third section of the file. A new key goes behind the section's last key,
    // ahead of a comment line.
    EXPECT_TRUE(updateAll(ini, u"atc_heavy", u"1", {true, false, true}, false, dialogs));
    EXPECT_EQ(readBytes(file),
              "[fltsim.0]\r\ntitle=A\r\natc_airline=Old // was\r\natc_heavy=1\r\n; maker's note\r\n"
              "[fltsim.2]\r\ntitle=C // charlie\r\n"
              "[fltsim.1]\r\ntitle=B\r\natc_airline=Old\r\natc_heavy=1\r\n"
              "[general]\r\natc_type=SKY\r\n");

    // A section ahead of the variations shifts the check marks by one place.
    writeBytes(file, "[general]\r\natc_type=SKY\r\n[fltsim.0]\r\ntitle=A\r\n[fltsim.1]\r\ntitle=B\r\n");
    EXPECT_TRUE(updateAll(ini, u"ui_type", u"Sky", {false, true}, false, dialogs));
    EXPECT_EQ(readBytes(file),
              "[general]\r\natc_type=SKY\r\n[fltsim.0]\r\ntitle=A\r\nui_type=Sky\r\n[fltsim.1]\r\ntitle=B\r\n");
}

TEST_F(UpdateAll, NoAndReadOnlyLeaveTheFile)
{
    dialogs.pushAnswer(false);
    EXPECT_FALSE(updateAll(ini, u"atc_airline", u"Sky", {}, true, dialogs));
    EXPECT_EQ(readBytes(file), ORIGINAL);

    std::filesystem::permissions(file,
                                 std::filesystem::perms::owner_write | std::filesystem::perms::group_write
                                     | std::filesystem::perms::others_write,
                                 std::filesystem::perm_options::remove);
    EXPECT_TRUE(updateAll(ini, u"atc_airline", u"Sky", {}, false, dialogs));
    EXPECT_EQ(readBytes(file), ORIGINAL);
    EXPECT_EQ(dialogs.records().size(), 1u);
    platform::clearReadOnly(file);
}
