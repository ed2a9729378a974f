// Looks packages up by platform. Called by the selection of candidates, once for each camera model of a check.
#include "PackageIndex.h"

#include <algorithm>

namespace qv {

PackageIndex::PackageIndex(const PackageInfoList &packages)
{
    for (int i = 0; i < packages.size(); ++i) {
        for (const QString &word : packages.at(i).platforms)
            words.emplace_back(word, i);
    }
    std::sort(words.begin(), words.end());
}

std::vector<int> PackageIndex::positions(const QStringSet &platforms) const
{
    std::vector<int> found;
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
    return found;
}

} // namespace qv
