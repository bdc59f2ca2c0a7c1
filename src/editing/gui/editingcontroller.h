#pragma once

#include <array>
#include <filesystem>
#include <functional>

#include <QObject>

class QAction;
class QCheckBox;
class QComboBox;
class QEvent;
class QFrame;
class QKeyEvent;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenu;
class QPlainTextEdit;
class QPoint;
class QPushButton;
class QToolButton;
class QTreeWidget;
class QWidget;

namespace fleetwright {

class Dialogs;
class JournalService;
class RuntimeError;
struct EffectFields;
struct OpenAircraft;
struct ProgramState;

// The controls of the main window that editing reads and writes, each named as the control it is.
struct EditingControls
{
    QAction *mnuDelKeys = nullptr;
    QAction *mnuRenumber = nullptr;
    QAction *mnuSortKeys = nullptr;
    struct
    {
        QAction *mnuDelete = nullptr;
        QAction *mnuRenumber = nullptr;
        QAction *mnuSortKeys = nullptr;
        QMenu *mnuThisEffects = nullptr;
        QAction *mnuEffectsDisable = nullptr;
        QAction *mnuEffectsDefault = nullptr;
        QAction *mnuEffectsSelect = nullptr;
    } frm_RightClick;

    QTreeWidget *ListView1 = nullptr;

    QLineEdit *txt_Title = nullptr;
    QLineEdit *txt_ui_CreatedBy = nullptr;
    QLineEdit *txt_ui_TypeRole = nullptr;
    QLineEdit *txt_ui_Manufacturer = nullptr;
    QLineEdit *txt_ui_Type = nullptr;
    QLineEdit *txt_ui_Variation = nullptr;
    QLineEdit *txt_FS9Radius = nullptr;
    QPushButton *cmd_Update_all_ui_Createdby = nullptr;
    QPushButton *cmd_Update_all_ui_Typerole = nullptr;
    QPushButton *cmd_Update_all_ui_Manufacturer = nullptr;
    QPushButton *cmd_Update_all_ui_Type = nullptr;

    QLineEdit *txt_atc_Id = nullptr;
    QLineEdit *txt_atc_Flight_Number = nullptr;
    QLineEdit *txt_atc_Airline = nullptr;
    QLineEdit *txt_atc_Model = nullptr;
    QCheckBox *chk_atc_heavy = nullptr;
    QLabel *lblSelections = nullptr;
    QToolButton *cmdDropDown = nullptr;
    QListWidget *lstParking = nullptr;
    QLineEdit *txt_atc_ParkingCodes = nullptr;
    QPushButton *cmd_Update_all_atc_airline = nullptr;
    QPushButton *cmd_Update_all_atc_model = nullptr;
    QPushButton *cmd_Update_all_atc_heavy = nullptr;
    QPushButton *cmd_Update_all_atc_Parking_types = nullptr;
    QPushButton *cmd_Update_all_atc_Parking_codes = nullptr;
    QLineEdit *txt_general_atc_model = nullptr;
    QLineEdit *txt_general_atc_type = nullptr;

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

    std::array<QLineEdit *, 11> txt_effects {};
    std::array<QCheckBox *, 11> chk_Effect {};
    QPlainTextEdit *txt_Description = nullptr;
    QPushButton *cmd_Effect_Update = nullptr;

    QComboBox *combo_Texture = nullptr;
    QComboBox *combo_Model = nullptr;
    QComboBox *combo_Airfile = nullptr;
    QPushButton *cmd_Associate = nullptr;

    QPushButton *cmd_cfg_Update = nullptr;
};

// What editing works with besides its controls; all of it outlives the controller. After a write the folder
// is loaded again and the row opened again, which is the folder view's work: the two callbacks reach it.
// Each write is one journaled operation of the aircraft's folder.
struct EditingServices
{
    Dialogs &dialogs;
    ProgramState &state;
    OpenAircraft &aircraft;
    QWidget &window; // what the key removal dialog stands over
    JournalService &history;
    std::function<void()> Dir1_Change;
    std::function<void()> ListView1_DblClick;
};

// The writes of the open aircraft: "1. Update", "3. Update", the nine update-all buttons, the association,
// renumber, sort and delete of the variation sections, the key removal; and the editor fields that need more
// than a value: the effect boxes with their menu, the wing span chain, the exit rows, the number key filters,
// the focus rules that send the focus back to the grid while no row is open, the parking type pick-list and
// the parking code keys.
class EditingController : public QObject
{
    Q_OBJECT

public:
    EditingController(const EditingControls &controls, const EditingServices &services, QObject *parent = nullptr);

public slots:
    void cmd_cfg_Update_Click();
    void cmd_Associate_Click();
    // One handler for the family; the button says which key and which box.
    void cmd_Update_all_Click(QPushButton *button);
    void associationCombo_Change();
    void mnuDelKeys_Click();

    void EffectDefault();
    void EffectDisable();
    void EffectSelect();
    void cmd_Effect_Update_Click();
    void cmdDropDown_Click();
    void lstParking_Click();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void connectEditing();
    void connectFields();
    void connectWingSpanChain();
    void connectExitRows();
    // An operation that changed the file reloads the folder; a fault ends it with a box naming the routine.
    void runEditing(const char16_t *procedure, const std::function<bool()> &operation);
    // Selects the grid row at position and opens it, as after every write that keeps the open row.
    void reopenRow(int position, bool makeVisible);
    void txt_effects_GotFocus(int index);
    void txt_effects_MouseDown(int index, const QPoint &position);
    bool numberKeyPress(QLineEdit *box, QKeyEvent *event, bool signedField);
    bool parkingCodesKeyPress(QKeyEvent *event);
    bool focusReturns(QObject *watched) const;
    EffectFields effectFields() const;
    void showEffectFields(const EffectFields &fields);
    void showFault(const RuntimeError &error, const char16_t *procedure);
    // The folder of the open aircraft.cfg, which its operations belong to.
    std::filesystem::path aircraftFolder() const;
    std::array<QLineEdit *, 15> exitFields() const;

    EditingControls m_c;
    EditingServices m_services;
    // True when lstParking lost the focus to cmdDropDown itself, so that the button's click leaves the list
    // closed instead of opening it again.
    bool ParkingListJustClosed = false;
    // True while code selects entries of lstParking, which is no click of the user's.
    bool m_fillingParkingList = false;
};

} // namespace fleetwright
