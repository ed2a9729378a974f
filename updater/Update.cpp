// The road of one update: settle what a killed one left, check, bring in, swap, try, finish or undo.
// main() calls run(); it leaves the installed folder, a log beside it, and a program that runs.
#include "Update.h"

#include "Checks.h"
#include "Failure.h"
#include "FileTree.h"
#include "Journal.h"
#include "Launch.h"
#include "Lock.h"
#include "Log.h"
#include "Swap.h"
#include "Trust.h"

#include <cstdlib>
#include <ctime>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace qv {

namespace {

constexpr int trialSeconds = 5;

fs::path currentDir()
{
    std::error_code error;
    return fs::current_path(error);
}

/// A copied folder is renamed to this before it is removed: half of it must not be taken for a new version.
fs::path usedUp(const fs::path &newDir)
{
    return newDir.string() + ".update-done";
}

bool moveOrSay(const fs::path &from, const fs::path &to)
{
    const bool moved = rename(from.c_str(), to.c_str()) == 0;
    if (!moved)
        sayFailed("cannot rename " + from.string() + " to " + to.string());
    return moved;
}

bool removeOrSay(const fs::path &path)
{
    const std::error_code error = removeTree(path);
    if (error)
        say("cannot remove all of " + path.string() + ": " + error.message());
    return !error;
}

fs::path locatedFolder(const fs::path &oldDir)
{
    const fs::path folder = located(oldDir);
    if (folder.empty())
        throw Failure("there is no place for a folder called " + oldDir.string());
    return folder;
}

} // namespace

Update::Update(const fs::path &oldDir, const fs::path &newDir, const fs::path &exe, const Options &options)
    : workingDir(currentDir()), at(locatedFolder(oldDir)), newDir(located(newDir)), exe(exe), options(options)
{
}

ExitCode Update::run()
{
    openLog(at.log);
    say("updating " + at.folder.string() + " from \"" + newDir.string() + "\"");
    ExitCode outcome = GaveUp;
    if (options.secondsToWait >= 0)
        say("waiting for the caller to end");
    if (options.secondsToWait < 0 || callerEnds(options.secondsToWait))
        outcome = update();
    else
        say("the caller has not ended in time, giving up");
    if (options.discards && outcome != Installed && outcome != NeedsHelp)
        discardNew();
    return outcome;
}

ExitCode Update::update()
{
    try {
        checkFolder(at.parent);
        if (isThere(at.folder))
            checkFolder(at.folder);
        const Lock lock(at.lock);
        if (lock.isBusy()) {
            say("another update of this folder is under way");
            return Busy;
        }
        checkRemains(at);
        ExitCode outcome = Unchanged;
        try {
            if (!resumes()) {
                checkEverything(at, newDir, exe);
                bringIn();
            }
            swapIn();
            if (passesTrial()) {
                finish();
                return Installed;
            }
            outcome = SwappedBack;
        } catch (const std::exception &failure) {
            sayReason(failure.what());
        }
        const bool undone = undo();
        const char *const how = !undone ? "unclear" : outcome == SwappedBack ? "reverted" : "unchanged";
        return startInstalled(how) && undone ? outcome : NeedsHelp;
    } catch (const std::exception &failure) { // no lock, or not our ground: touch nothing
        sayReason(failure.what());
        return startInstalled("unchanged") ? Unchanged : NeedsHelp;
    }
}

Update::Stage Update::stage() const
{
    const std::string old = Journal::read(at.journal).value_or(Journal()).oldIdentity;
    if (identity(at.folder) == old)
        return NotSwapped;
    return identity(at.spare) == old ? Swapped : Unrelated;
}

bool Update::resumes()
{
    const std::optional<Journal> journal = Journal::read(at.journal);
    if (journal) {
        mendSwap(at.folder, at.spare, at.aside);
        const bool bringsAnother = isThere(newDir) && identity(newDir) != journal->newIdentity;
        if (isThere(at.spare) && !bringsAnother && stage() != Unrelated) {
            say("an update was interrupted here; going on with it");
            return true;
        }
        say("an update was interrupted here; undoing it");
    }
    if (!undo())
        throw Failure("the interrupted update could not be undone");
    return false;
}

/// A journal promises a whole spare folder, even after a power cut: what it promises is on the disk before it is.
void Update::bringIn()
{
    const Journal journal { identity(at.folder), identity(newDir), newDir };
    if (onSameFileSystem(newDir, at.parent)) {
        syncFileSystem(newDir);
        journal.write(at.journal);
        if (moveOrSay(newDir, at.spare))
            return;
        Journal::remove(at.journal);
    }
    say("copying the new version to the file system of the old one");
    copyTree(newDir, at.spare);
    syncFileSystem(at.spare);
    journal.write(at.journal);
}

void Update::swapIn()
{
    if (stage() == Swapped)
        return;
    struct stat old
    {
    };
    if (stat(at.folder.c_str(), &old) != 0 || chmod(at.spare.c_str(), old.st_mode & 07777) != 0) // unpacked: 0700
        throw Failure::ofSystem("cannot give the new version the permissions of the old one");
    say("the new version is ready");
    swapFolders(at.folder, at.spare, at.aside);
    say("old and new version are swapped");
}

bool Update::passesTrial()
{
    if (!options.starts)
        return true;
    try {
        tell("updated");
        const pid_t process = launch(at.folder / exe, workingDir);
        say("started " + (at.folder / exe).string() + " as process " + std::to_string(process));
        const std::string failure = failureWithin(trialSeconds, process);
        if (failure.empty())
            return true;
        sayReason("the new program " + failure);
    } catch (const Failure &failure) {
        sayReason(failure.what());
    }
    return false;
}

/// The new version has won: from here on nothing leads back, and a failure costs disk space only.
void Update::finish()
{
    try {
        const Journal journal = Journal::read(at.journal).value();
        if (identity(journal.newDir) == journal.newIdentity) // copied: it still stands there, too
            moveOrSay(journal.newDir, usedUp(journal.newDir));
        removeOrSay(usedUp(journal.newDir));
        Journal::remove(at.journal);
        say("the new version is installed");
        discardSpare();
    } catch (const std::exception &failure) {
        say(failure.what());
    }
}

/// Puts the old version back in its place and the new one back to where it came from. False when the installed folder
/// is not what it was.
bool Update::undo()
{
    try {
        const std::optional<Journal> journal = Journal::read(at.journal);
        if (journal) {
            mendSwap(at.folder, at.spare, at.aside);
            if (stage() == Swapped) {
                swapFolders(at.folder, at.spare, at.aside);
                say("the old version is back in its place");
            }
            // Where the new version had been copied it never left.
            if (isThere(at.spare) && identity(journal->newDir) != journal->newIdentity
                && moveOrSay(at.spare, journal->newDir))
                say("the new version is back in " + journal->newDir.string());
            removeOrSay(usedUp(journal->newDir));
            Journal::remove(at.journal);
        }
        discardSpare();
        return true;
    } catch (const std::exception &failure) {
        say(failure.what());
        return false;
    }
}

/// @p how it stands there goes with the reason.
bool Update::startInstalled(const std::string &how)
{
    if (!options.starts)
        return true;
    try {
        tell(how + ": " + reason);
        launch(at.folder / exe, workingDir);
        say("started " + (at.folder / exe).string() + " again");
        return true;
    } catch (const Failure &failure) {
        say(failure.what());
        return false;
    }
}

void Update::sayReason(const std::string &text)
{
    if (reason.empty())
        reason = text;
    say(text);
}

void Update::tell(const std::string &result) const
{
    if (options.tells)
        setenv("QV_UPDATE_RESULT", result.c_str(), 1);
}

/// What cannot be removed (files of another user, say) must not be in the way of all later updates.
void Update::discardSpare()
{
    const fs::path leftover = at.spare.string() + "-" + std::to_string(time(nullptr));
    if (!removeOrSay(at.spare) && moveOrSay(at.spare, leftover))
        say("what remains of it is called " + leftover.string());
}

/// Never what is installed, whatever the caller takes for new; and only where nobody else can put another folder in its
/// place meanwhile.
void Update::discardNew()
{
    try {
        if (!isThere(newDir) || identity(newDir) == identity(at.folder) || isInside(newDir, at.folder)
            || isInside(at.folder, newDir))
            return;
        checkFolder(newDir.parent_path());
        if (moveOrSay(newDir, usedUp(newDir)))
            removeOrSay(usedUp(newDir));
    } catch (const Failure &failure) {
        say(failure.what());
    }
}

} // namespace qv
