#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <string>

#include <QDialog>

#include "folderview/gui/folderwidgets.h"

class QCloseEvent;
class QLineEdit;
class QProgressBar;
class QRadioButton;
class QTreeWidget;

namespace Ui {
class frm_ValidateAll;
}

namespace fleetwright {

class Dialogs;
class JournalService;
class clsIniFile;
struct ProgramState;

// What a batch drives on the main window and asks through. Members named for controls hold those controls.
struct ValidateAllContext
{
    DirListBox *Dir1;          // each folder is loaded by moving the browser there
    QTreeWidget *ListView1;    // the rows the load found
    QLineEdit *txt_FSXVersion; // the texture format the load found
    Dialogs &dialogs;
    ProgramState &state;
    clsIniFile &aircraftIni; // the profile file of the loaded folder's aircraft.cfg
    JournalService &history; // what a run repairs is an operation of its folder
};

// Validates every aircraft folder directly below a root and joins the reports into "corvanecheckall.log".
// The batch drives the main form: each folder is loaded in it as the user would load it, then validated.
// The form is not modal, so the main form stays usable behind it while the batch yields between folders.
class frm_ValidateAll : public QDialog
{
    Q_OBJECT

public:
    frm_ValidateAll(const ValidateAllContext &context, QWidget *parent);
    ~frm_ValidateAll() override;

    // The root folder, taken from the folder browser when the form opened.
    const std::u16string &batchRoot() const { return BatchRoot; }
    bool isRunning() const { return m_runs > 0; }

    QRadioButton *OptRep(int index) const { return m_optRep.at(index); }
    QRadioButton *OptATC(int index) const { return m_optATC.at(index); }
    QProgressBar *ProgressBar1() const;

public slots:
    void cmdStart_Click();
    // Closes the form; a batch under way ends after the folder it is at.
    void cmdStop_Click();
    // Escape, like Exit, lets a batch under way end after its folder.
    void reject() override;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void Form_Load();
    void showProgress(std::size_t done, std::size_t count);

    std::unique_ptr<Ui::frm_ValidateAll> m_ui;
    ValidateAllContext m_context;
    std::array<QRadioButton *, 2> m_optRep {};
    std::array<QRadioButton *, 2> m_optATC {};

    std::u16string BatchRoot;
    std::u16string BatchStartFolder;
    // Batches under way: a Start while one runs starts another inside it, as nothing locks the form.
    int m_runs = 0;
    std::atomic<bool> m_stopRequested = false;
};

} // namespace fleetwright
