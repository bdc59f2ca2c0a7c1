#pragma once

#include <array>

#include <QDialog>

class QCheckBox;

namespace fleetwright::platform {
class SettingsStore;
}

// Which lines the validation report holds: one box per option, stored as "AnalyzeOptions". Only "Save &
// Close" changes anything; the options then hold for the next run.
class frm_AnalyzeOptions : public QDialog
{
    Q_OBJECT

public:
    static constexpr int OPTION_COUNT = 23;

    explicit frm_AnalyzeOptions(const fleetwright::platform::SettingsStore &settings, QWidget *parent = nullptr);

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

    const fleetwright::platform::SettingsStore &m_settings;
    std::array<QCheckBox *, OPTION_COUNT> m_check1 {};
};
