// Reads the challenges of HTTP Digest and answers them. Called by CameraLink.
#include "HttpDigest.h"

#include <QHash>
#include <QList>

#include <cstring>

namespace qv {

namespace {

/// One scheme of a challenge with its parameters, their names in lower case.
struct Challenge
{
    QByteArray scheme;
    QHash<QByteArray, QByteArray> values;
};

QByteArray takeWord(const QByteArray &header, int &at)
{
    const int begin = at;
    while (at < header.size() && !strchr(" \t,=\"", header.at(at)))
        ++at;
    return header.mid(begin, at - begin);
}

QByteArray takeValue(const QByteArray &header, int &at)
{
    if (at >= header.size() || header.at(at) != '"')
        return takeWord(header, at);
    QByteArray value;
    for (++at; at < header.size() && header.at(at) != '"'; ++at) {
        if (header.at(at) == '\\' && at + 1 < header.size())
            ++at;
        value += header.at(at);
    }
    ++at;
    return value;
}

QList<Challenge> challengesIn(const QByteArray &header)
{
    const auto skip = [&header](const char *signs, int &at) {
        while (at < header.size() && strchr(signs, header.at(at)))
            ++at;
    };
    QList<Challenge> challenges;
    for (int at = 0; at < header.size();) {
        skip(" \t,", at);
        const QByteArray word = takeWord(header, at).toLower();
        skip(" \t", at);
        if (word.isEmpty()) {
            ++at;
        } else if (at < header.size() && header.at(at) == '=') {
            skip(" \t", ++at);
            const QByteArray value = takeValue(header, at);
            if (!challenges.isEmpty())
                challenges.last().values.insert(word, value);
        } else {
            challenges.append({ word, {} });
        }
    }
    return challenges;
}

QByteArray quoted(QByteArray text)
{
    return '"' + text.replace('\\', "\\\\").replace('"', "\\\"") + '"';
}

} // namespace

std::optional<DigestChallenge> readDigestChallenge(const QByteArray &header)
{
    for (const Challenge &challenge : challengesIn(header.left(8192))) {
        DigestChallenge digest;
        digest.realm = challenge.values.value("realm");
        digest.nonce = challenge.values.value("nonce");
        digest.opaque = challenge.values.value("opaque");
        digest.algorithm = challenge.values.value("algorithm");
        QByteArray name = digest.algorithm.toLower();
        digest.isSession = name.endsWith("-sess");
        name.chop(digest.isSession ? 5 : 0);
        if (name == "sha-256")
            digest.hash = QCryptographicHash::Sha256;
        const QByteArray qop = challenge.values.value("qop").toLower().replace(' ', "");
        digest.hasQop = !qop.isEmpty();
        const bool isKnown = name.isEmpty() || name == "md5" || name == "sha-256";
        if (challenge.scheme == "digest" && !digest.nonce.isEmpty() && isKnown
            && (qop.isEmpty() || qop.split(',').contains("auth")))
            return digest;
    }
    return std::nullopt;
}

QByteArray digestAuthorization(const DigestChallenge &challenge, const QByteArray &method, const QByteArray &target,
                               const QString &user, const QString &password, const QByteArray &clientNonce, int count)
{
    const auto hash = [&challenge](const QByteArray &text) {
        return QCryptographicHash::hash(text, challenge.hash).toHex();
    };
    const QByteArray number = QByteArray::number(count, 16).rightJustified(8, '0');
    QByteArray secret = hash(user.toUtf8() + ':' + challenge.realm + ':' + password.toUtf8());
    if (challenge.isSession)
        secret = hash(secret + ':' + challenge.nonce + ':' + clientNonce);
    const QByteArray once = challenge.nonce + (challenge.hasQop ? ':' + number + ':' + clientNonce + ":auth" : "");
    QByteArray answer = "Digest username=" + quoted(user.toUtf8()) + ", realm=" + quoted(challenge.realm)
        + ", nonce=" + quoted(challenge.nonce) + ", uri=" + quoted(target)
        + ", response=" + quoted(hash(secret + ':' + once + ':' + hash(method + ':' + target)));
    if (!challenge.algorithm.isEmpty())
        answer += ", algorithm=" + challenge.algorithm;
    if (!challenge.opaque.isEmpty())
        answer += ", opaque=" + quoted(challenge.opaque);
    if (challenge.hasQop || challenge.isSession)
        answer += ", qop=auth, nc=" + number + ", cnonce=" + quoted(clientNonce);
    return answer;
}

} // namespace qv
