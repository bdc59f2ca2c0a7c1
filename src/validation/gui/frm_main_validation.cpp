// The main form's validation handlers: they feed the validation run from the form and show what it wrote.
#include "validation/gui/frm_main_validation.h"

#include <QAction>
#include <QCoreApplication>
#include <QLineEdit>
#include <QRadioButton>
#include <QTreeWidget>

#include "app/frm_main.h"
#include "core/errorbox.h"
#include "core/gui/statusbarpanels.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "environment/programstate.h"
#include "folderview/gui/folderwidgets.h"
#include "platform/shell.h"
#include "support/gui/frm_texteditor.h"
#include "validation/gui/frm_analyzeoptions.h"
#include "validation/gui/frm_validateall.h"
#include "validation/validationrun.h"

using fleetwright::programState;
using fleetwright::RuntimeError;

namespace {

constexpr int STATUS_PANEL = 9;

// Brings a dialog that is already open to the front, as showing a loaded form again does.
void bringToFront(QWidget *form)
{
    form->show();
    form->raise();
    form->activateWindow();
}

} // namespace

ValidationController::ValidationController(frm_Main &form)
    : QObject(&form)
    , m_form(form)
{
    setObjectName(QStringLiteral("ValidationController"));
    const MainFormControls &c = form.controls();
    connect(c.mnuValidate, &QAction::triggered, this, &ValidationController::mnuValidate_Click);
    connect(c.mnuvalidateAll, &QAction::triggered, this, &ValidationController::mnuvalidateAll_Click);
    connect(c.mnuAnalyzeOptions, &QAction::triggered, this, &ValidationController::mnuAnalyzeOptions_Click);
    connect(c.StatusBar1, &StatusBarPanels::panelDoubleClicked, this, &ValidationController::StatusBar1_PanelDblClick);
}

frm_AnalyzeOptions *ValidationController::analyzeOptionsForm() const
{
    return m_analyzeOptions;
}

frm_ValidateAll *ValidationController::validateAllForm() const
{
    return m_validateAll;
}

void ValidationController::validate()
{
    auto &global = programState();
    const MainFormControls &c = m_form.controls();

    fleetwright::ValidationInput input;
    input.folder = toU16String(c.Dir1->path());
    input.AnalyzeOptionList = global.AnalyzeOptionList;
    input.environment = environmentFromStartUp();
    if (global.BatchRunning) {
        const bool fs9 = m_validateAll && m_validateAll->OptATC(0)->isChecked();
        input.choice = fs9 ? fleetwright::SimulatorChoice::Fs9 : fleetwright::SimulatorChoice::Fsx;
    }
    input.textureFormatText = toU16String(c.txt_FSXVersion->text());
    input.gridRowCount = c.ListView1->topLevelItemCount();
    input.BatchRunning = global.BatchRunning;
    input.yieldToEvents = [] { QCoreApplication::processEvents(); };

    const fleetwright::ValidationResult result =
        fleetwright::runValidation(input, m_form.AircraftIni(), m_form.dialogs());
    // Without a simulator the run turns the airline options off in memory, until they are next read.
    if (!result.AnalyzeOptionList.empty())
        global.AnalyzeOptionList = result.AnalyzeOptionList;

    if (result.outcome == fleetwright::ValidationOutcome::ReportWritten && !global.BatchRunning)
        showReportFile(&m_form, m_form.dialogs(), result.reportPath);
}

// Inside a batch an error ends this run only, without a word.
void ValidationController::mnuValidate_Click()
{
    try {
        validate();
    } catch (const RuntimeError &error) {
        if (!programState().BatchRunning)
            m_form.dialogs().critical(fleetwright::commonErrorText(error), u"");
    }
}

void ValidationController::mnuvalidateAll_Click()
{
    if (m_validateAll) {
        bringToFront(m_validateAll);
        return;
    }
    m_validateAll = new frm_ValidateAll(m_form);
    m_validateAll->show();
}

void ValidationController::mnuAnalyzeOptions_Click()
{
    if (m_analyzeOptions) {
        bringToFront(m_analyzeOptions);
        return;
    }
    m_analyzeOptions = new frm_AnalyzeOptions(m_settings, &m_form);
    m_analyzeOptions->show();
}

void ValidationController::StatusBar1_PanelDblClick(int panel)
{
    if (panel != STATUS_PANEL)
        return;
    if (m_form.controls().ListView1->topLevelItemCount() == 0) {
        mnuvalidateAll_Click();
        return;
    }
    try {
        validate();
    } catch (const RuntimeError &error) {
        // The status bar's box names the start-up routine, as it always has.
        RuntimeError named = error;
        named.setProcedure(u"Form_Load");
        fleetwright::showCommonError(m_form.dialogs(), named);
    }
}

fleetwright::ValidationEnvironment environmentFromStartUp()
{
    const auto &global = programState();
    fleetwright::ValidationEnvironment environment;
    environment.Fs9Found = global.Fs9Found;
    environment.FsxFound = global.FsxFound;
    environment.Fs9Airlines = global.Fs9Airlines;
    environment.FsxAirlines = global.FsxAirlines;
    environment.Fs9EffectsFolder = global.Fs9EffectsFolder;
    environment.FsxEffectsFolder = global.FsxEffectsFolder;
    environment.TempFolder = global.TempFolder;
    return environment;
}

void showReportFile(QWidget *parent, fleetwright::Dialogs &dialogs, const std::u16string &path)
{
    auto &global = programState();
    if (global.InternalEditorOn) {
        fleetwright::showTextEditor(parent, dialogs, global, {fleetwright::TextEditorSubject::Kind::File, path});
    } else {
        fleetwright::platform::Shell::openInPlainEditor(path);
    }
}
