// The grid: a folder load reaches the grid and the open row, the grid's actions reach the files.
#include "common/aircraftfolder.h"
#include "common/airfilebuilder.h"
#include "folderview/gui/frm_listviewoptions.h"
#include "startupfixture.h"

using namespace fleetwright;
using test::readBytes;
using Navigation = test::StartUp;

namespace {

const std::string SKYLINER = "[fltsim.0]\r\ntitle=Skyliner Blue\r\nmodel=\r\nsim=skyliner\r\ntexture=Blue\r\n"
                             "[fltsim.1]\r\ntitle=Skyliner Red\r\nmodel=gone\r\nsim=skyliner\r\n";

} // namespace

TEST_F(Navigation, LoadingAnAircraftFillsTheGridAndTheAirTypeIsWrittenOnlyAfterYes)
{
    test::writeBytes(dir / "Skyliner" / "model" / "skyliner.mdl", test::modelBytes("MDL9"));
    test::writeBytes(dir / "Skyliner" / "model" / "model.cfg", "[models]\r\nNORMAL=Skyliner.MDL\r\n");
    test::writeBytes(dir / "Skyliner" / "skyliner.air", test::AirFileBuilder().aircraft(1).bytes());
    std::filesystem::create_directories(dir / "Skyliner" / "texture.Blue");
    frm_Main form(&dialogs);
    const Ui::frm_Main &c = form.controls();
    const auto aircraft = openAircraft(form, SKYLINER, "Skyliner");
    ASSERT_EQ(c.ListView1->topLevelItemCount(), 2);
    EXPECT_EQ(c.ListView1->topLevelItem(0)->text(9), QStringLiteral("<default>"));
    EXPECT_EQ(c.txt_Title->text() + u'|' + c.txt_FS9Radius->text() + u'|' + c.txt_FSXVersion->text(),
              QStringLiteral("Skyliner Blue|7|FS8/9"));
    EXPECT_TRUE(c.opt_ac_Helicopter->isChecked());

    dialogs.pushAnswer(false);
    c.opt_ac_AI->click();
    EXPECT_TRUE(c.opt_ac_Helicopter->isChecked());
    EXPECT_EQ(readBytes(aircraft / "skyliner.air").substr(8, 4), test::int32Bytes(1));
    dialogs.pushAnswer(true);
    c.opt_ac_AI->click();
    EXPECT_EQ(readBytes(aircraft / "skyliner.air").substr(8, 4), test::int32Bytes(2));

    // One level up: the folder left is selected, and it stays the remembered one.
    form.cmd_DirUp_Click();
    EXPECT_TRUE(c.ListView1->topLevelItemCount() == 0
                && c.Dir1->List(c.Dir1->ListIndex()).endsWith(QStringLiteral("Skyliner")));
    EXPECT_EQ(QDir(toQString(settings.GetSetting(u"Path"))), QDir(test::nativeText(aircraft)));
}

TEST_F(Navigation, DeletingARowAsksAndReloadsARenumberedFile)
{
    frm_Main form(&dialogs);
    const Ui::frm_Main &c = form.controls();
    const auto aircraft = openAircraft(form, SKYLINER);
    for (const int row : {0, 1})
        c.ListView1->topLevelItem(row)->setCheckState(0, Qt::Checked);
    form.ListView1_Click();
    EXPECT_EQ(form.rightClickMenus().mnuDelete->text(), QStringLiteral("&Delete [fltsim.x]"));
    c.ListView1->topLevelItem(1)->setCheckState(0, Qt::Unchecked);
    dialogs.pushAnswer(false);
    form.rightClickMenus().mnuDelete->trigger();
    EXPECT_EQ(readBytes(aircraft / "aircraft.cfg"), SKYLINER);
    dialogs.pushAnswer(true);
    form.rightClickMenus().mnuDelete->trigger();
    ASSERT_EQ(c.ListView1->topLevelItemCount(), 1);
    EXPECT_EQ(c.ListView1->topLevelItem(0)->text(0) + u'|' + c.ListView1->topLevelItem(0)->text(1),
              QStringLiteral("FLTSIM.0|Skyliner Red"));
    EXPECT_EQ(readBytes(aircraft / "aircraft.corvane"), SKYLINER);
}

TEST_F(Navigation, HiddenColumnsFollowEachClickAndLastOnlyWhenSaved)
{
    {
        frm_Main form(&dialogs);
        form.controls().ListView1->setColumnWidth(4, 300);
        form.controls().mnuDataGrid->trigger();
        auto *options = form.findChild<frm_ListViewOptions *>();
        options->List1()->item(0)->setCheckState(Qt::Checked);
        EXPECT_EQ(form.controls().ListView1->columnWidth(2), 0);
        EXPECT_EQ(form.controls().ListView1->columnWidth(4), 1150 / 15) << "a shown column gets its width back";
        options->cmd_None_Click();
        options->List1()->item(14)->setCheckState(Qt::Checked);
        options->cmdSave_Click();
    }
    std::vector<std::u16string> saved(14, u"0");
    saved.push_back(u"-1");
    EXPECT_EQ(settings.GetSetting(u"DataGrid"), joinList(saved));
    EXPECT_EQ(frm_Main(&dialogs).controls().ListView1->columnWidth(16), 0);
}
