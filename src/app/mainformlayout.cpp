#include "mainformlayout.h"

#include <algorithm>

#include <QAbstractScrollArea>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFontMetrics>
#include <QFormLayout>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "core/gui/statusbarpanels.h"
#include "folderview/gui/folderwidgets.h"

namespace {

constexpr int GRID_COLUMNS = 17;
constexpr int FORM_WIDTH = 1180;
constexpr int FORM_HEIGHT = 760;

// Idle colours of the editor fields, before any folder was read.
constexpr unsigned int NO_ROW_GREY = 0xE0E0E0;
constexpr unsigned int WHITE = 0xFFFFFF;
constexpr unsigned int NOT_IN_EDIT = 0xC0FFFF;

QString qs(const char16_t *text)
{
    return QString::fromUtf16(text);
}

template<typename T> T *named(T *object, const QString &name)
{
    object->setObjectName(name);
    return object;
}

QAction *addItem(QMenu *menu, const char16_t *name, const char16_t *caption, bool checkable = false)
{
    QAction *action = named(menu->addAction(qs(caption)), qs(name));
    action->setCheckable(checkable);
    return action;
}

QAction *addSeparator(QMenu *menu, const char16_t *name)
{
    return named(menu->addSeparator(), qs(name));
}

QMenu *addMenu(QMenuBar *bar, const char16_t *name, const char16_t *caption)
{
    QMenu *menu = named(bar->addMenu(qs(caption)), qs(name));
    menu->menuAction()->setObjectName(qs(name) + QStringLiteral("_action"));
    return menu;
}

QLineEdit *lineEdit(QWidget *parent, const QString &name, const QString &tooltip = {}, bool readOnly = false)
{
    auto *edit = named(new QLineEdit(parent), name);
    edit->setToolTip(tooltip);
    edit->setReadOnly(readOnly);
    return edit;
}

QPushButton *button(QWidget *parent, const QString &name, const QString &caption, const QString &tooltip = {})
{
    auto *result = named(new QPushButton(caption, parent), name);
    result->setToolTip(tooltip);
    result->setAutoDefault(false);
    return result;
}

// An update-all button: small, the same caption for all nine, the key in its tooltip.
QPushButton *updateAllButton(QWidget *parent, const char16_t *name, const char16_t *key)
{
    return button(parent, qs(name), QStringLiteral("All"),
                  QStringLiteral("Update all '%1=' entries in this aircraft cfg with the current value").arg(qs(key)));
}

QLabel *keyLabel(const QString &text, QWidget *buddy)
{
    auto *label = new QLabel(text);
    label->setBuddy(buddy);
    return label;
}

// Places the parking type list under its box each time it is shown, above everything else on the form.
class DropDownPlacer : public QObject
{
public:
    DropDownPlacer(QWidget *list, QWidget *anchor)
        : QObject(list)
        , m_list(list)
        , m_anchor(anchor)
    {
        list->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == m_list && event->type() == QEvent::Show) {
            QWidget *host = m_list->parentWidget();
            const QPoint below = m_anchor->mapTo(host, QPoint(0, m_anchor->height()));
            const int rows = static_cast<QListWidget *>(m_list)->count();
            const int rowHeight = static_cast<QListWidget *>(m_list)->sizeHintForRow(0);
            const int height =
                std::max(rows, 1) * std::max(rowHeight, 1) + 2 * m_list->property("frameWidth").toInt() + 4;
            m_list->setGeometry(below.x(), below.y(), m_anchor->width(), height);
            m_list->raise();
        }
        return false;
    }

private:
    QWidget *m_list;
    QWidget *m_anchor;
};

void buildMenus(QMainWindow *form, MainFormControls &m)
{
    m.menuBar = named(new QMenuBar(form), QStringLiteral("menuBar"));
    form->setMenuBar(m.menuBar);

    m.mnuFile = addMenu(m.menuBar, u"mnuFile", u"&File");
    m.mnuCFG = addItem(m.mnuFile, u"mnuCFG", u"&Open CFG File");
    m.mnuSep1 = addSeparator(m.mnuFile, u"mnuSep1");
    m.mnuQuit = addItem(m.mnuFile, u"mnuQuit", u"&Quit");

    m.mnuSettings = addMenu(m.menuBar, u"mnuSettings", u"&Settings");
    m.mnuConfirm = addItem(m.mnuSettings, u"mnuConfirm", u"&Confirm 'aircraft.cfg' Updates", true);
    m.mnuAutoBackup = addItem(m.mnuSettings, u"mnuAutoBackup", u"&Auto Backup 'aircraft.cfg'", true);
    m.line1 = addSeparator(m.mnuSettings, u"line1");
    m.mnu_AutoUpdate = addItem(m.mnuSettings, u"mnu_AutoUpdate", u"Auto &Update Check", true);
    m.mnuResizable = addItem(m.mnuSettings, u"mnuResizable", u"Program &Resizable", true);
    m.mnuRememberLastPath = addItem(m.mnuSettings, u"mnuRememberLastPath", u"Remember last aircraft folder", true);
    m.mnuToolTips = addItem(m.mnuSettings, u"mnuToolTips", u"Show Toolt&ips (after next start)", true);
    m.mnuEditor = addItem(m.mnuSettings, u"mnuEditor", u"Use internal &Editor", true);
    m.line2 = addSeparator(m.mnuSettings, u"line2");
    m.mnuAnalyzeOptions = addItem(m.mnuSettings, u"mnuAnalyzeOptions", u"&Validation Report Options...");
    m.mnuDataGrid = addItem(m.mnuSettings, u"mnuDataGrid", u"Configure Data Grid &Columns...");

    m.mnuTools = addMenu(m.menuBar, u"mnuTools", u"&Tools");
    m.mnuDelKeys = addItem(m.mnuTools, u"mnuDelKeys", u"&Delete keys...");
    m.mnuRenumber = addItem(m.mnuTools, u"mnuRenumber", u"Renumber sections");
    m.mnuSortKeys = addItem(m.mnuTools, u"mnuSortKeys", u"&Sort all [fltsim.x] keys");
    m.mnuValidate = addItem(m.mnuTools, u"mnuValidate", u"&Validate aircraft");
    m.line3 = addSeparator(m.mnuTools, u"line3");
    m.mnuvalidateAll = addItem(m.mnuTools, u"mnuvalidateAll", u"Vali&date all aircraft below...");

    m.mnuAbout = addMenu(m.menuBar, u"mnuAbout", u"&Help");
    m.mnu_Manual = addItem(m.mnuAbout, u"mnu_Manual", u"Open &Manual...");
    m.mnuSep5 = addSeparator(m.mnuAbout, u"mnuSep5");
    m.Corvane = addItem(m.mnuAbout, u"Corvane", u"&Visit 'Corvane' web");
    m.mnu_AppUpdate = addItem(m.mnuAbout, u"mnu_AppUpdate", u"&Check for Update...");
    m.mnuSep2 = addSeparator(m.mnuAbout, u"mnuSep2");
    m.mnuAboutProg = addItem(m.mnuAbout, u"mnuAboutProg", u"A&bout Fleetwright...");
}

void buildRightClickMenus(QMainWindow *form, RightClickMenus &r)
{
    r.form = named(new QWidget(form), QStringLiteral("frm_RightClick"));
    r.form->hide();

    r.mnuListView1 = named(new QMenu(r.form), QStringLiteral("mnuListView1"));
    r.mnuDelete = addItem(r.mnuListView1, u"mnuDelete", u"Delete [fltsim.x]");
    r.mnuRenumber = addItem(r.mnuListView1, u"mnuRenumber", u"Renumber sections");
    r.mnuSortKeys = addItem(r.mnuListView1, u"mnuSortKeys", u"&Sort all [fltsim.x] keys");
    r.mnuResize = addItem(r.mnuListView1, u"mnuResize", u"Resize columns to show all content");

    r.mnuThisEffects = named(new QMenu(qs(u"Effects"), r.form), QStringLiteral("mnuThisEffects"));
    r.mnuEffectsDisable = addItem(r.mnuThisEffects, u"mnuEffectsDisable", u"Disable effect");
    r.mnuEffectsDefault = addItem(r.mnuThisEffects, u"mnuEffectsDefault", u"Set default effect");
    r.mnuEffectsSelect = addItem(r.mnuThisEffects, u"mnuEffectsSelect", u"Select effect file...");
}

QWidget *buildFolderBrowser(MainFormControls &m)
{
    auto *box = named(new QGroupBox(QStringLiteral("Aircraft folder")), QStringLiteral("fraFolder"));
    auto *layout = new QVBoxLayout(box);

    m.Drive1 = new DriveListBox(box);
    m.Drive1->setToolTip(QStringLiteral("Select the hard disk"));
    layout->addWidget(m.Drive1);

    m.Dir1 = new DirListBox(box);
    m.Dir1->setToolTip(QStringLiteral(
        "Select and change the current folder. Typing a folder name on the keyboard while this control has the "
        "focus will move the selection (meaning if you type a 'w' in the folder list the first folder beginning "
        "with a 'w' will be selected)."));
    layout->addWidget(m.Dir1, 1);

    m.cmd_DirUp = button(box, QStringLiteral("cmd_DirUp"), QStringLiteral("Upwards"),
                         QStringLiteral("This button is only enabled when the currently selected folder is an "
                                        "aircraft folder. By clicking on this button the folder view will move one "
                                        "level upwards, and the last folder will be automatically pre-selected.  "
                                        "This way you don't have to scroll constantly in long folder lists."));
    m.cmd_DirUp->setEnabled(false);
    layout->addWidget(m.cmd_DirUp);

    m.fraQuickNavigate =
        named(new QGroupBox(QStringLiteral("Quick navigate"), box), QStringLiteral("fraQuickNavigate"));
    auto *quick = new QGridLayout(m.fraQuickNavigate);
    m.opt_FS9 = named(new QRadioButton(QStringLiteral("FS9"), m.fraQuickNavigate), QStringLiteral("opt_FS9"));
    m.opt_FS9->setToolTip(QStringLiteral("Select your '..\\\\<FS9-Dir>\\\\Aircraft' folder"));
    m.opt_FS9->setEnabled(false);
    m.opt_FSX = named(new QRadioButton(QStringLiteral("FSX"), m.fraQuickNavigate), QStringLiteral("opt_FSX"));
    m.opt_FSX->setToolTip(QStringLiteral("Select your '..\\\\< FSX-Dir>\\\\SimObjects' folder"));
    m.opt_FSX->setEnabled(false);
    m.combo_SimFolder = named(new QComboBox(m.fraQuickNavigate), QStringLiteral("combo_SimFolder"));
    m.combo_SimFolder->setToolTip(QStringLiteral("Lists all SimObjectPaths.x entries in your FSX.CFG. Select a path "
                                                 "entry to quick jump to the respective folder"));
    m.combo_SimFolder->setEnabled(false);
    m.combo_SimFolder->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m.combo_SimFolder->setMinimumContentsLength(8);
    quick->addWidget(m.opt_FS9, 0, 0);
    quick->addWidget(m.opt_FSX, 0, 1);
    quick->addWidget(m.combo_SimFolder, 1, 0, 1, 2);
    layout->addWidget(m.fraQuickNavigate);
    return box;
}

void buildGrid(MainFormControls &m)
{
    m.ListView1 = named(new QTreeWidget, QStringLiteral("ListView1"));
    QTreeWidget *grid = m.ListView1;
    grid->setToolTip(QStringLiteral("This is the data grid view of the selected aircraft.cfg.  Right-click to see "
                                    "several options like sort, delete etc."));
    grid->setColumnCount(GRID_COLUMNS);
    grid->setHeaderLabels({QStringLiteral("fltsim.x"), QStringLiteral("title"), QStringLiteral("parking_type"),
                           QStringLiteral("parking_code"), QStringLiteral("ui_createdby"),
                           QStringLiteral("ui_typerole"), QStringLiteral("ui_manufacturer"), QStringLiteral("ui_type"),
                           QStringLiteral("ui_variation"), QStringLiteral("model"), QStringLiteral("sim"),
                           QStringLiteral("atc_id"), QStringLiteral("atc_flight_number"), QStringLiteral("atc_airline"),
                           QStringLiteral("atc_heavy"), QStringLiteral("atc_model"), QStringLiteral("texture")});
    grid->setRootIsDecorated(false);
    grid->setItemsExpandable(false);
    grid->setUniformRowHeights(true);
    grid->setAllColumnsShowFocus(true);
    grid->setAlternatingRowColors(true);
    grid->setSelectionMode(QAbstractItemView::SingleSelection);
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    grid->setFrameShape(QFrame::StyledPanel);
    // Rows stay in file order: no sorting, and a click on a header does nothing.
    grid->setSortingEnabled(false);
    grid->header()->setSectionsClickable(false);
    grid->header()->setSectionsMovable(false);
    grid->header()->setStretchLastSection(false);
    // A column is hidden by width 0, so the header must allow it.
    grid->header()->setMinimumSectionSize(0);
}

QWidget *buildGeneralTab(MainFormControls &m)
{
    auto *page = named(new QWidget, QStringLiteral("tabGeneral"));
    auto *layout = new QHBoxLayout(page);

    auto *variation = named(new QGroupBox(QStringLiteral("[fltsim.x]"), page), QStringLiteral("fraVariation"));
    auto *grid = new QGridLayout(variation);
    m.txt_Title = lineEdit(variation, QStringLiteral("txt_Title"));
    m.txt_ui_CreatedBy = lineEdit(variation, QStringLiteral("txt_ui_CreatedBy"));
    m.txt_ui_TypeRole = lineEdit(variation, QStringLiteral("txt_ui_TypeRole"));
    m.txt_ui_Manufacturer = lineEdit(variation, QStringLiteral("txt_ui_Manufacturer"));
    m.txt_ui_Type = lineEdit(variation, QStringLiteral("txt_ui_Type"));
    m.txt_ui_Variation = lineEdit(variation, QStringLiteral("txt_ui_Variation"));
    m.cmd_Update_all_ui_Createdby = updateAllButton(variation, u"cmd_Update_all_ui_Createdby", u"ui_createdby");
    m.cmd_Update_all_ui_Typerole = updateAllButton(variation, u"cmd_Update_all_ui_Typerole", u"ui_typerole");
    m.cmd_Update_all_ui_Manufacturer =
        updateAllButton(variation, u"cmd_Update_all_ui_Manufacturer", u"ui_manufacturer");
    m.cmd_Update_all_ui_Type = updateAllButton(variation, u"cmd_Update_all_ui_Type", u"ui_type");
    const struct
    {
        const char16_t *key;
        QLineEdit *edit;
        QPushButton *all;
    } rows[] = {
        {u"title", m.txt_Title, nullptr},
        {u"ui_createdby", m.txt_ui_CreatedBy, m.cmd_Update_all_ui_Createdby},
        {u"ui_typerole", m.txt_ui_TypeRole, m.cmd_Update_all_ui_Typerole},
        {u"ui_manufacturer", m.txt_ui_Manufacturer, m.cmd_Update_all_ui_Manufacturer},
        {u"ui_type", m.txt_ui_Type, m.cmd_Update_all_ui_Type},
        {u"ui_variation", m.txt_ui_Variation, nullptr},
    };
    int row = 0;
    for (const auto &entry : rows) {
        grid->addWidget(keyLabel(qs(entry.key), entry.edit), row, 0);
        grid->addWidget(entry.edit, row, 1);
        if (entry.all)
            grid->addWidget(entry.all, row, 2);
        ++row;
    }
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(row, 1);
    layout->addWidget(variation, 3);

    auto *model = named(new QGroupBox(QStringLiteral("Model file (.mdl)"), page), QStringLiteral("fraModelFile"));
    auto *form = new QFormLayout(model);
    m.txt_FSXVersion = lineEdit(model, QStringLiteral("txt_FSXVersion"),
                                QStringLiteral("Shows if this is an FSX or an FS8/9 model [read-only]"), true);
    m.txt_FS9Radius =
        lineEdit(model, QStringLiteral("txt_FS9Radius"), QStringLiteral("Edit the model radius (FS8/FS9 only)"), true);
    form->addRow(keyLabel(QStringLiteral("Version"), m.txt_FSXVersion), m.txt_FSXVersion);
    form->addRow(keyLabel(QStringLiteral("Radius"), m.txt_FS9Radius), m.txt_FS9Radius);
    layout->addWidget(model, 1, Qt::AlignTop);
    return page;
}

QWidget *buildAtcTab(MainFormControls &m)
{
    auto *page = named(new QWidget, QStringLiteral("tabATC"));
    auto *layout = new QHBoxLayout(page);

    auto *variation = named(new QGroupBox(QStringLiteral("[fltsim.x]"), page), QStringLiteral("fraAtcVariation"));
    auto *grid = new QGridLayout(variation);
    m.txt_atc_Id = lineEdit(variation, QStringLiteral("txt_atc_Id"));
    m.txt_atc_Flight_Number = lineEdit(variation, QStringLiteral("txt_atc_Flight_Number"));
    m.txt_atc_Airline = lineEdit(variation, QStringLiteral("txt_atc_Airline"));
    m.txt_atc_Model = lineEdit(variation, QStringLiteral("txt_atc_Model"));
    m.chk_atc_heavy = named(new QCheckBox(QStringLiteral("atc_heavy"), variation), QStringLiteral("chk_atc_heavy"));
    m.chk_atc_heavy->setEnabled(false);
    m.cmd_Update_all_atc_airline = updateAllButton(variation, u"cmd_Update_all_atc_airline", u"atc_airline");
    m.cmd_Update_all_atc_model = updateAllButton(variation, u"cmd_Update_all_atc_model", u"atc_model");
    m.cmd_Update_all_atc_heavy = updateAllButton(variation, u"cmd_Update_all_atc_heavy", u"atc_heavy");

    grid->addWidget(keyLabel(QStringLiteral("atc_id"), m.txt_atc_Id), 0, 0);
    grid->addWidget(m.txt_atc_Id, 0, 1);
    grid->addWidget(keyLabel(QStringLiteral("atc_flight_number"), m.txt_atc_Flight_Number), 1, 0);
    grid->addWidget(m.txt_atc_Flight_Number, 1, 1);
    grid->addWidget(keyLabel(QStringLiteral("atc_airline"), m.txt_atc_Airline), 2, 0);
    grid->addWidget(m.txt_atc_Airline, 2, 1);
    grid->addWidget(m.cmd_Update_all_atc_airline, 2, 3);
    grid->addWidget(keyLabel(QStringLiteral("atc_model"), m.txt_atc_Model), 3, 0);
    grid->addWidget(m.txt_atc_Model, 3, 1);
    grid->addWidget(m.cmd_Update_all_atc_model, 3, 3);
    grid->addWidget(m.chk_atc_heavy, 4, 1);
    grid->addWidget(m.cmd_Update_all_atc_heavy, 4, 3);

    // Parking types: the box shows the list as text, and its button drops the pick-list down over the form,
    // so the two together look and work like a drop-down box.
    m.picCombo = named(new QFrame(variation), QStringLiteral("picCombo"));
    m.picCombo->setFrameShape(QFrame::StyledPanel);
    m.picCombo->setFrameShadow(QFrame::Sunken);
    const QString parkingTypesTip =
        QStringLiteral("This represents the 'atc_parking_types=' entry in the current [fltsim.x] section");
    m.picCombo->setToolTip(parkingTypesTip);
    auto *pic = new QHBoxLayout(m.picCombo);
    pic->setContentsMargins(4, 0, 0, 0);
    pic->setSpacing(0);
    m.lblSelections = named(new QLabel(m.picCombo), QStringLiteral("lblSelections"));
    m.lblSelections->setToolTip(parkingTypesTip);
    m.lblSelections->setTextFormat(Qt::PlainText);
    pic->addWidget(m.lblSelections, 1);
    m.cmdDropDown = named(new QToolButton(m.picCombo), QStringLiteral("cmdDropDown"));
    m.cmdDropDown->setArrowType(Qt::DownArrow);
    m.cmdDropDown->setAutoRaise(true);
    m.cmdDropDown->setToolTip(QStringLiteral("Open pick-list to select  'parking types'"));
    m.cmdDropDown->setEnabled(false);
    m.cmdDropDown->setFocusPolicy(Qt::StrongFocus);
    pic->addWidget(m.cmdDropDown);
    m.picCombo->setMinimumHeight(m.txt_atc_Id->sizeHint().height());
    m.cmd_Update_all_atc_Parking_types =
        updateAllButton(variation, u"cmd_Update_all_atc_Parking_types", u"atc_parking_types");
    grid->addWidget(keyLabel(QStringLiteral("atc_parking_types"), m.cmdDropDown), 5, 0);
    grid->addWidget(m.picCombo, 5, 1);
    grid->addWidget(m.cmd_Update_all_atc_Parking_types, 5, 3);

    m.txt_atc_ParkingCodes =
        lineEdit(variation, QStringLiteral("txt_atc_ParkingCodes"),
                 QStringLiteral("This represents the 'atc_parking_codes=' entry in the current [fltsim.x] section"));
    m.cmd_ParkingCodes = button(variation, QStringLiteral("cmd_ParkingCodes"), QStringLiteral("..."),
                                QStringLiteral("Select the parking codes from a list in an separate dialog"));
    m.cmd_ParkingCodes->setEnabled(false);
    const QFontMetrics metrics = m.cmd_ParkingCodes->fontMetrics();
    m.cmd_ParkingCodes->setFixedWidth(metrics.horizontalAdvance(QStringLiteral("...")) + 2 * metrics.height());
    m.cmd_Update_all_atc_Parking_codes =
        updateAllButton(variation, u"cmd_Update_all_atc_Parking_codes", u"atc_parking_codes");
    grid->addWidget(keyLabel(QStringLiteral("atc_parking_codes"), m.txt_atc_ParkingCodes), 6, 0);
    grid->addWidget(m.txt_atc_ParkingCodes, 6, 1);
    grid->addWidget(m.cmd_ParkingCodes, 6, 2);
    grid->addWidget(m.cmd_Update_all_atc_Parking_codes, 6, 3);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(7, 1);
    layout->addWidget(variation, 3);

    m.lstParking = named(new QListWidget(page), QStringLiteral("lstParking"));
    m.lstParking->setSelectionMode(QAbstractItemView::MultiSelection);
    m.lstParking->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m.lstParking->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m.lstParking->hide();
    new DropDownPlacer(m.lstParking, m.picCombo);

    auto *general = named(new QGroupBox(QStringLiteral("[general]"), page), QStringLiteral("fraGeneral"));
    auto *form = new QFormLayout(general);
    m.txt_general_atc_model = lineEdit(general, QStringLiteral("txt_general_atc_model"));
    m.txt_general_atc_type = lineEdit(general, QStringLiteral("txt_general_atc_type"));
    form->addRow(keyLabel(QStringLiteral("atc_model"), m.txt_general_atc_model), m.txt_general_atc_model);
    form->addRow(keyLabel(QStringLiteral("atc_type"), m.txt_general_atc_type), m.txt_general_atc_type);
    layout->addWidget(general, 1, Qt::AlignTop);
    return page;
}

QWidget *buildGeometryTab(MainFormControls &m)
{
    auto *page = named(new QWidget, QStringLiteral("tabGeometry"));
    auto *layout = new QVBoxLayout(page);

    auto *wing = named(new QGroupBox(QStringLiteral("[airplane_geometry]"), page), QStringLiteral("fraWingSpan"));
    auto *wingGrid = new QGridLayout(wing);
    m.txt_WingSpan_Org = lineEdit(wing, QStringLiteral("txt_WingSpan_Org"),
                                  QStringLiteral("Current wing_span value from aircraft.cfg [read-only]."), true);
    m.txt_WingSpan_Org_C1 = lineEdit(wing, QStringLiteral("txt_WingSpan_Org_C1"),
                                     QStringLiteral("Current wing_span value converted to meter [read-only]."), true);
    m.txt_WingSpan_Org_C2 =
        lineEdit(wing, QStringLiteral("txt_WingSpan_Org_C2"),
                 QStringLiteral("Current wing_span value converted to meter && devided by two [read-only]."), true);
    m.txt_FSX_Spot_Org = lineEdit(wing, QStringLiteral("txt_FSX_Spot_Org"),
                                  QStringLiteral("This is how big an FSX parking spot must be to host the aircraft  "
                                                 "for the current wing_span value [read-only]."),
                                  true);
    m.txt_WingSpan_New =
        lineEdit(wing, QStringLiteral("txt_WingSpan_New"), QStringLiteral("Enter new wing_span value here"));
    m.txt_WingSpan_New_C1 = lineEdit(wing, QStringLiteral("txt_WingSpan_New_C1"),
                                     QStringLiteral("New wing_span value converted to meter [read-only]."), true);
    m.txt_WingSpan_New_C2 =
        lineEdit(wing, QStringLiteral("txt_WingSpan_New_C2"),
                 QStringLiteral("New wing_span value converted to meter && devided by two [read-only]."), true);
    m.txt_FSX_Spot_New = lineEdit(wing, QStringLiteral("txt_FSX_Spot_New"),
                                  QStringLiteral("This is how big an FSX parking spot must be to host the aircraft if "
                                                 "new wing_span value is applied"),
                                  true);
    const std::array<QLineEdit *, 4> current {m.txt_WingSpan_Org, m.txt_WingSpan_Org_C1, m.txt_WingSpan_Org_C2,
                                              m.txt_FSX_Spot_Org};
    const std::array<QLineEdit *, 4> next {m.txt_WingSpan_New, m.txt_WingSpan_New_C1, m.txt_WingSpan_New_C2,
                                           m.txt_FSX_Spot_New};
    wingGrid->addWidget(
        keyLabel(QStringLiteral("current wing_span (ft), convert to m, div by 2, spot size"), m.txt_WingSpan_Org), 0,
        0);
    wingGrid->addWidget(
        keyLabel(QStringLiteral("new wing_span (ft), convert to m, div by 2, spot size"), m.txt_WingSpan_New), 1, 0);
    for (int column = 0; column < 4; ++column) {
        wingGrid->addWidget(current[column], 0, column + 1);
        wingGrid->addWidget(next[column], 1, column + 1);
        wingGrid->setColumnStretch(column + 1, 1);
    }
    layout->addWidget(wing);

    auto *exits = named(new QGroupBox(QStringLiteral("[exits]"), page), QStringLiteral("fraExits"));
    auto *exitGrid = new QGridLayout(exits);
    static const char16_t *const exitTips[5] = {
        u"%1 open and close rate percent per second (where 1.0 is fully open)",
        u"%1 longitudinal position (datum reference point)",
        u"%1 lateral position (datum reference point)",
        u"%1 vertical position (datum reference point)",
        u"%1 type (0 = Main, 1 = Cargo, 2 = Emergency)",
    };
    std::array<std::array<QLineEdit *, 5> *, 3> arrays {&m.txt_Exit_0, &m.txt_Exit_1, &m.txt_Exit_2};
    std::array<QCheckBox **, 3> checks {&m.chk_Exit_0, &m.chk_Exit_1, &m.chk_Exit_2};
    for (int line = 0; line < 3; ++line) {
        const QString exitName = QStringLiteral("Exit.%1").arg(line);
        auto &boxes = *arrays[line];
        for (int k = 0; k < 5; ++k) {
            QString tip = qs(exitTips[k]).arg(exitName);
            // The program has always shown this one without its blank.
            if (line == 1 && k == 3)
                tip = QStringLiteral("Exit.1vertical position (datum reference point)");
            boxes[k] = lineEdit(exits, QStringLiteral("txt_Exit_%1_%2").arg(line).arg(k), tip);
            exitGrid->addWidget(boxes[k], line, k + 1);
            exitGrid->setColumnStretch(k + 1, 1);
        }
        exitGrid->addWidget(
            keyLabel(QStringLiteral("exit.%1: closure rate, longitudinal, lateral, vertical, type, => ok").arg(line),
                     boxes[0]),
            line, 0);
        auto *check = named(new QCheckBox(exits), QStringLiteral("chk_Exit_%1").arg(line));
        check->setToolTip(QStringLiteral("All %1 values defined, a jetway is possible [read-only]").arg(exitName));
        exitGrid->addWidget(check, line, 6);
        *checks[line] = check;
    }
    layout->addWidget(exits);

    auto *jetways = new QHBoxLayout;
    m.txt_Jetways = lineEdit(page, QStringLiteral("txt_Jetways"),
                             QStringLiteral("Does the current configuration allow Jetways?"), true);
    m.txt_Jetways->setText(QStringLiteral("Jetways possible: n/a"));
    m.txt_Jetways->setAlignment(Qt::AlignCenter);
    m.txt_Jetways->setMinimumWidth(
        m.txt_Jetways->fontMetrics().horizontalAdvance(QStringLiteral("Jetways possible: yes")) * 3 / 2);
    jetways->addStretch(1);
    jetways->addWidget(m.txt_Jetways);
    layout->addLayout(jetways);
    layout->addStretch(1);
    return page;
}

QWidget *buildEffectsTab(MainFormControls &m)
{
    auto *page = named(new QWidget, QStringLiteral("tabEffects"));
    auto *layout = new QHBoxLayout(page);

    auto *effects = named(new QGroupBox(QStringLiteral("[effects]"), page), QStringLiteral("fraEffects"));
    auto *grid = new QGridLayout(effects);
    grid->setVerticalSpacing(2);
    static const struct
    {
        const char16_t *key;
        const char16_t *tip;
    } rows[11] = {
        {u"wake", u"Assigned 'Wake' effect"},
        {u"water", u"Assigned 'Water' effect"},
        {u"dirt", u"Assigned 'Dirt' effect"},
        {u"concrete", u"Assigned 'Concrete' effect"},
        {u"touchdown", u"Assigned 'Touchdown' effect"},
        {u"contrail", u"Assigned 'Contrail' effect"},
        {u"startup", u"Assigned  'Startup' effect"},
        {u"vaportrail_l", u"Assigned 'Vaportail_l' effect"},
        {u"vaportrail_r", u"Assigned 'Vaportail_r' effect"},
        {u"l_wingtipvortice", u"Assigned 'L_wingtipvortice' effect"},
        {u"r_wingtipvortice", u"Assigned 'R_wingtipvortice' effect"},
    };
    // Two columns of boxes, each with its "runs only once" check boxes under a heading.
    constexpr int PER_COLUMN = 6;
    for (int side = 0; side < 2; ++side) {
        auto *heading = new QLabel(QStringLiteral("Effect runs only once"), effects);
        heading->setAlignment(Qt::AlignRight | Qt::AlignBottom);
        grid->addWidget(heading, 0, side * 4 + 1, 1, 2);
    }
    for (int k = 0; k < 11; ++k) {
        const int side = k / PER_COLUMN;
        const int row = k % PER_COLUMN + 1;
        m.txt_effects[k] = lineEdit(effects, QStringLiteral("txt_effects_%1").arg(k), qs(rows[k].tip));
        m.txt_effects[k]->setContextMenuPolicy(Qt::CustomContextMenu);
        m.chk_Effect[k] = named(new QCheckBox(effects), QStringLiteral("chk_Effect_%1").arg(k));
        grid->addWidget(keyLabel(qs(rows[k].key), m.txt_effects[k]), row, side * 4);
        grid->addWidget(m.txt_effects[k], row, side * 4 + 1);
        grid->addWidget(m.chk_Effect[k], row, side * 4 + 2);
    }
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(5, 1);
    grid->setColumnMinimumWidth(3, QFontMetrics(effects->font()).height());
    auto *hint = new QLabel(
        QStringLiteral("Right-clicking on the effect text fields will brings up a menu with additional options"),
        effects);
    hint->setWordWrap(true);
    grid->addWidget(hint, PER_COLUMN + 1, 0, 1, 7);
    grid->setRowStretch(PER_COLUMN + 2, 1);
    layout->addWidget(effects, 3);

    auto *right = new QVBoxLayout;
    auto *description = named(new QGroupBox(QStringLiteral("description"), page), QStringLiteral("fraDescription"));
    auto *descriptionLayout = new QVBoxLayout(description);
    m.txt_Description = named(new QPlainTextEdit(description), QStringLiteral("txt_Description"));
    m.txt_Description->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    m.txt_Description->setTabChangesFocus(true);
    descriptionLayout->addWidget(m.txt_Description);
    right->addWidget(description, 1);
    m.cmd_Effect_Update = button(page, QStringLiteral("cmd_Effect_Update"), QStringLiteral("&2. Update"),
                                 QStringLiteral("Update the aircraft.cfg with chosen effect settings"));
    right->addWidget(m.cmd_Effect_Update, 0, Qt::AlignRight);
    layout->addLayout(right, 2);
    return page;
}

QWidget *buildAssociationTab(MainFormControls &m)
{
    auto *page = named(new QWidget, QStringLiteral("tabAssociation"));
    auto *layout = new QHBoxLayout(page);

    auto *assign = named(new QGroupBox(QStringLiteral("[fltsim.x] texture, model && sim"), page),
                         QStringLiteral("fraAssociation"));
    auto *grid = new QGridLayout(assign);
    grid->addWidget(new QLabel(QStringLiteral("current"), assign), 0, 1);
    grid->addWidget(new QLabel(QStringLiteral("available in this folder"), assign), 0, 2);
    m.txt_CurrentTexture = lineEdit(assign, QStringLiteral("txt_CurrentTexture"), {}, true);
    m.txt_CurrentModel = lineEdit(assign, QStringLiteral("txt_CurrentModel"), {}, true);
    m.txt_CurrentAirfile = lineEdit(assign, QStringLiteral("txt_CurrentAirfile"), {}, true);
    m.combo_Texture = named(new QComboBox(assign), QStringLiteral("combo_Texture"));
    m.combo_Texture->setToolTip(QStringLiteral("Lists all available textures in the current aircraft folder"));
    m.combo_Model = named(new QComboBox(assign), QStringLiteral("combo_Model"));
    m.combo_Model->setToolTip(QStringLiteral("Lists all available models in the current aircraft folder"));
    m.combo_Airfile = named(new QComboBox(assign), QStringLiteral("combo_Airfile"));
    m.combo_Airfile->setToolTip(
        QStringLiteral("Lists all available airfiles ('*.air') in the current aircraft folder"));
    const struct
    {
        const char16_t *key;
        QLineEdit *current;
        QComboBox *available;
    } rows[] = {
        {u"texture", m.txt_CurrentTexture, m.combo_Texture},
        {u"model", m.txt_CurrentModel, m.combo_Model},
        {u"sim", m.txt_CurrentAirfile, m.combo_Airfile},
    };
    int row = 1;
    for (const auto &entry : rows) {
        entry.available->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        entry.available->setMinimumContentsLength(12);
        grid->addWidget(keyLabel(qs(entry.key), entry.available), row, 0);
        grid->addWidget(entry.current, row, 1);
        grid->addWidget(entry.available, row, 2);
        ++row;
    }
    m.cmd_Associate = button(assign, QStringLiteral("cmd_Associate"), QStringLiteral("&3. Update"),
                             QStringLiteral("Update the selected [fltsim.x] section with chosen texture, model and "
                                            "airfile"));
    m.cmd_Associate->setEnabled(false);
    grid->addWidget(m.cmd_Associate, row, 2, Qt::AlignRight);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(2, 1);
    grid->setRowStretch(row + 1, 1);
    layout->addWidget(assign, 3);

    auto *airFiles = named(new QGroupBox(QStringLiteral("Air files"), page), QStringLiteral("fraAirFiles"));
    auto *airLayout = new QVBoxLayout(airFiles);
    m.lst_Airfile = named(new QListWidget(airFiles), QStringLiteral("lst_Airfile"));
    m.lst_Airfile->setToolTip(QStringLiteral("List all airfiles ('*.air') in the selected aircraft folder"));
    m.lst_Airfile->setSelectionMode(QAbstractItemView::SingleSelection);
    airLayout->addWidget(m.lst_Airfile);
    layout->addWidget(airFiles, 1);

    m.fraAircraftType =
        named(new QGroupBox(QStringLiteral("Aircraft type (.air)"), page), QStringLiteral("fraAircraftType"));
    auto *types = new QVBoxLayout(m.fraAircraftType);
    const struct
    {
        QRadioButton **button;
        const char16_t *name;
        const char16_t *caption;
        const char16_t *tip;
    } options[] = {
        {&m.opt_ac_Normal, u"opt_ac_Normal", u"Normal (0)",
         u"Set aircraft type to 'Normal' - the aircraft is visible in your FS9 aircraft selection menu"},
        {&m.opt_ac_Helicopter, u"opt_ac_Helicopter", u"Helicopter (1)",
         u"Set aircraft type to 'Helicopter' - the aircraft is visible in your FS9 aircraft selection menu"},
        {&m.opt_ac_AI, u"opt_ac_AI", u"AI (2)",
         u"Set aircraft type to 'AI' - the aircraft is not visible in your FS9 aircraft selection menu"},
        {&m.opt_ac_Nok, u"opt_ac_Nok", u"n/a",
         u"There is no aircraft section (105) in your airfile ('*.air') - it is most likely an FSX aircraft"},
    };
    for (const auto &option : options) {
        *option.button = named(new QRadioButton(qs(option.caption), m.fraAircraftType), qs(option.name));
        (*option.button)->setToolTip(qs(option.tip));
        (*option.button)->setEnabled(false);
        types->addWidget(*option.button);
    }
    types->addStretch(1);
    layout->addWidget(m.fraAircraftType, 1);
    return page;
}

void applyIdleColours(MainFormControls &m)
{
    const QColor grey = colourFromBgr(NO_ROW_GREY);
    for (QWidget *field : {static_cast<QWidget *>(m.txt_Title), static_cast<QWidget *>(m.txt_atc_ParkingCodes),
                           static_cast<QWidget *>(m.txt_ui_CreatedBy), static_cast<QWidget *>(m.txt_ui_TypeRole),
                           static_cast<QWidget *>(m.txt_ui_Manufacturer), static_cast<QWidget *>(m.txt_ui_Type),
                           static_cast<QWidget *>(m.txt_ui_Variation), static_cast<QWidget *>(m.txt_atc_Id),
                           static_cast<QWidget *>(m.txt_atc_Flight_Number), static_cast<QWidget *>(m.txt_atc_Airline),
                           static_cast<QWidget *>(m.txt_atc_Model), static_cast<QWidget *>(m.txt_general_atc_model),
                           static_cast<QWidget *>(m.txt_general_atc_type), static_cast<QWidget *>(m.txt_FS9Radius),
                           static_cast<QWidget *>(m.picCombo), static_cast<QWidget *>(m.lblSelections),
                           static_cast<QWidget *>(m.txt_Jetways)})
        setBackColour(field, grey);
    for (auto *boxes : {&m.txt_Exit_0, &m.txt_Exit_1, &m.txt_Exit_2})
        for (QLineEdit *box : *boxes)
            setBackColour(box, grey);
    for (QLineEdit *box : m.txt_effects)
        setBackColour(box, colourFromBgr(WHITE));
    setBackColour(m.txt_WingSpan_New, colourFromBgr(NOT_IN_EDIT));
}

} // namespace

MainFormControls buildMainForm(QMainWindow *form)
{
    MainFormControls m;
    if (form->objectName().isEmpty())
        form->setObjectName(QStringLiteral("frm_Main"));
    form->setWindowTitle(QStringLiteral("Fleetwright"));

    buildMenus(form, m);
    buildRightClickMenus(form, m.frm_RightClick);

    auto *central = named(new QWidget(form), QStringLiteral("centralWidget"));
    auto *columns = new QHBoxLayout(central);
    QWidget *browser = buildFolderBrowser(m);
    browser->setFixedWidth(std::max(250, browser->sizeHint().width()));
    columns->addWidget(browser);

    auto *right = new QVBoxLayout;
    buildGrid(m);
    right->addWidget(m.ListView1, 1);

    auto *editor = new QHBoxLayout;
    m.SSTab1 = named(new QTabWidget(central), QStringLiteral("SSTab1"));
    m.SSTab1->setDocumentMode(false);
    m.SSTab1->addTab(buildGeneralTab(m), QStringLiteral("General"));
    m.SSTab1->addTab(buildAtcTab(m), QStringLiteral("ATC"));
    m.SSTab1->addTab(buildGeometryTab(m), QStringLiteral("Geometry"));
    m.SSTab1->addTab(buildEffectsTab(m), QStringLiteral("Effects"));
    m.SSTab1->addTab(buildAssociationTab(m), QStringLiteral("Texture, Model && Airfile"));
    m.SSTab1->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    editor->addWidget(m.SSTab1, 1);

    // The ATC list floats over the form, so it lives on the central widget and is raised when shown.
    m.lstParking->setParent(central);
    m.lstParking->hide();

    m.cmd_cfg_Update = button(central, QStringLiteral("cmd_cfg_Update"), QStringLiteral("&1. Update"),
                              QStringLiteral("Update aircraft.cfg with new values for wing_span, exit.x, atc_model "
                                             "&& atc_type"));
    auto *updateColumn = new QVBoxLayout;
    updateColumn->addStretch(1);
    updateColumn->addWidget(m.cmd_cfg_Update);
    editor->addLayout(updateColumn);
    right->addLayout(editor);
    columns->addLayout(right, 1);
    form->setCentralWidget(central);

    m.StatusBar1 = new StatusBarPanels(form);
    form->setStatusBar(m.StatusBar1);

    applyIdleColours(m);

    // Fixed by design; the size grows only if the fonts need more room than the default.
    const QSize needed = form->minimumSizeHint().expandedTo(QSize(FORM_WIDTH, FORM_HEIGHT));
    form->setFixedSize(needed);
    if (QLayout *layout = form->layout())
        layout->activate();
    if (QLayout *layout = central->layout())
        layout->activate();
    const int columnWidth = std::max(m.ListView1->viewport()->width(), m.ListView1->width()) / 8;
    for (int column = 0; column < GRID_COLUMNS; ++column)
        m.ListView1->setColumnWidth(column, columnWidth);
    return m;
}
