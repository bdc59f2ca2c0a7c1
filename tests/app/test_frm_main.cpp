#include <map>
#include <optional>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "app/frm_main.h"
#include "app/gui/folderwidgets.h"
#include "app/gui/statusbarpanels.h"
#include "app/gui/textconvert.h"
#include "app/programstate.h"
#include "core/scripteddialogs.h"
#include "platform/settingsstore.h"
#include "startupfixture.h"
#include "common/tempdir.h"
#include "support/windowtitle.h"
#include "version.h"

using fleetwright::DialogKind;
using fleetwright::programState;
using fleetwright::ScriptedDialogs;
using fleetwright::test::isSameEntry;
using fleetwright::test::TempDir;
using fleetwright::test::writeBytes;
using StartUp = fleetwright::test::StartUp;

namespace {

QString versionText()
{
    return QStringLiteral("%1.%2.%3")
        .arg(fleetwright::VERSION_MAJOR)
        .arg(fleetwright::VERSION_MINOR)
        .arg(fleetwright::VERSION_REVISION);
}

} // namespace

TEST_F(StartUp, TitleCarriesVersionAndMakerLine)
{
    frm_Main form(&dialogs);
    // Three blanks after the caption and one more in front of "V.", as users and scripts see it.
    EXPECT_EQ(form.windowTitle(),
              QStringLiteral("Fleetwright    V.") + versionText() + QStringLiteral("  -  \u00A9 Corvane Tools"));

    // The caption is whatever the form was designed with; the rest is appended to it unchanged.
    struct Row
    {
        const char16_t *caption;
        const char16_t *expectedStart;
    };
    const Row rows[] = {
        {u"", u"    V."},
        {u"Fleetwright", u"Fleetwright    V."},
        {u"Flotte \u00E9t\u00E9 ", u"Flotte \u00E9t\u00E9     V."},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(QString::fromUtf16(row.caption).toStdString());
        const QString title = toQString(fleetwright::windowTitle(row.caption));
        EXPECT_EQ(title,
                  QString::fromUtf16(row.expectedStart) + versionText() + QStringLiteral("  -  \u00A9 Corvane Tools"));
    }
}

TEST(FrmMain, TextCrossesTheEdgeUnchanged)
{
    // Characters outside the code page and outside the basic plane included.
    const std::u16string samples[] = {u"", u"title=Boeing 737-800", u"\u00A6\u00E9\u20AC\u0081", u"\U0001F6E9 z"};
    for (const std::u16string &sample : samples) {
        SCOPED_TRACE(QString::fromStdU16String(sample).toStdString());
        const QString shown = toQString(sample);
        EXPECT_EQ(shown.size(), static_cast<qsizetype>(sample.size()));
        EXPECT_EQ(toU16String(shown), sample);
    }
}

TEST_F(StartUp, QuitClosesTheWindowAtOnce)
{
    frm_Main form(&dialogs);
    form.show();
    ASSERT_TRUE(form.isVisible());

    auto *fileMenu = form.findChild<QMenu *>(QStringLiteral("mnuFile"));
    ASSERT_NE(fileMenu, nullptr);
    EXPECT_EQ(fileMenu->title(), QStringLiteral("&File"));
    EXPECT_TRUE(form.menuBar()->actions().contains(fileMenu->menuAction()));

    auto *quit = form.findChild<QAction *>(QStringLiteral("mnuQuit"));
    ASSERT_NE(quit, nullptr);
    EXPECT_EQ(quit->text(), QStringLiteral("&Quit"));
    EXPECT_TRUE(fileMenu->actions().contains(quit));

    // The main window is the last one, so closing it ends the program's event loop: exec() returns 0.
    // The guard only keeps a broken build from hanging the test run.
    QSignalSpy lastWindowClosed(qApp, &QGuiApplication::lastWindowClosed);
    bool gaveUp = false;
    QTimer guard;
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, [&gaveUp] {
        gaveUp = true;
        QCoreApplication::exit(1);
    });
    guard.start(30000);
    QTimer::singleShot(0, quit, &QAction::trigger);
    const int exitCode = QCoreApplication::exec();
    EXPECT_FALSE(gaveUp);
    EXPECT_EQ(exitCode, 0);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(lastWindowClosed.count(), 1);
}

TEST_F(StartUp, FirstStartWithAnEmptyStoreTakesEveryDefault)
{
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    EXPECT_TRUE(dialogs.records().empty());

    EXPECT_TRUE(c.mnuToolTips->isChecked());
    EXPECT_TRUE(c.mnuRememberLastPath->isChecked());
    EXPECT_TRUE(c.mnuAutoBackup->isChecked());
    EXPECT_TRUE(c.mnuConfirm->isChecked());
    EXPECT_TRUE(c.mnuEditor->isChecked());
    EXPECT_FALSE(c.mnuResizable->isChecked());
    EXPECT_TRUE(programState().ToolTipsOn && programState().RememberFolderOn && programState().InternalEditorOn);
    EXPECT_TRUE(form.AutoBackupOn && form.ConfirmUpdates);
    EXPECT_FALSE(form.ResizableOn);
    EXPECT_FALSE(form.windowResizable());

    // The report options are filled up to 23 digits and saved; nothing else is written back.
    const std::u16string options = u"1\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61"
                                   u"\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61";
    EXPECT_EQ(programState().AnalyzeOptionsText, options);
    EXPECT_EQ(programState().AnalyzeOptionList.size(), 23u);
    EXPECT_EQ(settings.GetSetting(u"AnalyzeOptions", u"none"), options);
    for (const char16_t *name : {u"ToolTips", u"IsZandor", u"AutoBackup", u"Update", u"Editor", u"Resizeable",
                                 u"DataGrid", u"Path", u"AutoUpdate"})
        EXPECT_EQ(settings.GetSetting(name, u"none"), u"none") << toQString(name).toStdString();

    // No columns hidden, the parking list in its order, hidden, and the guard off after start-up.
    for (int column = 0; column < 17; ++column)
        EXPECT_GT(c.ListView1->columnWidth(column), 0) << column;
    ASSERT_EQ(c.lstParking->count(), 6);
    EXPECT_EQ(c.lstParking->item(0)->text(), QStringLiteral("CARGO"));
    EXPECT_EQ(c.lstParking->item(5)->text(), QStringLiteral("RAMP"));
    EXPECT_TRUE(c.lstParking->isHidden());
    EXPECT_FALSE(form.LoadGuard);
    EXPECT_TRUE(form.EventsEnabled);
    EXPECT_EQ(c.SSTab1->currentIndex(), 0);
    EXPECT_EQ(programState().TempFolder.back(), QDir::separator().unicode());
}

TEST_F(StartUp, NeitherSimulatorIsToldByTheStatusBarOnly)
{
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    EXPECT_TRUE(dialogs.records().empty());
    expectPanel(form, 2, QStringLiteral("n/a"), StatusBarPanels::red());
    expectPanel(form, 3, QStringLiteral("ATC"), StatusBarPanels::red());
    expectPanel(form, 5, QStringLiteral("n/a"), StatusBarPanels::red());
    expectPanel(form, 6, QStringLiteral("ATC"), StatusBarPanels::red());
    EXPECT_FALSE(c.opt_FS9->isEnabled());
    EXPECT_FALSE(c.opt_FSX->isEnabled());
    EXPECT_FALSE(c.combo_SimFolder->isEnabled());
    EXPECT_FALSE(programState().Fs9Found || programState().FsxFound);
    EXPECT_TRUE(form.Fs9AircraftRoot.empty() && form.FsxSimObjectsRoot.empty());
}

TEST_F(StartUp, BothSimulatorsGiveFsxTheSelection)
{
    const auto fs9 = installFs9(true);
    const auto fsx = installFsx(true);
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    expectPanel(form, 2, QStringLiteral("found"), StatusBarPanels::green());
    expectPanel(form, 3, QStringLiteral("ATC"), StatusBarPanels::green());
    expectPanel(form, 5, QStringLiteral("found"), StatusBarPanels::green());
    expectPanel(form, 6, QStringLiteral("ATC"), StatusBarPanels::green());
    EXPECT_TRUE(c.opt_FSX->isEnabled() && c.opt_FSX->isChecked());
    EXPECT_TRUE(c.opt_FS9->isEnabled());
    EXPECT_FALSE(c.opt_FS9->isChecked());
    // No fsx.cfg: the folder scan stands, without names that hold a point.
    EXPECT_EQ(comboTexts(form), (QStringList {QStringLiteral("Airplanes"), QStringLiteral("Rotorcraft")}));
    EXPECT_TRUE(c.combo_SimFolder->isEnabled());
    ASSERT_EQ(form.SimFolderPaths.size(), 2u);
    EXPECT_EQ(std::filesystem::path(form.SimFolderPaths[1]), fsx / "SimObjects" / "Rotorcraft");
    EXPECT_EQ(std::filesystem::path(form.Fs9AircraftRoot), fs9 / "Aircraft");
    // The airline files are kept as raw lines; a final line break leaves an empty last line.
    EXPECT_EQ(programState().FsxAirlines, (std::vector<std::u16string> {u"a", u"b", u""}));
    EXPECT_EQ(programState().Fs9Airlines.at(1), u"name=Alpha");
}

TEST_F(StartUp, OnlyFs9WithItsAirlinesInTheWrongFolder)
{
    const auto fs9 = installFs9(false);
    writeBytes(fs9 / "airlines.cfg", "x\r\n");
    frm_Main form(&dialogs);
    expectPanel(form, 2, QStringLiteral("found"), StatusBarPanels::green());
    expectPanel(form, 3, QStringLiteral("ATC"), StatusBarPanels::red());
    expectPanel(form, 5, QStringLiteral("n/a"), StatusBarPanels::red());
    EXPECT_TRUE(form.controls().opt_FS9->isEnabled() && form.controls().opt_FS9->isChecked());
    EXPECT_FALSE(programState().Fs9Found);
}

TEST_F(StartUp, SimObjectPathsOfFsxCfgReplaceTheFolderScan)
{
    const auto fsx = installFsx(false);
    writeBytes(dir / "appdata" / "Microsoft" / "FSX" / "fsx.cfg",
               "[Main]\r\nUser Objects=Airplane\r\nSimObjectPaths.0=SimObjects\\Airplanes\r\n"
               "SimObjectPaths.1=SimObjects\\Gone\r\nSIMOBJECTPATHS.2=simobjects\\ROTORCRAFT\r\n");
    frm_Main form(&dialogs);
    // Values are shown raw and found without regard to case; a folder that is gone is left out.
    EXPECT_EQ(comboTexts(form),
              (QStringList {QStringLiteral("SimObjects\\Airplanes"), QStringLiteral("simobjects\\ROTORCRAFT")}));
    ASSERT_EQ(form.SimFolderPaths.size(), 2u);
    EXPECT_TRUE(isSameEntry(std::filesystem::path(form.SimFolderPaths[1]), fsx / "SimObjects" / "Rotorcraft"));

    // An fsx.cfg without such keys empties the combo, which stays enabled.
    writeBytes(dir / "appdata" / "Microsoft" / "FSX" / "fsx.cfg", "[Main]\r\nUser Objects=Airplane\r\n");
    frm_Main second(&dialogs);
    EXPECT_TRUE(comboTexts(second).isEmpty());
    EXPECT_TRUE(second.controls().combo_SimFolder->isEnabled());
}

TEST_F(StartUp, StoredOptionsAreRepairedOrKept)
{
    // 45 characters stay as they are and are not written again; 43 are filled up and saved.
    const std::u16string full = u"0\u00A61\u00A60\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61"
                                u"\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A61\u00A60";
    settings.SaveSetting(u"AnalyzeOptions", full);
    {
        frm_Main form(&dialogs);
        EXPECT_EQ(programState().AnalyzeOptionsText, full);
    }
    const std::u16string short43 = full.substr(0, 43);
    settings.SaveSetting(u"AnalyzeOptions", short43);
    {
        frm_Main form(&dialogs);
        EXPECT_EQ(programState().AnalyzeOptionsText, short43 + u"\u00A61");
        EXPECT_EQ(settings.GetSetting(u"AnalyzeOptions"), short43 + u"\u00A61");
    }
    // A text of even length could never reach 45: it is repaired instead of hanging start-up.
    settings.SaveSetting(u"AnalyzeOptions", u"1\u00A60\u00A6");
    {
        frm_Main form(&dialogs);
        EXPECT_EQ(programState().AnalyzeOptionsText.size(), 45u);
        EXPECT_EQ(programState().AnalyzeOptionList.at(1), u"0");
    }
}

TEST_F(StartUp, EachToggleIsSavedAtOnceAndReadBackAtTheNextStart)
{
    struct Toggle
    {
        QAction *MainFormControls::*item;
        const char16_t *name;
    };
    const Toggle toggles[] = {
        {&MainFormControls::mnuToolTips, u"ToolTips"},      {&MainFormControls::mnuRememberLastPath, u"IsZandor"},
        {&MainFormControls::mnuAutoBackup, u"AutoBackup"},  {&MainFormControls::mnuConfirm, u"Update"},
        {&MainFormControls::mnu_AutoUpdate, u"AutoUpdate"}, {&MainFormControls::mnuEditor, u"Editor"},
        {&MainFormControls::mnuResizable, u"Resizeable"},
    };
    {
        frm_Main form(&dialogs);
        for (const Toggle &toggle : toggles) {
            QAction *item = form.controls().*toggle.item;
            const bool before = item->isChecked();
            item->trigger();
            EXPECT_NE(item->isChecked(), before) << item->objectName().toStdString();
            EXPECT_EQ(settings.GetSetting(toggle.name), before ? u"0" : u"1") << item->objectName().toStdString();
        }
        EXPECT_FALSE(form.AutoBackupOn);
        EXPECT_FALSE(form.ConfirmUpdates);
        // The update check's item is first set when the window is activated; the flag follows the item.
        EXPECT_EQ(form.AutoUpdateOn, form.controls().mnu_AutoUpdate->isChecked());
        EXPECT_FALSE(programState().ToolTipsOn || programState().RememberFolderOn || programState().InternalEditorOn);
        EXPECT_TRUE(form.ResizableOn);
        EXPECT_TRUE(form.windowResizable());
        // Twice leaves the style as it was.
        form.controls().mnuResizable->trigger();
        EXPECT_FALSE(form.windowResizable());
        form.controls().mnuResizable->trigger();
    }
    frm_Main again(&dialogs);
    for (const Toggle &toggle : toggles) {
        QAction *item = again.controls().*toggle.item;
        if (item == again.controls().mnu_AutoUpdate)
            continue; // read when the window is first activated
        EXPECT_EQ(item->isChecked(), item == again.controls().mnuResizable) << item->objectName().toStdString();
    }
    EXPECT_TRUE(again.windowResizable());
}

TEST_F(StartUp, AnUnreadableStoredBooleanStopsStartUpInTheCommonErrorBox)
{
    settings.SaveSetting(u"IsZandor", u"maybe");
    frm_Main form(&dialogs);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0].kind, DialogKind::Plain);
    EXPECT_NE(dialogs.records()[0].text.find(u"Error number: 13\r\n"), std::u16string::npos);
    EXPECT_NE(dialogs.records()[0].text.find(u"Procedure Form_Load\r\n"), std::u16string::npos);
    // The window comes up half set up: no simulator detection ran.
    EXPECT_EQ(form.controls().StatusBar1->panelColour(5), QColor());

    // A bad option read later in start-up is skipped: its item stays unchecked, and nothing is said.
    settings.SaveSetting(u"IsZandor", u"1");
    settings.SaveSetting(u"AutoBackup", u"yes please");
    ScriptedDialogs quiet;
    frm_Main second(&quiet);
    EXPECT_TRUE(quiet.records().empty());
    EXPECT_FALSE(second.controls().mnuAutoBackup->isChecked());
    EXPECT_FALSE(second.AutoBackupOn);
    EXPECT_TRUE(second.controls().mnuConfirm->isChecked());
}

TEST_F(StartUp, StoredDataGridHidesOnlyTheColumnsItNames)
{
    settings.SaveSetting(u"DataGrid", u"-1\u00A60\u00A61\u00A6-1");
    frm_Main form(&dialogs);
    const QTreeWidget *grid = form.controls().ListView1;
    EXPECT_EQ(grid->columnWidth(2), 0);
    EXPECT_GT(grid->columnWidth(3), 0);
    EXPECT_GT(grid->columnWidth(4), 0);
    EXPECT_EQ(grid->columnWidth(5), 0);
    EXPECT_GT(grid->columnWidth(16), 0);
}

TEST_F(StartUp, OpeningTheCfgWithoutVariationsIsRefused)
{
    frm_Main form(&dialogs);
    form.controls().mnuCFG->trigger();
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0],
              (fleetwright::DialogRecord {DialogKind::Critical, u"",
                                          u"No aircraft.cfg file found in this folder. Exiting here..."}));
    EXPECT_EQ(programState().EditorMode, 0);
}

TEST_F(StartUp, RememberedFolderIsWhereTheBrowserStarts)
{
    std::filesystem::create_directories(dir / "Aircraft" / "B737");
    settings.SaveSetting(u"Path", toU16String(QString::fromStdString((dir / "Aircraft" / "B737").string())));
    frm_Main form(&dialogs);
    EXPECT_EQ(std::filesystem::path(form.controls().Dir1->path().toStdString()), dir / "Aircraft" / "B737");

    // Without "remember", the program's own folder.
    settings.SaveSetting(u"IsZandor", u"0");
    frm_Main second(&dialogs);
    EXPECT_EQ(QDir(second.controls().Dir1->path()), QDir(QCoreApplication::applicationDirPath()));
}

TEST_F(StartUp, AirlinePanelsOpenNothingWhenTheirFileWasNotLoaded)
{
    installFs9(false);
    frm_Main form(&dialogs);
    for (const int panel : {1, 3, 6, 9, 12})
        emit form.controls().StatusBar1->panelDoubleClicked(panel);
    EXPECT_EQ(programState().EditorMode, 0);
    EXPECT_TRUE(dialogs.records().empty());
}

// The simulators as a Windows machine registers them. The Windows check imports a made-up FS9 and FSX into
// its Wine prefix's registry and names their folders here; anywhere else there is no registry to hold them.
TEST_F(StartUp, SimulatorsOfTheRegistryAreFound)
{
    const QString fs9 = qEnvironmentVariable("FLEETWRIGHT_REGISTERED_FS9");
    const QString fsx = qEnvironmentVariable("FLEETWRIGHT_REGISTERED_FSX");
    if (fs9.isEmpty() || fsx.isEmpty())
        GTEST_SKIP() << "no simulators registered for this run";
    env.unset("FLEETWRIGHT_FS9_DIR");
    env.unset("FLEETWRIGHT_FSX_DIR");
    frm_Main form(&dialogs);
    expectPanel(form, 2, QStringLiteral("found"), StatusBarPanels::green());
    expectPanel(form, 5, QStringLiteral("found"), StatusBarPanels::green());
    EXPECT_TRUE(programState().Fs9Found && programState().FsxFound);
    EXPECT_EQ(std::filesystem::path(form.Fs9AircraftRoot), std::filesystem::path(fs9.toStdWString()) / "Aircraft");
    EXPECT_EQ(std::filesystem::path(form.FsxSimObjectsRoot), std::filesystem::path(fsx.toStdWString()) / "SimObjects");
}
