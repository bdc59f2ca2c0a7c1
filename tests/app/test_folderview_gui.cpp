#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "app/frm_main.h"
#include "app/gui/folderwidgets.h"
#include "app/gui/statusbarpanels.h"
#include "app/gui/textconvert.h"
#include "folderview/frm_listviewoptions.h"
#include "startupfixture.h"

using fleetwright::DialogKind;
using fleetwright::DialogRecord;
using fleetwright::test::writeBytes;
using Navigation = fleetwright::test::StartUp;

namespace {

QString nativeText(const std::filesystem::path &path)
{
    return QDir::toNativeSeparators(QString::fromStdString(path.string()));
}

} // namespace

TEST_F(Navigation, QuickButtonToASimulatorFolderThatHasGoneIsRefused)
{
    const auto fs9 = installFs9(true);
    const auto fsx = installFsx(true);
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    ASSERT_TRUE(c.opt_FSX->isChecked());

    // FS9's button moves the browser to its aircraft folder.
    c.opt_FS9->click();
    EXPECT_EQ(QDir(c.Dir1->path()), QDir(nativeText(fs9 / "Aircraft")));
    EXPECT_TRUE(dialogs.records().empty());

    // FSX's folder went away after start: the box, and the browser stays.
    std::filesystem::remove_all(fsx / "SimObjects");
    c.opt_FSX->click();
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0],
              (DialogRecord {DialogKind::Critical, u"",
                             u"The FSX path information in your registry is incorrect. The SimObject folder could not "
                             u"be found."}));
    EXPECT_EQ(QDir(c.Dir1->path()), QDir(nativeText(fs9 / "Aircraft")));

    // A sim folder that has gone since start-up.
    form.combo_SimFolder_Click(0);
    ASSERT_EQ(dialogs.records().size(), 2u);
    EXPECT_EQ(dialogs.records()[1].text, u"Change directory was not successful. Error: 76\r\nPath not found");
}

TEST_F(Navigation, UpwardsSelectsTheFolderJustLeft)
{
    std::filesystem::create_directories(dir / "Aircraft" / "Alpha");
    std::filesystem::create_directories(dir / "Aircraft" / "Bravo");
    std::filesystem::create_directories(dir / "Aircraft" / "Charlie");
    settings.SaveSetting(u"Path", toU16String(nativeText(dir / "Aircraft" / "Bravo")));
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    form.cmd_DirUp_Click();
    EXPECT_EQ(QDir(c.Dir1->path()), QDir(nativeText(dir / "Aircraft")));
    ASSERT_GE(c.Dir1->ListIndex(), 0);
    EXPECT_TRUE(c.Dir1->List(c.Dir1->ListIndex()).endsWith(QStringLiteral("Bravo")));
}

TEST_F(Navigation, ResetValuesEmptiesTheEditorUnlessGuarded)
{
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    addVariationRow(c.ListView1, QStringLiteral("FLTSIM.0"));
    c.txt_Title->setText(QStringLiteral("Corvane 737"));
    c.chk_Effect[3]->setChecked(true);
    c.lst_Airfile->addItem(QStringLiteral("c737.air"));
    form.AirFileName = u"c737.air";

    form.LoadGuard = true;
    form.ResetValues();
    EXPECT_EQ(c.ListView1->topLevelItemCount(), 1);
    EXPECT_EQ(c.txt_Title->text(), QStringLiteral("Corvane 737"));

    form.LoadGuard = false;
    form.ResetValues();
    EXPECT_EQ(c.ListView1->topLevelItemCount(), 0);
    EXPECT_TRUE(c.txt_Title->text().isEmpty());
    EXPECT_EQ(backColour(c.txt_Title), colourFromBgr(0xE0E0E0));
    EXPECT_EQ(backColour(c.txt_WingSpan_New), colourFromBgr(0xC0FFFF));
    EXPECT_EQ(backColour(c.txt_effects[0]), colourFromBgr(0xFFFFFF));
    EXPECT_EQ(c.txt_Jetways->text(), QStringLiteral("Jetways possible: no"));
    EXPECT_FALSE(c.chk_Effect[3]->isChecked());
    EXPECT_EQ(c.lst_Airfile->count(), 0);
    EXPECT_TRUE(form.AirFileName.empty());
    EXPECT_FALSE(c.opt_ac_Normal->isEnabled());
}

TEST_F(Navigation, ClickOnARowSetsTheDeleteCaptionAndReadsTheCurrentFiles)
{
    writeBytes(dir / "aircraft.cfg",
               "[fltsim.0]\r\ntitle=A\r\ntexture=klm/old // new paint\r\nsim=c737\r\n"
               "[fltsim.1]\r\ntitle=B\r\nmodel=\r\n");
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    form.AircraftIni().setPath(fleetwright::test::widePath(dir / "aircraft.cfg"));
    // Six rows as a file numbered 0, 1, 2, 3, 4, 7 gives them.
    for (const char *section : {"FLTSIM.0", "FLTSIM.1", "FLTSIM.2", "FLTSIM.3", "FLTSIM.4", "FLTSIM.7"})
        addVariationRow(c.ListView1, QString::fromLatin1(section))->setText(10, QStringLiteral("c737"));
    c.lst_Airfile->addItems({QStringLiteral("C737"), QStringLiteral("c737")});

    c.ListView1->setCurrentItem(c.ListView1->topLevelItem(0));
    form.ListView1_Click();
    EXPECT_EQ(c.frm_RightClick.mnuDelete->text(), QStringLiteral("&Delete [FLTSIM.0]"));
    // "/" turns into "\\" before the comment is cut, so a "//" comment stays in the text.
    EXPECT_EQ(c.txt_CurrentTexture->text(), QStringLiteral("klm\\old \\\\ new paint"));
    EXPECT_EQ(c.txt_CurrentModel->text(), QStringLiteral("<default>"));
    EXPECT_EQ(c.txt_CurrentAirfile->text(), QStringLiteral("c737"));
    // The air file list follows the row, exactly and case-sensitively.
    EXPECT_EQ(c.lst_Airfile->currentRow(), 1);

    c.ListView1->topLevelItem(5)->setCheckState(0, Qt::Checked);
    form.ListView1_Click();
    EXPECT_EQ(c.frm_RightClick.mnuDelete->text(), QStringLiteral("&Delete [fltsim.5]"));

    c.ListView1->topLevelItem(1)->setCheckState(0, Qt::Checked);
    c.ListView1->setCurrentItem(c.ListView1->topLevelItem(1));
    form.ListView1_Click();
    EXPECT_EQ(c.frm_RightClick.mnuDelete->text(), QStringLiteral("&Delete [fltsim.x]"));
    EXPECT_EQ(c.txt_CurrentAirfile->text(), QStringLiteral("<none>"));
    EXPECT_TRUE(dialogs.records().empty());
}

TEST_F(Navigation, AssociateFollowsTheThreeCombos)
{
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    EXPECT_FALSE(c.cmd_Associate->isEnabled());
    c.combo_Model->addItem(QStringLiteral("model.heavy"));
    c.combo_Model->setCurrentIndex(0);
    EXPECT_TRUE(c.cmd_Associate->isEnabled());
    c.combo_Model->setCurrentIndex(-1);
    EXPECT_FALSE(c.cmd_Associate->isEnabled());
}

TEST_F(Navigation, HiddenColumnsFollowEachClickAndLastOnlyWhenSaved)
{
    {
        frm_Main form(&dialogs);
        QTreeWidget *grid = form.controls().ListView1;
        form.controls().mnuDataGrid->trigger();
        auto *options = form.findChild<frm_ListViewOptions *>(QStringLiteral("frm_ListViewOptions"));
        ASSERT_NE(options, nullptr);
        ASSERT_EQ(options->List1()->count(), 15);
        EXPECT_EQ(options->List1()->item(0)->text(), QStringLiteral("parking_type"));

        // A click sets every column: a shown one always gets the standard width back.
        grid->setColumnWidth(4, 300);
        options->List1()->item(0)->setCheckState(Qt::Checked);
        EXPECT_EQ(grid->columnWidth(2), 0);
        EXPECT_EQ(grid->columnWidth(4), 1150 / 15);
        options->cmdClose_Click();
        EXPECT_EQ(grid->columnWidth(2), 0);
        EXPECT_TRUE(settings.GetSetting(u"DataGrid").empty());

        // Hidden columns stay so on "resize to content", all but the last.
        form.controls().mnuDataGrid->trigger();
        options = form.findChild<frm_ListViewOptions *>(QStringLiteral("frm_ListViewOptions"));
        options->cmd_All_Click();
        EXPECT_EQ(grid->columnWidth(16), 0);
        form.controls().frm_RightClick.mnuResize->trigger();
        EXPECT_EQ(grid->columnWidth(2), 0);
        EXPECT_GT(grid->columnWidth(16), 0);
        EXPECT_GT(grid->columnWidth(1), 0);

        options->cmd_None_Click();
        options->List1()->item(14)->setCheckState(Qt::Checked);
        options->cmdSave_Click();
    }
    const std::u16string saved = u"0\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60\u00A60"
                                 u"\u00A60\u00A60\u00A6-1";
    EXPECT_EQ(settings.GetSetting(u"DataGrid"), saved);
    frm_Main next(&dialogs);
    EXPECT_EQ(next.controls().ListView1->columnWidth(16), 0);
    EXPECT_GT(next.controls().ListView1->columnWidth(2), 0);
}

namespace {

std::string littleEndian(std::int32_t value)
{
    std::string bytes(4, '\0');
    for (int i = 0; i < 4; ++i)
        bytes[static_cast<std::size_t>(i)] = static_cast<char>((static_cast<std::uint32_t>(value) >> (8 * i)) & 0xFF);
    return bytes;
}

// A small aircraft: two variations, the first with a model and an air file, the second with a model folder
// that is not there.
std::filesystem::path makeAircraft(const std::filesystem::path &root)
{
    const auto folder = root / "Corvane Skyliner";
    writeBytes(folder / "aircraft.cfg",
               "[fltsim.0]\r\ntitle=Skyliner Blue\r\nmodel=\r\nsim=skyliner\r\ntexture=Blue\r\n"
               "description=Blue paint\r\n"
               "[fltsim.1]\r\ntitle=Skyliner Red\r\nmodel=gone\r\nsim=skyliner\r\n"
               "[effects]\r\nwake=fx_wake, 1\r\n"
               "[airplane_geometry]\r\nwing_span=112.5\r\n");
    writeBytes(folder / "model" / "model.cfg", "[models]\r\nNORMAL=Skyliner.MDL\r\n");
    std::string mdl(40, '\0');
    mdl.replace(8, 4, "MDL9");
    mdl[28] = static_cast<char>(42);
    writeBytes(folder / "model" / "skyliner.mdl", mdl);
    writeBytes(folder / "skyliner.air", littleEndian(0x105) + littleEndian(4) + littleEndian(1));
    std::filesystem::create_directories(folder / "texture.Blue");
    return folder;
}

} // namespace

TEST_F(Navigation, LoadingAnAircraftFillsTheGridAndOpensTheFirstRow)
{
    const auto aircraft = makeAircraft(dir.path());
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    c.Dir1->setPath(nativeText(aircraft));
    EXPECT_TRUE(dialogs.records().empty());

    ASSERT_EQ(c.ListView1->topLevelItemCount(), 2);
    EXPECT_EQ(c.ListView1->topLevelItem(0)->text(0), QStringLiteral("FLTSIM.0"));
    EXPECT_EQ(c.ListView1->topLevelItem(0)->text(9), QStringLiteral("<default>"));
    EXPECT_EQ(c.StatusBar1->panelText(8), QStringLiteral("AC Folder"));
    EXPECT_EQ(c.StatusBar1->panelColour(8), StatusBarPanels::green());
    EXPECT_EQ(c.StatusBar1->panelText(10), QStringLiteral("2 aircraft variations defined"));
    EXPECT_TRUE(c.mnuCFG->isEnabled() && c.mnuValidate->isEnabled());
    EXPECT_FALSE(c.mnuvalidateAll->isEnabled());
    EXPECT_TRUE(c.cmd_DirUp->isEnabled());

    // Row 1 is open: white title, its description, the model's tag and radius, the air file's type.
    EXPECT_EQ(c.txt_Title->text(), QStringLiteral("Skyliner Blue"));
    EXPECT_EQ(backColour(c.txt_Title), colourFromBgr(0xFFFFFF));
    EXPECT_EQ(c.txt_Description->toPlainText(), QStringLiteral("Blue paint"));
    EXPECT_EQ(c.txt_FSXVersion->text(), QStringLiteral("FS8/9"));
    EXPECT_EQ(c.txt_FS9Radius->text(), QStringLiteral("42"));
    EXPECT_EQ(form.RadiusOnLoad, u"42");
    EXPECT_TRUE(c.opt_ac_Helicopter->isChecked());
    EXPECT_EQ(c.StatusBar1->panelText(9), QStringLiteral("AC Status: OK"));
    EXPECT_EQ(c.txt_effects[0]->text(), QStringLiteral("fx_wake"));
    EXPECT_TRUE(c.chk_Effect[0]->isChecked());
    EXPECT_EQ(c.lst_Airfile->count(), 1);
    EXPECT_EQ(c.combo_Texture->count(), 1);
    EXPECT_EQ(c.combo_Texture->itemText(0), QStringLiteral("Blue"));
    // A folder with variations is remembered.
    EXPECT_EQ(QDir(toQString(settings.GetSetting(u"Path"))), QDir(nativeText(aircraft)));

    // Opening the second row: its model folder is not there, which the status tells.
    c.ListView1->setCurrentItem(c.ListView1->topLevelItem(1));
    form.ListView1_DblClick();
    EXPECT_EQ(c.txt_Title->text(), QStringLiteral("Skyliner Red"));
    EXPECT_EQ(c.StatusBar1->panelText(9), QStringLiteral("AC Status: NOK"));
    EXPECT_EQ(c.StatusBar1->panelColour(9), StatusBarPanels::red());

    // One level up: not an aircraft folder, no rows, nothing remembered.
    form.cmd_DirUp_Click();
    EXPECT_EQ(c.ListView1->topLevelItemCount(), 0);
    EXPECT_EQ(c.StatusBar1->panelColour(8), StatusBarPanels::red());
    EXPECT_EQ(c.StatusBar1->panelText(9), QStringLiteral("AC Status: n/a"));
    EXPECT_TRUE(c.mnuvalidateAll->isEnabled());
    EXPECT_FALSE(c.cmd_DirUp->isEnabled());
    EXPECT_EQ(QDir(toQString(settings.GetSetting(u"Path"))), QDir(nativeText(aircraft)));
}

TEST_F(Navigation, NoToTheAirTypeQuestionRestoresTheTypeLastRead)
{
    const auto aircraft = makeAircraft(dir.path());
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    c.Dir1->setPath(nativeText(aircraft));
    ASSERT_TRUE(c.opt_ac_Helicopter->isChecked());
    const std::string before = fleetwright::test::readBytes(aircraft / "skyliner.air");

    dialogs.pushAnswer(false);
    c.opt_ac_AI->click();
    EXPECT_TRUE(c.opt_ac_Helicopter->isChecked());
    EXPECT_FALSE(c.opt_ac_AI->isChecked());
    EXPECT_EQ(fleetwright::test::readBytes(aircraft / "skyliner.air"), before);

    dialogs.pushAnswer(true);
    c.opt_ac_AI->click();
    EXPECT_TRUE(c.opt_ac_AI->isChecked());
    EXPECT_EQ(fleetwright::test::readBytes(aircraft / "skyliner.air").substr(8, 4), littleEndian(2));
    EXPECT_EQ(dialogs.pendingAnswers(), 0u);
}

TEST_F(Navigation, DeletingTheSelectedRowReloadsARenumberedFile)
{
    const auto aircraft = makeAircraft(dir.path());
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    c.Dir1->setPath(nativeText(aircraft));
    ASSERT_EQ(c.ListView1->topLevelItemCount(), 2);

    c.ListView1->setCurrentItem(c.ListView1->topLevelItem(0));
    dialogs.pushAnswer(true);
    c.frm_RightClick.mnuDelete->trigger();
    ASSERT_FALSE(dialogs.records().empty());
    EXPECT_EQ(dialogs.records().back().text, u"About to delete section [FLTSIM.0] = Skyliner Blue. Are you sure?");
    ASSERT_EQ(c.ListView1->topLevelItemCount(), 1);
    EXPECT_EQ(c.ListView1->topLevelItem(0)->text(1), QStringLiteral("Skyliner Red"));
    EXPECT_EQ(c.ListView1->topLevelItem(0)->text(0), QStringLiteral("FLTSIM.0"));
    // The backup keeps the file as it stood before the first change.
    EXPECT_NE(fleetwright::test::readBytes(aircraft / "aircraft.corvane").find("Skyliner Blue"), std::string::npos);
}
