// What exists from the loading of the library on: the words of the catalogue and the types that travel in signals.
#include "DownloadManager.h"

namespace qv {

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
    qRegisterMetaType<PackageInfoList>("PackageInfoList"); // slots in this namespace spell it so
    return qRegisterMetaType<PackageInfoList>("qv::PackageInfoList");
}

} // namespace

const int DownloadManager::qMetaTypes = registerMetaTypes();

} // namespace qv
