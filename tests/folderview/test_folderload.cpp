#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/clsinifile.h"
#include "core/runtimeerror.h"
#include "folderview/folderload.h"
#include "platform/filelookup.h"
#include "platform/utf8.h"
#include "common/tempdir.h"

using namespace fleetwright;
using fleetwright::test::crlf;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

namespace {

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

std::vector<std::u16string> column(const FolderLoadResult &result, std::size_t index)
{
    std::vector<std::u16string> texts;
    for (const GridRow &row : result.rows)
        texts.push_back(row[index]);
    return texts;
}

// Lists come in the file system's listing order, which differs between platforms: compare their contents.
std::vector<std::u16string> sorted(std::vector<std::u16string> names)
{
    std::sort(names.begin(), names.end(),
              [](const auto &a, const auto &b) { return platform::listingOrderLess(a, b); });
    return names;
}

using Texts = std::vector<std::u16string>;

} // namespace

TEST(FolderLoad, VariationsBecomeRowsInFileOrder)
{
    TempDir dir;
    const FolderLoadResult result = loadCfg(dir, R"([general]
atc_type=BOEING // maker
atc_model=B738
[fltsim.0]
title=Corvane 737 Blue // the blue one
atc_parking_types=gate,ramp // big
sim=Corvane737 // flight model
model=
texture=Blue/Tail
description=Blue paint // by the shop
atc_heavy=0
unknown_key=ignored
[fltsim.1]
title=Corvane 737 Red
model=sub/dir //x
texture=//only a comment
[fltsim.7]
title=Corvane 737 Green
atc_airline=CORVANE
sim=Other
)");
    EXPECT_TRUE(result.isAircraftFolder);
    EXPECT_EQ(result.panel8, (PanelPaint {8, u"AC Folder", PanelColour::Green}));
    EXPECT_EQ(result.panel9, (PanelPaint {9, u"AC Status: OK", PanelColour::Green}));
    EXPECT_EQ(result.panel10Text, u"3 aircraft variations defined");
    EXPECT_TRUE(result.cmd_DirUpEnabled);

    EXPECT_EQ(column(result, GridColumn::Section), (Texts {u"FLTSIM.0", u"FLTSIM.1", u"FLTSIM.7"}));
    EXPECT_EQ(column(result, GridColumn::Title),
              (Texts {u"Corvane 737 Blue", u"Corvane 737 Red", u"Corvane 737 Green"}));
    EXPECT_EQ(column(result, GridColumn::ParkingTypes), (Texts {u"GATE,RAMP", u"", u""}));
    // An empty model shows "<default>", a missing one nothing; "/" turns into "\" before the comment is cut.
    EXPECT_EQ(column(result, GridColumn::Model), (Texts {u"<default>", u"sub\\dir \\\\x", u""}));
    EXPECT_EQ(column(result, GridColumn::Texture), (Texts {u"Blue\\Tail", u"<default>", u""}));
    EXPECT_EQ(column(result, GridColumn::Sim), (Texts {u"Corvane737", u"", u"Other"}));
    EXPECT_EQ(column(result, GridColumn::Airline), (Texts {u"", u"", u"CORVANE"}));
    EXPECT_EQ(result.rows[0][GridColumn::Heavy], u"0");
    EXPECT_EQ(result.Descriptions, (Texts {u"Blue paint // by the shop", u"", u""}));
    EXPECT_EQ(result.AirFileName, u"Corvane737 // flight model");
    EXPECT_EQ(result.txt_general_atc_type, u"BOEING // maker");
    EXPECT_EQ(result.txt_general_atc_model, u"B738");

    EXPECT_TRUE(result.menus.mnuCFG && result.menus.mnuDelKeys && result.menus.mnuSortKeys && result.menus.mnuRenumber
                && result.menus.mnuValidate);
    EXPECT_FALSE(result.menus.mnuvalidateAll);
    EXPECT_TRUE(result.fieldsWhite);
    EXPECT_EQ(result.pathSetting, widePath(dir.path()));
    EXPECT_EQ(result.selectedRow, 0u);
    EXPECT_EQ(result.rowToOpen, 0u);
    EXPECT_EQ(result.mnuDeleteCaption, u"&Delete [fltsim.0]");
    ASSERT_TRUE(result.current);
    EXPECT_EQ(result.current->txt_CurrentTexture, u"Blue\\Tail");
    EXPECT_EQ(result.current->txt_CurrentModel, u"<default>");
    EXPECT_EQ(result.current->txt_CurrentAirfile, u"Corvane737");
    EXPECT_TRUE(result.SSTab1TabStop);
}

TEST(FolderLoad, DuplicateTestsOfSectionsAndTitles)
{
    const struct
    {
        const char *name;
        const char *cfg;
        bool nok;
    } rows[] = {
        {"section twice in mixed case", "[fltsim.0]\ntitle=a\n[FltSim.0]\ntitle=b\n", true},
        {"titles equal in capitals", "[fltsim.0]\ntitle=CORVANE 1\n[fltsim.1]\ntitle=CORVANE 1\n", true},
        {"titles equal in mixed case", "[fltsim.0]\ntitle=Corvane 1\n[fltsim.1]\ntitle=Corvane 1\n", false},
        {"mixed case after capitals", "[fltsim.0]\ntitle=CORVANE\n[fltsim.1]\ntitle=Corvane\n", true},
        {"capitals after mixed case", "[fltsim.0]\ntitle=Corvane\n[fltsim.1]\ntitle=CORVANE\n", false},
        {"numeric titles", "[fltsim.0]\ntitle=1.5\n[fltsim.1]\ntitle=1.5\n", true},
        {"an empty title after another", "[fltsim.0]\ntitle=a\n[fltsim.1]\ntitle=\n", true},
        {"an empty first title", "[fltsim.0]\ntitle=\n[fltsim.1]\ntitle=b\n", false},
        {"different sections and titles", "[fltsim.0]\ntitle=a\n[fltsim.1]\ntitle=b\n", false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        TempDir dir;
        const FolderLoadResult result = loadCfg(dir, row.cfg);
        EXPECT_EQ(result.panel9.text, row.nok ? u"AC Status: NOK" : u"AC Status: OK");
        EXPECT_EQ(result.panel9.colour, row.nok ? PanelColour::Red : PanelColour::Green);
        EXPECT_EQ(result.rows.size(), 2u);
    }

    // A section standing twice reads the first one's values in both rows.
    TempDir dir;
    const FolderLoadResult twice = loadCfg(dir, "[fltsim.0]\ntitle=first\n[FLTSIM.0]\ntitle=second\n");
    EXPECT_EQ(column(twice, GridColumn::Section), (Texts {u"FLTSIM.0", u"FLTSIM.0"}));
    EXPECT_EQ(column(twice, GridColumn::Title), (Texts {u"first", u"first"}));
}

TEST(FolderLoad, SectionsWithOddNames)
{
    TempDir dir;
    const FolderLoadResult result = loadCfg(dir, R"([version]
major=1
[fltsim.]
title=no number
[Fltsim.abc]
title=letters
[ fltsim.3 ]
title=blanks around
[fltsim.4 //note]
title=comment in header
[fltsimx]
title=not a variation
[effects.extra]
wake=fx_wake,1
)");
    EXPECT_EQ(column(result, GridColumn::Section), (Texts {u"FLTSIM.", u"FLTSIM.ABC", u"FLTSIM.3", u"FLTSIM.4"}));
    EXPECT_EQ(column(result, GridColumn::Title),
              (Texts {u"no number", u"letters", u"blanks around", u"comment in header"}));
    EXPECT_EQ(result.txt_effects[0], u"fx_wake");
    EXPECT_TRUE(result.chk_Effect[0]);
    EXPECT_EQ(result.panel9.text, u"AC Status: OK");
}

TEST(FolderLoad, ExitsAndJetways)
{
    const struct
    {
        const char *name;
        const char *exits;
        const char16_t *jetways;
        std::array<std::u16string, 5> exit0;
        bool checked;
        const char16_t *note0;
    } rows[] = {
        {"five parts and a note",
         "exit.0=0.4, 12, -3, 4, 0 //Door 1L\n",
         u"Jetways possible: yes",
         {u"0.4", u"12", u"-3", u"4", u"0"},
         true,
         u"//Door 1L"},
        {"five parts, no note",
         "exit.0=0.4, 12, -3, 4, 0\n",
         u"Jetways possible: no",
         {u"0.4", u"12", u"-3", u"4", u"0"},
         true,
         u"old note"},
        {"two parts and a note",
         "exit.0=0.4, 12 //door\n",
         u"Jetways possible: no",
         {u"0.4", u"1", u"", u"", u""},
         false,
         u"//door"},
        {"a note behind a blank cuts to the blank's place",
         "exit.0=0.4, 12.5, -3,4, 12.5 //x\n",
         u"Jetways possible: yes",
         {u"0.4", u"12.5", u"-3", u"4", u"1"},
         true,
         u"//x"},
        {"first part with a blank keeps it",
         "exit.0=0.4 1, 2, 3, 4, 5 //n\n",
         u"Jetways possible: yes",
         {u"0.4 ", u"2", u"3", u"4", u"5"},
         true,
         u"//n"},
        {"an empty value", "exit.0=\n", u"Jetways possible: no", {}, false, u"old note"},
        {"only exit.1 takes a jetway",
         "exit.0=1\nexit.1=1,2,3,4,5 //r\n",
         u"Jetways possible: yes",
         {u"1", u"", u"", u"", u""},
         false,
         u"old note"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        TempDir dir;
        FolderLoadInput input;
        input.ExitNote0 = u"old note";
        const FolderLoadResult result = loadCfg(dir, std::string("[fltsim.0]\n[exits]\n") + row.exits, input);
        EXPECT_EQ(result.txt_Jetways.text, row.jetways);
        EXPECT_EQ(result.txt_Jetways.backColour, result.txt_Jetways.text.ends_with(u"yes") ? COLOUR_GREEN : COLOUR_RED);
        EXPECT_EQ(result.txt_Exit[0], row.exit0);
        EXPECT_EQ(result.chk_Exit[0], row.checked);
        EXPECT_EQ(result.ExitNote0, row.note0);
    }

    // exit.1 and exit.2 share one note; exit.2 fills the third row of fields, its last one cut behind the blank.
    TempDir dir;
    const FolderLoadResult shared = loadCfg(dir, "[exits]\nexit.1=1,2,3,4,5 //one\nexit.2=6,7,8,9,10 //two\n");
    EXPECT_EQ(shared.ExitNote1, u"//two");
    EXPECT_EQ(shared.txt_Exit[2][4], u"10 ");
    EXPECT_EQ(shared.chk_Exit, (std::array<bool, 3> {false, true, true}));
}

TEST(FolderLoad, EffectsWingSpanAndGeneral)
{
    TempDir dir;
    FolderLoadInput input;
    input.decimalSeparator = u',';
    const FolderLoadResult result = loadCfg(dir, R"([Effects]
wake=fx_wake, 1
water=fx_water ,0
dirt=fx_dirt,10
touchdown =fx_tchdwn_s, 1 //c
r_wingtipvortice=fx_vortex
smoke.0=ignored, 1
[airplane_geometry]
wing_span=112.6 //feet
[other]
wing_span=35.8  // the last one wins
atc_model=not general
)",
                                            input);
    EXPECT_EQ(result.txt_effects[0], u"fx_wake");
    EXPECT_TRUE(result.chk_Effect[0]);
    EXPECT_EQ(result.txt_effects[1], u"fx_water ");
    EXPECT_FALSE(result.chk_Effect[1]);
    EXPECT_TRUE(result.chk_Effect[2]);
    EXPECT_EQ(result.txt_effects[4], u"fx_tchdwn_s");
    EXPECT_TRUE(result.chk_Effect[4]);
    EXPECT_EQ(result.txt_effects[10], u"fx_vortex");
    EXPECT_FALSE(result.chk_Effect[10]);
    EXPECT_EQ(std::count(result.chk_Effect.begin(), result.chk_Effect.end(), true), 3);
    EXPECT_EQ(result.txt_WingSpan_Org, u"35,8");
    EXPECT_EQ(result.WingSpanSection, u"other");
    EXPECT_EQ(result.txt_general_atc_model, u"");
    // A file of effects but no variation.
    EXPECT_EQ(result.panel9, (PanelPaint {9, u"AC Status: n/a", PanelColour::Grey}));
    EXPECT_FALSE(result.pathSetting);
}

TEST(FolderLoad, WingSpanReadsTheLeadingNumber)
{
    const struct
    {
        const char *value;
        const char16_t *shown;
    } rows[] = {
        {"36.15  //Feet", u"36.15"},
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
    for (const auto &row : rows) {
        SCOPED_TRACE(row.value);
        TempDir dir;
        EXPECT_EQ(loadCfg(dir, std::string("[geometry]\nwing_span=") + row.value + "\n").txt_WingSpan_Org, row.shown);
    }
}

TEST(FolderLoad, WingSpanOverflowStopsTheLoad)
{
    // As the first key of the first other section the load's own handler still stands.
    TempDir first;
    writeBytes(first / "aircraft.cfg", crlf("[fltsim.0]\ntitle=a\n[geometry]\nwing_span=1e400\n[fltsim.1]\n"));
    clsIniFile ini;
    FolderLoadResult result;
    FolderLoadInput input;
    input.folder = widePath(first.path());
    try {
        readAircraftFolder(input, ini, result);
        FAIL() << "no error";
    } catch (const RuntimeError &error) {
        EXPECT_EQ(error.number(), 6);
        EXPECT_EQ(error.description(), u"Overflow");
        EXPECT_EQ(error.procedure(), u"Dir1_Change");
    }
    EXPECT_TRUE(result.errorHandlerOn);
    EXPECT_EQ(column(result, GridColumn::Title), (Texts {u"a"}));

    // After another key of such a section it no longer does.
    TempDir later;
    writeBytes(later / "aircraft.cfg", crlf("[geometry]\nwing_span=1\nwing_span_x=2\n[other]\nwing_span=9e999\n"));
    input.folder = widePath(later.path());
    EXPECT_THROW(readAircraftFolder(input, ini, result), RuntimeError);
    EXPECT_FALSE(result.errorHandlerOn);
    EXPECT_EQ(result.txt_WingSpan_Org, u"1");
}

TEST(FolderLoad, FoldersThatAreNoAircraft)
{
    TempDir previous;
    writeBytes(previous / "aircraft.cfg", crlf("[fltsim.0]\ntitle=kept\n"));
    clsIniFile ini;
    load(previous.path(), ini);

    TempDir empty;
    TempDir folderInstead;
    fs::create_directory(folderInstead / "aircraft.cfg");
    for (const fs::path &folder : {empty.path(), folderInstead.path()}) {
        SCOPED_TRACE(folder.string());
        const FolderLoadResult result = load(folder, ini);
        EXPECT_FALSE(result.isAircraftFolder);
        EXPECT_FALSE(result.cmd_DirUpEnabled);
        EXPECT_EQ(result.panel8, (PanelPaint {8, u"AC Folder", PanelColour::Red}));
        EXPECT_EQ(result.panel9, (PanelPaint {9, u"AC Status: n/a", PanelColour::Grey}));
        EXPECT_EQ(result.panel10Text, u"0 aircraft variations defined");
        EXPECT_EQ(result.txt_Jetways, (TextAndColour {u"Jetways possible: n/a", COLOUR_NO_ROW}));
        EXPECT_TRUE(result.menus.mnuvalidateAll);
        EXPECT_FALSE(result.menus.mnuCFG);
        EXPECT_EQ(result.mnuDeleteCaption, u"&Delete [fltsim.x]");
        EXPECT_FALSE(result.current || result.selectedRow || result.rowToOpen || result.pathSetting);
        EXPECT_FALSE(result.SSTab1TabStop);
        // The profile object still names the last aircraft's file.
        EXPECT_EQ(ini.path(), widePath(previous / "aircraft.cfg"));
    }
}

TEST(FolderLoad, FilesThatStillLoad)
{
    // Read-only: read like any other.
    TempDir readOnly;
    writeBytes(readOnly / "aircraft.cfg", crlf("[fltsim.0]\ntitle=locked\n"));
    fs::permissions(readOnly / "aircraft.cfg",
                    fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    clsIniFile ini;
    EXPECT_EQ(column(load(readOnly.path(), ini), GridColumn::Title), (Texts {u"locked"}));

    // Garbage: an aircraft folder without variations.
    TempDir garbage;
    std::string bytes;
    for (int i = 0; i < 4096; ++i)
        bytes += static_cast<char>((i * 37 + 11) % 256 == '[' ? 0 : (i * 37 + 11) % 256);
    writeBytes(garbage / "aircraft.cfg", bytes);
    const FolderLoadResult noise = load(garbage.path(), ini);
    EXPECT_TRUE(noise.isAircraftFolder);
    EXPECT_TRUE(noise.rows.empty());
    EXPECT_EQ(noise.panel9.text, u"AC Status: n/a");

    // A UTF-8 byte order mark is skipped; the text behind it is read in the 8-bit code page.
    TempDir bom;
    writeBytes(bom / "aircraft.cfg", "\xEF\xBB\xBF[fltsim.0]\r\ntitle=Caf\xC3\xA9\r\n");
    EXPECT_EQ(column(load(bom.path(), ini), GridColumn::Title), (Texts {u"Caf\u00C3\u00A9"}));

    // "Aircraft.cfg" is the aircraft's file as well, and the profile object reads it under its own name.
    TempDir capital;
    writeBytes(capital / "Aircraft.cfg", crlf("[Fltsim.0]\ntitle=capital\n"));
    const FolderLoadResult found = load(capital.path(), ini);
    EXPECT_EQ(column(found, GridColumn::Title), (Texts {u"capital"}));
    EXPECT_TRUE(platform::sameNameIgnoringCase(fs::path(ini.path()).filename().u16string(), u"aircraft.cfg"));
}

TEST(FolderLoad, EveryLoadReadsTheFileAfresh)
{
    TempDir dir;
    writeBytes(dir / "aircraft.cfg", crlf("[fltsim.0]\ntitle=before\n"));
    clsIniFile ini;
    EXPECT_EQ(column(load(dir.path(), ini), GridColumn::Title), (Texts {u"before"}));
    writeBytes(dir / "aircraft.cfg", crlf("[fltsim.0]\ntitle=after a longer edit\n[fltsim.1]\n"));
    const FolderLoadResult reloaded = load(dir.path(), ini);
    EXPECT_EQ(column(reloaded, GridColumn::Title), (Texts {u"after a longer edit", u""}));
    EXPECT_EQ(reloaded.Descriptions.size(), 2u);
}

TEST(FolderLoad, TextureModelAndAirFileLists)
{
    TempDir dir;
    writeBytes(dir / "aircraft.cfg", crlf("[fltsim.0]\nsim=Corvane\n"));
    writeBytes(dir / "texture" / "a.bmp", "");
    writeBytes(dir / "Texture.KLM" / "a.bmp", "");
    writeBytes(dir / "texture.Old Colors" / "a.bmp", "");
    writeBytes(dir / "texture.txt", "notes");
    writeBytes(dir / "textures" / "a.bmp", "");
    writeBytes(dir / "model" / "model.cfg", "");
    writeBytes(dir / "model.2" / "model.cfg", "");
    writeBytes(dir / "Corvane.air", "");
    writeBytes(dir / "Spare.AIR", "");
    writeBytes(dir / "two.dots.air", "");
    writeBytes(dir / "old.air.bak", "");
    fs::create_directory(dir / "folder.air");
    clsIniFile ini;
    const FolderLoadResult result = load(dir.path(), ini);
    EXPECT_EQ(sorted(result.combo_Texture), sorted({u"<default>", u"KLM", u"Old Colors", u"txt"}));
    EXPECT_EQ(sorted(result.combo_Model), sorted({u"<default>", u"2"}));
    EXPECT_EQ(sorted(result.combo_Airfile), sorted({u"Corvane", u"Spare", u"two"}));
    EXPECT_EQ(result.lst_Airfile, result.combo_Airfile);
    EXPECT_EQ(result.lst_AirfileIndex, 0u);

    // A folder without aircraft.cfg lists its files all the same; without air files nothing is selected.
    TempDir bare;
    writeBytes(bare / "texture.A" / "a.bmp", "");
    const FolderLoadResult plain = load(bare.path(), ini);
    EXPECT_EQ(plain.combo_Texture, (Texts {u"A"}));
    EXPECT_FALSE(plain.lst_AirfileIndex);
}

TEST(FolderLoad, RealAircraftFoldersLoad)
{
    const fs::path corpus = FLEETWRIGHT_CORPUS_DIR;
    if (!fs::is_directory(corpus))
        GTEST_SKIP() << "no corpus of real aircraft folders";
    struct Expected
    {
        std::size_t rows;
        const char16_t *jetways;
        bool exit0Checked;
    };
    const std::pair<const char *, Expected> known[] = {
        {"jodel-dr1050-fsx", {7, u"Jetways possible: no", false}},
        {"bonanza-a36", {1, u"Jetways possible: no", false}},
        {"utlive-a320-ai", {115, u"Jetways possible: no", true}},
        {"pmdg777-repaint-p3d", {3, u"Jetways possible: yes", true}},
        {"bae146-msfs", {11, u"Jetways possible: no", false}},
        {"hampden-fs9", {1, u"Jetways possible: no", false}},
    };
    int aircraft = 0;
    for (const auto &entry : fs::directory_iterator(corpus)) {
        if (!entry.is_directory())
            continue;
        SCOPED_TRACE(entry.path().filename().string());
        clsIniFile ini;
        FolderLoadResult result;
        ASSERT_NO_THROW(result = load(entry.path(), ini));
        EXPECT_TRUE(result.isAircraftFolder);
        EXPECT_EQ(result.Descriptions.size(), result.rows.size());
        for (const GridRow &row : result.rows)
            EXPECT_TRUE(row[GridColumn::Section].starts_with(u"FLTSIM."));
        ++aircraft;
        // Reading the first row alone changes nothing of it, of the row count or of what opens.
        clsIniFile leanIni;
        FolderLoadInput firstRowOnly;
        firstRowOnly.firstRowOnly = true;
        const FolderLoadResult lean = load(entry.path(), leanIni, firstRowOnly);
        ASSERT_EQ(lean.rows.size(), result.rows.size());
        EXPECT_EQ(lean.Descriptions.size(), result.Descriptions.size());
        EXPECT_EQ(lean.rowToOpen, result.rowToOpen);
        EXPECT_EQ(lean.current, result.current);
        EXPECT_EQ(column(lean, GridColumn::Section), column(result, GridColumn::Section));
        if (!result.rows.empty()) {
            EXPECT_EQ(lean.rows.front(), result.rows.front());
        }
        for (const auto &[name, expected] : known) {
            if (entry.path().filename() == name) {
                EXPECT_EQ(result.rows.size(), expected.rows);
                EXPECT_EQ(result.txt_Jetways.text, expected.jetways);
                EXPECT_EQ(result.chk_Exit[0], expected.exit0Checked);
            }
        }
    }
    EXPECT_GE(aircraft, 6);
}
