// The one moment that matters: two folders change names. Called for the update and for its undoing.
#include "Swap.h"

#include "Failure.h"
#include "FileTree.h"
#include "Log.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>

namespace fs = std::filesystem;

namespace qv {

namespace {

bool move(const fs::path &from, const fs::path &to)
{
    return rename(from.c_str(), to.c_str()) == 0;
}

/// A step of the way back: what it cannot do stays as it is, and is told.
void moveBack(const fs::path &from, const fs::path &to)
{
    if (!move(from, to))
        sayFailed("cannot rename " + from.string() + " back to " + to.string());
}

/// Between the first two renames the folder has no name: no signal but SIGKILL may stop us there.
class SignalsHeld
{
public:
    SignalsHeld()
    {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, &before);
    }
    ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before, nullptr); }
    SignalsHeld(const SignalsHeld &) = delete;
    SignalsHeld &operator=(const SignalsHeld &) = delete;

private:
    sigset_t before;
};

void swapInThreeSteps(const fs::path &one, const fs::path &other, const fs::path &aside)
{
    const SignalsHeld held;
    if (!move(one, aside))
        throw Failure::ofSystem("cannot rename " + one.string());
    if (!move(other, one)) {
        const Failure reason = Failure::ofSystem("cannot rename " + other.string());
        moveBack(aside, one);
        throw reason;
    }
    if (!move(aside, other)) {
        const Failure reason = Failure::ofSystem("cannot rename " + aside.string());
        moveBack(one, other);
        moveBack(aside, one);
        throw reason;
    }
}

} // namespace

void swapFolders(const fs::path &one, const fs::path &other, const fs::path &aside)
{
    if (renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE) == 0)
        return;
    if (errno != EINVAL && errno != ENOSYS)
        throw Failure::ofSystem("cannot swap " + one.string() + " and " + other.string());
    swapInThreeSteps(one, other, aside);
}

void mendSwap(const fs::path &one, const fs::path &other, const fs::path &aside)
{
    if (isThere(aside) && !move(aside, isThere(one) ? other : one))
        throw Failure::ofSystem("cannot rename " + aside.string());
}

} // namespace qv
