// The package record: identity, names for people, language fallback and the tests against a filter. Called by the
// catalogue, the selection and the client.
#include "PackageInfo.h"

#include "Kinds.h"
#include "QuorvelSoftwareVersion.h"
#include "VersionNumber.h"

#include <QFileInfo>

namespace qv {

namespace {

constexpr QLatin1String displayContext("Download");

template<class AddValues>
QStringList distinctValues(const PackageInfoList &list, AddValues addValues)
{
    QStringSet values;
    for (const PackageInfo &package : list)
        addValues(values, package);
    return values.values();
}

QString word(const QString &text, bool translate)
{
    return translate ? StringUtils::translated(text, displayContext) : text;
}

} // namespace

PackageInfo::PackageInfo(const QString &type, const QString &name, const QString &release, const QString &status,
                         const QDateTime &releaseDate, const QStringSet &platforms, const QStringSet &languages,
                         const QString &suffix, const QString &comment)
    : type(type), name(name), publicName(name), platforms(platforms), release(release), publicRelease(release),
      status(status), releaseDate(releaseDate), languages(languages), suffix(suffix), comment(comment)
{
}

QString PackageInfo::displayName(bool usePublic) const
{
    return usePublic && !publicName.isEmpty() ? publicName : name;
}

QString PackageInfo::displayReleaseVersion(bool usePublic) const
{
    if (usePublic && !publicRelease.isEmpty())
        return publicRelease;
    if (!release.isEmpty())
        return QuorvelSoftwareVersion::applicationVersion(release, QStringLiteral("?"), 0);
    return publicRelease;
}

QString PackageInfo::timeToString(Qt::DateFormat format) const
{
    const bool isMidnight = releaseDate.time() == QTime(0, 0);
    return isMidnight ? releaseDate.date().toString(format) : releaseDate.toString(format);
}

QString PackageInfo::fileName() const
{
    return QFileInfo(url.path()).fileName();
}

QString PackageInfo::stringID() const
{
    return QStringLiteral("1-%1-%2").arg(releaseDate.toString(Qt::ISODate)).arg(fileSize);
}

bool PackageInfo::matchesPackage(const QString &a, const QString &b) const
{
    // Deliberate: each text is searched in itself, so every pair matches.
    return a.indexOf(a, 0, Qt::CaseInsensitive) >= 0 && b.indexOf(b, 0, Qt::CaseInsensitive) >= 0;
}

QUrl PackageInfo::readmeUrl(const QString &language, const QString &fallbackLanguage) const
{
    return translatedUrl(readme, language, fallbackLanguage);
}

QUrl PackageInfo::releaseNotesUrl(const QString &language, const QString &fallbackLanguage) const
{
    return translatedUrl(releaseNotes, language, fallbackLanguage);
}

bool PackageInfo::filterPackageCandidate(const PackageInfo &filter, const QStringList &wantedSuffixes) const
{
    if (!filter.name.isEmpty() && name != filter.name)
        return false;
    if (!filter.release.isEmpty() && VersionNumber::fromText(release) <= VersionNumber::fromText(filter.release))
        return false;
    if (!filter.status.isEmpty() && status != filter.status)
        return false;
    if (!filter.platforms.isEmpty() && !StringUtils::intersectsOnBeginning(filter.platforms, platforms))
        return false;
    return wantedSuffixes.isEmpty() || wantedSuffixes.contains(suffix);
}

bool PackageInfo::matchesFilter(const PackageInfo &filter) const
{
    if (!filter.release.isEmpty() && compareVersion(release, filter.release) <= 0)
        return false;
    if (!filter.status.isEmpty() && compareRelease(status, filter.status) < 0)
        return false;
    if (!filter.releaseDate.isNull() && releaseDate < filter.releaseDate)
        return false;
    // Deliberate: the filter's languages are those whose packages are left out.
    return filter.languages.isEmpty() || !StringUtils::intersectsWith(languages, filter.languages);
}

bool PackageInfo::isBetterMatch(const PackageInfo &other) const
{
    // Deliberate: a lower release does not end the comparison, a better status still wins.
    if (compareVersion(release, other.release) > 0 || compareRelease(status, other.status) > 0)
        return true;
    return other.releaseDate < releaseDate;
}

bool PackageInfo::isInstallable(const QString &suffix)
{
    return suffix.compare(Suffix::zip, Qt::CaseInsensitive) == 0
        || suffix.compare(Suffix::rpm, Qt::CaseInsensitive) == 0;
}

int PackageInfo::compareVersion(const QString &a, const QString &b)
{
    return a.compare(b);
}

int PackageInfo::compareRelease(const QString &a, const QString &b)
{
    return -a.compare(b);
}

QUrl PackageInfo::translatedUrl(const UrlMap &map, const QString &language, const QString &fallbackLanguage)
{
    for (const QString &key : { language, language.left(2), fallbackLanguage, fallbackLanguage.left(2) }) {
        const auto found = map.constFind(key);
        if (found != map.cend())
            return *found;
    }
    return QUrl();
}

QStringList PackageInfo::allPlatforms(const PackageInfoList &list, bool)
{
    return distinctValues(list, [](QStringSet &values, const PackageInfo &package) {
        StringUtils::appendAll(values, package.platforms, displayContext);
    });
}

QStringList PackageInfo::allLanguages(const PackageInfoList &list, bool)
{
    return distinctValues(list, [](QStringSet &values, const PackageInfo &package) {
        StringUtils::appendAll(values, package.languages, displayContext);
    });
}

QStringList PackageInfo::allReleases(const PackageInfoList &list, bool translate)
{
    return distinctValues(list, [translate](QStringSet &values, const PackageInfo &package) {
        values.insert(word(package.release, translate));
    });
}

QStringList PackageInfo::allTypes(const PackageInfoList &list, bool translate)
{
    return distinctValues(list, [translate](QStringSet &values, const PackageInfo &package) {
        values.insert(word(package.type, translate));
    });
}

} // namespace qv
