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

QString obstacleText(Obstacle obstacle, const QString &name)
{
    switch (obstacle) {
    case Obstacle::NotWritable:
        return QCoreApplication::translate("SoftwareUpdatePolicy",
                                           "The update cannot be installed: you may not write the folder %1.")
            .arg(name);
    case Obstacle::WritableByOthers:
        return QCoreApplication::translate("SoftwareUpdatePolicy",
                                           "The update cannot be installed: others may write the folder %1, too.")
            .arg(name);
    case Obstacle::NoUpdater:
        return QCoreApplication::translate(
                   "SoftwareUpdatePolicy",
                   "The update cannot be installed: the program UpdateInstaller is missing in the folder %1.")
            .arg(name);
    case Obstacle::NoProgram:
        return QCoreApplication::translate("SoftwareUpdatePolicy",
                                           "The update cannot be installed: the package does not hold the program %1.")
            .arg(name);
    }
    return QString();
}

QString downloadFailureText(const QString &reason)
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "Error downloading! %1").arg(reason);
}

QString installQuestion(const QString &package)
{
    return QCoreApplication::translate(
               "SoftwareUpdatePolicy",
               "The package will be downloaded and installed. Your application goes on running.\n\n%1")
        .arg(package);
}

QString installQuestion(int count)
{
    return QCoreApplication::translate(
               "SoftwareUpdatePolicy",
               "%1 packages will be downloaded and installed one after the other. Your application goes on running.")
        .arg(count);
}

QString installNumberText(int number, int count, const QString &package)
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "%1 of %2: %3")
        .arg(QString::number(number), QString::number(count), package);
}

QString installingText()
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "Installing package...");
}

QString cancellingText()
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "The installation is being cancelled...");
}

QString installedText(const QString &package)
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "%1 has been installed.").arg(package);
}

QString notInstalledText(const QString &package)
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "%1 could not be installed.").arg(package);
}

QString installedCountText(int installed, int count)
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "Packages installed: %1 of %2")
        .arg(installed)
        .arg(count);
}

QString installedLine(const QString &package)
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "%1: installed.").arg(package);
}

QString notInstalledLine(const QString &package)
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "%1: not installed.").arg(package);
}

QString cancelledLine(const QString &package)
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "%1: cancelled.").arg(package);
}

QString installerBusyText()
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "The installer is busy with another package.");
}

QString installerSilentText()
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "The installer does not respond.");
}

QString installerGoneText()
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "The installer has ended unexpectedly.");
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
