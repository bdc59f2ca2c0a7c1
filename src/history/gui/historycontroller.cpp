// Undo, Redo and the history of the current folder: the journal acts, the folder is read again.
#include "history/gui/historycontroller.h"

#include <QAction>
#include <QEvent>
#include <QMenu>
#include <QTreeWidget>

#include "core/gui/textconvert.h"
#include "folderview/gui/folderwidgets.h"
#include "history/gui/frm_history.h"
#include "history/gui/journalservice.h"

namespace fleetwright {

namespace {

// "&Undo Delete 2 sections": the operation's name is text, so an ampersand in it is no mnemonic.
QString caption(const QString &verb, const std::optional<JournalOperationRecord> &operation)
{
    if (!operation)
        return verb;
    QString name = toQString(operation->name);
    name.replace(QLatin1Char('&'), QStringLiteral("&&"));
    return verb + QLatin1Char(' ') + name;
}

} // namespace

HistoryController::HistoryController(const HistoryControls &controls, const HistoryServices &services, QObject *parent)
    : QObject(parent)
    , m_c(controls)
    , m_services(services)
{
    setObjectName(QStringLiteral("HistoryController"));
    connect(m_c.mnuUndo, &QAction::triggered, this, &HistoryController::mnuUndo_Click);
    connect(m_c.mnuRedo, &QAction::triggered, this, &HistoryController::mnuRedo_Click);
    connect(m_c.mnuHistory, &QAction::triggered, this, &HistoryController::mnuHistory_Click);
    // The checker may have journaled or undone something meanwhile: the menu looks again as it opens, and
    // when the user comes back to the window, so that Ctrl+Z acts on what is there now.
    connect(m_c.mnuEdit, &QMenu::aboutToShow, this, &HistoryController::updateCaptions);
    m_services.window.installEventFilter(this);
    connect(m_c.Dir1, &DirListBox::Change, this, &HistoryController::updateCaptions);
    // No look at the journal yet: the window's first folder load brings the captions up to date.
    connect(&m_services.history, &JournalService::changed, this, &HistoryController::updateCaptions);
}

bool HistoryController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == &m_services.window && event->type() == QEvent::WindowActivate)
        updateCaptions();
    return QObject::eventFilter(watched, event);
}

std::filesystem::path HistoryController::currentFolder() const
{
    const QString folder = m_c.Dir1->path();
    if (folder.isEmpty())
        return {};
    return JournalService::folderKey(std::filesystem::path(toU16String(folder)));
}

void HistoryController::updateCaptions()
{
    std::optional<JournalOperationRecord> undo;
    std::optional<JournalOperationRecord> redo;
    const std::filesystem::path folder = currentFolder();
    Journal *journal = m_services.history.existingJournal();
    if (journal && !folder.empty()) {
        undo = journal->nextUndo(folder);
        redo = journal->nextRedo(folder);
    }
    m_c.mnuUndo->setText(caption(QStringLiteral("&Undo"), undo));
    m_c.mnuUndo->setEnabled(undo.has_value());
    m_c.mnuRedo->setText(caption(QStringLiteral("&Redo"), redo));
    m_c.mnuRedo->setEnabled(redo.has_value());
}

void HistoryController::act(const std::function<JournalResult(Journal &, const std::filesystem::path &, bool)> &action)
{
    const std::filesystem::path folder = currentFolder();
    if (folder.empty() || !m_services.history.existingJournal()) {
        updateCaptions();
        return;
    }
    const JournalOutcome outcome = m_services.history.act(
        m_services.dialogs, [&](Journal &journal, bool force) { return action(journal, folder, force); });
    if (outcome == JournalOutcome::Done || outcome == JournalOutcome::Failed)
        reloadKeepingRow();
}

void HistoryController::mnuUndo_Click()
{
    act([](Journal &journal, const std::filesystem::path &folder, bool force) { return journal.undo(folder, force); });
}

void HistoryController::mnuRedo_Click()
{
    act([](Journal &journal, const std::filesystem::path &folder, bool force) { return journal.redo(folder, force); });
}

void HistoryController::mnuHistory_Click()
{
    const std::filesystem::path folder = currentFolder();
    if (folder.empty())
        return;
    frm_History dialog({m_services.dialogs, m_services.history, folder, [this] { reloadKeepingRow(); }},
                       &m_services.window);
    dialog.exec();
}

void HistoryController::reloadKeepingRow()
{
    QTreeWidget *grid = m_c.ListView1;
    const int row = grid->currentItem() ? grid->indexOfTopLevelItem(grid->currentItem()) : -1;
    m_services.Dir1_Change();
    if (row < 0 || row >= grid->topLevelItemCount())
        return;
    QTreeWidgetItem *item = grid->topLevelItem(row);
    grid->setCurrentItem(item);
    grid->scrollToItem(item);
    m_services.ListView1_DblClick();
}

} // namespace fleetwright
