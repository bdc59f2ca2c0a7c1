#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/checkercommands.h"
#include "common/aircraftfolder.h"
#include "common/airfilebuilder.h"
#include "common/environment.h"
#include "core/aircraftfilestore.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/scripteddialogs.h"
#include "editing/keyremoval.h"
#include "editing/sectionrenumber.h"
#include "editing/sortkeys.h"
#include "platform/codepage.h"
#include "simfiles/airfile.h"
#include "simfiles/modelfile.h"
#include "validation/validationrun.h"
#include "version.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

struct CheckRun
{
    int exitCode;
    std::string out;
    std::string err;
};

CheckRun check(const std::vector<std::string> &args)
{
    std::ostringstream out;
    std::ostringstream err;
    const int exitCode = runCheckerCommand(args, out, err);
    return {exitCode, out.str(), err.str()};
}

const std::string TRY = "\nTry 'fleetwright-check --help' for the list of commands.\n";
const std::string ALL_ON(23, '1');

// Simulators and the stored options out of the way: every run says what it checks against.
std::vector<std::string> hermetic(std::vector<std::string> args, const std::string &options = ALL_ON)
{
    args.insert(args.end(), {"--fs9", "", "--fsx", "", "--options", options});
    return args;
}

} // namespace

TEST(CheckerCommands, HelpListsTheCommandsThatRun)
{
    const CheckRun help = check({"--help"});
    EXPECT_EQ(help.exitCode, CHECK_EXIT_OK);
    EXPECT_EQ(help.err, "");
    EXPECT_TRUE(help.out.starts_with("Usage: fleetwright-check COMMAND [ARGUMENTS]\n")) << help.out;
    // The first word of each line under "Commands:", up to the blank line.
    std::istringstream lines(help.out.substr(help.out.find("\nCommands:\n") + 11));
    std::vector<std::string> listed;
    for (std::string line; std::getline(lines, line) && !line.empty();) {
        std::istringstream words(line);
        words >> listed.emplace_back();
    }
    EXPECT_EQ(listed,
              (std::vector<std::string> {"validate", "validate-all", "renumber", "sort-keys", "remove-keys", "air-type",
                                         "mdl-info", "--help", "--version"}));
    for (const std::string &name : listed)
        EXPECT_EQ(check({name}).err.find("unknown command"), std::string::npos) << name;

    const CheckRun version = check({"--version"});
    EXPECT_EQ(version.exitCode, CHECK_EXIT_OK);
    EXPECT_EQ(version.out,
              "fleetwright-check " + std::to_string(VERSION_MAJOR) + "." + std::to_string(VERSION_MINOR) + "."
                  + std::to_string(VERSION_REVISION) + "\n");
    // No command: the usage on stderr.
    EXPECT_EQ(check({}).exitCode, CHECK_EXIT_USAGE);
    EXPECT_EQ(check({}).err, help.out);
}

TEST(CheckerCommands, WrongCommandLinesGoToStderrWithExitCode64)
{
    const std::vector<std::pair<std::vector<std::string>, std::string>> rows = {
        {{"Validate", "some folder"}, "unknown command 'Validate'"},
        {{"validate"}, "'validate' needs a folder"},
        {{"validate", "a", "b"}, "'validate' takes one folder, got 'a' and 'b'"},
        {{"validate", "a", "--errors-only"}, "'validate' has no option '--errors-only'"},
        {{"validate-all", "a", "--report"}, "'--report' needs a value"},
        {{"validate-all", "a", "--against", "FS9"}, "'--against' takes fs9 or fsx, got 'FS9'"},
        {{"validate", "a", "--options", "1111"}, "'--options' takes 23 digits 0 or 1, got '1111'"},
        {{"validate", "a", "--options", "11111111111111111111112"},
         "'--options' takes 23 digits 0 or 1, got '11111111111111111111112'"},
        {{"--help", "--version"}, "'--help' takes no arguments, got '--version'"},
        {{"air-type", "a", "--set", "3"}, "'--set' takes 0, 1 or 2, got '3'"},
        // Bytes of any kind come back as they were typed.
        {{"caf\xC3\xA9 \xE9"}, "unknown command 'caf\xC3\xA9 \xE9'"},
    };
    for (const auto &[args, message] : rows) {
        const CheckRun run = check(args);
        EXPECT_EQ(run.exitCode, CHECK_EXIT_USAGE) << message;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, "fleetwright-check: " + message + TRY);
    }
    for (const char *command : {"renumber", "air-type", "mdl-info"})
        EXPECT_EQ(check({command}).exitCode, CHECK_EXIT_USAGE) << command;
    EXPECT_EQ(check({"renumber", "a", "--force"}).exitCode, CHECK_EXIT_USAGE);
}

TEST(CheckerValidate, ExitCodesAndMessages)
{
    const ScopedVariable time("SOURCE_DATE_EPOCH", "1700000000");
    TempDir dir;
    writeAircraft(dir / "clean");
    writeAircraft(dir / "error");
    fs::remove_all(dir / "error" / "texture.red");
    writeBytes(dir / "nosections" / "aircraft.cfg", crlf("[general]\natc_type=X\n"));
    fs::create_directories(dir / "none");
    const std::string report = (dir / "report.log").string();
    const struct
    {
        const char *folder;
        std::string options;
        int exitCode;
        const char *err;
    } rows[] = {
        {"clean", ALL_ON, CHECK_EXIT_OK, ""},
        {"error", ALL_ON, CHECK_EXIT_ERRORS, ""},
        {"none", ALL_ON, CHECK_EXIT_NO_REPORT, "No aircraft.cfg file found in this folder. Exiting here...\n"},
        {"nosections", ALL_ON, CHECK_EXIT_NO_REPORT,
         "An aircraft.cfg file without any [fltsim.x] section found in folder . Exiting here...\n"},
        {"clean", std::string(23, '0'), CHECK_EXIT_NO_REPORT,
         "You have disabled all analysis reporting options. Exiting here....\n"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.folder + row.options);
        fs::remove(dir / "report.log");
        const CheckRun run =
            check(hermetic({"validate", (dir / row.folder).string(), "--report", report}, row.options));
        EXPECT_EQ(run.exitCode, row.exitCode);
        EXPECT_EQ(run.err, *row.err ? "fleetwright-check: " + std::string(row.err) : "");
        const bool written = row.exitCode != CHECK_EXIT_NO_REPORT;
        EXPECT_EQ(run.out, written ? report + "\n" : "");
        EXPECT_EQ(fs::exists(dir / "report.log"), written);
    }
}

TEST(CheckerValidate, ReportEqualsTheRunFedAsTheFormFeedsIt)
{
    const ScopedVariable time("SOURCE_DATE_EPOCH", "1700000000");
    TempDir dir;
    const fs::path folder = dir / "aircraft";
    writeAircraft(folder, "MDLX");
    // A folder name with a trailing separator is the same folder to the form.
    const CheckRun run = check(hermetic({"validate", folder.string() + "/", "--report", "-"}));
    ASSERT_EQ(run.exitCode, CHECK_EXIT_OK) << run.err;

    // What the form holds after loading the folder: two rows, row 1's model an FSX one.
    ValidationInput input;
    input.folder = widePath(folder);
    input.AnalyzeOptionList.assign(23, u"1");
    input.environment.TempFolder = widePath(dir / "");
    input.gridRowCount = 2;
    input.textureFormatText = u"FSX";
    input.reportPath = widePath(dir / "form.log");
    NeverAskDialogs dialogs;
    clsIniFile AircraftIni;
    AircraftIni.setPath(widePath(folder / "aircraft.cfg"));
    runValidation(input, AircraftIni, dialogs);
    const std::string expected = readBytes(dir / "form.log");
    EXPECT_NE(expected.find("Texture format:                    *.dds\r\n"), std::string::npos);
    EXPECT_EQ(run.out, expected);
}

TEST(CheckerValidate, AgainstChoosesTheSimulatorWhenBothAreFound)
{
    TempDir dir;
    writeAircraft(dir / "aircraft");
    writeBytes(dir / "aircraft" / "aircraft.cfg",
               crlf("[fltsim.0]\ntitle=One\nmodel=\ntexture=\nsim=corvane\natc_airline=CORVANE\n"));
    writeBytes(dir / "FS9" / "Aircraft" / "airlines.cfg", crlf("CORVANE\n"));
    writeBytes(dir / "FSX" / "airlines.cfg", crlf("OTHER\n"));
    fs::create_directories(dir / "FSX" / "SimObjects");
    for (const std::string choice : {"fs9", "fsx"}) {
        const CheckRun run = check({"validate", (dir / "aircraft").string(), "--fs9", (dir / "FS9").string(), "--fsx",
                                    (dir / "FSX").string(), "--options", "00000000011100000000000", "--against", choice,
                                    "--report", "-"});
        const std::string upper = choice == "fs9" ? "FS9" : "FSX";
        EXPECT_NE(run.out.find("atc_airlines compared against:     " + upper + "\r\n"), std::string::npos) << run.out;
        EXPECT_EQ(run.exitCode, choice == "fs9" ? CHECK_EXIT_OK : CHECK_EXIT_ERRORS) << run.out;
        EXPECT_EQ(run.err, "");
    }
}

TEST(CheckerValidateAll, ExitCodesAndErrorReport)
{
    const ScopedVariable time("SOURCE_DATE_EPOCH", "1700000000");
    TempDir dir;
    writeAircraft(dir / "clean" / "a");
    fs::create_directories(dir / "empty");
    const CheckRun clean = check(hermetic({"validate-all", (dir / "clean").string(), "--report", "-"}));
    EXPECT_EQ(clean.exitCode, CHECK_EXIT_OK) << clean.err;
    EXPECT_NE(clean.out.find("(full report) *\r\n"), std::string::npos);
    EXPECT_NE(clean.out.find("Report for \""), std::string::npos);

    const CheckRun nothing = check(hermetic({"validate-all", (dir / "empty").string(), "--report", "-"}));
    EXPECT_EQ(nothing.exitCode, CHECK_EXIT_OK);
    EXPECT_EQ(std::count(nothing.out.begin(), nothing.out.end(), '\n'), 3); // the frame alone

    writeAircraft(dir / "clean" / "b");
    fs::remove_all(dir / "clean" / "b" / "texture.red");
    const CheckRun errors =
        check(hermetic({"validate-all", (dir / "clean").string(), "--errors-only", "--report", "-"}));
    EXPECT_EQ(errors.exitCode, CHECK_EXIT_ERRORS);
    EXPECT_NE(errors.out.find("(error report) *\r\n"), std::string::npos);
    EXPECT_EQ(errors.out.find((dir / "clean" / "a").string()), std::string::npos) << "a clean folder reported";

    writeBytes(dir / "clean" / "c" / "notes.txt", "no aircraft");
    const CheckRun refused =
        check(hermetic({"validate-all", (dir / "clean").string(), "--errors-only", "--report", "-"}));
    EXPECT_EQ(refused.exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_NE(refused.out.find("No aircraft.cfg file found in folder " + (dir / "clean" / "c").string() + " *\r\n"),
              std::string::npos);

    const CheckRun gone = check(hermetic({"validate-all", (dir / "gone").string()}));
    EXPECT_EQ(gone.exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_NE(gone.err.find("Error number: 76"), std::string::npos) << gone.err;
    EXPECT_EQ(gone.out, "");
}

TEST(EditCommands, RenumberAndSortKeysWriteTheBytesTheProgramWrites)
{
    const std::string cfg = "[fltsim.3]\r\nui_type=Skyliner\r\ntitle=A // first\r\nmodel=\r\n[general]\r\n"
                            "atc_type=X\r\n[fltsim.7]\r\nAtc_Id=CV-1\r\ntitle=B\r\n";
    TempDir dir;
    writeBytes(dir / "script" / "Aircraft.cfg", cfg);
    writeBytes(dir / "program" / "Aircraft.cfg", cfg);
    const CheckRun renumber = check({"renumber", (dir / "script").string()});
    EXPECT_EQ(renumber.exitCode, 0) << renumber.err;
    const CheckRun sort = check({"sort-keys", (dir / "script").string(), "--no-backup"});
    EXPECT_EQ(sort.exitCode, 0) << sort.err;
    EXPECT_NE(sort.out.find("sorted the keys"), std::string::npos);

    const std::u16string program = widePath(dir / "program" / "Aircraft.cfg");
    Renumber_fltsim(program, true);
    clsIniFile ini;
    ini.setPath(program);
    ScriptedDialogs dialogs;
    DoSortKeys(ini, true, dialogs);
    EXPECT_EQ(readBytes(dir / "script" / "Aircraft.cfg"), readBytes(dir / "program" / "Aircraft.cfg"));
    EXPECT_EQ(readBytes(dir / "script" / "Aircraft.corvane"), cfg);

    // A missing or read-only file is refused with a message, the file unchanged.
    CheckRun run = check({"renumber", (dir / "nothing").string()});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_NE(run.err.find("no aircraft.cfg in"), std::string::npos);
    writeBytes(dir / "ro" / "aircraft.cfg", "[fltsim.4]\r\n");
    fs::permissions(dir / "ro" / "aircraft.cfg",
                    fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    run = check({"sort-keys", (dir / "ro").string()});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_NE(run.err.find("is read-only; nothing changed"), std::string::npos);
    EXPECT_EQ(readBytes(dir / "ro" / "aircraft.cfg"), "[fltsim.4]\r\n");
}

TEST(EditCommands, RemoveKeysGetsTheBytesOfTheKeyRemovalDialog)
{
    const std::string cfg = "[general]\r\natc_id=KEEP\r\n[fltsim.0]\r\ntitle=A // first\r\nAtc_Id=CV-1\r\n"
                            "ui_type=Skyliner\r\n[fltsim.1]\r\ntitle=B\r\n  atc_id =CV-2 // reg\r\n";
    TempDir dir;
    writeBytes(dir / "script" / "aircraft.cfg", cfg);
    writeBytes(dir / "program" / "aircraft.cfg", cfg);
    const CheckRun run = check({"remove-keys", (dir / "script").string(), "UI_TYPE", " Atc_Id ", "nothere", "atc_id"});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_OK) << run.err;
    EXPECT_EQ(run.out,
              "removed from the [fltsim.x] sections of " + (dir / "script" / "aircraft.cfg").string()
                  + ": atc_id ui_type\nA total of 4 keys have been deleted in the aircraft.cfg\n");
    EXPECT_EQ(run.err, "fleetwright-check: no [fltsim.x] section holds the key 'nothere'\n");

    // The dialog: the backup when it opens, then the marked entries of its list.
    const std::u16string program = widePath(dir / "program" / "aircraft.cfg");
    MakeBackup(program, true);
    clsIniFile ini;
    ini.setPath(program);
    EXPECT_EQ(LoadList(ini), (std::vector<std::u16string> {u"atc_id", u"title", u"ui_type"}));
    EXPECT_EQ(RemoveMarkedKeys(ini, {u"atc_id", u"ui_type"}), 4);
    EXPECT_EQ(readBytes(dir / "script" / "aircraft.cfg"), readBytes(dir / "program" / "aircraft.cfg"));
    EXPECT_EQ(readBytes(dir / "script" / "aircraft.cfg"),
              "[general]\r\natc_id=KEEP\r\n[fltsim.0]\r\ntitle=A // first\r\n[fltsim.1]\r\ntitle=B\r\n");
    EXPECT_EQ(readBytes(dir / "script" / "aircraft.corvane"), cfg);

    writeBytes(dir / "bare" / "aircraft.cfg", cfg);
    EXPECT_EQ(check({"remove-keys", (dir / "bare").string(), "title", "--no-backup"}).exitCode, CHECK_EXIT_OK);
    const CheckRun none = check({"remove-keys", (dir / "bare").string(), "nothere"});
    EXPECT_EQ(none.exitCode, CHECK_EXIT_OK);
    EXPECT_EQ(none.out, "nothing to remove in " + (dir / "bare" / "aircraft.cfg").string() + "\n");
    EXPECT_FALSE(fs::exists(dir / "bare" / "aircraft.corvane"));
    EXPECT_EQ(check({"remove-keys", (dir / "nothing").string(), "title"}).exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_EQ(check({"remove-keys", (dir / "bare").string()}).err,
              "fleetwright-check: remove-keys needs at least one KEY" + TRY);
}

TEST(EditCommands, AirTypeReadsAndPatchesAsTheOptionButtonsDo)
{
    const auto airFile = [](std::int32_t type) {
        return AirFileBuilder().record(0x100, int32Bytes(7)).record(0x105, int32Bytes(type)).raw("tail").bytes();
    };
    TempDir dir;
    const std::string script = (dir / "script" / "Sky.AIR").string();
    writeBytes(script, airFile(0x10001));
    writeBytes(dir / "program" / "Sky.AIR", airFile(0x10001));
    EXPECT_EQ(check({"air-type", script}).out, script + ": type 65537 (not 0, 1 or 2)\n");

    // Only the low half is written, as the form writes it.
    CheckRun run = check({"air-type", script, "--set", "2"});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_OK) << run.err;
    EXPECT_EQ(run.out, script + ": type 65538 (not 0, 1 or 2), was 65537 (not 0, 1 or 2)\n");
    AirFileState state;
    state.AirFileName = u"Sky";
    NeverAskDialogs dialogs;
    ReadAirFile(widePath(dir / "program"), state, dialogs);
    EXPECT_EQ(patchAirType(AirType::AI, state, false, dialogs).outcome, AirTypePatchOutcome::Written);
    EXPECT_EQ(readBytes(script), readBytes(dir / "program" / "Sky.AIR"));
    EXPECT_FALSE(fs::exists(dir / "script" / "Sky.corvane"));

    writeBytes(script, airFile(1));
    EXPECT_EQ(check({"air-type", script, "--set", "0"}).out, script + ": type 0 (Normal), was 1 (Helicopter)\n");
    EXPECT_EQ(check({"air-type", script}).out, script + ": type 0 (Normal)\n");

    // An FSX air file has no aircraft section: shown as n/a, and refused for --set with the file unchanged.
    const std::string fsx = (dir / "fsx.air").string();
    const std::string fsxBytes = AirFileBuilder().record(0x100, "").bytes();
    writeBytes(fsx, fsxBytes);
    EXPECT_EQ(check({"air-type", fsx}).out, fsx + ": n/a, no aircraft section (105)\n");
    run = check({"air-type", fsx, "--set", "1"});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_EQ(run.err, "fleetwright-check: " + fsx + " has no aircraft section (105); nothing written\n");
    EXPECT_EQ(readBytes(fsx), fsxBytes);
    EXPECT_EQ(check({"air-type", (dir / "gone.air").string()}).exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_EQ(check({"air-type", (dir / "fsx.cfg").string()}).exitCode, CHECK_EXIT_NO_REPORT);
}

TEST(EditCommands, MdlInfoShowsWhatTheFormShows)
{
    TempDir dir;
    std::string mdl = modelBytes("MDL9");
    mdl[28] = static_cast<char>(200);
    writeBytes(dir / "model.Blue" / "Sky.mdl", mdl);
    writeBytes(dir / "model" / "Sky.MDL", modelBytes("MDLX"));
    writeBytes(dir / "loose" / "Sky.mdl", mdl);
    const struct
    {
        fs::path file;
        std::u16string model;
        std::string out;
    } rows[] = {{dir / "model.Blue" / "Sky.mdl", u"Blue", ": FS8/9, radius 200\n"},
                {dir / "model" / "Sky.MDL", u"<default>", ": FSX, radius n/a\n"}};
    for (const auto &[file, model, out] : rows) {
        const CheckRun run = check({"mdl-info", file.string()});
        EXPECT_EQ(run.exitCode, CHECK_EXIT_OK) << run.err;
        EXPECT_EQ(run.out, file.string() + out);
        const ModelFileReading form = readModelFile(widePath(dir.path()), model, u"Sky");
        EXPECT_EQ(run.out,
                  file.string() + ": " + platform::toCodePage(form.versionText) + ", radius "
                      + platform::toCodePage(form.radiusText) + "\n");
    }
    CheckRun run = check({"mdl-info", (dir / "loose" / "Sky.mdl").string()});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_NE(run.err.find("does not stand in a model or model.NAME folder"), std::string::npos);
    run = check({"mdl-info", (dir / "model" / "gone.mdl").string()});
    EXPECT_EQ(run.err, "fleetwright-check: no file " + (dir / "model" / "gone.mdl").string() + "\n");
    writeBytes(dir / "model" / "short.mdl", "MDL");
    run = check({"mdl-info", (dir / "model" / "short.mdl").string()});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_NE(run.err.find("could not be opened for write access"), std::string::npos) << run.err;
}
