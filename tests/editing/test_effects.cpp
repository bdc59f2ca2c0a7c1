#include <filesystem>

#include <gtest/gtest.h>

#include "core/clsinifile.h"
#include "core/runtimeerror.h"
#include "core/scripteddialogs.h"
#include "editing/aircraftcfgtest.h"
#include "editing/effects.h"
#include "common/tempdir.h"

using namespace fleetwright;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;

namespace {

// Boxes as the folder load fills them from "wake=fx_wake, 1 // keep" and the rest of a typical section.
EffectFields typicalFields()
{
    EffectFields fields;
    for (std::size_t k = 0; k < EFFECT_COUNT; ++k) {
        EffectDefault(fields, static_cast<int>(k));
    }
    fields.txt_effects[1].clear(); // water disabled
    fields.chk_Effect[2] = true;   // dirt runs once
    fields.txt_effects[3].clear();
    fields.chk_Effect[3] = true; // concrete: ",1"
    return fields;
}

constexpr char EFFECTS_WRITTEN[] =
    "wake=fx_wake\r\nwater=\r\ndirt=fx_tchdrt,1\r\nconcrete=,1\r\ntouchdown=fx_tchdwn,1\r\n"
    "contrail=fx_contrail_l\r\nstartup=fx_engstrt,1\r\nvaportrail_l=fx_vaportrail_l\r\n"
    "vaportrail_r=fx_vaportrail_r\r\nl_wingtipvortice=fx_wingtipvortice_l,1\r\n"
    "r_wingtipvortice=fx_wingtipvortice_r,1\r\n";

struct EffectsFile : test::AircraftCfgTest
{
    bool update(int position, std::u16string description, std::u16string onLoad, bool confirm = false,
                bool backup = true)
    {
        EffectUpdateInput input;
        input.selectedPosition = position;
        input.description = std::move(description);
        input.DescriptionOnLoad = std::move(onLoad);
        input.fields = typicalFields();
        return cmd_Effect_Update(ini, input, confirm, backup, dialogs);
    }
};

} // namespace

TEST(EffectFieldsTest, DefaultDisableAndTheValueForms)
{
    EffectFields fields;
    EffectDefault(fields, -1);
    EXPECT_EQ(fields.txt_effects, EffectFields {}.txt_effects);

    EffectDefault(fields, 4);
    EffectDefault(fields, 7);
    EXPECT_EQ(fields.txt_effects[4], u"fx_tchdwn");
    EXPECT_TRUE(fields.chk_Effect[4]);
    EXPECT_EQ(fields.txt_effects[7], u"fx_vaportrail_l");
    EXPECT_FALSE(fields.chk_Effect[7]);

    EffectDisable(fields, 4);
    EXPECT_EQ(fields.txt_effects[4], u"");
    EXPECT_FALSE(fields.chk_Effect[4]);
    // No guard of its own: no box entered is a fault.
    try {
        EffectDisable(fields, -1);
        FAIL() << "no fault";
    } catch (const RuntimeError &error) {
        EXPECT_EQ(error.number(), 9);
    }

    EXPECT_EQ(effectValue(u"fx_wake", false), u"fx_wake");
    EXPECT_EQ(effectValue(u"fx_wake", true), u"fx_wake,1");
    EXPECT_EQ(effectValue(u"", false), u"");
    EXPECT_EQ(effectValue(u"", true), u",1");
}

TEST(EffectFieldsTest, SelectKeepsTheBaseNameOfTheChosenFile)
{
    EXPECT_EQ(effectNameFromFile(u"C:\\x\\FX_TEST.FX"), u"FX_TEST");
    EXPECT_EQ(effectNameFromFile(u"abc"), u"abc");
    EXPECT_EQ(effectNameFromFile(u"/home/u/fx_smoke.fx"), u"fx_smoke");
    EXPECT_EQ(effectNameFromFile(u"C:\\x\\fx_a.fxx"), u"fx_a.fxx");

    ScriptedDialogs dialogs;
    EXPECT_EQ(EffectSelect(-1, u"C:\\Aircraft\\c737\\aircraft.cfg", dialogs), std::nullopt);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0],
              (DialogRecord {DialogKind::Information, u"",
                             u"Please click in a effect textbox first to select the effect you "
                             u"want to update"}));

    dialogs.pushFile(u"C:\\Effects\\FX_TEST.FX");
    EXPECT_EQ(EffectSelect(2, u"C:\\Aircraft\\c737\\aircraft.cfg", dialogs), u"FX_TEST");
    EXPECT_EQ(dialogs.records()[1],
              (DialogRecord {DialogKind::OpenFile, u"", u"Effect (*.fx) | *.fx", {u"C:\\Aircraft\\c737"}}));
    dialogs.pushFile(std::nullopt);
    EXPECT_EQ(EffectSelect(2, u"C:\\Aircraft\\c737\\aircraft.cfg", dialogs), std::nullopt);
}

TEST_F(EffectsFile, UpdateWritesAllElevenKeysAndAChangedDescription)
{
    write("[fltsim.0]\r\ntitle=A\r\ndescription=old // note\r\n\r\n[fltsim.1]\r\ntitle=B // blue\r\n"
          "description=b\r\n\r\n[effects]\r\n// effects of the model\r\nwake=fx_wake, 1 // keep\r\ndirt=fx_tchdrt\r\n"
          "concrete=fx_sparks\r\ntouchdown=fx_tchdwn,1\r\nstartup=fx_engstrt,1\r\n; contrail below\r\n\r\n"
          "[general]\r\natc_type=CORVANE\r\n");
    const std::string before = readBytes(file);
    EXPECT_TRUE(update(1, u"new text", u"old"));
    EXPECT_EQ(readBytes(file),
              "[fltsim.0]\r\ntitle=A\r\ndescription=new text\r\n\r\n[fltsim.1]\r\ntitle=B // blue\r\n"
              "description=b\r\n\r\n[effects]\r\n// effects of the model\r\nwake=fx_wake\r\n"
              "dirt=fx_tchdrt,1\r\nconcrete=,1\r\ntouchdown=fx_tchdwn,1\r\nstartup=fx_engstrt,1\r\n"
              "water=\r\ncontrail=fx_contrail_l\r\nvaportrail_l=fx_vaportrail_l\r\n"
              "vaportrail_r=fx_vaportrail_r\r\nl_wingtipvortice=fx_wingtipvortice_l,1\r\n"
              "r_wingtipvortice=fx_wingtipvortice_r,1\r\n; contrail below\r\n\r\n"
              "[general]\r\natc_type=CORVANE\r\n");
    // The first backup stays as the file stood before the first change.
    EXPECT_EQ(readBytes(dir / "aircraft.corvane"), before);
    EXPECT_TRUE(dialogs.records().empty());

    EXPECT_TRUE(update(2, u"b", u"b"));
    EXPECT_EQ(readBytes(dir / "aircraft.corvane"), before);
}

TEST_F(EffectsFile, TheDescriptionGoesToTheSectionOfTheRowsPosition)
{
    // A gap in the numbering: the second row is [fltsim.3], yet the description goes to [fltsim.1].
    write("[fltsim.0]\r\ntitle=A\r\n[fltsim.3]\r\ntitle=D\r\ndescription=d\r\n[effects]\r\n" + std::string()
          + EFFECTS_WRITTEN);
    EXPECT_TRUE(update(2, u"for D", u"d", false, false));
    EXPECT_EQ(readBytes(file),
              "[fltsim.0]\r\ntitle=A\r\n[fltsim.3]\r\ntitle=D\r\ndescription=d\r\n[effects]\r\n"
                  + std::string(EFFECTS_WRITTEN) + "[fltsim.1]\r\ndescription=for D\r\n");
    EXPECT_FALSE(std::filesystem::exists(dir / "aircraft.corvane"));

    // A section ahead of [fltsim.0]: rows and places are counted the same way, so row 1 still names fltsim.0.
    write("[general]\r\natc_type=X\r\n[fltsim.0]\r\ntitle=A\r\ndescription=a\r\n");
    EXPECT_TRUE(update(1, u"for A", u"a", false, false));
    EXPECT_EQ(readBytes(file),
              "[general]\r\natc_type=X\r\n[fltsim.0]\r\ntitle=A\r\ndescription=for A\r\n"
              "[effects]\r\n"
                  + std::string(EFFECTS_WRITTEN));
}

TEST_F(EffectsFile, AnUnchangedDescriptionKeepsItsComment)
{
    write("[fltsim.0]\r\ndescription=see a//b\r\n[effects]\r\n" + std::string(EFFECTS_WRITTEN));
    const std::string before = readBytes(file);
    EXPECT_TRUE(update(1, u"see a", u"see a", false, false));
    EXPECT_EQ(readBytes(file), before);
}

TEST_F(EffectsFile, NoLeavesFileAndBackupAlone)
{
    write("[fltsim.0]\r\ntitle=A\r\n[effects]\r\nwake=fx_x\r\n");
    const std::string before = readBytes(file);
    dialogs.pushAnswer(false);
    EXPECT_FALSE(update(1, u"x", u"", true, true));
    EXPECT_EQ(readBytes(file), before);
    EXPECT_FALSE(std::filesystem::exists(dir / "aircraft.corvane"));
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0], (DialogRecord {DialogKind::Question, u"", u"Are you sure?"}));

    dialogs.pushAnswer(true);
    EXPECT_TRUE(update(1, u"", u"", true, true));
    EXPECT_EQ(readBytes(file),
              "[fltsim.0]\r\ntitle=A\r\n[effects]\r\nwake=fx_wake\r\n"
                  + std::string(EFFECTS_WRITTEN).substr(std::string("wake=fx_wake\r\n").size()));
    EXPECT_EQ(readBytes(dir / "aircraft.corvane"), before);
}

TEST_F(EffectsFile, NoSelectedRowFailsAfterTheBackup)
{
    write("[fltsim.0]\r\ntitle=A\r\n");
    EffectUpdateInput input;
    input.fields = typicalFields();
    try {
        cmd_Effect_Update(ini, input, false, true, dialogs);
        FAIL() << "no fault";
    } catch (const RuntimeError &error) {
        EXPECT_EQ(error.number(), 91);
    }
    EXPECT_EQ(readBytes(file), "[fltsim.0]\r\ntitle=A\r\n");
    EXPECT_TRUE(std::filesystem::exists(dir / "aircraft.corvane"));
}

TEST_F(EffectsFile, ReadOnlyFileLosesTheUpdateWithoutAWord)
{
    write("[fltsim.0]\r\ndescription=a\r\n[effects]\r\nwake=fx_x\r\n");
    const std::string before = readBytes(file);
    std::filesystem::permissions(file, std::filesystem::perms::owner_write, std::filesystem::perm_options::remove);
    EXPECT_TRUE(update(1, u"b", u"a", false, false));
    std::filesystem::permissions(file, std::filesystem::perms::owner_write, std::filesystem::perm_options::add);
    EXPECT_EQ(readBytes(file), before);
    EXPECT_TRUE(dialogs.records().empty());
}
