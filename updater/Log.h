#pragma once

#include <filesystem>
#include <string>

namespace qv {

/// From now on say() also appends to the file @p path. Where that cannot be opened or is somebody else's,
/// standard error has to do.
void openLog(const std::filesystem::path &path);

/// Writes one line: to standard error behind the program's name, to the log file behind date, time and process.
void say(const std::string &text);

/// The same of what could not be done, with the reason that errno holds.
void sayFailed(const std::string &doing);

} // namespace qv
