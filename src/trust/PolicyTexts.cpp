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

QString downloadFailureText(const QString &reason)
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "Error downloading! %1").arg(reason);
}

} // namespace qv
