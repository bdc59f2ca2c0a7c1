#include <functional>
#include <memory>
#include <string>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include "app/gui/qtdialogs.h"
#include "app/gui/textconvert.h"
#include "core/scripteddialogs.h"
#include "support/tooltips.h"

using fleetwright::DialogKind;
using fleetwright::DialogRecord;
using fleetwright::ScriptedDialogs;

namespace {

const QString LONG_TIP = QStringLiteral(
    "Shows all [fltsim.x] sections of the aircraft.cfg file. Double-click a row to edit it, tick the check boxes "
    "to select rows for delete or update operations, and right-click the header to choose the columns.");

// A small form as the designer would leave it: controls with and without tooltips, and a menu.
struct Form
{
    Form()
    {
        auto *layout = new QVBoxLayout(&window);
        auto *menuBar = new QMenuBar(&window);
        layout->setMenuBar(menuBar);
        menuAction = menuBar->addMenu(QStringLiteral("&File"))->addAction(QStringLiteral("&Open"));
        menuAction->setToolTip(QStringLiteral("Menu tip"));

        title = new QLineEdit(&window);
        title->setObjectName(QStringLiteral("txt_Title"));
        title->setToolTip(QStringLiteral("Title <b>& \"name\"</b>\nsecond line"));
        list = new QTreeWidget(&window);
        list->setObjectName(QStringLiteral("ListView1"));
        list->setToolTip(LONG_TIP);
        label = new QLabel(QStringLiteral("Title:"), &window);
        label->setToolTip(QStringLiteral("Label tip"));
        button = new QPushButton(QStringLiteral("Update"), &window);
        for (QWidget *control : {static_cast<QWidget *>(title), static_cast<QWidget *>(list),
                                 static_cast<QWidget *>(label), static_cast<QWidget *>(button)})
            layout->addWidget(control);
        window.show();
    }

    QWidget window;
    QAction *menuAction = nullptr;
    QLineEdit *title = nullptr;
    QTreeWidget *list = nullptr;
    QLabel *label = nullptr;
    QPushButton *button = nullptr;
};

QLabel *shownToolTip()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == QLatin1String("qtooltip_label") && widget->isVisible())
            return qobject_cast<QLabel *>(widget);
    }
    return nullptr;
}

struct ShownBox
{
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QStringList buttons;
};

// Runs ask, which opens a modal box; once the box is up it is recorded and handed to act, which answers it.
int answerBox(ShownBox &shown, const std::function<void(QMessageBox *)> &act, const std::function<int()> &ask)
{
    QTimer poll;
    poll.setInterval(10);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        poll.stop();
        shown.title = box->windowTitle();
        shown.text = box->text();
        shown.icon = box->icon();
        for (QAbstractButton *button : box->buttons()) {
            if (button->isVisible())
                shown.buttons.append(button->text());
        }
        // A box the test failed to answer still ends, so the run does not hang.
        QTimer::singleShot(5000, box, [box] { box->done(-1); });
        act(box);
    });
    poll.start();
    return ask();
}

std::function<void(QMessageBox *)> clickButton(const QString &text)
{
    return [text](QMessageBox *box) {
        for (QAbstractButton *button : box->buttons()) {
            if (button->text() == text) {
                button->click();
                return;
            }
        }
    };
}

} // namespace

TEST(Tooltips, ControlsShowBalloons)
{
    Form form;
    SetUpToolTips(&form.window, true);

    // The text stays readable, and the balloon carries it escaped under its title.
    EXPECT_EQ(plainToolTip(form.title), QStringLiteral("Title <b>& \"name\"</b>\nsecond line"));
    EXPECT_TRUE(form.title->toolTip().contains(QStringLiteral("<b>Fleetwright:</b>")));
    EXPECT_TRUE(form.title->toolTip().contains(QStringLiteral("Title &lt;b&gt;&amp; &quot;name&quot;&lt;/b&gt;")));
    EXPECT_TRUE(Qt::mightBeRichText(form.title->toolTip()));
    // Lists and labels too; a control without a text gets none; menu entries keep their own.
    EXPECT_EQ(plainToolTip(form.list), LONG_TIP);
    EXPECT_TRUE(form.list->toolTip().contains(QStringLiteral("Fleetwright:")));
    EXPECT_EQ(plainToolTip(form.label), QStringLiteral("Label tip"));
    EXPECT_TRUE(form.button->toolTip().isEmpty());
    EXPECT_EQ(form.menuAction->toolTip(), QStringLiteral("Menu tip"));

    // A second set-up leaves the balloons as they were.
    const QString balloon = form.list->toolTip();
    SetUpToolTips(&form.window, true);
    EXPECT_EQ(form.list->toolTip(), balloon);
    EXPECT_EQ(plainToolTip(form.list), LONG_TIP);

    // Shown, the balloon is light orange and no wider than 250 pixels, however long its text.
    for (QWidget *control : {static_cast<QWidget *>(form.title), static_cast<QWidget *>(form.list)}) {
        SCOPED_TRACE(control->objectName().toStdString());
        QToolTip::showText(control->mapToGlobal(QPoint(5, 5)), control->toolTip(), control);
        QLabel *tip = shownToolTip();
        ASSERT_NE(tip, nullptr);
        EXPECT_LE(tip->width(), TOOL_TIP_MAX_WIDTH);
        EXPECT_GT(tip->height(), 20);
        const QImage image = tip->grab().toImage();
        EXPECT_EQ(image.pixelColor(image.width() - 3, image.height() / 2), QColor(0xFF, 0xE0, 0xC0));
        QToolTip::hideText();
    }
    QToolTip::showText(form.title->mapToGlobal(QPoint(5, 5)), form.title->toolTip(), form.title);
    ASSERT_NE(shownToolTip(), nullptr);
    const int shortWidth = shownToolTip()->width();
    QToolTip::showText(form.list->mapToGlobal(QPoint(5, 5)), form.list->toolTip(), form.list);
    ASSERT_NE(shownToolTip(), nullptr);
    EXPECT_GT(shownToolTip()->height(), 60) << "the long text wraps onto several lines";
    EXPECT_LT(shortWidth, TOOL_TIP_MAX_WIDTH);
    QToolTip::hideText();

    // A status bar panel formats its own tip the same way.
    EXPECT_EQ(balloonToolTip(QStringLiteral("Label tip")), form.label->toolTip());
}

TEST(Tooltips, SettingOffLeavesNoTooltip)
{
    for (const bool balloonsFirst : {false, true}) {
        SCOPED_TRACE(balloonsFirst ? "after balloons" : "designed texts");
        Form form;
        if (balloonsFirst)
            SetUpToolTips(&form.window, true);
        SetUpToolTips(&form.window, false);
        for (QWidget *control : form.window.findChildren<QWidget *>()) {
            EXPECT_TRUE(control->toolTip().isEmpty()) << control->objectName().toStdString();
            EXPECT_TRUE(plainToolTip(control).isEmpty()) << control->objectName().toStdString();
        }
    }
}

TEST(Tooltips, AskWithLabelsAnswersByButton)
{
    QWidget owner;
    owner.show();
    const std::u16string title = u"Validate Aircraft";
    const std::u16string prompt = u"Select FS-Version for ATC/Effects Analysis";
    const auto ask = [&] { return AskWithLabels(&owner, title, prompt, u"FS9", u"FSX"); };

    struct Row
    {
        const char *name;
        std::function<void(QMessageBox *)> act;
        int expected;
    };
    const Row rows[] = {
        {"first label", clickButton(QStringLiteral("FS9")), 6},
        {"second label", clickButton(QStringLiteral("FSX")), 7},
        {"cancel", clickButton(QStringLiteral("Cancel")), 2},
        {"escape", [](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Escape); }, 2},
        {"closed", [](QMessageBox *box) { box->close(); }, 2},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        ShownBox shown;
        EXPECT_EQ(answerBox(shown, row.act, ask), row.expected);
        EXPECT_EQ(shown.title, QStringLiteral("Validate Aircraft"));
        EXPECT_EQ(shown.text, QStringLiteral("Select FS-Version for ATC/Effects Analysis"));
        EXPECT_EQ(shown.icon, QMessageBox::Question);
        shown.buttons.sort();
        EXPECT_EQ(shown.buttons,
                  (QStringList {QStringLiteral("Cancel"), QStringLiteral("FS9"), QStringLiteral("FSX")}));
    }

    // Through a scripted Dialogs, as the validation run's tests answer it.
    ScriptedDialogs dialogs;
    for (const auto &[button, expected] : {std::pair(1, 6), std::pair(2, 7), std::pair(3, 2), std::pair(0, 2)}) {
        dialogs.pushButton(button);
        EXPECT_EQ(AskWithLabels(dialogs, title, prompt, u"FS9", u"FSX"), expected) << button;
    }
    EXPECT_EQ(dialogs.records().at(0),
              (DialogRecord {DialogKind::ThreeButtonQuestion, title, prompt, {u"FS9", u"FSX", u"Cancel"}}));
}

TEST(QtDialogs, BoxesCarryTheirSymbolAndTitle)
{
    QWidget owner;
    owner.show();
    QtDialogs dialogs(&owner);
    struct Row
    {
        const char *name;
        std::function<void()> ask;
        QMessageBox::Icon icon;
        QString title;
    };
    const Row rows[] = {
        {"information", [&] { dialogs.information(u"Done.", u"Report"); }, QMessageBox::Information,
         QStringLiteral("Report")},
        {"critical", [&] { dialogs.critical(u"Cannot write.", {}); }, QMessageBox::Critical,
         QStringLiteral("Fleetwright")},
        {"plain", [&] { dialogs.plain(u"ERROR: x. [Error #5]", {}); }, QMessageBox::NoIcon,
         QStringLiteral("Fleetwright")},
        {"exclamation", [&] { dialogs.exclamation(u"Search text was not found.", u"Find Text"); }, QMessageBox::Warning,
         QStringLiteral("Find Text")},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        ShownBox shown;
        answerBox(shown, clickButton(QStringLiteral("OK")), [&] {
            row.ask();
            return 0;
        });
        EXPECT_EQ(shown.icon, row.icon);
        EXPECT_EQ(shown.title, row.title);
        EXPECT_EQ(shown.buttons, QStringList {QStringLiteral("OK")});
    }

    ShownBox shown;
    const auto yesNoCancel = [&] { return dialogs.yesNoCancel(u"You have changed this text.", {}); };
    EXPECT_EQ(answerBox(shown, clickButton(QStringLiteral("&Yes")), yesNoCancel), 6);
    EXPECT_EQ(shown.icon, QMessageBox::Warning);
    EXPECT_EQ(answerBox(shown, clickButton(QStringLiteral("&No")), yesNoCancel), 7);
    EXPECT_EQ(answerBox(
                  shown, [](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Escape); }, yesNoCancel),
              2);
    EXPECT_TRUE(answerBox(shown, clickButton(QStringLiteral("&Yes")),
                          [&] { return int(dialogs.question(u"Are you sure?", {})); }));
    EXPECT_EQ(shown.icon, QMessageBox::Question);

    // Every button of a three-button question answers; leaving the box answers none of them.
    const auto three = [&] { return dialogs.threeButtonQuestion(u"Which?", {}, u"One", u"Two", u"Three"); };
    EXPECT_EQ(answerBox(shown, clickButton(QStringLiteral("Three")), three), 3);
    EXPECT_EQ(answerBox(
                  shown, [](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Escape); }, three),
              0);
}

TEST(QtDialogs, FilterTextsBecomeQtFilters)
{
    struct Row
    {
        const char16_t *filter;
        const char *qt;
        const char *suffix;
    };
    const Row rows[] = {
        {u"Text Files (*.txt)|*.txt|All Files (*.*)|*.*", "Text Files (*.txt);;All Files (*.*)", "txt"},
        {u"Air files|*.air", "Air files (*.air)", "air"},
        {u"Models (*.mdl)|*.mdl;*.MDL", "Models (*.mdl) (*.mdl *.MDL)", "mdl"},
        {u"All Files (*.*)|*.*|Text|*.txt", "All Files (*.*);;Text (*.txt)", ""},
        {u"Reports|corvane*.log", "Reports (corvane*.log)", ""},
        {u"", "", ""},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.qt);
        EXPECT_EQ(qtFileFilter(row.filter), QString::fromLatin1(row.qt));
        EXPECT_EQ(defaultSuffix(row.filter), QString::fromLatin1(row.suffix));
    }
}
