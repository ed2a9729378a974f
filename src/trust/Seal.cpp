// Who accepts a catalogue, and why not. Called for every catalogue of a host that trusts keys; remembers nothing.
#include "Seal.h"

#include "Minisign.h"

#include <QCryptographicHash>
#include <QXmlStreamReader>

namespace qv {

namespace {

std::optional<Minisign::Key> trustedKey(const QStringList &keys, const Minisign::Signature &signature)
{
    for (const QString &text : keys) {
        const auto key = Minisign::keyFromText(text);
        if (key && key->id == signature.keyId)
            return key;
    }
    return std::nullopt;
}

/// Reads what the root of the @p catalogue says; false where it says nothing of use.
bool readRoot(const QByteArray &catalogue, qint64 &serial, QDateTime &expires)
{
    QXmlStreamReader reader(catalogue);
    reader.setNamespaceProcessing(false);
    if (!reader.readNextStartElement())
        return false;
    bool isNumber = false;
    serial = reader.attributes().value(QLatin1String("serial")).toLongLong(&isNumber);
    expires = QDateTime::fromString(reader.attributes().value(QLatin1String("expires")).toString(), Qt::ISODate);
    return isNumber && serial > 0 && expires.isValid() && expires.timeSpec() == Qt::UTC;
}

} // namespace

Seal examineSeal(const QByteArray &catalogue, const QByteArray &signature, const QStringList &keys,
                 const SeenSeals &seen, const QDateTime &now)
{
    Seal result;
    const auto told = [&result](Seal::Verdict verdict) {
        result.verdict = verdict;
        return result;
    };

    if (signature.isEmpty())
        return told(Seal::NoSignature);
    const auto parsed = Minisign::signatureFromText(signature);
    if (!parsed)
        return told(Seal::NotASignature);
    result.key = Minisign::keyName(parsed->keyId);
    const auto key = trustedKey(keys, *parsed);
    if (!key)
        return told(Seal::UnknownKey);
    if (!Minisign::isValid(*parsed, *key, catalogue))
        return told(Seal::WrongSignature);

    if (!readRoot(catalogue, result.seal.serial, result.expires))
        return told(Seal::NoSerial);
    result.seal.hash = QCryptographicHash::hash(catalogue, QCryptographicHash::Sha256);
    const SeenSeal last = seen.value(result.key);
    if (result.seal.serial < last.serial || (result.seal.serial == last.serial && result.seal.hash != last.hash))
        return told(Seal::OlderThanSeen);
    if (result.expires <= now)
        return told(Seal::Expired);
    return told(Seal::Accepted);
}

} // namespace qv
