// One request to the update server and its outcomes: an error, a timeout, "up to date", or packages for the
// update-available dialog. Called by the schedule; leaves the packages found, and a word in the settings dialog if
// open.
#include "SoftwareUpdateClient_p.h"

#include "CatalogueReader.h"
#include "HttpLogin.h"
#include "LogQt.h"
#include "Offer.h"
#include "PolicyTexts.h"
#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"
#include "StringUtils.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QLocale>
#include <QNetworkReply>

#include <utility>

namespace qv {

namespace {

constexpr int msRequestTimeout = 15000;
constexpr qint64 maxBufferedBytes = 17 << 20; // more than any catalogue that would be read

// Qt's own words, from Qt's own catalogue.
const char *const unknownProtocol = "Protocol \"%1\" is unknown";
const char *const whoAreYou = "Host requires authentication";
const char *const proxyAsks = "Proxy requires authentication";

bool isRedirect(int status)
{
    return status == 302 || status == 301 || status == 303 || status == 307;
}

bool isMissing(const QNetworkReply &reply)
{
    return reply.error() == QNetworkReply::ContentNotFoundError || reply.error() == QNetworkReply::ContentGoneError;
}

bool isWebAddress(const QUrl &url)
{
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

QString errorTextOf(const QNetworkReply &reply)
{
    const int refused = refusedChallenge(reply);
    return refused == 0 ? reply.errorString()
                        : QCoreApplication::translate("QHttp", refused == 401 ? whoAreYou : proxyAsks);
}

} // namespace

QString SoftwareUpdateClientPrivate::lastCheckText(const QDateTime &lastCheck)
{
    return lastCheck.isNull() ? QString() : QLocale::system().toString(lastCheck, QLocale::LongFormat);
}

void SoftwareUpdateClientPrivate::performUpdateCheck(const QUrl &url)
{
    announceCheck(url);
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/xml"));
    request.setRawHeader("Accept-Encoding", "identity"); // what unfolds on arrival could unfold without end
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false); // it knows no limit of the buffer
    if (!networkManager) {
        networkManager.reset(new QNetworkAccessManager);
        QObject::connect(networkManager.data(), &QNetworkAccessManager::finished, q,
                         &SoftwareUpdateClient::evaluateServerResponse);
    }
    unsent.append(request);
    if (HttpThreads::instance().areFree())
        sendRequests();

    if (!requestTimer) {
        requestTimer = new QTimer(q);
        requestTimer->setTimerType(Qt::PreciseTimer); // a coarse one fires up to 0.75 s too early
        QObject::connect(requestTimer, &QTimer::timeout, q, &SoftwareUpdateClient::requestTimeout);
        QObject::connect(&HttpThreads::instance(), &HttpThreads::freed, q, [this] { sendRequests(); });
    }
    requestTimer->setSingleShot(true);
    requestTimer->start(HttpThreads::instance().areStuck() ? 0 : msRequestTimeout);
}

void SoftwareUpdateClientPrivate::sendRequests()
{
    for (const QNetworkRequest &request : std::exchange(unsent, {})) {
        // An answer that is longer stands still and ends in the timeout.
        getWithLogin(*networkManager, request, q->networkProxy())->setReadBufferSize(maxBufferedBytes);
    }
}

void SoftwareUpdateClientPrivate::announceCheck(const QUrl &url)
{
    if (settingsDialog) {
        settingsDialog->enableProgress();
        settingsDialog->setNotificationText(QString());
        SoftwareUpdateDialogSettings shown = settingsDialog->getDialogSettings();
        shown.lastCheck = lastCheckText(currentSettings().lastCheck);
        settingsDialog->setDialogSettings(shown);
    }
    LogQt::write(Log::Progress,
                 QStringLiteral("SoftwareUpdateClient::performUpdateCheck() -> ") + StringUtils::withoutPassword(url));
}

void SoftwareUpdateClient::evaluateServerResponse(QNetworkReply *reply)
{
    if (d->requestTimer)
        d->requestTimer->stop();
    deleteNetworkmanager();
    if (!reply)
        return;
    if (isRedirect(reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt())) {
        const QUrl target = reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
        if (!target.isEmpty()) {
            d->followRedirect(target);
            return;
        }
        LogQt::write(Log::Progress,
                     QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> could not obtain "
                                    "redirect url from server response"));
    }
    if (d->settingsDialog)
        d->settingsDialog->disbaleProgress();
    const bool isSignatureMissing = !d->unsealed.isEmpty() && isMissing(*reply);
    if (reply->error() != QNetworkReply::NoError && !isSignatureMissing)
        d->failCheck(errorTextOf(*reply));
    else if (d->trust.isSet())
        d->takeSealed(reply);
    else
        d->takeCatalogue(reply);
}

/// First comes the catalogue, and then, from where that came from, its signature.
void SoftwareUpdateClientPrivate::takeSealed(QNetworkReply *reply)
{
    if (unsealed.isEmpty()) {
        unsealed = reply->readAll();
        if (!unsealed.isEmpty()) {
            performUpdateCheck(signatureUrl(urlWithLogin(*reply)));
            return;
        }
    }
    QByteArray catalogue = std::exchange(unsealed, QByteArray());
    const Seal seal = trust.examine(catalogue, isMissing(*reply) ? QByteArray() : reply->readAll());
    if (seal.verdict != Seal::Accepted) {
        packages.clear();
        showNotification(refusalText(seal));
        offerNothing();
        return;
    }
    storeSeals();
    QBuffer device(&catalogue);
    device.open(QIODevice::ReadOnly);
    takeCatalogue(&device);
}

void SoftwareUpdateClientPrivate::takeCatalogue(QIODevice *catalogue)
{
    if (parseServerResponse(catalogue) == 1)
        return;
    if (packages.isEmpty()) {
        LogQt::write(Log::Progress,
                     QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> product is up-to-date "));
        productUpToDate();
    } else {
        LogQt::write(Log::Progress,
                     QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> update available"));
        q->updateAvailable();
    }
}

/// Deliberate: the target as it stands, but for credentials, a relative one is not resolved. But no server leads to a
/// file or a device: an address that is none of the web's ends as Qt ends those it does not know.
void SoftwareUpdateClientPrivate::followRedirect(const QUrl &target)
{
    LogQt::write(Log::Progress,
                 QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> redirect url ")
                     + StringUtils::withoutPassword(target));
    if (isWebAddress(target)) {
        performUpdateCheck(target.userInfo().isEmpty() ? target : target.adjusted(QUrl::RemoveUserInfo));
        return;
    }
    announceCheck(target);
    if (settingsDialog)
        settingsDialog->disbaleProgress();
    failCheck(QCoreApplication::translate("QNetworkReply", unknownProtocol).arg(target.scheme()));
}

void SoftwareUpdateClientPrivate::failCheck(const QString &errorText)
{
    q->requestError(errorText);
    LogQt::write(Log::Progress,
                 QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> reply->errorString(): ")
                     + errorText);
}

int SoftwareUpdateClientPrivate::parseServerResponse(QIODevice *catalogue)
{
    packages = readCatalogue(catalogue);
    if (trust.isSet())
        Trust::keepVouched(packages);
    if (packages.isEmpty()) {
        LogQt::write(Log::Error, QStringLiteral("SoftwareUpdateClient::parseServerResponse() -> no update available"));
        showNotification(QCoreApplication::translate("SoftwareUpdateClient", "No update available!"));
        offerNothing();
        return 1;
    }
    const SoftwareUpdateSettings settings = currentSettings();
    const bool beta = settingsDialog ? settingsDialog->getDialogSettings().checkForBeta : settings.checkForBeta;
    packages = offeredPackages(std::move(packages), QCoreApplication::applicationName(), settings, beta);
    if (packages.isEmpty())
        offerNothing();
    return 0;
}

/// A table that is still open shows packages that are no longer there.
void SoftwareUpdateClientPrivate::offerNothing()
{
    if (availableDialog)
        q->manageUpdateAvailableDialog(availableDialog->getCurrentSelectedItems());
}

void SoftwareUpdateClient::requestError(const QString &errorText)
{
    d->showNotification(errorText);
    deleteNetworkmanager();
    // Deliberate: the words of the timeout.
    LogQt::write(Log::Error,
                 QStringLiteral("SoftwareUpdateClient::requestTimeout() -> Timeout occurred requesting "
                                "update server!"));
}

void SoftwareUpdateClient::requestTimeout()
{
    if (d->settingsDialog)
        d->settingsDialog->disbaleProgress();
    d->showNotification(
        QCoreApplication::translate("SoftwareUpdateClient", "Timeout error! Update server unreachable!"));
    deleteNetworkmanager();
    LogQt::write(Log::Error,
                 QStringLiteral("SoftwareUpdateClient::requestTimeout() -> Timeout occurred requesting "
                                "update server!"));
}

void SoftwareUpdateClientPrivate::productUpToDate()
{
    showNotification(
        QCoreApplication::translate("SoftwareUpdateClient", "Congratulations! Your product is up-to-date!"));
    q->deleteNetworkmanager();
    LogQt::write(Log::Progress, QStringLiteral("SoftwareUpdateClient::productUpToDate() -> product is up to date!"));
}

void SoftwareUpdateClientPrivate::showNotification(const QString &text)
{
    if (settingsDialog)
        settingsDialog->setNotificationText(text);
}

void SoftwareUpdateClient::deleteNetworkmanager()
{
    if (!d->networkManager)
        return;
    d->unsent.clear();
    d->networkManager.reset();
}

} // namespace qv
