#include <filesystem>

#include <gtest/gtest.h>

#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/runtimeerror.h"
#include "core/scripteddialogs.h"
#include "editing/sectionrenumber.h"
#include "platform/fileio.h"
#include "common/tempdir.h"

using namespace fleetwright;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;

namespace {

class SectionFile : public ::testing::Test
{
protected:
    void SetUp() override
    {
        file = dir / "aircraft.cfg";
        ini.setPath(widePath(file));
    }

    TempDir dir;
    std::filesystem::path file;
    clsIniFile ini;
    ScriptedDialogs dialogs;
};

int errorNumber(const std::function<void()> &operation)
{
    try {
        operation();
    } catch (const RuntimeError &error) {
        return error.number();
    }
    return 0;
}

} // namespace

TEST_F(SectionFile, RenumberFollowsFileOrderAndStripsTheWholeFile)
{
    writeBytes(file,
               "// made by hand\r\n[fltsim.0]\r\ntitle=a //b  \r\n[FLTSIM.5] // old\r\ntitle=c\r\n"
               "   [fltsim.3]\r\n\t[fltsim.9]\r\n//[fltsim.7]\r\n[fltsim.abc]\r\n[general]\r\natc_type=X");
    Renumber_fltsim(widePath(file), false);
    EXPECT_EQ(readBytes(file),
              "\r\n[fltsim.0]\r\ntitle=a\r\n[fltsim.1]\r\ntitle=c\r\n[fltsim.2]\r\n\t[fltsim.9]\r\n"
              "\r\n[fltsim.3]\r\n[general]\r\natc_type=X\r\n");
    EXPECT_FALSE(std::filesystem::exists(dir / "aircraft.corvane"));

    // A file in order is stripped all the same; with backups on, the first state is kept beside it.
    writeBytes(file, "[fltsim.0]\r\ntitle=a // x\r\n");
    Renumber_fltsim(widePath(file), true);
    EXPECT_EQ(readBytes(file), "[fltsim.0]\r\ntitle=a\r\n");
    EXPECT_EQ(readBytes(dir / "aircraft.corvane"), "[fltsim.0]\r\ntitle=a // x\r\n");
}

TEST_F(SectionFile, RenumberFaultsLeaveTheFileAsItStood)
{
    EXPECT_EQ(errorNumber([&] { Renumber_fltsim(widePath(file), false); }), 9);
    writeBytes(file, "");
    EXPECT_EQ(errorNumber([&] { Renumber_fltsim(widePath(file), false); }), 9);

    writeBytes(file, "[fltsim.4]\r\ntitle=a // x\r\n");
    std::filesystem::permissions(file,
                                 std::filesystem::perms::owner_write | std::filesystem::perms::group_write
                                     | std::filesystem::perms::others_write,
                                 std::filesystem::perm_options::remove);
    EXPECT_EQ(errorNumber([&] { Renumber_fltsim(widePath(file), false); }), 75);
    EXPECT_EQ(readBytes(file), "[fltsim.4]\r\ntitle=a // x\r\n");
    platform::clearReadOnly(file);

    std::string huge;
    for (int i = 0; i < 32770; ++i)
        huge += "k=v\r\n";
    writeBytes(file, huge);
    EXPECT_EQ(errorNumber([&] { Renumber_fltsim(widePath(file), false); }), 6);
    EXPECT_EQ(readBytes(file), huge);
}

TEST_F(SectionFile, DeleteTakesTheCheckedRowsByPlaceAndRenumbers)
{
    // A non-variation section first shifts rows against sections: checking row 1 deletes the first variation.
    writeBytes(file,
               "[general]\r\natc_type=X\r\n[fltsim.0]\r\ntitle=A\r\n[fltsim.1]\r\ntitle=B\r\n"
               "[fltsim.2]\r\ntitle=C\r\n");
    GridRows grid {0, {u"FLTSIM.0", u"FLTSIM.1", u"FLTSIM.2"}, {u"A", u"B", u"C"}, {false, true, false}};
    dialogs.pushAnswer(true);
    EXPECT_TRUE(FlightSimSectionDelete(ini, grid, true, false, dialogs));
    EXPECT_EQ(dialogs.records().at(0).text, u"About to delete section [1] = B. Are you sure?");
    EXPECT_EQ(readBytes(file), "[general]\r\natc_type=X\r\n[fltsim.0]\r\ntitle=B\r\n[fltsim.1]\r\ntitle=C\r\n");
}

TEST_F(SectionFile, DeleteOfTheSelectedRowAsksWithItsNameAndNoKeepsTheFile)
{
    const std::string before = "[fltsim.0]\r\ntitle=A\r\n[fltsim.1]\r\ntitle=B // blue\r\n[fltsim.2]\r\ntitle=C\r\n";
    writeBytes(file, before);
    GridRows grid {1, {u"FLTSIM.0", u"FLTSIM.1", u"FLTSIM.2"}, {u"A", u"B", u"C"}, {false, false, false}};
    dialogs.pushAnswer(false);
    EXPECT_FALSE(FlightSimSectionDelete(ini, grid, true, true, dialogs));
    EXPECT_EQ(dialogs.records().at(0).text, u"About to delete section [FLTSIM.1] = B. Are you sure?");
    EXPECT_EQ(readBytes(file), before);
    // The backup comes before the question, so No leaves one behind.
    EXPECT_EQ(readBytes(dir / "aircraft.corvane"), before);

    dialogs.pushAnswer(true);
    EXPECT_TRUE(FlightSimSectionDelete(ini, grid, true, true, dialogs));
    EXPECT_EQ(readBytes(file), "[fltsim.0]\r\ntitle=A\r\n[fltsim.1]\r\ntitle=C\r\n");

    // Several checked: one question for all; nothing selected: the information box and nothing else.
    writeBytes(file, before);
    grid.checked = {true, false, true};
    dialogs.pushAnswer(true);
    EXPECT_TRUE(FlightSimSectionDelete(ini, grid, true, false, dialogs));
    EXPECT_EQ(dialogs.records().back().text, u"About to delete several [fltsim.x] sections. Are you sure?");
    EXPECT_EQ(readBytes(file), "[fltsim.0]\r\ntitle=B\r\n");
    grid.selectedRow.reset();
    EXPECT_FALSE(FlightSimSectionDelete(ini, grid, false, false, dialogs));
    EXPECT_EQ(
        dialogs.records().back(),
        (DialogRecord {DialogKind::Information, u"", u"You must select the [fltsim.x] entry which should be deleted"}));
}

TEST_F(SectionFile, RenumberCommandAsksFirst)
{
    const std::string before = "[fltsim.3]\r\ntitle=A\r\n";
    writeBytes(file, before);
    dialogs.pushAnswer(false);
    EXPECT_FALSE(FlightSimSectionRenumber(widePath(file), true, false, dialogs));
    EXPECT_EQ(readBytes(file), before);
    EXPECT_EQ(dialogs.records().at(0).text, u"Are you sure?");
    EXPECT_TRUE(FlightSimSectionRenumber(widePath(file), false, false, dialogs));
    EXPECT_EQ(readBytes(file), "[fltsim.0]\r\ntitle=A\r\n");
}
