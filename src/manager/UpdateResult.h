#pragma once

#include <QString>

namespace qv {

/// How the update ended by which this program was started, for DownloadManager::lastUpdateResult(). A plain value.
struct UpdateResult
{
    enum Kind {
        None,      ///< no update has started this program, or none that tells
        Updated,   ///< this is the new version
        Unchanged, ///< this is the old version: nothing could be installed
        Reverted,  ///< this is the old version again: the new one failed at once
        Unclear,   ///< this may be either: the old version could not be brought back
    };

    Kind kind = None;
    QString text; ///< why, in the updater's words, which are English; empty after success
};

} // namespace qv
