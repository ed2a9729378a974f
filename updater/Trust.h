#pragma once

#include "Places.h"

#include <sys/stat.h>

namespace qv {

/// For root alone, who would run whatever others put there: throws Failure unless the folder @p path and those that
/// lead to it belong to root and can be written by nobody else; but sticky folders (/tmp) may lead there.
void checkFolder(const std::filesystem::path &path);

/// The same for what the folder @p path holds, at any depth.
void checkContent(const std::filesystem::path &path);

/// What stands under this program's own names: throws Failure where no update of this user can have left it. To be
/// asked under the lock.
void checkRemains(const Places &at);

/// A plain file of this user that has no second name, so that nobody else has put it there.
bool isOurs(const struct stat &status);

} // namespace qv
