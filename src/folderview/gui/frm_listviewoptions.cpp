#include "folderview/gui/frm_listviewoptions.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "core/gui/textconvert.h"
#include "environment/programstate.h"
#include "environment/startupsettings.h"
#include "platform/settingsstore.h"
#include "support/gui/tooltips.h"

namespace {

constexpr int FIRST_OPTIONAL_COLUMN = 2; // column 3, counted from 0
// The width in twips that a shown column gets back, in pixels at the usual 15 twips per pixel.
constexpr int SHOWN_COLUMN_WIDTH = 1150 / 15;

QPushButton *addButton(QBoxLayout *row, const char *name, const QString &caption, const QString &tip)
{
    auto *button = new QPushButton(caption);
    button->setObjectName(QString::fromLatin1(name));
    button->setToolTip(tip);
    row->addWidget(button);
    return button;
}

} // namespace

frm_ListViewOptions::frm_ListViewOptions(QTreeWidget *grid, const fleetwright::platform::SettingsStore &settings,
                                         QWidget *parent)
    : QDialog(parent)
    , m_grid(grid)
    , m_settings(settings)
{
    setObjectName(QStringLiteral("frm_ListViewOptions"));
    setWindowTitle(QStringLiteral("Define which data grid columns are hidden"));
    setAttribute(Qt::WA_DeleteOnClose);

    m_list = new QListWidget;
    m_list->setObjectName(QStringLiteral("List1"));
    m_list->setToolTip(QStringLiteral("Place a checkmark beside the columns that you want to hide in the main data "
                                      "grid.  You will see the result instantly ."));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    auto *selection = new QHBoxLayout;
    QPushButton *all =
        addButton(selection, "cmd_All", QStringLiteral("Select &All"), QStringLiteral("Select all options above"));
    QPushButton *none =
        addButton(selection, "cmd_None", QStringLiteral("Select &None"), QStringLiteral("De-select all options above"));
    layout->addLayout(selection);
    auto *closing = new QHBoxLayout;
    QPushButton *close = addButton(closing, "cmdClose", QStringLiteral("&Close"),
                                   QStringLiteral("Close the form without saving. Changed settings are lost when "
                                                  "you close the program. "));
    QPushButton *save = addButton(closing, "cmdSave", QStringLiteral("&Save && Close"),
                                  QStringLiteral("Save current selection and close the form. The settings will be "
                                                 "remembered when the program is restarted."));
    layout->addLayout(closing);

    SetUpToolTips(this, fleetwright::programState().ToolTipsOn);

    m_loadGuard = true;
    for (int column = FIRST_OPTIONAL_COLUMN; column < m_grid->columnCount(); ++column) {
        auto *entry = new QListWidgetItem(m_grid->headerItem()->text(column), m_list);
        entry->setFlags(entry->flags() | Qt::ItemIsUserCheckable);
        entry->setCheckState(m_grid->columnWidth(column) == 0 ? Qt::Checked : Qt::Unchecked);
    }
    m_loadGuard = false;

    connect(m_list, &QListWidget::itemChanged, this, &frm_ListViewOptions::List1_Click);
    connect(all, &QPushButton::clicked, this, &frm_ListViewOptions::cmd_All_Click);
    connect(none, &QPushButton::clicked, this, &frm_ListViewOptions::cmd_None_Click);
    connect(close, &QPushButton::clicked, this, &frm_ListViewOptions::cmdClose_Click);
    connect(save, &QPushButton::clicked, this, &frm_ListViewOptions::cmdSave_Click);
}

// Every click sets every column: a shown column always gets the one standard width back, not its earlier one.
void frm_ListViewOptions::List1_Click()
{
    if (m_loadGuard)
        return;
    for (int i = 0; i < m_list->count(); ++i) {
        const bool hidden = m_list->item(i)->checkState() == Qt::Checked;
        m_grid->setColumnWidth(i + FIRST_OPTIONAL_COLUMN, hidden ? 0 : SHOWN_COLUMN_WIDTH);
    }
}

void frm_ListViewOptions::checkAll(bool checked)
{
    for (int i = 0; i < m_list->count(); ++i)
        m_list->item(i)->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
}

void frm_ListViewOptions::cmd_All_Click()
{
    checkAll(true);
}

void frm_ListViewOptions::cmd_None_Click()
{
    checkAll(false);
}

void frm_ListViewOptions::cmdClose_Click()
{
    close();
}

void frm_ListViewOptions::cmdSave_Click()
{
    std::vector<std::u16string> elements;
    for (int i = 0; i < m_list->count(); ++i)
        elements.push_back(m_list->item(i)->checkState() == Qt::Checked ? u"-1" : u"0");
    auto &global = fleetwright::programState();
    m_settings.SaveSetting(u"DataGrid", fleetwright::joinList(elements));
    global.DataGridOptions = fleetwright::readSetting(m_settings, u"DataGrid");
    close();
}

void ResizeGrid(QTreeWidget *grid)
{
    const int last = grid->columnCount() - 1;
    for (int column = 0; column < last; ++column) {
        if (grid->columnWidth(column) != 0)
            grid->resizeColumnToContents(column);
    }
    grid->resizeColumnToContents(last);
}
