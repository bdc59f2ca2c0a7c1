// Every editing operation and every checker command over the hostile folders, each on a fresh copy, called
// the way the main form's handlers and the checker call them: no crash, no hang, the program's messages, and
// no byte changed outside the files the operation is there to change.
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/checkercommands.h"
#include "core/aircraftfilestore.h"
#include "core/clsinifile.h"
#include "core/errorbox.h"
#include "editing/association.h"
#include "editing/effects.h"
#include "editing/generalupdate.h"
#include "editing/keyremoval.h"
#include "editing/sectionrenumber.h"
#include "editing/sortkeys.h"
#include "editing/updateall.h"
#include "hostilefixture.h"
#include "platform/codepage.h"
#include "platform/utf8.h"
#include "simfiles/airfile.h"
#include "simfiles/modelfile.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

// What an operation leaves for the test to look at.
struct Outcome
{
    std::optional<RuntimeError> fault;
};

// An operation on the loaded folder: the main form's state after the load, and where to write.
struct Form
{
    clsIniFile &AircraftIni;
    const FolderLoadResult &loaded;
    std::u16string folder;
    Dialogs &dialogs;
};

struct Operation
{
    const char *name;
    std::vector<std::string> mayChange; // relative to the case folder
    std::function<void(Form &)> run;
};

const std::vector<std::string> CFG_AND_BACKUP = {"aircraft.cfg", "aircraft.corvane"};

GridRows gridRows(const FolderLoadResult &loaded, bool checkAll)
{
    GridRows rows;
    rows.selectedRow = 0;
    for (const GridRow &row : loaded.rows) {
        rows.texts.push_back(row[GridColumn::Section]);
        rows.titles.push_back(row[GridColumn::Title]);
        rows.checked.push_back(checkAll);
    }
    return rows;
}

const std::vector<Operation> &operations()
{
    static const std::vector<Operation> list = {
        {"FlightSimSectionRenumber", CFG_AND_BACKUP,
         [](Form &f) { FlightSimSectionRenumber(f.AircraftIni.path(), false, true, f.dialogs); }},
        {"FlightSimSectionDelete", CFG_AND_BACKUP,
         [](Form &f) { FlightSimSectionDelete(f.AircraftIni, gridRows(f.loaded, false), false, true, f.dialogs); }},
        {"FlightSimSectionDelete of every checked row", CFG_AND_BACKUP,
         [](Form &f) { FlightSimSectionDelete(f.AircraftIni, gridRows(f.loaded, true), false, true, f.dialogs); }},
        {"DoSortKeys", CFG_AND_BACKUP, [](Form &f) { DoSortKeys(f.AircraftIni, true, f.dialogs); }},
        {"RemoveMarkedKeys", CFG_AND_BACKUP,
         [](Form &f) {
             const std::vector<std::u16string> list = LoadList(f.AircraftIni);
             MakeBackup(f.AircraftIni.path(), true);
             RemoveMarkedKeys(
                 f.AircraftIni,
                 std::vector<std::u16string>(list.begin(), list.begin() + std::min<std::size_t>(2, list.size())));
         }},
        {"updateGeneralData", CFG_AND_BACKUP,
         [](Form &f) {
             GeneralUpdateInput input;
             input.rowSection = f.loaded.rows[0][GridColumn::Section];
             input.data.title = u"Hostile \u03A9";
             input.data.wingSpanNew = u"36,1";
             input.data.exits[0] = {u"0.5", u"1", u"2", u"3", u"0"};
             input.ConfirmUpdates = false;
             updateGeneralData(f.AircraftIni, input, f.dialogs);
         }},
        {"associateFiles", CFG_AND_BACKUP,
         [](Form &f) {
             AssociationInput input;
             input.rowSection = f.loaded.rows[0][GridColumn::Section];
             input.texture = f.loaded.combo_Texture.empty() ? u"" : f.loaded.combo_Texture.back();
             input.model = u"<default>";
             input.airfile = f.loaded.combo_Airfile.empty() ? u"" : f.loaded.combo_Airfile.back();
             input.ConfirmUpdates = false;
             associateFiles(f.AircraftIni, input, f.dialogs);
         }},
        {"updateAll",
         {"aircraft.cfg"},
         [](Form &f) {
             updateAll(f.AircraftIni, u"ui_manufacturer", u"Corvane", std::vector<bool>(f.loaded.rows.size()), false,
                       f.dialogs);
         }},
        {"cmd_Effect_Update", CFG_AND_BACKUP,
         [](Form &f) {
             EffectUpdateInput input;
             input.selectedPosition = 1;
             input.description = u"new description";
             input.fields.txt_effects = f.loaded.txt_effects;
             input.fields.chk_Effect = f.loaded.chk_Effect;
             EffectDefault(input.fields, 3);
             cmd_Effect_Update(f.AircraftIni, input, false, true, f.dialogs);
         }},
        {"patchAirType",
         {"hostile.air"},
         [](Form &f) {
             AirFileState state;
             state.AirFileName = f.loaded.rows[0][GridColumn::Sim];
             ReadAirFile(f.folder, state, f.dialogs);
             patchAirType(AirType::AI, state, false, f.dialogs);
         }},
        {"writeModelRadius",
         {"model/hostile.mdl"},
         [](Form &f) {
             const std::u16string model = f.loaded.rows[0][GridColumn::Model];
             const ModelConfig config = resolveModelName(f.folder, model, f.dialogs);
             if (config.missing)
                 return;
             const ModelFileReading reading = readModelFile(f.folder, model, config.modelName);
             writeModelRadius(reading.ModelFilePath, reading.RadiusOnLoad, u"77", u'.', f.dialogs);
         }},
    };
    return list;
}

struct CheckerRun
{
    int exitCode;
    std::string out;
    std::string err;
};

CheckerRun check(const std::vector<std::string> &args)
{
    std::ostringstream out;
    std::ostringstream err;
    const int exitCode = runCheckerCommand(args, out, err);
    return {exitCode, out.str(), err.str()};
}

std::string utf8(const fs::path &path)
{
    return platform::toUtf8(path.u16string());
}

} // namespace

TEST_P(Hostile, EditingOperationsChangeOnlyTheirFiles)
{
    for (const Operation &operation : operations()) {
        SCOPED_TRACE(operation.name);
        // Each operation on a copy of its own.
        TempDir fresh;
        folder = copyCase(GetParam(), fresh.path());
        library = folder.parent_path();
        before = folderState(library);
        clsIniFile AircraftIni;
        const FolderLoadResult loaded = load(AircraftIni);
        // The menus and buttons of the operations need a variation in the grid.
        if (loaded.rows.empty() || loadFault)
            continue;
        ScriptedDialogs boxes;
        Form form {AircraftIni, loaded, wideFolder(), boxes};
        Outcome outcome;
        {
            const HangGuard guard(std::string(operation.name) + " on " + GetParam());
            try {
                operation.run(form);
            } catch (const RuntimeError &error) {
                outcome.fault = error;
            }
            // The form loads the folder again after every change.
            load(AircraftIni);
        }
        std::vector<std::string> mayChange = operation.mayChange;
        if (is("ReadOnlyCfg"))
            std::erase(mayChange, "aircraft.cfg");
        expectOnlyChanged(mayChange, operation.name);
        EXPECT_FALSE(loadFault) << "the reload failed";

        // Only the whole-file rewrite behind renumbering and deleting has faults to tell here: more lines than
        // its 16-bit counter holds, and a read-only file.
        const std::string name = operation.name;
        const bool rewrites = name.starts_with("FlightSimSection");
        if (rewrites && is("HundredThousandSections")) {
            ASSERT_TRUE(outcome.fault);
            EXPECT_EQ(outcome.fault->number(), 6);
            EXPECT_EQ(outcome.fault->description(), u"Overflow");
        } else if (rewrites && is("ReadOnlyCfg")) {
            ASSERT_TRUE(outcome.fault);
            EXPECT_EQ(outcome.fault->number(), 75);
            EXPECT_EQ(outcome.fault->description(), u"Path/File access error");
        } else {
            EXPECT_FALSE(outcome.fault) << "error " << outcome.fault->number() << " "
                                        << platform::toCodePage(outcome.fault->description());
        }
        if (name == "DoSortKeys") {
            EXPECT_FALSE(outcome.fault);
            ASSERT_FALSE(boxes.records().empty());
            EXPECT_EQ(boxes.records().back().text, u"The keys in the [fltsim.x] sections have been sorted");
        }
        if (name == "patchAirType" && is("AirHugeSizes")) {
            // The walk leaves the 32-bit range: the write is refused with the program's words.
            ASSERT_FALSE(boxes.records().empty());
            EXPECT_NE(boxes.records().back().text.find(u"could not be opened for write access"), std::u16string::npos);
        }
        if (name == "writeModelRadius" && is("Mdl5Bytes")) {
            EXPECT_TRUE(boxes.records().empty()) << "a model that cannot be read offers no radius to write";
        }
    }
}

TEST_P(Hostile, CheckerCommandsChangeOnlyTheirFiles)
{
    TempDir temp;
    const std::string folderArgument = utf8(folder);
    struct Command
    {
        std::vector<std::string> args;
        std::vector<std::string> mayChange;
    };
    const std::vector<Command> commands = {
        {{"validate", folderArgument, "--fs9", "", "--fsx", "", "--options", std::string(23, '1'), "--report",
          utf8(temp / "single.log")},
         {}},
        {{"validate-all", utf8(library), "--fs9", "", "--fsx", "", "--options", std::string(23, '1'), "--report",
          utf8(temp / "all.log")},
         {}},
        {{"renumber", folderArgument}, CFG_AND_BACKUP},
        {{"sort-keys", folderArgument}, CFG_AND_BACKUP},
        {{"remove-keys", folderArgument, "title", "sim"}, CFG_AND_BACKUP},
        {{"air-type", utf8(folder / "hostile.air")}, {}},
        {{"air-type", utf8(folder / "hostile.air"), "--set", "1"}, {"hostile.air"}},
        {{"mdl-info", utf8(folder / "model" / "hostile.mdl")}, {}},
    };
    for (const Command &command : commands) {
        SCOPED_TRACE(command.args[0] + (command.args.size() > 2 ? " " + command.args[2] : std::string()));
        CheckerRun run;
        {
            const HangGuard guard("fleetwright-check " + command.args[0] + " on " + GetParam());
            run = check(command.args);
        }
        std::vector<std::string> mayChange = command.mayChange;
        if (is("ReadOnlyCfg"))
            std::erase(mayChange, "aircraft.cfg");
        expectOnlyChanged(mayChange, command.args[0]);
        before = folderState(library);
        EXPECT_TRUE(run.exitCode == CHECK_EXIT_OK || run.exitCode == CHECK_EXIT_ERRORS
                    || run.exitCode == CHECK_EXIT_NO_REPORT)
            << run.exitCode << "\n"
            << run.err;
        if (run.exitCode == CHECK_EXIT_NO_REPORT && command.args[0] != "validate-all") {
            EXPECT_FALSE(run.err.empty()) << "a command that did nothing says why";
        }
        const std::string &name = command.args[0];
        if (is("FolderNamedAircraftCfg") && (name == "renumber" || name == "sort-keys" || name == "remove-keys")) {
            EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
            EXPECT_EQ(run.err, "fleetwright-check: no aircraft.cfg in " + folderArgument + "\n");
        }
        if (is("ReadOnlyCfg") && (name == "renumber" || name == "sort-keys" || name == "remove-keys")) {
            EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
            EXPECT_NE(run.err.find("is read-only; nothing changed"), std::string::npos) << run.err;
        }
        if (is("HundredThousandSections") && name == "renumber") {
            EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
            EXPECT_NE(run.err.find("Error description: Overflow"), std::string::npos) << run.err;
        }
        if ((is("AirNegativeSizes") || is("AirTruncatedHeader") || is("AirHugeSizes")) && name == "air-type"
            && command.args.size() == 2) {
            EXPECT_EQ(run.out, utf8(folder / "hostile.air") + ": n/a, no aircraft section (105)\n");
        }
        if (is("Mdl5Bytes") && name == "mdl-info") {
            EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
            EXPECT_NE(run.err.find("could not be opened"), std::string::npos) << run.err;
        }
    }
}
