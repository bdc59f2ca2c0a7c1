#include "validation/gui/frm_analyzeoptions.h"

#include <QCheckBox>
#include <QPushButton>

#include "environment/programstate.h"
#include "environment/startupsettings.h"
#include "platform/settingsstore.h"
#include "support/gui/tooltips.h"
#include "ui_frm_analyzeoptions.h"

namespace fleetwright {

namespace {

// Options 9 to 11 report on airlines.cfg, which only a found simulator has.
bool isAirlineOption(int option)
{
    return option >= 9 && option <= 11;
}

// An entry's numeric value, as the run reads it: leading digits, anything else 0.
int optionValue(const std::u16string &entry)
{
    int value = 0;
    for (const char16_t c : entry) {
        if (c < u'0' || c > u'9' || value > 9999)
            break;
        value = value * 10 + (c - u'0');
    }
    return value;
}

} // namespace

frm_AnalyzeOptions::frm_AnalyzeOptions(const platform::SettingsStore &settings, ProgramState &state, QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::frm_AnalyzeOptions>())
    , m_settings(settings)
    , m_state(state)
{
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    for (int option = 0; option < OPTION_COUNT; ++option)
        m_check1[option] = findChild<QCheckBox *>(QStringLiteral("Check1_%1").arg(option));

    connect(m_ui->cmd_All, &QPushButton::clicked, this, &frm_AnalyzeOptions::cmd_All_Click);
    connect(m_ui->cmd_None, &QPushButton::clicked, this, &frm_AnalyzeOptions::cmd_None_Click);
    connect(m_ui->cmd_Save, &QPushButton::clicked, this, &frm_AnalyzeOptions::cmd_Save_Click);
    connect(m_ui->cmd_Close, &QPushButton::clicked, this, &frm_AnalyzeOptions::cmd_Close_Click);

    Form_Load();
}

frm_AnalyzeOptions::~frm_AnalyzeOptions() = default;

// Opening the form reads the stored options back into memory, so a run's zeroed airline options come back.
void frm_AnalyzeOptions::Form_Load()
{
    SetUpToolTips(this, m_state.ToolTipsOn);

    m_state.AnalyzeOptionsText = readSetting(m_settings, u"AnalyzeOptions");
    if (!m_state.AnalyzeOptionsText.empty()) {
        m_state.AnalyzeOptionList = splitList(m_state.AnalyzeOptionsText);
        for (int option = 0; option < OPTION_COUNT; ++option) {
            const bool stored = option < static_cast<int>(m_state.AnalyzeOptionList.size());
            setOption(option, stored ? optionValue(m_state.AnalyzeOptionList[option]) : 0);
        }
        return;
    }
    for (int option = 0; option < OPTION_COUNT; ++option)
        setOption(option, 1);
    m_settings.SaveSetting(u"AnalyzeOptions", optionsFromBoxes());
}

void frm_AnalyzeOptions::setOption(int option, int value)
{
    QCheckBox *box = m_check1[option];
    if (isAirlineOption(option) && !m_state.Fs9Found && !m_state.FsxFound) {
        box->setCheckState(Qt::Unchecked);
        box->setEnabled(false);
        return;
    }
    // A stored 2 is a box's third state: shown as such, and saved back as it was.
    if (value == 2)
        box->setTristate(true);
    box->setCheckState(value == 1 ? Qt::Checked : value == 2 ? Qt::PartiallyChecked : Qt::Unchecked);
}

std::u16string frm_AnalyzeOptions::optionsFromBoxes() const
{
    std::u16string text;
    for (const QCheckBox *box : m_check1) {
        if (!text.empty())
            text += LIST_SEPARATOR;
        text += box->checkState() == Qt::Checked ? u"1" : box->checkState() == Qt::PartiallyChecked ? u"2" : u"0";
    }
    return text;
}

// Disabled boxes are checked too: the airline options are stored on even without a simulator.
void frm_AnalyzeOptions::checkAll(bool checked)
{
    for (QCheckBox *box : m_check1)
        box->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
}

void frm_AnalyzeOptions::cmd_All_Click()
{
    checkAll(true);
}

void frm_AnalyzeOptions::cmd_None_Click()
{
    checkAll(false);
}

void frm_AnalyzeOptions::cmd_Save_Click()
{
    m_settings.SaveSetting(u"AnalyzeOptions", optionsFromBoxes());
    m_state.AnalyzeOptionsText = readSetting(m_settings, u"AnalyzeOptions");
    m_state.AnalyzeOptionList = splitList(m_state.AnalyzeOptionsText);
    close();
}

void frm_AnalyzeOptions::cmd_Close_Click()
{
    close();
}

} // namespace fleetwright
