#pragma once

#include <filesystem>

namespace qv {

/// @p path without symbolic links in front of its last name, without slashes behind it. The last name itself may be a
/// link or missing. Empty when @p path is empty, is the root, or its parent folder does not exist.
std::filesystem::path located(const std::filesystem::path &path);

/// Of paths from located(); also where both are the same.
bool isInside(const std::filesystem::path &inner, const std::filesystem::path &outer);

/// The installed folder and the names beside it that belong to this program. After a run that ended by itself only the
/// log stays.
struct Places
{
    explicit Places(const std::filesystem::path &folder);

    std::filesystem::path folder; ///< what is installed, and runs
    std::filesystem::path parent;
    std::filesystem::path spare; ///< the version that is not installed: the new one before the swap, the old one after
    std::filesystem::path aside; ///< only inside a swap that takes three steps
    std::filesystem::path journal; ///< stands as long as the spare folder is whole and matters
    std::filesystem::path lock;
    std::filesystem::path log;
};

} // namespace qv
