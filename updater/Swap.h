#pragma once

#include <filesystem>

namespace qv {

/// Gives the folders @p one and @p other, both there and on one file system, each other's name: in one atomic step, or
/// on file systems without it in three renames by way of the free name @p aside. Throws Failure with both where they
/// were, or says what of them is left under another name.
void swapFolders(const std::filesystem::path &one, const std::filesystem::path &other,
                 const std::filesystem::path &aside);

/// Ends a swap that was killed between its renames, back or forth, so that @p aside is free and @p one is there again.
/// Does nothing after any other swap.
void mendSwap(const std::filesystem::path &one, const std::filesystem::path &other, const std::filesystem::path &aside);

} // namespace qv
