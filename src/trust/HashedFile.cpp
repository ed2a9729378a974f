// The hash of a package, while it streams into its file. Made by the download manager for packages that announce one.
#include "HashedFile.h"

#include <array>

namespace qv {

HashedFile::HashedFile(const QString &path) : QFile(path)
{
    crypto_hash_sha256_init(&state);
}

QByteArray HashedFile::takeHash()
{
    std::array<unsigned char, crypto_hash_sha256_BYTES> hash;
    crypto_hash_sha256_final(&state, hash.data());
    return QByteArray(reinterpret_cast<const char *>(hash.data()), int(hash.size())).toHex();
}

bool HashedFile::seek(qint64 position)
{
    if (position == 0)
        crypto_hash_sha256_init(&state);
    return QFile::seek(position);
}

qint64 HashedFile::writeData(const char *bytes, qint64 size)
{
    const qint64 written = QFile::writeData(bytes, size);
    if (written > 0)
        crypto_hash_sha256_update(&state, reinterpret_cast<const unsigned char *>(bytes),
                                  static_cast<unsigned long long>(written));
    return written;
}

} // namespace qv
