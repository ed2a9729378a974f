// Texts of a catalogue into sizes, dates and package suffixes. Called for each package that is read; what is unreadable
// becomes 0 or null, and only a suspicious suffix is worth a line in the log.
#include "CatalogueValues.h"

#include "Kinds.h"
#include "LogQt.h"
#include "StringUtils.h"

#include <cmath>
#include <initializer_list>

namespace qv {

namespace {

/// @p number read as Qt reads it, cut to a whole one, then shifted: what is shifted out is lost. 0 where unreadable.
qint64 scaledSize(const QString &number, int shift)
{
    bool readable = false;
    const double value = number.toDouble(&readable);
    return readable && value > 0 && value < std::ldexp(1.0, 64) ? qint64(quint64(value) << shift) : 0;
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

qint64 parseFileSize(const QString &text)
{
    // Deliberate: the fraction is cut off before the unit counts, 1.5MB are 1048576 bytes.
    if (text.endsWith(QLatin1String("MB"), Qt::CaseInsensitive))
        return scaledSize(text.chopped(2), 20);
    if (text.endsWith(QLatin1String("kB"), Qt::CaseInsensitive))
        return scaledSize(text.chopped(2), 10);
    return qint64(text.toULongLong());
}

QDateTime parseReleaseDate(const QString &text)
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

QString parsePackageSuffix(const QString &urlText)
{
    const QString suffix = packageSuffix(urlText);
    if (isSuspiciousSuffix(suffix)) {
        const QString shown = StringUtils::withoutPassword(urlText);
        LogQt::write(Log::Error,
                     QStringLiteral("DownloadManager::parsePackageType() -> parsed suspicious package suffix '")
                         + packageSuffix(shown) + QStringLiteral("' in ") + shown);
    }
    return suffix;
}

QString packageSuffix(const QString &urlText)
{
    const QString last = urlText.section(QLatin1Char('.'), -1, -1, QString::SectionSkipEmpty);
    const QString secondToLast = urlText.section(QLatin1Char('.'), -2, -2, QString::SectionSkipEmpty);
    QString suffix = last;
    if (last == Suffix::zip && secondToLast == Suffix::mpkg)
        suffix = secondToLast;
    else if ((last == QLatin1String("gz") || last == QLatin1String("bz2")) && secondToLast == QLatin1String("tar"))
        suffix = secondToLast + QLatin1Char('.') + last;
    return suffix;
}

bool isSuspiciousSuffix(const QString &suffix)
{
    return suffix.size() < 3 || suffix.size() > 7;
}

} // namespace qv
