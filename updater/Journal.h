#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace qv {

/// What the next run has to know when this one is killed. It is written once, when the spare folder begins to matter,
/// and removed once, when it ceases to: without a journal a spare folder is rubbish.
struct Journal
{
    std::string oldIdentity;      ///< identity() of the old version's folder, wherever it stands now
    std::string newIdentity;      ///< the same of the folder that the caller brought
    std::filesystem::path newDir; ///< where that stood

    /// Nothing when there is none. Throws Failure when it cannot be read, is damaged or
    /// somebody else's: then only a human can tell.
    static std::optional<Journal> read(const std::filesystem::path &path);

    /// Complete and on the disk, or Failure and not there.
    void write(const std::filesystem::path &path) const;

    /// Throws Failure when the journal stays.
    static void remove(const std::filesystem::path &path);
};

} // namespace qv
