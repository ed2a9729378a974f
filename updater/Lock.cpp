// The lock beside the folder: taken first, dropped last.
#include "Lock.h"

#include "Failure.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qv {

namespace {

/// The previous holder may have removed the file between our open() and our flock(): then we hold a file that nobody
/// else will ever find.
bool isStillThere(const std::filesystem::path &path, int file)
{
    struct stat held
    {
    }, found {};
    return fstat(file, &held) == 0 && lstat(path.c_str(), &found) == 0 && held.st_ino == found.st_ino
        && held.st_dev == found.st_dev;
}

} // namespace

Lock::Lock(const std::filesystem::path &path) : path(path)
{
    for (;;) {
        file = open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (file < 0)
            throw Failure::ofSystem("cannot make " + path.string());
        const bool taken = flock(file, LOCK_EX | LOCK_NB) == 0;
        if (taken && isStillThere(path, file))
            return;
        const int reason = errno;
        close(file);
        file = -1;
        if (taken)
            continue;
        if (reason == EWOULDBLOCK)
            return;
        errno = reason;
        throw Failure::ofSystem("cannot lock " + path.string());
    }
}

Lock::~Lock()
{
    if (file < 0)
        return;
    unlink(path.c_str());
    close(file);
}

} // namespace qv
