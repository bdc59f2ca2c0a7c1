// Golden cases of the editing operations: tests/data/editing/<case>/ holds input/aircraft.cfg (or "input=" in
// case.txt names the case whose input it takes), case.txt with the steps ("op=", run in order on one clsIniFile)
// and their settings ("answers=" turns confirming on, "fail=<n>" fails every rewrite after n bytes), the expected
// aircraft.cfg when the file changed, and messages.txt: boxes, step results, and "backup" when one was left.
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
#include "common/scripteddialogs.h"
#include "common/tempdir.h"
#include "core/clsinifile.h"
#include "core/runtimeerror.h"
#include "editing/association.h"
#include "editing/effects.h"
#include "editing/generalupdate.h"
#include "editing/keyremoval.h"
#include "editing/sectionrenumber.h"
#include "editing/sortkeys.h"
#include "editing/updateall.h"
#include "platform/fileio.h"
#include "platform/utf8.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

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
    std::optional<std::u16string> row() const
    {
        return !settings.contains("row") ? u"FLTSIM.0" : get("row").empty() ? std::nullopt : std::optional(text("row"));
    }
    std::vector<bool> checked() const
    {
        std::vector<bool> marks;
        for (const char mark : get("checked"))
            marks.push_back(mark == '1');
        return marks;
    }
};

const auto said = [](bool value) { return std::string(value ? "-> true" : "-> false"); };

const std::array<std::array<std::u16string, 5>, 3> EXITS = {
    {{u"1,5", u"62", u"-2", u"6.7", u"0"}, {u"0.4", u"21", u"2", u"6.7", u"1"}, {u"0.4", u"", u"3", u"6.7", u"2"}}};

// The defaults in every box, then water disabled, dirt once, concrete empty and once.
EffectFields effectFields()
{
    EffectFields fields;
    for (int k = 0; k < static_cast<int>(EFFECT_COUNT); ++k)
        EffectDefault(fields, k);
    fields.effectNames[1] = fields.effectNames[3] = u"";
    fields.effectRunsOnce[2] = fields.effectRunsOnce[3] = true;
    return fields;
}

// Each step gives its result line, or nothing.
const std::map<std::string, std::function<std::string(Edit &)>> STEPS = {
    {"renumber",
     [](Edit &e) { return said(FlightSimSectionRenumber(widePath(e.file), e.confirm(), e.backup(), e.dialogs)); }},
    {"delete",
     [](Edit &e) {
         // Every delete input has three variations, titled A, B and C.
         GridRows grid {std::nullopt, {u"FLTSIM.0", u"FLTSIM.1", u"FLTSIM.2"}, {u"A", u"B", u"C"}, e.checked()};
         grid.checked.resize(3);
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
         // The boxes of the general tab and the grid row's ATC sub-items; "radius=" adds a model to write it to.
         GeneralUpdateInput input;
         input.rowSection = e.row();
         input.data = {u"New title", u"GATE,RAMP", u"SKY", u"Corvane", u"Airliner", u"Skyworks",
                       u"Skyliner",  u"",          u"N2",  u"12",      u"Sky",      u"SK20",
                       true,         u"",          EXITS,  u"SK20",    u"SKYWORKS"};
         input.data.atcHeavy = e.get("heavy") != "0";
         input.data.wingSpanNew = e.text("span");
         input.rowAtc = atcBoxesOfRow(u"N1", u"", u"", u"1 // heavy", u"");
         input.ExitNote0 = u"//Main door";
         input.ExitNote1 = u"//Cargo";
         input.ConfirmUpdates = e.confirm();
         input.AutoBackupOn = e.backup();
         if (e.settings.contains("radius")) {
             input.ModelFilePath = widePath(e.file.parent_path() / "sky.mdl");
             input.RadiusOnLoad = u"7";
             input.radiusText = e.text("radius");
         }
         const GeneralUpdateResult result = updateGeneralData(e.ini, input, e.dialogs);
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
         return said(updateAll(e.ini, e.text("key"), e.text("value"), e.checked(), e.confirm(), e.dialogs));
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
    const fs::path input = data.parent_path()
        / (edit.settings.contains("input") ? edit.get("input") : data.filename().string()) / "input" / "aircraft.cfg";
    edit.file = dir / "aircraft.cfg";
    if (fs::exists(input))
        writeBytes(edit.file, readBytes(input));
    if (edit.settings.contains("radius"))
        writeBytes(dir / "sky.mdl", modelBytes("MDL9"));
    edit.ini.setPath(widePath(edit.file));
    for (const std::u16string &answer : list(edit.get("answers")))
        edit.dialogs.pushAnswer(answer == u"yes");
    std::optional<platform::ReplaceFailureForTests> failure;
    if (edit.settings.contains("fail"))
        failure.emplace(std::stoul(edit.get("fail")));

    std::string messages;
    std::size_t shown = 0;
    for (const std::u16string &step : list(edit.get("op"))) { // every case's fault comes at its last step
        std::string result;
        try {
            result = STEPS.at(platform::toUtf8(step))(edit);
        } catch (const RuntimeError &error) {
            result = "fault " + std::to_string(error.number()) + " " + escaped(error.procedure()) + ": "
                + escaped(error.description());
        }
        for (const auto &records = edit.dialogs.records(); shown < records.size(); ++shown)
            messages += dialogKindName(records[shown].kind) + (": " + escaped(records[shown].text)) + "\n";
        messages += result.empty() ? "" : result + "\n";
    }
    if (fs::exists(dir / "aircraft.corvane")) {
        EXPECT_EQ(readBytes(dir / "aircraft.corvane"), readBytes(input)) << "the backup holds the first state";
        messages += "backup\n";
    }
    EXPECT_TRUE(!fs::exists(dir / "sky.mdl") || readBytes(dir / "sky.mdl") == modelBytes("MDL9")) << "radius written";
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()),
              fs::exists(edit.file) + fs::exists(dir / "aircraft.corvane") + fs::exists(dir / "sky.mdl"))
        << "nothing is left beside the files";
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

// The counter of attempts is 16 bits wide; what was done before the overflow is written.
TEST(KeyRemoval, TheSixteenBitCounterOverflowsAfterWritingWhatWasDone)
{
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
