#include "validation/gui/frm_validateall.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "app/frm_main.h"
#include "core/errorbox.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "environment/programstate.h"
#include "folderview/gui/folderwidgets.h"
#include "support/gui/tooltips.h"
#include "validation/batch.h"
#include "validation/gui/frm_main_validation.h"

using fleetwright::programState;

namespace {

QRadioButton *addOption(QBoxLayout *frame, const QString &name, const QString &caption, const QString &tip)
{
    auto *option = new QRadioButton(caption);
    option->setObjectName(name);
    option->setToolTip(tip);
    frame->addWidget(option);
    return option;
}

QPushButton *addButton(QBoxLayout *row, const QString &name, const QString &caption, const QString &tip)
{
    auto *button = new QPushButton(caption);
    button->setObjectName(name);
    button->setToolTip(tip);
    row->addWidget(button);
    return button;
}

} // namespace

frm_ValidateAll::frm_ValidateAll(frm_Main &form)
    : QDialog(&form)
    , m_form(form)
{
    setObjectName(QStringLiteral("frm_ValidateAll"));
    setWindowTitle(QStringLiteral("Validate all aircraft below folder..."));
    setAttribute(Qt::WA_DeleteOnClose);
    setModal(false);

    auto *layout = new QVBoxLayout(this);
    auto *label = new QLabel(QStringLiteral("Root folder for validation scan:"));
    label->setObjectName(QStringLiteral("lbl_1"));
    layout->addWidget(label);
    m_txtFolder = new QLineEdit;
    m_txtFolder->setObjectName(QStringLiteral("txtFolder"));
    m_txtFolder->setToolTip(
        QStringLiteral("All aircraft folders on the first level below this folder will be validated"));
    layout->addWidget(m_txtFolder);

    auto *frames = new QHBoxLayout;
    auto *frame2 = new QGroupBox(QStringLiteral("Report Options"));
    frame2->setObjectName(QStringLiteral("Frame2"));
    auto *reportOptions = new QVBoxLayout(frame2);
    m_optRep[0] = addOption(reportOptions, QStringLiteral("OptRep_0"), QStringLiteral("All aircraft"),
                            QStringLiteral("Report will include all validated aircraft "));
    m_optRep[1] = addOption(reportOptions, QStringLiteral("OptRep_1"), QStringLiteral("Errors only"),
                            QStringLiteral("Report will include aircraft with errors only"));
    frames->addWidget(frame2);
    m_frame1 = new QGroupBox(QStringLiteral("FS9/FSX Airlines.cfg"));
    m_frame1->setObjectName(QStringLiteral("Frame1"));
    m_frame1->setToolTip(QStringLiteral("Chose if ATC validation should run against FS9 or FSX airlines.cfg. Note: "
                                        "this is only an option if both versions are found."));
    auto *atcOptions = new QVBoxLayout(m_frame1);
    m_optATC[0] = addOption(atcOptions, QStringLiteral("OptATC_0"), QStringLiteral("FS9"),
                            QStringLiteral("Choose FS9 airlines.cfg"));
    // The FSX button's tip names FS9 as well; users know it so.
    m_optATC[1] = addOption(atcOptions, QStringLiteral("OptATC_1"), QStringLiteral("FSX"),
                            QStringLiteral("Choose FS9 airlines.cfg"));
    frames->addWidget(m_frame1);
    layout->addLayout(frames);

    m_progressBar1 = new QProgressBar;
    m_progressBar1->setObjectName(QStringLiteral("ProgressBar1"));
    m_progressBar1->setTextVisible(false);
    layout->addWidget(m_progressBar1);

    auto *buttons = new QHBoxLayout;
    QPushButton *start = addButton(buttons, QStringLiteral("cmdStart"), QStringLiteral("&Start"),
                                   QStringLiteral("Start validating all aircraft below the selected root folder"));
    QPushButton *stop =
        addButton(buttons, QStringLiteral("cmdStop"), QStringLiteral("E&xit"), QStringLiteral("Close the form"));
    layout->addLayout(buttons);

    connect(start, &QPushButton::clicked, this, &frm_ValidateAll::cmdStart_Click);
    connect(stop, &QPushButton::clicked, this, &frm_ValidateAll::cmdStop_Click);

    Form_Load();
}

void frm_ValidateAll::Form_Load()
{
    const auto &global = programState();
    SetUpToolTips(this, global.ToolTipsOn);

    m_optRep[0]->setChecked(true);
    m_optATC[0]->setEnabled(global.Fs9Found);
    m_optATC[1]->setEnabled(global.FsxFound);
    if (global.FsxFound)
        m_optATC[1]->setChecked(true);
    else if (global.Fs9Found)
        m_optATC[0]->setChecked(true);
    else
        m_frame1->setEnabled(false);

    BatchRoot = toU16String(m_form.controls().Dir1->path());
    m_txtFolder->setText(toQString(BatchRoot));
}

void frm_ValidateAll::cmdStart_Click()
{
    auto &global = programState();
    DirListBox *Dir1 = m_form.controls().Dir1;
    BatchStartFolder = toU16String(Dir1->path());

    fleetwright::BatchInput input;
    input.BatchRoot = BatchRoot;
    input.BatchStartFolder = BatchStartFolder;
    input.errorsOnly = m_optRep[1]->isChecked();
    input.AnalyzeOptionList = global.AnalyzeOptionList;
    input.environment = environmentFromStartUp();
    input.choice = m_optATC[0]->isChecked() ? fleetwright::SimulatorChoice::Fs9 : fleetwright::SimulatorChoice::Fsx;
    // Each folder is loaded in the main form, as if the user had gone there, and validated as it stands there.
    input.loadFolder = [this, Dir1](const std::u16string &folder) {
        Dir1->setPath(toQString(folder));
        const auto &c = m_form.controls();
        fleetwright::ValidationFeed feed;
        feed.gridRowCount = c.ListView1->topLevelItemCount();
        feed.textureFormatText = toU16String(c.txt_FSXVersion->text());
        return feed;
    };
    input.progress = [this](const fleetwright::BatchProgress &progress) {
        showProgress(progress.done, progress.count);
    };
    input.stopRequested = &m_stopRequested;
    input.yieldToEvents = [] { QCoreApplication::processEvents(); };

    if (m_runs++ == 0)
        m_stopRequested = false;
    global.BatchRunning = true;
    std::u16string reportPath;
    try {
        reportPath = fleetwright::runBatchValidation(input, m_form.AircraftIni(), m_form.dialogs()).reportPath;
    } catch (const fleetwright::RuntimeError &error) {
        m_form.dialogs().critical(fleetwright::commonErrorText(error, u"frm_ValidateAll"), u"");
    }
    global.BatchRunning = false;
    --m_runs;

    if (!reportPath.empty()) {
        Dir1->setPath(toQString(BatchStartFolder));
        showReportFile(&m_form, m_form.dialogs(), reportPath);
    }
    if (m_stopRequested && m_runs == 0)
        close();
}

// The bar's maximum is two less than the number of folders, so it is full before the batch ends; a value
// past it is refused and the bar stays full.
void frm_ValidateAll::showProgress(std::size_t done, std::size_t count)
{
    if (done == 1 && count > 2)
        m_progressBar1->setMaximum(static_cast<int>(count - 2));
    if (static_cast<int>(done) <= m_progressBar1->maximum())
        m_progressBar1->setValue(static_cast<int>(done));
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
