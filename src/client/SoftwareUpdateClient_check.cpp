// One request to the update server and its outcomes: an error, a timeout, "up to date", or packages for the
// update-available dialog. Called by the schedule; leaves the packages found, and a word in the settings dialog if
// open.
#include "SoftwareUpdateClient_p.h"

#include "CatalogueReader.h"
#include "HttpLogin.h"
#include "LogQt.h"
#include "Offer.h"
#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"
#include "StringUtils.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFutureWatcher>
#include <QLocale>
#include <QNetworkReply>
#include <QThreadPool>
#include <QtConcurrentRun>

#include <utility>

namespace qv {

namespace {

constexpr int msRequestTimeout = 15000;
constexpr qint64 maxBufferedBytes = 17 << 20; // more than any catalogue that would be read
constexpr qint64 mostBytesAtOnce = 64 << 10;  // some 2 ms, with the table

// Qt's own words, from Qt's own catalogue.
const char *const unknownProtocol = "Protocol \"%1\" is unknown";
const char *const whoAreYou = "Host requires authentication";
const char *const proxyAsks = "Proxy requires authentication";

FoundOffer findOffer(QByteArray catalogue, bool isVouched, const QString &applicationName,
                     const SoftwareUpdateSettings &settings, bool beta)
{
    QBuffer device(&catalogue);
    device.open(QIODevice::ReadOnly);
    PackageInfoList packages = readCatalogue(&device);
    if (isVouched)
        Trust::keepVouched(packages);
    const bool isCatalogue = !packages.isEmpty();
    return { isCatalogue, offeredPackages(std::move(packages), applicationName, settings, beta) };
}

bool isRedirect(int status)
{
    return status == 302 || status == 301 || status == 303 || status == 307;
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
    noteRequest(url);
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
    request.setAttribute(QNetworkRequest::User, current.id);
    const HeaderLine condition = current.source.condition(url);
    if (!condition.first.isEmpty())
        request.setRawHeader(condition.first, condition.second);
    if (unsealed.isEmpty())
        current.catalogue = url;
    underWay.append(current);
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
    // A signature comes over the connection of its catalogue: where that is encrypted, a second one costs most.
    const bool mayGoOn = d->trust.isSet() && d->underWay.size() == 1;
    if (!mayGoOn)
        deleteNetworkmanager();
    d->resumeCheck(reply ? reply->request().attribute(QNetworkRequest::User).toInt() : 0);
    const QPointer<SoftwareUpdateClient> self(this);
    if (reply)
        d->takeAnswer(reply);
    if (self && d->underWay.isEmpty())
        deleteNetworkmanager();
    if (self)
        d->tellOutcomes();
}

void SoftwareUpdateClientPrivate::takeAnswer(QNetworkReply *reply)
{
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (isRedirect(status)) {
        const QUrl target = reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
        if (!target.isEmpty()) {
            followRedirect(target);
            return;
        }
        LogQt::write(Log::Progress,
                     QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> could not obtain "
                                    "redirect url from server response"));
    }
    if (settingsDialog)
        settingsDialog->disbaleProgress();
    noteAnswer(*reply);
    if (current.source.isConditionRefused(reply->request().url(), status))
        askAnew();
    else if (reply->error() != QNetworkReply::NoError && !isSignatureMissing(*reply))
        failCheck(errorTextOf(*reply), failureOf(*reply));
    else if (isSealAwaited() || current.source.isKeeping())
        takeByPolicy(reply);
    else
        parseServerResponse(reply->read(maxBufferedBytes));
}

/// A long one is read in another thread, one after the other: it may take two seconds.
void SoftwareUpdateClientPrivate::parseServerResponse(const QByteArray &catalogue)
{
    const SoftwareUpdateSettings settings = currentSettings();
    const bool beta = settingsDialog ? settingsDialog->getDialogSettings().checkForBeta : settings.checkForBeta;
    const auto find = [=, isVouched = trust.isSet(), name = QCoreApplication::applicationName()] {
        return findOffer(catalogue, isVouched, name, settings, beta);
    };
    if (catalogue.size() <= mostBytesAtOnce && readings == 0) {
        takeOffer(find());
        return;
    }
    static QThreadPool readers;
    readers.setMaxThreadCount(1);
    readers.setExpiryTimeout(0); // who has nothing to read holds no thread
    ++readings;
    auto *reading = new QFutureWatcher<FoundOffer>(q);
    QObject::connect(reading, &QFutureWatcherBase::finished, q, [this, reading, check = current] {
        reading->deleteLater();
        --readings;
        current = check;
        const QPointer<SoftwareUpdateClient> self(q);
        takeOffer(reading->result());
        if (self)
            tellOutcomes();
    });
    reading->setFuture(QtConcurrent::run(&readers, find));
}

void SoftwareUpdateClientPrivate::takeOffer(FoundOffer found)
{
    const Check check = current; // a host that is asked may begin another
    if (!found.isCatalogue) {
        reportNoCatalogue();
        return;
    }
    current.source.keep();
    if (!keepOffered(found.packages))
        return;
    packages = std::move(found.packages);
    if (packages.isEmpty()) {
        offerNothing();
        LogQt::write(Log::Progress,
                     QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> product is up-to-date "));
        productUpToDate(check);
    } else {
        LogQt::write(Log::Progress,
                     QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> update available"));
        announceUpdates(check);
    }
}

void SoftwareUpdateClientPrivate::reportNoCatalogue()
{
    packages.clear();
    LogQt::write(Log::Error, QStringLiteral("SoftwareUpdateClient::parseServerResponse() -> no update available"));
    const QString text =
        toldText(QCoreApplication::translate("SoftwareUpdateClient", "No update available!"), Failure::NoCatalogue);
    showNotification(text);
    endCheck(current, CheckOutcome::NoCatalogue, text);
    offerNothing();
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
    noteRequest(target);
    failCheck(QCoreApplication::translate("QNetworkReply", unknownProtocol).arg(target.scheme()), Failure::BadAddress);
}

void SoftwareUpdateClientPrivate::failCheck(const QString &errorText, const Failure &failure)
{
    if (askMirror(errorText))
        return;
    q->requestError(errorText);
    const QString text = toldText(errorText, failure);
    showNotification(text);
    endCheck(current, CheckOutcome::Unreachable, text);
    LogQt::write(Log::Progress,
                 QStringLiteral("SoftwareUpdateClient::evaluateServerResponse() -> reply->errorString(): ")
                     + errorText);
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
    if (d->askMirrorInTime())
        return;
    const QString text =
        d->toldText(QCoreApplication::translate("SoftwareUpdateClient", "Timeout error! Update server unreachable!"),
                    Failure::TimedOut);
    d->showNotification(text);
    deleteNetworkmanager();
    LogQt::write(Log::Error,
                 QStringLiteral("SoftwareUpdateClient::requestTimeout() -> Timeout occurred requesting "
                                "update server!"));
    for (const SoftwareUpdateClientPrivate::Check &check : std::exchange(d->underWay, {}))
        d->endCheck(check, CheckOutcome::TimedOut, text);
    d->tellOutcomes();
}

void SoftwareUpdateClientPrivate::productUpToDate(const Check &check)
{
    const QString text =
        QCoreApplication::translate("SoftwareUpdateClient", "Congratulations! Your product is up-to-date!");
    showNotification(text);
    endCheck(check, CheckOutcome::UpToDate, text);
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
