#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <QString>

#include <optional>

namespace qv {

// HTTP Digest: plain functions. Deliberate: Qt's own is not used, as that answers Basic too, at once and unasked, and
// nobody can tell which of the two it is about to answer.

/// What a server asks by "WWW-Authenticate: Digest ...".
struct DigestChallenge
{
    QByteArray realm;
    QByteArray nonce;
    QByteArray opaque;    ///< as the server wants it back; empty: not at all
    QByteArray algorithm; ///< as the server spells it; empty: MD5
    QCryptographicHash::Algorithm hash = QCryptographicHash::Md5;
    bool isSession = false; ///< an algorithm "...-sess"
    bool hasQop = false;    ///< wants a count and a nonce of ours
};

/// The first challenge in @p header that can be answered - MD5 or SHA-256, for a request without its body - whatever
/// others stand around it.
std::optional<DigestChallenge> readDigestChallenge(const QByteArray &header);

/// The header "Authorization" for the request of @p method to @p target, path and query; the @p count-th with that
/// nonce.
QByteArray digestAuthorization(const DigestChallenge &challenge, const QByteArray &method, const QByteArray &target,
                               const QString &user, const QString &password, const QByteArray &clientNonce, int count);

} // namespace qv
