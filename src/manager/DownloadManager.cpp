// Construction, server and proxy; and what exists from the loading of the library on: the words of the catalogue and
// the types that travel in signals.
#include "DownloadManager.h"

#include "ConnectHelpers.h"
#include "HttpAccessHistory.h"

namespace qv {

const QString DownloadManager::UPDATE_URL = QStringLiteral(QV_UPDATE_URL);

const QString DownloadManager::DOCUMENT_TAG = QStringLiteral("softwareList");
const QString DownloadManager::PACKAGE_SET = QStringLiteral("package-set");
const QString DownloadManager::PACKAGE = QStringLiteral("package");
const QString DownloadManager::FILE = QStringLiteral("file");
const QString DownloadManager::TYPE = QStringLiteral("type");
const QString DownloadManager::NAME = QStringLiteral("name");
const QString DownloadManager::NAME_PUBLIC = QStringLiteral("public-name");
const QString DownloadManager::RELEASE_NOTES = QStringLiteral("release-notes");
const QString DownloadManager::README = QStringLiteral("readme");
const QString DownloadManager::LANGUAGE = QStringLiteral("language");
const QString DownloadManager::RELEASE_VERSION = QStringLiteral("release");
const QString DownloadManager::RELEASE_VERSION_PUBLIC = QStringLiteral("public-release");
const QString DownloadManager::RELEASE_STATUS = QStringLiteral("status");
const QString DownloadManager::RELEASE_DATE = QStringLiteral("release-date");
const QString DownloadManager::URL = QStringLiteral("url");
const QString DownloadManager::BASE_URL = QStringLiteral("base-url");
const QString DownloadManager::FILE_SIZE = QStringLiteral("file-size");
const QString DownloadManager::PLATFORM = QStringLiteral("platform");
const QString DownloadManager::COMMENT = QStringLiteral("comment");

namespace {

int registerMetaTypes()
{
    qRegisterMetaType<PackageInfo>("qv::PackageInfo");
    qRegisterMetaType<PackageInfo>("PackageInfo");
    qRegisterMetaType<QStringSet>("qv::QStringSet");
    qRegisterMetaType<QStringSet>("QStringSet");
    qRegisterMetaType<PackageInfoList>("PackageInfoList"); // slots in this namespace spell it so
    return qRegisterMetaType<PackageInfoList>("qv::PackageInfoList");
}

} // namespace

const int DownloadManager::qMetaTypes = registerMetaTypes();

DownloadManager::DownloadManager(const HttpHost &host, const QString &path)
    : httpClient(host), host(host), regularCheck(true)
{
    this->host.path = path;
    connectRelays();
}

DownloadManager::DownloadManager(const QUrl &server) : regularCheck(true)
{
    setServer(server);
    httpClient.setHost(host);
    connectRelays();
}

DownloadManager::DownloadManager(QSettings &settings, const QString &cacheFile)
{
    loadHistory(settings, cacheFile);
    connectRelays();
}

DownloadManager::DownloadManager() = default;

DownloadManager::~DownloadManager() = default;

void DownloadManager::connectRelays()
{
    qv::connect(&httpClient, SIGNAL(requestStarted(RequestPtr)), this, SLOT(downloadStarting(RequestPtr)));
    qv::connect(&httpClient, SIGNAL(downloadProgress(int, int)), this, SIGNAL(downloadProgress(int, int)));
}

void DownloadManager::setServer(const QUrl &url)
{
    host.server.setUrl(url);
    host.path = HttpClient::encodedUrlPath(url);
    host.proxyPreference = HttpHost::GlobalProxy;
}

void DownloadManager::setProxy(HttpHost::ProxyPreference preference, const QString &address)
{
    host.proxyPreference = preference;
    host.proxy.parseAddress(address, 80);
    noteProxyInUse();
}

void DownloadManager::noteProxyInUse()
{
    host.updateProxy(QUrl());
    if (host.proxyPreference != HttpHost::NoProxy && !host.proxy.isEmpty())
        HttpAccessHistory::proxies.add(host.proxy);
}

QString DownloadManager::queryUrl() const
{
    return host.makeURL(QString(), {}, true);
}

} // namespace qv
