#pragma once

#include "PlatformExport.h"

#include <QByteArray>
#include <QString>

class QWidget;

namespace qv {

/// Single files and folders. Nothing here throws; failures are the return values.
class QV_PLATFORM_EXPORT FileUtils
{
public:
    /// Makes a new, empty folder with a name of its own in the folder for temporary files, open to the user alone
    /// (0700). The caller removes it. Returns its absolute path, or an empty text where it could not be made.
    static QString createTempDir();

    /// Removes one regular file. Folders, links and what is not there stay as they are and return false.
    static bool erase(const QString &path);

    /// Removes a folder with all that it holds, however deep that is. Links in it go, and what they lead to stays.
    /// Stops and returns false at the first thing that cannot be removed; what is left then may lie elsewhere in the
    /// folder. False too for links, files and what is not there, which stay as they are.
    static bool eraseFolder(const QString &path);

    /// As eraseFolder(), but keeps the folder itself, with its permissions.
    static bool emptyFolder(const QString &path);

    /// @p path with the separators of the platform.
    static QString nativePath(const QString &path);

    /// Lets the user choose a folder, beginning at @p path, and writes the choice back into it. Runs modally, so only
    /// on the GUI thread. A @p filter of name patterns, as in "Cameras (*.cam)", also shows the files that match.
    /// Returns false, and leaves @p path alone, when the user cancelled.
    static bool openDirectoryDialog(QString &path, const QString &title, const QString &filter, QWidget *parent);

    /// The whole content of a file; empty where it cannot be read.
    static QByteArray readBytes(const QString &path);

    /// Replaces the content of a file in one step: whoever reads it, even after a power cut, sees the old content or
    /// the new one. Returns false, and leaves the old content, where it could not be written.
    static bool writeBytes(const QByteArray &bytes, const QString &path);
};

} // namespace qv
