#pragma once

#include <array>

#include <QColor>
#include <QString>

#include "core/gui/backcolour.h"
#include "folderview/gui/folderwidgets.h"

class QAction;
class QCheckBox;
class QComboBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QMainWindow;
class QMenu;
class QMenuBar;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;
class QToolButton;
class QTreeWidget;
class QTreeWidgetItem;
class QWidget;

class DirListBox;
class DriveListBox;
class StatusBarPanels;

// The hidden owner of the context menus. Its menus are popped up by the main form; they are never in a menu bar.
// The widget `form` has the objectName "frm_RightClick" and stays hidden.
struct RightClickMenus
{
    QWidget *form = nullptr;

    // Grid menu, in this order: mnuDelete, mnuRenumber, mnuSortKeys, mnuResize.
    QMenu *mnuListView1 = nullptr;
    QAction *mnuDelete = nullptr;
    QAction *mnuRenumber = nullptr;
    QAction *mnuSortKeys = nullptr;
    QAction *mnuResize = nullptr;

    // Effects menu, in this order: mnuEffectsDisable, mnuEffectsDefault, mnuEffectsSelect.
    QMenu *mnuThisEffects = nullptr;
    QAction *mnuEffectsDisable = nullptr;
    QAction *mnuEffectsDefault = nullptr;
    QAction *mnuEffectsSelect = nullptr;
};

// Every named control of the main window. A member's name is the control's objectName; an element of a control
// array is named "<array>_<index>" (txt_effects_0 ... txt_effects_10). Members not named by the program's own
// vocabulary (the group boxes) follow the same rule with names of ours.
struct MainFormControls
{
    // Menu bar. Separators are QActions with isSeparator() and their own objectName.
    QMenuBar *menuBar = nullptr;

    QMenu *mnuFile = nullptr;
    QAction *mnuCFG = nullptr;
    QAction *mnuSep1 = nullptr;
    QAction *mnuQuit = nullptr;

    QMenu *mnuSettings = nullptr;
    QAction *mnuConfirm = nullptr;    // checkable
    QAction *mnuAutoBackup = nullptr; // checkable
    QAction *line1 = nullptr;
    QAction *mnu_AutoUpdate = nullptr;      // checkable
    QAction *mnuResizable = nullptr;        // checkable
    QAction *mnuRememberLastPath = nullptr; // checkable
    QAction *mnuToolTips = nullptr;         // checkable
    QAction *mnuEditor = nullptr;           // checkable
    QAction *line2 = nullptr;
    QAction *mnuAnalyzeOptions = nullptr;
    QAction *mnuDataGrid = nullptr;

    QMenu *mnuTools = nullptr;
    QAction *mnuDelKeys = nullptr;
    QAction *mnuRenumber = nullptr;
    QAction *mnuSortKeys = nullptr;
    QAction *mnuValidate = nullptr;
    QAction *line3 = nullptr;
    QAction *mnuvalidateAll = nullptr;

    QMenu *mnuAbout = nullptr;
    QAction *mnu_Manual = nullptr;
    QAction *mnuSep5 = nullptr;
    QAction *Corvane = nullptr;
    QAction *mnu_AppUpdate = nullptr;
    QAction *mnuSep2 = nullptr;
    QAction *mnuAboutProg = nullptr;

    // Folder browser, at the left.
    DriveListBox *Drive1 = nullptr;
    DirListBox *Dir1 = nullptr;
    QPushButton *cmd_DirUp = nullptr; // disabled by design
    QGroupBox *fraQuickNavigate = nullptr;
    QRadioButton *opt_FS9 = nullptr;      // disabled by design
    QRadioButton *opt_FSX = nullptr;      // disabled by design
    QComboBox *combo_SimFolder = nullptr; // disabled by design, nothing selected

    // Variation grid: 17 columns, no sorting, header clicks do nothing. Rows are added with addVariationRow().
    QTreeWidget *ListView1 = nullptr;

    // Editor tabs under the grid: 0 "General", 1 "ATC", 2 "Geometry", 3 "Effects", 4 "Texture, Model && Airfile".
    QTabWidget *SSTab1 = nullptr;

    // General tab: the variation's own texts and the model file.
    QLineEdit *txt_Title = nullptr;
    QLineEdit *txt_ui_CreatedBy = nullptr;
    QLineEdit *txt_ui_TypeRole = nullptr;
    QLineEdit *txt_ui_Manufacturer = nullptr;
    QLineEdit *txt_ui_Type = nullptr;
    QLineEdit *txt_ui_Variation = nullptr;
    QLineEdit *txt_FSXVersion = nullptr; // read-only
    QLineEdit *txt_FS9Radius = nullptr;  // read-only (locked) by design
    QPushButton *cmd_Update_all_ui_Createdby = nullptr;
    QPushButton *cmd_Update_all_ui_Typerole = nullptr;
    QPushButton *cmd_Update_all_ui_Manufacturer = nullptr;
    QPushButton *cmd_Update_all_ui_Type = nullptr;

    // ATC tab.
    QLineEdit *txt_atc_Id = nullptr;
    QLineEdit *txt_atc_Flight_Number = nullptr;
    QLineEdit *txt_atc_Airline = nullptr;
    QLineEdit *txt_atc_Model = nullptr;
    QCheckBox *chk_atc_heavy = nullptr; // disabled by design
    QFrame *picCombo = nullptr;         // the box that holds lblSelections
    QLabel *lblSelections = nullptr;    // atc_parking_types, comma-separated
    QToolButton *cmdDropDown = nullptr; // disabled by design
    // The parking type pick-list: hidden by design, not in a layout; each time it is shown it places itself
    // under picCombo, over the other controls. Multi-selection.
    QListWidget *lstParking = nullptr;
    QLineEdit *txt_atc_ParkingCodes = nullptr;
    QPushButton *cmd_ParkingCodes = nullptr; // disabled by design
    QPushButton *cmd_Update_all_atc_airline = nullptr;
    QPushButton *cmd_Update_all_atc_model = nullptr;
    QPushButton *cmd_Update_all_atc_heavy = nullptr;
    QPushButton *cmd_Update_all_atc_Parking_types = nullptr;
    QPushButton *cmd_Update_all_atc_Parking_codes = nullptr;
    QLineEdit *txt_general_atc_model = nullptr; // [general] atc_model
    QLineEdit *txt_general_atc_type = nullptr;  // [general] atc_type

    // Geometry tab: wing span chains (all read-only except txt_WingSpan_New), exits, jetways.
    QLineEdit *txt_WingSpan_Org = nullptr;
    QLineEdit *txt_WingSpan_Org_C1 = nullptr;
    QLineEdit *txt_WingSpan_Org_C2 = nullptr;
    QLineEdit *txt_FSX_Spot_Org = nullptr;
    QLineEdit *txt_WingSpan_New = nullptr;
    QLineEdit *txt_WingSpan_New_C1 = nullptr;
    QLineEdit *txt_WingSpan_New_C2 = nullptr;
    QLineEdit *txt_FSX_Spot_New = nullptr;
    std::array<QLineEdit *, 5> txt_Exit_0 {};
    std::array<QLineEdit *, 5> txt_Exit_1 {};
    std::array<QLineEdit *, 5> txt_Exit_2 {};
    QCheckBox *chk_Exit_0 = nullptr;
    QCheckBox *chk_Exit_1 = nullptr;
    QCheckBox *chk_Exit_2 = nullptr;
    QLineEdit *txt_Jetways = nullptr; // read-only

    // Effects tab. The effect boxes have Qt::CustomContextMenu, so a right click gives
    // customContextMenuRequested and no text-box menu of their own.
    std::array<QLineEdit *, 11> txt_effects {};
    std::array<QCheckBox *, 11> chk_Effect {};
    QPlainTextEdit *txt_Description = nullptr; // one logical line, shown wrapped
    QPushButton *cmd_Effect_Update = nullptr;

    // Texture, model and air file tab.
    QLineEdit *txt_CurrentTexture = nullptr; // read-only
    QLineEdit *txt_CurrentModel = nullptr;   // read-only
    QLineEdit *txt_CurrentAirfile = nullptr; // read-only
    QComboBox *combo_Texture = nullptr;      // not editable: its text is empty while nothing is picked
    QComboBox *combo_Model = nullptr;
    QComboBox *combo_Airfile = nullptr;
    QPushButton *cmd_Associate = nullptr; // disabled by design
    QListWidget *lst_Airfile = nullptr;
    QGroupBox *fraAircraftType = nullptr;
    QRadioButton *opt_ac_Normal = nullptr;     // disabled by design
    QRadioButton *opt_ac_Helicopter = nullptr; // disabled by design
    QRadioButton *opt_ac_AI = nullptr;         // disabled by design
    QRadioButton *opt_ac_Nok = nullptr;        // disabled by design

    // General data update, beside the tabs so that it serves the General, ATC and Geometry tabs alike.
    QPushButton *cmd_cfg_Update = nullptr;

    StatusBarPanels *StatusBar1 = nullptr;

    RightClickMenus frm_RightClick;
};

// Builds the whole window into `form` from frm_main.ui: menu bar, folder browser, grid, editor tabs, status bar,
// and the hidden context menus of frm_rightclick.ui. Captions and tooltips are set; nothing is connected but
// layout. The form gets a fixed size that fits its content at the current font; it is not resizable (the caller
// may lift that).
MainFormControls buildMainForm(QMainWindow *form);
