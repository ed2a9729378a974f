#pragma once

#include <QDateTime>
#include <QString>

namespace qv {

/// Bytes: a number, or one with the unit "kB" or "MB" in any case (1024 and 1024 * 1024), cut to a whole number before
/// the unit counts; 0 where unreadable or negative. Sizes from 2^63 on keep their bits: read the result as unsigned.
qint64 parseFileSize(const QString &text);

/// "yyyy-MM-dd hh:mm:ss" or "yyyy-MM-dd", local time; null where unreadable.
QDateTime parseReleaseDate(const QString &text);

/// What stands behind the last dot, or "tar.gz", "tar.bz2", and "mpkg" for ".mpkg.zip". A suspicious one is logged and
/// returned all the same.
QString parsePackageSuffix(const QString &urlText);

/// The same without the log.
QString packageSuffix(const QString &urlText);

/// Shorter than 3 characters or longer than 7.
bool isSuspiciousSuffix(const QString &suffix);

/// @p text with what nobody sees, and what turns the direction of the text around it, as what it is: <U+202E>. That is
/// up to eight times as long.
QString visible(const QString &text);

} // namespace qv
