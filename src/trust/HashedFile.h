#pragma once

#include <QFile>

#include <sodium.h>

namespace qv {

/// A file that computes the SHA-256 (FIPS 180-4) of what is written to it, as it is written: from its first byte to its
/// last; a seek to the first begins anew, no other is for it, nor is reading.
class HashedFile : public QFile
{
public:
    explicit HashedFile(const QString &path);

    /// Of all that was written, as 64 hexadecimal digits in lower case. To be called once, when the file is closed.
    QByteArray takeHash();

    bool seek(qint64 position) override;

protected:
    qint64 writeData(const char *bytes, qint64 size) override;

private:
    crypto_hash_sha256_state state;
};

} // namespace qv
