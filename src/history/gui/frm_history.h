#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include <QDialog>

#include "history/journal.h"

namespace Ui {
class frm_History;
}

namespace fleetwright {

class Dialogs;
class JournalService;

// What the history dialog works on; all of it outlives the dialog.
struct HistoryFormContext
{
    Dialogs &dialogs;
    JournalService &history;
    std::filesystem::path folder; // as the journal knows it
    std::function<void()> reload; // the main window reads the folder again after files were put back
};

// File > History...: the folder's operations, newest first, with their time, name and files; the change of
// the chosen file as a unified diff; and the restore of the folder's files to just before the chosen
// operation. Modal.
class frm_History : public QDialog
{
    Q_OBJECT

public:
    frm_History(const HistoryFormContext &context, QWidget *parent = nullptr);
    ~frm_History() override;

public slots:
    void LoadOperations();
    void lvwOperations_Click();
    void lstFiles_Click();
    void cmdRestore_Click();

private:
    const JournalOperationRecord *chosenOperation() const;
    QString relativeName(const std::filesystem::path &file) const;

    std::unique_ptr<Ui::frm_History> m_ui;
    HistoryFormContext m_context;
    std::vector<JournalOperationRecord> m_operations; // as listed, newest first
};

} // namespace fleetwright
