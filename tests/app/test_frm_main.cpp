#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QSignalSpy>
#include <QTimer>

#include <gtest/gtest.h>

#include "app/frm_main.h"
#include "app/gui/textconvert.h"
#include "support/windowtitle.h"
#include "version.h"

namespace {

QString versionText()
{
    return QStringLiteral("%1.%2.%3")
        .arg(fleetwright::VERSION_MAJOR)
        .arg(fleetwright::VERSION_MINOR)
        .arg(fleetwright::VERSION_REVISION);
}

} // namespace

TEST(FrmMain, TitleCarriesVersionAndMakerLine)
{
    frm_Main form;
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

TEST(FrmMain, QuitClosesTheWindowAtOnce)
{
    frm_Main form;
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
