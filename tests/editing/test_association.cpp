#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "core/clsinifile.h"
#include "core/runtimeerror.h"
#include "core/scripteddialogs.h"
#include "editing/aircraftcfgtest.h"
#include "editing/association.h"
#include "editing/sortkeys.h"
#include "platform/fileio.h"
#include "common/tempdir.h"

using namespace fleetwright;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;

namespace {

const std::string ORIGINAL = "[general]\r\natc_type=SKY\r\n"
                             "[fltsim.0]\r\ntitle=A\r\nmodel=heavy // old model\r\ntexture=Blue\r\n"
                             "[fltsim.1]\r\ntitle=B\r\n";

class Association : public test::AircraftCfgTest
{
protected:
    void SetUp() override { write(ORIGINAL); }
};

} // namespace

TEST_F(Association, WritesWhatWasPickedDefaultAsOneBlank)
{
    AssociationInput input {u"FLTSIM.1", u"Red", u"<default>", u"sky.air", false, true};
    EXPECT_TRUE(associateFiles(ini, input, dialogs));
    EXPECT_EQ(readBytes(file),
              "[general]\r\natc_type=SKY\r\n"
              "[fltsim.0]\r\ntitle=A\r\nmodel=heavy // old model\r\ntexture=Blue\r\n"
              "[fltsim.1]\r\ntitle=B\r\ntexture=Red\r\nmodel= \r\nsim=sky.air\r\n");
    EXPECT_EQ(readBytes(dir / "aircraft.corvane"), ORIGINAL);
    EXPECT_TRUE(dialogs.records().empty());

    // Only a model: it goes to the section written last, here the row's; the old comment goes with the value.
    writeBytes(file, ORIGINAL);
    ini.setSection(u"FLTSIM.0");
    input = {u"FLTSIM.0", u"", u"<default>", u"", false, false};
    EXPECT_TRUE(associateFiles(ini, input, dialogs));
    EXPECT_EQ(readBytes(file),
              "[general]\r\natc_type=SKY\r\n"
              "[fltsim.0]\r\ntitle=A\r\nmodel= \r\ntexture=Blue\r\n"
              "[fltsim.1]\r\ntitle=B\r\n");
}

TEST_F(Association, AfterSortingAModelAloneGoesToTheLastVariation)
{
    DoSortKeys(ini, false, dialogs);
    const std::string sorted = readBytes(file);
    AssociationInput input {u"FLTSIM.0", u"", u"heavy", u"", false, false};
    EXPECT_TRUE(associateFiles(ini, input, dialogs));
    EXPECT_EQ(readBytes(file), sorted + "model=heavy\r\n");
}

TEST_F(Association, NoNoRowAndReadOnly)
{
    AssociationInput input {u"FLTSIM.0", u"Red", u"", u"", true, true};
    dialogs.pushAnswer(false);
    EXPECT_FALSE(associateFiles(ini, input, dialogs));
    EXPECT_EQ(dialogs.records().back().text, u"Are you sure?");
    EXPECT_EQ(readBytes(file), ORIGINAL);
    EXPECT_FALSE(std::filesystem::exists(dir / "aircraft.corvane"));

    input.rowSection.reset();
    try {
        associateFiles(ini, input, dialogs);
        ADD_FAILURE() << "no row selected must end the operation";
    } catch (const RuntimeError &error) {
        EXPECT_EQ(error.number(), 91);
        EXPECT_EQ(error.procedure(), u"cmd_Associate_Click");
    }
    EXPECT_EQ(readBytes(file), ORIGINAL);

    input.rowSection = u"FLTSIM.0";
    std::filesystem::permissions(file,
                                 std::filesystem::perms::owner_write | std::filesystem::perms::group_write
                                     | std::filesystem::perms::others_write,
                                 std::filesystem::perm_options::remove);
    dialogs.pushAnswer(true);
    EXPECT_TRUE(associateFiles(ini, input, dialogs));
    EXPECT_EQ(readBytes(file), ORIGINAL);
    EXPECT_EQ(readBytes(dir / "aircraft.corvane"), ORIGINAL);
    platform::clearReadOnly(file);
}
