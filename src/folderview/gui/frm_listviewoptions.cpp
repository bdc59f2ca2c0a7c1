#include "folderview/gui/frm_listviewoptions.h"

#include <QHeaderView>
#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>

#include "core/gui/textconvert.h"
#include "environment/programstate.h"
#include "environment/startupsettings.h"
#include "platform/settingsstore.h"
#include "support/gui/tooltips.h"
#include "ui_frm_listviewoptions.h"

namespace fleetwright {

namespace {

constexpr int FIRST_OPTIONAL_COLUMN = 2; // column 3, counted from 0
// The width in twips that a shown column gets back, in pixels at the usual 15 twips per pixel.
constexpr int SHOWN_COLUMN_WIDTH = 1150 / 15;

} // namespace

frm_ListViewOptions::frm_ListViewOptions(QTreeWidget *grid, const platform::SettingsStore &settings,
                                         ProgramState &state, QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::frm_ListViewOptions>())
    , m_grid(grid)
    , m_settings(settings)
    , m_state(state)
{
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    SetUpToolTips(this, m_state.ToolTipsOn);

    m_loadGuard = true;
    for (int column = FIRST_OPTIONAL_COLUMN; column < m_grid->columnCount(); ++column) {
        auto *entry = new QListWidgetItem(m_grid->headerItem()->text(column), m_ui->List1);
        entry->setFlags(entry->flags() | Qt::ItemIsUserCheckable);
        entry->setCheckState(m_grid->columnWidth(column) == 0 ? Qt::Checked : Qt::Unchecked);
    }
    m_loadGuard = false;

    connect(m_ui->List1, &QListWidget::itemChanged, this, &frm_ListViewOptions::List1_Click);
    connect(m_ui->cmd_All, &QPushButton::clicked, this, &frm_ListViewOptions::cmd_All_Click);
    connect(m_ui->cmd_None, &QPushButton::clicked, this, &frm_ListViewOptions::cmd_None_Click);
    connect(m_ui->cmdClose, &QPushButton::clicked, this, &frm_ListViewOptions::cmdClose_Click);
    connect(m_ui->cmdSave, &QPushButton::clicked, this, &frm_ListViewOptions::cmdSave_Click);
}

frm_ListViewOptions::~frm_ListViewOptions() = default;

QListWidget *frm_ListViewOptions::List1() const
{
    return m_ui->List1;
}

// Every click sets every column: a shown column always gets the one standard width back, not its earlier one.
void frm_ListViewOptions::List1_Click()
{
    if (m_loadGuard)
        return;
    for (int i = 0; i < m_ui->List1->count(); ++i) {
        const bool hidden = m_ui->List1->item(i)->checkState() == Qt::Checked;
        m_grid->setColumnWidth(i + FIRST_OPTIONAL_COLUMN, hidden ? 0 : SHOWN_COLUMN_WIDTH);
    }
}

void frm_ListViewOptions::checkAll(bool checked)
{
    for (int i = 0; i < m_ui->List1->count(); ++i)
        m_ui->List1->item(i)->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
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
    for (int i = 0; i < m_ui->List1->count(); ++i)
        elements.push_back(m_ui->List1->item(i)->checkState() == Qt::Checked ? u"-1" : u"0");
    m_settings.SaveSetting(u"DataGrid", joinList(elements));
    m_state.DataGridOptions = readSetting(m_settings, u"DataGrid");
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

} // namespace fleetwright
