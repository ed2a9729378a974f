// Packages and release notes over HTTP. Called by the client's installation and by hosts; leaves behind the file, or
// what arrived of it.
#include "DownloadManager_p.h"

#include "HashedFile.h"
#include "LogQt.h"
#include "StringUtils.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace qv {

namespace {

/// Whether @p file holds what @p package announces by its hash, if it announces one.
bool hasRightHash(const PackageInfo &package, QFile &file)
{
    auto *hashed = dynamic_cast<HashedFile *>(&file);
    return !hashed || hashed->takeHash() == package.sha256;
}

/// What its size needs at 1 KiB a second, at least an hour.
int msForPackage(quint64 bytes)
{
    constexpr quint64 least = 60 * 60 * 1000, most = std::numeric_limits<int>::max();
    return int(std::clamp(bytes / 1024 > most / 1000 ? most : bytes / 1024 * 1000, least, most));
}

} // namespace

void DownloadManager::startDownload(const PackageInfo &package, const QString &path)
{
    const qvb::smart<QFile> file(package.sha256.isEmpty() ? new QFile(path) : new HashedFile(path));
    file->open(QIODevice::WriteOnly); // a failure shows in downloadResult(): no file, no bytes
    d->fetch(this, { package, 1, QByteArray() }, file);
}

/// Goes on behind what is in the @p file, if there is a validator.
void DownloadManagerPrivate::fetch(DownloadManager *manager, const PackageDownload &download,
                                   const qvb::smart<QFile> &file)
{
    const PackageInfo &package = download.package;
    const RequestPtr request = prepareGet(package.url, manager, SLOT(downloadResult(RequestPtr)), file);
    if (!download.validator.isEmpty())
        request->resumeAt(file->size(), download.validator);
    if (policy.followAddresses && package.fileSize > 0) {
        request->setMaxBodySize(package.fileSize);
    } else if (package.fileSize != 0) {
        constexpr quint64 most = std::numeric_limits<qint64>::max() - DownloadManager::maxSurplusBytes;
        request->setMaxBodySize(qint64(std::min(quint64(package.fileSize), most)) + DownloadManager::maxSurplusBytes);
    }
    request->setTimeLimit(msForPackage(quint64(package.fileSize)));
    request->userData = download;
    downloads.append(request);
    httpClient.execute(request);
}

/// False where the policy has no further attempt at it, or a further one would end alike.
bool DownloadManagerPrivate::fetchLater(DownloadManager *manager, const RequestPtr &broken)
{
    constexpr int serverError = 5, partialContent = 206, rangeNotSatisfiable = 416, factor = 3;
    auto download = std::any_cast<PackageDownload>(broken->userData);
    const auto file = std::dynamic_pointer_cast<QFile>(broken->deviceHandle());
    const int status = broken->statusCode();
    const bool isMisfit =
        broken->isResumed() && broken->bodySize() == 0 && (status == partialContent || status == rangeNotSatisfiable);
    const bool isBroken = broken->isBroken() && !broken->isCut();
    if (!file->isOpen() || (!isMisfit && (!isBroken || download.attempt >= policy.downloadAttempts)))
        return false;

    int msPause = 0;
    if (isMisfit) {
        download.validator.clear();
    } else {
        if (!broken->isResumed())
            download.validator = status / 100 == serverError ? QByteArray() : broken->validator();
        msPause = int(1000 * std::pow(factor, download.attempt - 1));
        ++download.attempt;
    }
    if (download.validator.isEmpty() && (!file->seek(0) || !file->resize(0)))
        return false;
    auto *pause = new QTimer(manager);
    pauses.append(pause);
    pause->setSingleShot(true);
    QObject::connect(pause, &QTimer::timeout, manager, [=] {
        pauses.removeAll(pause);
        pause->deleteLater();
        fetch(manager, download, file);
    });
    pause->start(msPause);
    return true;
}

RequestPtr DownloadManagerPrivate::prepareGet(const QUrl &url, QObject *receiver, const char *slot,
                                              const qvb::smart<QIODevice> &output)
{
    httpClient.setHost(host);
    if (policy.followAddresses)
        return httpClient.prepareGet(url, receiver, slot, output.get(), output);
    // Deliberate: port 80 and plain HTTP whatever the URL says.
    QUrl target = url;
    target.setScheme(QStringLiteral("http"));
    target.setPort(-1);
    target.setUserInfo(QString());
    return httpClient.prepareGet(target, receiver, slot, output.get(), output);
}

/// Deliberate: a package without a size has no outcome.
bool DownloadManagerPrivate::isTold(const PackageInfo &package) const
{
    return package.fileSize != 0 || policy.followAddresses;
}

bool DownloadManagerPrivate::isComplete(const PackageInfo &package, const qv::RequestData &request, qint64 size) const
{
    constexpr int success = 2; // hundred
    if (policy.followAddresses)
        return request.statusCode() / 100 == success && request.isWhole()
            && (package.fileSize == 0 || size == package.fileSize);
    return quint64(size) >= quint64(package.fileSize) && !request.isCut();
}

void DownloadManager::downloadStarting(const RequestPtr &request)
{
    if (!request)
        return;
    const auto *download = std::any_cast<PackageDownload>(&request->userData);
    const auto *file = qobject_cast<QFile *>(request->outputDevice());
    if (download && file && download->attempt == 1 && d->isTold(download->package))
        emit downloadStarted(download->package, file->fileName());
}

void DownloadManager::downloadResult(const RequestPtr &request)
{
    if (!request)
        return;
    d->downloads.removeAll(request);
    auto *download = std::any_cast<PackageDownload>(&request->userData);
    auto *file = qobject_cast<QFile *>(request->outputDevice());
    if (!download || !file)
        return;
    auto *package = &download->package;
    if (!d->isComplete(*package, *request, file->size()) && d->fetchLater(this, request))
        return;
    const QString fileName = file->fileName();
    const bool isOpen = file->isOpen();
    file->close();
    const bool isRight = isOpen && hasRightHash(*package, *file);
    const bool isGood = isRight && d->isComplete(*package, *request, file->size());
    std::optional<Failure> failure;
    if (!isGood)
        failure = d->failureOf(*download, *request, *file, isOpen); // before a file goes that it looks into
    if (isOpen && !isRight)
        file->remove();
    if (!d->isTold(*package))
        return;
    const QPointer<DownloadManager> self(this);
    d->errorText = request->errorText();
    d->failure = failure;
    if (!d->errorText.isEmpty() && d->policy.followAddresses)
        LogQt::write(Log::Error,
                     QStringLiteral("DownloadManager::downloadResult() -> %1: %2")
                         .arg(StringUtils::withoutPassword(package->url), d->errorText));
    if (!isGood) {
        emit downloadFailure(*package, fileName);
        if (self)
            emit downloadFailure(request->statusCode());
    } else {
        // Deliberate: without a hash the length alone decides, an error page that is long enough is a success.
        package->localFile = fileName;
        emit downloadSuccess(*package, fileName);
        if (self)
            emit downloadSuccess();
    }
    request->userData.reset();
}

void DownloadManager::abortDownload()
{
    qDeleteAll(std::exchange(d->pauses, {}));
    d->httpClient.reset(); // first: later it would meet what waited behind the download
    for (const RequestPtr &request : std::exchange(d->downloads, {}))
        d->httpClient.drop(request);
    emit downloadAborted();
}

void DownloadManager::downloadReleaseNotes(const QUrl &url)
{
    if (url.isEmpty()) {
        emit releaseNotesDownloaded(url, QString());
        return;
    }
    const RequestPtr request = d->prepareGet(url, this, SLOT(releaseNotesResult(RequestPtr)), nullptr);
    request->userData = url;
    d->httpClient.execute(request);
}

void DownloadManager::releaseNotesResult(const RequestPtr &request)
{
    const QUrl *url = request ? std::any_cast<QUrl>(&request->userData) : nullptr;
    if (!url)
        return;
    const QString text = request->statusCode() == 200 ? request->getResponseText() : QString();
    emit releaseNotesDownloaded(*url, text);
}

} // namespace qv
