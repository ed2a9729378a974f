#pragma once

// Not installed: the inside of DownloadManager.

#include "CatalogueSource.h"
#include "DownloadManager.h"
#include "FailureTexts.h"
#include "HttpClient.h"
#include "Trust.h"

#include <QFile>
#include <QHash>
#include <QPointer>
#include <QTimer>

#include <optional>

namespace qv {

class Unzipper;

struct Q_DECL_HIDDEN DownloadManager::RequestData
{
    PackageInfo filter; // kept for the format of a query; nothing reads it
    QPointer<QObject> callbackReceiver;
    QByteArray callbackSlot; // null: nobody is called
    CatalogueSource source;
    QUrl address;                       // of the catalogue, with credentials
    std::optional<QByteArray> unsealed; // what came from there, while its signature is fetched
};

/// What the request of a package carries.
struct PackageDownload
{
    PackageInfo package;
    int attempt = 1;
    QByteArray validator; // of what is there
};

class DownloadManagerPrivate
{
public:
    void setServer(const QUrl &url);
    void noteProxyInUse();
    RequestPtr prepareGet(const QUrl &url, QObject *receiver, const char *slot, const qvb::smart<QIODevice> &output);
    PackageInfoList read(QIODevice *catalogue) const;
    static void prepare(const RequestPtr &request, DownloadManager::RequestData query);
    void ask(DownloadManager *manager, const QUrl &url, const DownloadManager::RequestData &query);
    bool askElsewhere(DownloadManager *manager, DownloadManager::RequestData query, bool isKeptToBlame);
    void fetch(DownloadManager *manager, const PackageDownload &download, const qvb::smart<QFile> &file);
    bool fetchLater(DownloadManager *manager, const RequestPtr &broken);
    bool isTold(const PackageInfo &package) const;
    bool isComplete(const PackageInfo &package, const qv::RequestData &request, qint64 size) const;
    static Failure failureOf(const PackageDownload &download, const qv::RequestData &request, const QFile &file,
                             bool isWritable);
    void forgetOldest();
    void loadHistory(QSettings &settings, const QString &cacheFile);

    UpdatePolicy policy;
    Trust trust;
    HttpClient httpClient;
    HttpHost host;
    QDateTime lastCheck; // when the last answer was handled, local time
    bool regularCheck = false;
    QByteArray lastAnswer;
    QHash<QString, QDateTime> history; // by PackageInfo::stringID(): when first seen, UTC
    QString cookie;                    // kept, read by nothing
    QString errorText;                 // of the last download that ended
    std::optional<Failure> failure;    // likewise
    QList<RequestPtr> downloads;       // from startDownload() to their end, waiting or running
    QList<QTimer *> pauses;            // before the next attempts; children of the manager
    Unzipper *unzipper = nullptr;      // from the first unzipPackage() on; a child of the manager
    PackageInfo installPackageInfo;
    struct
    {
        QString updater;
        QString targetFolder;
        QString application;
    } installTexts; // set aside with the package, read by nothing here
};

} // namespace qv
