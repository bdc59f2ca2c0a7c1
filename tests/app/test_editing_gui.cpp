// Editing the open row: what typing does, where the focus may go, the pickers; the edit buttons and the key
// removal dialog ask first when they should, reach the file, and open the row again.
#include "common/aircraftfolder.h"
#include "editing/gui/frm_remove.h"
#include "startupfixture.h"

using namespace fleetwright;
using Editing = test::StartUp;

namespace {

const std::string ORIGINAL = "[general]\r\natc_type=SKY\r\n"
                             "[fltsim.0]\r\ntitle=Skyliner Blue\r\nmodel=\r\nsim=skyliner\r\natc_airline=Old\r\n"
                             "[fltsim.1]\r\ntitle=Skyliner Red\r\nmodel=\r\nSIM=skyliner\r\natc_airline=Old // was\r\n";
const std::string TWO_ROWS = "[fltsim.0]\r\ntitle=Blue\r\n[fltsim.1]\r\ntitle=Red\r\natc_parking_types=GATE,HANGAR\r\n"
                             "[airplane_geometry]\r\nwing_span=100 // ft\r\n[effects]\r\nwater=fx_spray\r\n";

} // namespace

TEST_F(Editing, EachButtonAsksWritesAndOpensTheRowAgain)
{
    test::writeBytes(dir / "Skyliner" / "model" / "model.cfg", "[models]\r\nnormal=skyliner\r\n");
    test::writeBytes(dir / "Skyliner" / "model" / "skyliner.mdl", test::modelBytes("MDL9"));
    std::filesystem::create_directories(dir / "Skyliner" / "texture.Red");
    frm_Main form(&dialogs);
    const Ui::frm_Main &c = form.controls();
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

    form.state().ConfirmUpdates = false;
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
    form.state().ConfirmUpdates = false;
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

TEST_F(Editing, TypingIsHeldToNumbersAndCodesAndRipplesThrough)
{
    frm_Main form(&dialogs);
    const Ui::frm_Main &c = form.controls();
    openAircraft(form, TWO_ROWS);
    QTest::keyClicks(c.txt_WingSpan_New, QStringLiteral("-1a00"));
    EXPECT_EQ(c.txt_WingSpan_New_C2->text(), QStringLiteral("15.24"));
    EXPECT_EQ(c.txt_FSX_Spot_New->text(), QStringLiteral("16"));
    c.txt_WingSpan_New_C2->setText(QStringLiteral("-3.5"));
    EXPECT_EQ(c.txt_FSX_Spot_New->text(), QStringLiteral("-2")) << "rounded up by the part behind the point";
    QTest::keyClicks(c.txt_Exit_0_1, QStringLiteral("1,5.,x7"));
    EXPECT_EQ(c.txt_Exit_0_1->text(), QStringLiteral("1.57"));
    QTest::keyClicks(c.txt_atc_ParkingCodes, QStringLiteral("KL M,ABCDEF,C,D,E,"));
    EXPECT_EQ(c.txt_atc_ParkingCodes->text(), QStringLiteral("KLM,ABCDE,C,D,E"));
    EXPECT_EQ(dialogs.records().size(), 2u);
}

TEST_F(Editing, FocusPickListsAndEffects)
{
    frm_Main form(&dialogs);
    const Ui::frm_Main &c = form.controls();
    form.show();
    QApplication::setActiveWindow(&form);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form)); // so that focus changes send their events
    c.txt_atc_Id->setEnabled(true);
    c.txt_atc_Id->setFocus();
    EXPECT_TRUE(c.ListView1->hasFocus()) << "no row is open";
    const auto aircraft = openAircraft(form, TWO_ROWS);
    openRow(form, 1);

    c.cmdDropDown->click();
    ASSERT_TRUE(c.lstParking->isVisible() && c.lstParking->hasFocus());
    EXPECT_EQ(c.lstParking->selectedItems().size(), 1) << "HANGAR is not in the list";
    for (const int row : {5, 0})
        QTest::mouseClick(c.lstParking->viewport(), Qt::LeftButton, {},
                          c.lstParking->visualItemRect(c.lstParking->item(row)).center());
    EXPECT_EQ(c.lblSelections->text(), QStringLiteral("CARGO,GATE,RAMP")) << "in the list's order";
    c.cmdDropDown->setFocus();
    c.cmdDropDown->click();
    EXPECT_FALSE(c.lstParking->isVisible()) << "the focus closed it, and the click left it closed";

    c.txt_effects_2->setFocus();
    dialogs.pushFile(u"C:\\Effects\\FX_TEST.FX");
    form.rightClickMenus().mnuEffectsSelect->trigger();
    form.openAircraft().EffectIndex = 6;
    form.rightClickMenus().mnuEffectsDefault->trigger();
    c.txt_Description->setPlainText(QStringLiteral("red two"));
    dialogs.pushAnswer(true);
    c.cmd_Effect_Update->click();
    const std::string cfg = test::readBytes(aircraft / "aircraft.cfg");
    EXPECT_NE(cfg.find("description=red two\r\n"), std::string::npos);
    EXPECT_NE(cfg.find("water=fx_spray\r\nwake=\r\ndirt=FX_TEST\r\n"), std::string::npos);
    EXPECT_NE(cfg.find("startup=fx_engstrt,1\r\n"), std::string::npos);
    EXPECT_EQ(c.ListView1->currentItem(), c.ListView1->topLevelItem(1)) << "the row is open again";
}
