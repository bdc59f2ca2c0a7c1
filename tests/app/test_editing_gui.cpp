// The edit buttons and the key removal dialog: each action asks first when it should, reaches the file, and
// opens the row again.
#include "common/aircraftfolder.h"
#include "editing/frm_remove.h"
#include "startupfixture.h"

using namespace fleetwright;
using Editing = test::StartUp;

namespace {

const std::string ORIGINAL = "[general]\r\natc_type=SKY\r\n"
                             "[fltsim.0]\r\ntitle=Skyliner Blue\r\nmodel=\r\nsim=skyliner\r\natc_airline=Old\r\n"
                             "[fltsim.1]\r\ntitle=Skyliner Red\r\nmodel=\r\nSIM=skyliner\r\natc_airline=Old // was\r\n";

} // namespace

TEST_F(Editing, EachButtonAsksWritesAndOpensTheRowAgain)
{
    test::writeBytes(dir / "Skyliner" / "model" / "model.cfg", "[models]\r\nnormal=skyliner\r\n");
    test::writeBytes(dir / "Skyliner" / "model" / "skyliner.mdl", test::modelBytes("MDL9"));
    std::filesystem::create_directories(dir / "Skyliner" / "texture.Red");
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    const auto aircraft = openAircraft(form, ORIGINAL, "Skyliner");
    const auto has = [&](const std::string &part) {
        return test::readBytes(aircraft / "aircraft.cfg").find(part) != std::string::npos;
    };
    openRow(form, 1);
    c.txt_Title->setText(QStringLiteral("Skyliner Green"));
    c.chk_atc_heavy->setChecked(true);
    c.txt_FS9Radius->setText(QStringLiteral("50"));
    c.txt_general_atc_type->setText(QStringLiteral("SKYWORKS"));
    c.combo_Texture->setCurrentIndex(c.combo_Texture->findText(QStringLiteral("Red")));
    for (QPushButton *action : {c.cmd_cfg_Update, c.cmd_Update_all_ui_Type, c.cmd_Associate}) {
        dialogs.pushAnswer(false);
        action->click();
    }
    EXPECT_EQ(test::readBytes(aircraft / "aircraft.cfg"), ORIGINAL) << "No writes nothing";
    EXPECT_FALSE(std::filesystem::exists(aircraft / "aircraft.corvane"));

    dialogs.pushAnswer(true);
    c.cmd_cfg_Update->click();
    EXPECT_TRUE(has("[general]\r\natc_type=SKYWORKS\r\n") && has("title=Skyliner Green\r\n") && has("atc_heavy=1\r\n")
                && has("atc_parking_codes=\r\n"));
    EXPECT_EQ(test::readBytes(aircraft / "aircraft.corvane"), ORIGINAL);
    EXPECT_EQ(test::readBytes(aircraft / "model" / "skyliner.mdl")[28], 50);
    EXPECT_TRUE(c.chk_atc_heavy->isChecked()) << "the row is open again";

    form.ConfirmUpdates = false;
    c.combo_Texture->setCurrentIndex(c.combo_Texture->findText(QStringLiteral("Red")));
    c.cmd_Associate->click();
    EXPECT_TRUE(has("texture=Red\r\n"));
    // Update-all follows the check marks: with [general] first, row 1 is [fltsim.0].
    c.txt_atc_Airline->setText(QStringLiteral("Sky"));
    c.ListView1->topLevelItem(1)->setCheckState(0, Qt::Checked);
    c.cmd_Update_all_atc_airline->click();
    EXPECT_TRUE(has("atc_airline=Sky\r\n[fltsim.1]") && has("atc_airline=Old\r\natc_parking"));
    EXPECT_EQ(c.txt_atc_Airline->text(), QStringLiteral("Old")) << "the open row is read again";
    EXPECT_EQ(dialogs.records().size(), 4u);
}

TEST_F(Editing, KeyRemovalAsksAlwaysAndReloadsAfterADelete)
{
    frm_Main form(&dialogs);
    const auto aircraft = openAircraft(form, ORIGINAL);
    form.ConfirmUpdates = false;
    test::ModalDialogs<frm_Remove> removal([&](frm_Remove &dialog) {
        EXPECT_EQ(dialog.List1()->count(), 4) << "the keys of the variations, once each";
        dialog.List1()->findItems(QStringLiteral("sim"), Qt::MatchExactly).front()->setCheckState(Qt::Checked);
        for (const bool yes : {false, true}) {
            dialogs.pushAnswer(yes);
            dialog.findChild<QPushButton *>(QStringLiteral("cmd_Wipe"))->click();
        }
        form.controls().ListView1->clear();
        dialog.close();
    });
    form.controls().mnuDelKeys->trigger();
    EXPECT_EQ(removal.opened, 1);
    EXPECT_EQ(test::readBytes(aircraft / "aircraft.corvane"), ORIGINAL);
    EXPECT_EQ(dialogs.records().at(2).text, u"A total of 2 keys have been deleted in the aircraft.cfg");
    EXPECT_EQ(test::readBytes(aircraft / "aircraft.cfg").find("IM="), std::string::npos) << "both spellings";
    EXPECT_EQ(form.controls().ListView1->topLevelItemCount(), 2);
}
