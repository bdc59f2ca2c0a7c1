#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/regional.h"
#include "test_validation_fixture.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

const std::string CleanCfg = "[fltsim.0]\r\ntitle=Alpha One\r\nsim=plane\r\nmodel=\r\ntexture=\r\natc_airline=KLM\r\n"
                             "[fltsim.1]\r\ntitle=Bravo Two\r\nsim=Plane\r\nmodel=\r\ntexture=B\r\natc_airline=klm\r\n"
                             "[effects]\r\nwake=fx_wake.fx\r\n[General]\r\natc_type=x\r\n";

class Validation : public AircraftFixture
{
protected:
    void cleanAircraft()
    {
        cfg(CleanCfg);
        file("plane.air", "air");
        file("model/Model.cfg", "[models]\r\nnormal=plane\r\n");
        file("model/plane.mdl", "mdl");
        file("texture/a.bmp", "bmp");
        file("Texture.B/a.bmp", "bmp");
        useFs9({u"[airlines]", u"KLM"}, {"fx_wake.fx"});
    }
};

TEST_F(Validation, CleanAircraftWithAllOptions)
{
    cleanAircraft();
    const ValidationResult result = run();
    ASSERT_EQ(result.outcome, ValidationOutcome::ReportWritten);
    EXPECT_FALSE(result.ReportHasErrors);
    EXPECT_TRUE(dialogs.records().empty());
    EXPECT_EQ(result.reportPath, input.environment.TempFolder + u"corvanecheck.log");
    EXPECT_EQ(readBytes(fs::path(result.reportPath)),
              expectedReport({
                  "[fltsim.x] sections:               2",
                  "[fltsim.x] title undefined:        0",
                  "[fltsim.x] title unique:           passed",
                  "[fltsim.x] sections numbering:     passed",
                  "RULE",
                  "Textures found in folder:          2",
                  "Textures undefined in [fltsim.x]:  0",
                  "Textures missing in folder:        0",
                  "Textures unused in folder:         0",
                  "Textures used more than once:      0",
                  "Texture format:                    *.bmp",
                  "RULE",
                  "Models found in folder:            1",
                  "Models undefined in [fltsim.x]:    0",
                  "Models missing in folder:          0",
                  "Models unused in folder:           0",
                  "RULE",
                  "Airfiles found in folder:          1",
                  "Airfiles undefined in [fltsim.x]:  0",
                  "Airfiles missing in folder:        0",
                  "Airfiles unused in folder:         0",
                  "RULE",
                  "atc_airlines compared against:     FS9",
                  "atc_airlines found:                2",
                  "atc_airlines undefined [fltsim.x]: 0",
                  "atc_airlines unknown:              0",
                  "RULE",
                  "Missing effect files:              0",
                  "RULE",
                  "Empty folders found:               0",
              }));
}

TEST_F(Validation, EveryKindOfFinding)
{
    cfg("[fltsim.0]\r\ntitle=Boeing 737-800\r\nsim=plane\r\nmodel=\r\ntexture=klm\r\natc_airline=KLM\r\n"
        "[fltsim.1]\r\ntitle=Boeing 737\r\nsim=gone\r\nmodel=x\r\ntexture=zz\r\natc_airline=Klm Air\r\n"
        "[fltsim.3]\r\nsim=plane\r\nmodel=\r\ntexture=zz\r\natc_airline=\r\n"
        "[fltsim.4]\r\ntitle=Boeing 737\r\nmodel=\r\ntexture=\r\n"
        "[effects]\r\ntouchdown=1\r\nfueldump=1\r\nwake=fx_wake\r\ndirt=fx_dummy\r\nwater=Fx_Spray, 1 // c\r\n"
        "windshield_rain_effect_available=1\r\n");
    file("plane.air", "a");
    file("unused.air", "a");
    file("model/Model.cfg", "[models]\r\nnormal=plane\r\n");
    file("model/plane.mdl", "m");
    file("texture.klm/a.bmp", "b");
    file("texture.klm/sub/b.bmp", "b");
    file("texture.old/a.bmp", "b");
    file("texture.zz/a.bmp", "b");
    file("texture.dds/a.dds", "d"); // no file of the mask: neither listed nor counted
    emptyFolder("empty");
    emptyFolder("deep/inner");
    useFs9({u"KLM"}, {"fx_wake.fx"});
    file("corvanecheck.log", "old report");

    const ValidationResult result = run();
    ASSERT_EQ(result.outcome, ValidationOutcome::ReportWritten);
    EXPECT_TRUE(result.ReportHasErrors);
    EXPECT_FALSE(fs::exists(folder / "corvanecheck.log"));
    EXPECT_EQ(readBytes(fs::path(result.reportPath)),
              expectedReport({
                  "[fltsim.x] sections:               4   ==> not in sequential order - consider renumbering",
                  "[fltsim.x] title undefined:        1",
                  "                                   fltsim.3 --> no 'title=' entry",
                  // "Boeing 737" is part of "Boeing 737-800": its duplicates go unreported.
                  "[fltsim.x] title unique:           passed",
                  "[fltsim.x] sections numbering:     failed (duplicates will cause title unique errors above)",
                  "[fltsim.x] sections misnumbered:   [fltsim.3]",
                  "RULE",
                  "Textures found in folder:          4",
                  "Textures undefined in [fltsim.x]:  0",
                  "Textures missing in folder:        1",
                  "                                   fltsim.4 -->  ..\\texture.",
                  "Textures unused in folder:         ..\\texture.klm\\sub",
                  "                                   ..\\texture.old",
                  "Textures used more than once:      \"zz\" --> fltsim.1",
                  "                                   \"zz\" --> fltsim.3",
                  "Texture format:                    *.bmp",
                  "RULE",
                  "Models found in folder:            1",
                  "Models undefined in [fltsim.x]:    0",
                  "Models missing in folder:          fltsim.1 -->  ..\\Model.x",
                  "Models unused in folder:           0",
                  "RULE",
                  "Airfiles found in folder:          2",
                  "Airfiles undefined in [fltsim.x]:  1",
                  "                                   fltsim.4 --> no 'sim=' entry",
                  "Airfiles missing in folder:        fltsim.1 -->  ..\\gone.air",
                  "Airfiles unused in folder:         ..\\unused.air",
                  "RULE",
                  "atc_airlines compared against:     FS9",
                  "atc_airlines found:                1",
                  "atc_airlines undefined [fltsim.x]: 2",
                  "                                   fltsim.3 -->  atc_airline missing",
                  "                                   fltsim.4 -->  atc_airline missing",
                  "atc_airlines unknown:              1",
                  "                                   fltsim.1 -->  atc_airline=klm air",
                  "RULE",
                  // fueldump has no file of its own and repeats the one before.
                  "Missing effect files:              fx_tchdwn.fx",
                  "Missing effect files:              fx_tchdwn.fx",
                  "Missing effect files:              fx_spray.fx",
                  "RULE",
                  "Empty folders found:               ..\\deep\\inner",
                  "Empty folders found:               ..\\empty",
              }));
}

TEST_F(Validation, SingleFindingsAndTheirErrorFlags)
{
    cleanAircraft();
    // One missing model sits on its label and is no error.
    cfg("[fltsim.0]\r\ntitle=A\r\nsim=plane\r\nmodel=gone\r\ntexture=\r\n");
    options({8});
    ValidationResult result = run();
    EXPECT_EQ(bodyOf(result),
              std::vector<std::string> {"Models missing in folder:          fltsim.0 -->  ..\\Model.gone"});
    EXPECT_FALSE(result.ReportHasErrors);

    // One missing texture is.
    cfg("[fltsim.0]\r\ntitle=A\r\nsim=plane\r\nmodel=\r\ntexture=gone\r\n");
    options({15});
    result = run();
    EXPECT_EQ(bodyOf(result),
              (std::vector<std::string> {"Textures missing in folder:        1",
                                         "                                   fltsim.0 -->  ..\\texture.gone"}));
    EXPECT_TRUE(result.ReportHasErrors);

    // Titles that differ only in case are different; two blank titles are undefined and duplicates.
    cfg("[fltsim.0]\r\ntitle=A\r\n[FltSim.1]\r\ntitle=a\r\n[fltsim.2]\r\n[fltsim.3]\r\nTitle=\r\n[fltsimx]\r\ntitle="
        "A\r\n");
    options({0, 1, 17});
    result = run();
    EXPECT_EQ(bodyOf(result),
              (std::vector<std::string> {
                  "[fltsim.x] sections:               4",
                  "[fltsim.x] title undefined:        2",
                  "                                   fltsim.2 --> no 'title=' entry",
                  "                                   fltsim.3 --> no 'title=' entry",
                  "[fltsim.x] title unique:           passed",
              }));
    EXPECT_TRUE(result.ReportHasErrors);

    cfg("[fltsim.0]\r\n[fltsim.1]\r\ntitle=X\r\n[fltsim.2]\r\n");
    options({1});
    result = run();
    EXPECT_EQ(bodyOf(result),
              (std::vector<std::string> {
                  "[fltsim.x] title unique:           failed",
                  "[fltsim.x] title duplicate:        \"\" --> fltsim.0",
                  "                                   \"\" --> fltsim.2",
              }));
    EXPECT_TRUE(result.ReportHasErrors);

    // A title holding the list separator splits into two rows; sections 1, 0 are only out of sequence.
    cfg("[fltsim.1]\r\ntitle=X\xA6Y\r\n[fltsim.0]\r\ntitle=X\xA6Y\r\n");
    options({0, 1, 2});
    result = run();
    EXPECT_EQ(bodyOf(result),
              (std::vector<std::string> {
                  "[fltsim.x] sections:               2   ==> not in sequential order - consider renumbering",
                  "[fltsim.x] title unique:           failed",
                  "[fltsim.x] title duplicate:        \"X",
                  "                                   Y\" --> fltsim.1",
                  "                                   \"X",
                  "                                   Y\" --> fltsim.0",
                  "[fltsim.x] sections numbering:     passed",
              }));

    // Shared textures: a texture that is part of a title is never examined.
    cfg("[fltsim.0]\r\ntitle=KLM klm\r\ntexture=klm\r\n[fltsim.1]\r\ntitle=B\r\ntexture=KLM\r\n"
        "[fltsim.2]\r\ntitle=C\r\ntexture=zz\r\n[fltsim.3]\r\ntitle=D\r\ntexture=zz\r\n");
    options({16});
    result = run();
    EXPECT_EQ(bodyOf(result),
              (std::vector<std::string> {"Textures used more than once:      \"zz\" --> fltsim.2",
                                         "                                   \"zz\" --> fltsim.3"}));
    EXPECT_TRUE(result.ReportHasErrors);
}

TEST_F(Validation, RulesFollowTheOptionCombinations)
{
    cleanAircraft();
    options({0, 12});
    EXPECT_EQ(
        bodyOf(run()),
        (std::vector<std::string> {"[fltsim.x] sections:               2", "Textures found in folder:          2"}));
    options({0, 12, 13});
    EXPECT_EQ(bodyOf(run()),
              (std::vector<std::string> {"[fltsim.x] sections:               2", "RULE",
                                         "Textures found in folder:          2",
                                         "Texture format:                    *.bmp"}));
    options({22});
    EXPECT_EQ(bodyOf(run()), (std::vector<std::string> {"RULE", "Empty folders found:               0"}));
    options({6, 3, 4});
    EXPECT_EQ(
        bodyOf(run()),
        (std::vector<std::string> {"Models found in folder:            1", "RULE",
                                   "Airfiles found in folder:          1", "Airfiles unused in folder:         0"}));
    options({3, 9, 21});
    EXPECT_EQ(bodyOf(run()),
              (std::vector<std::string> {
                  "Airfiles found in folder:          1", "RULE", "atc_airlines compared against:     FS9",
                  "atc_airlines found:                2", "Missing effect files:              0"}));
    options({11, 21, 22});
    EXPECT_EQ(bodyOf(run()),
              (std::vector<std::string> {
                  "atc_airlines compared against:     FS9", "atc_airlines unknown:              0", "RULE",
                  "Missing effect files:              0", "RULE", "Empty folders found:               0"}));

    // The rule is half the header long, a half rounded to the even number.
    EXPECT_EQ(reportRule(u"12345"), u"-:-:");
    EXPECT_EQ(reportRule(u"1234567"), u"-:-:-:-:");
    EXPECT_EQ(reportRule(u"123456"), u"-:-:-:");
    EXPECT_EQ(reportStars(u"abc"), u"***");
}

TEST_F(Validation, FallbackAndAliasIndirections)
{
    cfg("[fltsim.0]\r\ntitle=A\r\nsim=plane\r\nmodel=al\r\ntexture=a\r\n[fltsim.1]\r\ntitle=B\r\nmodel=n\r\ntexture="
        "b\r\n");
    file("texture.a/texture.cfg", "[fltsim]\r\nfallback.1=..\\texture.c // shared\r\n");
    file("texture.c/x.dds", "d");
    file("texture.b/texture.cfg", "[fltsim]\r\nfallback.1=..\\nowhere\r\n");
    file("model.al/Model.cfg", "\xEF\xBB\xBF[fltsim]\r\nalias=Other/Model\r\n");
    writeBytes(dir / "Other" / "model" / "Model.cfg", "[models]\r\nnormal=o.MDL\r\n");
    writeBytes(dir / "Other" / "model" / "o.mdl", "m");
    file("model.n/model.cfg", "[models]\r\nnormal=n // x\r\n");
    file("model.n/N.mdl", "m");
    options({14, 15, 8});
    const ValidationResult result = run();
    EXPECT_EQ(bodyOf(result),
              (std::vector<std::string> {
                  "Textures missing in folder:        1",
                  "                                   fltsim.1 -->  ..\\texture.b",
                  "Textures unused in folder:         0 (fallback.x aliasing used in configuration, maybe valid)",
                  "Models missing in folder:          0",
              }));
    // ReadByteArray took the mark off the model configuration, keeping its length.
    EXPECT_EQ(readBytes(folder / "model.al" / "Model.cfg").substr(0, 8), "[fltsim]");
}

TEST_F(Validation, AirlinesAgainstTheRawLines)
{
    cleanAircraft();
    cfg("[fltsim.0]\r\ntitle=A\r\natc_airline=klm\r\n[fltsim.1]\r\ntitle=B\r\natc_airline=Klm Air // x\r\n"
        "[fltsim.2]\r\ntitle=C\r\natc_airline=KLM \r\n[fltsim.3]\r\ntitle=D\r\natc_airline=[AIRLINES]\r\n");
    useFs9({u"[airlines]", u"KLM ", u"klm", u""});
    options({9, 10, 11});
    ValidationResult result = run();
    EXPECT_EQ(bodyOf(result),
              (std::vector<std::string> {
                  "atc_airlines compared against:     FS9",
                  "atc_airlines found:                3",
                  "atc_airlines undefined [fltsim.x]: 0",
                  "atc_airlines unknown:              1",
                  "                                   fltsim.1 -->  atc_airline=klm air",
              }));
    EXPECT_TRUE(result.ReportHasErrors);

    // No section has the key: the undefined rows exist but the line reads 0.
    cfg("[fltsim.0]\r\ntitle=A\r\n[fltsim.1]\r\ntitle=B\r\n");
    result = run();
    EXPECT_EQ(bodyOf(result)[2], "atc_airlines undefined [fltsim.x]: 0");
    EXPECT_FALSE(result.ReportHasErrors);

    // One blank value shows them all, absent keys included.
    cfg("[fltsim.0]\r\ntitle=A\r\n[fltsim.1]\r\ntitle=B\r\natc_airline=\r\n");
    result = run();
    EXPECT_EQ(bodyOf(result),
              (std::vector<std::string> {
                  "atc_airlines compared against:     FS9",
                  "atc_airlines found:                0",
                  "atc_airlines undefined [fltsim.x]: 2",
                  "                                   fltsim.0 -->  atc_airline missing",
                  "                                   fltsim.1 -->  atc_airline missing",
                  "atc_airlines unknown:              0",
              }));
    EXPECT_TRUE(result.ReportHasErrors);
}

TEST_F(Validation, EffectsSwitchValuesAndDefaults)
{
    cleanAircraft();
    cfg("[fltsim.0]\r\ntitle=A\r\n[effects]\r\nfueldump=1\r\nwake=0\r\nengineoilleak=true\r\nsnowskitrack=-1\r\n"
        "contrail=fx_contrail_l.fx\r\nstartup=FX_Mine.FX\r\n");
    useFs9({}, {"fx_wake.fx", "FX_CONTRAIL_L.FX"});
    options({21});
    ValidationResult result = run();
    EXPECT_EQ(bodyOf(result),
              (std::vector<std::string> {
                  "Missing effect files:              fx_oilLeak.fx",
                  "Missing effect files:              fx_oilLeak.fx",
                  "Missing effect files:              fx_mine.fx",
              }));
    EXPECT_TRUE(result.ReportHasErrors);

    // A later effects section replaces an earlier one; no simulator means no effect check at all.
    cfg("[fltsim.0]\r\ntitle=A\r\n[effects]\r\nwake=fx_gone\r\n[Effects.2]\r\nwake=1\r\n");
    result = run();
    EXPECT_EQ(bodyOf(result), std::vector<std::string> {"Missing effect files:              0"});
    input.environment = {};
    input.environment.TempFolder = withSeparator(dir / "tmp");
    cfg("[fltsim.0]\r\ntitle=A\r\n[effects]\r\n");
    result = run();
    EXPECT_EQ(bodyOf(result), std::vector<std::string> {"Missing effect files:              0"});
}

TEST_F(Validation, RefusalsAndBatchFailureTexts)
{
    options({0});
    ValidationResult result = run();
    EXPECT_EQ(result.outcome, ValidationOutcome::Refused);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(
        dialogs.records()[0],
        (DialogRecord {DialogKind::Critical, u"", u"No aircraft.cfg file found in this folder. Exiting here..."}));
    EXPECT_FALSE(fs::exists(fs::path(input.environment.TempFolder + u"corvanecheck.log")));

    input.BatchRunning = true;
    result = run();
    EXPECT_EQ(result.BatchFailureText, u"No aircraft.cfg file found in folder ");
    EXPECT_EQ(dialogs.records().size(), 1u);

    cfg("[general]\r\natc_type=x\r\n");
    input.gridRowCount = 0;
    result = run();
    EXPECT_EQ(result.BatchFailureText, u"An aircraft.cfg file without any [fltsim.x] section found in folder ");
    input.gridRowCount = 1;
    result = run();
    EXPECT_EQ(result.BatchFailureText, u"No [fltsim.x] section found in aircraft.cfg in folder ");
    EXPECT_EQ(dialogs.records().size(), 1u);

    input.BatchRunning = false;
    input.gridRowCount = 0;
    run();
    input.gridRowCount = 1;
    run();
    ASSERT_EQ(dialogs.records().size(), 3u);
    EXPECT_EQ(dialogs.records()[1].text,
              u"An aircraft.cfg file without any [fltsim.x] section found in folder . Exiting here...");
    EXPECT_EQ(dialogs.records()[2].text, u"This aircraft.cfg does not contain a [fltsim.x] section. Exiting here...");
}

TEST_F(Validation, AllOptionsOffAndTheSimulatorQuestion)
{
    cleanAircraft();
    options({});
    input.BatchRunning = true; // the box is not silenced in a batch
    ValidationResult result = run();
    EXPECT_EQ(result.outcome, ValidationOutcome::NothingToReport);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0],
              (DialogRecord {DialogKind::Information, u"",
                             u"You have disabled all analysis reporting options. Exiting here...."}));
    input.BatchRunning = false;

    // Both simulators: only option 21 on asks; Cancel writes nothing.
    input.environment.FsxFound = true;
    input.environment.FsxAirlines = {u"KLM"};
    input.environment.FsxEffectsFolder = widePath(dir / "fsx" / "Effects");
    options({21});
    dialogs.pushButton(3);
    result = run();
    EXPECT_EQ(result.outcome, ValidationOutcome::Cancelled);
    EXPECT_FALSE(result.ReportHasErrors);
    EXPECT_EQ(dialogs.records().back(),
              (DialogRecord {DialogKind::ThreeButtonQuestion,
                             u"Validate Aircraft: Select FS-Version for ATC/Effects Analysis",
                             u"Select which flightsim version should be used...",
                             {u"FS9", u"FSX", u"Cancel"}}));
    EXPECT_FALSE(fs::exists(fs::path(input.environment.TempFolder + u"corvanecheck.log")));

    // FSX chosen: its effects folder is empty, so the wake file is missing.
    dialogs.pushButton(2);
    EXPECT_EQ(bodyOf(run()), std::vector<std::string> {"Missing effect files:              fx_wake.fx"});
    // Options 9 to 11 and 21 off: nothing asked.
    options({22});
    const std::size_t boxes = dialogs.records().size();
    run();
    EXPECT_EQ(dialogs.records().size(), boxes);
    // In a batch the form's choice decides.
    options({9});
    input.BatchRunning = true;
    input.choice = SimulatorChoice::Fs9;
    EXPECT_EQ(bodyOf(run())[0], "atc_airlines compared against:     FS9");
    EXPECT_EQ(dialogs.records().size(), boxes);

    // No simulator: entries 9 to 11 read 0 for this run, no airline lines.
    input.environment = {};
    input.environment.TempFolder = withSeparator(dir / "tmp");
    options({9, 10, 11, 12});
    result = run();
    EXPECT_EQ(bodyOf(result), std::vector<std::string> {"Textures found in folder:          2"});
    EXPECT_EQ(result.AnalyzeOptionList[9], u"0");
    EXPECT_EQ(result.AnalyzeOptionList[11], u"0");
    EXPECT_EQ(result.AnalyzeOptionList[12], u"1");
}

TEST_F(Validation, ReportFrameAndTimeStamp)
{
    cleanAircraft();
    options({0});
    input.reportPath = widePath(dir / "elsewhere.log");
    const ValidationResult result = run();
    EXPECT_EQ(result.reportPath, input.reportPath);
    const std::string bytes = readBytes(dir / "elsewhere.log");
    const std::string header = platform::toCodePage(reportHeaderStart());
    EXPECT_EQ(bytes.substr(bytes.find("\r\n") + 2, header.size()), header);
    const std::u16string date = platform::shortDateText(1700000000);
    EXPECT_NE(reportHeaderStart().find(date), std::u16string::npos);
    EXPECT_EQ(reportTimeSeconds(), 1700000000);
    EXPECT_NE(bytes.find("Report for \"" + platform::toCodePage(folderPrefix()) + "\" *\r\n"), std::string::npos);
}

} // namespace
