#include "support/gui/frm_update.h"

#include <QAction>
#include <QDate>
#include <QLayout>

#include "app/frm_main.h"
#include "core/dialogs.h"
#include "core/gui/textconvert.h"
#include "environment/startupsettings.h"
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

std::function<void(frm_Main &)> UpdateController::showUpdateForm = &UpdateController::showModally;

UpdateController::UpdateController(frm_Main &form)
    : QObject(&form)
    , m_form(form)
{
    setObjectName(QStringLiteral("UpdateController"));
    connect(form.controls().mnu_AppUpdate, &QAction::triggered, this, &UpdateController::mnu_AppUpdate_Click);
}

void UpdateController::showModally(frm_Main &form)
{
    fleetwright::frm_Update dialog(form.dialogs(), &form);
    dialog.exec();
}

void UpdateController::automaticCheck()
{
    if (!m_form.AutoUpdateOn)
        return;
    const QDate today = QDate::currentDate();
    const int week =
        fleetwright::weekOfYear(today.year(), static_cast<unsigned>(today.month()), static_cast<unsigned>(today.day()));
    if (!fleetwright::automaticCheckDue(fleetwright::readSetting(m_settings, u"LastCheck"), week))
        return;
    // Stored before the dialog opens: the activation that follows its closing finds the week done.
    m_settings.SaveSetting(u"LastCheck", toU16String(QString::number(week)));
    if (showUpdateForm)
        showUpdateForm(m_form);
}

void UpdateController::mnu_AppUpdate_Click()
{
    if (showUpdateForm)
        showUpdateForm(m_form);
}
