// Picks packages from a catalogue: candidates for the client, best matches for queries. Called after every parse.
#include "Selection.h"

#include "PackageIndex.h"
#include "VersionNumber.h"

#include <QMap>

#include <algorithm>

namespace qv {

namespace {

/// Leaves the packages whose release is the newest of all.
void keepNewestRelease(PackageInfoList &packages)
{
    QString highest = QStringLiteral("0");
    VersionNumber highestVersion = VersionNumber::fromText(highest);
    for (const PackageInfo &package : std::as_const(packages)) {
        const VersionNumber version = VersionNumber::fromText(package.release);
        if (version > highestVersion) {
            highest = package.release;
            highestVersion = version;
        }
    }
    // Deliberate: compared as text, of 2.1 and 2.1.0 only the one that came first stays.
    const auto isOlder = [&highest](const PackageInfo &package) { return package.release != highest; };
    packages.erase(std::remove_if(packages.begin(), packages.end(), isOlder), packages.end());
}

void takeCandidate(PackageInfo &package, const PackageInfo &filter, const QString &type,
                   const QStringList &wantedSuffixes, PackageInfoList &candidates)
{
    if (!package.filterPackageCandidate(filter, wantedSuffixes))
        return;
    package.type = type;
    candidates.append(package);
}

} // namespace

PackageInfoList findPackageCandidates(PackageInfoList &packages, const PackageInfo &filter, const QString &type,
                                      const QStringList &wantedSuffixes)
{
    PackageInfoList candidates;
    for (PackageInfo &package : packages)
        takeCandidate(package, filter, type, wantedSuffixes, candidates);
    keepNewestRelease(candidates);
    return candidates;
}

PackageInfoList findPackageCandidates(PackageInfoList &packages, const PackageIndex &index, const PackageInfo &filter,
                                      const QString &type, const QStringList &wantedSuffixes)
{
    if (filter.platforms.isEmpty())
        return findPackageCandidates(packages, filter, type, wantedSuffixes);
    PackageInfoList candidates;
    for (const int position : index.positions(filter.platforms))
        takeCandidate(packages[position], filter, type, wantedSuffixes, candidates);
    keepNewestRelease(candidates);
    return candidates;
}

void eliminateDuplicatePackages(PackageInfoList &packages)
{
    QStringSet known;
    const auto isDuplicate = [&known](const PackageInfo &package) {
        const auto before = known.size();
        known.insert(package.stringID());
        return known.size() == before;
    };
    packages.erase(std::remove_if(packages.begin(), packages.end(), isDuplicate), packages.end());
}

PackageInfoList findBestMatches(const PackageInfoList &packages, const PackageInfo &filter)
{
    QMap<QString, int> best; // position by "type/platform"
    for (int i = 0; i < packages.size(); ++i) {
        const PackageInfo &package = packages.at(i);
        if (!package.matchesFilter(filter))
            continue;
        for (const QString &platform : package.platforms) {
            const QString key = package.type + QLatin1Char('/') + platform;
            const auto current = best.constFind(key);
            if (current == best.cend() || package.isBetterMatch(packages.at(*current)))
                best.insert(key, i);
        }
    }
    PackageInfoList result;
    QSet<int> listed;
    for (const int position : std::as_const(best)) {
        if (!listed.contains(position))
            result.append(packages.at(position));
        listed.insert(position);
    }
    return result;
}

int countNew(const PackageInfoList &packages)
{
    return int(std::count_if(packages.cbegin(), packages.cend(),
                             [](const PackageInfo &package) { return !(package.flags & PackageInfo::PackageKnown); }));
}

} // namespace qv
