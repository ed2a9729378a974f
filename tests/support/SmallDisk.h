#pragma once

#include <QByteArray>

#include <sched.h>
#include <sys/mount.h>

/// A disk of some MiB in the place of a folder, for as long as it lives. The calling thread alone sees it, so that this
/// takes a user who may.
class SmallDisk
{
public:
    SmallDisk(const QByteArray &folder, int MiB) : folder(folder)
    {
        mounted = unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
            && mount("none", folder.constData(), "tmpfs", 0, ("size=" + QByteArray::number(MiB) + "m").constData())
                == 0;
    }
    ~SmallDisk() { umount2(folder.constData(), MNT_DETACH); }

    bool isMounted() const { return mounted; }

private:
    const QByteArray folder;
    bool mounted = false;
};
