#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QDialog>
#include <QObject>
#include <QString>

#include "platform/settingsstore.h"
#include "support/gui/vcupdatectl.h"
#include "support/liveupdate.h"

class frm_Main;

namespace Ui {
class frm_Update;
}

namespace fleetwright {

class Dialogs;

// The live update dialog: hosts vcUPDATECTL1, whose address comes from the setting "UpdateURL"
// (DEFAULT_UPDATE_URL when there is none), and starts the check as it opens.
class frm_Update : public QDialog
{
    Q_OBJECT

public:
    explicit frm_Update(Dialogs &dialogs, QWidget *parent = nullptr, std::u16string currentVersion = ownVersion());
    ~frm_Update() override;

    vcUPDATECTL *vcUPDATECTL1() const { return m_control; }

private slots:
    void vcUPDATECTL1_Done(const QString &file);

private:
    std::unique_ptr<Ui::frm_Update> m_ui;
    Dialogs &m_dialogs;
    vcUPDATECTL *m_control = nullptr;
};

} // namespace fleetwright

// The main form's update menu and the weekly check by itself.
class UpdateController : public QObject
{
    Q_OBJECT

public:
    explicit UpdateController(frm_Main &form);

    // How frm_Update is shown: modally over the main form. Tests put their own in, so that activating the
    // main window never opens a dialog or reaches the network unless a test means it to.
    static std::function<void(frm_Main &)> showUpdateForm;
    static void showModally(frm_Main &form);

    // The part of Form_Activate after "AutoUpdate" is read: with the check on and "LastCheck" other than the
    // current week, the week is stored and frm_Update shown. Throws RuntimeError 13 for a "LastCheck" that
    // is no number.
    void automaticCheck();

public slots:
    void mnu_AppUpdate_Click();

private:
    frm_Main &m_form;
    fleetwright::platform::SettingsStore m_settings;
};
