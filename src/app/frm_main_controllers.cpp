// The subsystems' controllers of the main window: each gets the controls and services it works with, and the
// form's given slots forward to them.
#include <QAction>

#include "app/frm_main.h"
#include "editing/gui/editingcontroller.h"
#include "folderview/gui/folderviewcontroller.h"
#include "history/gui/historycontroller.h"
#include "history/gui/journalservice.h"
#include "parking/gui/parkingcontroller.h"
#include "support/gui/supportcontroller.h"
#include "validation/gui/validationcontroller.h"

namespace fleetwright {

namespace {

FolderViewControls folderViewControls(const Ui::frm_Main &c, const Ui::frm_RightClick &r)
{
    FolderViewControls f;
    f.Drive1 = c.Drive1;
    f.Dir1 = c.Dir1;
    f.cmd_DirUp = c.cmd_DirUp;
    f.opt_FS9 = c.opt_FS9;
    f.opt_FSX = c.opt_FSX;
    f.combo_SimFolder = c.combo_SimFolder;
    f.ListView1 = c.ListView1;
    f.SSTab1 = c.SSTab1;
    f.mnuCFG = c.mnuCFG;
    f.mnuDelKeys = c.mnuDelKeys;
    f.mnuSortKeys = c.mnuSortKeys;
    f.mnuRenumber = c.mnuRenumber;
    f.mnuValidate = c.mnuValidate;
    f.mnuvalidateAll = c.mnuvalidateAll;
    f.frm_RightClick.mnuListView1 = r.mnuListView1;
    f.frm_RightClick.mnuDelete = r.mnuDelete;
    f.txt_Title = c.txt_Title;
    f.txt_ui_CreatedBy = c.txt_ui_CreatedBy;
    f.txt_ui_TypeRole = c.txt_ui_TypeRole;
    f.txt_ui_Manufacturer = c.txt_ui_Manufacturer;
    f.txt_ui_Type = c.txt_ui_Type;
    f.txt_ui_Variation = c.txt_ui_Variation;
    f.txt_FSXVersion = c.txt_FSXVersion;
    f.txt_FS9Radius = c.txt_FS9Radius;
    f.txt_atc_Id = c.txt_atc_Id;
    f.txt_atc_Flight_Number = c.txt_atc_Flight_Number;
    f.txt_atc_Airline = c.txt_atc_Airline;
    f.txt_atc_Model = c.txt_atc_Model;
    f.chk_atc_heavy = c.chk_atc_heavy;
    f.picCombo = c.picCombo;
    f.lblSelections = c.lblSelections;
    f.cmdDropDown = c.cmdDropDown;
    f.lstParking = c.lstParking;
    f.txt_atc_ParkingCodes = c.txt_atc_ParkingCodes;
    f.cmd_ParkingCodes = c.cmd_ParkingCodes;
    f.txt_general_atc_model = c.txt_general_atc_model;
    f.txt_general_atc_type = c.txt_general_atc_type;
    f.txt_WingSpan_Org = c.txt_WingSpan_Org;
    f.txt_WingSpan_New = c.txt_WingSpan_New;
    f.txt_Exit_0 = {c.txt_Exit_0_0, c.txt_Exit_0_1, c.txt_Exit_0_2, c.txt_Exit_0_3, c.txt_Exit_0_4};
    f.txt_Exit_1 = {c.txt_Exit_1_0, c.txt_Exit_1_1, c.txt_Exit_1_2, c.txt_Exit_1_3, c.txt_Exit_1_4};
    f.txt_Exit_2 = {c.txt_Exit_2_0, c.txt_Exit_2_1, c.txt_Exit_2_2, c.txt_Exit_2_3, c.txt_Exit_2_4};
    f.chk_Exit_0 = c.chk_Exit_0;
    f.chk_Exit_1 = c.chk_Exit_1;
    f.chk_Exit_2 = c.chk_Exit_2;
    f.txt_Jetways = c.txt_Jetways;
    f.txt_effects = {c.txt_effects_0, c.txt_effects_1, c.txt_effects_2, c.txt_effects_3,
                     c.txt_effects_4, c.txt_effects_5, c.txt_effects_6, c.txt_effects_7,
                     c.txt_effects_8, c.txt_effects_9, c.txt_effects_10};
    f.chk_Effect = {c.chk_Effect_0, c.chk_Effect_1, c.chk_Effect_2, c.chk_Effect_3, c.chk_Effect_4, c.chk_Effect_5,
                    c.chk_Effect_6, c.chk_Effect_7, c.chk_Effect_8, c.chk_Effect_9, c.chk_Effect_10};
    f.txt_Description = c.txt_Description;
    f.txt_CurrentTexture = c.txt_CurrentTexture;
    f.txt_CurrentModel = c.txt_CurrentModel;
    f.txt_CurrentAirfile = c.txt_CurrentAirfile;
    f.combo_Texture = c.combo_Texture;
    f.combo_Model = c.combo_Model;
    f.combo_Airfile = c.combo_Airfile;
    f.lst_Airfile = c.lst_Airfile;
    f.opt_ac_Normal = c.opt_ac_Normal;
    f.opt_ac_Helicopter = c.opt_ac_Helicopter;
    f.opt_ac_AI = c.opt_ac_AI;
    f.opt_ac_Nok = c.opt_ac_Nok;
    f.StatusBar1 = c.StatusBar1;
    return f;
}

EditingControls editingControls(const Ui::frm_Main &c, const Ui::frm_RightClick &r)
{
    EditingControls e;
    e.mnuDelKeys = c.mnuDelKeys;
    e.mnuRenumber = c.mnuRenumber;
    e.mnuSortKeys = c.mnuSortKeys;
    e.frm_RightClick.mnuDelete = r.mnuDelete;
    e.frm_RightClick.mnuRenumber = r.mnuRenumber;
    e.frm_RightClick.mnuSortKeys = r.mnuSortKeys;
    e.frm_RightClick.mnuThisEffects = r.mnuThisEffects;
    e.frm_RightClick.mnuEffectsDisable = r.mnuEffectsDisable;
    e.frm_RightClick.mnuEffectsDefault = r.mnuEffectsDefault;
    e.frm_RightClick.mnuEffectsSelect = r.mnuEffectsSelect;
    e.ListView1 = c.ListView1;
    e.txt_Title = c.txt_Title;
    e.txt_ui_CreatedBy = c.txt_ui_CreatedBy;
    e.txt_ui_TypeRole = c.txt_ui_TypeRole;
    e.txt_ui_Manufacturer = c.txt_ui_Manufacturer;
    e.txt_ui_Type = c.txt_ui_Type;
    e.txt_ui_Variation = c.txt_ui_Variation;
    e.txt_FS9Radius = c.txt_FS9Radius;
    e.cmd_Update_all_ui_Createdby = c.cmd_Update_all_ui_Createdby;
    e.cmd_Update_all_ui_Typerole = c.cmd_Update_all_ui_Typerole;
    e.cmd_Update_all_ui_Manufacturer = c.cmd_Update_all_ui_Manufacturer;
    e.cmd_Update_all_ui_Type = c.cmd_Update_all_ui_Type;
    e.txt_atc_Id = c.txt_atc_Id;
    e.txt_atc_Flight_Number = c.txt_atc_Flight_Number;
    e.txt_atc_Airline = c.txt_atc_Airline;
    e.txt_atc_Model = c.txt_atc_Model;
    e.chk_atc_heavy = c.chk_atc_heavy;
    e.lblSelections = c.lblSelections;
    e.cmdDropDown = c.cmdDropDown;
    e.lstParking = c.lstParking;
    e.txt_atc_ParkingCodes = c.txt_atc_ParkingCodes;
    e.cmd_Update_all_atc_airline = c.cmd_Update_all_atc_airline;
    e.cmd_Update_all_atc_model = c.cmd_Update_all_atc_model;
    e.cmd_Update_all_atc_heavy = c.cmd_Update_all_atc_heavy;
    e.cmd_Update_all_atc_Parking_types = c.cmd_Update_all_atc_Parking_types;
    e.cmd_Update_all_atc_Parking_codes = c.cmd_Update_all_atc_Parking_codes;
    e.txt_general_atc_model = c.txt_general_atc_model;
    e.txt_general_atc_type = c.txt_general_atc_type;
    e.txt_WingSpan_Org = c.txt_WingSpan_Org;
    e.txt_WingSpan_Org_C1 = c.txt_WingSpan_Org_C1;
    e.txt_WingSpan_Org_C2 = c.txt_WingSpan_Org_C2;
    e.txt_FSX_Spot_Org = c.txt_FSX_Spot_Org;
    e.txt_WingSpan_New = c.txt_WingSpan_New;
    e.txt_WingSpan_New_C1 = c.txt_WingSpan_New_C1;
    e.txt_WingSpan_New_C2 = c.txt_WingSpan_New_C2;
    e.txt_FSX_Spot_New = c.txt_FSX_Spot_New;
    e.txt_Exit_0 = {c.txt_Exit_0_0, c.txt_Exit_0_1, c.txt_Exit_0_2, c.txt_Exit_0_3, c.txt_Exit_0_4};
    e.txt_Exit_1 = {c.txt_Exit_1_0, c.txt_Exit_1_1, c.txt_Exit_1_2, c.txt_Exit_1_3, c.txt_Exit_1_4};
    e.txt_Exit_2 = {c.txt_Exit_2_0, c.txt_Exit_2_1, c.txt_Exit_2_2, c.txt_Exit_2_3, c.txt_Exit_2_4};
    e.chk_Exit_0 = c.chk_Exit_0;
    e.chk_Exit_1 = c.chk_Exit_1;
    e.chk_Exit_2 = c.chk_Exit_2;
    e.txt_effects = {c.txt_effects_0, c.txt_effects_1, c.txt_effects_2, c.txt_effects_3,
                     c.txt_effects_4, c.txt_effects_5, c.txt_effects_6, c.txt_effects_7,
                     c.txt_effects_8, c.txt_effects_9, c.txt_effects_10};
    e.chk_Effect = {c.chk_Effect_0, c.chk_Effect_1, c.chk_Effect_2, c.chk_Effect_3, c.chk_Effect_4, c.chk_Effect_5,
                    c.chk_Effect_6, c.chk_Effect_7, c.chk_Effect_8, c.chk_Effect_9, c.chk_Effect_10};
    e.txt_Description = c.txt_Description;
    e.cmd_Effect_Update = c.cmd_Effect_Update;
    e.combo_Texture = c.combo_Texture;
    e.combo_Model = c.combo_Model;
    e.combo_Airfile = c.combo_Airfile;
    e.cmd_Associate = c.cmd_Associate;
    e.cmd_cfg_Update = c.cmd_cfg_Update;
    return e;
}

} // namespace

void frm_Main::createControllers()
{
    using namespace fleetwright;
    m_history = new JournalService(Journal::defaultLocation(), this);
    m_folderView =
        new FolderViewController(folderViewControls(m_ui, m_rightClick),
                                 FolderViewServices {*m_dialogs, state(), *m_settings, m_openAircraft,
                                                     [this](int panel, const QString &text, PanelColour colour) {
                                                         PaintStatusPanel(panel, text, colour);
                                                     },
                                                     *m_history},
                                 this);
    m_editing = new EditingController(editingControls(m_ui, m_rightClick),
                                      EditingServices {*m_dialogs, state(), m_openAircraft, *this, *m_history,
                                                       [this] { Dir1_Change(); }, [this] { ListView1_DblClick(); }},
                                      this);
    const ValidationContext validation {
        .window = this,
        .mnuValidate = m_ui.mnuValidate,
        .mnuvalidateAll = m_ui.mnuvalidateAll,
        .mnuAnalyzeOptions = m_ui.mnuAnalyzeOptions,
        .StatusBar1 = m_ui.StatusBar1,
        .Dir1 = m_ui.Dir1,
        .ListView1 = m_ui.ListView1,
        .txt_FSXVersion = m_ui.txt_FSXVersion,
        .dialogs = *m_dialogs,
        .state = state(),
        .settings = *m_settings,
        .aircraftIni = m_openAircraft.AircraftIni,
        .history = *m_history,
    };
    const ParkingContext parking {
        .window = this,
        .cmd_ParkingCodes = m_ui.cmd_ParkingCodes,
        .txt_atc_ParkingCodes = m_ui.txt_atc_ParkingCodes,
        .dialogs = *m_dialogs,
        .state = state(),
    };
    const SupportControls support {.window = this,
                                   .mnu_AppUpdate = m_ui.mnu_AppUpdate,
                                   .mnuAboutProg = m_ui.mnuAboutProg,
                                   .mnuResizable = m_ui.mnuResizable};
    const HistoryControls historyControls {.mnuEdit = m_ui.mnuEdit,
                                           .mnuUndo = m_ui.mnuUndo,
                                           .mnuRedo = m_ui.mnuRedo,
                                           .mnuHistory = m_ui.mnuHistory,
                                           .Dir1 = m_ui.Dir1,
                                           .ListView1 = m_ui.ListView1};
    auto *history = new HistoryController(
        historyControls,
        HistoryServices {*m_dialogs, *m_history, *this, [this] { Dir1_Change(); }, [this] { ListView1_DblClick(); }},
        this);
    m_units = {m_folderView,
               new ValidationController(validation),
               m_editing,
               new ParkingController(parking),
               m_support = new SupportController(support, *m_dialogs, state(), *m_settings),
               history};
}

void frm_Main::Dir1_Change()
{
    m_folderView->Dir1_Change();
}

void frm_Main::Drive1_Change()
{
    m_folderView->Drive1_Change();
}

void frm_Main::cmd_DirUp_Click()
{
    m_folderView->cmd_DirUp_Click();
}

void frm_Main::opt_FS9_Click()
{
    m_folderView->opt_FS9_Click();
}

void frm_Main::opt_FSX_Click()
{
    m_folderView->opt_FSX_Click();
}

void frm_Main::combo_SimFolder_Click(int index)
{
    m_folderView->combo_SimFolder_Click(index);
}

void frm_Main::ListView1_Click()
{
    m_folderView->ListView1_Click();
}

void frm_Main::ListView1_MouseDown(const QPoint &position)
{
    m_folderView->ListView1_MouseDown(position);
}

void frm_Main::associationCombo_Change()
{
    m_editing->associationCombo_Change();
}

void frm_Main::ListView1_DblClick()
{
    m_folderView->ListView1_DblClick();
}

void frm_Main::lst_Airfile_Click()
{
    m_folderView->lst_Airfile_Click();
}

void frm_Main::ResetValues()
{
    m_folderView->ResetValues();
}

} // namespace fleetwright
