// Packages and release notes over HTTP. Called by the client's installation and by hosts; leaves behind the file, or
// what arrived of it.
#include "DownloadManager.h"

#include <QFile>

#include <algorithm>
#include <limits>

namespace qv {

namespace {

constexpr int downloadPort = 80;

} // namespace

void DownloadManager::startDownload(const PackageInfo &package, const QString &path)
{
    const auto file = std::make_shared<QFile>(path);
    file->open(QIODevice::WriteOnly); // a failure shows in downloadResult(): no file, no bytes
    aimAt(package.url);
    const RequestPtr request = httpClient.prepareGet(HttpClient::encodedUrlPath(package.url), {}, this,
                                                     SLOT(downloadResult(RequestPtr)), file.get(), file);
    if (package.fileSize != 0) {
        const qint64 most = std::numeric_limits<qint64>::max() - maxSurplusBytes;
        request->setMaxBodySize(std::clamp<qint64>(package.fileSize, 0, most) + maxSurplusBytes);
    }
    request->userData = package;
    httpClient.execute(request);
}

void DownloadManager::aimAt(const QUrl &url)
{
    HttpHost target = host;
    // Deliberate: port 80 and plain HTTP whatever the URL says.
    target.server.setAddress(url.host(), downloadPort, false);
    httpClient.setHost(target);
}

void DownloadManager::downloadStarting(const RequestPtr &request)
{
    const auto *package = std::any_cast<PackageInfo>(&request->userData);
    const auto *file = qobject_cast<QFile *>(request->outputDevice());
    if (package && file && package->fileSize != 0)
        emit downloadStarted(*package, file->fileName());
}

void DownloadManager::downloadResult(const RequestPtr &request)
{
    auto *package = std::any_cast<PackageInfo>(&request->userData);
    auto *file = qobject_cast<QFile *>(request->outputDevice());
    // Deliberate: a package without a size has no outcome.
    if (!package || !file || package->fileSize == 0)
        return;
    const QString fileName = file->fileName();
    const bool isOpen = file->isOpen();
    file->close();
    const qint64 size = isOpen ? file->size() : 0; // where nothing was written, an older file may lie
    const QPointer<DownloadManager> self(this);
    if (quint64(size) < quint64(package->fileSize)) {
        emit downloadFailure(*package, fileName);
        if (self)
            emit downloadFailure(request->statusCode());
    } else {
        // Deliberate: the length alone decides, an error page that is long enough is a success.
        package->localFile = fileName;
        emit downloadSuccess(*package, fileName);
        if (self)
            emit downloadSuccess();
    }
    request->userData.reset();
}

void DownloadManager::abortDownload()
{
    httpClient.reset();
    emit downloadAborted();
}

void DownloadManager::downloadReleaseNotes(const QUrl &url)
{
    if (url.isEmpty()) {
        emit releaseNotesDownloaded(url, QString());
        return;
    }
    aimAt(url);
    httpClient.get(HttpClient::encodedUrlPath(url), {}, this, SLOT(releaseNotesResult(RequestPtr)),
                   HttpClient::keepInRequest, nullptr);
}

void DownloadManager::releaseNotesResult(const RequestPtr &request)
{
    const QString text = request->statusCode() == 200 ? request->getResponseText() : QString();
    emit releaseNotesDownloaded(request->urls().first(), text);
}

} // namespace qv
