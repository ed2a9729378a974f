// Single files and folders: made, read, replaced, removed, chosen. Called by the download manager and the update
// client; leaves behind what its callers asked for and nothing half-written.
#include "FileUtils.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryDir>

namespace qv {

QString FileUtils::createTempDir()
{
    const QString parent = QDir::tempPath();
    if (parent.isEmpty()) // $TMPDIR names no folder; the root folder is no substitute
        return QString();
    QTemporaryDir folder(parent + QLatin1String("/qv-XXXXXX"));
    folder.setAutoRemove(false);
    return folder.isValid() ? QFileInfo(folder.path()).absoluteFilePath() : QString();
}

bool FileUtils::erase(const QString &path)
{
    const QFileInfo info(path);
    return info.isFile() && !info.isSymLink() && QFile::remove(path);
}

QString FileUtils::nativePath(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

bool FileUtils::openDirectoryDialog(QString &path, const QString &title, const QString &filter, QWidget *parent)
{
    QFileDialog dialog(parent, title, path, filter);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly, filter.isEmpty());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return false;
    path = dialog.selectedFiles().constFirst();
    return true;
}

QByteArray FileUtils::readBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool FileUtils::writeBytes(const QByteArray &bytes, const QString &path)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

} // namespace qv
