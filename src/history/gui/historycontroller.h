#pragma once

#include <filesystem>
#include <functional>

#include <QObject>

#include "history/journal.h"

class QAction;
class QEvent;
class QMenu;
class QTreeWidget;
class QWidget;

namespace fleetwright {

class DirListBox;
class Dialogs;
class JournalService;

// The controls of the main window that the history works with, each named as the control it is.
struct HistoryControls
{
    QMenu *mnuEdit = nullptr;
    QAction *mnuUndo = nullptr;
    QAction *mnuRedo = nullptr;
    QAction *mnuHistory = nullptr;
    DirListBox *Dir1 = nullptr; // its folder is the one Undo, Redo and History act on
    QTreeWidget *ListView1 = nullptr;
};

// What the history works with besides its controls; all of it outlives the controller. After files were put
// back the folder is loaded again and the open row opened again, which is the folder view's work.
struct HistoryServices
{
    Dialogs &dialogs;
    JournalService &history;
    QWidget &window; // what frm_History stands over
    std::function<void()> Dir1_Change;
    std::function<void()> ListView1_DblClick;
};

// Edit > Undo and Redo of the last operation on the current folder, named in their captions, and
// File > History..., the folder's operations with their changes and the restore to before one of them.
class HistoryController : public QObject
{
    Q_OBJECT

public:
    HistoryController(const HistoryControls &controls, const HistoryServices &services, QObject *parent = nullptr);

    std::filesystem::path currentFolder() const;

public slots:
    void mnuUndo_Click();
    void mnuRedo_Click();
    void mnuHistory_Click();
    // "Undo Delete 2 sections" and "Redo Renumber", or disabled when there is nothing to act on.
    void updateCaptions();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void act(const std::function<JournalResult(Journal &, const std::filesystem::path &, bool)> &action);
    // Loads the folder again and opens the row that was open, if the folder still has it.
    void reloadKeepingRow();

    HistoryControls m_c;
    HistoryServices m_services;
};

} // namespace fleetwright
