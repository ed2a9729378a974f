#pragma once

#include "PackageInfo.h"

#include <QDomElement>
#include <QIODevice>
#include <QObject>
#include <QStringList>

namespace qv {

class PackageIndex;

/// Reads update catalogues and picks from them what concerns the installed products.
class SOFTWAREUPDATE_EXPORT DownloadManager : public QObject
{
    Q_OBJECT

public:
    // The words of a catalogue: its elements, and the values that stand in them as child elements or attributes.
    static const QString DOCUMENT_TAG; ///< "softwareList", the usual root; any other is read too
    static const QString PACKAGE_SET;
    static const QString PACKAGE;
    static const QString FILE;
    static const QString TYPE;
    static const QString NAME;
    static const QString NAME_PUBLIC;
    static const QString RELEASE_NOTES;
    static const QString README;
    static const QString LANGUAGE;
    static const QString RELEASE_VERSION;
    static const QString RELEASE_VERSION_PUBLIC;
    static const QString RELEASE_STATUS;
    static const QString RELEASE_DATE;
    static const QString URL;
    static const QString BASE_URL;
    static const QString FILE_SIZE;
    static const QString PLATFORM;
    static const QString COMMENT;

    /// The meta-type id of PackageInfoList.
    static const int qMetaTypes;

    /// The packages of the catalogue that @p device, open for reading, holds: those that stand in a set itself, then
    /// those of the sets in it. A value that a package does not have is taken from the nearest set around; platforms,
    /// languages and links add up over all of them (docs/catalogue.md).
    ///
    /// What is not well-formed XML, or is made to exhaust time or memory (see XmlUtils::parseXml(); likewise sets whose
    /// inherited values would unfold to more than some tens of megabytes), gives an empty list and a line in the log.
    static PackageInfoList parseXML(QIODevice *device);

    /// The same rules for single nodes of a DOM: appends the packages of @p set; fills the catalogue's fields of
    /// @p info; finds the "file" child that holds a package's values, or the node itself; looks a value up from there
    /// outwards; adds the words or links of all levels to @p out and returns how many they are.
    static void parseSet(const QDomElement &set, PackageInfoList &out);
    static void parsePackage(const QDomElement &package, PackageInfo &info);
    static QDomNode startSearchAt(const QDomNode &node);
    static QString findString(const QDomNode &node, const QString &tag);
    static int findAllStrings(const QDomNode &node, const QString &tag, QStringSet &out);
    static int findAllTranslatedUrls(const QDomNode &node, const QString &tag, UrlMap &out);

    /// Bytes: a number, or one with the unit "kB" or "MB" in any case (1024 and 1024 * 1024), cut to a whole number
    /// before the unit counts; 0 where unreadable, negative or too large.
    static qint64 parseFileSize(const QString &text);

    /// "yyyy-MM-dd hh:mm:ss" or "yyyy-MM-dd", local time; null where unreadable.
    static QDateTime parseReleaseDate(const QString &text);

    /// What stands behind the last dot, or "tar.gz", "tar.bz2", and "mpkg" for ".mpkg.zip". A suspicious one is logged
    /// and returned all the same.
    static QString parsePackageSuffix(const QString &urlText);

    /// The packages that pass PackageInfo::filterPackageCandidate() and carry the newest release among them, their type
    /// set to @p type - in @p packages too, for all that pass.
    static PackageInfoList findPackageCandidates(PackageInfoList &packages, const PackageInfo &filter,
                                                 const QString &type, const QStringList &wantedSuffixes);

    /// The same, for asking one large catalogue about many platforms: @p index was made of @p packages.
    static PackageInfoList findPackageCandidates(PackageInfoList &packages, const PackageIndex &index,
                                                 const PackageInfo &filter, const QString &type,
                                                 const QStringList &wantedSuffixes);

    /// Keeps the first of equal packages.
    static void eliminateDuplicatePackages(PackageInfoList &packages);

    /// Of the packages that match @p filter, the best for each type and platform, in the order of "type/platform".
    static PackageInfoList findBestMatches(const PackageInfoList &packages, const PackageInfo &filter);

    /// How many packages no earlier query has listed.
    static int countNew(const PackageInfoList &packages);
};

} // namespace qv
