// One catalogue query, from the host's call to queryFinished(). Leaves behind the answer's bytes, the time of the check
// and the packages that count as seen from now on.
#include "DownloadManager_p.h"

#include "CatalogueReader.h"
#include "ConnectHelpers.h"

namespace qv {

namespace {

constexpr QLatin1String setCookie("set-cookie");

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
    const HttpHeader &header = resp->responseHeader();
    if (header.hasKey(setCookie))
        d->cookie = header.value(setCookie);
    QBuffer *answer = resp->getResponseBuffer();
    const QPointer<DownloadManager> self(this);
    queryResult(answer, std::any_cast<RequestData>(&resp->userData));
    if (!self)
        return;
    d->lastAnswer = answer->data();
    resp->userData.reset();
    emit queryFinished();
}

void DownloadManager::queryResult(QIODevice *input, RequestData *data)
{
    PackageInfoList packages = readCatalogue(input);
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
