// The live update dialog against an HTTP server of the test's own on 127.0.0.1, and the weekly check.
#include <QDate>
#include <QTcpServer>
#include <QTcpSocket>

#include "startupfixture.h"
#include "support/liveupdate.h"

using namespace fleetwright;
using test::StartUp;

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
