// Who accepts a catalogue, and why not. Called for every catalogue of a host that trusts keys; remembers nothing.
#include "Seal.h"

#include "Kinds.h"
#include "Minisign.h"

#include <QCryptographicHash>
#include <QXmlStreamReader>

#include <algorithm>

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
    serial = readSerial(reader.attributes().value(Word::serial).toString());
    expires = readExpires(reader.attributes().value(Word::expires).toString());
    return serial > 0 && expires.isValid();
}

} // namespace

qint64 readSerial(const QString &text)
{
    return std::max<qint64>(text.toLongLong(), 0);
}

QDateTime readExpires(const QString &text)
{
    const QDateTime expires = QDateTime::fromString(text, Qt::ISODate);
    return expires.timeSpec() == Qt::UTC ? expires : QDateTime();
}

QUrl signatureUrl(const QUrl &catalogue)
{
    QUrl url(catalogue);
    url.setPath(url.path(QUrl::FullyEncoded) + QStringLiteral(".minisig"), QUrl::StrictMode);
    return url;
}

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
