#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QByteArray>
#include <QString>
#include <QWidget>

#include "support/liveupdate.h"

class QNetworkAccessManager;
class QNetworkReply;

namespace Ui {
class vcUPDATECTL;
}

namespace fleetwright {

class Dialogs;

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

    explicit vcUPDATECTL(Dialogs &dialogs, QWidget *parent = nullptr);
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
    void showResult(const UpdateCheckResult &result);

    std::unique_ptr<Ui::vcUPDATECTL> m_ui;
    Dialogs &m_dialogs;
    QString m_configFileUrl;
    QNetworkAccessManager *m_network = nullptr;
    QNetworkReply *m_reply = nullptr;
    QByteArray m_received;
    bool m_cut = false;
};

} // namespace fleetwright
