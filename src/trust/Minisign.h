#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <optional>

// Signatures of the minisign tool (https://jedisct1.github.io/minisign/): Ed25519 (RFC 8032) over BLAKE2b-512
// (RFC 7693), one key pair a publisher. Verified by libsodium; nothing is signed here.
namespace qv::Minisign {

/// The longest file that counts as a signature, in bytes.
constexpr int longestSignature = 4096;

/// Tells keys apart; it is no secret, and proves nothing.
using KeyId = std::array<unsigned char, 8>;

/// The id as the minisign tool prints it: up to 16 hexadecimal digits, the last byte first.
QString keyName(const KeyId &id);

/// A publisher's public key.
struct Key
{
    KeyId id;
    std::array<unsigned char, 32> point;
};

/// What stands in a ".minisig" file.
struct Signature
{
    KeyId keyId;
    std::array<unsigned char, 64> ofFile;    ///< of the file's hash
    std::array<unsigned char, 64> ofComment; ///< of ofFile and the trusted comment behind it
    QByteArray trustedComment;
};

/// Reads the second line of a ".pub" file, the 56 characters that minisign -G prints. Nothing where it is no such key.
std::optional<Key> keyFromText(const QString &text);

/// Reads a ".minisig" file. What follows its four lines does not count, lines may end in CR LF. Nothing where it is no
/// such file, is longer than longestSignature, or signs the file itself and not its hash (minisign -l).
std::optional<Signature> signatureFromText(const QByteArray &text);

/// Whether @p signature was made with the secret half of @p key, for a file of these @p bytes and for the comment.
bool isValid(const Signature &signature, const Key &key, const QByteArray &bytes);

} // namespace qv::Minisign
