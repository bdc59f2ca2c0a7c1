#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QContextMenuEvent>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "app/frm_main.h"
#include "app/gui/folderwidgets.h"
#include "app/gui/textconvert.h"
#include "editing/frm_main_fields.h"
#include "startupfixture.h"

using fleetwright::DialogKind;
using fleetwright::DialogRecord;
using fleetwright::test::readBytes;
using fleetwright::test::writeBytes;
using Fields = fleetwright::test::StartUp;

namespace {

QString nativeText(const std::filesystem::path &path)
{
    return QDir::toNativeSeparators(QString::fromStdString(path.string()));
}

std::filesystem::path makeAircraft(const std::filesystem::path &root, std::string_view cfg)
{
    const auto folder = root / "Corvane 737";
    writeBytes(folder / "aircraft.cfg", cfg);
    return folder;
}

constexpr char TWO_ROWS[] = "[fltsim.0]\r\ntitle=Blue\r\natc_parking_types=RAMP,GATE\r\ndescription=blue one\r\n"
                            "[fltsim.1]\r\ntitle=Red\r\natc_parking_types=GATE,HANGAR\r\ndescription=red one\r\n"
                            "[airplane_geometry]\r\nwing_span=100 // ft\r\n"
                            "[effects]\r\nwake=fx_wake, 1\r\nwater=fx_spray\r\n";

FieldsController *controller(const frm_Main &form)
{
    return form.findChild<FieldsController *>(QStringLiteral("FieldsController"));
}

// The form on screen and active, so that focus changes send their events.
void showActive(frm_Main &form)
{
    form.show();
    QApplication::setActiveWindow(&form);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
}

} // namespace

TEST_F(Fields, WingSpanRipplesThroughMetresHalfAndSpot)
{
    const auto aircraft = makeAircraft(dir.path(), TWO_ROWS);
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    c.Dir1->setPath(nativeText(aircraft));
    ASSERT_EQ(c.ListView1->topLevelItemCount(), 2);

    // The comment behind the value is cut where the number ends.
    EXPECT_EQ(c.txt_WingSpan_Org->text(), QStringLiteral("100"));
    EXPECT_EQ(c.txt_WingSpan_Org_C1->text(), QStringLiteral("30.48"));
    EXPECT_EQ(c.txt_WingSpan_Org_C2->text(), QStringLiteral("15.24"));
    EXPECT_EQ(c.txt_FSX_Spot_Org->text(), QStringLiteral("16"));

    QTest::keyClicks(c.txt_WingSpan_New, QStringLiteral("100"));
    EXPECT_EQ(c.txt_WingSpan_New_C1->text(), QStringLiteral("30.48"));
    EXPECT_EQ(c.txt_WingSpan_New_C2->text(), QStringLiteral("15.24"));
    EXPECT_EQ(c.txt_FSX_Spot_New->text(), QStringLiteral("16"));
    c.txt_WingSpan_New->clear();
    EXPECT_TRUE(c.txt_WingSpan_New_C1->text().isEmpty());
    EXPECT_TRUE(c.txt_WingSpan_New_C2->text().isEmpty());
    EXPECT_TRUE(c.txt_FSX_Spot_New->text().isEmpty());

    // The spot is rounded up by the part behind the point alone.
    for (const auto &[half, spot] : {std::pair {"31.01", "32"}, {"31.0", "31"}, {"-3.5", "-2"}, {"31", "31"}}) {
        c.txt_WingSpan_New_C2->setText(QString::fromLatin1(half));
        EXPECT_EQ(c.txt_FSX_Spot_New->text(), QString::fromLatin1(spot)) << half;
    }

    // With no rows the new value leads nowhere.
    form.ResetValues();
    QTest::keyClicks(c.txt_WingSpan_New, QStringLiteral("80"));
    EXPECT_EQ(c.txt_WingSpan_New->text(), QStringLiteral("80"));
    EXPECT_TRUE(c.txt_WingSpan_New_C1->text().isEmpty());
    EXPECT_TRUE(dialogs.records().empty());
}

TEST_F(Fields, NumberBoxesTakeOnlyWhatStaysANumber)
{
    const auto aircraft = makeAircraft(dir.path(), TWO_ROWS);
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    c.Dir1->setPath(nativeText(aircraft));
    ASSERT_EQ(form.DecimalSeparator, u'.');

    // One separator only, whichever came first; a comma is shown as the platform's point.
    QTest::keyClicks(c.txt_Exit_0[1], QStringLiteral("1,5.,x7"));
    EXPECT_EQ(c.txt_Exit_0[1]->text(), QStringLiteral("1.57"));
    // "-" is let through anywhere in an exit box, and then nothing follows it that makes no number.
    QTest::keyClicks(c.txt_Exit_0[2], QStringLiteral("-12-3"));
    EXPECT_EQ(c.txt_Exit_0[2]->text(), QStringLiteral("-12-"));
    QTest::keyClick(c.txt_Exit_0[2], Qt::Key_Backspace);
    EXPECT_EQ(c.txt_Exit_0[2]->text(), QStringLiteral("-12"));
    // The wing span box has no sign.
    QTest::keyClicks(c.txt_WingSpan_New, QStringLiteral("-3a.5."));
    EXPECT_EQ(c.txt_WingSpan_New->text(), QStringLiteral("3.5"));

    form.DecimalSeparator = u',';
    c.txt_Exit_1[0]->clear();
    QTest::keyClicks(c.txt_Exit_1[0], QStringLiteral("2.5"));
    EXPECT_EQ(c.txt_Exit_1[0]->text(), QStringLiteral("2,5"));
    EXPECT_TRUE(dialogs.records().empty());
}

TEST_F(Fields, AnExitRowIsCompleteWhenNoValueIsEmpty)
{
    const auto aircraft = makeAircraft(dir.path(), TWO_ROWS);
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    c.Dir1->setPath(nativeText(aircraft));
    ASSERT_FALSE(c.chk_Exit_2->isChecked());
    for (int k = 0; k < 4; ++k)
        c.txt_Exit_2[static_cast<std::size_t>(k)]->setText(QStringLiteral("1"));
    EXPECT_FALSE(c.chk_Exit_2->isChecked());
    c.txt_Exit_2[4]->setText(QStringLiteral(" "));
    EXPECT_TRUE(c.chk_Exit_2->isChecked());
    EXPECT_FALSE(c.chk_Exit_1->isChecked());
    c.txt_Exit_2[0]->clear();
    EXPECT_FALSE(c.chk_Exit_2->isChecked());
}

TEST_F(Fields, FieldsHandTheFocusBackWhileNoRowIsOpen)
{
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    showActive(form);
    form.ResetValues();

    // No row open: the title is grey, and the grid takes the focus back.
    for (QWidget *field : std::initializer_list<QWidget *> {c.txt_atc_Id, c.txt_FS9Radius, c.txt_atc_ParkingCodes,
                                                            c.txt_Exit_0[3], c.txt_general_atc_type, c.chk_Exit_1}) {
        field->setEnabled(true);
        field->setFocus();
        EXPECT_TRUE(c.ListView1->hasFocus()) << field->objectName().toStdString();
    }

    // A white title lets the first family in; the exits need rows in the grid.
    setBackColour(c.txt_Title, colourFromBgr(0xFFFFFF));
    c.txt_atc_Id->setFocus();
    EXPECT_TRUE(c.txt_atc_Id->hasFocus());
    c.txt_Exit_0[3]->setFocus();
    EXPECT_TRUE(c.ListView1->hasFocus());
    addVariationRow(c.ListView1, QStringLiteral("FLTSIM.0"));
    c.txt_Exit_0[3]->setFocus();
    EXPECT_TRUE(c.txt_Exit_0[3]->hasFocus());
    // The exit checks are for show only.
    c.chk_Exit_1->setFocus();
    EXPECT_TRUE(c.ListView1->hasFocus());
}

TEST_F(Fields, ParkingTypesComeFromThePickList)
{
    const auto aircraft = makeAircraft(dir.path(), TWO_ROWS);
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    showActive(form);
    c.Dir1->setPath(nativeText(aircraft));
    FieldsController *fields = controller(form);
    ASSERT_NE(fields, nullptr);

    // Row 2 holds a type that is not in the list: it stays until the list is used.
    c.ListView1->setCurrentItem(c.ListView1->topLevelItem(1));
    form.ListView1_Click();
    form.ListView1_DblClick();
    EXPECT_EQ(c.lblSelections->text(), QStringLiteral("GATE,HANGAR"));
    c.cmdDropDown->click();
    ASSERT_TRUE(c.lstParking->isVisible());
    EXPECT_TRUE(c.lstParking->hasFocus());
    EXPECT_TRUE(c.lstParking->item(2)->isSelected());
    EXPECT_EQ(c.lstParking->selectedItems().size(), 1);
    EXPECT_EQ(c.lblSelections->text(), QStringLiteral("GATE,HANGAR"));

    // A click on an entry rebuilds the caption in the list's order, and the tooltip follows.
    QTest::mouseClick(c.lstParking->viewport(), Qt::LeftButton, {},
                      c.lstParking->visualItemRect(c.lstParking->item(5)).center());
    QTest::mouseClick(c.lstParking->viewport(), Qt::LeftButton, {},
                      c.lstParking->visualItemRect(c.lstParking->item(0)).center());
    EXPECT_EQ(c.lblSelections->text(), QStringLiteral("CARGO,GATE,RAMP"));
    EXPECT_EQ(c.lblSelections->toolTip(), QStringLiteral("CARGO,GATE,RAMP"));

    // The focus going to the button closes the list, and the button's click then leaves it closed.
    c.cmdDropDown->setFocus();
    EXPECT_FALSE(c.lstParking->isVisible());
    EXPECT_TRUE(fields->ParkingListJustClosed);
    c.cmdDropDown->click();
    EXPECT_FALSE(c.lstParking->isVisible());
    EXPECT_FALSE(fields->ParkingListJustClosed);
    c.cmdDropDown->click();
    EXPECT_TRUE(c.lstParking->isVisible());
    // Losing the focus elsewhere closes it too.
    c.ListView1->setFocus();
    EXPECT_FALSE(c.lstParking->isVisible());
    EXPECT_FALSE(fields->ParkingListJustClosed);
}

TEST_F(Fields, ParkingCodesAreHeldToFiveCodesOfFive)
{
    const auto aircraft = makeAircraft(dir.path(), TWO_ROWS);
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    c.Dir1->setPath(nativeText(aircraft));
    QLineEdit *codes = c.txt_atc_ParkingCodes;

    QTest::keyClicks(codes, QStringLiteral("KL M,ABCDEF"));
    EXPECT_EQ(codes->text(), QStringLiteral("KLM,ABCDE"));
    const DialogRecord tooLong {DialogKind::Information, u"",
                                u"A code may not be longer than 5 characters. If you want to efine another parking "
                                u"code, please type a 'comma' (',') now."};
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0], tooLong);

    QTest::keyClicks(codes, QStringLiteral(",C,D,E,"));
    EXPECT_EQ(codes->text(), QStringLiteral("KLM,ABCDE,C,D,E"));
    ASSERT_EQ(dialogs.records().size(), 2u);
    EXPECT_EQ(
        dialogs.records()[1],
        (DialogRecord {DialogKind::Information, u"", u"You are not allowed to add more than five (5) parkig codes"}));

    // Only the last code counts: typing into the first lets it grow.
    codes->setCursorPosition(0);
    QTest::keyClicks(codes, QStringLiteral("XYZ"));
    EXPECT_EQ(codes->text(), QStringLiteral("XYZKLM,ABCDE,C,D,E"));
    EXPECT_EQ(dialogs.records().size(), 2u);
}

TEST_F(Fields, EffectBoxesMenuAndUpdate)
{
    const auto aircraft = makeAircraft(dir.path(), TWO_ROWS);
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    showActive(form);
    c.Dir1->setPath(nativeText(aircraft));
    ASSERT_EQ(form.EffectIndex, -1);
    ASSERT_EQ(c.txt_effects[0]->text(), QStringLiteral("fx_wake"));
    ASSERT_TRUE(c.chk_Effect[0]->isChecked());

    // Entering a box marks it, and only it.
    c.txt_effects[3]->setFocus();
    EXPECT_EQ(form.EffectIndex, 3);
    EXPECT_EQ(backColour(c.txt_effects[3]), colourFromBgr(0xC0E0FF));
    EXPECT_EQ(backColour(c.txt_effects[0]), colourFromBgr(0xFFFFFF));
    c.txt_effects[4]->setFocus();
    EXPECT_EQ(backColour(c.txt_effects[3]), colourFromBgr(0xFFFFFF));

    // A right click on a box picks it and pops up the effects menu.
    // The press gives the box the focus, and the platform follows it with its context-menu event.
    QTest::mousePress(c.txt_effects[1], Qt::RightButton);
    QContextMenuEvent menuEvent(QContextMenuEvent::Mouse, QPoint(2, 2), c.txt_effects[1]->mapToGlobal(QPoint(2, 2)));
    QApplication::sendEvent(c.txt_effects[1], &menuEvent);
    QTest::mouseRelease(c.txt_effects[1], Qt::RightButton);
    EXPECT_EQ(form.EffectIndex, 1);
    EXPECT_TRUE(c.frm_RightClick.mnuThisEffects->isVisible());
    c.frm_RightClick.mnuThisEffects->close();
    c.frm_RightClick.mnuEffectsDisable->trigger();
    EXPECT_TRUE(c.txt_effects[1]->text().isEmpty());
    form.EffectIndex = 6;
    c.txt_effects[6]->clear();
    c.frm_RightClick.mnuEffectsDefault->trigger();
    EXPECT_EQ(c.txt_effects[6]->text(), QStringLiteral("fx_engstrt"));
    EXPECT_TRUE(c.chk_Effect[6]->isChecked());
    dialogs.pushFile(u"C:\\Effects\\FX_TEST.FX");
    form.EffectIndex = 2;
    c.frm_RightClick.mnuEffectsSelect->trigger();
    EXPECT_EQ(c.txt_effects[2]->text(), QStringLiteral("FX_TEST"));

    // The update writes the row's description and the boxes, then the second row is open again.
    c.ListView1->setCurrentItem(c.ListView1->topLevelItem(1));
    form.ListView1_DblClick();
    c.txt_Description->setPlainText(QStringLiteral("red two"));
    dialogs.pushAnswer(true);
    c.cmd_Effect_Update->click();
    EXPECT_EQ(readBytes(aircraft / "aircraft.cfg"),
              "[fltsim.0]\r\ntitle=Blue\r\natc_parking_types=RAMP,GATE\r\ndescription=blue one\r\n"
              "[fltsim.1]\r\ntitle=Red\r\natc_parking_types=GATE,HANGAR\r\ndescription=red two\r\n"
              "[airplane_geometry]\r\nwing_span=100 // ft\r\n"
              "[effects]\r\nwake=fx_wake,1\r\nwater=\r\ndirt=FX_TEST\r\nconcrete=\r\ntouchdown=\r\ncontrail=\r\n"
              "startup=fx_engstrt,1\r\nvaportrail_l=\r\nvaportrail_r=\r\nl_wingtipvortice=\r\nr_wingtipvortice=\r\n");
    EXPECT_EQ(readBytes(aircraft / "aircraft.corvane"), std::string(TWO_ROWS));
    EXPECT_EQ(c.ListView1->currentItem(), c.ListView1->topLevelItem(1));
    EXPECT_EQ(c.txt_Title->text(), QStringLiteral("Red"));
    EXPECT_EQ(c.txt_Description->toPlainText(), QStringLiteral("red two"));
    EXPECT_EQ(c.txt_effects[2]->text(), QStringLiteral("FX_TEST"));
    EXPECT_EQ(form.EffectIndex, -1);
    EXPECT_EQ(dialogs.pendingAnswers(), 0u);
}
