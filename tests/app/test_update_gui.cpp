// The live update dialog against a small HTTP server of the test's own on 127.0.0.1, and the weekly check.
#include <QAction>
#include <QDate>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include "app/gui/textconvert.h"
#include "startupfixture.h"

using namespace fleetwright;

namespace {

// Answers each request with a canned HTTP/1.0 response and closes. With streamed, that many more bytes of
// body follow, written only as fast as the client takes them.
class CannedServer
{
public:
    explicit CannedServer(QByteArray response, qint64 streamed = 0)
        : m_response(std::move(response))
        , m_streamed(streamed)
    {
        m_server.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&m_server, &QTcpServer::newConnection, [this] { accept(m_server.nextPendingConnection()); });
    }
    QString url() const { return QStringLiteral("http://127.0.0.1:%1/u/fleetwright.txt").arg(m_server.serverPort()); }

    qint64 sent = 0;
    bool clientGone = false;

private:
    void accept(QTcpSocket *socket)
    {
        QObject::connect(socket, &QTcpSocket::readyRead, [this, socket] {
            m_request += socket->readAll();
            if (!m_request.contains("\r\n\r\n") || std::exchange(m_answered, true))
                return;
            socket->write(m_response);
            feed(socket);
        });
        QObject::connect(socket, &QTcpSocket::bytesWritten, [this, socket] { feed(socket); });
        QObject::connect(socket, &QTcpSocket::disconnected, [this, socket] {
            clientGone = true;
            socket->deleteLater();
        });
    }
    void feed(QTcpSocket *socket)
    {
        while (sent < m_streamed && socket->state() == QAbstractSocket::ConnectedState
               && socket->bytesToWrite() < 256 * 1024) {
            const qint64 chunk = std::min<qint64>(64 * 1024, m_streamed - sent);
            socket->write(QByteArray(chunk, 'x'));
            sent += chunk;
        }
        if (sent >= m_streamed && socket->state() == QAbstractSocket::ConnectedState)
            socket->disconnectFromHost();
    }

    QTcpServer m_server;
    QByteArray m_response;
    QByteArray m_request;
    qint64 m_streamed;
    bool m_answered = false;
};

QByteArray httpAnswer(const char *status, const QByteArray &body, qint64 length = -1)
{
    return QByteArray("HTTP/1.0 ") + status + "\r\nContent-Type: text/plain\r\nContent-Length: "
        + QByteArray::number(length < 0 ? body.size() : length) + "\r\n\r\n" + body;
}

QString labelText(const frm_Update &form, const char *name)
{
    return form.findChild<QLabel *>(QString::fromLatin1(name))->text();
}

// The guard only keeps a broken build from hanging the run.
bool checkEnded(const frm_Update &form)
{
    return QTest::qWaitFor(
        [&form] {
            return !labelText(form, "lblVERSION").isEmpty()
                || labelText(form, "lblPROGRESS") == toQString(std::u16string(CONNECTION_ERROR_TEXT));
        },
        30000);
}

class LiveUpdateGui : public test::StartUp
{
protected:
    void SetUp() override
    {
        StartUp::SetUp();
        std::filesystem::create_directories(dir / "temp");
        env.set("TEMP", test::bytesOf(dir / "temp"));
    }
    void useUrl(const QString &url) { settings.SaveSetting(UPDATE_URL_SETTING, toU16String(url)); }
    bool localCopyLeft() const { return std::filesystem::exists(dir / "temp" / "_vclu.txt"); }
};

} // namespace

TEST_F(LiveUpdateGui, VerdictFollowsTheWebVersion)
{
    // The second line of a typical server error page has three parts, none of them a number.
    const QByteArray errorPage = "<!DOCTYPE html>\r\n<html xmlns=\"http://www.w3.org/1999/xhtml\">\r\n<head>\r\n";
    struct Row
    {
        const char *name;
        QByteArray answer;
        const char16_t *own;
        std::u16string_view result;
    };
    const Row rows[] = {
        {"newer", httpAnswer("200 OK", "F\r\n1.4.0\r\nhttp://h/dl.html\r\n"), u"1.3.9", NEWER_TEXT},
        {"same", httpAnswer("200 OK", "F\n1.4.0\nhttp://h/dl.html"), u"1.4.0", SAME_TEXT},
        {"own newer", httpAnswer("200 OK", "F\r\n1.4.0\r\n"), u"2.0.0", OWN_NEWER_TEXT},
        {"numbers", httpAnswer("200 OK", "F\r\n1.10.0\r\nhttp://h/dl.html\r\n"), u"1.9.5", NEWER_TEXT},
        {"one line", httpAnswer("200 OK", "1.4.0"), u"1.4.0", u""},
        {"error page", httpAnswer("404 Not Found", errorPage), u"1.0.0", OWN_NEWER_TEXT},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        CannedServer server(row.answer);
        useUrl(server.url());
        frm_Update form(dialogs, nullptr, row.own);
        form.show();
        ASSERT_TRUE(checkEnded(form));
        EXPECT_EQ(labelText(form, "lblResult"), toQString(std::u16string(row.result)));
        auto *next = form.findChild<QPushButton *>(QStringLiteral("cmdNEXT"));
        EXPECT_EQ(next->isVisible() && next->isEnabled(), row.result == NEWER_TEXT);
        EXPECT_FALSE(localCopyLeft());
        EXPECT_TRUE(dialogs.records().empty());
        if (row.result != NEWER_TEXT)
            continue;
        const qint64 size = row.answer.size() - row.answer.indexOf("\r\n\r\n") - 4;
        EXPECT_EQ(labelText(form, "lblPROGRESS"), toQString(progressText(size, size)));
        EXPECT_EQ(labelText(form, "lblVERSION"), toQString(versionLineText(row.own, form.vcUPDATECTL1()->WebVersion)));
        std::u16string opened;
        form.vcUPDATECTL1()->openUrl = [&opened](const std::u16string &url) { return !(opened = url).empty(); };
        next->click();
        EXPECT_EQ(opened, u"http://h/dl.html");
        EXPECT_FALSE(form.isVisible());
    }
}

TEST_F(LiveUpdateGui, AddressesThatCannotBeFetched)
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    const quint16 unusedPort = probe.serverPort();
    probe.close();
    useUrl(QStringLiteral("http://127.0.0.1:%1/u.txt").arg(unusedPort));
    {
        frm_Update form(dialogs);
        ASSERT_TRUE(checkEnded(form));
        EXPECT_EQ(labelText(form, "lblPROGRESS"), toQString(std::u16string(CONNECTION_ERROR_TEXT)));
        EXPECT_TRUE(labelText(form, "lblResult").isEmpty());
    }
    useUrl(QStringLiteral("ftp://127.0.0.1/u.txt"));
    frm_Update {dialogs};
    useUrl(QString());
    frm_Update {dialogs};
    ASSERT_EQ(dialogs.records().size(), 2u);
    EXPECT_EQ(
        dialogs.records()[0],
        (DialogRecord {DialogKind::Exclamation, u"Warning", beginDownloadErrorText(u"Protocol \"ftp\" is unknown")}));
    EXPECT_EQ(dialogs.records()[1], (DialogRecord {DialogKind::Critical, u"Error", std::u16string(NO_URL_TEXT)}));
}

TEST_F(LiveUpdateGui, EndlessAnswerIsCutAndTheProgramFolderServesWithoutTemp)
{
    const qint64 hundredMegabytes = 100 * 1024 * 1024;
    const QByteArray lines = "F\r\n1.0.0\r\nhttp://h/\r\n";
    CannedServer server(httpAnswer("200 OK", lines, lines.size() + hundredMegabytes), hundredMegabytes);
    useUrl(server.url());
    qunsetenv("TEMP");
    frm_Update form(dialogs, nullptr, u"1.0.0");
    ASSERT_TRUE(checkEnded(form));
    EXPECT_EQ(labelText(form, "lblResult"), toQString(std::u16string(SAME_TEXT)));
    ASSERT_TRUE(QTest::qWaitFor([&server] { return server.clientGone; }, 30000));
    EXPECT_LT(server.sent, hundredMegabytes);

    const QString programFolder = QDir::toNativeSeparators(QCoreApplication::applicationDirPath() + u'/');
    EXPECT_EQ(toQString(form.vcUPDATECTL1()->LocalFolder), programFolder);
    EXPECT_FALSE(QFile::exists(programFolder + QStringLiteral("_vclu.txt")));
}

TEST_F(LiveUpdateGui, WeeklyCheckRunsOncePerWeekNumber)
{
    const QDate today = QDate::currentDate();
    const auto week = QString::number(weekOfYear(today.year(), today.month(), today.day()));
    const auto start = [this] {
        frm_Main form(&dialogs);
        form.show();
        form.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&form));
    };
    start();
    EXPECT_EQ(updateForms.shown, 1);
    EXPECT_EQ(toQString(settings.GetSetting(u"LastCheck")), week);
    start();
    EXPECT_EQ(updateForms.shown, 1);

    settings.SaveSetting(u"LastCheck", u"0");
    settings.SaveSetting(u"AutoUpdate", u"0");
    start();
    EXPECT_EQ(updateForms.shown, 1);
    EXPECT_EQ(settings.GetSetting(u"LastCheck"), u"0");

    // The menu item shows the dialog whatever the week.
    frm_Main form(&dialogs);
    form.controls().mnu_AppUpdate->trigger();
    EXPECT_EQ(updateForms.shown, 2);

    settings.SaveSetting(u"AutoUpdate", u"1");
    settings.SaveSetting(u"LastCheck", u"week");
    start();
    EXPECT_EQ(updateForms.shown, 2);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_NE(dialogs.records()[0].text.find(u"Type mismatch"), std::u16string::npos);
    EXPECT_NE(dialogs.records()[0].text.find(u"Procedure Form_Activate"), std::u16string::npos);
}
