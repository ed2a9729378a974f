#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace qv {

/// Something has this name, be it a link to nowhere.
bool isThere(const std::filesystem::path &path);

/// Tells one folder from every other on its file system, whatever it is called meanwhile: inode and time of birth.
/// Empty when nothing is there.
std::string identity(const std::filesystem::path &folder);

/// Both are there, and a file may be renamed from one to the other - as far as their device numbers tell.
bool onSameFileSystem(const std::filesystem::path &one, const std::filesystem::path &other);

/// Bytes that a copy of the tree @p from takes at most, on a file system with blocks of 4 KiB.
std::uint64_t spaceForCopy(const std::filesystem::path &from);

/// Copies files, folders and symbolic links with their permission bits (never set-uid, set-gid, sticky), times and,
/// where the caller may, owners. @p to must not exist. Throws Failure at the first thing that cannot be copied, sockets
/// and devices among them, and leaves what it has made so far.
void copyTree(const std::filesystem::path &from, const std::filesystem::path &to);

/// Removes the tree, folders closed to their owner included, and follows no link. False when something stays.
bool removeTree(const std::filesystem::path &path);

/// Waits until all that was written to the file system of @p folder is on the disk.
void syncFileSystem(const std::filesystem::path &folder);

/// The same for the names in @p folder alone.
void syncFolder(const std::filesystem::path &folder);

} // namespace qv
