// Construction, server and proxy; what exists from the loading of the library on: the words of the catalogue and the
// types that travel in signals; and the static members, which hand over to the rooms of the catalogue.
#include "DownloadManager_p.h"

#include "CatalogueReader.h"
#include "CatalogueValues.h"
#include "ConnectHelpers.h"
#include "HttpAccessHistory.h"
#include "Kinds.h"
#include "Selection.h"

namespace qv {

const QString DownloadManager::UPDATE_URL = QStringLiteral(QV_UPDATE_URL);

const QString DownloadManager::DOCUMENT_TAG = Word::softwareList;
const QString DownloadManager::PACKAGE_SET = Word::packageSet;
const QString DownloadManager::PACKAGE = Word::package;
const QString DownloadManager::FILE = Word::file;
const QString DownloadManager::TYPE = Word::type;
const QString DownloadManager::NAME = Word::name;
const QString DownloadManager::NAME_PUBLIC = Word::publicName;
const QString DownloadManager::RELEASE_NOTES = Word::releaseNotes;
const QString DownloadManager::README = Word::readme;
const QString DownloadManager::LANGUAGE = Word::language;
const QString DownloadManager::RELEASE_VERSION = Word::release;
const QString DownloadManager::RELEASE_VERSION_PUBLIC = Word::publicRelease;
const QString DownloadManager::RELEASE_STATUS = Word::status;
const QString DownloadManager::RELEASE_DATE = Word::releaseDate;
const QString DownloadManager::URL = Word::url;
const QString DownloadManager::BASE_URL = Word::baseUrl;
const QString DownloadManager::FILE_SIZE = Word::fileSize;
const QString DownloadManager::PLATFORM = Word::platform;
const QString DownloadManager::COMMENT = Word::comment;

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

DownloadManager::DownloadManager() : d(std::make_unique<DownloadManagerPrivate>()) { }

DownloadManager::DownloadManager(const HttpHost &host, const QString &path) : DownloadManager()
{
    d->regularCheck = true;
    d->host = host;
    d->host.path = path;
    connectRelays();
}

DownloadManager::DownloadManager(const QUrl &server) : DownloadManager()
{
    d->regularCheck = true;
    setServer(server);
    connectRelays();
}

DownloadManager::DownloadManager(QSettings &settings, const QString &cacheFile) : DownloadManager()
{
    d->loadHistory(settings, cacheFile);
    connectRelays();
}

DownloadManager::~DownloadManager() = default;

void DownloadManager::connectRelays()
{
    qv::connect(&d->httpClient, SIGNAL(requestStarted(RequestPtr)), this, SLOT(downloadStarting(RequestPtr)));
    qv::connect(&d->httpClient, SIGNAL(downloadProgress(int, int)), this, SIGNAL(downloadProgress(int, int)));
}

void DownloadManager::setPolicy(const UpdatePolicy &policy)
{
    d->policy = policy;
    d->trust.setKeys(policy.trustedKeys);
    if (d->trust.isSet())
        d->lastAnswer.clear();
}

HttpHost &DownloadManager::server()
{
    return d->host;
}

const HttpHost &DownloadManager::server() const
{
    return d->host;
}

void DownloadManager::setServer(const QUrl &url)
{
    d->setServer(url);
}

void DownloadManagerPrivate::setServer(const QUrl &url)
{
    host.server.setUrl(url);
    host.path = HttpClient::encodedUrlPath(url);
    host.proxyPreference = HttpHost::GlobalProxy;
}

void DownloadManager::setProxy(HttpHost::ProxyPreference preference, const QString &address)
{
    d->host.proxyPreference = preference;
    d->host.proxy.parseAddress(address, 80);
    d->noteProxyInUse();
}

void DownloadManagerPrivate::noteProxyInUse()
{
    host.updateProxy(QUrl());
    if (host.proxyPreference != HttpHost::NoProxy && !host.proxy.isEmpty())
        HttpAccessHistory::proxies.add(host.proxy);
}

bool DownloadManager::isQueryBusy() const
{
    return d->httpClient.isExecutingRequest() || !d->pauses.isEmpty();
}

QString DownloadManager::errorText() const
{
    return d->errorText;
}

QString DownloadManager::failureText() const
{
    return d->failure ? qv::failureText(*d->failure) : QString();
}

bool DownloadManager::isRegularCheck() const
{
    return d->regularCheck;
}

void DownloadManager::setRegularCheck(bool isRegular)
{
    d->regularCheck = isRegular;
}

QString DownloadManager::queryUrl() const
{
    return d->host.makeURL(QString(), {}, true);
}

PackageInfoList DownloadManager::parseXML(QIODevice *device)
{
    return readCatalogue(device);
}

void DownloadManager::parseSet(const QDomElement &set, PackageInfoList &out)
{
    readSet(set, out);
}

void DownloadManager::parsePackage(const QDomElement &package, PackageInfo &info)
{
    readPackage(package, info);
}

QDomNode DownloadManager::startSearchAt(const QDomNode &node)
{
    return searchStart(node);
}

QString DownloadManager::findString(const QDomNode &node, const QString &tag)
{
    return qv::findString(node, tag);
}

int DownloadManager::findAllStrings(const QDomNode &node, const QString &tag, QStringSet &out)
{
    return qv::findAllStrings(node, tag, out);
}

int DownloadManager::findAllTranslatedUrls(const QDomNode &node, const QString &tag, UrlMap &out)
{
    return qv::findAllTranslatedUrls(node, tag, out);
}

qint64 DownloadManager::parseFileSize(const QString &text)
{
    return qv::parseFileSize(text);
}

QDateTime DownloadManager::parseReleaseDate(const QString &text)
{
    return qv::parseReleaseDate(text);
}

QString DownloadManager::parsePackageSuffix(const QString &urlText)
{
    return qv::parsePackageSuffix(urlText);
}

PackageInfoList DownloadManager::findPackageCandidates(PackageInfoList &packages, const PackageInfo &filter,
                                                       const QString &type, const QStringList &wantedSuffixes)
{
    return qv::findPackageCandidates(packages, filter, type, wantedSuffixes);
}

PackageInfoList DownloadManager::findPackageCandidates(PackageInfoList &packages, const PackageIndex &index,
                                                       const PackageInfo &filter, const QString &type,
                                                       const QStringList &wantedSuffixes)
{
    return qv::findPackageCandidates(packages, index, filter, type, wantedSuffixes);
}

void DownloadManager::eliminateDuplicatePackages(PackageInfoList &packages)
{
    qv::eliminateDuplicatePackages(packages);
}

PackageInfoList DownloadManager::findBestMatches(const PackageInfoList &packages, const PackageInfo &filter)
{
    return qv::findBestMatches(packages, filter);
}

int DownloadManager::countNew(const PackageInfoList &packages)
{
    return qv::countNew(packages);
}

} // namespace qv
