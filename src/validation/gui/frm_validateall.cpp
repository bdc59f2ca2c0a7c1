#include "validation/gui/frm_validateall.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>

#include "core/errorbox.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "environment/programstate.h"
#include "history/gui/journalservice.h"
#include "support/gui/tooltips.h"
#include "ui_frm_validateall.h"
#include "validation/batch.h"
#include "validation/gui/validationcontroller.h"

namespace fleetwright {

frm_ValidateAll::frm_ValidateAll(const ValidateAllContext &context, QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::frm_ValidateAll>())
    , m_context(context)
{
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    m_optRep = {m_ui->OptRep_0, m_ui->OptRep_1};
    m_optATC = {m_ui->OptATC_0, m_ui->OptATC_1};

    connect(m_ui->cmdStart, &QPushButton::clicked, this, &frm_ValidateAll::cmdStart_Click);
    connect(m_ui->cmdStop, &QPushButton::clicked, this, &frm_ValidateAll::cmdStop_Click);

    Form_Load();
}

frm_ValidateAll::~frm_ValidateAll() = default;

QProgressBar *frm_ValidateAll::ProgressBar1() const
{
    return m_ui->ProgressBar1;
}

void frm_ValidateAll::Form_Load()
{
    const ProgramState &state = m_context.state;
    SetUpToolTips(this, state.ToolTipsOn);

    m_optRep[0]->setChecked(true);
    m_optATC[0]->setEnabled(state.Fs9Found);
    m_optATC[1]->setEnabled(state.FsxFound);
    if (state.FsxFound)
        m_optATC[1]->setChecked(true);
    else if (state.Fs9Found)
        m_optATC[0]->setChecked(true);
    else
        m_ui->Frame1->setEnabled(false);

    BatchRoot = toU16String(m_context.Dir1->path());
    m_ui->txtFolder->setText(toQString(BatchRoot));
}

void frm_ValidateAll::cmdStart_Click()
{
    ProgramState &state = m_context.state;
    DirListBox *Dir1 = m_context.Dir1;
    BatchStartFolder = toU16String(Dir1->path());

    BatchInput input;
    input.BatchRoot = BatchRoot;
    input.BatchStartFolder = BatchStartFolder;
    input.errorsOnly = m_optRep[1]->isChecked();
    input.AnalyzeOptionList = state.AnalyzeOptionList;
    input.environment = environmentFromStartUp(state);
    input.choice = m_optATC[0]->isChecked() ? SimulatorChoice::Fs9 : SimulatorChoice::Fsx;
    // Each folder is loaded in the main form, as if the user had gone there, and validated as it stands there.
    input.loadFolder = [this, Dir1](const std::u16string &folder) {
        Dir1->setPath(toQString(folder));
        ValidationFeed feed;
        feed.gridRowCount = m_context.ListView1->topLevelItemCount();
        feed.textureFormatText = toU16String(m_context.txt_FSXVersion->text());
        return feed;
    };
    input.progress = [this](const BatchProgress &progress) { showProgress(progress.done, progress.count); };
    input.stopRequested = &m_stopRequested;
    input.yieldToEvents = [] { QCoreApplication::processEvents(); };

    if (m_runs++ == 0)
        m_stopRequested = false;
    state.BatchRunning = true;
    std::u16string reportPath;
    try {
        input.journal = &m_context.history.journal();
        reportPath = runBatchValidation(input, m_context.aircraftIni, m_context.dialogs).reportPath;
    } catch (const RuntimeError &error) {
        m_context.dialogs.critical(commonErrorText(error, u"frm_ValidateAll"), u"");
    }
    state.BatchRunning = false;
    --m_runs;
    emit m_context.history.changed();

    if (!reportPath.empty()) {
        Dir1->setPath(toQString(BatchStartFolder));
        showReportFile(parentWidget(), m_context.dialogs, state, reportPath, &m_context.history);
    }
    if (m_stopRequested && m_runs == 0)
        close();
}

// The bar's maximum is two less than the number of folders, so it is full before the batch ends; a value
// past it is refused and the bar stays full.
void frm_ValidateAll::showProgress(std::size_t done, std::size_t count)
{
    QProgressBar *bar = m_ui->ProgressBar1;
    if (done == 1 && count > 2)
        bar->setMaximum(static_cast<int>(count - 2));
    if (static_cast<int>(done) <= bar->maximum())
        bar->setValue(static_cast<int>(done));
    QCoreApplication::processEvents();
}

void frm_ValidateAll::cmdStop_Click()
{
    close();
}

// A batch under way is not cut off in the middle of a folder: it ends after the one it is at, then the form
// goes.
void frm_ValidateAll::closeEvent(QCloseEvent *event)
{
    if (m_runs > 0) {
        m_stopRequested = true;
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

void frm_ValidateAll::reject()
{
    if (m_runs > 0) {
        m_stopRequested = true;
        return;
    }
    QDialog::reject();
}

} // namespace fleetwright
