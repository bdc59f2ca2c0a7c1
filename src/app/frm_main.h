#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <QMainWindow>

#include "environment/programstate.h"
#include "environment/simulatorenvironment.h"
#include "folderview/openaircraft.h"
#include "ui_frm_main.h"
#include "ui_frm_rightclick.h"

class QAction;

namespace fleetwright {

class Dialogs;
class EditingController;
class FolderViewController;
class HistoryController;
class JournalService;
class SupportController;
namespace platform {
class SettingsStore;
} // namespace platform

// The main window: the hub that owns the controls, makes the subsystems' controllers and connects them, and
// runs start-up. Form_Load runs in the constructor, as a form's load runs before it is first shown.
class frm_Main : public QMainWindow
{
    Q_OBJECT

public:
    // With no dialogs given, boxes are Qt's own; tests pass a scripted set.
    explicit frm_Main(Dialogs *dialogs = nullptr, QWidget *parent = nullptr);
    ~frm_Main() override;

    // The controls, named as the forms name them.
    const Ui::frm_Main &controls() const { return m_ui; }
    const Ui::frm_RightClick &rightClickMenus() const { return m_rightClick; }
    Dialogs &dialogs() const { return *m_dialogs; }
    ProgramState &state() { return m_state; }
    // The journal of the changes to the user's files, which Edit > Undo and File > History act on.
    JournalService &history() const { return *m_history; }
    // The aircraft of the current folder and the open row.
    OpenAircraft &openAircraft() { return m_openAircraft; }
    // The profile file of the current folder's aircraft.cfg; its path names the current file.
    clsIniFile &AircraftIni() { return m_openAircraft.AircraftIni; }

    void PaintStatusPanel(int panel, const QString &text, PanelColour colour);

    // Empties every editor field before a folder load; does nothing while LoadGuard is on.
    void ResetValues();

    // Whether the window currently has the sizing frame (toggled, never set, as the style bits are).
    bool windowResizable() const { return m_resizableStyle; }

public slots:
    void Dir1_Change();
    void Drive1_Change();
    void cmd_DirUp_Click();
    void opt_FS9_Click();
    void opt_FSX_Click();
    void combo_SimFolder_Click(int index);
    void ListView1_Click();
    void ListView1_MouseDown(const QPoint &position);
    void associationCombo_Change();
    void ListView1_DblClick();
    void lst_Airfile_Click();
    void RunChange() { Dir1_Change(); }
    void mnuCFG_Click();
    void mnuResizable_Click();
    void mnu_Manual_Click();
    void Corvane_Click();
    void mnuQuit_Click();
    void StatusBar1_PanelDblClick(int panel);

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void Form_Load();
    void Form_Activate();
    void connectMenus();
    void connectToggle(QAction *item, bool *flag, const char16_t *settingName);
    void applyStartSettings();
    void detectSimulators(const platform::SimulatorRegistry &registry);
    void setUpGrid();
    void hideColumnsFromDataGrid();
    void moveToStartingFolder();
    void attachManual();
    void toggleResizableStyle();
    void openAirlinesFile(bool fsx);
    void OpenURL(const std::u16string &url);
    void createControllers();

    std::unique_ptr<Dialogs> m_ownDialogs;
    Dialogs *m_dialogs = nullptr;
    std::unique_ptr<platform::SettingsStore> m_settings;
    Ui::frm_Main m_ui;
    Ui::frm_RightClick m_rightClick; // the hidden owner of the context menus, frm_RightClick
    ProgramState m_state;
    OpenAircraft m_openAircraft;
    FolderViewController *m_folderView = nullptr;
    EditingController *m_editing = nullptr;
    SupportController *m_support = nullptr;
    JournalService *m_history = nullptr;
    bool m_resizableStyle = false;
    std::int32_t BorderTwipsX = 0;
    std::int32_t BorderTwipsY = 0;
    std::vector<QObject *> m_units; // the controllers of the subsystems, children of the form
};

} // namespace fleetwright
