#pragma once

#include "PlatformExport.h"

#include <QDateTime>
#include <QSettings>

namespace qv {

/// Reads and writes single keys of the current group of a settings store. Reading gives the default where the key is
/// missing or does not hold a value of the wanted type.
class QV_PLATFORM_EXPORT Preferences
{
public:
    /// To be called before a store is read or written. Qt decodes all values beside the one that is asked for, and a
    /// damaged list that claims more elements than it holds costs gigabytes or ends the process. Such values, of which
    /// nothing can be read, are taken out of the store's file; all others stay as they are. False when that cannot be
    /// done, or the file has more than 64 MiB: then the store must not be used.
    static bool mend(QSettings &settings);

    /// True and false are stored as "true" and "false"; "1" and "0" are understood too.
    static bool boolValue(const QSettings &settings, const QString &key, bool defaultValue);
    static int intValue(const QSettings &settings, const QString &key, int defaultValue);
    static QString stringValue(const QSettings &settings, const QString &key, const QString &defaultValue);

    /// Date-times are stored as ISO 8601 text in UTC with milliseconds and read back in local time; a null one is
    /// stored as an empty text, which reads as the default.
    static QDateTime dateTimeValue(const QSettings &settings, const QString &key, const QDateTime &defaultValue);
    static void setDateTimeValue(QSettings &settings, const QString &key, const QDateTime &value);
};

} // namespace qv
