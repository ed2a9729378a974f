#pragma once

#include <QString>

namespace qv {

struct Seal;

// What users read beyond the defaults, where a host has a policy: with the translations "SoftwareUpdatePolicy_*".

/// Why a catalogue with this @p seal was not taken; empty for one that was.
QString refusalText(const Seal &seal);

/// A download has failed, for that @p reason.
QString downloadFailureText(const QString &reason);

} // namespace qv
