#include "support/gui/frm_update.h"

#include <string_view>

#include <QAction>
#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

#include "app/frm_main.h"
#include "core/dialogs.h"
#include "core/gui/textconvert.h"
#include "environment/programstate.h"
#include "environment/startupsettings.h"
#include "platform/shell.h"

namespace {

QLabel *addLabel(QWidget *parent, QVBoxLayout *layout, const QString &name, std::u16string_view text = {})
{
    auto *label = new QLabel(toQString(std::u16string(text)), parent);
    label->setObjectName(name);
    label->setWordWrap(true);
    layout->addWidget(label);
    return label;
}

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

vcUPDATECTL::vcUPDATECTL(fleetwright::Dialogs &dialogs, QWidget *parent)
    : QWidget(parent)
    , openUrl(&fleetwright::platform::Shell::open)
    , m_dialogs(dialogs)
{
    setObjectName(QStringLiteral("vcUPDATECTL"));
    auto *layout = new QVBoxLayout(this);
    m_lblSTEP2 = addLabel(this, layout, QStringLiteral("lblSTEP2"), fleetwright::UPDATE_STEP_TEXT);
    m_lblPROGRESS = addLabel(this, layout, QStringLiteral("lblPROGRESS"));
    m_lblVERSION = addLabel(this, layout, QStringLiteral("lblVERSION"));
    m_lblResult = addLabel(this, layout, QStringLiteral("lblResult"));
    m_lblResult->setMinimumHeight(m_lblResult->fontMetrics().height() * 3);
    layout->addStretch();

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    m_cmdNEXT = new QPushButton(QStringLiteral("&Update"), this);
    m_cmdNEXT->setObjectName(QStringLiteral("cmdNEXT"));
    m_cmdNEXT->setVisible(false);
    m_cmdNEXT->setEnabled(false);
    m_cmdCANCEL = new QPushButton(QStringLiteral("&Close"), this);
    m_cmdCANCEL->setObjectName(QStringLiteral("cmdCANCEL"));
    buttons->addWidget(m_cmdNEXT);
    buttons->addWidget(m_cmdCANCEL);
    layout->addLayout(buttons);
    connect(m_cmdNEXT, &QPushButton::clicked, this, &vcUPDATECTL::cmdNEXT_Click);
    connect(m_cmdCANCEL, &QPushButton::clicked, this, &vcUPDATECTL::cmdCANCEL_Click);

    m_network = new QNetworkAccessManager(this);

    LocalFolder = fleetwright::LocalFolder(toU16String(qEnvironmentVariable("TEMP")), programFolder());
    CurrentVersion = fleetwright::ownVersion();
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
        m_dialogs.critical(std::u16string(fleetwright::NO_URL_TEXT), u"Error");
        return;
    }
    BeginDownload();
}

void vcUPDATECTL::BeginDownload()
{
    const QUrl url(m_configFileUrl, QUrl::StrictMode);
    if (const QString problem = addressProblem(url); !problem.isEmpty()) {
        m_dialogs.exclamation(fleetwright::beginDownloadErrorText(toU16String(problem)), u"Warning");
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
    m_lblPROGRESS->setText(toQString(
        fleetwright::progressText(static_cast<std::uint64_t>(bytesRead), static_cast<std::uint64_t>(bytesTotal))));
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
    const fleetwright::UpdateCheckResult result = fleetwright::completeUpdateCheck(
        std::string_view(m_received.constData(), static_cast<std::size_t>(m_received.size())),
        static_cast<std::uint64_t>(m_received.size()), fleetwright::localConfigFile(LocalFolder), CurrentVersion);
    m_received.clear();
    showResult(result);
}

void vcUPDATECTL::showResult(const fleetwright::UpdateCheckResult &result)
{
    using fleetwright::UpdateVerdict;
    if (!result.connected) {
        m_lblPROGRESS->setText(toQString(std::u16string(fleetwright::CONNECTION_ERROR_TEXT)));
        return;
    }
    WebVersion = result.configuration.WebVersion;
    DownloadURL = result.configuration.DownloadURL;
    m_lblVERSION->setText(toQString(result.versionLine));
    if (result.verdict == UpdateVerdict::None)
        return;
    m_lblResult->setText(toQString(fleetwright::verdictText(result.verdict)));
    if (result.verdict == UpdateVerdict::Newer) {
        m_cmdNEXT->setVisible(true);
        m_cmdNEXT->setEnabled(true);
        m_cmdNEXT->setFocus();
    } else {
        m_cmdCANCEL->setFocus();
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

frm_Update::frm_Update(fleetwright::Dialogs &dialogs, QWidget *parent, std::u16string currentVersion)
    : QDialog(parent)
    , m_dialogs(dialogs)
{
    setObjectName(QStringLiteral("frm_Update"));
    setWindowTitle(QStringLiteral("Live Update"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_control = new vcUPDATECTL(dialogs, this);
    m_control->setObjectName(QStringLiteral("vcUPDATECTL1"));
    m_control->CurrentVersion = std::move(currentVersion);
    layout->addWidget(m_control);
    resize(420, 200);
    connect(m_control, &vcUPDATECTL::Done, this, &frm_Update::vcUPDATECTL1_Done);

    const fleetwright::platform::SettingsStore settings;
    m_control->setConfigFileURL(
        toQString(settings.GetSetting(fleetwright::UPDATE_URL_SETTING, fleetwright::DEFAULT_UPDATE_URL)));
    m_control->ReadProperties();
}

void frm_Update::vcUPDATECTL1_Done(const QString &file)
{
    if (!file.isEmpty() && !fleetwright::platform::Shell::open(toU16String(file)))
        m_dialogs.exclamation(u"Error jumping to:" + toU16String(file), u"Warning");
    accept();
}

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
    frm_Update dialog(form.dialogs(), &form);
    dialog.exec();
}

void UpdateController::automaticCheck()
{
    if (!m_form.state().AutoUpdateOn)
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
