// What the program does, in one line each, on standard error and in the log file beside the folder.
// Everybody speaks through say(); nobody fails because nobody listens.
#include "Log.h"

#include "Failure.h"
#include "Trust.h"

#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace qv {

namespace {

int logFile = -1;

/// Local time to the microsecond, so that the log tells how long the steps took.
std::string timeStamp()
{
    timespec now {};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local {};
    localtime_r(&now.tv_sec, &local);
    char day[32];
    strftime(day, sizeof day, "%Y-%m-%d %H:%M:%S", &local);
    char stamp[64];
    snprintf(stamp, sizeof stamp, "%s.%06ld [%d] ", day, now.tv_nsec / 1000, static_cast<int>(getpid()));
    return stamp;
}

void writeLine(int file, const std::string &line)
{
    if (write(file, line.data(), line.size()) < 0)
        return; // a closed terminal or a full disk is no reason to stop
}

} // namespace

void openLog(const std::filesystem::path &path)
{
    logFile = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0644);
    struct stat status
    {
    };
    if (logFile < 0 || fstat(logFile, &status) != 0) {
        sayFailed("cannot write " + path.string());
    } else if (!isOurs(status)) {
        close(logFile);
        logFile = -1;
        say(path.string() + " is no log of ours");
    }
}

void say(const std::string &text)
{
    writeLine(STDERR_FILENO, "UpdateInstaller: " + text + "\n");
    if (logFile >= 0)
        writeLine(logFile, timeStamp() + text + "\n");
}

void sayFailed(const std::string &doing)
{
    say(Failure::ofSystem(doing).what());
}

} // namespace qv
