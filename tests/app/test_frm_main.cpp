// The main window: settings and detection reach the controls, toggles reach the store, the window and its forms
// scale, the about box, and the live update dialog against an HTTP server of the test's own on 127.0.0.1.
#include <QTcpServer>
#include <QTcpSocket>

#include "startupfixture.h"
#include "support/gui/formresizer.h"
#include "support/gui/frm_about.h"
#include "support/gui/frm_texteditor.h"
#include "support/liveupdate.h"
#include "support/operatingsystem.h"

using namespace fleetwright;
using test::StartUp;

TEST_F(StartUp, DefaultsAndStoredSettingsReachTheControls)
{
    {
        frm_Main form(&dialogs);
        const Ui::frm_Main &c = form.controls();
        EXPECT_TRUE(c.mnuToolTips->isChecked() && c.mnuAutoBackup->isChecked() && c.mnuEditor->isChecked());
        EXPECT_FALSE(c.mnuResizable->isChecked() || form.windowResizable());
        EXPECT_EQ(settings.GetSetting(u"AnalyzeOptions").size(), 45u) << "the one value start-up stores";
        EXPECT_FALSE(c.opt_FS9->isEnabled() || c.opt_FSX->isEnabled() || c.combo_SimFolder->isEnabled());
        test::ModalDialogs<frm_TextEditor> editors([](frm_TextEditor &editor) { editor.close(); });
        emit c.StatusBar1->panelDoubleClicked(3); // an airline file that was not loaded
        c.mnuCFG->trigger();                      // no aircraft.cfg
        EXPECT_EQ(editors.opened, 0);
    }
    std::filesystem::create_directories(dir / "Aircraft");
    settings.SaveSetting(u"Path", toU16String(test::nativeText(dir / "Aircraft")));
    settings.SaveSetting(u"DataGrid", u"-1\u00A60\u00A6-1");
    settings.SaveSetting(u"AutoBackup", u"yes please");
    {
        frm_Main form(&dialogs);
        EXPECT_EQ(form.controls().ListView1->columnWidth(2), 0);
        EXPECT_EQ(QDir(form.controls().Dir1->path()), QDir(test::nativeText(dir / "Aircraft")));
        EXPECT_FALSE(form.controls().mnuAutoBackup->isChecked()) << "skipped silently";
        EXPECT_EQ(dialogs.records().size(), 1u) << "the aircraft.cfg item's";
    }
    // The first flags are not skipped: start-up stops in the common error box, before detection.
    settings.SaveSetting(u"IsZandor", u"maybe");
    frm_Main broken(&dialogs);
    EXPECT_NE(dialogs.records().at(1).text.find(u"Error number: 13\r\n"), std::u16string::npos);
    EXPECT_EQ(broken.controls().StatusBar1->panelColour(5), QColor());
}

TEST_F(StartUp, BothSimulatorsReachTheControls)
{
    test::writeBytes(dir / "FS9" / "Aircraft" / "airlines.cfg", "[atc_airline.0]\r\nname=Alpha\r\n");
    test::writeBytes(dir / "FSX" / "airlines.cfg", "a\r\nb\r\n");
    std::filesystem::create_directories(dir / "FSX" / "SimObjects" / "Rotorcraft");
    std::filesystem::create_directories(dir / "FSX" / "SimObjects" / "Airplanes");
    setEnv("FLEETWRIGHT_FS9_DIR", (dir / "FS9").string());
    setEnv("FLEETWRIGHT_FSX_DIR", (dir / "FSX").string());
    frm_Main form(&dialogs);
    const Ui::frm_Main &c = form.controls();
    EXPECT_EQ(c.StatusBar1->panelColour(3), StatusBarPanels::green());
    EXPECT_TRUE(c.opt_FSX->isChecked() && c.opt_FS9->isEnabled());
    EXPECT_EQ(c.combo_SimFolder->itemText(1), QStringLiteral("Rotorcraft"));
    EXPECT_EQ(form.state().FsxAirlines, (std::vector<std::u16string> {u"a", u"b", u""}));
    c.opt_FS9->click();
    EXPECT_EQ(QDir(c.Dir1->path()), QDir(test::nativeText(dir / "FS9" / "Aircraft")));
    std::filesystem::remove_all(dir / "FSX" / "SimObjects");
    form.combo_SimFolder_Click(0);
    EXPECT_EQ(dialogs.records().at(0).text, u"Change directory was not successful. Error: 76\r\nPath not found");
}

TEST_F(StartUp, EachToggleIsSavedAtOnceAndReadBackAtTheNextStartAndTheWindowScales)
{
    const std::pair<QAction * Ui::frm_Main::*, const char16_t *> toggles[] = {
        {&Ui::frm_Main::mnuToolTips, u"ToolTips"},     {&Ui::frm_Main::mnuRememberLastPath, u"IsZandor"},
        {&Ui::frm_Main::mnuAutoBackup, u"AutoBackup"}, {&Ui::frm_Main::mnuConfirm, u"Update"},
        {&Ui::frm_Main::mnuEditor, u"Editor"},         {&Ui::frm_Main::mnuResizable, u"Resizeable"},
    };
    {
        frm_Main form(&dialogs);
        const int title = form.controls().txt_Title->font().pointSize();
        form.show();
        const QSize base = form.size();
        for (const auto &[member, name] : toggles) {
            (form.controls().*member)->trigger();
            EXPECT_EQ(settings.GetSetting(name), member == &Ui::frm_Main::mnuResizable ? u"1" : u"0");
        }
        EXPECT_FALSE(form.state().AutoBackupOn || form.state().ConfirmUpdates || form.state().InternalEditorOn);
        EXPECT_TRUE(form.windowResizable());
        form.resize(base.width() * 2, base.height());
        EXPECT_EQ(form.controls().txt_Title->font().pointSize(), title * 2) << "the fonts follow the width";
        form.resize(base);
        EXPECT_EQ(form.controls().txt_Title->font().pointSize(), title) << "back at the first size";
    }
    frm_Main again(&dialogs);
    for (const auto &[member, name] : toggles)
        EXPECT_EQ((again.controls().*member)->isChecked(), member == &Ui::frm_Main::mnuResizable);
}

// The Windows check registers a made-up FS9 and FSX in its Wine prefix and names their folders here.
TEST_F(StartUp, SimulatorsOfTheRegistryAreFound)
{
    const QString fs9 = qEnvironmentVariable("FLEETWRIGHT_REGISTERED_FS9");
    const QString fsx = qEnvironmentVariable("FLEETWRIGHT_REGISTERED_FSX");
    if (fs9.isEmpty() || fsx.isEmpty())
        GTEST_SKIP() << "no simulators registered for this run";
    setEnv("FLEETWRIGHT_FS9_DIR", std::nullopt);
    setEnv("FLEETWRIGHT_FSX_DIR", std::nullopt);
    frm_Main form(&dialogs);
    EXPECT_EQ(form.controls().StatusBar1->panelText(2) + form.controls().StatusBar1->panelText(5),
              QStringLiteral("foundfound"));
    EXPECT_TRUE(form.state().Fs9Found && form.state().FsxFound);
    EXPECT_EQ(std::filesystem::path(form.state().Fs9AircraftRoot),
              std::filesystem::path(fs9.toStdWString()) / "Aircraft");
    EXPECT_EQ(std::filesystem::path(form.state().FsxSimObjectsRoot),
              std::filesystem::path(fsx.toStdWString()) / "SimObjects");
}

TEST_F(StartUp, AboutBoxIsModalNamesTheSystemAndClosesOnAnyClick)
{
    frm_Main form(&dialogs);
    test::ModalDialogs<frm_About> boxes([](frm_About &about) {
        EXPECT_TRUE(about.findChild<QLabel *>(QStringLiteral("lblPlatform"))
                        ->text()
                        .startsWith(toQString(OperatingSystem().Name())));
        QTest::mouseClick(about.findChild<QWidget *>(QStringLiteral("Frame1")), Qt::LeftButton, {}, QPoint(2, 2));
    });
    form.controls().mnuAboutProg->trigger();
    EXPECT_EQ(boxes.opened, 1);
    EXPECT_EQ(form.findChild<frm_About *>(), nullptr) << "closed and gone when the item returns";
}

TEST(FormResizer, PlacesControlsOfAFormWithoutLayouts)
{
    QWidget form;
    form.setFixedSize(400, 300);
    auto *label = new QLabel(QStringLiteral("Label"), &form);
    label->setGeometry(30, 20, 100, 20);
    label->setFont(QFont(label->font().family(), 12));
    auto *combo = new QComboBox(&form);
    combo->setGeometry(10, 50, 120, 24);
    auto *list = new QListWidget(&form);
    list->setGeometry(10, 80, 120, 60);
    auto *hidden = new QLineEdit(&form); // off to the left, as controls of a page that is not showing stand
    hidden->setGeometry(30 - 5000, 100, 80, 20);
    FormResizer resizer;
    resizer.ResizeForm(&form);
    form.setFixedSize(800, 450);
    resizer.ResizeForm(&form);
    EXPECT_EQ(label->geometry(), QRect(60, 30, 200, 30));
    EXPECT_EQ(label->font().pointSize(), 24);
    EXPECT_EQ(combo->geometry(), QRect(20, 75, 240, 24)) << "a combo box keeps its height";
    EXPECT_EQ(list->geometry(), QRect(20, 120, 240, 90));
    EXPECT_TRUE(list->font().family() == QStringLiteral("Courier New") && list->font().bold());
    EXPECT_EQ(hidden->geometry(), QRect(60 - 5000, 150, 160, 30)) << "moves with the form and stays off to the left";
}

TEST_F(StartUp, UpdateDialogShowsTheVerdictOfTheWebVersion)
{
    setEnv("TEMP", dir.path().string());
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    QByteArray answer;
    QObject::connect(&server, &QTcpServer::newConnection, [&] {
        QTcpSocket *socket = server.nextPendingConnection();
        QObject::connect(socket, &QTcpSocket::readyRead, [&answer, socket] {
            socket->write(answer);
            socket->disconnectFromHost();
        });
    });
    settings.SaveSetting(UPDATE_URL_SETTING,
                         toU16String(QStringLiteral("http://127.0.0.1:%1/u").arg(server.serverPort())));
    for (const auto &[body, result] : {std::pair {QByteArray("F\r\n1.10.0\r\nhttp://h/dl.html\r\n"), NEWER_TEXT},
                                       {QByteArray("F\n0.0.0\nhttp://h/dl.html"), OWN_NEWER_TEXT}}) {
        answer = "HTTP/1.0 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
        frm_Update form(dialogs, nullptr, u"1.9.5");
        form.show();
        const auto label = [&form](const char *name) {
            return form.findChild<QLabel *>(QString::fromLatin1(name))->text();
        };
        ASSERT_TRUE(QTest::qWaitFor([&] { return !label("lblVERSION").isEmpty(); }, 30000));
        EXPECT_EQ(label("lblResult"), toQString(std::u16string(result)));
        EXPECT_EQ(label("lblPROGRESS"), toQString(progressText(body.size(), body.size())));
        EXPECT_FALSE(std::filesystem::exists(dir / "_vclu.txt")) << "the local copy is removed";
        std::u16string opened;
        form.vcUPDATECTL1()->openUrl = [&opened](const std::u16string &url) { return !(opened = url).empty(); };
        form.findChild<QPushButton *>(QStringLiteral("cmdNEXT"))->click();
        EXPECT_EQ(opened, result == NEWER_TEXT ? u"http://h/dl.html" : u"");
    }
    settings.SaveSetting(UPDATE_URL_SETTING, u"");
    frm_Update {dialogs};
    EXPECT_EQ(dialogs.records().at(0).text, NO_URL_TEXT);
}

TEST_F(StartUp, WeeklyUpdateCheckRunsOncePerWeekNumber)
{
    const auto start = [this] {
        frm_Main form(&dialogs);
        form.show();
        form.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&form));
    };
    start();
    start();
    EXPECT_EQ(updateFormsShown, 1);
    const QDate today = QDate::currentDate();
    EXPECT_EQ(settings.GetSetting(u"LastCheck"),
              toU16String(QString::number(weekOfYear(today.year(), today.month(), today.day()))));
    settings.SaveSetting(u"LastCheck", u"0");
    settings.SaveSetting(u"AutoUpdate", u"0");
    start();
    EXPECT_EQ(updateFormsShown, 1);
    frm_Main(&dialogs).controls().mnu_AppUpdate->trigger();
    EXPECT_EQ(updateFormsShown, 2) << "the menu item shows it whatever the week";
}
