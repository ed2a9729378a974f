#pragma once

#include "ZipDevice.h"

#include <QFile>
#include <QIODevice>
#include <QRegularExpression>
#include <QStringList>

#include <memory>

namespace qv {

/// Lists and unpacks a ZIP archive, zip64 too, that nobody has to trust. Lives on the GUI thread.
/// @code
/// QProgressDialog dialog;
/// ZipReader reader(file);
/// reader.attachProgressDialog(&dialog);
/// reader.open(QIODevice::ReadOnly);
/// reader.extractFiles(reader.fileList(), folder, false);
/// if (reader.wasCanceled())
///     ...
/// @endcode
/// Whatever is wrong with the archive arrives as an IOException that names the archive and the entry.
class QV_PLATFORM_EXPORT ZipReader : public ZipDevice
{
    Q_OBJECT

public:
    explicit ZipReader(const QString &file, QObject *parent = nullptr);
    ~ZipReader() override;

    /// Reads the table of contents. Throws when the file is no archive, when the table is damaged or longer than 32
    /// MiB, when an entry is encrypted, when its name is empty or absolute, is longer than the system allows, has more
    /// than 128 levels or holds ".." or NUL, and when entries share their data. Returns false, and does nothing, for
    /// any other mode than QIODevice::ReadOnly.
    bool open(QIODevice::OpenMode mode);

    /// The names of the entries that match @p pattern, or of all for an empty one, in the order of their data; those of
    /// folders end with "/".
    QStringList fileList(const QRegularExpression &pattern = QRegularExpression()) const;

    /// Unpacks the entries @p names into @p folder, which is made where it is missing and else must be empty. With
    /// @p flat every file lands in @p folder itself, whatever folders its name tells. Ends early, without an exception,
    /// when the user cancels: see wasCanceled().
    ///
    /// Keeps times, symbolic links that stay below @p folder, and permission bits: at least the owner's access, at most
    /// 0755, never set-uid, set-gid or sticky.
    ///
    /// Throws when a name is not in the archive, for links that lead outside, special files, and two entries of one
    /// place; when sizes or checksums are wrong; when all, with 4 KiB for each folder, would be larger than 32 MiB and
    /// 250 times the archive, or would leave less than 64 MiB of the disk free. After an exception or a cancellation @p
    /// folder is empty; removing thousands of files takes its time.
    void extractFiles(const QStringList &names, const QString &folder, bool flat);

private:
    struct Contents;

    QFile archive;
    std::unique_ptr<Contents> contents;
};

} // namespace qv
