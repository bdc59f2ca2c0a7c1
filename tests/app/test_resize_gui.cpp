#include <map>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFont>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "app/gui/folderwidgets.h"
#include "app/gui/statusbarpanels.h"
#include "startupfixture.h"
#include "support/formresizer.h"

using fleetwright::test::StartUp;

namespace {

// The main form shown, with "Program Resizable" switched on at its designed size.
class Resizing : public StartUp
{
protected:
    void showResizable(frm_Main &form)
    {
        form.show();
        form.controls().mnuResizable->trigger();
        ASSERT_TRUE(form.ResizableOn);
        base = form.size();
    }

    // Wider by half, rounded up so that the percentage is exactly 150.
    QSize halfAgainAsWide() const { return QSize((base.width() * 3 + 1) / 2, base.height()); }

    QSize base;
};

struct Watched
{
    const char *name;
    QWidget *widget;
    bool scales;
};

std::vector<Watched> watchedControls(const frm_Main &form)
{
    const MainFormControls &c = form.controls();
    return {
        {"label", c.lblSelections, true},
        {"button", c.cmd_cfg_Update, true},
        {"text box", c.txt_Title, true},
        {"option", c.opt_FS9, true},
        {"check box", c.chk_atc_heavy, true},
        {"frame", c.fraAircraftType, true},
        {"combo", c.combo_Texture, true},
        {"drive list", c.Drive1, true},
        {"hidden page", c.txt_effects[0], true},
        {"folder list", c.Dir1, false},
        {"grid", c.ListView1, false},
        {"tabs", c.SSTab1, false},
        {"status bar", c.StatusBar1, false},
    };
}

std::map<QWidget *, int> pointSizes(const frm_Main &form)
{
    std::map<QWidget *, int> sizes;
    for (const Watched &control : watchedControls(form))
        sizes[control.widget] = control.widget->font().pointSize();
    sizes[form.controls().lst_Airfile] = form.controls().lst_Airfile->font().pointSize();
    return sizes;
}

void expectScaled(const frm_Main &form, const std::map<QWidget *, int> &before, int percent)
{
    for (const Watched &control : watchedControls(form)) {
        SCOPED_TRACE(control.name);
        const int old = before.at(control.widget);
        EXPECT_EQ(control.widget->font().pointSize(), control.scales ? old * percent / 100 : old);
    }
}

} // namespace

TEST_F(Resizing, FontsFollowTheWidthFromTheFirstRegistration)
{
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    // A 9-point box shows the rounding: 13.5 points become 13.
    QFont nine = c.txt_ui_Type->font();
    nine.setPointSize(9);
    c.txt_ui_Type->setFont(nine);
    const std::map<QWidget *, int> before = pointSizes(form);
    showResizable(form);
    ASSERT_EQ(c.SSTab1->currentIndex(), 0);

    form.resize(halfAgainAsWide());
    ASSERT_EQ(form.width() * 100 / base.width(), 150);
    expectScaled(form, before, 150);
    EXPECT_EQ(c.txt_ui_Type->font().pointSize(), 13);
    // List boxes take a fixed-pitch bold font of the new size.
    EXPECT_EQ(c.lst_Airfile->font().family(), QStringLiteral("Courier New"));
    EXPECT_TRUE(c.lst_Airfile->font().bold());
    EXPECT_EQ(c.lst_Airfile->font().pointSize(), before.at(c.lst_Airfile) * 150 / 100);

    // A field on a page that is not showing stays hidden, and is in place on its page once the page shows.
    QWidget *effect = c.txt_effects[0];
    EXPECT_FALSE(effect->isVisible());
    c.SSTab1->setCurrentIndex(3);
    QApplication::processEvents();
    ASSERT_TRUE(effect->isVisible());
    const QWidget *page = c.SSTab1->currentWidget();
    EXPECT_TRUE(page->rect().contains(QRect(effect->mapTo(page, QPoint(0, 0)), effect->size())));

    // Back at the first size every font is as it was: the sizes come from the first values each time.
    form.resize(base);
    ASSERT_EQ(form.size(), base);
    expectScaled(form, before, 100);
    EXPECT_EQ(c.txt_ui_Type->font().pointSize(), 9);
}

TEST_F(Resizing, NothingChangesWhileTheOptionIsOff)
{
    frm_Main form(&dialogs);
    const std::map<QWidget *, int> before = pointSizes(form);
    form.show();
    ASSERT_FALSE(form.ResizableOn);
    const QSize designed = form.size();
    form.setFixedSize(designed.width() * 2, designed.height());
    expectScaled(form, before, 100);

    // Switched on and grown by half, then off: a later change of size leaves the fonts where they were.
    form.setFixedSize(designed);
    showResizable(form);
    form.resize(halfAgainAsWide());
    expectScaled(form, before, 150);
    form.controls().mnuResizable->trigger();
    ASSERT_FALSE(form.ResizableOn);
    form.setFixedSize(base.width() * 2, base.height());
    expectScaled(form, before, 150);
}

TEST_F(Resizing, AResizeDuringAResizeIsIgnored)
{
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    const std::map<QWidget *, int> before = pointSizes(form);
    showResizable(form);

    // The update button takes its font late in the run; at that moment the window doubles its width.
    struct Doubler : QObject
    {
        frm_Main *form;
        QSize size;
        bool done = false;
        bool eventFilter(QObject *, QEvent *event) override
        {
            if (event->type() == QEvent::FontChange && !done) {
                done = true;
                form->resize(size);
            }
            return false;
        }
    } doubler;
    doubler.form = &form;
    doubler.size = QSize(base.width() * 2, base.height());
    c.cmd_cfg_Update->installEventFilter(&doubler);

    form.resize(halfAgainAsWide());
    ASSERT_TRUE(doubler.done);
    ASSERT_EQ(form.width(), base.width() * 2);
    // Controls done before the inner resize keep the size of the outer one: the inner one did nothing.
    EXPECT_EQ(c.txt_Title->font().pointSize(), before.at(c.txt_Title) * 150 / 100);
    EXPECT_EQ(c.lblSelections->font().pointSize(), before.at(c.lblSelections) * 150 / 100);
    c.cmd_cfg_Update->removeEventFilter(&doubler);

    // The next resize computes everything afresh.
    form.resize(base.width() * 2, base.height() + 2);
    expectScaled(form, before, 200);
}

TEST(FormResizer, PlacesControlsOfAFormWithoutLayouts)
{
    QWidget form;
    form.setObjectName(QStringLiteral("frm_Plain"));
    form.setFixedSize(400, 300);
    auto *label = new QLabel(QStringLiteral("Label"), &form);
    label->setGeometry(30, 20, 100, 20);
    QFont twelve = label->font();
    twelve.setPointSize(12);
    label->setFont(twelve);
    auto *combo = new QComboBox(&form);
    combo->setGeometry(10, 50, 120, 24);
    auto *list = new QListWidget(&form);
    list->setGeometry(10, 80, 120, 60);
    // Off to the left, as controls of a page that is not showing stand: 5000 pixels are 75000 twips.
    auto *hidden = new QLineEdit(&form);
    hidden->setGeometry(30 - 5000, 100, 80, 20);
    form.show();

    FormResizer resizer;
    resizer.ResizeForm(&form);
    ASSERT_EQ(resizer.FindForm(&form), 0);
    EXPECT_EQ(resizer.formRecords()[0].ScaleWidth, 400 * 15);
    const int hiddenRecord = resizer.FindControl(hidden, QStringLiteral("frm_Plain"));
    ASSERT_GE(hiddenRecord, 0);
    EXPECT_EQ(resizer.controlRecords()[static_cast<std::size_t>(hiddenRecord)].Left, 30 * 15);

    form.setFixedSize(800, 450);
    resizer.ResizeForm(&form);
    EXPECT_EQ(resizer.WidthPercent(&form), 200);
    EXPECT_EQ(resizer.HeightPercent(&form), 150);
    EXPECT_EQ(label->geometry(), QRect(60, 30, 200, 30));
    EXPECT_EQ(label->font().pointSize(), 24);
    EXPECT_EQ(combo->geometry(), QRect(20, 75, 240, 24)); // a combo box keeps its height
    EXPECT_EQ(list->geometry(), QRect(20, 120, 240, 90));
    EXPECT_EQ(list->font().family(), QStringLiteral("Courier New"));
    // The hidden control moves with the form and stays off to the left.
    EXPECT_EQ(hidden->geometry(), QRect(60 - 5000, 150, 160, 30));

    // Shrunk to nothing: the sizes go to 0 and the font to its smallest.
    form.setFixedSize(1, 1);
    resizer.ResizeForm(&form);
    EXPECT_EQ(label->font().pointSize(), 1);
    EXPECT_EQ(label->geometry(), QRect(0, 0, 0, 0));
}
