#pragma once

#include <array>
#include <memory>
#include <string>

#include <QDialog>

class QCheckBox;

namespace Ui {
class frm_AnalyzeOptions;
}

namespace fleetwright {

struct ProgramState;

namespace platform {
class SettingsStore;
}

// Which lines the validation report holds: one box per option, stored as "AnalyzeOptions". Only "Save &
// Close" changes anything; the options then hold for the next run, in the settings and in state.
class frm_AnalyzeOptions : public QDialog
{
    Q_OBJECT

public:
    static constexpr int OPTION_COUNT = 23;

    frm_AnalyzeOptions(const platform::SettingsStore &settings, ProgramState &state, QWidget *parent = nullptr);
    ~frm_AnalyzeOptions() override;

    // Check1(i) is the box of option i, objectName "Check1_<i>".
    QCheckBox *Check1(int option) const { return m_check1.at(option); }

public slots:
    void cmd_All_Click();
    void cmd_None_Click();
    void cmd_Save_Click();
    void cmd_Close_Click();

private:
    void Form_Load();
    void setOption(int option, int value);
    void checkAll(bool checked);
    std::u16string optionsFromBoxes() const;

    std::unique_ptr<Ui::frm_AnalyzeOptions> m_ui;
    const platform::SettingsStore &m_settings;
    ProgramState &m_state;
    std::array<QCheckBox *, OPTION_COUNT> m_check1 {};
};

} // namespace fleetwright
