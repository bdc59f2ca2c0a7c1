#include "parking/gui/frm_parkingcode.h"

#include <algorithm>
#include <utility>

#include <QAbstractTableModel>
#include <QFontMetrics>
#include <QHeaderView>
#include <QLayout>
#include <QLineEdit>
#include <QPalette>
#include <QPushButton>
#include <QTableView>

#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "environment/programstate.h"
#include "parking/parkingcodes.h"
#include "support/gui/tooltips.h"
#include "ui_frm_parkingcode.h"

namespace fleetwright {

namespace {

constexpr int TWIPS_PER_PIXEL = 15;
constexpr int FIT_MARGIN_TWIPS = 120;
constexpr int LOAD_ATTEMPTS = 3;
constexpr int CODE_COLUMN = 2;
// What the provider reported for a database it could not use; the box shows it as the error number.
constexpr int PROVIDER_ERROR = -2147467259;

constexpr char16_t LOAD_FAILED[] = u"Error opening the parking code file";

void showRuntimeError(Dialogs &dialogs, const QString &description, const char16_t *procedure)
{
    const RuntimeError error(PROVIDER_ERROR, toU16String(description), procedure);
    dialogs.critical(commonErrorText(error, u"frm_ParkingCode"), u"");
}

} // namespace

// The grid's rows: a fixed first column of no meaning, then the table's two fields, their names in the
// fixed row.
class ParkingGridModel : public QAbstractTableModel
{
public:
    using QAbstractTableModel::QAbstractTableModel;

    void setRows(std::vector<ParkingSpec> rows)
    {
        beginResetModel();
        m_rows = std::move(rows);
        endResetModel();
    }
    const ParkingSpec &row(int index) const { return m_rows[static_cast<std::size_t>(index)]; }

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
    }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : 3; }

    QVariant data(const QModelIndex &index, int role) const override
    {
        if (!index.isValid())
            return {};
        if (role == Qt::DisplayRole) {
            switch (index.column()) {
            case 1:
                return row(index.row()).Airline;
            case CODE_COLUMN:
                return row(index.row()).Code;
            default:
                return QString();
            }
        }
        if (role == Qt::BackgroundRole && index.column() == 0)
            return QPalette().button();
        return {};
    }

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
            return {};
        switch (section) {
        case 1:
            return QStringLiteral("Airline");
        case CODE_COLUMN:
            return QStringLiteral("Code");
        default:
            return QString();
        }
    }

    Qt::ItemFlags flags(const QModelIndex &index) const override
    {
        if (!index.isValid())
            return Qt::NoItemFlags;
        return index.column() == 0 ? Qt::ItemIsEnabled : Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    }

private:
    std::vector<ParkingSpec> m_rows;
};

frm_ParkingCode::frm_ParkingCode(QLineEdit *codes, Dialogs &dialogs, const ProgramState &state,
                                 const QString &databasePath, QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::frm_ParkingCode>())
    , m_codes(codes)
    , m_dialogs(dialogs)
{
    m_ui->setupUi(this);
    // The grid takes its laid-out size before the rows come, so its scroll bars are worked out for that size.
    layout()->activate();
    m_model = new ParkingGridModel(this);
    QTableView *grid = m_ui->MSHFlexGrid1;
    grid->setModel(m_model);
    // The row header goes only once the model is set: the grid's corner is placed with it first.
    grid->verticalHeader()->hide();
    grid->verticalHeader()->setDefaultSectionSize(grid->fontMetrics().height() + 4);
    grid->horizontalHeader()->setSectionsClickable(false);

    connect(m_ui->txt_FilterParkingCodes, &QLineEdit::textChanged, this,
            &frm_ParkingCode::txt_FilterParkingCodes_Change);
    connect(grid, &QTableView::clicked, this, &frm_ParkingCode::MSHFlexGrid1_Click);
    connect(m_ui->CancelButton, &QPushButton::clicked, this, &frm_ParkingCode::CancelButton_Click);

    Form_Load(state, databasePath);
}

frm_ParkingCode::~frm_ParkingCode() = default;

QTableView *frm_ParkingCode::MSHFlexGrid1() const
{
    return m_ui->MSHFlexGrid1;
}

void frm_ParkingCode::Form_Load(const ProgramState &state, const QString &databasePath)
{
    SetUpToolTips(this, state.ToolTipsOn);

    if (!m_database.open(databasePath)) {
        showRuntimeError(m_dialogs, m_database.lastError(), u"Form_Load");
        return;
    }
    m_opened = true;

    // A file that opens may still fail its first query (not a database, no table); the load tries the query
    // three times before it gives up and shows the dialog without rows.
    std::optional<std::vector<ParkingSpec>> rows;
    for (int attempt = 1; attempt <= LOAD_ATTEMPTS && !rows; ++attempt)
        rows = m_database.allRows();
    if (!rows) {
        m_dialogs.critical(LOAD_FAILED, u"");
        return;
    }
    showRows(std::move(*rows));
    AutoFitFlexGrid(this, m_ui->MSHFlexGrid1);
    showCounter();
}

void frm_ParkingCode::showRows(std::vector<ParkingSpec> rows)
{
    m_ui->txt_airlinecodes->setText(QString::number(rows.size()));
    m_model->setRows(std::move(rows));
}

void frm_ParkingCode::showCounter()
{
    m_ui->txt_parkingcodes->setText(toQString(parkingCodeCounter(toU16String(m_codes->text()))));
}

void frm_ParkingCode::AutoFitFlexGrid(QWidget *form, QTableView *grid)
{
    const QFontMetrics metrics = form->fontMetrics();
    const QAbstractItemModel *model = grid->model();
    const auto twips = [&metrics](const QVariant &text) {
        return metrics.horizontalAdvance(text.toString()) * TWIPS_PER_PIXEL;
    };
    for (int column = 0; column < model->columnCount(); ++column) {
        int widest = twips(model->headerData(column, Qt::Horizontal, Qt::DisplayRole));
        for (int row = 0; row < model->rowCount(); ++row)
            widest = std::max(widest, twips(model->index(row, column).data()));
        grid->setColumnWidth(column, (widest + FIT_MARGIN_TWIPS) / TWIPS_PER_PIXEL);
    }
}

void frm_ParkingCode::txt_FilterParkingCodes_Change()
{
    std::optional<std::vector<ParkingSpec>> rows = m_database.filteredRows(m_ui->txt_FilterParkingCodes->text());
    if (!rows) {
        showRuntimeError(m_dialogs, m_database.lastError(), u"txt_FilterParkingCodes_Change");
        return;
    }
    // The columns keep the widths of the load.
    showRows(std::move(*rows));
}

void frm_ParkingCode::MSHFlexGrid1_Click(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    // The code column becomes the current one first, so a click anywhere on the row takes its code.
    m_ui->MSHFlexGrid1->setCurrentIndex(m_model->index(index.row(), CODE_COLUMN));
    const ParkingCodeClick click =
        parkingCodeClick(toU16String(m_codes->text()), toU16String(m_model->row(index.row()).Code));
    if (click.message.empty())
        m_codes->setText(toQString(click.text));
    else
        m_dialogs.information(click.message, u"");
    showCounter();
}

void frm_ParkingCode::CancelButton_Click()
{
    close();
}

void frm_ParkingCode::done(int result)
{
    m_database.close();
    QDialog::done(result);
}

} // namespace fleetwright
