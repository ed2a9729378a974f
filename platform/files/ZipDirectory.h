#pragma once

// Not installed: the inside of ZipReader and Unzipper.

#include <QByteArray>
#include <QHash>
#include <QString>

#include <vector>

class QFile;

namespace qv {

/// One entry of an archive, as its table of contents announces it.
struct ZipEntry
{
    QByteArray name;    ///< as stored, but with "/" where a DOS program wrote "\"
    QByteArray path;    ///< below the target folder, without a "/" at its ends; empty for the target folder itself
    quint64 offset = 0; ///< of the entry's data in the archive file, with the header before it
    quint64 packedSize = 0;
    quint64 size = 0;
    bool wanted = true; ///< false: is not unpacked

    bool isFolder() const { return name.endsWith('/'); }
    QString printableName() const;
};

/// Opens an archive and reads its table of contents, in the order in which the data lies in the file. Needed beside
/// libarchive, which cuts names off at a NUL, changes the form of accented letters and tells sizes only one entry at a
/// time.
///
/// Throws an IOException that names the entry when the archive cannot be read, when an entry is encrypted, when its
/// name is empty, absolute, drive-like, too long, too deep, or holds ".." or NUL, and when the data of two entries
/// overlap.
std::vector<ZipEntry> readZipDirectory(QFile &archive);

/// Unpacks everything below one folder: drops the folders of the entries' paths.
void flattenZipPaths(std::vector<ZipEntry> &entries);

/// The folder of an entry's path; empty for the target folder.
QByteArray zipParent(const QByteArray &path);

/// Tells whether a link in an archive with these @p links leads to a place below the target folder. Behind a link a
/// ".." would start from wherever that link leads, so none is allowed there; then no chain of links can add up to a way
/// out.
bool zipLinkStaysInside(const QByteArray &link, const QByteArray &target, const QHash<QByteArray, QByteArray> &links);

/// @p bytes for a message: no control characters and no markup, shortened where needed.
QString printableZipName(const QByteArray &bytes);

} // namespace qv
