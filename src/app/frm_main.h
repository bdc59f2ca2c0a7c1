#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QMainWindow>

#include "app/mainformlayout.h"
#include "core/clsinifile.h"
#include "environment/simulatorenvironment.h"

namespace fleetwright {
class Dialogs;
namespace platform {
class SettingsStore;
}
} // namespace fleetwright

class QAction;

// The main window: the hub that owns the controls and the form-level state of start-up, and hands the work
// to the engine's units. Form_Load runs in the constructor, as a form's load runs before it is first shown.
class frm_Main : public QMainWindow
{
    Q_OBJECT

public:
    // With no dialogs given, boxes are Qt's own; tests pass a scripted set.
    explicit frm_Main(fleetwright::Dialogs *dialogs = nullptr, QWidget *parent = nullptr);
    ~frm_Main() override;

    const MainFormControls &controls() const { return m_c; }
    fleetwright::Dialogs &dialogs() const { return *m_dialogs; }

    // The profile file of the current folder's aircraft.cfg; its path names the current file.
    fleetwright::clsIniFile &AircraftIni() { return m_aircraftIni; }

    // Form-level state that start-up sets and the other parts of the program read.
    std::u16string RegistryPrefix;
    std::u16string Fs9AircraftRoot;
    std::u16string FsxSimObjectsRoot;
    std::u16string FsxCfgPath;
    std::vector<std::u16string> SimFolderPaths;
    bool AutoBackupOn = true;
    bool ConfirmUpdates = true;
    bool LoadGuard = false;
    bool EventsEnabled = false;
    char16_t DecimalSeparator = u'.';
    std::int32_t BorderTwipsX = 0;
    std::int32_t BorderTwipsY = 0;
    std::u16string ManualFilePath;
    std::u16string PdfViewerPath;

    void PaintStatusPanel(int panel, const QString &text, fleetwright::PanelColour colour);

    // State of the open row and the folder load.
    std::vector<std::u16string> Descriptions;
    std::u16string AirFileName;
    std::int16_t AirTypeShown = 0;
    std::u16string ModelFilePath;
    std::u16string RadiusOnLoad;
    std::u16string DescriptionOnLoad;
    std::u16string ExitNote0;
    std::u16string ExitNote1;
    std::u16string WingSpanSection;
    int EffectIndex = -1;

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
    void detectSimulators(const fleetwright::platform::SimulatorRegistry &registry);
    void setUpGrid();
    void hideColumnsFromDataGrid();
    void moveToStartingFolder();
    void attachManual();
    void toggleResizableStyle();
    void openAirlinesFile(bool fsx);
    void OpenURL(const std::u16string &url);
    void connectFolderView();
    void runEditing(const char16_t *procedure, const std::function<bool()> &operation);
    void quickNavigate(const std::u16string &root, const char16_t *missingText);
    void moveBrowser(const std::u16string &folder);
    void ReadAirFile();
    void airTypeOption_Click(int type);
    void showCurrentFields(const std::u16string &section);

    std::unique_ptr<fleetwright::Dialogs> m_ownDialogs;
    fleetwright::Dialogs *m_dialogs = nullptr;
    std::unique_ptr<fleetwright::platform::SettingsStore> m_settings;
    MainFormControls m_c;
    fleetwright::clsIniFile m_aircraftIni;
    bool m_resizableStyle = false;
    std::vector<QObject *> m_units; // the controllers of the subsystems, children of the form
};
