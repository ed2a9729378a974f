#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QUrl>

namespace qv {

/// The files of packages in a folder, before they are uploaded or on the server itself.
class PackageFiles
{
public:
    /// Throws Failure where there is no such folder.
    explicit PackageFiles(const QString &folder);

    /// The file of a package with this address: of "http://host/a/b/c.zip" the first that there is of "a/b/c.zip",
    /// "b/c.zip" and "c.zip" below the folder. Empty where there is none.
    QString find(const QUrl &url) const;

    struct Facts
    {
        qint64 size = 0;
        QByteArray sha256; ///< 64 hexadecimal digits in lower case
    };

    /// Reads each file once. Throws Failure where it cannot be read.
    Facts factsOf(const QString &path);

private:
    QString folder;
    QHash<QString, Facts> known;
};

} // namespace qv
