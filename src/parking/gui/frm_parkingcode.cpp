#include "parking/gui/frm_parkingcode.h"

#include <algorithm>
#include <utility>

#include <QAbstractTableModel>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include "app/frm_main.h"
#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "environment/programstate.h"
#include "parking/parkingcodes.h"
#include "support/gui/tooltips.h"

namespace {

constexpr int TWIPS_PER_PIXEL = 15;
constexpr int FIT_MARGIN_TWIPS = 120;
constexpr int LOAD_ATTEMPTS = 3;
constexpr int CODE_COLUMN = 2;
// What the provider reported for a database it could not use; the box shows it as the error number.
constexpr int PROVIDER_ERROR = -2147467259;

const QString DATABASE_FILE = QStringLiteral("parkingspecs.db");
constexpr char16_t LOAD_FAILED[] = u"Error opening the parking code file";
constexpr char16_t DATABASE_MISSING[] = u"The file 'parkingspecs.db' is missing in your installation folder. "
                                        u"Re-install Fleetwright or copy the file back to fix this issue.";

QString databaseFolderSetting;

QLabel *label(const char *name, const QString &caption)
{
    auto *text = new QLabel(caption);
    text->setObjectName(QString::fromLatin1(name));
    return text;
}

QLineEdit *textBox(const char *name, const QString &tip, bool locked)
{
    auto *box = new QLineEdit;
    box->setObjectName(QString::fromLatin1(name));
    box->setToolTip(tip);
    box->setReadOnly(locked);
    return box;
}

void showRuntimeError(fleetwright::Dialogs &dialogs, const QString &description, const char16_t *procedure)
{
    const fleetwright::RuntimeError error(PROVIDER_ERROR, toU16String(description), procedure);
    dialogs.critical(fleetwright::commonErrorText(error, u"frm_ParkingCode"), u"");
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

frm_ParkingCode::frm_ParkingCode(QLineEdit *codes, fleetwright::Dialogs &dialogs, const QString &databasePath,
                                 QWidget *parent)
    : QDialog(parent)
    , m_codes(codes)
    , m_dialogs(dialogs)
{
    buildForm();
    Form_Load(databasePath);
}

frm_ParkingCode::~frm_ParkingCode() = default;

void frm_ParkingCode::buildForm()
{
    setObjectName(QStringLiteral("frm_ParkingCode"));
    setWindowTitle(QStringLiteral("Selelct the parking code"));
    setModal(true);
    resize(460, 520);

    m_filter = textBox("txt_FilterParkingCodes",
                       QStringLiteral("Enter a filter condition to reduce the elements in the airline list. The "
                                      "filter condition can be any part of the name."),
                       false);
    m_model = new ParkingGridModel(this);
    m_grid = new QTableView;
    m_grid->setObjectName(QStringLiteral("MSHFlexGrid1"));
    m_grid->setToolTip(QStringLiteral("Click on an item to add the parking code in the respective "
                                      "atc_parking_codes filed on the main form. Click a second time to remove "
                                      "the parking code."));
    m_grid->setModel(m_model);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectItems);
    m_grid->setWordWrap(false);
    m_grid->verticalHeader()->hide();
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 4);
    m_grid->horizontalHeader()->setMinimumSectionSize(1);
    m_grid->horizontalHeader()->setSectionsClickable(false);
    m_grid->horizontalHeader()->setHighlightSections(false);
    m_grid->horizontalHeader()->setStretchLastSection(false);
    m_airlineCount =
        textBox("txt_airlinecodes",
                QStringLiteral("# of airlines found that match the filter criteria (inclusive no filter)"), true);
    m_codeCount =
        textBox("txt_parkingcodes",
                QStringLiteral("# of parking codes already assigned to the [fltsim.x] variation you edit"), true);
    auto *close = new QPushButton(QStringLiteral("&Close"));
    close->setObjectName(QStringLiteral("CancelButton"));
    close->setToolTip(QStringLiteral("Press the ESC key or click this button to close the dialog."));
    // Enter in the filter box must not close the dialog; only Esc and the button do.
    close->setAutoDefault(false);
    close->setDefault(false);

    auto *layout = new QVBoxLayout(this);
    auto *filterRow = new QHBoxLayout;
    filterRow->addWidget(label("Label1", QStringLiteral("filter condition")));
    filterRow->addWidget(m_filter, 1);
    layout->addLayout(filterRow);
    layout->addWidget(m_grid, 1);
    auto *counts = new QGridLayout;
    counts->addWidget(label("Label2", QStringLiteral("listed parking codes")), 0, 0);
    counts->addWidget(m_airlineCount, 0, 1);
    counts->addWidget(label("Label3", QStringLiteral("assigned parking codes")), 1, 0);
    counts->addWidget(m_codeCount, 1, 1);
    counts->addWidget(close, 1, 3);
    counts->setColumnStretch(2, 1);
    layout->addLayout(counts);

    connect(m_filter, &QLineEdit::textChanged, this, &frm_ParkingCode::txt_FilterParkingCodes_Change);
    connect(m_grid, &QTableView::clicked, this, &frm_ParkingCode::MSHFlexGrid1_Click);
    connect(close, &QPushButton::clicked, this, &frm_ParkingCode::CancelButton_Click);
}

void frm_ParkingCode::Form_Load(const QString &databasePath)
{
    SetUpToolTips(this, fleetwright::programState().ToolTipsOn);

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
    AutoFitFlexGrid(this, m_grid);
    showCounter();
}

void frm_ParkingCode::showRows(std::vector<ParkingSpec> rows)
{
    m_airlineCount->setText(QString::number(rows.size()));
    m_model->setRows(std::move(rows));
}

void frm_ParkingCode::showCounter()
{
    m_codeCount->setText(toQString(fleetwright::parkingCodeCounter(toU16String(m_codes->text()))));
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
    std::optional<std::vector<ParkingSpec>> rows = m_database.filteredRows(m_filter->text());
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
    m_grid->setCurrentIndex(m_model->index(index.row(), CODE_COLUMN));
    const fleetwright::ParkingCodeClick click =
        fleetwright::parkingCodeClick(toU16String(m_codes->text()), toU16String(m_model->row(index.row()).Code));
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

ParkingCodeController::ParkingCodeController(frm_Main &form)
    : QObject(&form)
    , m_form(form)
{
    setObjectName(QStringLiteral("ParkingCodeController"));
    connect(form.controls().cmd_ParkingCodes, &QPushButton::clicked, this,
            &ParkingCodeController::cmd_ParkingCodes_Click);
}

void ParkingCodeController::setDatabaseFolder(const QString &folder)
{
    databaseFolderSetting = folder;
}

QString ParkingCodeController::databaseFolder()
{
    return databaseFolderSetting.isEmpty() ? QCoreApplication::applicationDirPath() : databaseFolderSetting;
}

void ParkingCodeController::cmd_ParkingCodes_Click()
{
    const QString path = QDir(databaseFolder()).filePath(DATABASE_FILE);
    if (!QFileInfo(path).isFile()) {
        m_form.dialogs().critical(DATABASE_MISSING, u"");
        return;
    }
    frm_ParkingCode dialog(m_form.controls().txt_atc_ParkingCodes, m_form.dialogs(), path, &m_form);
    if (dialog.databaseOpened())
        dialog.exec();
}
