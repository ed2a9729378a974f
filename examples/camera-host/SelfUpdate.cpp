// The road of a program's own update: found, confirmed, downloaded, unpacked, handed over. Started from the main
// window's menu.
#include "SelfUpdate.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>

using qv::DownloadManager;

// The updater starts the next version without arguments. What that shall know travels in the environment.
static constexpr char updatedFrom[] = "CAMERA_HOST_UPDATED_FROM";

SelfUpdate::SelfUpdate(const QUrl &catalogue, const qv::UpdatePolicy &policy, QWidget *window)
    : QProgressDialog(tr("Looking for an update..."), tr("Cancel"), 0, 0, window), manager(catalogue)
{
    manager.setPolicy(policy);
    setAutoReset(false); // it goes on after the download
    connect(this, &QProgressDialog::canceled, &manager, &DownloadManager::abortDownload);
    connect(&manager, &DownloadManager::packageFound, this, &SelfUpdate::offer);
    connect(&manager, &DownloadManager::noPackageFound, this, [this] { end(tr("The update server has nothing.")); });
    connect(&manager, &DownloadManager::downloadProgress, this, &QProgressDialog::setValue);
    connect(&manager, qOverload<qv::PackageInfo, QString>(&DownloadManager::downloadSuccess), this,
            [this](const qv::PackageInfo &, const QString &file) { manager.unzipPackage(file); });
    connect(&manager, qOverload<int>(&DownloadManager::downloadFailure), this,
            [this] { end(tr("The download failed. %1").arg(manager.errorText())); });
    connect(&manager, &DownloadManager::downloadAborted, this, [this] { end(tr("The update was cancelled.")); });
    connect(&manager, &DownloadManager::unzippingDone, this, &SelfUpdate::handOver);
    manager.queryUpdate();
    show();
}

void SelfUpdate::offer(qv::PackageInfoList found)
{
    const QString name = QCoreApplication::applicationName();
    const QString version = QCoreApplication::applicationVersion();
    const qv::PackageInfo installed(QString(), name, version, "STABLE", QDateTime(), qv::QStringSet(), qv::QStringSet(),
                                    QString(), QString());
    const qv::PackageInfoList newer =
        DownloadManager::findPackageCandidates(found, installed, "Application", { "zip" });
    if (newer.isEmpty())
        return end(tr("%1 %2 is up to date.").arg(name, version));

    const qv::PackageInfo &next = newer.first();
    const QString question = tr("%1 %2 is available. The program will restart.<p>Do you want to install it now?")
                                 .arg(name, next.displayReleaseVersion(true).toHtmlEscaped());
    if (parentWidget() && QMessageBox::question(this, name, question) != QMessageBox::Yes)
        return deleteLater();
    setLabelText(tr("Downloading and unpacking the update..."));
    setMaximum(int(next.fileSize));
    manager.startDownload(next, downloads.filePath(next.fileName()));
}

void SelfUpdate::handOver(const QString &newFolder)
{
    // The updater works from outside the folder that it replaces.
    const QDir folder(QCoreApplication::applicationDirPath());
    const QString updater = QFileInfo(folder.path()).path() + "/UpdateInstaller";
    QFile::remove(updater);
    if (QFile::copy(folder.filePath("UpdateInstaller"), updater)) {
        qputenv(updatedFrom, QCoreApplication::applicationVersion().toLocal8Bit());
        downloads.remove(); // no destructor will do it
        DownloadManager::startUpdate(updater, folder.path(), newFolder,
                                     QFileInfo(QCoreApplication::applicationFilePath()).fileName());
    }
    // Still here: it could not be started.
    QDir(newFolder).removeRecursively();
    end(tr("The updater cannot be started."));
}

void SelfUpdate::end(const QString &outcome)
{
    hide();
    deleteLater();
    if (parentWidget()) {
        QMessageBox::information(parentWidget(), QCoreApplication::applicationName(), outcome);
    } else {
        qCritical("%s", qPrintable(outcome));
        QCoreApplication::exit(1);
    }
}

QString SelfUpdate::outcome()
{
    const QString before = qEnvironmentVariable(updatedFrom), now = QCoreApplication::applicationVersion();
    if (before.isEmpty())
        return QString();
    return before == now ? tr("The update did not work, %1 goes on").arg(now)
                         : tr("Updated from %1 to %2").arg(before, now);
}
