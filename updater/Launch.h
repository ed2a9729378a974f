#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>

namespace qv {

/// The calling application was replaced by this program, which therefore inherits its open files, signal settings and
/// timers. Closes, resets and stops them.
void forgetTheCaller();

/// Waits for the end of standard input: a caller that goes on running holds the other end of a pipe, which the system
/// closes with it. False when it is still open after @p seconds.
bool callerEnds(int seconds);

/// Starts @p program without arguments in a session of its own, with the caller's environment. It runs in the folder
/// @p workingDir, or in the program's own where that is gone. Throws Failure when it cannot be executed.
pid_t launch(const std::filesystem::path &program, const std::filesystem::path &workingDir);

/// Waits @p seconds for the started program to fail. Returns how it did ("was killed by signal 11"), or nothing when it
/// still runs or has ended well.
std::string failureWithin(int seconds, pid_t process);

} // namespace qv
