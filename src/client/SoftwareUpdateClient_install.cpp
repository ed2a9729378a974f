// From the Install button to the new version: confirmed, downloaded, then one routine for each package type. Called by
// the update-available dialog and by the download manager's signals; leaves the host running, or its updater.
#include "SoftwareUpdateClient.h"

#include "ConnectHelpers.h"
#include "DialogFlags.h"
#include "DownloadManager.h"
#include "FileUtils.h"
#include "LogQt.h"
#include "SoftwareUpdateAvailableDialog.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QPointer>
#include <QProcess>
#include <QProgressDialog>
#include <QPushButton>

namespace qv {

namespace {

const QString updaterName = QStringLiteral("UpdateInstaller");
const QString macPackages = QStringLiteral("*.mpkg");

/// Asks with a box of two buttons. False also when the box went away with @p parent.
bool isAccepted(const QString &title, const QString &text, const QString &reject, const QString &accept,
                QWidget *parent, Qt::WindowFlags flags)
{
    const QPointer<QMessageBox> box =
        new QMessageBox(QMessageBox::Warning, title, text, QMessageBox::NoButton, parent, flags);
    box->addButton(reject, QMessageBox::RejectRole);
    const QPushButton *acceptButton = box->addButton(accept, QMessageBox::AcceptRole);
    box->exec();
    const bool accepted = box && box->clickedButton() == acceptButton;
    delete box;
    return accepted;
}

void showFailure(const QString &title, const QString &text, QWidget *parent, Qt::WindowFlags flags)
{
    const QPointer<QMessageBox> box =
        new QMessageBox(QMessageBox::Critical, title, text, QMessageBox::Ok, parent, flags);
    box->exec();
    delete box;
}

void logProgress(const QString &line)
{
    LogQt::write(Log::Progress, line);
}

void logFailure(const QString &line)
{
    LogQt::write(Log::Error, line);
}

} // namespace

void SoftwareUpdateClient::installPackage(int itemIndex)
{
    selectedRows = { itemIndex };
    const QPointer<SoftwareUpdateClient> self(this);
    const bool accepted = isAccepted(
        QCoreApplication::translate("SoftwareUpdateClient", "Install Package"),
        QCoreApplication::translate(
            "SoftwareUpdateClient",
            "After downloading the package, the installer will automatically exit and restart your application!"),
        QCoreApplication::translate("SoftwareUpdateClient", "Cancel Install"),
        QCoreApplication::translate("SoftwareUpdateClient", "Proceed"), availableDialog,
        sheetDialogFlags(availableDialog));
    if (!self)
        return;
    if (!accepted) {
        logProgress(QStringLiteral("SoftwareUpdateClient::installPackage() -> user rejected installation"));
        return;
    }

    const PackageInfo package = packages.value(itemIndex);
    const QNetworkProxy proxy = networkProxy();
    const HttpHost host(HttpAccess(), HttpAccess(proxy.hostName(), proxy.port(), QString(), QString()), QString());
    // Deliberate: nobody keeps or frees the manager.
    auto *manager = new DownloadManager(host, QString());

    const QString link = package.url.toString();
    const QString folder = FileUtils::createTempDir();
    // Without a folder there is no file to open either, and the download ends as a failure.
    downloadedFile = folder.isEmpty() ? QString() : folder + QLatin1Char('/') + link.section(QLatin1Char('/'), -1);
    logProgress(QStringLiteral("SoftwareUpdateClient::downloadPackage() -> %1 to %2").arg(link, downloadedFile));

    // Deliberate: a second download beside the first goes on unheard.
    if (!progressDialog) {
        progressDialog = new QProgressDialog(availableDialog, windowFlags);
        progressDialog->setLabelText(
            QCoreApplication::translate("SoftwareUpdateClient", "Downloading package to temporary folder..."));
        qv::connect(manager, SIGNAL(downloadProgress(int, int)), this, SLOT(downloadProgress(int, int)));
        qv::connect(manager, SIGNAL(downloadFailure(int)), this, SLOT(downloadError(int)));
        qv::connect(manager, SIGNAL(downloadSuccess()), this, SLOT(downloadFinished()));
        qv::connect(progressDialog, SIGNAL(canceled()), manager, SLOT(abortDownload()));
        qv::connect(manager, SIGNAL(downloadAborted()), this, SLOT(abortDownload()));
    }
    manager->startDownload(package, downloadedFile);
}

void SoftwareUpdateClient::downloadProgress(int value, int total)
{
    if (progressDialog)
        progressDialog->setRange(0, total);
    if (progressDialog)
        progressDialog->setValue(value);
}

void SoftwareUpdateClient::downloadFinished()
{
    deleteProgressDialog();
    if (availableDialog)
        deleteUpdateAvailableDialog();

    // A later check may have left a shorter list.
    const QString suffix = packages.value(selectedRows.value(0)).suffix;
    if (suffix == QLatin1String("exe")) {
        installEXEPackage();
    } else if (suffix == QLatin1String("mpkg")) {
        installMPKGPackage();
    } else if (suffix == QLatin1String("zip")) {
        installZIPPackage();
    } else if (suffix == QLatin1String("msi")) {
        installMSIPackage();
    } else if (suffix == QLatin1String("deb")) {
        installDEBPackage();
    } else if (suffix == QLatin1String("rpk")) {
        installRPKPackage();
    } else if (suffix == QLatin1String("tar.gz")) {
        installTARGZPackage();
    } else {
        const QPointer<SoftwareUpdateClient> self(this);
        showFailure(
            QCoreApplication::translate("SoftwareUpdateClient", "Download Error"),
            QCoreApplication::translate("SoftwareUpdateClient", "Unknown package type! Installation cannot proceed!"),
            parentWidget, windowFlags);
        if (self)
            abortDownload();
    }
}

void SoftwareUpdateClient::downloadError(int httpStatusCode)
{
    const QPointer<SoftwareUpdateClient> self(this);
    showFailure(QCoreApplication::translate("SoftwareUpdateClient", "Download Error"),
                QCoreApplication::translate("SoftwareUpdateClient", "Error downloading! Http status code %1")
                    .arg(httpStatusCode),
                parentWidget, windowFlags);
    if (self)
        abortDownload();
}

void SoftwareUpdateClient::abortDownload()
{
    deleteProgressDialog();
    if (!FileUtils::erase(downloadedFile)) {
        logFailure(QStringLiteral("SoftwareUpdateClient::abortDownload() -> could not remove downloaded files: ")
                   + downloadedFile);
    }
}

void SoftwareUpdateClient::deleteProgressDialog()
{
    if (!progressDialog)
        return;
    progressDialog->hide();
    progressDialog->deleteLater();
    progressDialog = nullptr;
}

void SoftwareUpdateClient::installEXEPackage()
{
    QFile::setPermissions(downloadedFile, QFile::permissions(downloadedFile) | QFileDevice::ExeOwner);
    QProcess::startDetached(downloadedFile, QStringList());
}

void SoftwareUpdateClient::installMPKGPackage()
{
    if (!unpackingManager)
        unpackingManager = new DownloadManager;
    unpackingManager->unzipPackage(downloadedFile);
    qv::connect(unpackingManager, SIGNAL(unzippingDone(QString)), this, SLOT(unzippedMPKGPackage(QString)));
}

void SoftwareUpdateClient::unzippedMPKGPackage(const QString &unzippedFilePath)
{
    if (unpackingManager) {
        unpackingManager->deleteLater();
        unpackingManager = nullptr;
    }
    logProgress(QStringLiteral("SoftwareUpdateClient::unzippedMPKGPackage() -> unzipped succesfully to ")
                + unzippedFilePath);
    const QFileInfoList installers =
        QDir(unzippedFilePath).entryInfoList({ macPackages }, QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo &installer : installers) {
        logProgress(QStringLiteral("SoftwareUpdateClient::installMPKGPackage ") + installer.absoluteFilePath());
        if (!QDesktopServices::openUrl(QUrl::fromLocalFile(installer.absoluteFilePath()))) {
            logFailure(QStringLiteral("SoftwareUpdateClient::installMPKGPackage, can't start package installer!"));
            return;
        }
    }
}

void SoftwareUpdateClient::installZIPPackage()
{
    // Deliberate: nobody hears where the archive is unpacked to, nobody waits for it, and nobody frees the manager.
    auto *manager = new DownloadManager;
    manager->unzipPackage(downloadedFile);
    logProgress(QStringLiteral("SoftwareUpdateClient::installZipPackage() -> unzipping %1 to %2")
                    .arg(downloadedFile, unpackedFolder));

    const QPointer<SoftwareUpdateClient> self(this);
    const bool accepted =
        isAccepted(QCoreApplication::translate("SoftwareUpdateClient", "Restart required"),
                   QCoreApplication::translate("SoftwareUpdateClient",
                                               "Please restart your application to finish the installation process."),
                   QCoreApplication::translate("SoftwareUpdateClient", "Restart later"),
                   QCoreApplication::translate("SoftwareUpdateClient", "Restart now"), parentWidget, windowFlags);
    if (accepted && self)
        startZipInstall();
}

void SoftwareUpdateClient::startZipInstall()
{
    const QString applicationFolder = QCoreApplication::applicationDirPath();
    const QString application = QCoreApplication::applicationFilePath();
    const QFileInfo updaterSource(applicationFolder + QLatin1Char('/') + updaterName);
    QDir folder(applicationFolder);
    if (folder.exists() && updaterSource.exists()) {
        folder.cdUp();
        const QString updater = folder.absolutePath() + QLatin1Char('/') + updaterName;
        logProgress(QStringLiteral("SoftwareUpdateClient::startInstallZip() -> starting zip installation application ")
                    + updater + QStringLiteral(" -> removing ") + applicationFolder + QStringLiteral(", renaming ")
                    + unpackedFolder + QStringLiteral("  to ") + applicationFolder + QStringLiteral(" and restarting ")
                    + application);
        // Deliberate: an updater that is there already is used, however old.
        if (QFile::exists(updater) || QFile::copy(updaterSource.filePath(), updater)) {
            DownloadManager::startUpdate(updater, applicationFolder, unpackedFolder,
                                         application.section(QLatin1Char('/'), -1));
            return;
        }
        logFailure(QStringLiteral("SoftwareUpdateClient::startInstallApplication() -> could not copy file to ")
                   + updater);
    }
    logFailure(
        QStringLiteral("SoftwareUpdateClient::startInstallApplication() -> one of the following file/dir is missing: ")
        + folder.absolutePath() + QStringLiteral(" or ") + updaterSource.fileName());
    showFailure(QCoreApplication::translate("SoftwareUpdateClient", "Installation failed"),
                QCoreApplication::translate("SoftwareUpdateClient",
                                            "Installation process failed. If problem persists try manual install."),
                parentWidget, windowFlags);
}

// Deliberate: the routines of the types below only tell that they were reached.

void SoftwareUpdateClient::installMSIPackage()
{
    logProgress(QStringLiteral("SoftwareUpdateClient::installMSIPackage() -> trying to run ") + downloadedFile);
}

void SoftwareUpdateClient::installDEBPackage()
{
    logProgress(QStringLiteral("SoftwareUpdateClient::installDEBPackage() -> trying to run ") + downloadedFile);
}

void SoftwareUpdateClient::installRPKPackage()
{
    logProgress(QStringLiteral("SoftwareUpdateClient::installRPKPackage() -> trying to run ") + downloadedFile);
}

void SoftwareUpdateClient::installTARGZPackage()
{
    logProgress(QStringLiteral("SoftwareUpdateClient::installTARGZPackage() -> trying to run ") + downloadedFile);
}

} // namespace qv
