// Looks packages up by platform. Called by the selection of candidates, once for each camera model of a check.
#include "PackageIndex.h"

#include <QHash>

#include <algorithm>

namespace qv {

PackageIndex::PackageIndex(const PackageInfoList &packages)
{
    QHash<const QString *, int> groupOf; // copies of a set hold the same words
    for (int i = 0; i < packages.size(); ++i) {
        const QStringSet &platforms = packages.at(i).platforms;
        if (platforms.isEmpty())
            continue;
        const auto known = groupOf.constFind(&*platforms.cbegin());
        if (known != groupOf.cend()) {
            groups[size_t(*known)].push_back(i);
            continue;
        }
        groupOf.insert(&*platforms.cbegin(), int(groups.size()));
        for (const QString &word : platforms)
            words.emplace_back(word, int(groups.size()));
        groups.push_back({ i });
    }
    std::sort(words.begin(), words.end());
}

std::vector<int> PackageIndex::positions(const QStringSet &platforms) const
{
    std::vector<int> found; // groups
    const auto firstNotBefore = [this](const QString &word) {
        return std::lower_bound(words.cbegin(), words.cend(), std::make_pair(word, 0));
    };
    for (const QString &platform : platforms) {
        // The words that begin with the platform stand together; those that it begins with are its own beginnings.
        for (auto word = firstNotBefore(platform); word != words.cend() && word->first.startsWith(platform); ++word)
            found.push_back(word->second);
        for (int length = 1; length < platform.size(); ++length) {
            const QString beginning = platform.left(length);
            for (auto word = firstNotBefore(beginning); word != words.cend() && word->first == beginning; ++word)
                found.push_back(word->second);
        }
    }
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    std::vector<int> packages;
    for (const int group : found)
        packages.insert(packages.end(), groups[size_t(group)].cbegin(), groups[size_t(group)].cend());
    std::sort(packages.begin(), packages.end());
    return packages;
}

} // namespace qv
