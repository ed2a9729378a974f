#pragma once

#include <QLocale>
#include <QString>

namespace qv {

struct Seal;

// What users read beyond the defaults, where a host has a policy: with the translations "SoftwareUpdatePolicy_*".

/// Why a catalogue with this @p seal was not taken; empty for one that was.
QString refusalText(const Seal &seal);

/// A download has failed, for that @p reason.
QString downloadFailureText(const QString &reason);

/// "12.3 of 40.0 MB", in the unit of the @p total; "12.3 MB" where that is 0 or less.
QString amountText(qint64 bytes, qint64 total, const QLocale &locale = QLocale::system());

/// How far a download is, @p msElapsed after its first bytes: "12.3 of 40.0 MB, about 2 minutes left". Of the time left
/// nothing is said in the first two seconds, and where nobody knows the @p total.
QString progressText(qint64 bytes, qint64 total, qint64 msElapsed, const QLocale &locale = QLocale::system());

} // namespace qv
