// One catalogue query, from the host's call to queryFinished(). Leaves behind the answer's bytes, the time of the check
// and the packages that count as seen from now on.
#include "DownloadManager_p.h"

#include "CatalogueReader.h"
#include "ConnectHelpers.h"
#include "Minisign.h"

namespace qv {

namespace {

constexpr QLatin1String setCookie("set-cookie");
constexpr int msSignatureLimit = 15000;

CatalogueAnswer answerOf(RequestData &request)
{
    const HttpHeader &header = request.responseHeader();
    return { request.urls().constFirst(), request.statusCode(), request.getResponseBuffer()->data(),
             [&header](const char *name) { return header.value(QLatin1String(name)).toLatin1(); } };
}

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
    d->prepare(request, { filter, callbackReceiver, callbackSlot, CatalogueSource(d->policy), {}, {} });
    const QPointer<DownloadManager> self(this);
    emit queryStarted(d->host.server);
    if (self)
        d->httpClient.execute(request);
}

void DownloadManagerPrivate::prepare(const RequestPtr &request, DownloadManager::RequestData query)
{
    if (!query.unsealed)
        query.address = request->urlWithLogin();
    const HeaderLine condition = query.source.condition(request->urlWithLogin());
    if (!condition.first.isEmpty())
        request->setHeader(condition.first, condition.second);
    request->userData = query;
}

/// Over the same route.
void DownloadManagerPrivate::ask(DownloadManager *manager, const QUrl &url, const DownloadManager::RequestData &query)
{
    const RequestPtr request = httpClient.prepareGet(url, manager, SLOT(queryResult(RequestPtr)), nullptr, nullptr);
    if (query.unsealed) {
        request->setMaxBodySize(Minisign::longestSignature + 1);
        request->setTimeLimit(msSignatureLimit);
    }
    prepare(request, query);
    httpClient.execute(request);
}

/// Once more without what is kept, where that is to blame, or a mirror; false where there is none left.
bool DownloadManagerPrivate::askElsewhere(DownloadManager *manager, DownloadManager::RequestData query,
                                          bool isKeptToBlame)
{
    QUrl url = query.address;
    if (isKeptToBlame)
        query.source.askAnew();
    else
        url = trust.isSet() ? query.source.nextMirror() : QUrl();
    if (url.isEmpty())
        return false;
    query.unsealed.reset();
    ask(manager, url, query);
    return true;
}

void DownloadManager::queryResult(const RequestPtr &resp)
{
    if (!resp)
        return;
    const auto *carried = std::any_cast<RequestData>(&resp->userData);
    RequestData query = carried ? *carried : RequestData();
    resp->userData.reset();
    const HttpHeader &header = resp->responseHeader();
    if (!query.unsealed && header.hasKey(setCookie))
        d->cookie = header.value(setCookie);
    if (query.source.isConditionRefused(resp->urls().constFirst(), resp->statusCode())
        && d->askElsewhere(this, query, true))
        return;
    const CatalogueAnswer answer = query.source.take(answerOf(*resp));
    QByteArray catalogue = query.unsealed.value_or(answer.body);
    if (query.unsealed) {
        const Seal seal = d->trust.examine(catalogue, answer.isThere() ? answer.body : QByteArray());
        if (seal.verdict != Seal::Accepted) {
            if (d->askElsewhere(this, query, query.source.isOld() && !seal.isGenuine()))
                return;
            catalogue.clear();
        }
    } else if (d->trust.isSet()) {
        if (!answer.isThere() && d->askElsewhere(this, query, false))
            return;
        query.unsealed = catalogue;
        // Redirected, it is another server, and the credentials are not for that.
        d->ask(this, signatureUrl(resp->urls().size() == 1 ? query.address : resp->urls().constLast()), query);
        return;
    }
    QBuffer device(&catalogue);
    device.open(QIODevice::ReadOnly);
    const QPointer<DownloadManager> self(this);
    queryResult(&device, &query);
    if (!self)
        return;
    d->lastAnswer = catalogue;
    emit queryFinished();
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
    if (data && !packages.isEmpty())
        data->source.keep();
    // Deliberate: the filter plays no part, everybody gets the whole catalogue.
    if (data && data->callbackReceiver && !data->callbackSlot.isNull())
        invokeQueued(data->callbackReceiver, data->callbackSlot.constData(), Q_ARG(qv::PackageInfoList, packages));
    if (packages.isEmpty())
        emit noPackageFound();
    else
        emit packageFound(packages);
}

} // namespace qv
