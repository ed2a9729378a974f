#pragma once

// Not installed: the inside of ZipReader and Unzipper.

#include "ZipDirectory.h"

#include <functional>

namespace qv {

/// Is asked, in the thread that called, after every block, some hundred KiB, with the bytes written and those to be
/// written in all. False cancels.
using ZipProgress = std::function<bool(quint64 written, quint64 total)>;

/// Unpacks the wanted ones of @p entries, which are all that readZipDirectory() read from @p archive, into @p folder,
/// which is made or must be empty. May run in any thread, and lets others help. Returns false when cancelled.
///
/// Throws an IOException that names the entry; ZipReader::extractFiles() tells when, and what is kept of an entry's
/// attributes. After a failure or a cancellation @p folder is empty.
bool extractZip(QFile &archive, const std::vector<ZipEntry> &entries, const QString &folder,
                const ZipProgress &progress);

} // namespace qv
