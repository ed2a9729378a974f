#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <system_error>

namespace qv {

/// An open file, closed at the end of its scope. Follows no link in the last name; throws Failure.
struct File
{
    File(const std::filesystem::path &path, int flags, mode_t mode = 0);
    ~File();
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    const int number;
};

/// Something has this name, be it a link to nowhere.
bool isThere(const std::filesystem::path &path);

/// Of @p path itself, also where that is a link. Throws Failure when nothing can be said.
struct stat statusOf(const std::filesystem::path &path);

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

/// Removes the tree, folders closed to their owner included, and follows no link. Returns why something stays.
std::error_code removeTree(const std::filesystem::path &path);

/// Writes all of it, or throws Failure: the file is called @p path.
void writeAll(int file, const char *data, size_t size, const std::filesystem::path &path);

/// Waits until all that was written to the file system of @p folder is on the disk.
void syncFileSystem(const std::filesystem::path &folder);

/// The same for the names in @p folder alone.
void syncFolder(const std::filesystem::path &folder);

} // namespace qv
