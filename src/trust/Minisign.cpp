// The format of the minisign tool and the check of a signature. Called by the seal, for a catalogue that has arrived.
#include "Minisign.h"

#include <QList>
#include <QtEndian>

#include <sodium.h>

#include <algorithm>

namespace qv::Minisign {

namespace {

static_assert(sizeof(Key::point) == crypto_sign_PUBLICKEYBYTES);
static_assert(sizeof(Signature::ofFile) == crypto_sign_BYTES);

constexpr char untrustedPrefix[] = "untrusted comment: ";
constexpr char trustedPrefix[] = "trusted comment: ";
constexpr char keyMark[] = "Ed";
constexpr char hashedMark[] = "ED";

/// The bytes that @p text, base64 with its padding and nothing else, stands for; false where they are not @p Size.
template<size_t Size>
bool decode(const QByteArray &text, std::array<unsigned char, Size> &bytes)
{
    // libsodium takes some bytes beyond ASCII for those without their highest bit.
    if (std::any_of(text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; }))
        return false;
    size_t size = 0;
    return sodium_base642bin(bytes.data(), Size, text.constData(), size_t(text.size()), nullptr, &size, nullptr,
                             sodium_base64_VARIANT_ORIGINAL)
        == 0
        && size == Size;
}

/// Cuts @p to.size() bytes from @p bytes, beginning at @p from, which moves behind them.
template<size_t Size, size_t All>
void take(const std::array<unsigned char, All> &bytes, size_t &from, std::array<unsigned char, Size> &to)
{
    std::copy_n(bytes.begin() + from, Size, to.begin());
    from += Size;
}

bool isMarked(const unsigned char *bytes, const char *mark)
{
    return std::equal(mark, mark + 2, bytes);
}

} // namespace

QString keyName(const KeyId &id)
{
    return QString::number(qFromLittleEndian<quint64>(id.data()), 16).toUpper();
}

std::optional<Key> keyFromText(const QString &text)
{
    std::array<unsigned char, 42> bytes;
    if (!decode(text.trimmed().toLatin1(), bytes) || !isMarked(bytes.data(), keyMark))
        return std::nullopt;
    Key key;
    size_t at = 2;
    take(bytes, at, key.id);
    take(bytes, at, key.point);
    return key;
}

std::optional<Signature> signatureFromText(const QByteArray &text)
{
    if (text.size() > longestSignature)
        return std::nullopt;
    QList<QByteArray> lines = text.split('\n');
    if (lines.size() < 4)
        return std::nullopt;
    for (QByteArray &line : lines) {
        while (line.endsWith('\r'))
            line.chop(1);
    }
    std::array<unsigned char, 74> bytes;
    Signature signature;
    if (!lines[0].startsWith(untrustedPrefix) || !decode(lines[1], bytes) || !isMarked(bytes.data(), hashedMark)
        || !lines[2].startsWith(trustedPrefix) || !decode(lines[3], signature.ofComment))
        return std::nullopt;
    size_t at = 2;
    take(bytes, at, signature.keyId);
    take(bytes, at, signature.ofFile);
    signature.trustedComment = lines[2].mid(int(sizeof(trustedPrefix)) - 1);
    return signature;
}

bool isValid(const Signature &signature, const Key &key, const QByteArray &bytes)
{
    if (sodium_init() < 0)
        return false;
    std::array<unsigned char, crypto_generichash_BYTES_MAX> hash;
    crypto_generichash(hash.data(), hash.size(), reinterpret_cast<const unsigned char *>(bytes.constData()),
                       static_cast<unsigned long long>(bytes.size()), nullptr, 0);
    const QByteArray signedComment =
        QByteArray(reinterpret_cast<const char *>(signature.ofFile.data()), int(signature.ofFile.size()))
        + signature.trustedComment;
    return signature.keyId == key.id
        && crypto_sign_verify_detached(signature.ofFile.data(), hash.data(), hash.size(), key.point.data()) == 0
        && crypto_sign_verify_detached(signature.ofComment.data(),
                                       reinterpret_cast<const unsigned char *>(signedComment.constData()),
                                       static_cast<unsigned long long>(signedComment.size()), key.point.data())
        == 0;
}

} // namespace qv::Minisign
