// Looks packages up by platform. Called by the selection of candidates, once for each camera model of a check.
#include "PackageIndex.h"

#include <QHash>

#include <algorithm>

namespace qv {

namespace {

/// Ascending, each once. Few are sorted, many ticked off: every camera may find nearly all, through many words.
void sortOnce(std::vector<int> &numbers)
{
    const size_t end = numbers.empty() ? 0 : size_t(*std::max_element(numbers.cbegin(), numbers.cend())) + 1;
    if (numbers.size() < end / 16) {
        std::sort(numbers.begin(), numbers.end());
        numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
        return;
    }
    std::vector<char> isThere(end);
    for (const int number : numbers)
        isThere[size_t(number)] = 1;
    numbers.clear();
    for (size_t number = 0; number < end; ++number) {
        if (isThere[number])
            numbers.push_back(int(number));
    }
}

} // namespace

PackageIndex::PackageIndex(const PackageInfoList &packages)
{
    QHash<const QString *, int> groupOf; // copies of a set hold the same words
    QHash<QString, std::vector<int>> groupsOf;
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
            groupsOf[word].push_back(int(groups.size()));
        groups.push_back({ i });
    }
    words.reserve(size_t(groupsOf.size()));
    for (auto word = groupsOf.begin(); word != groupsOf.end(); ++word)
        words.emplace_back(word.key(), std::move(*word));
    std::sort(words.begin(), words.end());
}

std::vector<int> PackageIndex::positions(const QStringSet &platforms) const
{
    std::vector<int> found; // groups
    const auto firstNotBefore = [this](const QString &word) {
        return std::lower_bound(words.cbegin(), words.cend(), word,
                                [](const auto &entry, const QString &text) { return entry.first < text; });
    };
    const auto add = [&found](const auto &entry) {
        found.insert(found.end(), entry.second.cbegin(), entry.second.cend());
    };
    for (const QString &platform : platforms) {
        // The words that begin with the platform stand together; those that it begins with are its own beginnings.
        for (auto word = firstNotBefore(platform); word != words.cend() && word->first.startsWith(platform); ++word)
            add(*word);
        for (int length = 1; length < platform.size(); ++length) {
            const QString beginning = platform.left(length);
            const auto word = firstNotBefore(beginning);
            if (word != words.cend() && word->first == beginning)
                add(*word);
        }
    }
    sortOnce(found);
    std::vector<int> packages;
    for (const int group : found) {
        for (const int position : groups[size_t(group)])
            packages.push_back(position);
    }
    sortOnce(packages);
    return packages;
}

} // namespace qv
