// The main form's validation handlers: they feed the validation run from the form and show what it wrote.
#include "validation/gui/validationcontroller.h"

#include <QAction>
#include <QCoreApplication>
#include <QLineEdit>
#include <QRadioButton>
#include <QTreeWidget>

#include "core/errorbox.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "environment/programstate.h"
#include "history/gui/journalservice.h"
#include "platform/shell.h"
#include "support/gui/frm_texteditor.h"
#include "validation/gui/frm_analyzeoptions.h"
#include "validation/gui/frm_validateall.h"

namespace fleetwright {

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

ValidationController::ValidationController(const ValidationContext &context)
    : QObject(context.window)
    , m_context(context)
{
    setObjectName(QStringLiteral("ValidationController"));
    connect(context.mnuValidate, &QAction::triggered, this, &ValidationController::mnuValidate_Click);
    connect(context.mnuvalidateAll, &QAction::triggered, this, &ValidationController::mnuvalidateAll_Click);
    connect(context.mnuAnalyzeOptions, &QAction::triggered, this, &ValidationController::mnuAnalyzeOptions_Click);
    connect(context.StatusBar1, &StatusBarPanels::panelDoubleClicked, this,
            &ValidationController::StatusBar1_PanelDblClick);
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
    ProgramState &state = m_context.state;

    ValidationInput input;
    input.folder = toU16String(m_context.Dir1->path());
    input.AnalyzeOptionList = state.AnalyzeOptionList;
    input.environment = environmentFromStartUp(state);
    if (state.BatchRunning) {
        const bool fs9 = m_validateAll && m_validateAll->OptATC(0)->isChecked();
        input.choice = fs9 ? SimulatorChoice::Fs9 : SimulatorChoice::Fsx;
    }
    input.textureFormatText = toU16String(m_context.txt_FSXVersion->text());
    input.gridRowCount = m_context.ListView1->topLevelItemCount();
    input.BatchRunning = state.BatchRunning;
    input.yieldToEvents = [] { QCoreApplication::processEvents(); };
    input.journal = &m_context.history.journal();

    const ValidationResult result = runValidation(input, m_context.aircraftIni, m_context.dialogs);
    emit m_context.history.changed();
    // Without a simulator the run turns the airline options off in memory, until they are next read.
    if (!result.AnalyzeOptionList.empty())
        state.AnalyzeOptionList = result.AnalyzeOptionList;

    if (result.outcome == ValidationOutcome::ReportWritten && !state.BatchRunning)
        showReportFile(m_context.window, m_context.dialogs, state, result.reportPath, &m_context.history);
}

// Inside a batch an error ends this run only, without a word.
void ValidationController::mnuValidate_Click()
{
    try {
        validate();
    } catch (const RuntimeError &error) {
        if (!m_context.state.BatchRunning)
            m_context.dialogs.critical(commonErrorText(error), u"");
    }
}

void ValidationController::mnuvalidateAll_Click()
{
    if (m_validateAll) {
        bringToFront(m_validateAll);
        return;
    }
    m_validateAll = new frm_ValidateAll({.Dir1 = m_context.Dir1,
                                         .ListView1 = m_context.ListView1,
                                         .txt_FSXVersion = m_context.txt_FSXVersion,
                                         .dialogs = m_context.dialogs,
                                         .state = m_context.state,
                                         .aircraftIni = m_context.aircraftIni,
                                         .history = m_context.history},
                                        m_context.window);
    m_validateAll->show();
}

void ValidationController::mnuAnalyzeOptions_Click()
{
    if (m_analyzeOptions) {
        bringToFront(m_analyzeOptions);
        return;
    }
    m_analyzeOptions = new frm_AnalyzeOptions(m_context.settings, m_context.state, m_context.window);
    m_analyzeOptions->show();
}

void ValidationController::StatusBar1_PanelDblClick(int panel)
{
    if (panel != STATUS_PANEL)
        return;
    if (m_context.ListView1->topLevelItemCount() == 0) {
        mnuvalidateAll_Click();
        return;
    }
    try {
        validate();
    } catch (const RuntimeError &error) {
        // The status bar's box names the start-up routine, as it always has.
        RuntimeError named = error;
        named.setProcedure(u"Form_Load");
        showCommonError(m_context.dialogs, named);
    }
}

ValidationEnvironment environmentFromStartUp(const ProgramState &state)
{
    ValidationEnvironment environment;
    environment.Fs9Found = state.Fs9Found;
    environment.FsxFound = state.FsxFound;
    environment.Fs9Airlines = state.Fs9Airlines;
    environment.FsxAirlines = state.FsxAirlines;
    environment.Fs9EffectsFolder = state.Fs9EffectsFolder;
    environment.FsxEffectsFolder = state.FsxEffectsFolder;
    environment.TempFolder = state.TempFolder;
    return environment;
}

void showReportFile(QWidget *parent, Dialogs &dialogs, ProgramState &state, const std::u16string &path,
                    JournalService *history)
{
    if (state.InternalEditorOn)
        showTextEditor(parent, dialogs, state, {TextEditorSubject::Kind::File, path}, history);
    else
        platform::Shell::openInPlainEditor(path);
}

} // namespace fleetwright
