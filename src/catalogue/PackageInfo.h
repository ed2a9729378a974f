#pragma once

#include "SoftwareUpdateExport.h"
#include "StringUtils.h"

#include <QDateTime>
#include <QList>
#include <QMetaType>
#include <QMultiMap>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace qv {

class PackageInfo;

using PackageInfoList = QList<PackageInfo>;

/// URLs by language code ("en", "de_DE"). A code may have several; value() gives the one inserted last.
using UrlMap = QMultiMap<QString, QUrl>;

/// One downloadable package of an update catalogue: a plain value. The same type serves as a filter, which describes
/// the installed product: there an empty field does not filter.
///
/// Both the type and its list are registered with Qt ("qv::PackageInfo", "qv::PackageInfoList"), so that they travel in
/// queued signals.
class SOFTWAREUPDATE_EXPORT PackageInfo
{
public:
    enum Flag : qint32 {
        PackageKnown = 1, ///< an earlier query has already listed the package
        BestMatch = 2,    ///< kept for the format of the flag word; nothing reads it
    };

    PackageInfo() = default;

    /// A record whose public name and public release are the internal ones. Filters are made like this.
    PackageInfo(const QString &type, const QString &name, const QString &release, const QString &status,
                const QDateTime &releaseDate, const QStringSet &platforms, const QStringSet &languages,
                const QString &suffix, const QString &comment);

    QString displayName(bool usePublic) const;

    /// The version for users: the public one if wanted and there, else the internal one.
    QString displayReleaseVersion(bool usePublic) const;

    /// The release date, with its time unless that is midnight.
    QString timeToString(Qt::DateFormat format) const;

    /// The last section of the URL's path.
    QString fileName() const;

    /// The identity text: "1-<release date, ISO 8601>-<file size>". The 1 marks the format.
    QString stringID() const;

    /// True for packages of one identity: the same release date and file size, whatever their names and URLs.
    bool operator==(const PackageInfo &other) const { return stringID() == other.stringID(); }
    bool operator!=(const PackageInfo &other) const { return !(*this == other); }

    /// Always true.
    bool matchesPackage(const QString &a, const QString &b) const;

    bool isInstallable() const { return isInstallable(suffix); }

    /// The link for @p language ("de_DE"), else for its first two letters, else for the fallback in the same way; empty
    /// where there is none. A link without a language in the catalogue counts as "en".
    QUrl readmeUrl(const QString &language, const QString &fallbackLanguage) const;
    QUrl releaseNotesUrl(const QString &language, const QString &fallbackLanguage) const;

    /// True when this package is of the filter's product and status, newer than the filter's release (number by
    /// number), for one of its platforms, and of one of the wanted suffixes (none: any).
    bool filterPackageCandidate(const PackageInfo &filter, const QStringList &wantedSuffixes) const;

    /// The coarser test of the query engine: release and status in text order, release date, languages.
    bool matchesFilter(const PackageInfo &filter) const;

    /// True when this package is to be preferred to @p other: by release in text order, then status, then date.
    bool isBetterMatch(const PackageInfo &other) const;

    /// "zip" and "rpm", in any case.
    static bool isInstallable(const QString &suffix);

    /// Text order, not number order: "10.0" comes before "9.0".
    static int compareVersion(const QString &a, const QString &b);

    /// Reversed text order: "BETA" ranks above "STABLE".
    static int compareRelease(const QString &a, const QString &b);

    static QUrl translatedUrl(const UrlMap &map, const QString &language, const QString &fallbackLanguage);

    /// The distinct values of one field over a list, in no particular order, for filters and tables. Platforms and
    /// languages are translated in the context "Download" in any case, releases and types when @p translate is set.
    static QStringList allPlatforms(const PackageInfoList &list, bool translate);
    static QStringList allLanguages(const PackageInfoList &list, bool translate);
    static QStringList allReleases(const PackageInfoList &list, bool translate);
    static QStringList allTypes(const PackageInfoList &list, bool translate);

    QString type;       ///< "Application", "Camera Firmware" or a word of the catalogue's own
    QString name;       ///< internal product name
    QString publicName; ///< name shown to users
    QStringSet platforms;
    QUrl url;              ///< where the package is downloaded from
    QString release;       ///< internal version
    QString publicRelease; ///< version shown to users
    QString status;        ///< such as "STABLE" or "BETA"
    QDateTime releaseDate; ///< local time; null when unknown
    qint64 fileSize = 0;   ///< bytes, to be read as unsigned; 0 when unknown
    QStringSet languages;  ///< language codes
    UrlMap releaseNotes;
    UrlMap readme;
    qint32 flags = 0;       ///< Flag values
    QString localFile;      ///< the downloaded file, once there is one
    bool spareFlag = false; ///< asks for a confirmation before a package set aside is installed
    QString suffix; ///< file type told by the URL: "zip", "tar.gz", "mpkg", ...; chooses the installation routine
    QString comment;
    QByteArray sha256; ///< of the file: 64 hexadecimal digits in lower case, if it is a hash at all; empty when unknown
};

} // namespace qv

Q_DECLARE_METATYPE(qv::PackageInfo)
Q_DECLARE_METATYPE(qv::PackageInfoList)
