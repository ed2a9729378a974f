// From the address of a package to its file on this machine, and what a catalogue says of that. Called by "seal" and
// by "lint" with --packages.
#include "PackageFiles.h"

#include "Catalogue.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

namespace qv {

PackageFiles::PackageFiles(const QString &folder) : folder(folder)
{
    if (!QFileInfo(folder).isDir())
        throw Failure(folder + QStringLiteral(": no such folder"));
}

QString PackageFiles::find(const QUrl &url) const
{
    QStringList names = url.path(QUrl::FullyDecoded).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    if (names.contains(QLatin1String("..")))
        return QString();
    for (; !names.isEmpty(); names.removeFirst()) {
        const QString path = QDir(folder).filePath(names.join(QLatin1Char('/')));
        if (QFileInfo(path).isFile())
            return path;
    }
    return QString();
}

PackageFiles::Facts PackageFiles::factsOf(const QString &path)
{
    const auto before = known.constFind(path);
    if (before != known.cend())
        return *before;
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        throw Failure(path + QStringLiteral(": ") + file.errorString());
    return *known.insert(path, { file.pos(), hash.result().toHex() });
}

} // namespace qv
