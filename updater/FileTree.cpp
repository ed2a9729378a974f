// Whole folders: told apart, measured, copied, removed, brought safely to the disk.
#include "FileTree.h"

#include "Failure.h"

#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace qv {

namespace {

/// Owner first: changing it would drop permission bits. Only root can give files away, the others keep their own.
void copyAttributes(const struct stat &status, const fs::path &to)
{
    const bool isLink = S_ISLNK(status.st_mode);
    [[maybe_unused]] const int ignored = lchown(to.c_str(), status.st_uid, status.st_gid);
    if (!isLink && chmod(to.c_str(), status.st_mode & 0777) != 0)
        throw Failure::ofSystem("cannot set the permissions of " + to.string());
    const timespec times[] = { status.st_atim, status.st_mtim };
    if (utimensat(AT_FDCWD, to.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
        throw Failure::ofSystem("cannot set the time of " + to.string());
}

void copyFile(const fs::path &from, const fs::path &to)
{
    const File in(from, O_RDONLY);
    const File out(to, O_WRONLY | O_CREAT | O_EXCL, 0600);
    std::vector<char> block(256 * 1024);
    for (;;) {
        const ssize_t got = read(in.number, block.data(), block.size());
        if (got < 0)
            throw Failure::ofSystem("cannot read " + from.string());
        if (got == 0)
            return;
        writeAll(out.number, block.data(), static_cast<size_t>(got), to);
    }
}

} // namespace

File::File(const fs::path &path, int flags, mode_t mode)
    : number(open(path.c_str(), flags | O_NOFOLLOW | O_CLOEXEC, mode))
{
    if (number < 0)
        throw Failure::ofSystem("cannot open " + path.string());
}

File::~File()
{
    close(number);
}

bool isThere(const fs::path &path)
{
    struct stat status
    {
    };
    return lstat(path.c_str(), &status) == 0;
}

struct stat statusOf(const fs::path &path)
{
    struct stat status
    {
    };
    if (lstat(path.c_str(), &status) != 0)
        throw Failure::ofSystem("cannot read " + path.string());
    return status;
}

std::string identity(const fs::path &folder)
{
    struct statx status
    {
    };
    if (statx(AT_FDCWD, folder.c_str(), AT_SYMLINK_NOFOLLOW, STATX_INO | STATX_BTIME, &status) != 0)
        return {};
    return std::to_string(status.stx_ino) + "/" + std::to_string(status.stx_btime.tv_sec) + "."
        + std::to_string(status.stx_btime.tv_nsec);
}

bool onSameFileSystem(const fs::path &one, const fs::path &other)
{
    return statusOf(one).st_dev == statusOf(other).st_dev;
}

std::uint64_t spaceForCopy(const fs::path &from)
{
    constexpr std::uint64_t block = 4096;
    std::uint64_t bytes = block;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(from)) {
        const std::uint64_t size = entry.is_regular_file() && !entry.is_symlink() ? entry.file_size() : 0;
        bytes += (size / block + 2) * block;
    }
    return bytes;
}

void copyTree(const fs::path &from, const fs::path &to)
{
    const struct stat status = statusOf(from);
    if (S_ISDIR(status.st_mode)) {
        if (mkdir(to.c_str(), 0700) != 0)
            throw Failure::ofSystem("cannot make " + to.string());
        for (const fs::directory_entry &entry : fs::directory_iterator(from))
            copyTree(entry.path(), to / entry.path().filename());
    } else if (S_ISLNK(status.st_mode)) {
        fs::copy_symlink(from, to);
    } else if (S_ISREG(status.st_mode)) {
        copyFile(from, to);
    } else {
        throw Failure(from.string() + " is neither file nor folder nor link");
    }
    copyAttributes(status, to);
}

std::error_code removeTree(const fs::path &path)
{
    std::error_code error;
    fs::remove_all(path, error);
    if (!error)
        return error;

    const auto unlock = [&error](const fs::path &folder) {
        fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add | fs::perm_options::nofollow, error);
    };
    unlock(path);
    for (fs::recursive_directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->is_directory(error) && !entry->is_symlink(error))
            unlock(entry->path());
    }
    fs::remove_all(path, error);
    return error;
}

void writeAll(int file, const char *data, size_t size, const fs::path &path)
{
    while (size > 0) {
        const ssize_t put = write(file, data, size);
        if (put < 0)
            throw Failure::ofSystem("cannot write " + path.string());
        data += put;
        size -= static_cast<size_t>(put);
    }
}

void syncFileSystem(const fs::path &folder)
{
    const File opened(folder, O_RDONLY | O_DIRECTORY);
    if (syncfs(opened.number) != 0)
        throw Failure::ofSystem("cannot bring " + folder.string() + " to the disk");
}

void syncFolder(const fs::path &folder)
{
    const File opened(folder, O_RDONLY | O_DIRECTORY);
    if (fsync(opened.number) != 0 && errno != EINVAL)
        throw Failure::ofSystem("cannot bring " + folder.string() + " to the disk");
}

} // namespace qv
