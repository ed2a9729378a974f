// Typed access to single settings keys, suspicious of what a hand or another program left there.
#include "Preferences.h"

namespace qv {

bool Preferences::boolValue(const QSettings &settings, const QString &key, bool defaultValue)
{
    const QString text = settings.value(key).toString().trimmed().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("1"))
        return true;
    if (text == QLatin1String("false") || text == QLatin1String("0"))
        return false;
    return defaultValue;
}

int Preferences::intValue(const QSettings &settings, const QString &key, int defaultValue)
{
    bool readable = false;
    const int value = settings.value(key).toInt(&readable);
    return readable ? value : defaultValue;
}

QString Preferences::stringValue(const QSettings &settings, const QString &key, const QString &defaultValue)
{
    const QVariant value = settings.value(key);
    return value.canConvert<QString>() ? value.toString() : defaultValue;
}

QDateTime Preferences::dateTimeValue(const QSettings &settings, const QString &key, const QDateTime &defaultValue)
{
    const QVariant value = settings.value(key);
    const QDateTime dateTime = QDateTime::fromString(value.toString(), Qt::ISODateWithMs);
    return dateTime.isValid() ? dateTime.toLocalTime() : defaultValue;
}

void Preferences::setDateTimeValue(QSettings &settings, const QString &key, const QDateTime &value)
{
    settings.setValue(key, value.toUTC().toString(Qt::ISODateWithMs));
}

} // namespace qv
