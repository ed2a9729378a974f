// The texts of policies but for those of failures, all in the context "SoftwareUpdatePolicy" and in this folder alone:
// scripts/check-translations.cmake looks nowhere else for them.
#include "PolicyTexts.h"

#include "Seal.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace qv {

namespace {

struct Words
{
    Q_DECLARE_TR_FUNCTIONS(SoftwareUpdatePolicy)
};

QString timeLeftText(double msLeft)
{
    constexpr double msMinute = 60000, minutesHour = 60, minutesDay = 24 * 60;
    const double minutes = std::round(msLeft / msMinute);
    if (minutes < 1)
        return Words::tr("less than a minute left");
    if (minutes < 2)
        return Words::tr("about a minute left");
    if (minutes < minutesHour)
        return Words::tr("about %1 minutes left").arg(int(minutes));
    if (minutes < minutesHour * 1.5)
        return Words::tr("about an hour left");
    if (minutes < minutesDay)
        return Words::tr("about %1 hours left").arg(int(std::round(minutes / minutesHour)));
    return Words::tr("more than a day left");
}

} // namespace

QString refusalText(const Seal &seal)
{
    const auto text = [](const QDateTime &time) {
        return QLocale::system().toString(time.toLocalTime(), QLocale::ShortFormat);
    };
    switch (seal.verdict) {
    case Seal::Accepted:
        return QString();
    case Seal::NoSignature:
    case Seal::NotASignature:
    case Seal::NoSerial:
        return QCoreApplication::translate("SoftwareUpdatePolicy",
                                           "The list of updates is not signed. No update can be offered!");
    case Seal::UnknownKey:
    case Seal::WrongSignature:
        return QCoreApplication::translate(
            "SoftwareUpdatePolicy", "The list of updates is not what the publisher signed. No update can be offered!");
    case Seal::OlderThanSeen:
        return QCoreApplication::translate(
            "SoftwareUpdatePolicy",
            "The list of updates is older than one that was seen before. No update can be offered!");
    case Seal::Expired:
        return QCoreApplication::translate(
                   "SoftwareUpdatePolicy",
                   "The list of updates was valid until %1, and your clock says %2. No update can be offered!")
            .arg(text(seal.expires), text(QDateTime::currentDateTime()));
    }
    return QString();
}

QString downloadFailureText(const QString &reason)
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "Error downloading! %1").arg(reason);
}

QString amountText(qint64 bytes, qint64 total, const QLocale &locale)
{
    if (total <= 0)
        return locale.formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
    double unit = 1;
    while (double(total) / unit >= 1024)
        unit *= 1024;
    return Words::tr("%1 of %2")
        .arg(locale.toString(double(bytes) / unit, 'f', unit > 1 ? 1 : 0),
             locale.formattedDataSize(total, 1, QLocale::DataSizeTraditionalFormat));
}

QString progressText(qint64 bytes, qint64 total, qint64 msElapsed, const QLocale &locale)
{
    constexpr qint64 msUncertain = 2000;
    const QString amount = amountText(bytes, total, locale);
    if (msElapsed < msUncertain || bytes <= 0 || total <= 0)
        return amount;
    const double msLeft = double(msElapsed) / double(bytes) * double(std::max<qint64>(total - bytes, 0));
    return amount + QStringLiteral(", ") + timeLeftText(msLeft);
}

} // namespace qv
