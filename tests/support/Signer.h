#pragma once

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

/// A publisher: a key pair of the minisign tool, which makes the signatures, too.
class Signer
{
public:
    Signer() { run({ "-G", "-f", "-W", "-p", "public", "-s", "secret" }); }

    /// As it stands in a host's policy.
    QString key() const { return read("public").split('\n').value(1); }

    /// Of the key, as the tool prints it.
    QString name() const { return read("public").split('\n').value(0).split(' ').last(); }

    QByteArray sign(const QByteArray &bytes, const QStringList &options = {}) const
    {
        QFile file(dir.filePath("file"));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush())
            qFatal("no room for the file to sign");
        run(QStringList { "-S", "-s", "secret", "-m", "file", "-x", "signature" } + options);
        return read("signature");
    }

private:
    void run(const QStringList &arguments) const
    {
        QProcess tool;
        tool.setWorkingDirectory(dir.path());
        tool.start("minisign", arguments);
        if (!tool.waitForFinished() || tool.exitCode() != 0)
            qFatal("minisign: %s", tool.readAllStandardError().constData());
    }

    QByteArray read(const QString &name) const
    {
        QFile file(dir.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir dir;
};
