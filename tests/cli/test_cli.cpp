#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/checkercommands.h"
#include "core/aircraftfilestore.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/scripteddialogs.h"
#include "editing/keyremoval.h"
#include "editing/sectionrenumber.h"
#include "editing/sortkeys.h"
#include "simfiles/airfile.h"
#include "simfiles/modelfile.h"
#include "common/tempdir.h"
#include "validation/batchfixtures.h"
#include "validation/validationrun.h"
#include "version.h"

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
    const int exitCode = fleetwright::runCheckerCommand(args, out, err);
    return {exitCode, out.str(), err.str()};
}

// The command names the usage text lists, in its order: the first word of each line under "Commands:".
std::vector<std::string> listedCommands(const std::string &usage)
{
    std::vector<std::string> names;
    std::istringstream lines(usage);
    std::string line;
    bool inCommands = false;
    while (std::getline(lines, line)) {
        if (line == "Commands:") {
            inCommands = true;
            continue;
        }
        if (!inCommands)
            continue;
        if (line.empty())
            break;
        std::istringstream words(line);
        std::string name;
        words >> name;
        names.push_back(name);
    }
    return names;
}

} // namespace

TEST(CheckerCommands, HelpListsExactlyTheCommandsThatRun)
{
    const CheckRun help = check({"--help"});
    EXPECT_EQ(help.exitCode, fleetwright::CHECK_EXIT_OK);
    EXPECT_EQ(help.err, "");
    EXPECT_TRUE(help.out.starts_with("Usage: fleetwright-check COMMAND [ARGUMENTS]\n")) << help.out;

    const std::vector<std::string> listed = listedCommands(help.out);
    EXPECT_EQ(listed,
              (std::vector<std::string> {"validate", "validate-all", "renumber", "sort-keys", "remove-keys", "air-type",
                                         "mdl-info", "--help", "--version"}));
    for (const char *option : {"--fs9 DIR", "--fsx DIR", "--against fs9|fsx", "--options DIGITS", "--report FILE",
                               "--errors-only", "Exit status:"})
        EXPECT_NE(help.out.find(option), std::string::npos) << option;
    for (const std::string &name : {std::string("--help"), std::string("--version")}) {
        SCOPED_TRACE(name);
        const CheckRun run = check({name});
        EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_OK);
        EXPECT_NE(run.out, "");
        EXPECT_EQ(run.err, "");
    }
}

TEST(CheckerCommands, VersionIsTheBuildVersion)
{
    const CheckRun version = check({"--version"});
    EXPECT_EQ(version.exitCode, fleetwright::CHECK_EXIT_OK);
    EXPECT_EQ(version.out, std::string("fleetwright-check ") + fleetwright::VERSION_TEXT + "\n");
    EXPECT_EQ(std::string(fleetwright::VERSION_TEXT),
              std::to_string(fleetwright::VERSION_MAJOR) + "." + std::to_string(fleetwright::VERSION_MINOR) + "."
                  + std::to_string(fleetwright::VERSION_REVISION));
    EXPECT_EQ(version.err, "");
}

TEST(CheckerCommands, WrongCommandLinesGoToStderrWithExitCode64)
{
    const std::string usage = check({"--help"}).out;

    const CheckRun none = check({});
    EXPECT_EQ(none.exitCode, fleetwright::CHECK_EXIT_USAGE);
    EXPECT_EQ(none.exitCode, 64);
    EXPECT_EQ(none.out, "");
    EXPECT_EQ(none.err, usage);

    struct Row
    {
        std::vector<std::string> args;
        std::string firstErrorLine;
    };
    const std::vector<Row> rows = {
        {{"frobnicate"}, "fleetwright-check: unknown command 'frobnicate'"},
        {{"Validate", "some folder"}, "fleetwright-check: unknown command 'Validate'"},
        {{"validate"}, "fleetwright-check: 'validate' needs a folder"},
        {{"validate", "a", "b"}, "fleetwright-check: 'validate' takes one folder, got 'a' and 'b'"},
        {{"validate", "a", "--errors-only"}, "fleetwright-check: 'validate' has no option '--errors-only'"},
        {{"validate-all", "a", "--report"}, "fleetwright-check: '--report' needs a value"},
        {{"validate-all", "a", "--against", "FS9"}, "fleetwright-check: '--against' takes fs9 or fsx, got 'FS9'"},
        {{"validate", "a", "--options", "1111"}, "fleetwright-check: '--options' takes 23 digits 0 or 1, got '1111'"},
        {{"validate", "a", "--options", "11111111111111111111112"},
         "fleetwright-check: '--options' takes 23 digits 0 or 1, got '11111111111111111111112'"},
        {{""}, "fleetwright-check: unknown command ''"},
        {{"--HELP"}, "fleetwright-check: unknown command '--HELP'"},
        {{"-h"}, "fleetwright-check: unknown command '-h'"},
        {{"--version", "extra"}, "fleetwright-check: '--version' takes no arguments, got 'extra'"},
        {{"--help", "--version"}, "fleetwright-check: '--help' takes no arguments, got '--version'"},
        // Bytes of any kind come back as they were typed.
        {{"caf\xC3\xA9 \xE9"}, "fleetwright-check: unknown command 'caf\xC3\xA9 \xE9'"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.firstErrorLine);
        const CheckRun run = check(row.args);
        EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_USAGE);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, row.firstErrorLine + "\nTry 'fleetwright-check --help' for the list of commands.\n");
    }
}

namespace {

using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

const std::string ALL_ON = "11111111111111111111111";

// A path argument as the user would type it.
std::string argument(const fs::path &path)
{
    return path.string();
}

// Simulators and the stored options out of the way: every run says what it checks against.
std::vector<std::string> hermetic(std::vector<std::string> args, const std::string &options = ALL_ON)
{
    for (const char *fixed : {"--fs9", "", "--fsx", "", "--options"})
        args.push_back(fixed);
    args.push_back(options);
    return args;
}

} // namespace

TEST(CheckerValidate, ExitCodesAndMessages)
{
    const fleetwright::test::ScopedVariable time("SOURCE_DATE_EPOCH", fleetwright::test::FIXED_TIME);
    TempDir dir;
    fleetwright::test::writeAircraft(dir / "clean");
    fleetwright::test::writeAircraft(dir / "error");
    fs::remove_all(dir / "error" / "texture.red");
    writeBytes(dir / "nosections" / "aircraft.cfg", fleetwright::test::crlf("[general]\natc_type=X\n"));
    fs::create_directories(dir / "none");
    const std::string report = argument(dir / "report.log");

    struct Row
    {
        std::string folder;
        std::string options;
        int exitCode;
        std::string err;
    };
    const std::vector<Row> rows = {
        {"clean", ALL_ON, fleetwright::CHECK_EXIT_OK, ""},
        {"error", ALL_ON, fleetwright::CHECK_EXIT_ERRORS, ""},
        {"none", ALL_ON, fleetwright::CHECK_EXIT_NO_REPORT,
         "fleetwright-check: No aircraft.cfg file found in this folder. Exiting here...\n"},
        {"nosections", ALL_ON, fleetwright::CHECK_EXIT_NO_REPORT,
         "fleetwright-check: An aircraft.cfg file without any [fltsim.x] section found in folder . Exiting here...\n"},
        {"clean", std::string(23, '0'), fleetwright::CHECK_EXIT_NO_REPORT,
         "fleetwright-check: You have disabled all analysis reporting options. Exiting here....\n"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.folder + " " + row.options);
        fs::remove(dir / "report.log");
        const CheckRun run = check(hermetic({"validate", argument(dir / row.folder), "--report", report}, row.options));
        EXPECT_EQ(run.exitCode, row.exitCode);
        EXPECT_EQ(run.err, row.err);
        const bool written =
            row.exitCode == fleetwright::CHECK_EXIT_OK || row.exitCode == fleetwright::CHECK_EXIT_ERRORS;
        EXPECT_EQ(run.out, written ? report + "\n" : "");
        EXPECT_EQ(fs::exists(dir / "report.log"), written);
    }
}

TEST(CheckerValidate, ReportEqualsTheRunFedAsTheFormFeedsIt)
{
    const fleetwright::test::ScopedVariable time("SOURCE_DATE_EPOCH", fleetwright::test::FIXED_TIME);
    TempDir dir;
    const fs::path folder = dir / "aircraft";
    fleetwright::test::writeAircraft(folder, "MDLX");
    // A folder name with a trailing separator is the same folder to the form.
    const CheckRun run = check(hermetic({"validate", argument(folder) + "/", "--report", "-"}));
    ASSERT_EQ(run.exitCode, fleetwright::CHECK_EXIT_OK) << run.err;

    // What the form holds after loading the folder: two rows, row 1's model an FSX one.
    fleetwright::ValidationInput input;
    input.folder = widePath(folder);
    input.AnalyzeOptionList = std::vector<std::u16string>(23, u"1");
    input.environment.TempFolder = widePath(dir.path()) + static_cast<char16_t>(fs::path::preferred_separator);
    input.gridRowCount = 2;
    input.textureFormatText = u"FSX";
    input.reportPath = widePath(dir / "form.log");
    fleetwright::NeverAskDialogs dialogs;
    fleetwright::clsIniFile AircraftIni;
    AircraftIni.setPath(widePath(folder / "aircraft.cfg"));
    fleetwright::runValidation(input, AircraftIni, dialogs);
    const std::string expected = fleetwright::test::readBytes(dir / "form.log");
    EXPECT_NE(expected.find("Texture format:                    *.dds\r\n"), std::string::npos);
    EXPECT_EQ(run.out, expected);
}

TEST(CheckerValidate, AgainstChoosesTheSimulatorWhenBothAreFound)
{
    TempDir dir;
    fleetwright::test::writeAircraft(dir / "aircraft");
    writeBytes(dir / "aircraft" / "aircraft.cfg",
               fleetwright::test::crlf("[fltsim.0]\ntitle=One\nmodel=\ntexture=\nsim=corvane\natc_airline=CORVANE\n"));
    writeBytes(dir / "FS9" / "Aircraft" / "airlines.cfg", fleetwright::test::crlf("CORVANE\n"));
    writeBytes(dir / "FSX" / "airlines.cfg", fleetwright::test::crlf("OTHER\n"));
    fs::create_directories(dir / "FSX" / "SimObjects");
    for (const char *choice : {"fs9", "fsx"}) {
        SCOPED_TRACE(choice);
        const CheckRun run = check({"validate", argument(dir / "aircraft"), "--fs9", argument(dir / "FS9"), "--fsx",
                                    argument(dir / "FSX"), "--options", "00000000011100000000000", "--against", choice,
                                    "--report", "-"});
        const std::string upper = choice == std::string("fs9") ? "FS9" : "FSX";
        EXPECT_NE(run.out.find("atc_airlines compared against:     " + upper + "\r\n"), std::string::npos) << run.out;
        EXPECT_EQ(run.exitCode, upper == "FS9" ? fleetwright::CHECK_EXIT_OK : fleetwright::CHECK_EXIT_ERRORS)
            << run.out;
        EXPECT_EQ(run.err, "");
    }
}

TEST(CheckerValidateAll, ExitCodesAndErrorReport)
{
    const fleetwright::test::ScopedVariable time("SOURCE_DATE_EPOCH", fleetwright::test::FIXED_TIME);
    TempDir dir;
    fleetwright::test::writeAircraft(dir / "clean" / "a");
    fs::create_directories(dir / "empty");
    const CheckRun clean = check(hermetic({"validate-all", argument(dir / "clean"), "--report", "-"}));
    EXPECT_EQ(clean.exitCode, fleetwright::CHECK_EXIT_OK) << clean.err;
    EXPECT_NE(clean.out.find("(full report) *\r\n"), std::string::npos);
    EXPECT_NE(clean.out.find("Report for \""), std::string::npos);

    const CheckRun nothing = check(hermetic({"validate-all", argument(dir / "empty"), "--report", "-"}));
    EXPECT_EQ(nothing.exitCode, fleetwright::CHECK_EXIT_OK);
    EXPECT_EQ(std::count(nothing.out.begin(), nothing.out.end(), '\n'), 3); // the frame alone

    fleetwright::test::writeAircraft(dir / "clean" / "b");
    fs::remove_all(dir / "clean" / "b" / "texture.red");
    const CheckRun errors =
        check(hermetic({"validate-all", argument(dir / "clean"), "--errors-only", "--report", "-"}));
    EXPECT_EQ(errors.exitCode, fleetwright::CHECK_EXIT_ERRORS);
    EXPECT_NE(errors.out.find("(error report) *\r\n"), std::string::npos);
    EXPECT_EQ(errors.out.find(argument(dir / "clean" / "a")), std::string::npos) << "a clean folder in an error report";

    writeBytes(dir / "clean" / "c" / "notes.txt", "no aircraft");
    const CheckRun refused =
        check(hermetic({"validate-all", argument(dir / "clean"), "--errors-only", "--report", "-"}));
    EXPECT_EQ(refused.exitCode, fleetwright::CHECK_EXIT_NO_REPORT);
    EXPECT_NE(refused.out.find("No aircraft.cfg file found in folder " + argument(dir / "clean" / "c") + " *\r\n"),
              std::string::npos);

    const CheckRun gone = check(hermetic({"validate-all", argument(dir / "gone")}));
    EXPECT_EQ(gone.exitCode, fleetwright::CHECK_EXIT_NO_REPORT);
    EXPECT_NE(gone.err.find("Error number: 76"), std::string::npos) << gone.err;
    EXPECT_EQ(gone.out, "");
}

TEST(EditCommands, ScriptsGetTheBytesTheProgramWrites)
{
    const std::string cfg = "[fltsim.3]\r\nui_type=Skyliner\r\ntitle=A // first\r\nmodel=\r\n[general]\r\n"
                            "atc_type=X\r\n[fltsim.7]\r\nAtc_Id=CV-1\r\ntitle=B\r\n";
    fleetwright::test::TempDir dir;
    for (const char *folder : {"script", "program"})
        fleetwright::test::writeBytes(dir / folder / "Aircraft.cfg", cfg);

    const CheckRun renumber = check({"renumber", (dir / "script").string()});
    EXPECT_EQ(renumber.exitCode, 0) << renumber.err;
    const CheckRun sort = check({"sort-keys", (dir / "script").string(), "--no-backup"});
    EXPECT_EQ(sort.exitCode, 0) << sort.err;
    EXPECT_NE(sort.out.find("sorted the keys"), std::string::npos);

    const std::u16string program = fleetwright::test::widePath(dir / "program" / "Aircraft.cfg");
    fleetwright::Renumber_fltsim(program, true);
    fleetwright::clsIniFile ini;
    ini.setPath(program);
    fleetwright::ScriptedDialogs dialogs;
    fleetwright::DoSortKeys(ini, true, dialogs);
    EXPECT_EQ(fleetwright::test::readBytes(dir / "script" / "Aircraft.cfg"),
              fleetwright::test::readBytes(dir / "program" / "Aircraft.cfg"));
    EXPECT_EQ(fleetwright::test::readBytes(dir / "script" / "Aircraft.corvane"), cfg);
}

TEST(EditCommands, MissingOrReadOnlyFilesAreRefusedWithAMessage)
{
    fleetwright::test::TempDir dir;
    CheckRun run = check({"renumber", (dir / "nothing").string()});
    EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_NO_REPORT);
    EXPECT_NE(run.err.find("no aircraft.cfg in"), std::string::npos);

    fleetwright::test::writeBytes(dir / "ro" / "aircraft.cfg", "[fltsim.4]\r\n");
    std::filesystem::permissions(dir / "ro" / "aircraft.cfg",
                                 std::filesystem::perms::owner_write | std::filesystem::perms::group_write
                                     | std::filesystem::perms::others_write,
                                 std::filesystem::perm_options::remove);
    run = check({"sort-keys", (dir / "ro").string()});
    EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_NO_REPORT);
    EXPECT_NE(run.err.find("is read-only; nothing changed"), std::string::npos);
    EXPECT_EQ(fleetwright::test::readBytes(dir / "ro" / "aircraft.cfg"), "[fltsim.4]\r\n");

    EXPECT_EQ(check({"renumber"}).exitCode, fleetwright::CHECK_EXIT_USAGE);
    EXPECT_EQ(check({"renumber", (dir / "ro").string(), "--force"}).exitCode, fleetwright::CHECK_EXIT_USAGE);
}

TEST(EditCommands, RemoveKeysGetsTheBytesOfTheKeyRemovalDialog)
{
    const std::string cfg = "[general]\r\natc_id=KEEP\r\n[fltsim.0]\r\ntitle=A // first\r\nAtc_Id=CV-1\r\n"
                            "ui_type=Skyliner\r\n[fltsim.1]\r\ntitle=B\r\n  atc_id =CV-2 // reg\r\n";
    fleetwright::test::TempDir dir;
    for (const char *folder : {"script", "program"})
        fleetwright::test::writeBytes(dir / folder / "aircraft.cfg", cfg);

    const CheckRun run = check({"remove-keys", (dir / "script").string(), "UI_TYPE", " Atc_Id ", "nothere", "atc_id"});
    EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_OK) << run.err;
    EXPECT_EQ(run.out,
              "removed from the [fltsim.x] sections of " + (dir / "script" / "aircraft.cfg").string()
                  + ": atc_id ui_type\nA total of 4 keys have been deleted in the aircraft.cfg\n");
    EXPECT_EQ(run.err, "fleetwright-check: no [fltsim.x] section holds the key 'nothere'\n");

    // The dialog: the backup when it opens, then the marked entries of its list.
    const std::u16string program = fleetwright::test::widePath(dir / "program" / "aircraft.cfg");
    fleetwright::MakeBackup(program, true);
    fleetwright::clsIniFile ini;
    ini.setPath(program);
    EXPECT_EQ(fleetwright::LoadList(ini), (std::vector<std::u16string> {u"atc_id", u"title", u"ui_type"}));
    EXPECT_EQ(fleetwright::RemoveMarkedKeys(ini, {u"atc_id", u"ui_type"}), 4);
    EXPECT_EQ(fleetwright::test::readBytes(dir / "script" / "aircraft.cfg"),
              fleetwright::test::readBytes(dir / "program" / "aircraft.cfg"));
    EXPECT_EQ(fleetwright::test::readBytes(dir / "script" / "aircraft.cfg"),
              "[general]\r\natc_id=KEEP\r\n[fltsim.0]\r\ntitle=A // first\r\n[fltsim.1]\r\ntitle=B\r\n");
    EXPECT_EQ(fleetwright::test::readBytes(dir / "script" / "aircraft.corvane"), cfg);

    fleetwright::test::writeBytes(dir / "bare" / "aircraft.cfg", cfg);
    const CheckRun bare = check({"remove-keys", (dir / "bare").string(), "title", "--no-backup"});
    EXPECT_EQ(bare.exitCode, fleetwright::CHECK_EXIT_OK) << bare.err;
    EXPECT_FALSE(std::filesystem::exists(dir / "bare" / "aircraft.corvane"));
    const CheckRun none = check({"remove-keys", (dir / "bare").string(), "nothere"});
    EXPECT_EQ(none.exitCode, fleetwright::CHECK_EXIT_OK);
    EXPECT_EQ(none.out, "nothing to remove in " + (dir / "bare" / "aircraft.cfg").string() + "\n");
    EXPECT_FALSE(std::filesystem::exists(dir / "bare" / "aircraft.corvane"));

    EXPECT_EQ(check({"remove-keys", (dir / "bare").string()}).err,
              "fleetwright-check: remove-keys needs at least one KEY\n"
              "Try 'fleetwright-check --help' for the list of commands.\n");
    EXPECT_EQ(check({"remove-keys", (dir / "nothing").string(), "title"}).exitCode, fleetwright::CHECK_EXIT_NO_REPORT);
}

namespace {

std::string littleEndian(std::int32_t value)
{
    std::string bytes(4, '\0');
    for (int i = 0; i < 4; ++i)
        bytes[static_cast<std::size_t>(i)] = static_cast<char>((static_cast<std::uint32_t>(value) >> (8 * i)) & 0xFF);
    return bytes;
}

std::string airFile(std::int32_t type)
{
    return littleEndian(0x100) + littleEndian(4) + littleEndian(7) + littleEndian(0x105) + littleEndian(4)
        + littleEndian(type) + "tail";
}

} // namespace

TEST(EditCommands, AirTypeReadsAndPatchesAsTheOptionButtonsDo)
{
    fleetwright::test::TempDir dir;
    const std::string script = (dir / "script" / "Sky.AIR").string();
    fleetwright::test::writeBytes(script, airFile(0x10001));
    fleetwright::test::writeBytes(dir / "program" / "Sky.AIR", airFile(0x10001));

    CheckRun run = check({"air-type", script});
    EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_OK) << run.err;
    EXPECT_EQ(run.out, script + ": type 65537 (not 0, 1 or 2)\n");

    // Only the low half is written, as the form writes it.
    run = check({"air-type", script, "--set", "2"});
    EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_OK) << run.err;
    EXPECT_EQ(run.out, script + ": type 65538 (not 0, 1 or 2), was 65537 (not 0, 1 or 2)\n");
    fleetwright::AirFileState state;
    state.AirFileName = u"Sky";
    fleetwright::NeverAskDialogs dialogs;
    fleetwright::ReadAirFile(fleetwright::test::widePath(dir / "program"), state, dialogs);
    EXPECT_EQ(fleetwright::patchAirType(fleetwright::AirType::AI, state, false, dialogs).outcome,
              fleetwright::AirTypePatchOutcome::Written);
    EXPECT_EQ(fleetwright::test::readBytes(script), fleetwright::test::readBytes(dir / "program" / "Sky.AIR"));
    EXPECT_FALSE(std::filesystem::exists(dir / "script" / "Sky.corvane"));

    fleetwright::test::writeBytes(script, airFile(1));
    run = check({"air-type", script, "--set", "0"});
    EXPECT_EQ(run.out, script + ": type 0 (Normal), was 1 (Helicopter)\n");
    EXPECT_EQ(check({"air-type", script}).out, script + ": type 0 (Normal)\n");

    // An FSX air file has no aircraft section: shown as n/a, and refused for --set with the file unchanged.
    const std::string fsx = (dir / "fsx.air").string();
    fleetwright::test::writeBytes(fsx, littleEndian(0x100) + littleEndian(0));
    run = check({"air-type", fsx});
    EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_OK);
    EXPECT_EQ(run.out, fsx + ": n/a, no aircraft section (105)\n");
    run = check({"air-type", fsx, "--set", "1"});
    EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_NO_REPORT);
    EXPECT_EQ(run.err, "fleetwright-check: " + fsx + " has no aircraft section (105); nothing written\n");
    EXPECT_EQ(fleetwright::test::readBytes(fsx), littleEndian(0x100) + littleEndian(0));

    EXPECT_EQ(check({"air-type", (dir / "gone.air").string()}).exitCode, fleetwright::CHECK_EXIT_NO_REPORT);
    EXPECT_EQ(check({"air-type", (dir / "fsx.cfg").string()}).exitCode, fleetwright::CHECK_EXIT_NO_REPORT);
    EXPECT_EQ(check({"air-type", script, "--set", "3"}).err,
              "fleetwright-check: '--set' takes 0, 1 or 2, got '3'\n"
              "Try 'fleetwright-check --help' for the list of commands.\n");
    EXPECT_EQ(check({"air-type", script, "--set"}).exitCode, fleetwright::CHECK_EXIT_USAGE);
    EXPECT_EQ(check({"air-type"}).exitCode, fleetwright::CHECK_EXIT_USAGE);
}

TEST(EditCommands, MdlInfoShowsWhatTheFormShows)
{
    fleetwright::test::TempDir dir;
    std::string mdl(40, '\0');
    mdl.replace(8, 4, "MDL9");
    mdl[28] = static_cast<char>(200);
    fleetwright::test::writeBytes(dir / "model.Blue" / "Sky.mdl", mdl);
    mdl.replace(8, 4, "MDLX");
    fleetwright::test::writeBytes(dir / "model" / "Sky.MDL", mdl);
    fleetwright::test::writeBytes(dir / "loose" / "Sky.mdl", mdl);

    struct Row
    {
        std::string file;
        std::u16string model;
        std::string out;
    };
    for (const Row &row : {Row {(dir / "model.Blue" / "Sky.mdl").string(), u"Blue", ": FS8/9, radius 200\n"},
                           Row {(dir / "model" / "Sky.MDL").string(), u"<default>", ": FSX, radius n/a\n"}}) {
        SCOPED_TRACE(row.file);
        const CheckRun run = check({"mdl-info", row.file});
        EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_OK) << run.err;
        EXPECT_EQ(run.out, row.file + row.out);
        const fleetwright::ModelFileReading form =
            fleetwright::readModelFile(fleetwright::test::widePath(dir.path()), row.model, u"Sky");
        EXPECT_EQ(run.out,
                  row.file + ": " + std::string(form.versionText.begin(), form.versionText.end()) + ", radius "
                      + std::string(form.radiusText.begin(), form.radiusText.end()) + "\n");
    }

    CheckRun run = check({"mdl-info", (dir / "loose" / "Sky.mdl").string()});
    EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_NO_REPORT);
    EXPECT_NE(run.err.find("does not stand in a model or model.NAME folder"), std::string::npos);
    run = check({"mdl-info", (dir / "model" / "gone.mdl").string()});
    EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_NO_REPORT);
    EXPECT_EQ(run.err, "fleetwright-check: no file " + (dir / "model" / "gone.mdl").string() + "\n");
    fleetwright::test::writeBytes(dir / "model" / "short.mdl", "MDL");
    run = check({"mdl-info", (dir / "model" / "short.mdl").string()});
    EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_NO_REPORT);
    EXPECT_NE(run.err.find("could not be opened for write access"), std::string::npos) << run.err;
    EXPECT_EQ(check({"mdl-info"}).exitCode, fleetwright::CHECK_EXIT_USAGE);
}
