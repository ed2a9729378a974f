// One request to the update server and its outcomes: an error, a timeout, "up to date", or packages for the
// update-available dialog. Called by the schedule; leaves the packages found, and a word in the settings dialog if
// open.
#include "SoftwareUpdateClient.h"

#include "DownloadManager.h"
#include "LogQt.h"
#include "PackageIndex.h"
#include "QtCompat.h"
#include "SoftwareUpdateDialog.h"

#include <QCoreApplication>
#include <QLocale>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

namespace qv {

namespace {

constexpr int msRequestTimeout = 15000;
constexpr qint64 maxBufferedBytes = 17 << 20; // more than any catalogue that would be read

bool isRedirect(int status)
{
    return status == 302 || status == 301 || status == 303 || status == 307;
}

} // namespace

QString SoftwareUpdateClient::lastCheckText(const QDateTime &lastCheck)
{
    return lastCheck.isNull() ? QString() : QLocale::system().toString(lastCheck, QLocale::LongFormat);
}

QString SoftwareUpdateClient::transformReleaseStatus(bool beta)
{
    return beta ? QString() : QStringLiteral("STABLE");
}

PackageInfoList SoftwareUpdateClient::offeredPackages(PackageInfoList catalogue, const QString &applicationName,
                                                      const SoftwareUpdateSettings &settings, bool beta)
{
    const auto filter = [status = transformReleaseStatus(beta)](const QString &name, const VersionNumber &installed,
                                                                const QStringSet &platforms) {
        return PackageInfo(QString(), name, installed.toString(), status, QDateTime(), platforms, QStringSet(),
                           QStringLiteral(""), QStringLiteral(""));
    };

    PackageInfoList cameraPackages;
    const PackageIndex index(catalogue);
    for (const auto &camera : settings.currentCameraVersions)
        cameraPackages += DownloadManager::findPackageCandidates(
            catalogue, index, filter(QString(), camera.second, { camera.first }), cameraKind, QStringList());
    DownloadManager::eliminateDuplicatePackages(cameraPackages);

    // Deliberate: the application's name counts, not the stored product.
    return DownloadManager::findPackageCandidates(
               catalogue, filter(applicationName, settings.versionNumber, toSet(settings.supportedPlatforms)),
               applicationKind, settings.supportedPackageTypes)
        + cameraPackages;
}

void SoftwareUpdateClient::performUpdateCheck(const QUrl &url)
{
    if (settingsDialog) {
        settingsDialog->enableProgress();
        settingsDialog->setNotificationText(QString());
        SoftwareUpdateDialogSettings shown = settingsDialog->getDialogSettings();
        shown.lastCheck = lastCheckText(currentSettings().lastCheck);
        settingsDialog->setDialogSettings(shown);
    }
    LogQt::write(Log::Progress, QStringLiteral("SoftwareUpdateClient::performUpdateCheck() -> ") + url.toString());

    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/xml"));
    request.setRawHeader("Accept-Encoding", "identity"); // what unfolds on arrival could unfold without end
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    if (!networkManager) {
        networkManager.reset(new QNetworkAccessManager);
        connect(networkManager.data(), &QNetworkAccessManager::finished, this,
                &SoftwareUpdateClient::evaluateServerResponse);
    }
    networkManager->setProxy(networkProxy());
    // An answer that is longer stands still and ends in the timeout.
    networkManager->get(request)->setReadBufferSize(maxBufferedBytes);

    if (!requestTimer) {
        requestTimer = new QTimer(this);
        connect(requestTimer, &QTimer::timeout, this, &SoftwareUpdateClient::requestTimeout);
    }
    requestTimer->setSingleShot(true);
    requestTimer->start(msRequestTimeout);
}

void SoftwareUpdateClient::evaluateServerResponse(QNetworkReply *reply)
{
    requestTimer->stop();
    deleteNetworkmanager();
    if (isRedirect(reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt())) {
        const QUrl target = reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
        if (!target.isEmpty()) {
            LogQt::write(Log::Progress,
                         QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> redirect url ")
                             + target.toString());
            // Deliberate: the target as it stands, a relative one is not resolved.
            performUpdateCheck(target);
            return;
        }
        LogQt::write(Log::Progress,
                     QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> could not obtain "
                                    "redirect url from server response"));
    }
    if (settingsDialog)
        settingsDialog->disbaleProgress();
    if (reply->error() != QNetworkReply::NoError) {
        requestError(reply->errorString());
        LogQt::write(Log::Progress,
                     QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> reply->errorString(): ")
                         + reply->errorString());
        return;
    }
    if (parseServerResponse(reply) == 1)
        return;
    if (packages.isEmpty()) {
        LogQt::write(Log::Progress,
                     QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> product is up-to-date "));
        productUpToDate();
    } else {
        LogQt::write(Log::Progress,
                     QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> update available"));
        updateAvailable();
    }
}

int SoftwareUpdateClient::parseServerResponse(QNetworkReply *reply)
{
    packages = DownloadManager::parseXML(reply);
    if (packages.isEmpty()) {
        LogQt::write(Log::Error, QStringLiteral("SoftwareUpdateClient::parseServerResponse() -> no update available"));
        showNotification(QCoreApplication::translate("SoftwareUpdateClient", "No update available!"));
        return 1;
    }
    const SoftwareUpdateSettings settings = currentSettings();
    const bool beta = settingsDialog ? settingsDialog->getDialogSettings().checkForBeta : settings.checkForBeta;
    packages = offeredPackages(std::move(packages), QCoreApplication::applicationName(), settings, beta);
    return 0;
}

void SoftwareUpdateClient::requestError(const QString &errorText)
{
    showNotification(errorText);
    deleteNetworkmanager();
    // Deliberate: the words of the timeout.
    LogQt::write(Log::Error,
                 QStringLiteral("SoftwareUpdateClient::requestTimeout() -> Timeout occurred requesting "
                                "update server!"));
}

void SoftwareUpdateClient::requestTimeout()
{
    if (settingsDialog)
        settingsDialog->disbaleProgress();
    showNotification(QCoreApplication::translate("SoftwareUpdateClient", "Timeout error! Update server unreachable!"));
    deleteNetworkmanager();
    LogQt::write(Log::Error,
                 QStringLiteral("SoftwareUpdateClient::requestTimeout() -> Timeout occurred requesting "
                                "update server!"));
}

void SoftwareUpdateClient::productUpToDate()
{
    showNotification(
        QCoreApplication::translate("SoftwareUpdateClient", "Congratulations! Your product is up-to-date!"));
    deleteNetworkmanager();
    LogQt::write(Log::Progress, QStringLiteral("SoftwareUpdateClient::productUpToDate() -> product is up to date!"));
}

void SoftwareUpdateClient::showNotification(const QString &text)
{
    if (settingsDialog)
        settingsDialog->setNotificationText(text);
}

void SoftwareUpdateClient::deleteNetworkmanager()
{
    if (!networkManager)
        return;
    // It lives until the event loop comes round: what still arrives there is nobody's concern.
    networkManager->disconnect(this);
    networkManager.reset();
}

} // namespace qv
