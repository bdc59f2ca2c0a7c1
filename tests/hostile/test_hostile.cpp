// Every operation over every hostile folder, each on a fresh copy in a library of its own: no crash, no hang,
// and no byte changed in the library other than the files the operation is there to change (never a read-only
// one). What each operation ends with is data: tests/data/hostile/outcomes.txt has a line "<case> <operation>
// <outcome>" wherever the outcome is not "ok". With FLEETWRIGHT_UPDATE_GOLDEN=1 a test rewrites its case's lines.
#include <algorithm>
#include <cstdlib>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/checkercommands.h"
#include "common/golden.h"
#include "common/tempdir.h"
#include "core/aircraftfilestore.h"
#include "core/clsinifile.h"
#include "core/runtimeerror.h"
#include "core/scripteddialogs.h"
#include "editing/association.h"
#include "editing/effects.h"
#include "editing/generalupdate.h"
#include "editing/keyremoval.h"
#include "editing/sectionrenumber.h"
#include "editing/sortkeys.h"
#include "editing/updateall.h"
#include "folderview/folderload.h"
#include "hostilefolders.h"
#include "platform/codepage.h"
#include "platform/utf8.h"
#include "simfiles/airfile.h"
#include "simfiles/modelfile.h"
#include "validation/batch.h"
#include "validation/checkerfeed.h"
#include "validation/validationrun.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

const fs::path TABLE = fs::path(FLEETWRIGHT_TEST_DATA_DIR) / "hostile" / "outcomes.txt";

std::string utf8(const std::u16string &text)
{
    std::string bytes;
    for (const char ch : platform::toUtf8(text))
        bytes += static_cast<unsigned char>(ch) < 0x20 ? '?' : ch;
    return bytes;
}

std::string faultText(const RuntimeError &error)
{
    return "fault " + std::to_string(error.number()) + " " + utf8(error.procedure()) + ": " + utf8(error.description());
}

// What an operation sees: a fresh copy of the case, loaded as the folder browser's change loads it.
struct Copy
{
    TempDir dir;
    fs::path folder;
    clsIniFile ini;
    FolderLoadResult loaded;
    ScriptedDialogs dialogs;

    std::u16string wide() const { return widePath(folder); }
    std::string arg(const fs::path &path = {}) const
    {
        return platform::toUtf8((path.empty() ? folder : folder / path).u16string());
    }
    std::u16string row0(std::size_t column) const { return loaded.rows.at(0)[column]; }
    // "ok", or the last box that is not plain information.
    std::string boxes() const
    {
        for (auto it = dialogs.records().rbegin(); it != dialogs.records().rend(); ++it)
            if (it->kind != DialogKind::Information)
                return dialogKindName(it->kind) + (": " + utf8(it->text));
        return "ok";
    }
    // The case folder as "{folder}", cut where the line would grow long.
    std::string outcome(std::string text) const
    {
        for (std::size_t at; (at = text.find(arg())) != std::string::npos;)
            text.replace(at, arg().size(), "{folder}");
        return text.substr(0, 100);
    }
};

std::string load(Copy &copy)
{
    FolderLoadInput input;
    input.folder = copy.wide();
    copy.loaded = {};
    try {
        readAircraftFolder(input, copy.ini, copy.loaded);
    } catch (const RuntimeError &error) {
        return faultText(error);
    }
    const auto &rows = copy.loaded.rows;
    std::string text = copy.loaded.isAircraftFolder ? "" : "no aircraft folder, ";
    text += std::to_string(rows.size()) + " rows";
    if (!rows.empty())
        text += ", last " + utf8(rows.back()[GridColumn::Section]) + " " + utf8(rows.back()[GridColumn::Title]);
    if (!copy.loaded.Descriptions.empty() && !copy.loaded.Descriptions[0].empty())
        text += ", description of " + std::to_string(copy.loaded.Descriptions[0].size());
    return text == "2 rows, last FLTSIM.1 Hostile Two" ? "ok" : text; // as the generator wrote it
}

GridRows gridRows(const FolderLoadResult &loaded, bool checkAll)
{
    GridRows rows {0, {}, {}, std::vector<bool>(loaded.rows.size(), checkAll)};
    for (const GridRow &row : loaded.rows) {
        rows.texts.push_back(row[GridColumn::Section]);
        rows.titles.push_back(row[GridColumn::Title]);
    }
    return rows;
}

std::string checker(const std::vector<std::string> &args)
{
    std::ostringstream out;
    std::ostringstream err;
    const int exit = runCheckerCommand(args, out, err);
    if (exit == CHECK_EXIT_OK || exit == CHECK_EXIT_ERRORS)
        return "ok";
    std::string text = err.str();
    EXPECT_TRUE(args[0] == "validate-all" || !text.empty()) << "a command that did nothing says why";
    std::replace(text.begin(), text.end(), '\n', ' ');
    return "exit " + std::to_string(exit) + ": " + text;
}

const std::vector<std::string> CFG = {"aircraft.cfg", "aircraft.corvane"};
const std::string ALL_OPTIONS(23, '1');

struct Operation
{
    std::string name;
    std::vector<std::string> mayChange; // relative to the case folder
    std::function<std::string(Copy &)> run;
    bool needsRows = true; // its menu or button needs a variation in the grid
};

// The operations, called as the main form's handlers and the checker call them.
const std::vector<Operation> OPERATIONS = {
    {"load", {}, [](Copy &c) { return load(c); }, false},
    {"open",
     {},
     [](Copy &c) {
         // ListView1_DblClick's reads of the first row.
         AirFileState state;
         state.AirFileName = c.row0(GridColumn::Sim);
         const AirFileOutcome air = ReadAirFile(c.wide(), state, c.dialogs).outcome;
         const ModelConfig config = resolveModelName(c.wide(), c.row0(GridColumn::Model), c.dialogs);
         std::string text = std::vector<std::string> {"no air file, ", "", "no aircraft section, ", "air failed, "}.at(
             static_cast<int>(air));
         if (config.missing)
             return text + "no " + utf8(config.path.substr(c.wide().size() + 1));
         const ModelFileReading model = readModelFile(c.wide(), c.row0(GridColumn::Model), config.modelName);
         if (model.outcome == ModelFileOutcome::Failed)
             return text
                 + (model.failureMessage == modelFileReadFailureText(model.ModelFilePath) ? "model unreadable" : "?");
         if (model.outcome == ModelFileOutcome::Missing)
             return text + "model missing";
         return text
             + (model.versionText == u"FS8/9" && model.radiusText == u"7" ? "ok" : "model " + utf8(model.versionText));
     }},
    {"validate",
     {},
     [](Copy &c) {
         TempDir temp;
         ValidationInput input;
         input.folder = c.wide();
         input.AnalyzeOptionList.assign(23, u"1");
         input.environment.Fs9Found = true;
         input.environment.Fs9Airlines = {u"[airlines]", u"KLM"};
         input.environment.Fs9EffectsFolder = widePath(temp / "Effects");
         writeBytes(temp / "Effects" / "fx_wake.fx", "fx");
         input.environment.TempFolder = widePath(temp.path() / "");
         NeverAskDialogs quiet;
         const ValidationFeed feed = feedValidationFromFolder(c.wide(), c.ini, quiet);
         input.gridRowCount = feed.gridRowCount;
         input.textureFormatText = feed.textureFormatText;
         const ValidationResult result = runValidation(input, c.ini, c.dialogs);
         if (result.outcome != ValidationOutcome::ReportWritten)
             return std::vector<std::string> {"", "refused", "cancelled", "nothing to report"}.at(
                        static_cast<int>(result.outcome))
                 + ", " + c.boxes();
         return readBytes(fs::path(result.reportPath)).empty() ? std::string("empty report") : "ok";
     },
     false},
    {"batch",
     {},
     [](Copy &c) {
         TempDir temp;
         BatchInput input;
         input.BatchRoot = widePath(c.folder.parent_path());
         input.AnalyzeOptionList.assign(23, u"1");
         input.environment.TempFolder = widePath(temp.path() / "");
         NeverAskDialogs quiet;
         const BatchResult result = runBatchValidation(input, c.ini, quiet);
         EXPECT_NE(readBytes(fs::path(result.reportPath)).find("Validate all aircraft below folder : "),
                   std::string::npos);
         if (result.folders.size() != 1 || !result.skippedErrors.empty())
             return std::string("folders not one each");
         const BatchFolder &done = result.folders[0];
         return done.outcome == BatchFolderOutcome::Reported && done.inReport
             ? "ok"
             : std::vector<std::string> {"", "refused", "no report", "run failed"}.at(static_cast<int>(done.outcome));
     },
     false},
    {"renumber", CFG,
     [](Copy &c) {
         FlightSimSectionRenumber(c.ini.path(), false, true, c.dialogs);
         return c.boxes();
     }},
    {"delete", CFG,
     [](Copy &c) {
         FlightSimSectionDelete(c.ini, gridRows(c.loaded, false), false, true, c.dialogs);
         return c.boxes();
     }},
    {"sort", CFG,
     [](Copy &c) {
         DoSortKeys(c.ini, true, c.dialogs);
         return c.boxes();
     }},
    {"remove-keys", CFG,
     [](Copy &c) {
         const std::vector<std::u16string> keys = LoadList(c.ini);
         MakeBackup(c.ini.path(), true);
         RemoveMarkedKeys(c.ini, {keys.begin(), keys.begin() + std::min<std::size_t>(2, keys.size())});
         return c.boxes();
     }},
    {"general", CFG,
     [](Copy &c) {
         GeneralUpdateInput input;
         input.rowSection = c.row0(GridColumn::Section);
         input.data.title = u"Hostile \u03A9";
         input.data.wingSpanNew = u"36,1";
         input.data.exits[0] = {u"0.5", u"1", u"2", u"3", u"0"};
         input.ConfirmUpdates = false;
         updateGeneralData(c.ini, input, c.dialogs);
         return c.boxes();
     }},
    {"associate", CFG,
     [](Copy &c) {
         const auto last = [](const std::vector<std::u16string> &items) { return items.empty() ? u"" : items.back(); };
         associateFiles(c.ini,
                        {c.row0(GridColumn::Section), last(c.loaded.combo_Texture), u"<default>",
                         last(c.loaded.combo_Airfile), false},
                        c.dialogs);
         return c.boxes();
     }},
    {"update-all",
     {"aircraft.cfg"},
     [](Copy &c) {
         updateAll(c.ini, u"ui_manufacturer", u"Corvane", std::vector<bool>(c.loaded.rows.size()), false, c.dialogs);
         return c.boxes();
     }},
    {"effects", CFG,
     [](Copy &c) {
         EffectUpdateInput input {1, u"new description", u"", {c.loaded.txt_effects, c.loaded.chk_Effect}};
         EffectDefault(input.fields, 3);
         cmd_Effect_Update(c.ini, input, false, true, c.dialogs);
         return c.boxes();
     }},
    {"air-type",
     {"hostile.air"},
     [](Copy &c) {
         AirFileState state;
         state.AirFileName = c.row0(GridColumn::Sim);
         ReadAirFile(c.wide(), state, c.dialogs);
         patchAirType(AirType::AI, state, false, c.dialogs);
         return c.boxes();
     }},
    {"radius",
     {"model/hostile.mdl"},
     [](Copy &c) {
         const ModelConfig config = resolveModelName(c.wide(), c.row0(GridColumn::Model), c.dialogs);
         if (!config.missing) {
             const ModelFileReading reading = readModelFile(c.wide(), c.row0(GridColumn::Model), config.modelName);
             writeModelRadius(reading.ModelFilePath, reading.RadiusOnLoad, u"77", u'.', c.dialogs);
         }
         return c.boxes();
     }},
    {"check-validate",
     {},
     [](Copy &c) {
         return checker({"validate", c.arg(), "--fs9", "", "--fsx", "", "--options", ALL_OPTIONS, "--report",
                         c.arg("../../single.log")});
     },
     false},
    {"check-validate-all",
     {},
     [](Copy &c) {
         return checker({"validate-all", c.arg(".."), "--fs9", "", "--fsx", "", "--options", ALL_OPTIONS, "--report",
                         c.arg("../../all.log")});
     },
     false},
    {"check-renumber", CFG,
     [](Copy &c) {
         return checker({"renumber", c.arg()});
     },
     false},
    {"check-sort-keys", CFG,
     [](Copy &c) {
         return checker({"sort-keys", c.arg()});
     },
     false},
    {"check-remove-keys", CFG,
     [](Copy &c) {
         return checker({"remove-keys", c.arg(), "title", "sim"});
     },
     false},
    {"check-air-type-set",
     {"hostile.air"},
     [](Copy &c) {
         return checker({"air-type", c.arg("hostile.air"), "--set", "1"});
     },
     false},
    {"check-mdl-info",
     {},
     [](Copy &c) {
         return checker({"mdl-info", c.arg("model/hostile.mdl")});
     },
     false},
};

} // namespace

void PrintTo(const HostileCase &hostile, std::ostream *out)
{
    *out << hostile.name;
}

namespace {

class Hostile : public ::testing::TestWithParam<HostileCase>
{};

TEST_P(Hostile, EveryOperationChangesOnlyItsFilesAndEndsAsTheTableSays)
{
    const std::string name = GetParam().name;
#ifdef _WIN32
    if (GetParam().needsSymbolicLinks || GetParam().needsLongPaths)
        GTEST_SKIP() << "symbolic links and paths this deep need an administrator or a setting on Windows";
#endif
    std::map<std::string, std::string> expected;
    std::vector<std::string> table; // the other cases' lines
    std::istringstream lines(readBytes(TABLE));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t space = line.find(' ', name.size() + 1);
        if (line.starts_with(name + " "))
            expected[line.substr(name.size() + 1, space - name.size() - 1)] = line.substr(space + 1);
        else
            table.push_back(line);
    }
    std::vector<std::string> found;
    const bool update =
        std::getenv("FLEETWRIGHT_UPDATE_GOLDEN") && std::string(std::getenv("FLEETWRIGHT_UPDATE_GOLDEN")) == "1";

    for (const Operation &operation : OPERATIONS) {
        SCOPED_TRACE(operation.name);
        Copy copy;
        copy.folder = copyCase(name, copy.dir.path());
        const fs::path library = copy.folder.parent_path();
        const FolderState before = folderState(library);
        std::string outcome;
        {
            const HangGuard guard(operation.name + " on " + name);
            load(copy);
            if (operation.needsRows && copy.loaded.rows.empty())
                continue;
            try {
                outcome = operation.run(copy);
            } catch (const RuntimeError &error) {
                outcome = faultText(error);
            }
            if (operation.needsRows) { // the form loads the folder again after every change
                EXPECT_FALSE(load(copy).starts_with("fault")) << "the reload failed";
            }
        }
        for (const std::string &entry : changedEntries(before, folderState(library))) {
            const std::string relative = entry.substr(std::min(entry.size(), name.size() + 1));
            const bool allowed = std::find(operation.mayChange.begin(), operation.mayChange.end(), relative)
                != operation.mayChange.end();
            const bool readOnly = before.contains(entry) && before.at(entry).starts_with("read-only");
            EXPECT_TRUE(allowed && !readOnly) << operation.name << " changed " << entry;
        }
        outcome = copy.outcome(outcome);
        if (outcome != "ok")
            found.push_back(name + " " + operation.name + " " + outcome);
        if (!update) {
            EXPECT_EQ(outcome, expected.contains(operation.name) ? expected[operation.name] : "ok");
        }
        expected.erase(operation.name);
    }
    EXPECT_TRUE(update || expected.empty()) << expected.begin()->first << " is no operation that ran";
    if (update) {
        table.insert(table.end(), found.begin(), found.end());
        std::sort(
            std::find_if(table.begin(), table.end(), [](const std::string &line) { return !line.starts_with("#"); }),
            table.end());
        std::string text;
        for (const std::string &line : table)
            text += line + "\n";
        writeBytes(TABLE, text);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, Hostile, ::testing::ValuesIn(hostileCases()),
                         [](const ::testing::TestParamInfo<HostileCase> &info) { return info.param.name; });

} // namespace

#ifndef _WIN32
// The batch counts its folders in 16 bits: a root with more folders than that is refused before any run.
TEST(HostileLibrary, BatchRefusesMoreFoldersThanItsCounterHolds)
{
    TempDir temp;
    for (int i = 0; i <= 32767; ++i)
        fs::create_directories(temp / "library" / std::to_string(i));
    const FolderState before = folderState(temp.path());
    BatchInput input;
    input.BatchRoot = widePath(temp / "library");
    input.AnalyzeOptionList.assign(23, u"1");
    input.environment.TempFolder = widePath(temp / "tmp" / "");
    clsIniFile ini;
    NeverAskDialogs quiet;
    const HangGuard guard("the batch over 32768 folders");
    try {
        runBatchValidation(input, ini, quiet);
        ADD_FAILURE() << "32768 folders fit the counter";
    } catch (const RuntimeError &error) {
        EXPECT_EQ(faultText(error), "fault 6 cmdStart_Click: Overflow");
    }
    EXPECT_TRUE(changedEntries(before, folderState(temp.path())).empty());
}
#endif
