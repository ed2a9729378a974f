// One catalogue query, from the host's call to queryFinished(). Leaves behind the answer's bytes, the time of the check
// and the packages that count as seen from now on.
#include "DownloadManager_p.h"

#include "CatalogueReader.h"
#include "ConnectHelpers.h"
#include "Minisign.h"

namespace qv {

namespace {

constexpr QLatin1String setCookie("set-cookie");
constexpr int statusOk = 200;
constexpr int msSignatureLimit = 15000;

/// A query whose catalogue is there, while its signature is fetched.
struct Unsealed
{
    DownloadManager::RequestData query;
    QByteArray catalogue;
};

} // namespace

void DownloadManager::queryUpdate(const QString &filterTypes, const QString &filterNames,
                                  const QString &filterReleaseVersion, const QString &filterReleaseStatus,
                                  const QDateTime &filterTime, const QStringSet &filterPlatform,
                                  const QStringSet &filterLanguages, QObject *callbackReceiver,
                                  const char *callbackSlot)
{
    const PackageInfo filter(filterTypes, filterNames, filterReleaseVersion, filterReleaseStatus, filterTime,
                             filterPlatform, filterLanguages, QString(), QString());
    queryUpdate(filter, callbackReceiver, callbackSlot);
}

void DownloadManager::queryCameraFirmwareUpdate(const QString &filterVersion, const QString &filterRelease,
                                                const QStringSet &filterLanguages)
{
    // The languages stand where the platforms belong; nothing reads a query's filter.
    queryUpdate(QStringLiteral("system"), QString(), filterVersion, filterRelease, QDateTime(), filterLanguages);
}

void DownloadManager::queryUpdate(const PackageInfo &filter, QObject *callbackReceiver, const char *callbackSlot)
{
    d->noteProxyInUse();
    d->httpClient.setHost(d->host);
    const RequestPtr request =
        d->httpClient.prepareGet(QString(), {}, this, SLOT(queryResult(RequestPtr)), nullptr, nullptr);
    request->userData = RequestData { filter, callbackReceiver, callbackSlot };
    const QPointer<DownloadManager> self(this);
    emit queryStarted(d->host.server);
    if (self)
        d->httpClient.execute(request);
}

void DownloadManager::queryResult(const RequestPtr &resp)
{
    if (!resp)
        return;
    auto *unsealed = std::any_cast<Unsealed>(&resp->userData);
    const HttpHeader &header = resp->responseHeader();
    if (!unsealed && header.hasKey(setCookie))
        d->cookie = header.value(setCookie);
    if (!unsealed && d->trust.isSet()) {
        d->askForSignature(this, resp);
        return;
    }
    QByteArray answer = unsealed ? unsealed->catalogue : resp->getResponseBuffer()->data();
    if (unsealed) {
        const QByteArray signature = resp->statusCode() == statusOk ? resp->getResponseBuffer()->data() : QByteArray();
        if (d->trust.examine(answer, signature).verdict != Seal::Accepted)
            answer.clear();
    }
    QBuffer device(&answer);
    device.open(QIODevice::ReadOnly);
    const QPointer<DownloadManager> self(this);
    queryResult(&device, unsealed ? &unsealed->query : std::any_cast<RequestData>(&resp->userData));
    if (!self)
        return;
    d->lastAnswer = answer;
    resp->userData.reset();
    emit queryFinished();
}

/// From where the catalogue finally came from, over the same route.
void DownloadManagerPrivate::askForSignature(DownloadManager *manager, const RequestPtr &answered)
{
    QUrl url = signatureUrl(answered->urls().constLast());
    if (answered->urls().size() == 1) { // not redirected: the server that the credentials are for
        url.setUserName(host.server.user(), QUrl::DecodedMode);
        url.setPassword(host.server.password(), QUrl::DecodedMode);
    }
    const RequestPtr request = httpClient.prepareGet(url, manager, SLOT(queryResult(RequestPtr)), nullptr, nullptr);
    request->setMaxBodySize(Minisign::longestSignature + 1);
    request->setTimeLimit(msSignatureLimit);
    request->userData = Unsealed { *std::any_cast<DownloadManager::RequestData>(&answered->userData),
                                   answered->getResponseBuffer()->data() };
    answered->userData.reset();
    httpClient.execute(request);
}

PackageInfoList DownloadManagerPrivate::read(QIODevice *catalogue) const
{
    if (trust.isSet() && catalogue->size() == 0) // refused, and that has been told
        return PackageInfoList();
    PackageInfoList packages = readCatalogue(catalogue);
    if (trust.isSet())
        Trust::keepVouched(packages);
    return packages;
}

void DownloadManager::queryResult(QIODevice *input, RequestData *data)
{
    PackageInfoList packages = d->read(input);
    d->lastCheck = QDateTime::currentDateTime();
    const QDateTime now = d->lastCheck.toUTC();
    for (PackageInfo &package : packages) {
        const QString id = package.stringID();
        if (d->history.contains(id))
            package.flags |= PackageInfo::PackageKnown;
        else
            d->history.insert(id, now);
    }
    d->forgetOldest();
    // Deliberate: the filter plays no part, everybody gets the whole catalogue.
    if (data && data->callbackReceiver && !data->callbackSlot.isNull())
        invokeQueued(data->callbackReceiver, data->callbackSlot.constData(), Q_ARG(qv::PackageInfoList, packages));
    if (packages.isEmpty())
        emit noPackageFound();
    else
        emit packageFound(packages);
}

} // namespace qv
