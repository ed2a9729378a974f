// The questions that are asked before anything is touched.
#include "Checks.h"

#include "Failure.h"
#include "FileTree.h"
#include "Trust.h"

#include <algorithm>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace qv {

namespace {

constexpr std::uint64_t reserve = 16 * 1024 * 1024; // bytes that stay free for the others on that disk

struct stat folderStatus(const fs::path &folder)
{
    const struct stat status = statusOf(folder);
    if (S_ISLNK(status.st_mode))
        throw Failure(folder.string() + " is a symbolic link");
    if (!S_ISDIR(status.st_mode))
        throw Failure(folder.string() + " is not a folder");
    return status;
}

bool isWritable(const fs::path &folder)
{
    return access(folder.c_str(), R_OK | W_OK | X_OK) == 0;
}

/// By its permission bits: on a file system mounted without execution it may wait as well as elsewhere.
void checkProgram(const fs::path &newDir, const fs::path &exe)
{
    const fs::path program = newDir / exe;
    struct stat status
    {
    };
    if (stat(program.c_str(), &status) != 0)
        throw Failure::ofSystem("the new version lacks its program: " + program.string());
    if (!S_ISREG(status.st_mode) || (status.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) == 0)
        throw Failure(program.string() + " is not executable");
    if (!isInside(fs::canonical(program), newDir))
        throw Failure(program.string() + " leads out of its folder");
}

void checkSpace(const fs::path &parent, const fs::path &newDir)
{
    struct statvfs disk
    {
    };
    if (statvfs(parent.c_str(), &disk) != 0)
        throw Failure::ofSystem("cannot read the free space of " + parent.string());
    const std::uint64_t needed = spaceForCopy(newDir) + reserve;
    const std::uint64_t free = static_cast<std::uint64_t>(disk.f_bavail) * disk.f_frsize;
    if (needed > free)
        throw Failure("the new version needs " + std::to_string(needed) + " bytes in " + parent.string() + ", "
                      + std::to_string(free) + " are free");
}

} // namespace

bool staysInside(const fs::path &exe)
{
    return !exe.empty() && !exe.is_absolute() && std::find(exe.begin(), exe.end(), "..") == exe.end();
}

void checkEverything(const Places &at, const fs::path &newDir, const fs::path &exe)
{
    if (newDir.empty() || !isThere(newDir))
        throw Failure("there is no new version" + (newDir.empty() ? std::string() : " in " + newDir.string()));
    const struct stat before = folderStatus(at.folder);
    const struct stat after = folderStatus(newDir);

    if (before.st_dev == after.st_dev && before.st_ino == after.st_ino)
        throw Failure("old and new folder are the same: " + newDir.string());
    if (isInside(newDir, at.folder) || isInside(at.folder, newDir))
        throw Failure("old and new folder are inside each other: " + at.folder.string() + " and " + newDir.string());
    if (!onSameFileSystem(at.folder, at.parent))
        throw Failure(at.folder.string() + " is the root of a file system");
    if (before.st_uid != after.st_uid && !(isWritable(at.folder) && isWritable(newDir)))
        throw Failure("the folders belong to different users: " + at.folder.string() + " and " + newDir.string());
    checkFolder(newDir);
    checkContent(newDir);
    checkProgram(newDir, exe);
    if (!onSameFileSystem(newDir, at.parent))
        checkSpace(at.parent, newDir);
}

} // namespace qv
