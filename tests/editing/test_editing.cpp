// Golden cases of the editing operations: tests/data/editing/<case>/ holds input/aircraft.cfg (or "input=" in
// case.txt names the case whose input it takes), case.txt with the steps ("op=", run in order on one
// clsIniFile) and their settings, the expected aircraft.cfg (none when the file stays as it was), and
// messages.txt: the boxes shown, each step's result, a fault, and "backup" when aircraft.corvane was left.
// Scripted answers ("answers=") turn the confirmation on.
#include <array>
#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/aircraftfolder.h"
#include "common/golden.h"
#include "common/tempdir.h"
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
#include "platform/fileio.h"
#include "platform/utf8.h"
#include "simfiles/modelfile.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

const fs::path CASES = fs::path(FLEETWRIGHT_TEST_DATA_DIR) / "editing";

std::vector<std::u16string> list(const std::string &text)
{
    std::vector<std::u16string> items;
    for (std::size_t start = 0, end = 0; start < text.size(); start = end + 1) {
        end = std::min(text.find(',', start), text.size());
        items.push_back(platform::fromUtf8(text.substr(start, end - start)));
    }
    return items;
}

struct Edit
{
    std::map<std::string, std::string> settings;
    fs::path file;
    clsIniFile ini;
    ScriptedDialogs dialogs;

    std::string get(const std::string &key) const { return settings.contains(key) ? settings.at(key) : ""; }
    std::u16string text(const std::string &key) const { return platform::fromUtf8(get(key)); }
    bool backup() const { return get("backup") == "1"; }
    bool confirm() const { return settings.contains("answers"); }
    // "row=" with nothing: no row selected.
    std::optional<std::u16string> row() const
    {
        return !settings.contains("row") ? u"FLTSIM.0" : get("row").empty() ? std::nullopt : std::optional(text("row"));
    }
};

std::string said(bool value)
{
    return value ? "-> true" : "-> false";
}

const std::array<std::array<std::u16string, 5>, 3> EXITS = {
    {{u"1,5", u"62", u"-2", u"6.7", u"0"}, {u"0.4", u"21", u"2", u"6.7", u"1"}, {u"0.4", u"", u"3", u"6.7", u"2"}}};

// The boxes of the general tab; the grid row's ATC sub-items beside them.
GeneralUpdateInput generalInput(const Edit &edit)
{
    GeneralUpdateInput input;
    input.rowSection = edit.row();
    input.data = {u"New title", u"GATE,RAMP", u"SKY", u"Corvane", u"Airliner", u"Skyworks",
                  u"Skyliner",  u"",          u"N2",  u"12",      u"Sky",      u"SK20",
                  true,         u"",          EXITS,  u"SK20",    u"SKYWORKS"};
    input.data.atcHeavy = edit.get("heavy") != "0";
    input.data.wingSpanNew = edit.text("span");
    input.rowAtc = atcBoxesOfRow(u"N1", u"", u"", u"1 // heavy", u"");
    input.ExitNote0 = u"//Main door";
    input.ExitNote1 = u"//Cargo";
    input.ConfirmUpdates = edit.confirm();
    input.AutoBackupOn = edit.backup();
    return input;
}

// The defaults in every box, then water disabled, dirt once, concrete empty and once.
EffectFields effectFields()
{
    EffectFields fields;
    for (int k = 0; k < static_cast<int>(EFFECT_COUNT); ++k)
        EffectDefault(fields, k);
    fields.txt_effects[1] = fields.txt_effects[3] = u"";
    fields.chk_Effect[2] = fields.chk_Effect[3] = true;
    return fields;
}

// Each step gives its result line, or nothing.
const std::map<std::string, std::function<std::string(Edit &)>> STEPS = {
    {"renumber",
     [](Edit &e) { return said(FlightSimSectionRenumber(widePath(e.file), e.confirm(), e.backup(), e.dialogs)); }},
    {"delete",
     [](Edit &e) {
         // Every delete input has three variations, titled A, B and C.
         GridRows grid {
             std::nullopt, {u"FLTSIM.0", u"FLTSIM.1", u"FLTSIM.2"}, {u"A", u"B", u"C"}, {false, false, false}};
         for (std::size_t i = 0; i < e.get("checked").size(); ++i)
             grid.checked[i] = e.get("checked")[i] == '1';
         if (e.settings.contains("selected"))
             grid.selectedRow = std::stoul(e.get("selected"));
         return said(FlightSimSectionDelete(e.ini, grid, e.confirm(), e.backup(), e.dialogs));
     }},
    {"sort", [](Edit &e) { return DoSortKeys(e.ini, e.backup(), e.dialogs), std::string(); }},
    {"remove-keys",
     [](Edit &e) {
         std::string keys = "keys:";
         for (const std::u16string &key : LoadList(e.ini))
             keys += " " + platform::toUtf8(key);
         return keys + "\n" + platform::toUtf8(wipeReport(RemoveMarkedKeys(e.ini, list(e.get("keys")))));
     }},
    {"effects",
     [](Edit &e) {
         EffectUpdateInput input {std::nullopt, e.text("description"), e.text("onload"), effectFields()};
         if (e.settings.contains("position"))
             input.selectedPosition = std::stoi(e.get("position"));
         return said(cmd_Effect_Update(e.ini, input, e.confirm(), e.backup(), e.dialogs));
     }},
    {"general",
     [](Edit &e) {
         const GeneralUpdateResult result = updateGeneralData(e.ini, generalInput(e), e.dialogs);
         const std::string outcome[] = {"-> declined", "-> written", "-> failed"};
         const auto &atc = result.atcBoxes;
         return outcome[static_cast<int>(result.outcome)]
             + (atc ? ", ATC boxes " + platform::toUtf8(atc->atcId) + (atc->atcHeavy ? " heavy" : "") : "");
     }},
    {"associate",
     [](Edit &e) {
         return said(associateFiles(
             e.ini, {e.row(), e.text("texture"), e.text("model"), e.text("air"), e.confirm(), e.backup()}, e.dialogs));
     }},
    {"update-all",
     [](Edit &e) {
         std::vector<bool> checked;
         for (const char mark : e.get("checked"))
             checked.push_back(mark == '1');
         return said(updateAll(e.ini, e.text("key"), e.text("value"), checked, e.confirm(), e.dialogs));
     }},
};

std::string escaped(const std::u16string &text)
{
    std::string bytes;
    for (const char ch : platform::toUtf8(text))
        bytes += ch == '\r' ? "\\r" : ch == '\n' ? "\\n" : std::string(1, ch);
    return bytes;
}

class EditingGolden : public ::testing::TestWithParam<fs::path>
{};

TEST_P(EditingGolden, Case)
{
    const fs::path data = GetParam();
    TempDir dir;
    Edit edit;
    edit.settings = readSettings(data / "case.txt");
    const fs::path input = CASES / (edit.settings.contains("input") ? edit.get("input") : data.filename().string())
        / "input" / "aircraft.cfg";
    edit.file = dir / "aircraft.cfg";
    if (fs::exists(input))
        writeBytes(edit.file, readBytes(input));
    edit.ini.setPath(widePath(edit.file));
    for (const std::u16string &answer : list(edit.get("answers")))
        edit.dialogs.pushAnswer(answer == u"yes");

    std::string messages;
    std::size_t shown = 0;
    const auto boxes = [&] {
        for (const auto &records = edit.dialogs.records(); shown < records.size(); ++shown)
            messages += dialogKindName(records[shown].kind) + (": " + escaped(records[shown].text)) + "\n";
    };
    try {
        for (const std::u16string &step : list(edit.get("op"))) {
            const std::string result = STEPS.at(platform::toUtf8(step))(edit);
            boxes();
            messages += result.empty() ? "" : result + "\n";
        }
    } catch (const RuntimeError &error) {
        boxes();
        messages += "fault " + std::to_string(error.number()) + " " + escaped(error.procedure()) + ": "
            + escaped(error.description()) + "\n";
    }
    if (fs::exists(dir / "aircraft.corvane")) {
        EXPECT_EQ(readBytes(dir / "aircraft.corvane"), readBytes(input)) << "the backup holds the first state";
        messages += "backup\n";
    }
    expectGolden(messages, data / "messages.txt");
    const std::string produced = readBytes(edit.file);
    if (fs::exists(data / "aircraft.cfg") || produced != readBytes(input))
        expectGolden(produced, data / "aircraft.cfg");
}

INSTANTIATE_TEST_SUITE_P(Cases, EditingGolden, ::testing::ValuesIn(goldenCases("editing")), goldenName);

int faultOf(const std::function<void()> &operation)
{
    try {
        operation();
    } catch (const RuntimeError &error) {
        return error.number();
    }
    return 0;
}

} // namespace

TEST(KeyRemoval, TheListFoldsAndTheSixteenBitCounterOverflowsAfterWritingWhatWasDone)
{
    std::u16string key = u"  TITLE ";
    bool found = false;
    FindInList({u"atc_id", u" Title "}, key, found);
    EXPECT_TRUE(found && key == u"title");
    FindInList({u"atc_id"}, key, found);
    EXPECT_FALSE(found);

    TempDir dir;
    writeBytes(dir / "aircraft.cfg", "[fltsim.0]\r\na=1\r\n[fltsim.1]\r\na=2\r\nb=3\r\n");
    clsIniFile ini;
    ini.setPath(widePath(dir / "aircraft.cfg"));
    std::vector<std::u16string> marked(16385, u"zz");
    marked.front() = u"a";
    marked.back() = u"b";
    EXPECT_EQ(faultOf([&] { RemoveMarkedKeys(ini, marked); }), 6);
    // The 32768th attempt overflows: the second section's last key is never reached.
    EXPECT_EQ(readBytes(dir / "aircraft.cfg"), "[fltsim.0]\r\n[fltsim.1]\r\nb=3\r\n");
}

// A rewrite that fails at any byte leaves the old file whole and nothing beside it.
TEST(KeyRemoval, NoRewriteIsEverLeftHalfWritten)
{
    TempDir dir;
    const fs::path file = dir / "aircraft.cfg";
    const std::string before = readBytes(CASES / "remove-keys" / "input" / "aircraft.cfg");
    clsIniFile ini;
    ini.setPath(widePath(file));
    for (const std::function<void()> &rewrite :
         {std::function<void()>([&] { RemoveMarkedKeys(ini, {u"title"}); }),
          std::function<void()>([&] { Renumber_fltsim(widePath(file), false); })}) {
        for (std::size_t failAt = 0; failAt <= before.size(); failAt += 7) {
            writeBytes(file, before);
            const platform::ReplaceFailureForTests failure(failAt);
            faultOf(rewrite);
            EXPECT_EQ(readBytes(file), before) << failAt;
            EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()), 1);
        }
        writeBytes(file, before);
        rewrite();
        EXPECT_NE(readBytes(file), before);
    }
}

TEST(Effects, DisableHasNoGuardAndSelectNeedsABox)
{
    EffectFields fields = effectFields();
    EXPECT_EQ(faultOf([&] { EffectDisable(fields, -1); }), 9);
    EXPECT_EQ(effectNameFromFile(u"C:\\x\\fx_a.fxx"), u"fx_a.fxx");
    ScriptedDialogs dialogs;
    EXPECT_EQ(EffectSelect(-1, u"C:\\c737\\aircraft.cfg", dialogs), std::nullopt);
    dialogs.pushFile(u"C:\\Effects\\FX_TEST.FX");
    EXPECT_EQ(EffectSelect(2, u"C:\\c737\\aircraft.cfg", dialogs), u"FX_TEST");
    EXPECT_EQ(dialogs.records(),
              (std::vector<DialogRecord> {{DialogKind::Information, u"", SELECT_EFFECT_BOX_FIRST},
                                          {DialogKind::OpenFile, u"", EFFECT_FILE_FILTER, {u"C:\\c737"}}}));
}

// A radius that cannot be written shows its box, and the keys are written all the same.
TEST(GeneralUpdate, ARadiusThatCannotBeWrittenLeavesTheKeysToBeWritten)
{
    TempDir dir;
    writeBytes(dir / "model" / "sky.mdl", modelBytes("MDL9"));
    Edit edit;
    edit.settings = {{"heavy", "0"}};
    edit.file = dir / "aircraft.cfg";
    writeBytes(edit.file, readBytes(CASES / "general" / "input" / "aircraft.cfg"));
    edit.ini.setPath(widePath(edit.file));
    GeneralUpdateInput input = generalInput(edit);
    input.ModelFilePath = widePath(dir / "model" / "sky.mdl");
    input.RadiusOnLoad = u"7";
    input.radiusText = u"256";
    EXPECT_EQ(updateGeneralData(edit.ini, input, edit.dialogs).outcome, GeneralUpdateOutcome::Written);
    EXPECT_EQ(edit.dialogs.records(),
              (std::vector<DialogRecord> {{DialogKind::Critical, u"", RADIUS_WRITE_FAILURE_TEXT}}));
    EXPECT_EQ(readBytes(dir / "model" / "sky.mdl"), modelBytes("MDL9"));
    std::string expected = readBytes(CASES / "general" / "aircraft.cfg");
    EXPECT_EQ(readBytes(edit.file), expected.replace(expected.find("wing_span=112.6"), 15, "wing_span=100 // ft"));
}
