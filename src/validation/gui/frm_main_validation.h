#pragma once

#include <string>

#include <QObject>
#include <QPointer>

#include "platform/settingsstore.h"
#include "validation/validationrun.h"

class QWidget;
class frm_AnalyzeOptions;
class frm_Main;
class frm_ValidateAll;

namespace fleetwright {
class Dialogs;
}

// The main form's validation: "Validate aircraft", "Validate all aircraft below...", the report options and
// the double click on the aircraft status panel. It hangs on the form as its child and works through the
// form's controls, its AircraftIni and the program-wide state.
class ValidationController : public QObject
{
    Q_OBJECT

public:
    explicit ValidationController(frm_Main &form);

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

    frm_Main &m_form;
    fleetwright::platform::SettingsStore m_settings;
    QPointer<frm_AnalyzeOptions> m_analyzeOptions;
    QPointer<frm_ValidateAll> m_validateAll;
};

// What start-up found of the simulators, as a validation run takes it.
fleetwright::ValidationEnvironment environmentFromStartUp();

// The report shown as every report of the program is: in the internal editor or in the platform's plain
// editor, as the editor setting says.
void showReportFile(QWidget *parent, fleetwright::Dialogs &dialogs, const std::u16string &path);
