#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace qv {

/// What is remembered of the last catalogue that a key has vouched for.
struct SeenSeal
{
    qint64 serial = 0;
    QByteArray hash; ///< SHA-256 of its bytes
};

/// By the name of the key (Minisign::keyName()).
using SeenSeals = QHash<QString, SeenSeal>;

/// Whether a catalogue is what its publisher published last, and if not, why. The seal is a signature of the
/// catalogue's bytes, and two attributes of its root: "serial", a number that grows with each catalogue, and "expires",
/// the time in UTC (ISO 8601) at which somebody who holds new catalogues back is found out.
struct Seal
{
    enum Verdict {
        Accepted,
        NoSignature,
        NotASignature,
        UnknownKey,     ///< none of the keys, or no key at all, made the signature
        WrongSignature, ///< one of the keys made it, but not for these bytes
        NoSerial,       ///< genuine, but without a serial above 0 or without a time in UTC
        OlderThanSeen,  ///< a serial below the last one, or the same one for other bytes
        Expired,
    };

    Verdict verdict = NoSignature;
    QString key;       ///< who is said to have signed; from UnknownKey on
    SeenSeal seal;     ///< of this catalogue; from OlderThanSeen on and when accepted
    QDateTime expires; ///< likewise

    /// One of the keys has signed these bytes, accepted or not.
    bool isGenuine() const { return verdict == Accepted || verdict > WrongSignature; }
};

/// The "serial" of a root; 0 where it is none.
qint64 readSerial(const QString &text);

/// The "expires" of a root, in UTC; invalid where it is none.
QDateTime readExpires(const QString &text);

/// Where the signature lies of a catalogue that came from @p catalogue: beside it, ".minisig" behind its name.
QUrl signatureUrl(const QUrl &catalogue);

/// Examines the seal of the @p catalogue, its bytes as they arrived: @p signature is the text of its ".minisig" file,
/// empty where there is none; @p keys are the keys that are trusted, what is no key among them trusts nobody; @p seen
/// what was accepted before; @p now the time. Nothing of the catalogue is parsed before a key has vouched for it.
Seal examineSeal(const QByteArray &catalogue, const QByteArray &signature, const QStringList &keys,
                 const SeenSeals &seen, const QDateTime &now);

} // namespace qv
