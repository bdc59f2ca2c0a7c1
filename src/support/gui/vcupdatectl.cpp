#include "support/gui/vcupdatectl.h"

#include <string_view>

#include <QCoreApplication>
#include <QDir>
#include <QLabel>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPushButton>
#include <QUrl>

#include "core/dialogs.h"
#include "core/gui/textconvert.h"
#include "platform/shell.h"
#include "ui_vcupdatectl.h"

namespace fleetwright {

namespace {

std::u16string programFolder()
{
    return toU16String(QDir::toNativeSeparators(QCoreApplication::applicationDirPath()));
}

// Why an address cannot be fetched at all; empty when it can.
QString addressProblem(const QUrl &url)
{
    if (!url.isValid())
        return url.errorString();
    if (url.scheme() != QStringLiteral("http") && url.scheme() != QStringLiteral("https"))
        return QStringLiteral("Protocol \"%1\" is unknown").arg(url.scheme());
    if (url.host().isEmpty())
        return QStringLiteral("The address names no host");
    return {};
}

} // namespace

vcUPDATECTL::vcUPDATECTL(Dialogs &dialogs, QWidget *parent)
    : QWidget(parent)
    , openUrl(&platform::Shell::open)
    , m_ui(std::make_unique<Ui::vcUPDATECTL>())
    , m_dialogs(dialogs)
{
    m_ui->setupUi(this);
    m_ui->lblSTEP2->setText(toQString(std::u16string(UPDATE_STEP_TEXT)));
    // Room for a verdict of three lines in the font the platform gives.
    m_ui->lblResult->setMinimumHeight(m_ui->lblResult->fontMetrics().height() * 3);
    connect(m_ui->cmdNEXT, &QPushButton::clicked, this, &vcUPDATECTL::cmdNEXT_Click);
    connect(m_ui->cmdCANCEL, &QPushButton::clicked, this, &vcUPDATECTL::cmdCANCEL_Click);

    m_network = new QNetworkAccessManager(this);

    LocalFolder = fleetwright::LocalFolder(toU16String(qEnvironmentVariable("TEMP")), programFolder());
    CurrentVersion = ownVersion();
}

vcUPDATECTL::~vcUPDATECTL()
{
    // A transfer still running when the dialog closes reports nothing to a control that is going.
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
    }
}

void vcUPDATECTL::ReadProperties()
{
    if (m_configFileUrl.isEmpty()) {
        m_dialogs.critical(std::u16string(NO_URL_TEXT), u"Error");
        return;
    }
    BeginDownload();
}

void vcUPDATECTL::BeginDownload()
{
    const QUrl url(m_configFileUrl, QUrl::StrictMode);
    if (const QString problem = addressProblem(url); !problem.isEmpty()) {
        m_dialogs.exclamation(beginDownloadErrorText(toU16String(problem)), u"Warning");
        return;
    }
    QNetworkRequest request(url);
    // Past any cache: a copy kept from last week would hide this week's release.
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setTransferTimeout(TRANSFER_TIMEOUT_MS);
    m_received.clear();
    m_cut = false;
    m_reply = m_network->get(request);
    // Qt reads no further ahead of us than this, so an endless answer stays outside the process.
    m_reply->setReadBufferSize(MAX_CONFIG_BYTES);
    connect(m_reply, &QNetworkReply::readyRead, this, &vcUPDATECTL::takeReceivedBytes);
    connect(m_reply, &QNetworkReply::downloadProgress, this, &vcUPDATECTL::AsyncReadProgress);
    connect(m_reply, &QNetworkReply::finished, this, &vcUPDATECTL::AsyncReadComplete);
}

void vcUPDATECTL::takeReceivedBytes()
{
    if (!m_reply || m_cut)
        return;
    const qint64 room = MAX_CONFIG_BYTES - m_received.size();
    if (room > 0)
        m_received += m_reply->read(room);
    if (m_received.size() >= MAX_CONFIG_BYTES && m_reply->bytesAvailable() > 0) {
        m_cut = true;
        if (!m_reply->isFinished())
            m_reply->abort(); // finishes the transfer: AsyncReadComplete takes what was kept
    }
}

void vcUPDATECTL::AsyncReadProgress(qint64 bytesRead, qint64 bytesTotal)
{
    // Only this control's own transfer, and only with a known total.
    if (sender() != m_reply || bytesTotal < 0)
        return;
    m_ui->lblPROGRESS->setText(
        toQString(progressText(static_cast<std::uint64_t>(bytesRead), static_cast<std::uint64_t>(bytesTotal))));
}

void vcUPDATECTL::AsyncReadComplete()
{
    QNetworkReply *reply = m_reply;
    if (!reply || sender() != reply)
        return;
    takeReceivedBytes();
    m_reply = nullptr;
    reply->deleteLater();

    // What arrived is the answer, an error page of the server too; a transfer that ended with nothing at all
    // (refused, no such host, timed out) is the connection failure.
    const UpdateCheckResult result = completeUpdateCheck(
        std::string_view(m_received.constData(), static_cast<std::size_t>(m_received.size())),
        static_cast<std::uint64_t>(m_received.size()), localConfigFile(LocalFolder), CurrentVersion);
    m_received.clear();
    showResult(result);
}

void vcUPDATECTL::showResult(const UpdateCheckResult &result)
{
    if (!result.connected) {
        m_ui->lblPROGRESS->setText(toQString(std::u16string(CONNECTION_ERROR_TEXT)));
        return;
    }
    WebVersion = result.configuration.WebVersion;
    DownloadURL = result.configuration.DownloadURL;
    m_ui->lblVERSION->setText(toQString(result.versionLine));
    if (result.verdict == UpdateVerdict::None)
        return;
    m_ui->lblResult->setText(toQString(verdictText(result.verdict)));
    if (result.verdict == UpdateVerdict::Newer) {
        m_ui->cmdNEXT->setVisible(true);
        m_ui->cmdNEXT->setEnabled(true);
        m_ui->cmdNEXT->setFocus();
    } else {
        m_ui->cmdCANCEL->setFocus();
    }
}

void vcUPDATECTL::cmdNEXT_Click()
{
    if (openUrl)
        openUrl(DownloadURL);
    emit Done(QString());
}

void vcUPDATECTL::cmdCANCEL_Click()
{
    emit Done(QString());
}

} // namespace fleetwright
