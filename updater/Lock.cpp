// The lock beside the folder: taken first, dropped last.
#include "Lock.h"

#include "Failure.h"
#include "Log.h"
#include "Trust.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qv {

namespace {

constexpr int mostTries = 100; // who removes the file that often does nothing else

/// Nobody else can have opened it, so nobody else holds it.
bool isPrivate(int file)
{
    struct stat status
    {
    };
    return fstat(file, &status) == 0 && isOurs(status) && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

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
    for (int i = 0; i < mostTries; ++i) {
        file = open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
        if (file < 0)
            throw Failure::ofSystem("cannot make " + path.string());
        const bool ours = isPrivate(file);
        const bool taken = ours && flock(file, LOCK_EX | LOCK_NB) == 0;
        if (taken && isStillThere(path, file))
            return;
        const int reason = errno;
        close(file);
        file = -1;
        if (!ours)
            throw Failure(path.string() + " is no lock of ours; look who made it, then remove it");
        if (taken)
            continue;
        if (reason == EWOULDBLOCK)
            return;
        errno = reason;
        throw Failure::ofSystem("cannot lock " + path.string());
    }
    throw Failure("somebody keeps removing " + path.string());
}

Lock::~Lock()
{
    if (file < 0)
        return;
    if (unlink(path.c_str()) != 0)
        sayFailed("cannot remove " + path.string());
    close(file);
}

} // namespace qv
