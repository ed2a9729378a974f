#pragma once

#include <QString>

namespace qv {

struct Seal;

// What users read beyond the defaults, where a host has a policy: with the translations "SoftwareUpdatePolicy_*".

/// Why a catalogue with this @p seal was not taken; empty for one that was.
QString refusalText(const Seal &seal);

/// What keeps a package from replacing the application.
enum class Obstacle {
    NotWritable,      ///< the folder, with its path
    WritableByOthers, ///< likewise, for root
    NoUpdater,        ///< in the folder
    NoProgram,        ///< of that name in the package
};

QString obstacleText(Obstacle obstacle, const QString &name);

/// A download has failed, for that @p reason.
QString downloadFailureText(const QString &reason);

} // namespace qv
