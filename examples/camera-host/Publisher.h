#pragma once

#include <QByteArray>
#include <QString>

/// Stands in for the minisign tool: a key pair and its signatures, in the memory of the demo alone.
class Publisher
{
public:
    /// Makes the key pair.
    Publisher();

    /// The public half, as the second line of a ".pub" file has it.
    QString key() const;

    /// The ".minisig" file for one of these @p bytes.
    QByteArray sign(const QByteArray &bytes) const;

private:
    QByteArray signatureOf(const QByteArray &bytes) const;

    QByteArray publicHalf;
    QByteArray secretHalf;
};
