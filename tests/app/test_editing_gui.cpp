#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "app/frm_main.h"
#include "app/gui/folderwidgets.h"
#include "app/gui/textconvert.h"
#include "startupfixture.h"

using fleetwright::test::readBytes;
using fleetwright::test::writeBytes;
using Editing = fleetwright::test::StartUp;

namespace {

// Two variations behind a [general] section, one texture folder, a model with radius 42.
const std::string ORIGINAL = "[general]\r\natc_type=SKY\r\n"
                             "[fltsim.0]\r\ntitle=Skyliner Blue\r\nmodel=\r\nsim=skyliner\r\ntexture=Blue\r\n"
                             "atc_airline=Old // was\r\n"
                             "[fltsim.1]\r\ntitle=Skyliner Red\r\nmodel=\r\nsim=skyliner\r\natc_airline=Old\r\n"
                             "[exits]\r\nexit.0=0.4, 62, -2, 6.7, 0 //Main door\r\n";

std::filesystem::path makeAircraft(const std::filesystem::path &root)
{
    const auto folder = root / "Skyliner";
    writeBytes(folder / "aircraft.cfg", ORIGINAL);
    writeBytes(folder / "model" / "model.cfg", "[models]\r\nnormal=skyliner\r\n");
    std::string mdl(40, '\0');
    mdl.replace(8, 4, "MDL9");
    mdl[28] = static_cast<char>(42);
    writeBytes(folder / "model" / "skyliner.mdl", mdl);
    std::filesystem::create_directories(folder / "texture.Blue");
    std::filesystem::create_directories(folder / "texture.Red");
    return folder;
}

class EditingForm : public Editing
{
protected:
    void SetUp() override
    {
        Editing::SetUp();
        aircraft = makeAircraft(dir.path());
        form = std::make_unique<frm_Main>(&dialogs);
        form->ConfirmUpdates = true;
        form->AutoBackupOn = true;
        form->controls().Dir1->setPath(QDir::toNativeSeparators(QString::fromStdString(aircraft.string())));
        ASSERT_EQ(form->controls().ListView1->topLevelItemCount(), 2);
    }

    void openRow(int row)
    {
        QTreeWidget *grid = form->controls().ListView1;
        grid->setCurrentItem(grid->topLevelItem(row));
        form->ListView1_DblClick();
    }

    std::string cfg() const { return readBytes(aircraft / "aircraft.cfg"); }

    std::filesystem::path aircraft;
    std::unique_ptr<frm_Main> form;
};

} // namespace

TEST_F(EditingForm, GeneralUpdateWritesTheOpenRowAndOpensItAgain)
{
    const MainFormControls &c = form->controls();
    openRow(1);
    c.txt_Title->setText(QStringLiteral("Skyliner Green"));
    c.txt_atc_Airline->setText(QStringLiteral("Sky"));
    c.chk_atc_heavy->setChecked(true);
    c.txt_Exit_0[0]->setText(QStringLiteral("0,5"));
    c.txt_FS9Radius->setText(QStringLiteral("50"));
    c.txt_general_atc_type->setText(QStringLiteral("SKYWORKS"));

    dialogs.pushAnswer(true);
    c.cmd_cfg_Update->click();
    EXPECT_EQ(dialogs.records().at(0).text, u"Are you sure?");
    EXPECT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(cfg(),
              "[general]\r\natc_type=SKYWORKS\r\natc_model=\r\n"
              "[fltsim.0]\r\ntitle=Skyliner Blue\r\nmodel=\r\nsim=skyliner\r\ntexture=Blue\r\n"
              "atc_airline=Old // was\r\n"
              "[fltsim.1]\r\ntitle=Skyliner Green\r\nmodel=\r\nsim=skyliner\r\natc_airline=Sky\r\n"
              "atc_parking_types=\r\natc_parking_codes=\r\nui_createdby=\r\nui_typerole=\r\n"
              "ui_manufacturer=\r\nui_type=\r\nui_variation=\r\natc_id=\r\natc_flight_number=\r\n"
              "atc_model=\r\natc_heavy=1\r\n"
              "[exits]\r\nexit.0= 0.5, 62, -2, 6.7, 0            //Main door\r\n");
    EXPECT_EQ(readBytes(aircraft / "aircraft.corvane"), ORIGINAL);
    EXPECT_EQ(readBytes(aircraft / "model" / "skyliner.mdl")[28], 50);

    // The reload opened the same row with the new values.
    EXPECT_EQ(c.ListView1->currentItem(), c.ListView1->topLevelItem(1));
    EXPECT_EQ(c.txt_Title->text(), QStringLiteral("Skyliner Green"));
    EXPECT_EQ(c.txt_atc_Airline->text(), QStringLiteral("Sky"));
    EXPECT_TRUE(c.chk_atc_heavy->isChecked());
    EXPECT_EQ(c.txt_FS9Radius->text(), QStringLiteral("50"));
}

TEST_F(EditingForm, NoToTheQuestionWritesNothing)
{
    const MainFormControls &c = form->controls();
    c.txt_Title->setText(QStringLiteral("Changed"));
    dialogs.pushAnswer(false);
    c.cmd_cfg_Update->click();
    dialogs.pushAnswer(false);
    c.cmd_Update_all_ui_Type->click();
    c.combo_Texture->setCurrentIndex(0);
    dialogs.pushAnswer(false);
    c.cmd_Associate->click();
    EXPECT_EQ(dialogs.records().size(), 3u);
    EXPECT_EQ(cfg(), ORIGINAL);
    EXPECT_FALSE(std::filesystem::exists(aircraft / "aircraft.corvane"));
    EXPECT_EQ(c.txt_Title->text(), QStringLiteral("Changed"));
}

TEST_F(EditingForm, AssociateWritesThePickedTextureAndClearsTheBoxes)
{
    const MainFormControls &c = form->controls();
    form->ConfirmUpdates = false;
    openRow(1);
    c.combo_Texture->setCurrentIndex(c.combo_Texture->findText(QStringLiteral("Red")));
    ASSERT_TRUE(c.cmd_Associate->isEnabled());
    c.cmd_Associate->click();
    EXPECT_TRUE(dialogs.records().empty());
    EXPECT_NE(cfg().find("atc_airline=Old\r\ntexture=Red\r\n[exits]"), std::string::npos);
    EXPECT_EQ(readBytes(aircraft / "aircraft.corvane"), ORIGINAL);
    EXPECT_EQ(c.ListView1->currentItem(), c.ListView1->topLevelItem(1));
    EXPECT_EQ(c.txt_CurrentTexture->text(), QStringLiteral("Red"));
    EXPECT_EQ(c.combo_Texture->currentIndex(), -1);
    EXPECT_FALSE(c.cmd_Associate->isEnabled());
}

TEST_F(EditingForm, UpdateAllFollowsTheCheckMarksAndTakesNoBackup)
{
    const MainFormControls &c = form->controls();
    form->ConfirmUpdates = false;
    openRow(1);
    c.txt_atc_Airline->setText(QStringLiteral("Sky"));
    // Row 1 checked: with [general] first, that is the second section of the file, [fltsim.0].
    c.ListView1->topLevelItem(1)->setCheckState(0, Qt::Checked);
    c.cmd_Update_all_atc_airline->click();
    EXPECT_EQ(cfg(),
              "[general]\r\natc_type=SKY\r\n"
              "[fltsim.0]\r\ntitle=Skyliner Blue\r\nmodel=\r\nsim=skyliner\r\ntexture=Blue\r\n"
              "atc_airline=Sky\r\n"
              "[fltsim.1]\r\ntitle=Skyliner Red\r\nmodel=\r\nsim=skyliner\r\natc_airline=Old\r\n"
              "[exits]\r\nexit.0=0.4, 62, -2, 6.7, 0 //Main door\r\n");
    EXPECT_FALSE(std::filesystem::exists(aircraft / "aircraft.corvane"));
    // The row open before stays open, with the file's value.
    EXPECT_EQ(c.ListView1->currentItem(), c.ListView1->topLevelItem(1));
    EXPECT_EQ(c.txt_atc_Airline->text(), QStringLiteral("Old"));

    // The heavy box writes 1 or 0 into every variation when none is checked.
    c.chk_atc_heavy->setChecked(true);
    c.cmd_Update_all_atc_heavy->click();
    EXPECT_NE(cfg().find("atc_airline=Sky\r\natc_heavy=1\r\n[fltsim.1]"), std::string::npos);
    EXPECT_NE(cfg().find("atc_airline=Old\r\natc_heavy=1\r\n[exits]"), std::string::npos);
    EXPECT_TRUE(dialogs.records().empty());
}

TEST_F(EditingForm, UpdateAllWithNoSelectedRowEndsAfterTheWrite)
{
    const MainFormControls &c = form->controls();
    form->ConfirmUpdates = false;
    c.ListView1->clearSelection();
    c.txt_ui_Type->setText(QStringLiteral("Skyliner"));
    c.cmd_Update_all_ui_Type->click();
    EXPECT_NE(cfg().find("atc_airline=Old\r\nui_type=Skyliner\r\n[exits]"), std::string::npos);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0].kind, fleetwright::DialogKind::Critical);
    EXPECT_NE(dialogs.records()[0].text.find(u"Procedure cmd_Update_all_ui_Type_Click"), std::u16string::npos);
}
