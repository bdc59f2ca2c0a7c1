#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "core/aircraftfilestore.h"
#include "core/clsinifile.h"
#include "core/scripteddialogs.h"
#include "editing/aircraftcfgtest.h"
#include "editing/generalupdate.h"
#include "platform/fileio.h"
#include "simfiles/modelfile.h"
#include "common/tempdir.h"

using namespace fleetwright;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;

namespace {

const std::string ORIGINAL = "// Skyliner\r\n"
                             "[fltsim.0]\r\n"
                             "title=Old // old title\r\n"
                             "sim=sky\r\n"
                             "ui_variation=Old var\r\n"
                             "atc_id=N1 // reg\r\n"
                             "texture=Blue // paint\r\n"
                             "[fltsim.1]\r\n"
                             "title=Other // keep\r\n"
                             "[airplane_geometry]\r\n"
                             "wing_span=100 // ft\r\n"
                             "[exits]\r\n"
                             "exit.0=0.4, 62, -2, 6.7, 0 //Main door\r\n"
                             "exit.1=0.4, 20, 2, 6.7, 1\r\n"
                             "exit.2=0.4, 10, 2, 6.7, 2 //Cargo\r\n";

class GeneralUpdate : public test::AircraftCfgTest
{
protected:
    void SetUp() override
    {
        write(ORIGINAL);
        input.rowSection = u"FLTSIM.0";
        GeneralData &d = input.data;
        d.title = u"New title";
        d.atcParkingTypes = u"GATE,RAMP";
        d.atcParkingCodes = u"SKY";
        d.uiCreatedBy = u"Corvane";
        d.uiTypeRole = u"Airliner";
        d.uiManufacturer = u"Skyworks";
        d.uiType = u"Skyliner";
        d.uiVariation = u"";
        d.atcId = u"N2";
        d.atcFlightNumber = u"12";
        d.atcAirline = u"Sky";
        d.atcModel = u"SK20";
        d.atcHeavy = true;
        d.exits = {{{u"1,5", u"62", u"-2", u"6.7", u"0"},
                    {u"0.4", u"21", u"2", u"6.7", u"1"},
                    {u"0.4", u"", u"3", u"6.7", u"2"}}};
        d.generalAtcModel = u"SK20";
        d.generalAtcType = u"SKYWORKS";
        input.ExitNote0 = u"//Main door";
        input.ExitNote1 = u"//Cargo";
        input.rowAtc = atcBoxesOfRow(u"N1", u"", u"", u"1 // heavy", u"");
        input.ConfirmUpdates = true;
        input.AutoBackupOn = true;
    }

    GeneralUpdateInput input;
};

// The variation's keys in table order, a missing key at the section's end; the first exit line with its
// note, the third left alone for its empty box; [general] new at the file's end.
const std::string WRITTEN = "// Skyliner\r\n"
                            "[fltsim.0]\r\n"
                            "title=New title\r\n"
                            "sim=sky\r\n"
                            "ui_variation=\r\n"
                            "atc_id=N2\r\n"
                            "texture=Blue // paint\r\n"
                            "atc_parking_types=GATE,RAMP\r\n"
                            "atc_parking_codes=SKY\r\n"
                            "ui_createdby=Corvane\r\n"
                            "ui_typerole=Airliner\r\n"
                            "ui_manufacturer=Skyworks\r\n"
                            "ui_type=Skyliner\r\n"
                            "atc_flight_number=12\r\n"
                            "atc_airline=Sky\r\n"
                            "atc_model=SK20\r\n"
                            "atc_heavy=1\r\n"
                            "[fltsim.1]\r\n"
                            "title=Other // keep\r\n"
                            "[airplane_geometry]\r\n"
                            "wing_span=100 // ft\r\n"
                            "[exits]\r\n"
                            "exit.0= 1.5, 62, -2, 6.7, 0            //Main door\r\n"
                            "exit.1= 0.4, 21, 2, 6.7, 1            //Cargo\r\n"
                            "exit.2=0.4, 10, 2, 6.7, 2 //Cargo\r\n"
                            "[general]\r\n"
                            "atc_model=SK20\r\n"
                            "atc_type=SKYWORKS\r\n";

} // namespace

TEST(ExitLineValue, PointsBlanksAndTheNote)
{
    EXPECT_EQ(exitLineValue({u"0,4", u"62.0", u"-2.0", u"6.7", u"0"}, u"//Main door"),
              u" 0.4, 62.0, -2.0, 6.7, 0            //Main door");
    EXPECT_EQ(exitLineValue({u" ", u"1", u"2", u"3", u"4"}, u""), u"  , 1, 2, 3, 4            ");
}

TEST_F(GeneralUpdate, WritesEveryKeyAndTakesTheFirstBackup)
{
    dialogs.pushAnswer(true);
    const GeneralUpdateResult result = updateGeneralData(ini, input, dialogs);
    EXPECT_EQ(result.outcome, GeneralUpdateOutcome::Written);
    EXPECT_EQ(readBytes(file), WRITTEN);
    EXPECT_EQ(readBytes(dir / "aircraft.corvane"), ORIGINAL);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0], (DialogRecord {DialogKind::Question, u"", u"Are you sure?"}));
    // The ATC boxes take the row's old values until the reload opens the row again.
    ASSERT_TRUE(result.atcBoxes);
    EXPECT_EQ(result.atcBoxes->atcId, u"N1");
    EXPECT_TRUE(result.atcBoxes->atcHeavy);

    // A second update leaves the backup as the first one made it; a new span goes in with a point.
    input.ConfirmUpdates = false;
    input.data.wingSpanNew = u"112,6";
    input.data.atcHeavy = false;
    EXPECT_EQ(updateGeneralData(ini, input, dialogs).outcome, GeneralUpdateOutcome::Written);
    std::string expected = WRITTEN;
    expected.replace(expected.find("wing_span=100 // ft"), 19, "wing_span=112.6");
    expected.replace(expected.find("atc_heavy=1"), 11, "atc_heavy=0");
    EXPECT_EQ(readBytes(file), expected);
    EXPECT_EQ(readBytes(dir / "aircraft.corvane"), ORIGINAL);
    EXPECT_EQ(dialogs.records().size(), 1u);
}

TEST_F(GeneralUpdate, NoNoRowAndReadOnlyWriteNothing)
{
    dialogs.pushAnswer(false);
    EXPECT_EQ(updateGeneralData(ini, input, dialogs).outcome, GeneralUpdateOutcome::Declined);
    EXPECT_EQ(readBytes(file), ORIGINAL);
    EXPECT_FALSE(std::filesystem::exists(dir / "aircraft.corvane"));

    input.rowSection.reset();
    EXPECT_EQ(updateGeneralData(ini, input, dialogs).outcome, GeneralUpdateOutcome::Failed);
    EXPECT_EQ(dialogs.records().back(),
              (DialogRecord {DialogKind::Plain, u"",
                             u"A runtime error has occured\r\n\r\nError number: 91\r\nError description: Object "
                             u"variable or With block variable not set\r\nProcedure cmd_cfg_Update_Click\r\n"
                             u"Line: 0\r\nFormular frm_Main"}));
    EXPECT_EQ(readBytes(file), ORIGINAL);
    EXPECT_FALSE(std::filesystem::exists(dir / "aircraft.corvane"));

    // Read-only: the backup is taken, every key write is lost without a word.
    input.rowSection = u"FLTSIM.0";
    input.ConfirmUpdates = false;
    std::filesystem::permissions(file,
                                 std::filesystem::perms::owner_write | std::filesystem::perms::group_write
                                     | std::filesystem::perms::others_write,
                                 std::filesystem::perm_options::remove);
    const std::size_t boxes = dialogs.records().size();
    EXPECT_EQ(updateGeneralData(ini, input, dialogs).outcome, GeneralUpdateOutcome::Written);
    EXPECT_EQ(readBytes(file), ORIGINAL);
    EXPECT_EQ(readBytes(dir / "aircraft.corvane"), ORIGINAL);
    EXPECT_EQ(dialogs.records().size(), boxes);
    platform::clearReadOnly(file);
}

TEST_F(GeneralUpdate, AFailedBackupEndsItWithTheErrorBox)
{
    // A folder where the backup would go: the copy fails, and nothing is written.
    std::filesystem::remove(file);
    input.ConfirmUpdates = false;
    EXPECT_EQ(updateGeneralData(ini, input, dialogs).outcome, GeneralUpdateOutcome::Failed);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_NE(dialogs.records()[0].text.find(u"Error number: 53\r\nError description: File not found\r\n"
                                             u"Procedure cmd_cfg_Update_Click"),
              std::u16string::npos);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(GeneralUpdate, ARadiusThatCannotBeWrittenLeavesTheKeysToBeWritten)
{
    const auto model = dir / "model" / "sky.mdl";
    std::string bytes(40, '\0');
    bytes.replace(8, 4, "MDL9");
    bytes[28] = 42;
    writeBytes(model, bytes);
    input.ConfirmUpdates = false;
    input.ModelFilePath = widePath(model);
    input.RadiusOnLoad = u"42";

    input.radiusText = u"7.5";
    EXPECT_EQ(updateGeneralData(ini, input, dialogs).outcome, GeneralUpdateOutcome::Written);
    EXPECT_EQ(readBytes(model)[28], 8);
    EXPECT_TRUE(dialogs.records().empty());

    writeBytes(file, ORIGINAL);
    input.radiusText = u"256";
    EXPECT_EQ(updateGeneralData(ini, input, dialogs).outcome, GeneralUpdateOutcome::Written);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0], (DialogRecord {DialogKind::Critical, u"", RADIUS_WRITE_FAILURE_TEXT}));
    EXPECT_EQ(readBytes(model)[28], 8);
    EXPECT_EQ(readBytes(file), WRITTEN);

    // "n/a" never writes.
    input.radiusText = u"n/a";
    EXPECT_EQ(updateGeneralData(ini, input, dialogs).outcome, GeneralUpdateOutcome::Written);
    EXPECT_EQ(dialogs.records().size(), 1u);
}
