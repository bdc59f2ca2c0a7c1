#include "support/gui/frm_update.h"

#include <QLayout>

#include "core/dialogs.h"
#include "core/gui/textconvert.h"
#include "platform/settingsstore.h"
#include "platform/shell.h"
#include "ui_frm_update.h"

namespace fleetwright {

frm_Update::frm_Update(Dialogs &dialogs, QWidget *parent, std::u16string currentVersion)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::frm_Update>())
    , m_dialogs(dialogs)
{
    m_ui->setupUi(this);
    // The control needs the program's dialogs, which no form file can hand it.
    m_control = new vcUPDATECTL(dialogs, this);
    m_control->setObjectName(QStringLiteral("vcUPDATECTL1"));
    m_control->CurrentVersion = std::move(currentVersion);
    m_ui->controlLayout->addWidget(m_control);
    connect(m_control, &vcUPDATECTL::Done, this, &frm_Update::vcUPDATECTL1_Done);

    const platform::SettingsStore settings;
    m_control->setConfigFileURL(toQString(settings.GetSetting(UPDATE_URL_SETTING, DEFAULT_UPDATE_URL)));
    m_control->ReadProperties();
}

frm_Update::~frm_Update() = default;

void frm_Update::vcUPDATECTL1_Done(const QString &file)
{
    if (!file.isEmpty() && !platform::Shell::open(toU16String(file)))
        m_dialogs.exclamation(u"Error jumping to:" + toU16String(file), u"Warning");
    accept();
}

} // namespace fleetwright
