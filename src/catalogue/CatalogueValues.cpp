// Texts of a catalogue into sizes, dates and package suffixes. Called for each package that is read; what is unreadable
// becomes 0 or null, and only a suspicious suffix is worth a line in the log.
#include "DownloadManager.h"

#include "LogQt.h"

#include <cmath>
#include <initializer_list>

namespace qv {

namespace {

/// @p number read as Qt reads it, cut to a whole one, times @p unit.
qint64 scaledSize(const QString &number, qint64 unit)
{
    bool readable = false;
    const double value = std::trunc(number.toDouble(&readable));
    const double limit = std::ldexp(1.0, 63) / double(unit);
    return readable && value > 0 && value < limit ? qint64(value) * unit : 0;
}

/// The two digits at @p position, or -1.
int twoDigits(const QString &text, int position)
{
    const int tens = text.at(position).unicode() - '0';
    const int ones = text.at(position + 1).unicode() - '0';
    return tens >= 0 && tens <= 9 && ones >= 0 && ones <= 9 ? tens * 10 + ones : -1;
}

/// Reads a number of two digits at each of the @p positions, and between them the characters of @p shape.
bool readDigits(const QString &text, const QString &shape, std::initializer_list<int *> numbers)
{
    if (text.size() != shape.size())
        return false;
    auto number = numbers.begin();
    for (int i = 0; i < shape.size(); ++i) {
        if (shape.at(i) != QLatin1Char('0')) {
            if (text.at(i) != shape.at(i))
                return false;
            continue;
        }
        **number = twoDigits(text, i++);
        if (**number++ < 0)
            return false;
    }
    return true;
}

/// The two usual shapes read by hand: QDateTime::fromString() takes ten times as long. Null for anything else.
QDateTime plainReleaseDate(const QString &text)
{
    static const QString dateShape = QStringLiteral("0000-00-00");
    static const QString dateTimeShape = QStringLiteral("0000-00-00 00:00:00");
    int century = 0, year = 0, month = 0, day = 0, hours = 0, minutes = 0, seconds = 0;
    if (!readDigits(text, dateTimeShape, { &century, &year, &month, &day, &hours, &minutes, &seconds })
        && !readDigits(text, dateShape, { &century, &year, &month, &day }))
        return QDateTime();
    const QTime time(hours, minutes, seconds);
    return time.isValid() ? QDateTime(QDate(century * 100 + year, month, day), time) : QDateTime();
}

} // namespace

qint64 DownloadManager::parseFileSize(const QString &text)
{
    // Deliberate: the fraction is cut off before the unit counts, 1.5MB are 1048576 bytes.
    if (text.endsWith(QLatin1String("MB"), Qt::CaseInsensitive))
        return scaledSize(text.chopped(2), 1 << 20);
    if (text.endsWith(QLatin1String("kB"), Qt::CaseInsensitive))
        return scaledSize(text.chopped(2), 1 << 10);
    const qint64 size = text.toLongLong();
    return size > 0 ? size : 0;
}

QDateTime DownloadManager::parseReleaseDate(const QString &text)
{
    const QDateTime plain = plainReleaseDate(text);
    if (plain.isValid())
        return plain;
    for (const auto &format : { QStringLiteral("yyyy-MM-dd hh:mm:ss"), QStringLiteral("yyyy-MM-dd") }) {
        const QDateTime dateTime = QDateTime::fromString(text, format);
        if (dateTime.isValid())
            return dateTime;
    }
    return QDateTime();
}

QString DownloadManager::parsePackageSuffix(const QString &urlText)
{
    const QString last = urlText.section(QLatin1Char('.'), -1, -1, QString::SectionSkipEmpty);
    const QString secondToLast = urlText.section(QLatin1Char('.'), -2, -2, QString::SectionSkipEmpty);
    QString suffix = last;
    if (last == QLatin1String("zip") && secondToLast == QLatin1String("mpkg"))
        suffix = secondToLast;
    else if ((last == QLatin1String("gz") || last == QLatin1String("bz2")) && secondToLast == QLatin1String("tar"))
        suffix = secondToLast + QLatin1Char('.') + last;
    if (suffix.size() < 3 || suffix.size() > 7)
        LogQt::write(Log::Error,
                     QStringLiteral("DownloadManager::parsePackageType() -> parsed suspicious package suffix '")
                         + suffix + QStringLiteral("' in ") + urlText);
    return suffix;
}

} // namespace qv
