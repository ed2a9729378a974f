// Single files and folders: made, read, replaced, removed, chosen. Leaves behind what
// its callers asked for and nothing half-written.
#include "FileUtils.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryDir>

#include <filesystem>
#include <vector>

namespace qv {

namespace {

namespace fs = std::filesystem;

/// Removes what @p folder holds, but not folders with content: these are returned.
std::vector<std::string> thinOut(const fs::path &folder, std::error_code &error)
{
    std::vector<std::string> left;
    for (fs::directory_iterator item(folder, error), end; !error && item != end; item.increment(error)) {
        if (fs::remove(item->path(), error) || !error)
            continue;
        if (error != std::errc::directory_not_empty) // a link too may be here to stay, and is not to be followed
            break;
        left.push_back(item->path().string());
    }
    return left;
}

/// Gives @p folder, which lies deeper, a free name in @p top.
void moveUp(const fs::path &folder, const fs::path &top, quint64 &number)
{
    std::error_code error;
    do
        fs::rename(folder, top / std::to_string(++number), error);
    while (error == std::errc::directory_not_empty || error == std::errc::file_exists
           || error == std::errc::not_a_directory);
}

} // namespace

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

bool FileUtils::emptyFolder(const QString &path)
{
    const QString folder = QDir::cleanPath(path); // "link/" would be what the link leads to
    if (QFileInfo(folder).isSymLink())
        return false;
    const fs::path top(QFile::encodeName(folder).toStdString());
    std::error_code error;
    quint64 number = 0;
    // Folders in folders are moved up before they are looked into. So however deep the tree is, all paths stay short
    // and one descriptor is open, where fs::remove_all() needs one for each level.
    for (auto folders = thinOut(top, error); !error && !folders.empty(); folders = thinOut(top, error)) {
        for (const std::string &inner : folders) {
            for (const std::string &deeper : thinOut(inner, error))
                moveUp(deeper, top, number);
            if (!fs::remove(inner, error))
                return false;
        }
    }
    return !error;
}

bool FileUtils::eraseFolder(const QString &path)
{
    return emptyFolder(path) && QDir().rmdir(path);
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
