#pragma once

#include <string>

#include <QObject>
#include <QPointer>

#include "core/gui/statusbarpanels.h"
#include "folderview/gui/folderwidgets.h"
#include "validation/validationrun.h"

class QAction;
class QLineEdit;
class QTreeWidget;
class QWidget;

namespace fleetwright {

class Dialogs;
class JournalService;
class clsIniFile;
class frm_AnalyzeOptions;
class frm_ValidateAll;
struct ProgramState;

namespace platform {
class SettingsStore;
}

// What validation works on: the main window's controls it connects to or reads, and the services it uses.
// Members named for controls hold those controls.
struct ValidationContext
{
    QWidget *window; // the controller's parent and the owner of its dialogs and reports
    QAction *mnuValidate;
    QAction *mnuvalidateAll;
    QAction *mnuAnalyzeOptions;
    StatusBarPanels *StatusBar1;
    DirListBox *Dir1;
    QTreeWidget *ListView1;
    QLineEdit *txt_FSXVersion;
    Dialogs &dialogs;
    ProgramState &state;
    const platform::SettingsStore &settings;
    clsIniFile &aircraftIni; // the profile file of the current folder's aircraft.cfg
    JournalService &history; // what a run repairs is an operation of its folder
};

// The main form's validation: "Validate aircraft", "Validate all aircraft below...", the report options and
// the double click on the aircraft status panel. It hangs on the window as its child.
class ValidationController : public QObject
{
    Q_OBJECT

public:
    explicit ValidationController(const ValidationContext &context);

    // The open dialogs; null when closed.
    frm_AnalyzeOptions *analyzeOptionsForm() const;
    frm_ValidateAll *validateAllForm() const;

public slots:
    // Checks the folder of Dir1 and shows the report; in a batch (BatchRunning) it only writes the report.
    void mnuValidate_Click();
    void mnuvalidateAll_Click();
    void mnuAnalyzeOptions_Click();
    // Only the aircraft status panel (9) belongs here; the form handles the others.
    void StatusBar1_PanelDblClick(int panel);

private:
    void validate();

    ValidationContext m_context;
    QPointer<frm_AnalyzeOptions> m_analyzeOptions;
    QPointer<frm_ValidateAll> m_validateAll;
};

// What start-up found of the simulators, as a validation run takes it.
ValidationEnvironment environmentFromStartUp(const ProgramState &state);

// The report shown as every report of the program is: in the internal editor or in the platform's plain
// editor, as the editor setting says.
void showReportFile(QWidget *parent, Dialogs &dialogs, ProgramState &state, const std::u16string &path,
                    JournalService *history = nullptr);

} // namespace fleetwright
