#pragma once

#include "PackageInfo.h"

#include <utility>
#include <vector>

namespace qv {

/// Finds the packages of one catalogue by the beginnings of their platform words: what makes asking a large catalogue
/// about hundreds of camera models cheap. Holds positions in the list; stays right as long as the packages' platforms
/// and their order do. Packages that share their set of platforms cost no more than one.
class SOFTWAREUPDATE_EXPORT PackageIndex
{
public:
    explicit PackageIndex(const PackageInfoList &packages);

    /// The positions, ascending, of the packages with a platform word that begins with one of @p platforms or the
    /// reverse.
    std::vector<int> positions(const QStringSet &platforms) const;

private:
    std::vector<std::vector<int>> groups;                    // the positions of packages that share their set
    std::vector<std::pair<QString, std::vector<int>>> words; // sorted, each once; with the groups that have it
};

} // namespace qv
