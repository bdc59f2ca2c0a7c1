#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/checkercommands.h"
#include "cli/checkrun.h"
#include "common/aircraftfolder.h"
#include "common/airfilebuilder.h"
#include "common/environment.h"
#include "core/aircraftfilestore.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "editing/keyremoval.h"
#include "editing/sectionrenumber.h"
#include "editing/sortkeys.h"
#include "simfiles/airfile.h"
#include "validation/validationrun.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

TEST(CheckerCommands, HelpListsTheCommandsThatRun)
{
    const CheckRun help = check({"--help"});
    EXPECT_EQ(help.exitCode, CHECK_EXIT_OK);
    EXPECT_EQ(help.err, "");
    EXPECT_TRUE(help.out.starts_with("Usage: fleetwright-check COMMAND [ARGUMENTS]\n")) << help.out;
    for (const std::string name : {"validate", "validate-all", "renumber", "sort-keys", "remove-keys", "air-type",
                                   "mdl-info", "--help", "--version"}) {
        EXPECT_NE(help.out.find("\n  " + name + " "), std::string::npos) << name;
        EXPECT_EQ(check({name}).err.find("unknown command"), std::string::npos) << name;
    }
    // The version's text: the program's own test in CMakeLists.txt. No command: the usage on stderr.
    EXPECT_EQ(check({"--version"}).exitCode, CHECK_EXIT_OK);
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
        {{"validate", "a", "--options", std::string(22, '1')},
         "'--options' takes 23 digits 0 or 1, got '" + std::string(22, '1') + "'"},
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
}

TEST(CheckerValidate, ExitCodesAndMessagesAndTheReportOfTheForm)
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
        fs::remove(dir / "report.log");
        const CheckRun run =
            check(hermetic({"validate", (dir / row.folder).string(), "--report", report}, row.options));
        EXPECT_EQ(run.exitCode, row.exitCode) << row.folder << row.options;
        EXPECT_EQ(run.err, *row.err ? "fleetwright-check: " + std::string(row.err) : "");
        const bool written = row.exitCode != CHECK_EXIT_NO_REPORT;
        EXPECT_EQ(run.out, written ? report + "\n" : "");
        EXPECT_EQ(fs::exists(dir / "report.log"), written);
    }

    // The report equals the form's after loading the folder: two rows, row 1's model an FSX one. A folder
    // name with a trailing separator is the same folder to the form.
    const fs::path folder = dir / "clean";
    const CheckRun run = check(hermetic({"validate", folder.string() + "/", "--report", "-"}));
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
    writeBytes(dir / "aircraft" / "aircraft.cfg", crlf("[fltsim.0]\natc_airline=CORVANE\n"));
    writeBytes(dir / "FS9" / "Aircraft" / "airlines.cfg", crlf("CORVANE\n"));
    writeBytes(dir / "FSX" / "airlines.cfg", crlf("OTHER\n"));
    fs::create_directories(dir / "FSX" / "SimObjects");
    for (const std::string choice : {"fs9", "fsx"}) {
        const CheckRun run = check({"validate", (dir / "aircraft").string(), "--fs9", (dir / "FS9").string(), "--fsx",
                                    (dir / "FSX").string(), "--options", "00000000011100000000000", "--against", choice,
                                    "--report", "-"});
        const std::string upper = choice == "fs9" ? "FS9" : "FSX";
        EXPECT_NE(run.out.find("atc_airlines compared against:     " + upper + "\r\n"), std::string::npos) << run.out;
        EXPECT_EQ(run.exitCode, choice == "fs9" ? CHECK_EXIT_OK : CHECK_EXIT_ERRORS) << run.err;
    }
}

// The report's text is the batch's; here the exit codes and where the report goes.
TEST(CheckerValidateAll, ExitCodesAndErrorReport)
{
    TempDir dir;
    writeAircraft(dir / "root" / "a");
    fs::create_directories(dir / "empty");
    const std::string root = (dir / "root").string();
    CheckRun run = check(hermetic({"validate-all", root, "--report", "-"}));
    EXPECT_EQ(run.exitCode, CHECK_EXIT_OK) << run.err;
    EXPECT_NE(run.out.find("(full report) *\r\n"), std::string::npos);
    run = check(hermetic({"validate-all", (dir / "empty").string(), "--report", "-"}));
    EXPECT_EQ(run.exitCode, CHECK_EXIT_OK);
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 3); // the frame alone

    writeAircraft(dir / "root" / "b");
    fs::remove_all(dir / "root" / "b" / "texture.red");
    run = check(hermetic({"validate-all", root, "--errors-only", "--report", "-"}));
    EXPECT_EQ(run.exitCode, CHECK_EXIT_ERRORS);
    EXPECT_NE(run.out.find("(error report) *\r\n"), std::string::npos);
    EXPECT_EQ(run.out.find((dir / "root" / "a").string()), std::string::npos) << "a clean folder reported";
    writeBytes(dir / "root" / "c" / "notes.txt", "no aircraft");
    EXPECT_EQ(check(hermetic({"validate-all", root, "--errors-only", "--report", "-"})).exitCode, CHECK_EXIT_NO_REPORT);

    run = check(hermetic({"validate-all", (dir / "gone").string()}));
    EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_NE(run.err.find("Error number: 76"), std::string::npos) << run.err;
    EXPECT_EQ(run.out, "");
}

#ifdef _WIN32
constexpr const char *SHOWN_CFG = "aircraft.cfg"; // Windows opens any spelling; the name stays as asked
#else
constexpr const char *SHOWN_CFG = "Aircraft.cfg";
#endif

// What the program's dialogs write, the backup first unless --no-backup.
TEST(EditCommands, RemoveRenumberAndSortWriteTheBytesTheProgramWrites)
{
    const std::string cfg = "[fltsim.3]\r\nui_type=Skyliner\r\ntitle=A // first\r\nAtc_Id=CV-1\r\n[general]\r\n"
                            "atc_id=KEEP\r\n[fltsim.7]\r\nmodel=\r\n  atc_id =CV-2 // reg\r\ntitle=B\r\n";
    TempDir dir;
    const std::string script = (dir / "script").string();
    writeBytes(dir / "script" / "Aircraft.cfg", cfg);
    writeBytes(dir / "program" / "Aircraft.cfg", cfg);
    CheckRun run = check({"remove-keys", script, "UI_TYPE", " Atc_Id ", "nothere", "atc_id"});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_OK) << run.err;
    EXPECT_EQ(run.out,
              "removed from the [fltsim.x] sections of " + (dir / "script" / SHOWN_CFG).string()
                  + ": atc_id ui_type\nA total of 4 keys have been deleted in the aircraft.cfg\n");
    EXPECT_EQ(run.err, "fleetwright-check: no [fltsim.x] section holds the key 'nothere'\n");
    EXPECT_EQ(check({"renumber", script, "--no-backup"}).exitCode, CHECK_EXIT_OK);
    run = check({"sort-keys", script, "--no-backup"});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_OK) << run.err;
    EXPECT_NE(run.out.find("sorted the keys"), std::string::npos);

    const std::u16string program = widePath(dir / "program" / "Aircraft.cfg");
    MakeBackup(program, true);
    clsIniFile ini;
    ini.setPath(program);
    RemoveMarkedKeys(ini, {u"atc_id", u"ui_type"});
    Renumber_fltsim(program, false);
    NeverAskDialogs dialogs;
    DoSortKeys(ini, false, dialogs);
    EXPECT_EQ(readBytes(dir / "script" / "Aircraft.cfg"), readBytes(dir / "program" / "Aircraft.cfg"));
    EXPECT_EQ(readBytes(dir / "script" / "Aircraft.corvane"), cfg);

    // Nothing removed, no backup; a missing or read-only file is refused, the file unchanged.
    writeBytes(dir / "bare" / "aircraft.cfg", cfg);
    run = check({"remove-keys", (dir / "bare").string(), "nothere"});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_OK);
    EXPECT_EQ(run.out, "nothing to remove in " + (dir / "bare" / "aircraft.cfg").string() + "\n");
    EXPECT_FALSE(fs::exists(dir / "bare" / "aircraft.corvane"));
    EXPECT_EQ(check({"remove-keys", (dir / "bare").string()}).err,
              "fleetwright-check: remove-keys needs at least one KEY" + TRY);
    run = check({"renumber", (dir / "nothing").string()});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_NE(run.err.find("no aircraft.cfg in"), std::string::npos);
    fs::permissions(dir / "bare" / "aircraft.cfg",
                    fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    run = check({"sort-keys", (dir / "bare").string()});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_NE(run.err.find("is read-only; nothing changed"), std::string::npos);
    EXPECT_EQ(readBytes(dir / "bare" / "aircraft.cfg"), cfg);
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
    AirFileState state {u"Sky"};
    NeverAskDialogs dialogs;
    ReadAirFile(widePath(dir / "program"), state, dialogs);
    EXPECT_EQ(patchAirType(AirType::AI, state, false, dialogs).outcome, AirTypePatchOutcome::Written);
    EXPECT_EQ(readBytes(script), readBytes(dir / "program" / "Sky.AIR"));
    EXPECT_FALSE(fs::exists(dir / "script" / "Sky.corvane"));

    writeBytes(script, airFile(3));
    EXPECT_EQ(check({"air-type", script, "--set", "0"}).out, script + ": type 0 (Normal), was 3 (not 0, 1 or 2)\n");

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
    mdl[28] = static_cast<char>(255);
    writeBytes(dir / "model.Blue" / "Sky.mdl", mdl);
    writeBytes(dir / "model" / "Sky.MDL", modelBytes("MDLX"));
    writeBytes(dir / "loose" / "Sky.mdl", mdl);
    writeBytes(dir / "model" / "short.mdl", "MDL");
    for (const auto &[file, out] :
         {std::pair {"model.Blue/Sky.mdl", ": FS8/9, radius 255\n"}, {"model/Sky.MDL", ": FSX, radius n/a\n"}}) {
        const CheckRun run = check({"mdl-info", (dir / file).string()});
        EXPECT_EQ(run.exitCode, CHECK_EXIT_OK) << run.err;
        EXPECT_EQ(run.out, (dir / file).string() + out);
    }
    for (const auto &[file, message] : {std::pair {"loose/Sky.mdl", "does not stand in a model or model.NAME folder"},
                                        {"model/gone.mdl", "no file "},
                                        {"model/short.mdl", "could not be opened for write access"}}) {
        const CheckRun run = check({"mdl-info", (dir / file).string()});
        EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT) << file;
        EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
    }
}
