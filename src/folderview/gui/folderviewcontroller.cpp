// The folder browser and the grid's selection on the main form: how the user reaches a folder, and how the
// editor follows the row being looked at.
#include "folderview/gui/folderviewcontroller.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>
#include <QTreeWidget>

#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/gui/backcolour.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "environment/programstate.h"
#include "folderview/gui/folderwidgets.h"
#include "folderview/openaircraft.h"

namespace fleetwright {

namespace {

const QColor NO_ROW_GREY = colourFromBgr(0xE0E0E0);
const QColor WHITE = colourFromBgr(0xFFFFFF);
const QColor NOT_IN_EDIT_YELLOW = colourFromBgr(0xC0FFFF);
const QColor RED = colourFromBgr(0x0000FF);

void clearField(QLineEdit *field, const QColor &colour)
{
    field->clear();
    setBackColour(field, colour);
}

// Option buttons of one group cannot all be unset while they exclude each other.
void unsetOption(QRadioButton *option)
{
    option->setAutoExclusive(false);
    option->setChecked(false);
    option->setAutoExclusive(true);
}

} // namespace

FolderViewController::FolderViewController(const FolderViewControls &controls, const FolderViewServices &services,
                                           QObject *parent)
    : QObject(parent)
    , m_c(controls)
    , m_services(services)
{
    setObjectName(QStringLiteral("FolderViewController"));
    connect(m_c.Dir1, &DirListBox::Change, this, &FolderViewController::Dir1_Change);
    connect(m_c.Drive1, &DriveListBox::Change, this, &FolderViewController::Drive1_Change);
    connect(m_c.cmd_DirUp, &QPushButton::clicked, this, &FolderViewController::cmd_DirUp_Click);
    // Selecting a button fires its click, also from code, as long as LoadGuard lets it; a click on the button
    // that is already selected changes nothing and fires nothing.
    connect(m_c.opt_FS9, &QRadioButton::toggled, this, [this](bool on) {
        if (on)
            opt_FS9_Click();
    });
    connect(m_c.opt_FSX, &QRadioButton::toggled, this, [this](bool on) {
        if (on)
            opt_FSX_Click();
    });
    connect(m_c.combo_SimFolder, &QComboBox::activated, this, &FolderViewController::combo_SimFolder_Click);
    connect(m_c.ListView1, &QTreeWidget::itemClicked, this, &FolderViewController::ListView1_Click);
    connect(m_c.ListView1, &QTreeWidget::itemDoubleClicked, this, &FolderViewController::ListView1_DblClick);
    connect(m_c.lst_Airfile, &QListWidget::itemClicked, this, &FolderViewController::lst_Airfile_Click);
    connect(m_c.opt_ac_Normal, &QRadioButton::clicked, this, [this] { airTypeOption_Click(0); });
    connect(m_c.opt_ac_Helicopter, &QRadioButton::clicked, this, [this] { airTypeOption_Click(1); });
    connect(m_c.opt_ac_AI, &QRadioButton::clicked, this, [this] { airTypeOption_Click(2); });
    m_c.ListView1->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_c.ListView1, &QTreeWidget::customContextMenuRequested, this, &FolderViewController::ListView1_MouseDown);
}

void FolderViewController::paint(int panel, const QString &text, PanelColour colour) const
{
    m_services.paintStatusPanel(panel, text, colour);
}

// The browser moves in two steps, drive first and then folder, wherever code moves it; the drive step alone
// may load the drive's current folder.
void FolderViewController::moveBrowser(const std::u16string &folder)
{
#ifdef Q_OS_WIN
    m_c.Drive1->setDrive(toQString(folder.substr(0, 2)));
#else
    m_c.Drive1->setDrive(toQString(folder));
#endif
    m_c.Dir1->setPath(toQString(folder));
}

// The load runs first and the reset after it, so a drive change leaves the grid empty: kept as it is.
void FolderViewController::Drive1_Change()
{
    m_c.Dir1->setPath(m_c.Drive1->rootPath());
    ResetValues();
    m_c.mnuCFG->setEnabled(m_c.ListView1->topLevelItemCount() > 0);
}

void FolderViewController::cmd_DirUp_Click()
{
    const QString path = QDir::toNativeSeparators(m_c.Dir1->path());
    const QChar separator = QDir::separator();
    const qsizetype last = path.lastIndexOf(separator);
    if (last < 0)
        return;
    const QString leftName = path.mid(last + 1);
    QString parent = path.left(last + 1);
    // A parent other than the root is named without its trailing separator.
    if (parent.size() > 1 && !QDir(parent).isRoot())
        parent.chop(1);
    m_c.Dir1->setPath(parent);
    for (int i = 0; i < m_c.Dir1->ListCount(); ++i) {
        const QString entry = QDir::toNativeSeparators(m_c.Dir1->List(i));
        if (entry.mid(entry.lastIndexOf(separator) + 1) == leftName)
            m_c.Dir1->setListIndex(i);
    }
}

void FolderViewController::quickNavigate(const std::u16string &root, const char16_t *missingText)
{
    if (LoadGuard)
        return;
    if (root.empty() || !QFileInfo(toQString(root)).isDir()) {
        m_services.dialogs.critical(missingText, u"");
        return;
    }
    moveBrowser(root);
    if (m_c.combo_SimFolder->isVisible())
        m_c.combo_SimFolder->setCurrentIndex(-1);
}

void FolderViewController::opt_FS9_Click()
{
    quickNavigate(m_services.state.Fs9AircraftRoot,
                  u"The FS9 path information in your registry is incorrect. The aircraft folder could not be found.");
}

void FolderViewController::opt_FSX_Click()
{
    quickNavigate(m_services.state.FsxSimObjectsRoot,
                  u"The FSX path information in your registry is incorrect. The SimObject folder could not be found.");
}

void FolderViewController::combo_SimFolder_Click(int index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= m_services.state.SimFolderPaths.size())
        return;
    const std::u16string &folder = m_services.state.SimFolderPaths[static_cast<std::size_t>(index)];
    if (!QFileInfo(toQString(folder)).isDir()) {
        // 76: the run time's "Path not found", as changing into a folder that is gone reports it.
        m_services.dialogs.critical(u"Change directory was not successful. Error: 76\r\nPath not found", u"");
        return;
    }
    moveBrowser(folder);
}

void FolderViewController::ResetValues()
{
    if (LoadGuard)
        return;
    m_c.ListView1->clear();
    clearField(m_c.txt_WingSpan_Org, backColour(m_c.txt_WingSpan_Org));
    clearField(m_c.txt_WingSpan_New, NOT_IN_EDIT_YELLOW);
    for (QLineEdit *field :
         {m_c.txt_Title, m_c.txt_atc_ParkingCodes, m_c.txt_ui_CreatedBy, m_c.txt_ui_TypeRole, m_c.txt_ui_Manufacturer,
          m_c.txt_ui_Type, m_c.txt_ui_Variation, m_c.txt_atc_Id, m_c.txt_atc_Flight_Number, m_c.txt_atc_Airline,
          m_c.txt_atc_Model, m_c.txt_general_atc_model, m_c.txt_general_atc_type})
        clearField(field, NO_ROW_GREY);
    m_c.txt_FSXVersion->clear();
    clearField(m_c.txt_FS9Radius, NO_ROW_GREY);
    m_c.txt_FS9Radius->setReadOnly(true);
    m_c.lblSelections->clear();
    setBackColour(m_c.picCombo, NO_ROW_GREY);
    setBackColour(m_c.lblSelections, NO_ROW_GREY);
    for (const auto *exits : {&m_c.txt_Exit_0, &m_c.txt_Exit_1, &m_c.txt_Exit_2}) {
        for (QLineEdit *field : *exits)
            clearField(field, NO_ROW_GREY);
    }
    for (QLineEdit *field : m_c.txt_effects)
        clearField(field, WHITE);
    m_c.txt_Jetways->setText(QStringLiteral("Jetways possible: no"));
    setBackColour(m_c.txt_Jetways, RED);
    m_c.txt_CurrentModel->clear();
    m_c.txt_CurrentTexture->clear();
    m_c.txt_Description->clear();

    for (QCheckBox *check : m_c.chk_Effect)
        check->setChecked(false);
    m_c.cmd_ParkingCodes->setEnabled(false);
    m_c.cmdDropDown->setEnabled(false);
    for (QCheckBox *check : {m_c.chk_Exit_0, m_c.chk_Exit_1, m_c.chk_Exit_2, m_c.chk_atc_heavy})
        check->setChecked(false);
    m_c.chk_atc_heavy->setEnabled(false);
    m_services.aircraft.ModelFilePath.clear();
    m_services.aircraft.EffectIndex = -1;
    for (QRadioButton *option : {m_c.opt_ac_Normal, m_c.opt_ac_Helicopter, m_c.opt_ac_AI, m_c.opt_ac_Nok}) {
        unsetOption(option);
        option->setEnabled(false);
    }
    AirFileName.clear();
    m_c.combo_Texture->clear();
    m_c.combo_Model->clear();
    m_c.combo_Airfile->clear();
    m_c.lst_Airfile->clear();
    m_c.lstParking->clearSelection();
}

void FolderViewController::ListView1_Click()
{
    QTreeWidget *grid = m_c.ListView1;
    if (grid->topLevelItemCount() == 0)
        return;
    try {
        m_c.lstParking->clearSelection();
        std::vector<int> checkedRows;
        for (int row = 0; row < grid->topLevelItemCount(); ++row) {
            if (grid->topLevelItem(row)->checkState(0) == Qt::Checked)
                checkedRows.push_back(row);
        }
        QTreeWidgetItem *selected = grid->currentItem() ? grid->currentItem() : grid->topLevelItem(0);
        QString caption;
        if (checkedRows.empty())
            caption = QStringLiteral("&Delete [") + selected->text(0) + QStringLiteral("]");
        else if (checkedRows.size() == 1)
            caption = QStringLiteral("&Delete [fltsim.%1]").arg(checkedRows.front());
        else
            caption = QStringLiteral("&Delete [fltsim.x]");
        m_c.frm_RightClick.mnuDelete->setText(caption);

        // The three keys are read from the file again, not from the grid's copy.
        showCurrentFields(toU16String(selected->text(0)));

        const QString sim = selected->text(10);
        m_c.lst_Airfile->setCurrentRow(-1);
        for (int i = 0; i < m_c.lst_Airfile->count(); ++i) {
            QListWidgetItem *entry = m_c.lst_Airfile->item(i);
            if (entry->text() == sim)
                m_c.lst_Airfile->setCurrentItem(entry);
            else
                entry->setSelected(false);
        }
        for (QComboBox *combo : {m_c.combo_Texture, m_c.combo_Model, m_c.combo_Airfile})
            combo->setCurrentIndex(-1);
    } catch (const RuntimeError &error) {
        RuntimeError named = error;
        named.setProcedure(u"ListView1_Click");
        showCommonError(m_services.dialogs, named);
    }
}

void FolderViewController::ListView1_MouseDown(const QPoint &position)
{
    if (m_c.ListView1->topLevelItemCount() > 0)
        m_c.frm_RightClick.mnuListView1->popup(m_c.ListView1->viewport()->mapToGlobal(position));
}

} // namespace fleetwright
