// Whose folders and files these are. Update asks before it touches anything; lock, journal and log ask of what they
// open.
#include "Trust.h"

#include "Failure.h"
#include "FileTree.h"
#include "Journal.h"

#include <unistd.h>

namespace fs = std::filesystem;

namespace qv {

namespace {

void checkRootsOwn(const fs::path &path, const struct stat &status, bool isSticky)
{
    if (status.st_uid != 0)
        throw Failure(path.string() + " belongs to another user than root");
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0 && !isSticky && !S_ISLNK(status.st_mode))
        throw Failure(path.string() + " can be written by others than root");
}

/// The journal of an interrupted update; an empty one when there is none, or none that can be read: that is told later.
Journal readable(const fs::path &path)
{
    try {
        return Journal::read(path).value_or(Journal());
    } catch (const Failure &) {
        return {};
    }
}

} // namespace

/// From the root of the file system down: what is found in a folder that nobody else can write stays what it is.
void checkFolder(const fs::path &path)
{
    if (geteuid() != 0)
        return;
    fs::path way;
    for (const fs::path &name : path) {
        way /= name;
        const struct stat status = statusOf(way);
        checkRootsOwn(way, status, way != path && (status.st_mode & S_ISVTX) != 0);
    }
}

void checkContent(const fs::path &path)
{
    if (geteuid() != 0)
        return;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(path))
        checkRootsOwn(entry.path(), statusOf(entry.path()), false);
}

/// A folder of another user is known by the journal: it was installed, or brought, when it was written.
void checkRemains(const Places &at)
{
    const char *const foreign = " is not of our making; look at it, then remove it";
    if (isThere(at.journal) && !isOurs(statusOf(at.journal)))
        throw Failure(at.journal.string() + foreign);
    const Journal journal = readable(at.journal);
    for (const fs::path &folder : { at.spare, at.aside }) {
        if (!isThere(folder))
            continue;
        const struct stat status = statusOf(folder);
        const std::string found = identity(folder);
        const bool isKnown = found == journal.oldIdentity || found == journal.newIdentity;
        if (!S_ISDIR(status.st_mode) || (status.st_uid != geteuid() && !isKnown))
            throw Failure(folder.string() + foreign);
    }
}

bool isOurs(const struct stat &status)
{
    return S_ISREG(status.st_mode) && status.st_uid == geteuid() && status.st_nlink == 1;
}

} // namespace qv
