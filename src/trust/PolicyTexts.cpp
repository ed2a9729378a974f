// The texts of policies, all in the context "SoftwareUpdatePolicy" and here alone: scripts/check-translations.cmake
// looks nowhere else for them.
#include "PolicyTexts.h"

#include "Seal.h"

#include <QCoreApplication>
#include <QLocale>

namespace qv {

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

} // namespace qv
