// The road of a program's own update: found, confirmed, downloaded, unpacked, handed over. Started from the main
// window's menu.
#include "SelfUpdate.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QProgressDialog>

namespace {

constexpr char argumentsVariable[] = "CAMERA_HOST_ARGUMENTS";

} // namespace

SelfUpdate::SelfUpdate(const QUrl &catalogue, QWidget *window) : QObject(window), window(window), manager(catalogue)
{
    connect(&manager, &qv::DownloadManager::packageFound, this, &SelfUpdate::offer);
    connect(&manager, &qv::DownloadManager::noPackageFound, this,
            [this] { end(tr("The update server has nothing.")); });
    connect(&manager, qOverload<qv::PackageInfo, QString>(&qv::DownloadManager::downloadSuccess), &manager,
            [this](const qv::PackageInfo &, const QString &file) { manager.unzipPackage(file); });
    connect(&manager, qOverload<int>(&qv::DownloadManager::downloadFailure), this,
            [this](int httpStatusCode) { end(tr("The download failed with HTTP status %1.").arg(httpStatusCode)); });
    connect(&manager, &qv::DownloadManager::downloadAborted, this, [this] { end(tr("The update was cancelled.")); });
    connect(&manager, &qv::DownloadManager::unzippingDone, this, &SelfUpdate::handOver);
}

void SelfUpdate::start()
{
    manager.queryUpdate();
}

void SelfUpdate::offer(qv::PackageInfoList found)
{
    const QString name = QCoreApplication::applicationName();
    const qv::PackageInfo installed(QString(), name, QCoreApplication::applicationVersion(), "STABLE", QDateTime(),
                                    qv::QStringSet(), qv::QStringSet(), QString(), QString());
    const qv::PackageInfoList newer =
        qv::DownloadManager::findPackageCandidates(found, installed, "Application", { "zip" });
    if (newer.isEmpty())
        return end(tr("%1 %2 is up to date.").arg(name, QCoreApplication::applicationVersion()));

    const QString question = tr("%1 %2 is available. The program will restart.<p>Do you want to install it now?")
                                 .arg(name, newer.first().displayReleaseVersion(true).toHtmlEscaped());
    if (QMessageBox::question(window, name, question) == QMessageBox::Yes)
        download(newer.first());
    else
        deleteLater();
}

void SelfUpdate::download(const qv::PackageInfo &package)
{
    progress = new QProgressDialog(tr("Downloading %1").arg(package.fileName()), tr("Cancel"), 0, 0, window);
    progress->setAttribute(Qt::WA_DeleteOnClose);
    connect(progress, &QProgressDialog::canceled, &manager, &qv::DownloadManager::abortDownload);
    connect(&manager, &qv::DownloadManager::downloadProgress, progress, [this](int bytes, int totalBytes) {
        progress->setMaximum(totalBytes);
        progress->setValue(bytes);
    });
    manager.startDownload(package, downloads.filePath(package.fileName()));
}

void SelfUpdate::handOver(const QString &newFolder)
{
    // The updater works from outside the folder that it replaces.
    const QDir folder(QCoreApplication::applicationDirPath());
    const QString updater = QFileInfo(folder.path()).path() + "/UpdateInstaller";
    QFile::remove(updater);
    if (QFile::copy(folder.filePath("UpdateInstaller"), updater)) {
        const QStringList arguments = QCoreApplication::arguments().mid(1) + handedOver()
            + QStringList { "--updated-from", QCoreApplication::applicationVersion() };
        qputenv(argumentsVariable, arguments.join('\n').toLocal8Bit());
        downloads.remove(); // no destructor will do it
        qv::DownloadManager::startUpdate(updater, folder.path(), newFolder,
                                         QFileInfo(QCoreApplication::applicationFilePath()).fileName());
    }
    // Still here: it could not be started.
    QDir(newFolder).removeRecursively();
    end(tr("The updater cannot be started."));
}

void SelfUpdate::end(const QString &outcome)
{
    if (progress)
        progress->deleteLater();
    QMessageBox::information(window, QCoreApplication::applicationName(), outcome);
    deleteLater();
}

QStringList SelfUpdate::handedOver()
{
    return qEnvironmentVariable(argumentsVariable).split('\n', Qt::SkipEmptyParts);
}
