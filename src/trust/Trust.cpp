// The seal of a catalogue, with keys, clock, log and store. Asked by client and manager when catalogue and signature
// are there; leaves behind the serial that counts from then on.
#include "Trust.h"

#include "LogQt.h"
#include "Minisign.h"

#include <QCoreApplication>

#include <algorithm>

namespace qv {

namespace {

constexpr QLatin1String groupName("seals"); // in it one group for each key
constexpr QLatin1String serialKey("serial");
constexpr QLatin1String hashKey("sha256");

QString logged(const Seal &seal)
{
    const QString key = QStringLiteral(" (key %1)").arg(seal.key);
    switch (seal.verdict) {
    case Seal::Accepted:
        return QStringLiteral("accepted") + key;
    case Seal::NoSignature:
        return QStringLiteral("no signature");
    case Seal::NotASignature:
        return QStringLiteral("not a signature of minisign's, or not one of a hash");
    case Seal::UnknownKey:
        return QStringLiteral("signed with a key that is not trusted") + key;
    case Seal::WrongSignature:
        return QStringLiteral("the signature is not that of this catalogue") + key;
    case Seal::NoSerial:
        return QStringLiteral("signed, but without a serial or an expiry that can be read") + key;
    case Seal::OlderThanSeen:
        return QStringLiteral("serial %1 is older than what was seen, or was seen for other bytes")
                   .arg(seal.seal.serial)
            + key;
    case Seal::Expired:
        return QStringLiteral("expired at %1, and it is %2")
                   .arg(seal.expires.toString(Qt::ISODate), QDateTime::currentDateTimeUtc().toString(Qt::ISODate))
            + key;
    }
    return QString();
}

} // namespace

void Trust::setKeys(const QStringList &keys)
{
    this->keys = keys;
    for (const QString &key : keys) {
        if (!Minisign::keyFromText(key))
            LogQt::write(Log::Error, QStringLiteral("UpdatePolicy::trustedKeys -> no public key: ") + key);
    }
}

Seal Trust::examine(const QByteArray &catalogue, const QByteArray &signature)
{
    const Seal seal = examineSeal(catalogue, signature, keys, seen, QDateTime::currentDateTimeUtc());
    if (seal.verdict == Seal::Accepted)
        seen.insert(seal.key, seal.seal);
    else
        LogQt::write(Log::Error, QStringLiteral("the catalogue's seal -> ") + logged(seal));
    return seal;
}

void Trust::keepVouched(PackageInfoList &packages)
{
    const auto isNot = [](const PackageInfo &package) { return package.sha256.isEmpty() || package.fileSize == 0; };
    packages.erase(std::remove_if(packages.begin(), packages.end(), isNot), packages.end());
}

void Trust::load(QSettings &store)
{
    store.beginGroup(groupName);
    for (const QString &key : store.childGroups()) {
        const SeenSeal stored { store.value(key + QLatin1Char('/') + serialKey).toLongLong(),
                                QByteArray::fromHex(store.value(key + QLatin1Char('/') + hashKey).toByteArray()) };
        SeenSeal &known = seen[key];
        if (stored.serial > known.serial)
            known = stored;
    }
    store.endGroup();
}

void Trust::save(QSettings &store) const
{
    if (!isSet())
        return;
    store.beginGroup(groupName);
    for (auto seal = seen.cbegin(); seal != seen.cend(); ++seal) {
        store.setValue(seal.key() + QLatin1Char('/') + serialKey, seal->serial);
        store.setValue(seal.key() + QLatin1Char('/') + hashKey, QString::fromLatin1(seal->hash.toHex()));
    }
    store.endGroup();
}

} // namespace qv
