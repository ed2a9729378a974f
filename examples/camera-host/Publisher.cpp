// Keys and signatures in the format of minisign. Asked by the demo's server for each catalogue that it hands out.
#include "Publisher.h"

#include <sodium.h>

// Of the key, 8 bytes. The same at each start, as hosts keep the last serial of every name.
static constexpr char name[] = "the demo";

static unsigned char *raw(QByteArray &bytes)
{
    return reinterpret_cast<unsigned char *>(bytes.data());
}

static const unsigned char *raw(const QByteArray &bytes)
{
    return reinterpret_cast<const unsigned char *>(bytes.data());
}

Publisher::Publisher() : publicHalf(crypto_sign_PUBLICKEYBYTES, 0), secretHalf(crypto_sign_SECRETKEYBYTES, 0)
{
    if (sodium_init() < 0 || crypto_sign_keypair(raw(publicHalf), raw(secretHalf)) != 0)
        qFatal("There is no key for the update server");
}

QString Publisher::key() const
{
    return ("Ed" + (name + publicHalf)).toBase64();
}

QByteArray Publisher::sign(const QByteArray &bytes) const
{
    QByteArray hash(crypto_generichash_BYTES_MAX, 0);
    crypto_generichash(raw(hash), size_t(hash.size()), raw(bytes), size_t(bytes.size()), nullptr, 0);
    const QByteArray ofFile = signatureOf(hash), comment = "signed by the demo";
    return "untrusted comment: nobody vouches for this line\n" + ("ED" + (name + ofFile)).toBase64()
        + "\ntrusted comment: " + comment + '\n' + signatureOf(ofFile + comment).toBase64() + '\n';
}

QByteArray Publisher::signatureOf(const QByteArray &bytes) const
{
    QByteArray signature(crypto_sign_BYTES, 0);
    crypto_sign_detached(raw(signature), nullptr, raw(bytes), size_t(bytes.size()), raw(secretHalf));
    return signature;
}
