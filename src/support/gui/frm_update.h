#pragma once

#include <functional>
#include <string>

#include <QByteArray>
#include <QDialog>
#include <QObject>
#include <QString>
#include <QWidget>

#include "platform/settingsstore.h"
#include "support/liveupdate.h"

class QLabel;
class QNetworkAccessManager;
class QNetworkReply;
class QPushButton;
class frm_Main;

namespace fleetwright {
class Dialogs;
}

// The update check as a control: it fetches the version file named by ConfigFileURL, compares its version
// with CurrentVersion and shows the verdict. Its host closes when the control reports Done.
class vcUPDATECTL : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString ConfigFileURL READ ConfigFileURL WRITE setConfigFileURL)

public:
    // The version file has three short lines. An answer longer than this is cut here and the transfer
    // dropped: its first lines are read as from any other file, and a server that sends without end cannot
    // fill the memory.
    static constexpr qint64 MAX_CONFIG_BYTES = 64 * 1024;
    // A server that accepts the connection and then sends nothing ends the transfer after this long.
    static constexpr int TRANSFER_TIMEOUT_MS = 30000;

    explicit vcUPDATECTL(fleetwright::Dialogs &dialogs, QWidget *parent = nullptr);
    ~vcUPDATECTL() override;

    QString ConfigFileURL() const { return m_configFileUrl; }
    void setConfigFileURL(const QString &url) { m_configFileUrl = url; }

    // What the control does once its properties are known: the download starts, or a box says that no
    // address was given.
    void ReadProperties();

    std::u16string LocalFolder;
    std::u16string CurrentVersion;
    std::u16string WebVersion;
    std::u16string DownloadURL;

    // How cmdNEXT opens DownloadURL: the desktop's browser. Tests put their own in.
    std::function<bool(const std::u16string &)> openUrl;

signals:
    // The user is done; file is a file to open, or empty (as it always is here).
    void Done(const QString &file);

public slots:
    void cmdNEXT_Click();
    void cmdCANCEL_Click();

private slots:
    void AsyncReadProgress(qint64 bytesRead, qint64 bytesTotal);
    void AsyncReadComplete();

private:
    void BeginDownload();
    void takeReceivedBytes();
    void showResult(const fleetwright::UpdateCheckResult &result);

    fleetwright::Dialogs &m_dialogs;
    QString m_configFileUrl;
    QNetworkAccessManager *m_network = nullptr;
    QNetworkReply *m_reply = nullptr;
    QByteArray m_received;
    bool m_cut = false;

    QLabel *m_lblSTEP2 = nullptr;
    QLabel *m_lblPROGRESS = nullptr;
    QLabel *m_lblVERSION = nullptr;
    QLabel *m_lblResult = nullptr;
    QPushButton *m_cmdNEXT = nullptr;
    QPushButton *m_cmdCANCEL = nullptr;
};

// The live update dialog: hosts vcUPDATECTL1, whose address comes from the setting "UpdateURL"
// (DEFAULT_UPDATE_URL when there is none), and starts the check as it opens.
class frm_Update : public QDialog
{
    Q_OBJECT

public:
    explicit frm_Update(fleetwright::Dialogs &dialogs, QWidget *parent = nullptr,
                        std::u16string currentVersion = fleetwright::ownVersion());

    vcUPDATECTL *vcUPDATECTL1() const { return m_control; }

private slots:
    void vcUPDATECTL1_Done(const QString &file);

private:
    fleetwright::Dialogs &m_dialogs;
    vcUPDATECTL *m_control = nullptr;
};

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
