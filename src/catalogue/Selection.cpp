// Picks packages from a catalogue: candidates for the client, best matches for queries. Called after every parse.
#include "Selection.h"

#include "Kinds.h"
#include "PackageIndex.h"
#include "VersionNumber.h"

#include <QHash>
#include <QMap>

#include <algorithm>
#include <utility>
#include <vector>

namespace qv {

namespace {

/// Collects what carries the newest release of all that is offered to it.
///
/// Deliberate: compared as text, of 2.1 and 2.1.0 only the one that came first stays.
template<class Version, class Entry>
class Newest
{
public:
    explicit Newest(const Version &zero) : version(zero) { }

    void offer(const Version &itsVersion, const QString &itsRelease, const Entry &entry)
    {
        if (itsVersion > version) {
            version = itsVersion;
            release = itsRelease;
            entries.clear();
        }
        if (itsRelease == release)
            entries.append(entry);
    }

    QList<Entry> entries;

private:
    Version version;
    QString release = QStringLiteral("0");
};

/// As Newest, for one filter, each version parsed once. The packages stay where they are meanwhile.
class Candidates
{
public:
    Candidates(const PackageInfo &filter, const QString &type, const QStringList &wantedSuffixes)
        : filter(filter), installed(VersionNumber::fromText(filter.release)), type(type), wantedSuffixes(wantedSuffixes)
    {
        rest.release.clear();
    }

    void take(PackageInfo &package)
    {
        const VersionNumber version = VersionNumber::fromText(package.release);
        if ((!filter.release.isEmpty() && version <= installed)
            || !package.filterPackageCandidate(rest, wantedSuffixes))
            return;
        package.type = type;
        newest.offer(version, package.release, &package);
    }

    PackageInfoList packages() const
    {
        PackageInfoList copies;
        for (const PackageInfo *package : newest.entries)
            copies.append(*package);
        return copies;
    }

private:
    const PackageInfo &filter;
    PackageInfo rest = filter; // without the release
    const VersionNumber installed;
    const QString &type;
    const QStringList &wantedSuffixes;
    Newest<VersionNumber, const PackageInfo *> newest { VersionNumber() };
};

/// The releases of a list in the order of their versions: numbers compare where hundreds of filters look at each.
class Ranks
{
public:
    explicit Ranks(const PackageInfoList &packages)
    {
        QHash<QString, int> known; // position in sorted
        std::vector<std::pair<VersionNumber, int>> sorted;
        for (const PackageInfo &package : packages) {
            auto one = known.constFind(package.release);
            if (one == known.cend()) {
                one = known.insert(package.release, int(sorted.size()));
                sorted.emplace_back(VersionNumber::fromText(package.release), *one);
            }
            ranks.push_back(*one);
        }
        std::sort(sorted.begin(), sorted.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
        std::vector<int> rankOf(sorted.size());
        for (const auto &[version, number] : sorted) {
            if (versions.empty() || versions.back() < version)
                versions.push_back(version);
            rankOf[size_t(number)] = int(versions.size());
        }
        for (int &rank : ranks)
            rank = rankOf[size_t(rank)];
    }

    int at(int position) const { return ranks[size_t(position)]; }

    /// What has this @p rank, none if 0, is newer than @p version.
    bool isNewer(int rank, const VersionNumber &version) const
    {
        return rank > 0 && version < versions[size_t(rank) - 1];
    }

    /// Of the newest that is not newer than @p version; 0 where all are.
    int notAbove(const VersionNumber &version) const
    {
        return int(std::upper_bound(versions.cbegin(), versions.cend(), version) - versions.cbegin());
    }

private:
    std::vector<int> ranks;              // by position
    std::vector<VersionNumber> versions; // ascending, each once: the first has rank 1
};

} // namespace

PackageInfoList findPackageCandidates(PackageInfoList &packages, const PackageInfo &filter, const QString &type,
                                      const QStringList &wantedSuffixes)
{
    Candidates candidates(filter, type, wantedSuffixes);
    for (PackageInfo &package : packages)
        candidates.take(package);
    return candidates.packages();
}

PackageInfoList findPackageCandidates(PackageInfoList &packages, const PackageIndex &index, const PackageInfo &filter,
                                      const QString &type, const QStringList &wantedSuffixes)
{
    if (filter.platforms.isEmpty())
        return findPackageCandidates(packages, filter, type, wantedSuffixes);
    Candidates candidates(filter, type, wantedSuffixes);
    for (const int position : index.positions(filter.platforms))
        candidates.take(packages[position]);
    return candidates.packages();
}

PackageInfoList findFirmware(const PackageInfoList &packages, const SoftUpCurrentCameraVersions &cameras,
                             const QString &status)
{
    if (cameras.isEmpty())
        return PackageInfoList();
    const PackageIndex index(packages);
    const Ranks ranks(packages);
    const int zero = ranks.notAbove(VersionNumber());
    std::vector<bool> isTaken(size_t(packages.size()));
    QHash<QString, int> newestOf; // rank of what there is for a model; 0 once that has been found
    PackageInfoList found;
    for (const auto &camera : cameras) {
        const auto known = newestOf.constFind(camera.first);
        if (known != newestOf.cend() && !ranks.isNewer(*known, camera.second))
            continue;
        Newest<int, int> newest(zero);
        for (const int position : index.positions({ camera.first })) {
            const PackageInfo &package = packages.at(position);
            if (status.isEmpty() || package.status == status)
                newest.offer(ranks.at(position), package.release, position);
        }
        const int rank = newest.entries.isEmpty() ? 0 : ranks.at(newest.entries.first());
        const bool isNewer = ranks.isNewer(rank, camera.second);
        newestOf.insert(camera.first, isNewer ? 0 : rank);
        if (!isNewer)
            continue;
        for (const int position : std::as_const(newest.entries)) {
            if (isTaken[size_t(position)])
                continue;
            isTaken[size_t(position)] = true;
            found.append(packages.at(position));
            found.last().type = Kind::cameraFirmware;
        }
    }
    eliminateDuplicatePackages(found);
    return found;
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
