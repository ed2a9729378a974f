// From a downloaded package to what replaces this program: unpacked, set aside for later, or handed to the updater and
// the shell. Called by the update client and by hosts; leaves an unpacked folder, or does not come back.
#include "DownloadManager_p.h"

#include "FileUtils.h"
#include "IOException.h"
#include "Kinds.h"
#include "LogQt.h"
#include "Unzipper.h"
#include "ZipReader.h"

#include <QApplication>
#include <QFileInfo>
#include <QMessageBox>
#include <QProgressDialog>

#include <unistd.h>

namespace qv {

namespace {

bool liesInside(const QFileInfo &entry, const QString &root)
{
    return !entry.isSymLink() || entry.canonicalFilePath().startsWith(root + QLatin1Char('/'));
}

QString findExecutable(const QDir &folder, const QString &root)
{
    const QFileInfoList programs = folder.entryInfoList(QDir::Files | QDir::Executable, QDir::Size);
    for (const QFileInfo &program : programs) {
        if (liesInside(program, root))
            return program.fileName();
    }
    // Without links to folders: they lead to what is searched anyway, or out, or round in circles.
    const auto subfolders = QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks;
    for (const QString &name : folder.entryList(subfolders, QDir::Unsorted)) {
        const QString program = findExecutable(QDir(folder.filePath(name)), root);
        if (!program.isEmpty())
            return name + QLatin1Char('/') + program;
    }
    return QString();
}

/// Deliberate: "sh" is not searched in the PATH, the words are separate arguments, and the chosen folder goes as 16-bit
/// characters.
void copyByShell(const QString &unpackedFolder, const QString &chosenFolder, const QString &program)
{
    const QByteArray unpacked = FileUtils::nativePath(unpackedFolder).toLocal8Bit();
    const QString chosen = FileUtils::nativePath(chosenFolder);
    const QByteArray start = FileUtils::nativePath(program).toLocal8Bit();
    execl("sh", "sh", "cp", "-fr", unpacked.constData(), reinterpret_cast<const char *>(chosen.utf16()), "&&rm", "-fr",
          unpacked.constData(), "&&", start.constData(), static_cast<char *>(nullptr));
}

UpdateResult takeUpdateResult()
{
    const QString told = qEnvironmentVariable("QV_UPDATE_RESULT");
    qunsetenv("QV_UPDATE_RESULT");
    using R = UpdateResult;
    for (const auto &[word, kind] : { std::pair(QLatin1String("updated"), R::Updated),
                                      { QLatin1String("unchanged"), R::Unchanged },
                                      { QLatin1String("reverted"), R::Reverted },
                                      { QLatin1String("unclear"), R::Unclear } }) {
        if (told.section(QLatin1Char(':'), 0, 0) == word)
            return { kind, told.section(QLatin1Char(':'), 1).trimmed() };
    }
    return {};
}

} // namespace

void DownloadManager::unzipPackage(const QString &packageFile)
{
    const QString folder = FileUtils::createTempDir();
    if (folder.isEmpty()) {
        LogQt::write(Log::Error,
                     QStringLiteral("DownloadManager::unzipPackage() -> Could not create folder to unzip into!"));
        return;
    }
    LogQt::write(
        Log::Progress,
        QStringLiteral("DownloadManager::installPackage() -> trying to extract %1 to %2").arg(packageFile, folder));
    if (d->unzipper) {
        QDir().rmdir(folder);
        return;
    }
    d->unzipper = new Unzipper(packageFile, folder, false);
    d->unzipper->setParent(this);
    connect(d->unzipper, &Unzipper::unzippingDone, this, &DownloadManager::unzippingFinished);
    connect(d->unzipper, &Unzipper::unzippingFailed, this, &DownloadManager::unzippingFailed);
}

void DownloadManager::unzippingFinished(const QString &folder)
{
    d->unzipper->removeZipFile();
    emit unzippingDone(folder);
}

void DownloadManager::unzippingFailed(const QString &message)
{
    QMessageBox::critical(nullptr, QCoreApplication::applicationName(),
                          QCoreApplication::translate("DownloadManager", "Downloaded file could not be unpacked:<br>")
                              + message,
                          QMessageBox::Ok);
}

void DownloadManager::startUpdate(const QString &updateApplicationPath, const QString &installationPath,
                                  const QString &tempApplicationPath, const QString &newApplication)
{
    const QByteArray updater = updateApplicationPath.toLocal8Bit();
    const QByteArray oldFolder = installationPath.toLocal8Bit();
    const QByteArray newFolder = tempApplicationPath.toLocal8Bit();
    const QByteArray program = newApplication.toLocal8Bit();
    execl(updater.constData(), updater.constData(), "-oldDir", oldFolder.constData(), "-newDir", newFolder.constData(),
          "-exe", program.constData(), static_cast<char *>(nullptr));
}

UpdateResult DownloadManager::lastUpdateResult()
{
    static const UpdateResult result = takeUpdateResult();
    return result;
}

void DownloadManager::installLater(const PackageInfo &info, bool confirmInstall)
{
    d->installPackageInfo = info;
    d->installPackageInfo.spareFlag = confirmInstall;
}

void DownloadManager::installLater(const QString &packageFile, const QString &updaterExe, const QString &targetFolder,
                                   const QString &applicationExe)
{
    d->installPackageInfo.localFile = packageFile;
    d->installTexts = { updaterExe, targetFolder, applicationExe };
}

PackageInfo &DownloadManager::installPackage()
{
    return d->installPackageInfo;
}

const PackageInfo &DownloadManager::installPackage() const
{
    return d->installPackageInfo;
}

bool DownloadManager::hasInstallPackage() const
{
    const QFileInfo file(d->installPackageInfo.localFile);
    return !d->installPackageInfo.localFile.isEmpty() && file.exists() && file.size() == d->installPackageInfo.fileSize;
}

void DownloadManager::runInstaller(const QString &installerFile)
{
    if (!installerFile.endsWith(Suffix::zip))
        throw ExceptionQt(QStringLiteral("execl() failed"));
    runZipInstaller(installerFile);
}

void DownloadManager::runZipInstaller(const QString &packageFile)
{
    QString target = QDir(QCoreApplication::applicationDirPath()).absolutePath();
    const QString fileName = QFileInfo(packageFile).fileName();
    const QString title =
        QCoreApplication::translate("DownloadManager", "Select Installation Path for '%1'").arg(fileName);
    if (!FileUtils::openDirectoryDialog(target, title, QString(), nullptr))
        return;
    const QString unpacked = FileUtils::createTempDir();
    try {
        ZipReader reader(packageFile);
        reader.open(QIODevice::ReadOnly);
        QApplication::setOverrideCursor(Qt::WaitCursor); // Deliberate: never restored
        QProgressDialog dialog;
        dialog.setLabelText(QCoreApplication::translate("DownloadManager", "Unpacking '%1'").arg(fileName));
        reader.attachProgressDialog(&dialog);
        reader.extractFiles(reader.fileList(), unpacked, false);
        if (reader.wasCanceled())
            return;
        const QString program = findDefaultExecutable(QDir(unpacked));
        copyByShell(unpacked, target,
                    program.isEmpty() ? QCoreApplication::applicationFilePath() : target + QLatin1Char('/') + program);
    } catch (const IOException &exception) {
        FileUtils::eraseFolder(unpacked);
        QMessageBox::critical(nullptr, QStringLiteral("Unpacking failed"), exception.message(), QMessageBox::Ok);
        throw IOException(exception);
    }
    FileUtils::eraseFolder(unpacked);
}

QString DownloadManager::findDefaultExecutable(const QDir &folder)
{
    return findExecutable(folder, folder.canonicalPath());
}

} // namespace qv
