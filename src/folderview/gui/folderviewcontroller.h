#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <QObject>
#include <QString>

class QAction;
class QCheckBox;
class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenu;
class QPlainTextEdit;
class QPoint;
class QPushButton;
class QRadioButton;
class QTabWidget;
class QToolButton;
class QTreeWidget;

namespace fleetwright {

class Dialogs;
class DirListBox;
class DriveListBox;
class StatusBarPanels;
enum class PanelColour;
struct OpenAircraft;
class JournalService;
struct ProgramState;
namespace platform {
class SettingsStore;
}

// The controls of the main window that the folder view drives, each named as the control it is.
struct FolderViewControls
{
    DriveListBox *Drive1 = nullptr;
    DirListBox *Dir1 = nullptr;
    QPushButton *cmd_DirUp = nullptr;
    QRadioButton *opt_FS9 = nullptr;
    QRadioButton *opt_FSX = nullptr;
    QComboBox *combo_SimFolder = nullptr;
    QTreeWidget *ListView1 = nullptr;
    QTabWidget *SSTab1 = nullptr;

    QAction *mnuCFG = nullptr;
    QAction *mnuDelKeys = nullptr;
    QAction *mnuSortKeys = nullptr;
    QAction *mnuRenumber = nullptr;
    QAction *mnuValidate = nullptr;
    QAction *mnuvalidateAll = nullptr;
    struct
    {
        QMenu *mnuListView1 = nullptr;
        QAction *mnuDelete = nullptr;
    } frm_RightClick;

    QLineEdit *txt_Title = nullptr;
    QLineEdit *txt_ui_CreatedBy = nullptr;
    QLineEdit *txt_ui_TypeRole = nullptr;
    QLineEdit *txt_ui_Manufacturer = nullptr;
    QLineEdit *txt_ui_Type = nullptr;
    QLineEdit *txt_ui_Variation = nullptr;
    QLineEdit *txt_FSXVersion = nullptr;
    QLineEdit *txt_FS9Radius = nullptr;

    QLineEdit *txt_atc_Id = nullptr;
    QLineEdit *txt_atc_Flight_Number = nullptr;
    QLineEdit *txt_atc_Airline = nullptr;
    QLineEdit *txt_atc_Model = nullptr;
    QCheckBox *chk_atc_heavy = nullptr;
    QFrame *picCombo = nullptr;
    QLabel *lblSelections = nullptr;
    QToolButton *cmdDropDown = nullptr;
    QListWidget *lstParking = nullptr;
    QLineEdit *txt_atc_ParkingCodes = nullptr;
    QPushButton *cmd_ParkingCodes = nullptr;
    QLineEdit *txt_general_atc_model = nullptr;
    QLineEdit *txt_general_atc_type = nullptr;

    QLineEdit *txt_WingSpan_Org = nullptr;
    QLineEdit *txt_WingSpan_New = nullptr;
    std::array<QLineEdit *, 5> txt_Exit_0 {};
    std::array<QLineEdit *, 5> txt_Exit_1 {};
    std::array<QLineEdit *, 5> txt_Exit_2 {};
    QCheckBox *chk_Exit_0 = nullptr;
    QCheckBox *chk_Exit_1 = nullptr;
    QCheckBox *chk_Exit_2 = nullptr;
    QLineEdit *txt_Jetways = nullptr;

    std::array<QLineEdit *, 11> txt_effects {};
    std::array<QCheckBox *, 11> chk_Effect {};
    QPlainTextEdit *txt_Description = nullptr;

    QLineEdit *txt_CurrentTexture = nullptr;
    QLineEdit *txt_CurrentModel = nullptr;
    QLineEdit *txt_CurrentAirfile = nullptr;
    QComboBox *combo_Texture = nullptr;
    QComboBox *combo_Model = nullptr;
    QComboBox *combo_Airfile = nullptr;
    QListWidget *lst_Airfile = nullptr;
    QRadioButton *opt_ac_Normal = nullptr;
    QRadioButton *opt_ac_Helicopter = nullptr;
    QRadioButton *opt_ac_AI = nullptr;
    QRadioButton *opt_ac_Nok = nullptr;

    StatusBarPanels *StatusBar1 = nullptr;
};

// What the folder view works with besides its controls; all of it outlives the controller.
struct FolderViewServices
{
    Dialogs &dialogs;
    ProgramState &state;
    platform::SettingsStore &settings;
    OpenAircraft &aircraft;
    std::function<void(int panel, const QString &text, PanelColour colour)> paintStatusPanel;
    JournalService &history; // the air type patch is an operation of the folder
};

// The folder browser, the grid and the open row: how the user reaches a folder, the load that fills the grid
// and the editor fields, and how the fields follow the row being looked at. It keeps the state of the load
// that no one else reads; what editing needs of the open row goes to OpenAircraft.
class FolderViewController : public QObject
{
    Q_OBJECT

public:
    FolderViewController(const FolderViewControls &controls, const FolderViewServices &services,
                         QObject *parent = nullptr);

    // While LoadGuard is on, neither a folder change nor a quick navigation loads anything; start-up holds
    // it while it sets the browser up.
    void setLoadGuard(bool on) { LoadGuard = on; }
    // The air type buttons answer clicks only once start-up has enabled the events.
    void setEventsEnabled(bool on) { EventsEnabled = on; }

    // Empties every editor field before a folder load; does nothing while LoadGuard is on.
    void ResetValues();

public slots:
    void Dir1_Change();
    void Drive1_Change();
    void cmd_DirUp_Click();
    void opt_FS9_Click();
    void opt_FSX_Click();
    void combo_SimFolder_Click(int index);
    void ListView1_Click();
    void ListView1_MouseDown(const QPoint &position);
    void ListView1_DblClick();
    void lst_Airfile_Click();

private:
    void quickNavigate(const std::u16string &root, const char16_t *missingText);
    void moveBrowser(const std::u16string &folder);
    void ReadAirFile();
    void airTypeOption_Click(int type);
    void showCurrentFields(const std::u16string &section);
    void paint(int panel, const QString &text, PanelColour colour) const;

    FolderViewControls m_c;
    FolderViewServices m_services;

    bool LoadGuard = false;
    bool EventsEnabled = false;
    std::vector<std::u16string> Descriptions;
    std::u16string AirFileName;
    std::int16_t AirTypeShown = 0;
    std::u16string WingSpanSection;
};

} // namespace fleetwright
