// The editor fields of the open row: what typing does, where the focus may go, the parking and effect pickers.

#include "startupfixture.h"

using namespace fleetwright;
using Fields = test::StartUp;

namespace {

const std::string TWO_ROWS = "[fltsim.0]\r\ntitle=Blue\r\n[fltsim.1]\r\ntitle=Red\r\natc_parking_types=GATE,HANGAR\r\n"
                             "[airplane_geometry]\r\nwing_span=100 // ft\r\n[effects]\r\nwater=fx_spray\r\n";

} // namespace

TEST_F(Fields, TypingIsHeldToNumbersAndCodesAndRipplesThrough)
{
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    openAircraft(form, TWO_ROWS);
    QTest::keyClicks(c.txt_WingSpan_New, QStringLiteral("-1a00"));
    EXPECT_EQ(c.txt_WingSpan_New_C2->text(), QStringLiteral("15.24"));
    EXPECT_EQ(c.txt_FSX_Spot_New->text(), QStringLiteral("16"));
    c.txt_WingSpan_New_C2->setText(QStringLiteral("-3.5"));
    EXPECT_EQ(c.txt_FSX_Spot_New->text(), QStringLiteral("-2")) << "rounded up by the part behind the point";
    QTest::keyClicks(c.txt_Exit_0[1], QStringLiteral("1,5.,x7"));
    EXPECT_EQ(c.txt_Exit_0[1]->text(), QStringLiteral("1.57"));
    QTest::keyClicks(c.txt_atc_ParkingCodes, QStringLiteral("KL M,ABCDEF,C,D,E,"));
    EXPECT_EQ(c.txt_atc_ParkingCodes->text(), QStringLiteral("KLM,ABCDE,C,D,E"));
    EXPECT_EQ(dialogs.records().size(), 2u);
}

TEST_F(Fields, FocusPickListsAndEffects)
{
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
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

    c.txt_effects[2]->setFocus();
    dialogs.pushFile(u"C:\\Effects\\FX_TEST.FX");
    c.frm_RightClick.mnuEffectsSelect->trigger();
    form.EffectIndex = 6;
    c.frm_RightClick.mnuEffectsDefault->trigger();
    c.txt_Description->setPlainText(QStringLiteral("red two"));
    dialogs.pushAnswer(true);
    c.cmd_Effect_Update->click();
    const std::string cfg = test::readBytes(aircraft / "aircraft.cfg");
    EXPECT_NE(cfg.find("description=red two\r\n"), std::string::npos);
    EXPECT_NE(cfg.find("water=fx_spray\r\nwake=\r\ndirt=FX_TEST\r\n"), std::string::npos);
    EXPECT_NE(cfg.find("startup=fx_engstrt,1\r\n"), std::string::npos);
    EXPECT_EQ(c.ListView1->currentItem(), c.ListView1->topLevelItem(1)) << "the row is open again";
}
