#include "support/gui/supportcontroller.h"

#include <QAction>
#include <QDate>
#include <QEvent>
#include <QWidget>

#include "core/gui/textconvert.h"
#include "environment/programstate.h"
#include "environment/startupsettings.h"
#include "platform/settingsstore.h"
#include "support/gui/frm_about.h"
#include "support/gui/frm_update.h"
#include "support/liveupdate.h"

namespace fleetwright {

std::function<void(QWidget *, Dialogs &)> SupportController::showUpdateForm = &SupportController::showModally;

SupportController::SupportController(const SupportControls &controls, Dialogs &dialogs, ProgramState &state,
                                     const platform::SettingsStore &settings)
    : QObject(controls.window)
    , m_controls(controls)
    , m_dialogs(dialogs)
    , m_state(state)
    , m_settings(settings)
{
    setObjectName(QStringLiteral("SupportController"));
    connect(controls.mnu_AppUpdate, &QAction::triggered, this, &SupportController::mnu_AppUpdate_Click);
    connect(controls.mnuAboutProg, &QAction::triggered, this, &SupportController::mnuAboutProg_Click);
    controls.window->installEventFilter(this);
    connect(controls.mnuResizable, &QAction::triggered, this, [this] {
        if (m_state.ResizableOn)
            m_resizer.ResizeForm(m_controls.window);
    });
}

void SupportController::showModally(QWidget *window, Dialogs &dialogs)
{
    frm_Update dialog(dialogs, window);
    dialog.exec();
}

void SupportController::automaticCheck()
{
    if (!m_state.AutoUpdateOn)
        return;
    const QDate today = QDate::currentDate();
    const int week = weekOfYear(today.year(), static_cast<unsigned>(today.month()), static_cast<unsigned>(today.day()));
    if (!automaticCheckDue(readSetting(m_settings, u"LastCheck"), week))
        return;
    // Stored before the dialog opens: the activation that follows its closing finds the week done.
    m_settings.SaveSetting(u"LastCheck", toU16String(QString::number(week)));
    if (showUpdateForm)
        showUpdateForm(m_controls.window, m_dialogs);
}

void SupportController::mnu_AppUpdate_Click()
{
    if (showUpdateForm)
        showUpdateForm(m_controls.window, m_dialogs);
}

void SupportController::mnuAboutProg_Click()
{
    frm_About about(m_controls.window);
    about.exec();
}

bool SupportController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_controls.window && event->type() == QEvent::Resize && m_state.ResizableOn)
        m_resizer.ResizeForm(m_controls.window);
    return QObject::eventFilter(watched, event);
}

} // namespace fleetwright
