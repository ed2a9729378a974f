#pragma once

#include "Places.h"

namespace qv {

/// What the program's exit code tells; --help and the manual page list the same.
enum ExitCode {
    Installed = 0,   ///< the new version is installed and was started
    Unchanged = 1,   ///< nothing was changed; the installed program was started again
    WrongUsage = 2,  ///< the command line is wrong; nothing was changed, nothing was started
    SwappedBack = 3, ///< the new version did not stand its trial; the old one is back and was started again
    Busy = 4,        ///< another update of the same folder is under way; nothing was changed, nothing was started
    NeedsHelp = 5,   ///< the old version could not be brought back, or the installed program not be started
    GaveUp = 6       ///< the caller did not end in time; nothing was changed, nothing was started
};

/// What a caller wants beyond the defaults.
struct Options
{
    int secondsToWait = -1; ///< for the end of the caller, see callerEnds(); negative: it has ended
    bool starts = true;     ///< false: no program is started, and a new version is not put on trial
    bool tells = false;     ///< the started program finds the outcome in its environment, as QV_UPDATE_RESULT
    bool discards = false;  ///< the new version goes in any case, not only when it has been installed
};

/// One update of one folder, from the lock to the running program. Killed at any moment it leaves the installed folder
/// whole, old or new; the next update of the same folder, whatever it brings, first ends or undoes this one.
///
/// Where another user could have a hand in it nothing is touched, and the installed program is started again: it is
/// what the caller was.
///
/// The road: the new folder is brought beside the old one, by a rename or by a copy; the journal is written; the two
/// swap names; the new program runs on trial; the journal is removed, and with it goes the old version.
class Update
{
public:
    /// Paths as given by the caller. Throws Failure when @p oldDir names no place for a folder.
    Update(const std::filesystem::path &oldDir, const std::filesystem::path &newDir, const std::filesystem::path &exe,
           const Options &options = {});

    /// Never throws: whatever happens is said, and an installed program that runs is the last thing to give up.
    ExitCode run();

private:
    /// Where the old version stands, by the journal.
    enum Stage { NotSwapped, Swapped, Unrelated };
    Stage stage() const;

    /// Looks after the remains of a killed update. True when this run shall go on where that one was stopped.
    bool resumes();
    ExitCode update();
    void bringIn();
    void swapIn();
    bool passesTrial();
    void finish();
    bool undo();
    bool startInstalled(const std::string &how);
    void sayReason(const std::string &text);
    void tell(const std::string &result) const;
    void discardSpare();
    void discardNew();

    const std::filesystem::path workingDir; // the caller's; by name, as the folder behind it may be swapped
    const Places at;
    const std::filesystem::path newDir; // empty when the caller brings none
    const std::filesystem::path exe;
    const Options options;
    std::string reason; // of the first failure
};

} // namespace qv
