// Every operation over every hostile folder, each on a fresh copy in a library of its own: no crash, no hang,
// no byte changed in the library but the files the operation is there to change (never a read-only one), and
// tests/data/hostile/<case>.txt has a line "<operation> <outcome>" wherever the outcome is not "ok".
#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/checkercommands.h"
#include "common/aircraftfolder.h"
#include "common/airfilebuilder.h"
#include "common/golden.h"
#include "common/scripteddialogs.h"
#include "common/tempdir.h"
#include "core/aircraftfilestore.h"
#include "core/clsinifile.h"
#include "core/runtimeerror.h"
#include "editing/association.h"
#include "editing/effects.h"
#include "editing/generalupdate.h"
#include "editing/keyremoval.h"
#include "editing/sectionrenumber.h"
#include "editing/sortkeys.h"
#include "editing/updateall.h"
#include "folderview/folderload.h"
#include "platform/codepage.h"
#include "platform/utf8.h"
#include "simfiles/airfile.h"
#include "simfiles/modelfile.h"
#include "validation/batch.h"
#include "validation/checkerfeed.h"
#include "validation/validationrun.h"

using namespace fleetwright;
using namespace fleetwright::test;
using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

const std::string HEADER = AirFileBuilder().record(1, 4, "DR10").bytes();

// Two variations on the default model and two textures, with effects, general data and a wing span.
const std::string ORDINARY =
    crlf("[fltsim.0]\ntitle=Hostile One\nsim=hostile\nmodel=\ntexture=\natc_airline=KLM\n"
         "[fltsim.1]\ntitle=Hostile Two\nsim=hostile\nmodel=\ntexture=red\n"
         "[effects]\nwake=fx_wake, 1\n[general]\natc_type=HOSTILE\n"
         "[airplane_geometry]\nwing_span=35.8\n[exits]\nexit.0=0.4, 12, -3, 4, 0  //Door 1L\n");

// Beside the hostile part each case holds a usable model, texture and air file, so operations get as far as it.
void writeAircraft(const fs::path &folder)
{
    writeBytes(folder / "model" / "model.cfg", crlf("[models]\nnormal=hostile\n"));
    writeBytes(folder / "model" / "hostile.mdl", modelBytes("MDL9"));
    writeBytes(folder / "texture" / "skin.bmp", "bmp");
    writeBytes(folder / "texture.red" / "skin.bmp", "bmp");
    writeBytes(folder / "hostile.air", AirFileBuilder().raw(HEADER).aircraft(0).bytes());
    if (!fs::exists(folder / "aircraft.cfg"))
        writeBytes(folder / "aircraft.cfg", ORDINARY);
}

// The ordinary file with a description of letters beyond the code page's.
std::string described()
{
    std::string text = ORDINARY;
    return text.insert(text.find("\r\n"), "\r\ndescription=" + platform::toUtf8(u"\u03A9 and \u65E5\u672C"));
}

std::string utf16()
{
    std::string bytes;
    for (const char16_t ch : u"\xFEFF" + platform::fromUtf8(described()))
        bytes += std::string {char(ch & 0xFF), char(ch >> 8)};
    return bytes;
}

std::string repeated(const std::string &text, int times)
{
    return times == 0 ? "" : text + repeated(text, times - 1);
}

std::string replaced(std::string text, const std::string &from, const std::string &to)
{
    return text.replace(text.find(from), from.size(), to);
}

// A 20 MB line, then more sections than the grid takes and than a 16-bit counter renumbers.
std::string huge()
{
    std::string text =
        replaced(ORDINARY, "title=Hostile One", "description=" + std::string(20 << 20, 'x') + "\r\ntitle=Hostile One");
    for (int i = 2; i < 100000; ++i)
        text += "[fltsim." + std::to_string(i) + "]\r\ntitle=Variation " + std::to_string(i) + "\r\nsim=hostile\r\n";
    return text;
}

using Make = std::function<void(const fs::path &)>;

// The ordinary aircraft, then the files given (bytes), then what more is done.
Make with(std::vector<std::pair<fs::path, std::string>> files, std::function<void(const fs::path &)> more = {})
{
    return [files, more](const fs::path &f) {
        writeAircraft(f);
        for (const auto &[name, bytes] : files)
            writeBytes(f / name, bytes);
        if (more)
            more(f);
    };
}

const std::vector<std::pair<std::string, Make>> CASES = {
    {"Ordinary", with({})},
    {"BinaryGarbageCfg",
     with({{"aircraft.cfg",
            [] {
                std::mt19937 random(20261123);
                std::string bytes;
                for (int i = 0; i < 1 << 16; ++i)
                    bytes += static_cast<char>(random());
                return bytes;
            }()}})},
    {"HugeCfg", with({{"aircraft.cfg", huge()}})},
    // Headers without "]", NULs in names and values, lone CR and LF line ends.
    {"BrokenCfg",
     with({{"aircraft.cfg",
            "[fltsim.0\r\ntitle=Broken\r\nsim=hostile\r\n[fltsim.1]\rti\0tle=Whole\rmodel=\n[general\natc_type=x\n"
            "[\r\n]\r\n[[fltsim.2]\r\ntitle=[x\r\n[flt\0sim.3]\r\ntitle=\0\r\n[fltsim.4\0]\r\ntex\0ture=red\r\n"
            "\0\0\0\r\n[\0]\r\n=\0\r\n"s}})},
    {"Utf16WithMark", with({{"aircraft.cfg", utf16()}})},
    {"Utf8WithMark", with({{"aircraft.cfg", "\xEF\xBB\xBF" + described()}})},
    // The aircraft record's next offset leaves the 32-bit range; the model file is 5 bytes.
    {"BinaryFiles",
     with({{"hostile.air", AirFileBuilder().raw(HEADER).record(2, 0x7FFFFFFF, "").aircraft(1).bytes()},
           {"model/hostile.mdl", "MDL9x"}})},
    {"TextureCfg2Bytes",
     with({{"texture.red/texture.cfg", "[f"}}, [](const fs::path &f) { fs::remove(f / "texture.red/skin.bmp"); })},
    {"FallbackWithoutDotDot",
     with({{"aircraft.cfg", ORDINARY + crlf("[fltsim.2]\ntitle=Hostile Three\nsim=hostile\nmodel=\ntexture=deep\n")},
           {"texture.red/texture.cfg", crlf("[fltsim]\nfallback.1=texture\n")},
           {"texture.deep/texture.cfg", crlf("[fltsim]\nfallback.1=" + repeated("..\\", 40) + "texture\n")}},
          [](const fs::path &f) { fs::remove(f / "texture.red/skin.bmp"); })},
    {"AliasOutsideLibrary",
     with({{"aircraft.cfg",
            replaced(replaced(ORDINARY, "model=\r\ntexture=red", "model=alias\r\ntexture=red"), "model=\r\n",
                     "model=rooted\r\n")},
           {"model.alias/model.cfg", crlf("[fltsim]\nalias=" + repeated("..\\", 8) + "elsewhere\\model\n")},
           {"model.rooted/model.cfg", crlf("[fltsim]\nalias=C:\\Windows\\System32\n")}})},
    {"ReadOnlyCfg",
     with({},
          [](const fs::path &f) {
              fs::permissions(f / "aircraft.cfg",
                              fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                              fs::perm_options::remove);
          })},
    {"FolderNamedAircraftCfg",
     [](const fs::path &f) {
         writeBytes(f / "aircraft.cfg" / "aircraft.cfg", ORDINARY);
         writeAircraft(f);
     }},
#ifndef _WIN32 // links need an administrator there, and paths this deep a setting
    {"Nesting200Deep",
     with({{fs::path("texture") / repeated("d/", 200) / "skin.bmp", "bmp"}},
          [](const fs::path &f) { fs::create_directories(f / "texture" / repeated("d/", 201)); })},
    {"SymbolicLinkLoop",
     with({},
          [](const fs::path &f) {
              fs::create_directory_symlink("..", f / "texture.red" / "up");
              fs::create_directory_symlink(".", f / "model" / "self");
              fs::create_directories(f / "empty");
              fs::create_directory_symlink("..", f / "empty" / "back");
          })},
#endif
    // The code page lacks these letters: the file holds "?" where the folders' names have them.
    {"NamesOutsideCodePage",
     with({{"aircraft.cfg",
            replaced(replaced(ORDINARY, "texture=red", platform::toCodePage(u"texture=\u65E5\u672C")), "model=\r\n",
                     platform::toCodePage(u"model=\u03A9\r\n"))},
           {fs::path(u"texture.\u65E5\u672C") / "skin.bmp", "bmp"},
           {fs::path(u"model.\u03A9") / "model.cfg", crlf("[models]\nnormal=hostile\n")},
           {fs::path(u"\u03A9mega.air"), AirFileBuilder().aircraft(2).bytes()}},
          [](const fs::path &f) { fs::create_directories(f / fs::path(u"\u0416")); })},
};

// A copy of the case folder, links as links, as target/library/<case>; each case is made once per program.
fs::path copyCase(const std::string &name, const Make &make, const fs::path &target)
{
    static TempDir made;
    static std::set<std::string> done;
    const fs::path original = made / "library" / name;
    if (done.insert(name).second)
        make(original);
    const fs::path copy = target / "library" / name;
    fs::create_directories(copy.parent_path());
    fs::copy(original, copy, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    return copy;
}

// Every entry below a folder: a file's write permission and hash, a folder's mark, a link's target.
using FolderState = std::map<std::string, std::string>;
FolderState folderState(const fs::path &folder)
{
    FolderState state;
    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(folder, error); !error && it != fs::end(it); it.increment(error)) {
        const fs::file_status status = it->symlink_status();
        std::string &entry = state[it->path().lexically_relative(folder).generic_string()];
        if (fs::is_symlink(status))
            entry = "link " + fs::read_symlink(it->path()).generic_string();
        else if (fs::is_directory(status))
            entry = "folder";
        else
            entry = ((status.permissions() & fs::perms::owner_write) != fs::perms::none ? "file " : "read-only ")
                + std::to_string(std::hash<std::string>()(readBytes(it->path())));
    }
    return state;
}

// Entries that differ, appeared or went (a changed one twice).
std::vector<std::pair<std::string, std::string>> changedEntries(const FolderState &before, const FolderState &after)
{
    std::vector<std::pair<std::string, std::string>> changed;
    std::set_symmetric_difference(before.begin(), before.end(), after.begin(), after.end(),
                                  std::back_inserter(changed));
    return changed;
}

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
    std::string arg() const { return platform::toUtf8(folder.u16string()); }
    std::u16string row0(std::size_t column) const { return loaded.rows.at(0)[column]; }
    // "ok", or the last box that is not plain information.
    std::string boxes() const
    {
        for (auto it = dialogs.records().rbegin(); it != dialogs.records().rend(); ++it)
            if (it->kind != DialogKind::Information)
                return dialogKindName(it->kind) + (": " + utf8(it->text));
        return "ok";
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

const std::vector<std::string> CFG = {"aircraft.cfg", "aircraft.corvane"};

struct Operation
{
    std::string name;
    std::vector<std::string> mayChange; // relative to the case folder
    std::function<std::string(Copy &)> run;
    bool needsRows = true; // its menu or button needs a variation in the grid
};

// Checker commands run one after the other on one copy, "{}" standing for the case folder; each that did not
// end as checked ("ok" or errors found) gives a line.
Operation checker(const std::string &name, std::vector<std::string> mayChange,
                  const std::vector<std::vector<std::string>> &commands)
{
    return {name, std::move(mayChange),
            [commands](Copy &c) {
                std::string lines;
                for (std::vector<std::string> args : commands) {
                    for (std::string &arg : args)
                        arg = arg.starts_with("{}") ? c.arg() + arg.substr(2) : arg;
                    std::ostringstream out, err;
                    const int exit = runCheckerCommand(args, out, err);
                    if (exit == CHECK_EXIT_OK || exit == CHECK_EXIT_ERRORS)
                        continue;
                    std::string text = err.str();
                    EXPECT_TRUE(args[0] == "validate-all" || !text.empty()) << "a command that did nothing says why";
                    std::replace(text.begin(), text.end(), '\n', ' ');
                    lines += (lines.empty() ? "" : "\n") + args[0] + " exit " + std::to_string(exit) + ": " + text;
                }
                return lines.empty() ? "ok"s : lines;
            },
            false};
}

// An editing operation: its outcome is the boxes it showed.
Operation edit(const std::string &name, std::vector<std::string> mayChange, std::function<void(Copy &)> change)
{
    return {name, std::move(mayChange), [change](Copy &c) {
                change(c);
                return c.boxes();
            }};
}

const std::string OPTIONS(23, '1');

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
         return readBytes(fs::path(result.reportPath)).empty() ? "empty report"s : "ok"s;
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
             return "folders not one each"s;
         const BatchFolder &done = result.folders[0];
         return done.outcome == BatchFolderOutcome::Reported && done.inReport
             ? "ok"
             : std::vector<std::string> {"", "refused", "no report", "run failed"}.at(static_cast<int>(done.outcome));
     },
     false},
    edit("renumber", CFG, [](Copy &c) { FlightSimSectionRenumber(c.ini.path(), false, true, c.dialogs); }),
    edit("delete", CFG,
         [](Copy &c) {
             GridRows rows {0, {}, {}, std::vector<bool>(c.loaded.rows.size())};
             for (const GridRow &row : c.loaded.rows) {
                 rows.texts.push_back(row[GridColumn::Section]);
                 rows.titles.push_back(row[GridColumn::Title]);
             }
             FlightSimSectionDelete(c.ini, rows, false, true, c.dialogs);
         }),
    edit("sort", CFG, [](Copy &c) { DoSortKeys(c.ini, true, c.dialogs); }),
    edit("remove-keys", CFG,
         [](Copy &c) {
             const std::vector<std::u16string> keys = LoadList(c.ini);
             MakeBackup(c.ini.path(), true);
             RemoveMarkedKeys(c.ini, {keys.begin(), keys.begin() + std::min<std::size_t>(2, keys.size())});
         }),
    edit("general", CFG,
         [](Copy &c) {
             GeneralUpdateInput input;
             input.rowSection = c.row0(GridColumn::Section);
             input.data.title = u"Hostile \u03A9";
             input.data.wingSpanNew = u"36,1";
             input.data.exits[0] = {u"0.5", u"1", u"2", u"3", u"0"};
             input.ConfirmUpdates = false;
             updateGeneralData(c.ini, input, c.dialogs);
         }),
    edit("associate", CFG,
         [](Copy &c) {
             const auto last = [](const std::vector<std::u16string> &items) {
                 return items.empty() ? u"" : items.back();
             };
             associateFiles(c.ini,
                            {c.row0(GridColumn::Section), last(c.loaded.textureChoices), u"<default>",
                             last(c.loaded.airFileChoices), false},
                            c.dialogs);
         }),
    edit("update-all", {"aircraft.cfg"},
         [](Copy &c) {
             updateAll(c.ini, u"ui_manufacturer", u"Corvane", std::vector<bool>(c.loaded.rows.size()), false,
                       c.dialogs);
         }),
    edit("effects", CFG,
         [](Copy &c) {
             EffectUpdateInput input {1, u"new description", u"", {c.loaded.effectNames, c.loaded.effectRunsOnce}};
             EffectDefault(input.fields, 3);
             cmd_Effect_Update(c.ini, input, false, true, c.dialogs);
         }),
    edit("air-type", {"hostile.air"},
         [](Copy &c) {
             AirFileState state;
             state.AirFileName = c.row0(GridColumn::Sim);
             ReadAirFile(c.wide(), state, c.dialogs);
             patchAirType(AirType::AI, state, false, c.dialogs);
         }),
    edit("radius", {"model/hostile.mdl"},
         [](Copy &c) {
             const ModelConfig config = resolveModelName(c.wide(), c.row0(GridColumn::Model), c.dialogs);
             if (!config.missing) {
                 const ModelFileReading reading = readModelFile(c.wide(), c.row0(GridColumn::Model), config.modelName);
                 writeModelRadius(reading.ModelFilePath, reading.RadiusOnLoad, u"77", u'.', c.dialogs);
             }
         }),
    checker("check-validate", {},
            {{"validate", "{}", "--fs9", "", "--fsx", "", "--options", OPTIONS, "--report", "{}/../../single.log"},
             {"validate-all", "{}/..", "--fs9", "", "--fsx", "", "--options", OPTIONS, "--report", "{}/../../all.log"},
             {"mdl-info", "{}/model/hostile.mdl"}}),
    checker("check-edit", {"aircraft.cfg", "aircraft.corvane", "hostile.air"},
            {{"renumber", "{}"},
             {"sort-keys", "{}"},
             {"remove-keys", "{}", "title", "sim"},
             {"air-type", "{}/hostile.air", "--set", "1"}}),
};

class Hostile : public ::testing::TestWithParam<std::size_t>
{};

TEST_P(Hostile, EveryOperationChangesOnlyItsFilesAndEndsAsTheTableSays)
{
    const auto &[name, make] = CASES[GetParam()];
    std::string outcomes;
    for (const Operation &operation : OPERATIONS) {
        SCOPED_TRACE(operation.name);
        Copy copy;
        copy.folder = copyCase(name, make, copy.dir.path());
        const FolderState before = folderState(copy.folder.parent_path());
        std::string outcome;
        load(copy);
        if (operation.needsRows && copy.loaded.rows.empty())
            continue;
        try {
            outcome = operation.run(copy);
        } catch (const RuntimeError &error) {
            outcome = faultText(error);
        }
        // The form loads the folder again after every change.
        EXPECT_TRUE(!operation.needsRows || !load(copy).starts_with("fault")) << "the reload failed";
        for (const auto &[entry, state] : changedEntries(before, folderState(copy.folder.parent_path()))) {
            const std::string relative = entry.substr(std::min(entry.size(), name.size() + 1));
            const bool allowed = std::ranges::find(operation.mayChange, relative) != operation.mayChange.end();
            EXPECT_TRUE(allowed && !(before.contains(entry) && before.at(entry).starts_with("read-only")))
                << operation.name << " changed " << entry;
        }
        for (std::size_t at; (at = outcome.find(copy.arg())) != std::string::npos;)
            outcome.replace(at, copy.arg().size(), "{folder}");
        std::istringstream lines(outcome == "ok" ? "" : outcome);
        for (std::string line; std::getline(lines, line);)
            outcomes += operation.name + " " + line.substr(0, 100) + "\n";
    }
#ifdef _WIN32
    std::ranges::replace(outcomes, '\\', '/'); // the cases' paths, written with the native separator
#endif
    expectGolden(outcomes, fs::path(FLEETWRIGHT_TEST_DATA_DIR) / "hostile" / (name + ".txt"));
}

INSTANTIATE_TEST_SUITE_P(Cases, Hostile, ::testing::Range<std::size_t>(0, CASES.size()),
                         [](const ::testing::TestParamInfo<std::size_t> &info) { return CASES[info.param].first; });

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
    try {
        runBatchValidation(input, ini, quiet);
        ADD_FAILURE() << "32768 folders fit the counter";
    } catch (const RuntimeError &error) {
        EXPECT_EQ(faultText(error), "fault 6 cmdStart_Click: Overflow");
    }
    EXPECT_TRUE(changedEntries(before, folderState(temp.path())).empty());
}
#endif

} // namespace
