#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/golden.h"
#include "common/tempdir.h"
#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "folderview/folderload.h"
#include "platform/codepage.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

std::string cp(const std::u16string &text)
{
    return platform::toCodePage(text);
}

template<typename Range> std::string joined(const Range &texts)
{
    std::string line;
    for (const std::u16string &text : texts)
        line += (&text == &*std::begin(texts) ? "" : "|") + cp(text);
    return line;
}

// Lists come in the file system's listing order, which differs between platforms: shown sorted.
std::string sorted(std::vector<std::u16string> names)
{
    std::ranges::sort(names, platform::listingOrderLess);
    return joined(names);
}

std::string exitsText(const FolderLoadResult &result)
{
    std::string text;
    for (std::size_t i = 0; i < 3; ++i)
        if (result.exitComplete[i] || result.exitFields[i] != std::array<std::u16string, 5> {})
            text += "exit." + std::to_string(i) + "=" + joined(result.exitFields[i]) + " "
                + (result.exitComplete[i] ? "1" : "0") + "\n";
    if (!result.ExitNote0.empty() || !result.ExitNote1.empty())
        text += "notes=" + cp(result.ExitNote0) + "|" + cp(result.ExitNote1) + "\n";
    const std::map<std::uint32_t, std::string> colours {
        {COLOUR_GREEN, "green"}, {COLOUR_RED, "red"}, {COLOUR_NO_ROW, "no row"}};
    return text + cp(result.jetways.text) + " " + colours.at(result.jetways.backColour) + "\n";
}

// What a load tells the form: the grid rows with their 17 columns and description, then whatever else is set.
std::string loadText(const FolderLoadResult &result, const clsIniFile &ini, const fs::path &folder)
{
    const auto flag = [](bool on) { return on ? std::string("1") : std::string("0"); };
    const auto panel = [&](const PanelPaint &paint) {
        return " | " + cp(paint.text) + " " + std::to_string(static_cast<int>(paint.colour));
    };
    fs::path profile(ini.path());
#ifdef _WIN32
    // Windows opens the file by any spelling, so the load keeps the one it asked for; show the one on disk.
    std::error_code error;
    for (auto it = fs::directory_iterator(profile.parent_path(), error); !error && it != fs::directory_iterator();
         it.increment(error))
        if (!it->is_directory() && LCase(it->path().filename().u16string()) == LCase(profile.filename().u16string()))
            profile = it->path();
#endif
    std::string text = "aircraft=" + flag(result.isAircraftFolder) + " dirUp=" + flag(result.upwardsEnabled)
        + " ini=" + cp(profile.filename().u16string()) + panel(result.folderPanel) + panel(result.statusPanel) + " | "
        + cp(result.variationCountText) + "\n";
    for (std::size_t i = 0; i < result.rows.size(); ++i)
        text += "row=" + joined(result.rows[i]) + "|" + cp(result.Descriptions.at(i)) + "\n";
    for (std::size_t i = 0; i < EFFECT_COUNT; ++i)
        if (result.effectRunsOnce[i] || !result.effectNames[i].empty())
            text += cp(EFFECT_KEYS[i]) + "=" + cp(result.effectNames[i]) + " " + flag(result.effectRunsOnce[i]) + "\n";
    if (!result.wingSpanText.empty())
        text += "wing_span=" + cp(result.wingSpanText) + " [" + cp(result.WingSpanSection) + "]\n";
    text += exitsText(result);
    if (!(result.generalAtcType + result.generalAtcModel + result.AirFileName).empty())
        text += "general=" + cp(result.generalAtcType) + "|" + cp(result.generalAtcModel)
            + " airfile=" + cp(result.AirFileName) + "\n";
    const MenuStates &m = result.menus;
    text += "menus=" + flag(m.openConfig) + flag(m.deleteKeys) + flag(m.sortKeys) + flag(m.renumber) + flag(m.validate)
        + flag(m.validateAll) + " white=" + flag(result.fieldsWhite) + " tabStop=" + flag(result.editorTabStop) + " "
        + cp(result.deleteCommandText);
    if (result.pathSetting)
        text +=
            " path=" + std::string(*result.pathSetting == folder.u16string() ? "{folder}" : cp(*result.pathSetting));
    if (result.selectedRow || result.rowToOpen)
        text += " selected=" + std::to_string(result.selectedRow.value_or(99))
            + " open=" + std::to_string(result.rowToOpen.value_or(99));
    if (result.current)
        text += " current=" + cp(result.current->texture) + "|" + cp(result.current->model) + "|"
            + cp(result.current->airFile);
    if (!(result.textureChoices.empty() && result.modelChoices.empty() && result.airFileChoices.empty()))
        text += "\ntextures=" + sorted(result.textureChoices) + " models=" + sorted(result.modelChoices)
            + " airfiles=" + sorted(result.airFileChoices) + " list=" + sorted(result.folderAirFiles)
            + " index=" + (result.selectedFolderAirFile ? std::to_string(*result.selectedFolderAirFile) : "none");
    return text + "\n";
}

FolderLoadResult load(const fs::path &folder, clsIniFile &ini, FolderLoadInput input = {})
{
    input.folder = widePath(folder);
    return readAircraftFolder(input, ini);
}

FolderLoadResult loadCfg(const TempDir &dir, std::string_view cfg, FolderLoadInput input = {})
{
    writeBytes(dir / "aircraft.cfg", crlf(cfg));
    clsIniFile ini;
    return load(dir.path(), ini, std::move(input));
}

class FolderLoadGolden : public ::testing::TestWithParam<fs::path>
{};

// <case>/: input/ is the folder loaded, case.txt may set decimalSeparator=, grid.txt is what the load tells.
// The profile object named another aircraft before the load.
TEST_P(FolderLoadGolden, Load)
{
    const fs::path &data = GetParam();
    const auto settings = readSettings(data / "case.txt");
    TempDir dir;
    copyFolder(data / "input", dir.path());
    FolderLoadInput input;
    if (settings.contains("decimalSeparator"))
        input.decimalSeparator = static_cast<char16_t>(settings.at("decimalSeparator")[0]);
    clsIniFile ini;
    ini.setPath(u"previous.cfg");
    const FolderLoadResult result = load(dir.path(), ini, input);
    expectGolden(loadText(result, ini, dir.path()), data / "grid.txt");
}

INSTANTIATE_TEST_SUITE_P(Cases, FolderLoadGolden, ::testing::ValuesIn(goldenCases("folderview")), goldenName);

} // namespace

// Titles are looked for in capitals among those kept as written: only titles without lower-case letters
// collide. Duplicate sections and distinct titles: the golden cases.
TEST(FolderLoad, DuplicateTitles)
{
    const std::pair<const char *, const char16_t *> rows[] = {
        {"title=CORVANE 1\n[fltsim.1]\ntitle=CORVANE 1\n", u"AC Status: NOK"},
        {"title=Corvane 1\n[fltsim.1]\ntitle=Corvane 1\n", u"AC Status: OK"},
        {"title=CORVANE\n[fltsim.1]\ntitle=Corvane\n", u"AC Status: NOK"},
        {"title=a\n[fltsim.1]\ntitle=\n", u"AC Status: NOK"},
        {"title=\n[fltsim.1]\ntitle=b\n", u"AC Status: OK"},
    };
    for (const auto &[titles, status] : rows) {
        TempDir dir;
        EXPECT_EQ(loadCfg(dir, std::string("[fltsim.0]\n") + titles).statusPanel.text, status) << titles;
    }
}

TEST(FolderLoad, ExitsAndJetways)
{
    const std::pair<const char *, const char *> rows[] = {
        {"exit.0=0.4, 12, -3, 4, 0 //Door 1L\n",
         "exit.0=0.4|12|-3|4|0 1\nnotes=//Door 1L|\nJetways possible: yes green\n"},
        {"exit.0=0.4, 12, -3, 4, 0\n", "exit.0=0.4|12|-3|4|0 1\nnotes=old note|\nJetways possible: no red\n"},
        {"exit.0=0.4, 12 //door\n", "exit.0=0.4|1||| 0\nnotes=//door|\nJetways possible: no red\n"},
        // A note behind a blank cuts to the blank's place.
        {"exit.0=0.4, 12.5, -3,4, 12.5 //x\n", "exit.0=0.4|12.5|-3|4|1 1\nnotes=//x|\nJetways possible: yes green\n"},
        {"exit.0=0.4 1, 2, 3, 4, 5 //n\n", "exit.0=0.4 |2|3|4|5 1\nnotes=//n|\nJetways possible: yes green\n"},
        {"exit.0=\n", "notes=old note|\nJetways possible: no red\n"},
        // exit.1 and exit.2 share one note; only exit.1 takes a jetway.
        {"exit.0=1\nexit.1=1,2,3,4,5 //one\nexit.2=6,7,8,9,10 //two\n",
         "exit.0=1|||| 0\nexit.1=1|2|3|4|5  1\nexit.2=6|7|8|9|10  1\nnotes=old note|//two\nJetways possible: yes "
         "green\n"},
    };
    for (const auto &[exits, shown] : rows) {
        TempDir dir;
        FolderLoadInput input;
        input.ExitNote0 = u"old note";
        EXPECT_EQ(exitsText(loadCfg(dir, std::string("[fltsim.0]\n[exits]\n") + exits, input)), shown);
    }
}

TEST(FolderLoad, WingSpanReadsTheLeadingNumber)
{
    const std::pair<const char *, const char16_t *> rows[] = {
        {"26.44\t\t;/ 36.1 Feet", u"26.44"},
        {"112 6", u"1126"},
        {"-11.0", u"-11"},
        {"1.5e3", u"1500"},
        {"2D2", u"200"},
        {"&HFFFF", u"-1"},
        {"&H10000", u"65536"},
        {"abc", u"0"},
        {"", u"0"},
        {".5", u"0.5"},
        {"1,5", u"1"},
        {"0.00001", u"1E-05"},
        {"1e15", u"1E+15"},
        {"1e-400", u"0"},
        {"123456789.123456789", u"123456789.123457"},
    };
    for (const auto &[value, shown] : rows) {
        TempDir dir;
        EXPECT_EQ(loadCfg(dir, std::string("[geometry]\nwing_span=") + value + "\n").wingSpanText, shown) << value;
    }
}

// As the first key of the first other section the load's own handler still stands; after another key of
// such a section it no longer does. The error and the rows kept: the checker feed's test.
TEST(FolderLoad, WingSpanOverflowStopsTheLoad)
{
    TempDir dir;
    writeBytes(dir / "aircraft.cfg", crlf("[fltsim.0]\ntitle=a\n[geometry]\nwing_span=1e400\n[fltsim.1]\n"));
    clsIniFile ini;
    FolderLoadResult result;
    FolderLoadInput input;
    input.folder = widePath(dir.path());
    EXPECT_THROW(readAircraftFolder(input, ini, result), RuntimeError);
    EXPECT_TRUE(result.errorHandlerOn);
    writeBytes(dir / "aircraft.cfg", crlf("[geometry]\nwing_span=1\nwing_span_x=2\n[other]\nwing_span=9e999\n"));
    EXPECT_THROW(readAircraftFolder(input, ini, result), RuntimeError);
    EXPECT_FALSE(result.errorHandlerOn);
    EXPECT_EQ(result.wingSpanText, u"1");
}

// Garbage and read-only files: the hostile cases.
TEST(FolderLoad, EveryLoadReadsTheFileAfresh)
{
    TempDir dir;
    clsIniFile ini;
    writeBytes(dir / "aircraft.cfg", crlf("[fltsim.0]\ntitle=before\n"));
    load(dir.path(), ini);
    writeBytes(dir / "aircraft.cfg", crlf("[fltsim.0]\ntitle=after a longer edit\n[fltsim.1]\n"));
    const FolderLoadResult result = load(dir.path(), ini);
    ASSERT_EQ(result.rows.size(), 2u);
    EXPECT_EQ(result.rows[0][GridColumn::Title], u"after a longer edit");
}

TEST(FolderLoad, RealAircraftFoldersLoad)
{
    const fs::path corpus = FLEETWRIGHT_CORPUS_DIR;
    if (!fs::is_directory(corpus))
        GTEST_SKIP() << "no corpus of real aircraft folders";
    const std::map<std::string, std::string> known = {
        {"jodel-dr1050-fsx", "7 no 0"},     {"bonanza-a36", "1 no 0"},  {"utlive-a320-ai", "115 no 1"},
        {"pmdg777-repaint-p3d", "3 yes 1"}, {"bae146-msfs", "11 no 0"}, {"hampden-fs9", "1 no 0"},
    };
    int aircraft = 0;
    for (const auto &entry : fs::directory_iterator(corpus)) {
        if (!entry.is_directory())
            continue;
        const std::string name = entry.path().filename().string();
        SCOPED_TRACE(name);
        clsIniFile ini;
        FolderLoadResult result;
        ASSERT_NO_THROW(result = load(entry.path(), ini));
        EXPECT_TRUE(result.isAircraftFolder);
        EXPECT_EQ(result.Descriptions.size(), result.rows.size());
        ++aircraft;
        // Reading the first row alone changes nothing of it, of the row count or of what opens.
        clsIniFile leanIni;
        FolderLoadInput firstRowOnly;
        firstRowOnly.firstRowOnly = true;
        const FolderLoadResult lean = load(entry.path(), leanIni, firstRowOnly);
        ASSERT_EQ(lean.rows.size(), result.rows.size());
        EXPECT_EQ(lean.rowToOpen, result.rowToOpen);
        EXPECT_EQ(lean.current, result.current);
        EXPECT_TRUE(result.rows.empty() || lean.rows.front() == result.rows.front());
        if (known.contains(name)) {
            EXPECT_EQ(std::to_string(result.rows.size()) + " " + cp(result.jetways.text.substr(18)) + " "
                          + (result.exitComplete[0] ? "1" : "0"),
                      known.at(name));
        }
    }
    EXPECT_GE(aircraft, 6);
}
