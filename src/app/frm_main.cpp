#include "frm_main.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFont>
#include <QHeaderView>
#include <QLayout>
#include <QListWidget>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStorageInfo>
#include <QStyle>
#include <QTabWidget>
#include <QTreeWidget>

#include "app/mainformsetup.h"
#include "core/errorbox.h"
#include "core/gui/qtdialogs.h"
#include "core/gui/statusbarpanels.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "environment/programstate.h"
#include "environment/simulatorenvironment.h"
#include "environment/startupsettings.h"
#include "folderview/gui/folderviewcontroller.h"
#include "folderview/gui/folderwidgets.h"
#include "folderview/gui/frm_listviewoptions.h"
#include "platform/filelookup.h"
#include "platform/regional.h"
#include "platform/settingsstore.h"
#include "platform/shell.h"
#include "platform/simulatorregistry.h"
#include "support/gui/frm_texteditor.h"
#include "support/gui/supportcontroller.h"
#include "support/gui/tooltips.h"
#include "support/windowtitle.h"

namespace fleetwright {

namespace {

// The maker's web page that the Help menu opens.
constexpr char16_t MAKER_WEB_PAGE[] = u"https://fleetwright.corvane.example/";

constexpr int GRID_COLUMNS = 17;

std::u16string programFolder()
{
    return toU16String(QDir::toNativeSeparators(QCoreApplication::applicationDirPath()));
}

} // namespace

frm_Main::frm_Main(Dialogs *dialogs, QWidget *parent)
    : QMainWindow(parent)
    , m_settings(std::make_unique<platform::SettingsStore>())
{
    if (!dialogs) {
        m_ownDialogs = std::make_unique<QtDialogs>(this);
        dialogs = m_ownDialogs.get();
    }
    m_dialogs = dialogs;
    setObjectName(QStringLiteral("frm_Main"));
    setWindowTitle(QStringLiteral("Fleetwright"));
    m_ui.setupUi(this);
    finishMainForm(m_ui);
    auto *rightClickForm = new QWidget(this);
    m_rightClick.setupUi(rightClickForm);
    rightClickForm->hide();
    fixMainFormSize(this, m_ui);
    connectMenus();
    // The units that work on the form connect before the load, so the first folder load runs with them.
    createControllers();
    Form_Load();
}

frm_Main::~frm_Main()
{
    // The units that work on the form go first: the widgets' own destruction sends events, and a unit that
    // answered them would find a form that is no longer whole.
    qDeleteAll(m_units);
    m_folderView = nullptr;
    m_editing = nullptr;
    m_support = nullptr;
}

void frm_Main::connectMenus()
{
    auto &global = state();
    connectToggle(m_ui.mnuToolTips, &global.ToolTipsOn, u"ToolTips");
    connectToggle(m_ui.mnuRememberLastPath, &global.RememberFolderOn, u"IsZandor");
    connectToggle(m_ui.mnuAutoBackup, &global.AutoBackupOn, u"AutoBackup");
    connectToggle(m_ui.mnuConfirm, &global.ConfirmUpdates, u"Update");
    connectToggle(m_ui.mnu_AutoUpdate, &global.AutoUpdateOn, u"AutoUpdate");
    connectToggle(m_ui.mnuEditor, &global.InternalEditorOn, u"Editor");
    connectToggle(m_ui.mnuResizable, &global.ResizableOn, u"Resizeable");
    connect(m_ui.mnuResizable, &QAction::triggered, this, &frm_Main::mnuResizable_Click);
    connect(m_ui.mnuCFG, &QAction::triggered, this, &frm_Main::mnuCFG_Click);
    connect(m_ui.mnuQuit, &QAction::triggered, this, &frm_Main::mnuQuit_Click);
    connect(m_ui.mnu_Manual, &QAction::triggered, this, &frm_Main::mnu_Manual_Click);
    connect(m_ui.Corvane, &QAction::triggered, this, &frm_Main::Corvane_Click);
    connect(m_ui.StatusBar1, &StatusBarPanels::panelDoubleClicked, this, &frm_Main::StatusBar1_PanelDblClick);
    connect(m_ui.mnuDataGrid, &QAction::triggered, this,
            [this] { (new frm_ListViewOptions(m_ui.ListView1, *m_settings, state(), this))->show(); });
    connect(m_rightClick.mnuResize, &QAction::triggered, this, [this] { ResizeGrid(m_ui.ListView1); });
}

// One rule for every toggle: the item's check mark flips, the flag follows it, and the setting is saved at
// once as "1" or "0". Qt flips a checkable item before it signals; the menu's own check mark is the state.
void frm_Main::connectToggle(QAction *item, bool *flag, const char16_t *settingName)
{
    item->setCheckable(true);
    connect(item, &QAction::triggered, this, [this, item, flag, settingName](bool checked) {
        item->setChecked(checked);
        *flag = checked;
        m_settings->SaveSetting(settingName, checked ? u"1" : u"0");
    });
}

void frm_Main::Form_Load()
{
    auto &global = state();
    global.TempFolder = computeTempFolder();

    try {
        setWindowIcon(QApplication::windowIcon());
        QFont panelFont(QStringLiteral("Arial"), 10);
        panelFont.setBold(true);
        m_ui.StatusBar1->setFont(panelFont);

        const platform::SimulatorRegistry registry;
        global.RegistryPrefix = registry.Is64BitOS() ? u"SOFTWARE\\Wow6432Node\\Microsoft\\" : u"SOFTWARE\\Microsoft\\";

        global.AnalyzeOptionsText = loadAnalyzeOptions(*m_settings);

        const StartFlags flags = readStartFlags(*m_settings);
        m_ui.mnuToolTips->setChecked(flags.ToolTipsOn);
        m_ui.mnuRememberLastPath->setChecked(flags.RememberFolderOn);
        global.RememberFolderOn = m_ui.mnuRememberLastPath->isChecked();
        global.ToolTipsOn = m_ui.mnuToolTips->isChecked();

        global.AnalyzeOptionList = splitList(global.AnalyzeOptionsText);
        m_folderView->setLoadGuard(true);
        global.BatchRunning = false;

        SetUpToolTips(this, global.ToolTipsOn);

        const int frame = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, this);
        BorderTwipsX = frame * 15;
        BorderTwipsY = frame * 15;

        setWindowTitle(toQString(fleetwright::windowTitle(toU16String(windowTitle()))));

        detectSimulators(registry);
    } catch (const RuntimeError &error) {
        RuntimeError named = error;
        named.setProcedure(u"Form_Load");
        showCommonError(*m_dialogs, named);
        return;
    }

    // From here on a failure skips its statement and start-up goes on.
    const auto skipped = [](auto &&step) {
        try {
            step();
        } catch (const std::exception &) {}
    };
    skipped([this] { setUpGrid(); });
    skipped([this] { state().DecimalSeparator = platform::DecimalSeparatorChar(); });
    skipped([this] {
        m_ui.lstParking->hide();
        m_ui.lstParking->clear();
        for (const char *type : {"CARGO", "DOCK", "GATE", "MIL_CARGO", "MIL_COMBAT", "RAMP"})
            m_ui.lstParking->addItem(QString::fromLatin1(type));
    });
    applyStartSettings();
    skipped([this] { hideColumnsFromDataGrid(); });
    skipped([this] { moveToStartingFolder(); });
    m_folderView->setEventsEnabled(true);
    m_ui.SSTab1->setCurrentIndex(0);
    skipped([this] { attachManual(); });
}

// Each option is read on its own: a stored value that is no boolean leaves its item as designed, unchecked,
// and the flag follows the item all the same.
void frm_Main::applyStartSettings()
{
    const OptionFlags options = readOptionFlags(*m_settings);
    const auto apply = [](QAction *item, bool *flag, std::optional<bool> stored) {
        if (stored)
            item->setChecked(*stored);
        *flag = item->isChecked();
    };
    auto &global = state();
    apply(m_ui.mnuAutoBackup, &global.AutoBackupOn, options.AutoBackupOn);
    apply(m_ui.mnuConfirm, &global.ConfirmUpdates, options.ConfirmUpdates);
    apply(m_ui.mnuEditor, &global.InternalEditorOn, options.InternalEditorOn);
    apply(m_ui.mnuResizable, &global.ResizableOn, options.ResizableOn);
    if (global.ResizableOn)
        toggleResizableStyle();
}

void frm_Main::detectSimulators(const platform::SimulatorRegistry &registry)
{
    auto &global = state();
    const auto found = SimulatorEnvironment::detect(registry, global.RegistryPrefix,
                                                    registry.GetSpecialFolder(platform::APPDATA_FOLDER));
    global.Fs9AircraftRoot = found.Fs9AircraftRoot;
    global.FsxSimObjectsRoot = found.FsxSimObjectsRoot;
    global.FsxCfgPath = found.FsxCfgPath;
    global.SimFolderPaths = found.SimFolderPaths;
    global.Fs9Found = found.Fs9Found;
    global.FsxFound = found.FsxFound;
    global.Fs9AirlinesPath = found.Fs9AirlinesPath;
    global.FsxAirlinesPath = found.FsxAirlinesPath;
    global.Fs9Airlines = found.Fs9Airlines;
    global.FsxAirlines = found.FsxAirlines;
    global.Fs9EffectsFolder = found.Fs9EffectsFolder;
    global.FsxEffectsFolder = found.FsxEffectsFolder;

    for (const auto &paint : found.panelPaints) {
        if (paint.clearTextFirst)
            m_ui.StatusBar1->setPanelText(paint.panel, QString());
        PaintStatusPanel(paint.panel, toQString(paint.text), paint.colour);
    }
    // The option buttons' clicks do nothing while LoadGuard is on.
    if (found.fsxOptionEnabled)
        m_ui.opt_FSX->setEnabled(true);
    if (found.fsxOptionSelected)
        m_ui.opt_FSX->setChecked(true);
    m_ui.combo_SimFolder->clear();
    for (const auto &entry : found.simFolderEntries)
        m_ui.combo_SimFolder->addItem(toQString(entry));
    if (found.simFolderEnabled)
        m_ui.combo_SimFolder->setEnabled(*found.simFolderEnabled);
    if (found.fs9OptionEnabled)
        m_ui.opt_FS9->setEnabled(true);
    if (found.fs9OptionSelected)
        m_ui.opt_FS9->setChecked(true);
}

void frm_Main::setUpGrid()
{
    QTreeWidget *grid = m_ui.ListView1;
    grid->setRootIsDecorated(false);
    grid->setSortingEnabled(false);
    const int width = std::max(grid->viewport()->width(), grid->width()) / 8;
    for (int column = 0; column < GRID_COLUMNS; ++column)
        grid->setColumnWidth(column, width);
}

void frm_Main::hideColumnsFromDataGrid()
{
    state().DataGridOptions = readSetting(*m_settings, u"DataGrid");
    // Columns past the grid's last are not there; their errors are skipped.
    for (const int column : hiddenGridColumns(state().DataGridOptions).columns)
        m_ui.ListView1->setColumnWidth(column - 1, 0);
}

void frm_Main::moveToStartingFolder()
{
    const StartingFolder start =
        startingFolder(state().RememberFolderOn, readSetting(*m_settings, u"Path"), programFolder());
    m_folderView->setLoadGuard(false);
    if (!start.changeFolder)
        return;
    m_folderView->setLoadGuard(start.loadGuardWhileDriveChanges);
    // Off Windows a folder has no drive letter: the drive is the volume the folder is on.
#ifdef Q_OS_WIN
    m_ui.Drive1->setDrive(toQString(start.drive));
#else
    m_ui.Drive1->setDrive(toQString(start.folder));
#endif
    m_folderView->setLoadGuard(false);
    m_ui.Dir1->setPath(toQString(start.folder));
}

void frm_Main::attachManual()
{
    const auto manual = findManual(programFolder());
    if (!manual) {
        m_ui.mnu_Manual->setEnabled(false);
        return;
    }
    auto &global = state();
    global.ManualFilePath = manual->ManualFilePath;
    // Without a program that opens it, the manual cannot be shown.
    if (const auto viewer = platform::Shell::findExecutable(global.ManualFilePath))
        global.PdfViewerPath = *viewer;
    else
        m_ui.mnu_Manual->setEnabled(false);
}

void frm_Main::PaintStatusPanel(int panel, const QString &text, PanelColour colour)
{
    QColor background = StatusBarPanels::grey();
    if (colour == PanelColour::Green)
        background = StatusBarPanels::green();
    else if (colour == PanelColour::Red)
        background = StatusBarPanels::red();
    m_ui.StatusBar1->paintPanel(panel, text, background);
}

// The sizing frame is switched, not set: the style bits are combined by exclusive-or in both directions.
void frm_Main::toggleResizableStyle()
{
    m_resizableStyle = !m_resizableStyle;
    // A sizing frame has no least size: the fonts follow the width, so a least size taken from the layout would
    // grow with them and keep the window from going back to a size it had.
    if (QLayout *frame = layout())
        frame->setSizeConstraint(m_resizableStyle ? QLayout::SetNoConstraint : QLayout::SetDefaultConstraint);
    if (m_resizableStyle) {
        setMinimumSize(0, 0);
        setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        setWindowFlag(Qt::WindowMinMaxButtonsHint, true);
    } else {
        setFixedSize(size());
        setWindowFlag(Qt::WindowMaximizeButtonHint, false);
    }
    // Changing the flags hides a shown window; the frame is redrawn by showing it again.
    if (isVisible() || testAttribute(Qt::WA_WState_ExplicitShowHide))
        show();
}

void frm_Main::mnuResizable_Click()
{
    toggleResizableStyle();
}

void frm_Main::mnuCFG_Click()
{
    if (m_ui.ListView1->topLevelItemCount() == 0) {
        m_dialogs->critical(u"No aircraft.cfg file found in this folder. Exiting here...", u"");
        return;
    }
    if (state().InternalEditorOn) {
        showTextEditor(this, *m_dialogs, state(), {TextEditorSubject::Kind::File, m_openAircraft.AircraftIni.path()},
                       m_history);
    } else {
        platform::Shell::openInPlainEditor(m_openAircraft.AircraftIni.path());
    }
}

void frm_Main::openAirlinesFile(bool fsx)
{
    auto &global = state();
    if (!(fsx ? global.FsxFound : global.Fs9Found))
        return;
    if (global.InternalEditorOn) {
        using Kind = TextEditorSubject::Kind;
        showTextEditor(this, *m_dialogs, global, {fsx ? Kind::FsxAirlines : Kind::Fs9Airlines, {}}, m_history);
    } else {
        platform::Shell::openInPlainEditor(fsx ? global.FsxAirlinesPath : global.Fs9AirlinesPath);
    }
}

void frm_Main::StatusBar1_PanelDblClick(int panel)
{
    try {
        if (panel == 3)
            openAirlinesFile(false);
        else if (panel == 6)
            openAirlinesFile(true);
        // Panel 9 starts a validation, which comes with the validation itself.
    } catch (const RuntimeError &error) {
        // The box names the start-up routine, as it always has.
        RuntimeError named = error;
        named.setProcedure(u"Form_Load");
        showCommonError(*m_dialogs, named);
    }
}

void frm_Main::mnu_Manual_Click()
{
    platform::Shell::open(state().ManualFilePath);
}

void frm_Main::OpenURL(const std::u16string &url)
{
    platform::Shell::open(url);
}

void frm_Main::Corvane_Click()
{
    OpenURL(MAKER_WEB_PAGE);
}

void frm_Main::Form_Activate()
{
    try {
        m_ui.mnu_AutoUpdate->setChecked(readBoolSetting(*m_settings, u"AutoUpdate"));
        state().AutoUpdateOn = m_ui.mnu_AutoUpdate->isChecked();
        if (m_support)
            m_support->automaticCheck();
    } catch (const RuntimeError &error) {
        showCommonError(*m_dialogs, error);
    }
}

void frm_Main::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        Form_Activate();
}

// Every edit was written when it was made and every setting when it changed: nothing to ask or save.
void frm_Main::mnuQuit_Click()
{
    close();
}

void frm_Main::closeEvent(QCloseEvent *event)
{
    SetUpToolTips(this, false);
    event->accept();
    QCoreApplication::quit();
}

} // namespace fleetwright
