#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

#include "common/environment.h"
#include "common/golden.h"
#include "common/tempdir.h"
#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/runtimeerror.h"
#include "core/scripteddialogs.h"
#include "platform/codepage.h"
#include "platform/filelookup.h"
#include "platform/regional.h"
#include "validation/reportwriter.h"
#include "validation/validationrun.h"
#include "version.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

using Settings = std::map<std::string, std::string>;

std::vector<std::string> split(const std::string &text, const std::string &separator = "|")
{
    std::vector<std::string> parts;
    for (std::size_t start = 0;;) {
        const std::size_t end = text.find(separator, start);
        parts.push_back(text.substr(start, end - start));
        if (end == std::string::npos)
            return parts;
        start = end + separator.size();
    }
}

std::string cp(const std::u16string &text)
{
    return platform::toCodePage(text);
}

// One run on an aircraft folder at dir/Aircraft, the machine around it told by a case's settings:
//   options=23 digits (all on), fs9= / fsx= airline lines split by "|" (the simulator found), fs9effects= /
//   fsxeffects= effect files, choice=fs9|fsx, button=N (the three-button answer), batch=1, gridRows=N (1),
//   emptyFolders= folders to make (version control keeps none).
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
        input.gridRowCount = std::stoi(setting("gridRows", "1"));
        input.BatchRunning = settings.contains("batch");
        for (const std::string sim : {"fs9", "fsx"}) {
            if (!settings.contains(sim))
                continue;
            const bool fs9 = sim == "fs9";
            (fs9 ? input.environment.Fs9Found : input.environment.FsxFound) = true;
            for (const std::string &line : split(setting(sim)))
                if (!setting(sim).empty())
                    (fs9 ? input.environment.Fs9Airlines : input.environment.FsxAirlines)
                        .push_back(platform::fromCodePage(line));
            fs::create_directories(dir / sim / "Effects");
            (fs9 ? input.environment.Fs9EffectsFolder : input.environment.FsxEffectsFolder) =
                widePath(dir / sim / "Effects");
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

    // The report between its frame, checked here: stars, the header, stars and a blank line above; a blank
    // line and stars below. The rule, as long as half the header, becomes "{rule}".
    std::string body() const
    {
        const std::string report = readBytes(reportFile());
        const std::u16string header = reportHeaderStart() + u"Report for \"" + LCase(widePath(folder / "")) + u"\" *";
        const std::string stars = cp(reportStars(header));
        const std::string top = stars + "\r\n" + cp(header) + "\r\n" + stars + "\r\n\r\n";
        const std::string bottom = "\r\n" + stars + "\r\n";
        if (!report.starts_with(top) || !report.ends_with(bottom) || report.size() < top.size() + bottom.size()) {
            ADD_FAILURE() << "the report's frame differs:\n" << report;
            return report;
        }
        std::string text = report.substr(top.size(), report.size() - top.size() - bottom.size());
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

// What a run told besides its report: its outcome unless a report, the error flag, the options when it
// changed them, a batch's failure text, every box; or the run-time error that ended it.
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

// tests/data/validation/<case>/: input/ is the aircraft folder, around/ (if any) what stands beside it;
// result.txt and report.txt (the report's body) are what the run gives. bomRemoved= names files whose byte
// order mark the run takes off.
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
    // A report left in the aircraft folder is gone after any run.
    EXPECT_FALSE(fs::exists(run.folder / "corvanecheck.log"));
    if (!settings.contains("bomRemoved"))
        return;
    for (const std::string &name : split(settings.at("bomRemoved"))) {
        // Each mark read goes, the text moving up; the file keeps its length, its last bytes staying behind.
        const std::string before = readBytes(data / "input" / name);
        const std::string after = readBytes(run.folder / name);
        std::string text = before;
        while (text.starts_with("\xEF\xBB\xBF"))
            text.erase(0, 3);
        EXPECT_TRUE(after.starts_with(text) && after.ends_with(before.substr(before.size() - 3))) << name;
        EXPECT_EQ(after.size(), before.size()) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, ValidationGolden, ::testing::ValuesIn(goldenCases("validation")), goldenName);

TEST(ValidationReport, HeaderTimeStampAndPlace)
{
    Bench run(Settings {{"options", "1"}});
    writeBytes(run.folder / "aircraft.cfg", "[fltsim.0]\r\n");
    run.input.reportPath = widePath(run.dir / "elsewhere.log");
    EXPECT_EQ(run.run().reportPath, run.input.reportPath);
    EXPECT_NE(readBytes(run.dir / "elsewhere.log").find("\r\n[fltsim.x] sections:               1\r\n"),
              std::string::npos);
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

// Which groups a rule closes, on the clean aircraft.
TEST(ValidationReport, RulesFollowTheOptionCombinations)
{
    const struct
    {
        std::vector<int> on;
        const char *body;
    } rows[] = {
        {{0, 12}, "[fltsim.x] sections:               2|Textures found in folder:          2"},
        {{0, 12, 13},
         "[fltsim.x] sections:               2|-|Textures found in folder:          2|"
         "Texture format:                    *.bmp"},
        {{22}, "-|Empty folders found:               0"},
        {{6, 3, 4},
         "Models found in folder:            1|-|Airfiles found in folder:          1|"
         "Airfiles unused in folder:         0"},
        {{3, 9, 21},
         "Airfiles found in folder:          1|-|atc_airlines compared against:     FS9|"
         "atc_airlines found:                2|Missing effect files:              0"},
        {{11, 21, 22},
         "atc_airlines compared against:     FS9|atc_airlines unknown:              0|-|"
         "Missing effect files:              0|-|Empty folders found:               0"},
    };
    const fs::path clean = fs::path(FLEETWRIGHT_TEST_DATA_DIR) / "validation" / "clean";
    for (const auto &row : rows) {
        Bench run(readSettings(clean / "case.txt"));
        copyFolder(clean / "input", run.folder);
        run.input.AnalyzeOptionList.assign(23, u"0");
        for (int option : row.on)
            run.input.AnalyzeOptionList[static_cast<std::size_t>(option)] = u"1";
        run.run();
        std::string body;
        for (const std::string &line : split(run.body(), "\r\n"))
            if (!line.empty())
                body += (body.empty() ? "" : "|") + (line == "{rule}" ? "-" : line);
        EXPECT_EQ(body, row.body);
    }
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

} // namespace
