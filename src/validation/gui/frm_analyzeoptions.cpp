#include "validation/gui/frm_analyzeoptions.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "environment/programstate.h"
#include "environment/startupsettings.h"
#include "platform/settingsstore.h"
#include "support/gui/tooltips.h"

namespace {

struct OptionText
{
    const char16_t *caption;
    const char16_t *tip;
};

// Options 17 to 20 carry the tip of option 16 word for word: that is what users have always seen.
constexpr const char16_t SHARED_TEXTURES_TIP[] =
    u"report shows result for number of textures used in more than one [fltsim.x] section";

constexpr OptionText OPTION_TEXTS[frm_AnalyzeOptions::OPTION_COUNT] = {
    {u"[fltsim.x] section count", u"report shows count of [fltsim.x] sections"},
    {u"[fltsim.x] title unique analyze", u"report shows result for [fltsim.x] unique analysis"},
    {u"[fltsim.x] sections numbering analyze", u"report shows result for [fltsim.x] sequence analysis"},
    {u"Airfiles found in folder count", u"report shows result for number of AIR files in aircraft folder"},
    {u"Airfiles unused in folder count", u"report shows result for number of unused AIR files in aircraft folder"},
    {u"Airfiles missing in folder count", u"report shows result for number of missing AIR files in aircraft folder"},
    {u"Models found in folder count", u"report shows result for number of model files in aircraft folder"},
    {u"Models unused in folder count", u"report shows result for number of unused model files in aircraft folder"},
    {u"Models missing in folder count", u"report shows result for number of missing model files in aircraft folder"},
    {u"atc_airlines found count",
     u"report shows count of [fltsim.x] sections where the ATC_Airline assignments is included in the respective "
     u"airlines.cfg file"},
    {u"atc_airlines  defined in [fltsim.x]", u"report shows count of [fltsim.x] sections without an ATC_Airline "},
    {u"atc_airlines unknown count",
     u"report shows count of [fltsim.x] sections where the ATC_Airline assignments is NOT included in the "
     u"respective airlines.cfg file"},
    {u"Textures found in folder count", u"report shows result for number of texture files in aircraft folder"},
    {u"Texture format analyzis", u"report shows if textures are BMP or DDS"},
    {u"Textures unused in folder count", u"report shows result for number of unused texture files in aircraft folder"},
    {u"Textures missing in folder count",
     u"report shows result for number of missing texture files in aircraft folder"},
    {u"Textures used more than once count", SHARED_TEXTURES_TIP},
    {u"[fltsim.x] title defined analyze", SHARED_TEXTURES_TIP},
    {u"Textures defined in [fltsim.x]", SHARED_TEXTURES_TIP},
    {u"Models defined in [fltsim.x]", SHARED_TEXTURES_TIP},
    {u"Airfiles defined in [fltsim.x]", SHARED_TEXTURES_TIP},
    {u"Effects found", u"report shows missing effect files (*.fx) that are defined in your effects section"},
    {u"Report empty folders", u"report shows empty folders (folders that contain neither files nor sub-folders)"},
};

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

QPushButton *addButton(QBoxLayout *row, const char *name, const char16_t *caption, const char16_t *tip)
{
    auto *button = new QPushButton(QString::fromUtf16(caption));
    button->setObjectName(QString::fromLatin1(name));
    button->setToolTip(QString::fromUtf16(tip));
    row->addWidget(button);
    return button;
}

} // namespace

frm_AnalyzeOptions::frm_AnalyzeOptions(const fleetwright::platform::SettingsStore &settings, QWidget *parent)
    : QDialog(parent)
    , m_settings(settings)
{
    setObjectName(QStringLiteral("frm_AnalyzeOptions"));
    setWindowTitle(QStringLiteral("Analyzis Report Options"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto *layout = new QVBoxLayout(this);
    auto *boxes = new QGridLayout;
    const int rows = (OPTION_COUNT + 1) / 2;
    for (int option = 0; option < OPTION_COUNT; ++option) {
        auto *box = new QCheckBox(QString::fromUtf16(OPTION_TEXTS[option].caption));
        box->setObjectName(QStringLiteral("Check1_%1").arg(option));
        box->setToolTip(QString::fromUtf16(OPTION_TEXTS[option].tip));
        boxes->addWidget(box, option % rows, option / rows);
        m_check1[option] = box;
    }
    layout->addLayout(boxes);
    auto *selection = new QHBoxLayout;
    QPushButton *all = addButton(selection, "cmd_All", u"Select &All", u"Select all options above");
    QPushButton *none = addButton(selection, "cmd_None", u"Select &None", u"De-select all options above");
    layout->addLayout(selection);
    auto *closing = new QHBoxLayout;
    QPushButton *save = addButton(closing, "cmd_Save", u"&Save && Close",
                                  u"Save current selection and close the form. The settings will be remembered "
                                  u"when the program is restarted.");
    QPushButton *cancel = addButton(closing, "cmd_Close", u"&Cancel", u"Close the form without saving any changes.");
    layout->addLayout(closing);

    connect(all, &QPushButton::clicked, this, &frm_AnalyzeOptions::cmd_All_Click);
    connect(none, &QPushButton::clicked, this, &frm_AnalyzeOptions::cmd_None_Click);
    connect(save, &QPushButton::clicked, this, &frm_AnalyzeOptions::cmd_Save_Click);
    connect(cancel, &QPushButton::clicked, this, &frm_AnalyzeOptions::cmd_Close_Click);

    Form_Load();
}

// Opening the form reads the stored options back into memory, so a run's zeroed airline options come back.
void frm_AnalyzeOptions::Form_Load()
{
    SetUpToolTips(this, fleetwright::programState().ToolTipsOn);

    auto &global = fleetwright::programState();
    global.AnalyzeOptionsText = fleetwright::readSetting(m_settings, u"AnalyzeOptions");
    if (!global.AnalyzeOptionsText.empty()) {
        global.AnalyzeOptionList = fleetwright::splitList(global.AnalyzeOptionsText);
        for (int option = 0; option < OPTION_COUNT; ++option) {
            const bool stored = option < static_cast<int>(global.AnalyzeOptionList.size());
            setOption(option, stored ? optionValue(global.AnalyzeOptionList[option]) : 0);
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
    const auto &global = fleetwright::programState();
    if (isAirlineOption(option) && !global.Fs9Found && !global.FsxFound) {
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
            text += fleetwright::LIST_SEPARATOR;
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
    auto &global = fleetwright::programState();
    m_settings.SaveSetting(u"AnalyzeOptions", optionsFromBoxes());
    global.AnalyzeOptionsText = fleetwright::readSetting(m_settings, u"AnalyzeOptions");
    global.AnalyzeOptionList = fleetwright::splitList(global.AnalyzeOptionsText);
    close();
}

void frm_AnalyzeOptions::cmd_Close_Click()
{
    close();
}
