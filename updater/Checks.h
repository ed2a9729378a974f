#pragma once

#include "Places.h"

#include <string>

namespace qv {

/// @p exe is a name that can only mean something inside a folder: not empty, not absolute, without "..".
bool staysInside(const std::filesystem::path &exe);

/// Everything that can be known before anything is touched. Throws Failure with the first reason against putting
/// @p newDir, a path from located() or empty, in the place of the installed folder.
void checkEverything(const Places &at, const std::filesystem::path &newDir, const std::filesystem::path &exe);

} // namespace qv
