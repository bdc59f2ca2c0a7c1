#include <atomic>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

#include "common/aircraftfolder.h"
#include "common/environment.h"
#include "common/golden.h"
#include "common/scripteddialogs.h"
#include "common/tempdir.h"
#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "platform/codepage.h"
#include "platform/filelookup.h"
#include "platform/regional.h"
#include "validation/batch.h"
#include "validation/checkerfeed.h"
#include "validation/reportwriter.h"
#include "validation/validationrun.h"
#include "version.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

using Settings = std::map<std::string, std::string>;

std::string cp(const std::u16string &text)
{
    return platform::toCodePage(text);
}

// A run on dir/Aircraft. Settings: options= (23 digits, all on), fs9= / fsx= airlines split by "|" (the simulator
// found), fs9effects= / fsxeffects=, choice=fs9|fsx, button=N (the answer asked), batch=1, emptyFolders=.
struct Bench
{
    explicit Bench(const Settings &settings)
    {
        fs::create_directories(folder);
        fs::create_directories(dir / "tmp");
        const auto setting = [&](const std::string &key, const std::string &otherwise = "") {
            return settings.contains(key) ? settings.at(key) : otherwise;
        };
        for (char digit : setting("options", std::string(23, '1')))
            input.AnalyzeOptionList.push_back(std::u16string(1, static_cast<char16_t>(digit)));
        input.folder = widePath(folder);
        input.environment.TempFolder = widePath(dir / "tmp" / "");
        input.gridRowCount = 1;
        input.BatchRunning = settings.contains("batch");
        for (const bool fs9 : {true, false}) {
            const std::string sim = fs9 ? "fs9" : "fsx";
            if (!settings.contains(sim))
                continue;
            ValidationEnvironment &env = input.environment;
            (fs9 ? env.Fs9Found : env.FsxFound) = true;
            for (const std::string &line : split(setting(sim)))
                if (!setting(sim).empty())
                    (fs9 ? env.Fs9Airlines : env.FsxAirlines).push_back(platform::fromCodePage(line));
            (fs9 ? env.Fs9EffectsFolder : env.FsxEffectsFolder) = widePath(dir / sim / "Effects");
            for (const std::string &name : split(setting(sim + "effects")))
                if (!name.empty())
                    writeBytes(dir / sim / "Effects" / name, "fx");
        }
        if (settings.contains("choice"))
            input.choice = setting("choice") == "fs9" ? SimulatorChoice::Fs9 : SimulatorChoice::Fsx;
        if (settings.contains("button"))
            dialogs.pushButton(std::stoi(setting("button")));
        for (const std::string &name : split(setting("emptyFolders")))
            fs::create_directories(folder / name);
    }

    ValidationResult run()
    {
        clsIniFile ini;
        const auto found = platform::FileLookup::findFile(widePath(folder / "aircraft.cfg"));
        ini.setPath(found ? found->u16string() : widePath(folder / "aircraft.cfg"));
        return runValidation(input, ini, dialogs);
    }

    fs::path reportFile() const { return fs::path(input.environment.TempFolder + u"corvanecheck.log"); }

    // The report inside its frame of stars, header and blank lines, with "{rule}" for the rule.
    std::string body() const
    {
        std::string text = readBytes(reportFile());
        const std::u16string header = reportHeaderStart() + u"Report for \"" + LCase(widePath(folder / "")) + u"\" *";
        const std::string stars = cp(reportStars(header));
        const std::string top = stars + "\r\n" + cp(header) + "\r\n" + stars + "\r\n\r\n";
        const std::string bottom = "\r\n" + stars + "\r\n";
        if (!text.starts_with(top) || !text.ends_with(bottom) || text.size() < top.size() + bottom.size())
            return "the report's frame differs:\n" + text;
        text = text.substr(top.size(), text.size() - top.size() - bottom.size());
        const std::string rule = cp(reportRule(header));
        for (std::size_t at; (at = text.find(rule)) != std::string::npos;)
            text.replace(at, rule.size(), "{rule}");
        return text;
    }

    ScopedVariable time {"SOURCE_DATE_EPOCH", "1700000000"};
    TempDir dir;
    fs::path folder = dir / "Aircraft";
    ValidationInput input;
    ScriptedDialogs dialogs;
};

// What a run told besides its report, or the run-time error that ended it.
std::string resultText(Bench &run)
{
    std::string text;
    try {
        const ValidationResult result = run.run();
        static const char *const OUTCOMES[] = {"", "refused", "cancelled", "nothing to report"};
        if (result.outcome != ValidationOutcome::ReportWritten)
            text = std::string("outcome=") + OUTCOMES[static_cast<int>(result.outcome)] + "\n";
        text += std::string("errors=") + (result.ReportHasErrors ? "1" : "0") + "\n";
        if (result.AnalyzeOptionList != run.input.AnalyzeOptionList) {
            text += "options=";
            for (const std::u16string &option : result.AnalyzeOptionList)
                text += cp(option);
            text += "\n";
        }
        if (!result.BatchFailureText.empty())
            text += "failure=" + cp(result.BatchFailureText) + "\n";
    } catch (const RuntimeError &error) {
        text = "error=" + std::to_string(error.number()) + " " + cp(error.procedure()) + "\n";
    }
    for (const DialogRecord &box : run.dialogs.records()) {
        text += std::string("box=") + dialogKindName(box.kind) + "|" + cp(box.title) + "|" + cp(box.text);
        for (const std::u16string &button : box.details)
            text += "|" + cp(button);
        text += "\n";
    }
    return text;
}

class ValidationGolden : public ::testing::TestWithParam<fs::path>
{};

// <case>/: input/ is the aircraft folder, around/ what stands beside it. bomRemoved= names files whose byte
// order marks the run takes off.
TEST_P(ValidationGolden, Run)
{
    const fs::path &data = GetParam();
    const Settings settings = readSettings(data / "case.txt");
    Bench run(settings);
    if (fs::exists(data / "input"))
        copyFolder(data / "input", run.folder);
    if (fs::exists(data / "around"))
        copyFolder(data / "around", run.dir.path());
    expectGolden(resultText(run), data / "result.txt");
    if (fs::exists(run.reportFile()) || fs::exists(data / "report.txt"))
        expectGolden(run.body(), data / "report.txt");
    EXPECT_FALSE(fs::exists(run.folder / "corvanecheck.log"));
    if (!settings.contains("bomRemoved"))
        return;
    // Each mark read goes, the text moving up in place: the file keeps its length, its last bytes staying behind.
    for (const std::string &name : split(settings.at("bomRemoved"))) {
        std::string after = readBytes(data / "input" / name);
        while (after.starts_with("\xEF\xBB\xBF"))
            after = after.substr(3) + after.substr(after.size() - 3);
        EXPECT_EQ(readBytes(run.folder / name), after) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, ValidationGolden, ::testing::ValuesIn(goldenCases("validation")), goldenName);

TEST(ValidationReport, HeaderTimeStampAndPlace)
{
    Bench run(Settings {{"options", "1"}});
    writeBytes(run.folder / "aircraft.cfg", "[fltsim.0]\r\n");
    run.input.reportPath = widePath(run.dir / "elsewhere.log");
    EXPECT_EQ(run.run().reportPath, run.input.reportPath);
    EXPECT_TRUE(fs::exists(run.dir / "elsewhere.log"));
    EXPECT_EQ(reportHeaderStart(),
              u"Fleetwright V." + platform::fromCodePage(VERSION_TEXT) + u" - " + platform::shortDateText(1700000000)
                  + u" " + platform::longTimeText(1700000000) + u" - ");
    EXPECT_EQ(reportTimeSeconds(), 1700000000);
    // The rule is half the header long, a half rounded to the even number.
    EXPECT_EQ(reportRule(u"12345"), u"-:-:");
    EXPECT_EQ(reportRule(u"1234567"), u"-:-:-:-:");
    EXPECT_EQ(reportRule(u"123456"), u"-:-:-:");
    EXPECT_EQ(reportStars(u"abc"), u"***");
}

// Which groups a rule closes. clean/rules.txt: per set of options, the lines of the clean aircraft's report
// joined by "|", a rule as "-".
TEST(ValidationReport, RulesFollowTheOptionCombinations)
{
    const fs::path clean = fs::path(FLEETWRIGHT_TEST_DATA_DIR) / "validation" / "clean";
    std::string actual;
    for (const char *options : {"10000000000010000000000", "10000000000011000000000", "00000000000000000000001",
                                "00011010000000000000000", "00010000010000000000010", "00000000000100000000011"}) {
        Settings settings = readSettings(clean / "case.txt");
        settings["options"] = options;
        Bench run(settings);
        copyFolder(clean / "input", run.folder);
        run.run();
        actual += options;
        for (const std::string &line : split(run.body(), "\r\n"))
            if (!line.empty())
                actual += "|" + (line == "{rule}" ? "-" : line);
        actual += "\n";
    }
    expectGolden(actual, clean / "rules.txt");
}

TEST(ValidationEdges, LoopingAndDeepFolders)
{
    Bench run(Settings {{"options", "00000000000000000000001"}});
    writeBytes(run.folder / "aircraft.cfg", "[fltsim.0]\r\ntitle=A\r\ntexture=\r\n");
    writeBytes(run.folder / "texture" / "a.bmp", "b");
    fs::path deep = run.folder / "nest";
    std::string row = "Empty folders found:               ..\\nest";
    for (int i = 0; i < 60; ++i) {
        deep /= "d";
        row += "\\d";
    }
    fs::create_directories(deep);
    int yields = 0;
    run.input.yieldToEvents = [&] { ++yields; };
    EXPECT_EQ(resultText(run), "errors=1\n");
    EXPECT_EQ(run.body(), "{rule}\r\n" + row + "\r\n");
    EXPECT_GE(yields, 63);

    // The texture walk would grow its path for ever through a link back up: it stops at once.
    std::error_code ec;
    fs::create_directory_symlink(run.folder, run.folder / "texture" / "loop", ec);
    if (ec)
        GTEST_SKIP() << "no folder links here";
    run.input.AnalyzeOptionList.assign(23, u"1");
    EXPECT_EQ(resultText(run), "error=76 AnalyzeTextureFolder\n");
}

TEST(ValidationEdges, RealAircraftFoldersValidate)
{
    const fs::path corpus = FLEETWRIGHT_CORPUS_DIR;
    if (!fs::is_directory(corpus))
        GTEST_SKIP() << "no corpus of real aircraft folders";
    int validated = 0;
    for (const auto &entry : fs::directory_iterator(corpus)) {
        if (!entry.is_directory())
            continue;
        // A copy: the run may take byte order marks off configuration files.
        Bench run(Settings {{"batch", "1"}});
        copyFolder(entry.path(), run.folder);
        const std::string result = resultText(run);
        EXPECT_EQ(result.find("error="), std::string::npos) << entry.path().filename() << result;
        validated += result.starts_with("errors=");
    }
    EXPECT_GT(validated, 0);
}

std::string framed(const std::u16string &line)
{
    const std::string stars = cp(reportStars(line));
    return stars + "\r\n" + cp(line) + "\r\n" + stars + "\r\n";
}

// A clean aircraft, one that is no aircraft, one without variations, one with an error, and one whose single
// missing model sits on its label and is no error.
struct Library
{
    Library()
    {
        writeAircraft(root / "A-clean");
        writeBytes(root / "B-junk" / "corvanecheck.log", "left over");
        writeBytes(root / "C-nosections" / "aircraft.cfg", crlf("[general]\natc_type=CORVANE\n"));
        writeAircraft(root / "D-error");
        fs::remove_all(root / "D-error" / "texture.red");
        writeAircraft(root / "E-model-missing");
        writeBytes(root / "E-model-missing" / "aircraft.cfg",
                   crlf("[fltsim.0]\ntitle=Corvane One\nmodel=\ntexture=\nsim=corvane\n"
                        "[fltsim.1]\ntitle=Corvane Two\nmodel=gone\ntexture=red\nsim=corvane\n"));
        writeBytes(root / "corvanecheck.log", "left over");
        batch.BatchRoot = widePath(root);
        batch.AnalyzeOptionList.assign(23, u"1");
        batch.environment.TempFolder = widePath(temp / "");
    }
    std::u16string folder(const char *name) const { return widePath(root / name); }

    BatchResult run()
    {
        clsIniFile AircraftIni;
        return runBatchValidation(batch, AircraftIni, dialogs);
    }
    std::string report() const { return readBytes(temp / "corvanecheckall.log"); }

    std::string single(const char *name) const
    {
        NeverAskDialogs quiet;
        clsIniFile AircraftIni;
        const ValidationFeed feed = feedValidationFromFolder(folder(name), AircraftIni, quiet);
        ValidationInput run {.folder = folder(name),
                             .AnalyzeOptionList = batch.AnalyzeOptionList,
                             .environment = batch.environment,
                             .textureFormatText = feed.textureFormatText,
                             .gridRowCount = feed.gridRowCount,
                             .BatchRunning = true,
                             .reportPath = widePath(temp / "expected.log")};
        runValidation(run, AircraftIni, quiet);
        return readBytes(temp / "expected.log");
    }
    std::string refused(const char *name, const char16_t *why) const
    {
        return framed(std::u16string(why) + u" found in folder " + folder(name) + u" *");
    }

    ScopedVariable time {"SOURCE_DATE_EPOCH", "1700000000"};
    TempDir temp;
    TempDir library;
    fs::path root = library.path();
    BatchInput batch;
    NeverAskDialogs dialogs;
};

// Each folder as outcome number, "r" when in the report, "e" when its report has errors.
std::string outcomes(const BatchResult &result)
{
    std::string text;
    for (const BatchFolder &folder : result.folders)
        text += std::to_string(static_cast<int>(folder.outcome)) + (folder.inReport ? "r" : "")
            + (folder.ReportHasErrors ? "e" : "") + " ";
    return text;
}

} // namespace

TEST(BatchValidation, FullAndErrorReports)
{
    Library lib;
    const std::string junk = lib.refused("B-junk", u"No aircraft.cfg file");
    const std::string noSections = lib.refused("C-nosections", u"An aircraft.cfg file without any [fltsim.x] section");
    ASSERT_NE(lib.single("E-model-missing").find("Models missing in folder:          fltsim.1"), std::string::npos);
    BatchResult result = lib.run();
    EXPECT_EQ(result.reportPath, widePath(lib.temp / "") + u"corvanecheckall.log");
    EXPECT_EQ(lib.report(),
              framed(batchReportHeader(widePath(lib.root), false)) + lib.single("A-clean") + junk + noSections
                  + lib.single("D-error") + lib.single("E-model-missing"));
    EXPECT_EQ(outcomes(result), "0r 1r 1r 0re 0r ");
    EXPECT_EQ(result.folderCount, 5u);
    EXPECT_FALSE(result.stopped);
    EXPECT_TRUE(result.skippedErrors.empty());
    EXPECT_EQ(result.folders[1].BatchFailureText, u"No aircraft.cfg file found in folder ");
    // No box in a batch; the reports left in the root and the folders are gone.
    EXPECT_TRUE(lib.dialogs.messages().empty());
    EXPECT_FALSE(fs::exists(lib.root / "corvanecheck.log"));
    EXPECT_FALSE(fs::exists(lib.root / "B-junk" / "corvanecheck.log"));

    // Errors and failures only; the header names the start folder, whose left-over report goes instead.
    writeBytes(lib.root / "corvanecheck.log", "left over");
    lib.batch.errorsOnly = true;
    lib.batch.BatchStartFolder = lib.folder("A-clean");
    result = lib.run();
    EXPECT_EQ(lib.report(),
              framed(batchReportHeader(lib.folder("A-clean"), true)) + junk + noSections + lib.single("D-error"));
    EXPECT_EQ(outcomes(result), "0 1r 1r 0re 0 ");
    EXPECT_TRUE(fs::exists(lib.root / "corvanecheck.log"));
}

TEST(BatchValidation, AllOptionsOffPassesOnWhateverTheSingleReportHolds)
{
    Library lib;
    writeBytes(lib.temp / "corvanecheck.log", "x");
    lib.batch.AnalyzeOptionList.assign(23, u"0");
    const BatchResult result = lib.run();
    // The box is not silenced by the batch, and no folder is refused, since the run ends first.
    EXPECT_EQ(
        lib.dialogs.messages(),
        std::vector<DialogRecord>(
            5, {DialogKind::Information, u"", u"You have disabled all analysis reporting options. Exiting here...."}));
    EXPECT_EQ(lib.report(), framed(batchReportHeader(widePath(lib.root), false)) + "xxxxx");
    EXPECT_EQ(outcomes(result), "2r 2r 2r 2r 2r ");
}

// A form that shows no rows: the folder is refused for its empty grid. Stop, pressed during the first folder,
// ends the batch after it.
TEST(BatchValidation, FormLoadsTheFoldersAndStopEndsTheBatch)
{
    Library lib;
    std::atomic<bool> stop = false;
    lib.batch.stopRequested = &stop;
    std::vector<std::u16string> loaded;
    clsIniFile AircraftIni;
    lib.batch.loadFolder = [&](const std::u16string &folder) {
        loaded.push_back(folder);
        ValidationFeed feed = feedValidationFromFolder(folder, AircraftIni, lib.dialogs);
        feed.gridRowCount = 0;
        return feed;
    };
    lib.batch.progress = [&](const BatchProgress &step) {
        EXPECT_EQ(step.count, 5u);
        EXPECT_EQ(step.folder->folder, lib.folder("A-clean"));
        stop = true;
    };
    const BatchResult result = runBatchValidation(lib.batch, AircraftIni, lib.dialogs);
    EXPECT_TRUE(result.stopped);
    EXPECT_EQ(loaded, std::vector<std::u16string> {lib.folder("A-clean")});
    EXPECT_EQ(outcomes(result), "1r ");
    EXPECT_EQ(lib.report(),
              framed(batchReportHeader(widePath(lib.root), false))
                  + lib.refused("A-clean", u"An aircraft.cfg file without any [fltsim.x] section"));
}

// Row 1's model decides the texture format; row 2's is never opened. A model file that will not read and a
// load fault are told in a box and leave the format empty; the fault keeps the rows read before it.
TEST(CheckerFeed, FormatRowsAndBoxes)
{
    const struct
    {
        std::string mdl; // empty: no model file
        bool withModelCfg;
        const char *geometry;
        std::string expected;
    } rows[] = {
        {modelBytes("MDLX"), true, "", "3 FSX"},
        {modelBytes("MDL9"), true, "", "3 FS8/9"},
        {modelBytes("MDL8"), true, "", "3 FS8/9"},
        {modelBytes("RIFF"), true, "", "3 n/a"},
        {"", true, "", "3 "},
        {modelBytes("MDLX"), false, "", "3 "},
        {modelBytes("MDL9", 20), true, "", "3  critical box|The model file:"},
        {modelBytes("MDLX"), true, "[geometry]\nwing_span=1e400\n", "1  fault 6 Dir1_Change plain box|A runtime error"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        TempDir dir;
        writeBytes(dir / "aircraft.cfg",
                   crlf(std::string("[fltsim.0]\ntitle=a\nmodel=fsx\n") + row.geometry
                        + "[fltsim.1]\ntitle=b\nmodel=\n[fltsim.2]\ntitle=c\n"));
        if (row.withModelCfg)
            writeBytes(dir / "model.fsx" / "model.cfg", crlf("normal=plane.MDL\n"));
        if (!row.mdl.empty())
            writeBytes(dir / "model.fsx" / "plane.mdl", row.mdl);
        writeBytes(dir / "model" / "model.cfg", crlf("normal=other\n"));
        writeBytes(dir / "model" / "other.mdl", modelBytes("MDL9"));
        NeverAskDialogs dialogs;
        clsIniFile AircraftIni;
        const ValidationFeed fed = feedValidationFromFolder(widePath(dir.path()), AircraftIni, dialogs);
        std::string text = std::to_string(fed.gridRowCount) + " " + cp(fed.textureFormatText);
        if (fed.loadFault)
            text += " fault " + std::to_string(fed.loadFault->number()) + " " + cp(fed.loadFault->procedure());
        for (const DialogRecord &box : dialogs.messages())
            text += std::string(" ") + dialogKindName(box.kind) + "|" + cp(box.text.substr(0, 15));
        EXPECT_EQ(text, row.expected);
    }
}
