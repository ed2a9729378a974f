// Why a download failed, as a user would put it. Called at the end of each; leaves the facts for failureText().
#include "DownloadManager_p.h"

#include <QFileInfo>

namespace qv {

namespace {

QByteArray beginningOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(1024) : QByteArray();
}

/// Without a name there was no folder either, of those for temporary files.
QString folderOf(const QString &path)
{
    return path.isEmpty() ? qEnvironmentVariable("TMPDIR", QStringLiteral("/tmp")) : QFileInfo(path).path();
}

/// Of several causes the one that is the most likely, and the first that a user could do something about.
Failure::Kind likelyKind(const RequestData &request, const QFile &file)
{
    if (request.isDeviceFull())
        return Failure::DiskFull;
    if (request.isTimedOut())
        return request.bodySize() > 0 ? Failure::Broken : Failure::TimedOut;
    if (isWebPage(request.responseHeader().value(QStringLiteral("Content-Type")), beginningOf(file.fileName())))
        return Failure::WebPage;
    return !request.isWhole() && !request.isCut() ? Failure::Broken : Failure::Damaged;
}

} // namespace

Failure DownloadManagerPrivate::failureOf(const PackageDownload &download, const qv::RequestData &request,
                                          const QFile &file, bool isWritable)
{
    constexpr int success = 2; // hundred
    const QUrl &server = request.urls().constLast();
    const bool isAnswered = request.statusCode() / 100 == success || request.isTimedOut() || request.isDeviceFull();
    Failure failure = qv::failureOf(request.networkError(), request.statusCode());
    failure.place = folderOf(file.fileName());
    failure.received = request.bodySize();
    failure.expected = download.package.fileSize;
    if (!isWritable) {
        failure.kind = Failure::NotWritable;
    } else if (isAnswered) {
        failure.kind = likelyKind(request, file);
        if (failure.kind == Failure::DiskFull && failure.expected > 0)
            failure.expected += RequestData::diskReserve;
    } else if (request.networkError() == QNetworkReply::NoError && request.statusCode() == 0) { // nobody was asked
        failure.kind = Failure::BadAddress;
    }
    if (failure.kind == Failure::BadAddress)
        failure.place = server.toDisplayString(QUrl::RemoveUserInfo);
    failure.server = server.host();
    return failure;
}

} // namespace qv
