// From the Install button to the new version: confirmed, downloaded, then one routine for each package type. Called by
// the update-available dialog and by the download manager's signals; leaves the host running, or its updater.
#include "SoftwareUpdateClient_p.h"

#include "ConnectHelpers.h"
#include "DialogFlags.h"
#include "DownloadManager.h"
#include "FileUtils.h"
#include "Kinds.h"
#include "LogQt.h"
#include "PolicyTexts.h"
#include "Replacement.h"
#include "SoftwareUpdateAvailableDialog.h"
#include "StringUtils.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>

namespace qv {

namespace {

constexpr QLatin1String updaterName("UpdateInstaller");
constexpr QLatin1String macPackages("*.mpkg");

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

void logProgress(const QString &line)
{
    LogQt::write(Log::Progress, line);
}

void logFailure(const QString &line)
{
    LogQt::write(Log::Error, line);
}

} // namespace

void SoftwareUpdateClient::installPackage(int row)
{
    if (d->takeToInstallers(row))
        return;
    d->selectedRows = { row };
    const PackageInfo package = d->packages.value(row); // a check may bring others while the box is open
    const bool wasInstallable = d->isInstallable(package);
    if (d->replaces(package) && !d->canReplace())
        return;
    const QPointer<SoftwareUpdateClient> self(this);
    const bool accepted = isAccepted(
        QCoreApplication::translate("SoftwareUpdateClient", "Install Package"),
        QCoreApplication::translate(
            "SoftwareUpdateClient",
            "After downloading the package, the installer will automatically exit and restart your application!"),
        QCoreApplication::translate("SoftwareUpdateClient", "Cancel Install"),
        QCoreApplication::translate("SoftwareUpdateClient", "Proceed"), d->availableDialog,
        sheetDialogFlags(d->availableDialog));
    if (!self)
        return;
    if (!accepted) {
        logProgress(QStringLiteral("SoftwareUpdateClient::installPackage() -> user rejected installation"));
        return;
    }

    // Deliberate: by default nobody keeps or frees the manager.
    DownloadManager *manager = d->newManager();
    const QString file = SoftwareUpdateClientPrivate::newFile(package);

    if (d->replaces(package))
        new Replacement(file, manager, this);

    // Deliberate: a second download beside the first goes on unheard.
    if (!d->progressDialog) {
        d->progressDialog = new QProgressDialog(d->availableDialog, d->windowFlags);
        d->lastDownload = { package, file, d->progressDialog, wasInstallable };
        d->downloads.insert(manager, d->lastDownload);
        d->progressDialog->setLabelText(d->downloadingText());
        d->progressClock.invalidate();
        d->msProgressTold = -1;
        qv::connect(manager, SIGNAL(downloadProgress(int, int)), this, SLOT(downloadProgress(int, int)));
        qv::connect(manager, SIGNAL(downloadFailure(int)), this, SLOT(downloadError(int)));
        qv::connect(manager, SIGNAL(downloadSuccess()), this, SLOT(downloadFinished()));
        qv::connect(d->progressDialog, SIGNAL(canceled()), manager, SLOT(abortDownload()));
        qv::connect(manager, SIGNAL(downloadAborted()), this, SLOT(abortDownload()));
    }
    manager->startDownload(package, file);
}

DownloadManager *SoftwareUpdateClientPrivate::newManager() const
{
    const QNetworkProxy proxy = q->networkProxy();
    // Deliberate: by default without the proxy's credentials.
    const HttpAccess route = policy.followAddresses
        ? HttpAccess(proxy.hostName(), proxy.port(), proxy.user(), proxy.password())
        : HttpAccess(proxy.hostName(), proxy.port(), QString(), QString());
    auto *manager = new DownloadManager(HttpHost(HttpAccess(), route, QString()), QString());
    manager->setPolicy(policy);
    return manager;
}

/// Where @p package is downloaded to: alone in a new folder.
QString SoftwareUpdateClientPrivate::newFile(const PackageInfo &package)
{
    const QString link = StringUtils::withoutPassword(package.url);
    const QString folder = FileUtils::createTempDir();
    // Without a folder there is no file to open either, and the download ends as a failure.
    const QString file = folder.isEmpty() ? QString() : folder + QLatin1Char('/') + link.section(QLatin1Char('/'), -1);
    logProgress(QStringLiteral("SoftwareUpdateClient::downloadPackage() -> %1 to %2").arg(link, file));
    return file;
}

QString SoftwareUpdateClientPrivate::downloadingText()
{
    return QCoreApplication::translate("SoftwareUpdateClient", "Downloading package to temporary folder...");
}

bool SoftwareUpdateClientPrivate::isInstallable(const PackageInfo &package) const
{
    if (installerOf(package))
        return !installQueue;
    return currentSettings().installablePackageTypes.contains(package.suffix);
}

/// What @p manager was to fetch. Where a slot is called by name, without a manager: what was begun last.
SoftwareUpdateClientPrivate::Download SoftwareUpdateClientPrivate::downloadOf(const QObject *manager) const
{
    return downloads.value(manager, lastDownload);
}

SoftwareUpdateClientPrivate::Download SoftwareUpdateClientPrivate::takeDownload(const QObject *manager)
{
    const Download download = downloadOf(manager);
    downloads.remove(manager);
    return download;
}

/// A download whose dialog went with the table goes on; the dialog of a later one is none of its business.
void SoftwareUpdateClientPrivate::closeProgress(const Download &download)
{
    if (download.dialog == progressDialog)
        q->deleteProgressDialog();
}

void SoftwareUpdateClient::downloadProgress(int value, int total)
{
    const SoftwareUpdateClientPrivate::Download download = d->downloadOf(sender());
    if (download.dialog != d->progressDialog)
        return;
    d->tellProgress(download, value, total);
    if (d->progressDialog)
        d->progressDialog->setRange(0, total);
    if (d->progressDialog)
        d->progressDialog->setValue(value);
}

void SoftwareUpdateClient::downloadFinished()
{
    using P = SoftwareUpdateClientPrivate;
    static const struct
    {
        const QString &suffix;
        void (P::*install)(const P::Download &download);
    } routines[] = {
        { Suffix::exe, &P::installEXEPackage },     { Suffix::mpkg, &P::installMPKGPackage },
        { Suffix::zip, &P::installZIPPackage },     { Suffix::msi, &P::installMSIPackage },
        { Suffix::deb, &P::installDEBPackage },     { Suffix::rpk, &P::installRPKPackage },
        { Suffix::tarGz, &P::installTARGZPackage },
    };

    const P::Download download = d->takeDownload(sender());
    d->closeProgress(download);
    if (d->availableDialog)
        deleteUpdateAvailableDialog();
    const bool isForbidden = download.wasInstallable && !d->isInstallable(download.package); // by now
    for (const auto &routine : routines) {
        if (routine.suffix == download.package.suffix && !isForbidden)
            return (d.get()->*routine.install)(download);
    }
    d->failDownload(
        download,
        QCoreApplication::translate("SoftwareUpdateClient", "Unknown package type! Installation cannot proceed!"));
}

void SoftwareUpdateClient::downloadError(int httpStatusCode)
{
    const QString text = d->downloadErrorText(sender(), httpStatusCode);
    d->failDownload(d->takeDownload(sender()), text);
}

QString SoftwareUpdateClientPrivate::downloadErrorText(const QObject *manager, int httpStatusCode) const
{
    const auto *asked = qobject_cast<const DownloadManager *>(manager);
    const QString reason = asked && policy.followAddresses ? asked->errorText() : QString();
    const QString text = reason.isEmpty()
        ? QCoreApplication::translate("SoftwareUpdateClient", "Error downloading! Http status code %1")
              .arg(httpStatusCode)
        : downloadFailureText(reason);
    return toldText(text, asked);
}

void SoftwareUpdateClientPrivate::failDownload(const Download &download, const QString &text)
{
    closeProgress(download); // it would come up beside the box
    const QPointer<SoftwareUpdateClient> self(q);
    showFailure(QCoreApplication::translate("SoftwareUpdateClient", "Download Error"), text);
    if (self)
        discard(download);
}

void SoftwareUpdateClientPrivate::showFailure(const QString &title, const QString &text) const
{
    const QPointer<QMessageBox> box =
        new QMessageBox(QMessageBox::Critical, title, text, QMessageBox::Ok, parentWidget, windowFlags);
    if (policy.explains || policy.replacesApplication)
        box->setTextFormat(Qt::PlainText); // servers, folders and entries of archives have names
    box->exec();
    delete box;
}

void SoftwareUpdateClient::abortDownload()
{
    d->discard(d->takeDownload(sender()));
}

/// Removes the file, and the folder that was made for it alone.
void SoftwareUpdateClientPrivate::discard(const Download &download)
{
    closeProgress(download);
    if (!FileUtils::erase(download.file)) {
        logFailure(QStringLiteral("SoftwareUpdateClient::abortDownload() -> could not remove downloaded files: ")
                   + download.file);
    }
    if (!download.file.isEmpty())
        QDir().rmdir(QFileInfo(download.file).path());
}

void SoftwareUpdateClient::deleteProgressDialog()
{
    if (!d->progressDialog)
        return;
    d->progressDialog->reset(); // or it would still show itself, until it is gone
    d->progressDialog->hide();
    d->progressDialog->deleteLater();
    d->progressDialog = nullptr;
}

void SoftwareUpdateClientPrivate::installEXEPackage(const Download &download)
{
    QFile::setPermissions(download.file, QFile::permissions(download.file) | QFileDevice::ExeOwner);
    if (!QProcess::startDetached(download.file, QStringList()))
        tellNotStarted(Failure::NotStarted, QFileInfo(download.file).path());
}

void SoftwareUpdateClientPrivate::installMPKGPackage(const Download &download)
{
    if (!unpackingManager)
        unpackingManager = new DownloadManager;
    unpackingManager->unzipPackage(download.file);
    qv::connect(unpackingManager, SIGNAL(unzippingDone(QString)), q, SLOT(unzippedMPKGPackage(QString)));
}

void SoftwareUpdateClient::unzippedMPKGPackage(const QString &unzippedFilePath)
{
    if (d->unpackingManager) {
        d->unpackingManager->deleteLater();
        d->unpackingManager = nullptr;
    }
    logProgress(QStringLiteral("SoftwareUpdateClient::unzippedMPKGPackage() -> unzipped succesfully to ")
                + unzippedFilePath);
    const QFileInfoList installers =
        QDir(unzippedFilePath).entryInfoList({ macPackages }, QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    if (installers.isEmpty())
        d->tellNotStarted(Failure::NoInstaller, unzippedFilePath);
    for (const QFileInfo &installer : installers) {
        logProgress(QStringLiteral("SoftwareUpdateClient::installMPKGPackage ") + installer.absoluteFilePath());
        if (!QDesktopServices::openUrl(QUrl::fromLocalFile(installer.absoluteFilePath()))) {
            logFailure(QStringLiteral("SoftwareUpdateClient::installMPKGPackage, can't start package installer!"));
            d->tellNotStarted(Failure::NotStarted, unzippedFilePath);
            return;
        }
    }
}

void SoftwareUpdateClientPrivate::installZIPPackage(const Download &download)
{
    if (replaces(download.package))
        return replaceApplication(download);
    // Deliberate: nobody hears where the archive is unpacked to, nobody waits for it, and nobody frees the manager.
    auto *manager = new DownloadManager;
    manager->unzipPackage(download.file);
    logProgress(QStringLiteral("SoftwareUpdateClient::installZipPackage() -> unzipping %1 to %2")
                    .arg(download.file, unpackedFolder));

    const QPointer<SoftwareUpdateClient> self(q);
    if (acceptsRestart() && self)
        q->startZipInstall();
}

bool SoftwareUpdateClientPrivate::acceptsRestart() const
{
    return isAccepted(
        QCoreApplication::translate("SoftwareUpdateClient", "Restart required"),
        QCoreApplication::translate("SoftwareUpdateClient",
                                    "Please restart your application to finish the installation process."),
        QCoreApplication::translate("SoftwareUpdateClient", "Restart later"),
        QCoreApplication::translate("SoftwareUpdateClient", "Restart now"), parentWidget, windowFlags);
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
                    + d->unpackedFolder + QStringLiteral("  to ") + applicationFolder
                    + QStringLiteral(" and restarting ") + application);
        // Deliberate: an updater that is there already is used, however old.
        if (QFile::exists(updater) || QFile::copy(updaterSource.filePath(), updater)) {
            DownloadManager::startUpdate(updater, applicationFolder, d->unpackedFolder,
                                         application.section(QLatin1Char('/'), -1));
            return;
        }
        logFailure(QStringLiteral("SoftwareUpdateClient::startInstallApplication() -> could not copy file to ")
                   + updater);
    }
    logFailure(
        QStringLiteral("SoftwareUpdateClient::startInstallApplication() -> one of the following file/dir is missing: ")
        + folder.absolutePath() + QStringLiteral(" or ") + updaterSource.fileName());
    d->failInstallation();
}

/// Without a @p reason that helps, it gives the advice that always does.
void SoftwareUpdateClientPrivate::failInstallation(const QString &reason) const
{
    const QString advice = QCoreApplication::translate(
        "SoftwareUpdateClient", "Installation process failed. If problem persists try manual install.");
    showFailure(QCoreApplication::translate("SoftwareUpdateClient", "Installation failed"),
                reason.isEmpty() ? advice : reason);
}

// Deliberate: the routines of the types below only tell that they were reached.

void SoftwareUpdateClientPrivate::installMSIPackage(const Download &download)
{
    logProgress(QStringLiteral("SoftwareUpdateClient::installMSIPackage() -> trying to run ") + download.file);
}

void SoftwareUpdateClientPrivate::installDEBPackage(const Download &download)
{
    logProgress(QStringLiteral("SoftwareUpdateClient::installDEBPackage() -> trying to run ") + download.file);
}

void SoftwareUpdateClientPrivate::installRPKPackage(const Download &download)
{
    logProgress(QStringLiteral("SoftwareUpdateClient::installRPKPackage() -> trying to run ") + download.file);
}

void SoftwareUpdateClientPrivate::installTARGZPackage(const Download &download)
{
    logProgress(QStringLiteral("SoftwareUpdateClient::installTARGZPackage() -> trying to run ") + download.file);
}

} // namespace qv
