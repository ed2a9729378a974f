#pragma once

#include <filesystem>

namespace qv {

/// One update at a time: a locked file beside the folder. The lock ends with the process, however that ends; a lock
/// file that a killed process left behind locks nobody out. The destructor removes the file.
class Lock
{
public:
    /// Takes the lock or finds it busy; never waits. Throws Failure when the file cannot be made, or is one that
    /// somebody else has put there or could hold.
    explicit Lock(const std::filesystem::path &path);
    ~Lock();
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;

    /// Another process of this user holds it.
    bool isBusy() const { return file < 0; }

private:
    std::filesystem::path path;
    int file = -1;
};

} // namespace qv
