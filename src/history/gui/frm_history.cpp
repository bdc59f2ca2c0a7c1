#include "history/gui/frm_history.h"

#include <QDateTime>
#include <QDir>
#include <QFontDatabase>
#include <QHeaderView>
#include <QPushButton>

#include "core/gui/textconvert.h"
#include "history/gui/filediff.h"
#include "history/gui/journalservice.h"
#include "ui_frm_history.h"

namespace fleetwright {

namespace {

QString localTime(std::int64_t timeNs)
{
    return QDateTime::fromMSecsSinceEpoch(timeNs / 1'000'000).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

// The stored bytes of one side of a change; nothing when the file was not there. A side the journal no
// longer holds is said so in place of its text.
std::optional<std::string> side(Journal &journal, bool existed, const std::string &digest, bool &missing)
{
    if (!existed)
        return std::nullopt;
    if (std::optional<std::string> bytes = journal.contents(digest))
        return bytes;
    missing = true;
    return std::string();
}

} // namespace

frm_History::frm_History(const HistoryFormContext &context, QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::frm_History>())
    , m_context(context)
{
    m_ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    m_ui->lblFolder->setText(QDir::toNativeSeparators(toQString(m_context.folder.u16string())));
    m_ui->txtDiff->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const QFontMetrics metrics(m_ui->lvwOperations->font());
    m_ui->lvwOperations->setColumnWidth(0, metrics.horizontalAdvance(QStringLiteral("0000-00-00 00:00:00  ")));
    // The change is what the user reads: it gets most of the room, the list of operations a few rows.
    const int letter = metrics.horizontalAdvance(QLatin1Char('M'));
    m_ui->splitChange->setSizes({letter * 12, width() - letter * 12});
    m_ui->splitChange->setStretchFactor(1, 1);
    m_ui->splitHistory->setSizes({metrics.height() * 9, height() - metrics.height() * 9});
    m_ui->splitHistory->setStretchFactor(1, 1);
    m_ui->lvwOperations->setColumnWidth(1, letter * 22);

    connect(m_ui->lvwOperations, &QTreeWidget::currentItemChanged, this, &frm_History::lvwOperations_Click);
    connect(m_ui->lstFiles, &QListWidget::currentRowChanged, this, &frm_History::lstFiles_Click);
    connect(m_ui->cmdRestore, &QPushButton::clicked, this, &frm_History::cmdRestore_Click);
    connect(m_ui->cmdClose, &QPushButton::clicked, this, &QDialog::accept);
    LoadOperations();
}

frm_History::~frm_History() = default;

QString frm_History::relativeName(const std::filesystem::path &file) const
{
    const std::filesystem::path relative = file.lexically_relative(m_context.folder);
    const std::filesystem::path &shown = relative.empty() || *relative.begin() == ".." ? file : relative;
    return QDir::toNativeSeparators(toQString(shown.u16string()));
}

void frm_History::LoadOperations()
{
    const std::uint64_t chosen = chosenOperation() ? chosenOperation()->id : 0;
    m_operations.clear();
    if (Journal *journal = m_context.history.existingJournal())
        m_operations = journal->operations(m_context.folder);

    QTreeWidget *list = m_ui->lvwOperations;
    const QSignalBlocker quiet(list);
    list->clear();
    QTreeWidgetItem *current = nullptr;
    for (const JournalOperationRecord &operation : m_operations) {
        QStringList files;
        for (const JournalFile &file : operation.files)
            files << relativeName(file.path);
        QString name = toQString(operation.name);
        if (operation.undone)
            name += QStringLiteral(" (undone)");
        auto *item = new QTreeWidgetItem(list, {localTime(operation.timeNs), name, files.join(QStringLiteral(", "))});
        if (operation.undone) {
            for (int column = 0; column < item->columnCount(); ++column)
                item->setForeground(column, list->palette().brush(QPalette::Disabled, QPalette::Text));
        }
        if (operation.id == chosen || (!current && chosen == 0))
            current = item;
    }
    if (!current && list->topLevelItemCount() > 0)
        current = list->topLevelItem(0);
    list->setCurrentItem(current);
    lvwOperations_Click();
}

const JournalOperationRecord *frm_History::chosenOperation() const
{
    QTreeWidgetItem *item = m_ui->lvwOperations->currentItem();
    const int row = item ? m_ui->lvwOperations->indexOfTopLevelItem(item) : -1;
    if (row < 0 || static_cast<std::size_t>(row) >= m_operations.size())
        return nullptr;
    return &m_operations[static_cast<std::size_t>(row)];
}

void frm_History::lvwOperations_Click()
{
    const JournalOperationRecord *operation = chosenOperation();
    // An undone operation's files already stand as before it; Redo brings it back.
    m_ui->cmdRestore->setEnabled(operation && !operation->undone);
    QListWidget *files = m_ui->lstFiles;
    const QSignalBlocker quiet(files);
    files->clear();
    if (operation) {
        for (const JournalFile &file : operation->files)
            files->addItem(relativeName(file.path));
    }
    files->setCurrentRow(files->count() > 0 ? 0 : -1);
    lstFiles_Click();
}

void frm_History::lstFiles_Click()
{
    const JournalOperationRecord *operation = chosenOperation();
    const int row = m_ui->lstFiles->currentRow();
    Journal *journal = m_context.history.existingJournal();
    if (!operation || !journal || row < 0 || static_cast<std::size_t>(row) >= operation->files.size()) {
        m_ui->txtDiff->clear();
        return;
    }
    const JournalFile &file = operation->files[static_cast<std::size_t>(row)];
    bool missing = false;
    const auto before = side(*journal, file.existedBefore, file.beforeDigest, missing);
    const auto after = side(*journal, file.existedAfter, file.afterDigest, missing);
    QString text = toQString(unifiedDiff(before, after, toU16String(relativeName(file.path))));
    if (missing)
        text = QStringLiteral("The journal no longer holds every version of this file.\n") + text;
    m_ui->txtDiff->setPlainText(text);
}

void frm_History::cmdRestore_Click()
{
    const JournalOperationRecord *operation = chosenOperation();
    if (!operation)
        return;
    const std::uint64_t id = operation->id;
    const std::filesystem::path folder = m_context.folder;
    const JournalOutcome outcome = m_context.history.act(
        m_context.dialogs, [&](Journal &journal, bool force) { return journal.restoreBefore(folder, id, force); });
    if (outcome == JournalOutcome::Done || outcome == JournalOutcome::Failed) {
        if (m_context.reload)
            m_context.reload();
    }
    LoadOperations();
}

} // namespace fleetwright
