// Processes: getting rid of what the calling application left us, starting a program, watching how it fares.
#include "Launch.h"

#include "Failure.h"

#include <algorithm>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace qv {

namespace {

/// Signals that a failing write() raises where an error code is enough: nobody may be reading our standard error.
bool isHarmless(int number)
{
    return number == SIGPIPE || number == SIGXFSZ;
}

void closeInheritedFiles()
{
    if (syscall(SYS_close_range, 3, ~0U, 0) != 0) {
        for (long file = std::min(sysconf(_SC_OPEN_MAX), 65536L) - 1; file > 2; --file)
            close(static_cast<int>(file));
    }
    int file = 0;
    while (file >= 0 && file <= 2) // no file of ours may become standard error
        file = open("/dev/null", O_RDWR);
    close(file);
}

/// The attributes of a process that inherits nothing of our signals; freed at the end of the scope.
class CleanStart
{
public:
    explicit CleanStart(const fs::path &workingDir)
    {
        sigset_t set;
        posix_spawnattr_init(&attributes);
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        sigemptyset(&set);
        posix_spawnattr_setsigmask(&attributes, &set);
        sigaddset(&set, SIGPIPE);
        sigaddset(&set, SIGXFSZ);
        posix_spawnattr_setsigdefault(&attributes, &set);
        posix_spawn_file_actions_addchdir_np(&actions, workingDir.c_str());
    }
    ~CleanStart()
    {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
    }
    CleanStart(const CleanStart &) = delete;
    CleanStart &operator=(const CleanStart &) = delete;

    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
};

std::string failureIn(int status)
{
    if (WIFSIGNALED(status))
        return "was killed by signal " + std::to_string(WTERMSIG(status));
    if (WEXITSTATUS(status) != 0)
        return "ended with exit code " + std::to_string(WEXITSTATUS(status));
    return {};
}

timespec now()
{
    timespec time {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time;
}

/// The time from now to @p end, negative when that has passed.
timespec timeTo(const timespec &end)
{
    const timespec begin = now();
    timespec left = { end.tv_sec - begin.tv_sec, end.tv_nsec - begin.tv_nsec };
    if (left.tv_nsec < 0) {
        left.tv_nsec += 1000000000;
        --left.tv_sec;
    }
    return left;
}

} // namespace

void forgetTheCaller()
{
    const itimerval never {};
    for (const auto timer : { ITIMER_REAL, ITIMER_VIRTUAL, ITIMER_PROF })
        setitimer(timer, &never, nullptr);
    // Ignored first: that also drops what waits to be delivered.
    for (int number = 1; number < NSIG; ++number)
        signal(number, SIG_IGN);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (int number = 1; number < NSIG; ++number) {
        if (!isHarmless(number))
            signal(number, SIG_DFL);
    }
    closeInheritedFiles();
}

bool callerEnds(int seconds)
{
    timespec end = now();
    end.tv_sec += seconds;
    for (;;) {
        const timespec left = timeTo(end), none {};
        pollfd input { STDIN_FILENO, POLLIN, 0 };
        char ignored[256];
        if (ppoll(&input, 1, left.tv_sec < 0 ? &none : &left, nullptr) > 0
            && read(STDIN_FILENO, ignored, sizeof ignored) <= 0)
            break;
        if (left.tv_sec < 0)
            return false;
    }
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC); // a program that is started reads no pipe of ours
    dup2(nothing, STDIN_FILENO);
    close(nothing);
    return true;
}

pid_t launch(const fs::path &program, const fs::path &workingDir)
{
    std::error_code error;
    const CleanStart start(fs::is_directory(workingDir, error) ? workingDir : program.parent_path());
    std::string name = program.string();
    char *arguments[] = { name.data(), nullptr };
    pid_t process = 0;
    errno = posix_spawn(&process, name.c_str(), &start.actions, &start.attributes, arguments, environ);
    if (errno != 0)
        throw Failure::ofSystem("cannot start " + name);
    return process;
}

std::string failureWithin(int seconds, pid_t process)
{
    sigset_t childEnded;
    sigemptyset(&childEnded);
    sigaddset(&childEnded, SIGCHLD);
    sigprocmask(SIG_BLOCK, &childEnded, nullptr);

    timespec end = now();
    end.tv_sec += seconds;
    for (;;) {
        int status = 0;
        if (waitpid(process, &status, WNOHANG) == process) // the caller may have left us children of its own
            return failureIn(status);
        const timespec left = timeTo(end);
        if (left.tv_sec < 0)
            return {};
        sigtimedwait(&childEnded, nullptr, &left);
    }
}

} // namespace qv
