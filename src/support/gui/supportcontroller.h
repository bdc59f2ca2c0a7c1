#pragma once

#include <functional>

#include <QObject>

#include "support/gui/formresizer.h"

class QAction;
class QEvent;
class QWidget;

namespace fleetwright {

class Dialogs;
struct ProgramState;
namespace platform {
class SettingsStore;
}

// What of the main window the support controller works with; the actions are named as the menu items are.
struct SupportControls
{
    QWidget *window = nullptr; // parent of the about box and the update dialog, and the form the resizer scales
    QAction *mnu_AppUpdate = nullptr;
    QAction *mnuAboutProg = nullptr;
    QAction *mnuResizable = nullptr;
};

// The Help menu's about box and live update, the weekly update check, and the scaling of the window's controls
// and fonts while "Program Resizable" (ProgramState::ResizableOn) is on. Each resize of the window runs the
// resizer then; switching the option on runs it once as well, so a form not registered yet takes the size it has
// then as its 100 percent, not the size of the first step the user drags it to.
//
// A child of the window; the services must outlive it.
class SupportController : public QObject
{
    Q_OBJECT

public:
    SupportController(const SupportControls &controls, Dialogs &dialogs, ProgramState &state,
                      const platform::SettingsStore &settings);

    // How frm_Update is shown: modally over the window. Tests put their own in, so that activating the main
    // window never opens a dialog or reaches the network unless a test means it to.
    static std::function<void(QWidget *window, Dialogs &dialogs)> showUpdateForm;
    static void showModally(QWidget *window, Dialogs &dialogs);

    // The part of the window's activation after "AutoUpdate" is read: with the check on
    // (ProgramState::AutoUpdateOn) and "LastCheck" other than the current week, the week is stored and
    // frm_Update shown. Throws RuntimeError 13 for a "LastCheck" that is no number.
    void automaticCheck();

public slots:
    void mnu_AppUpdate_Click();
    void mnuAboutProg_Click();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    const SupportControls m_controls;
    Dialogs &m_dialogs;
    ProgramState &m_state;
    const platform::SettingsStore &m_settings;
    FormResizer m_resizer;
};

} // namespace fleetwright
