// The archive as the GUI thread sees it: listed, unpacked under a progress dialog. Called where
// the user waits; leaves a whole folder or an empty one.
#include "ZipReader.h"
#include "IOException.h"
#include "ZipExtractor.h"

#include <QSet>

namespace qv {

struct ZipReader::Contents
{
    std::vector<ZipEntry> entries;
};

ZipReader::ZipReader(const QString &file, QObject *parent)
    : ZipDevice(parent), archive(file), contents(std::make_unique<Contents>())
{
}

ZipReader::~ZipReader() = default;

bool ZipReader::open(QIODevice::OpenMode mode)
{
    if (mode != QIODevice::ReadOnly)
        return false;
    archive.close();
    contents->entries = readZipDirectory(archive);
    return true;
}

QStringList ZipReader::fileList(const QRegularExpression &pattern) const
{
    QStringList names;
    for (const ZipEntry &entry : contents->entries) {
        const QString name = QString::fromUtf8(entry.name);
        if (pattern.match(name).hasMatch())
            names.append(name);
    }
    return names;
}

void ZipReader::extractFiles(const QStringList &names, const QString &folder, bool flat)
{
    const QSet<QString> wanted(names.begin(), names.end());
    QSet<QString> missing = wanted;
    std::vector<ZipEntry> entries = contents->entries;
    for (ZipEntry &entry : entries) {
        const QString name = QString::fromUtf8(entry.name);
        entry.wanted = wanted.contains(name);
        missing.remove(name);
    }
    if (!missing.isEmpty())
        throw IOException(QStringLiteral("%1: there is no entry '%2'").arg(archive.fileName(), *missing.cbegin()));
    if (flat)
        flattenZipPaths(entries);
    beginProgress();
    extractZip(archive, entries, folder, [this](quint64 done, quint64 total) { return showProgress(done, total); });
    endProgress();
}

} // namespace qv
