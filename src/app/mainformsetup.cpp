#include "mainformsetup.h"

#include <algorithm>

#include <QAbstractScrollArea>
#include <QEvent>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHeaderView>
#include <QLayout>
#include <QStyle>
#include <QStyleOption>

#include "ui_frm_main.h"
#include "ui_frm_rightclick.h"

namespace fleetwright {

namespace {

constexpr int GRID_COLUMNS = 17;
constexpr int FORM_WIDTH = 1180;
constexpr int FORM_HEIGHT = 760;

// Places the parking type list under its box each time it is shown, above everything else on the form.
class DropDownPlacer : public QObject
{
public:
    DropDownPlacer(QListWidget *list, QWidget *anchor)
        : QObject(list)
        , m_list(list)
        , m_anchor(anchor)
    {
        list->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == m_list && event->type() == QEvent::Show) {
            QWidget *host = m_list->parentWidget();
            const QPoint below = m_anchor->mapTo(host, QPoint(0, m_anchor->height()));
            const int rows = m_list->count();
            const int rowHeight = m_list->sizeHintForRow(0);
            const int height = std::max(rows, 1) * std::max(rowHeight, 1) + 2 * m_list->frameWidth() + 4;
            m_list->setGeometry(below.x(), below.y(), m_anchor->width(), height);
            m_list->raise();
        }
        return false;
    }

private:
    QListWidget *m_list;
    QWidget *m_anchor;
};

// The captions and layouts of the form never had names; uic has to give them one, the window does not keep it.
void dropMadeUpNames(QWidget *root)
{
    for (QLabel *label : root->findChildren<QLabel *>())
        if (label->objectName().startsWith(QStringLiteral("label")))
            label->setObjectName(QString());
    for (QLayout *layout : root->findChildren<QLayout *>())
        layout->setObjectName(QString());
}

// The folder pane has always been as wide as it asks to be measured on its own, as a window: the style gives
// a window's layout wider margins than a child's.
int paneWidth(const QWidget *pane)
{
    QStyleOption asChild;
    asChild.initFrom(pane);
    QStyleOption asWindow = asChild;
    asWindow.state |= QStyle::State_Window;
    const QStyle *style = pane->style();
    const auto margins = [&](const QStyleOption &option) {
        return style->pixelMetric(QStyle::PM_LayoutLeftMargin, &option, pane)
            + style->pixelMetric(QStyle::PM_LayoutRightMargin, &option, pane);
    };
    return pane->sizeHint().width() + margins(asWindow) - margins(asChild);
}

// Sizes that follow the font and style in use, so the form cannot give them as numbers.
void sizeToFont(const Ui::frm_Main &ui)
{
    ui.fraFolder->setFixedWidth(std::max(250, paneWidth(ui.fraFolder)));
    ui.picCombo->setMinimumHeight(ui.txt_atc_Id->sizeHint().height());
    const QFontMetrics metrics = ui.cmd_ParkingCodes->fontMetrics();
    ui.cmd_ParkingCodes->setFixedWidth(metrics.horizontalAdvance(QStringLiteral("...")) + 2 * metrics.height());
    ui.txt_Jetways->setMinimumWidth(
        ui.txt_Jetways->fontMetrics().horizontalAdvance(QStringLiteral("Jetways possible: yes")) * 3 / 2);
    // The gap between the two columns of effects.
    if (auto *effects = qobject_cast<QGridLayout *>(ui.fraEffects->layout()))
        effects->setColumnMinimumWidth(3, QFontMetrics(ui.fraEffects->font()).height());
}

} // namespace

void finishMainForm(const Ui::frm_Main &ui)
{
    for (QMenu *menu : {ui.mnuFile, ui.mnuEdit, ui.mnuSettings, ui.mnuTools, ui.mnuAbout})
        menu->menuAction()->setObjectName(menu->objectName() + QStringLiteral("_action"));
    dropMadeUpNames(ui.centralWidget);

    // Rows stay in file order: a click on a header does nothing.
    ui.ListView1->header()->setSectionsClickable(false);
    ui.ListView1->header()->setSectionsMovable(false);

    ui.lstParking->hide();
    new DropDownPlacer(ui.lstParking, ui.picCombo);
    sizeToFont(ui);
}

void fixMainFormSize(QMainWindow *form, const Ui::frm_Main &ui)
{
    // Fixed by design; the size grows only if the fonts need more room than the default.
    const QSize needed = form->minimumSizeHint().expandedTo(QSize(FORM_WIDTH, FORM_HEIGHT));
    form->setFixedSize(needed);
    if (QLayout *layout = form->layout())
        layout->activate();
    if (QLayout *layout = ui.centralWidget->layout())
        layout->activate();
    const int columnWidth = std::max(ui.ListView1->viewport()->width(), ui.ListView1->width()) / 8;
    for (int column = 0; column < GRID_COLUMNS; ++column)
        ui.ListView1->setColumnWidth(column, columnWidth);
}

} // namespace fleetwright
