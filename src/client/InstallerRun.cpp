// One package in the hands of a host's installer: its signals, its silence, its death, and the end of the file. Made by
// the queue of SoftwareUpdateClient_installers.cpp, which hears how it ended; leaves nothing on the disk.
#include "InstallerRun.h"

#include "FileUtils.h"
#include "LogQt.h"
#include "PolicyTexts.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <utility>

namespace qv {

namespace {

constexpr int msMostSilence = 2 * 60 * 1000;

} // namespace

InstallerRun::InstallerRun(PackageInstaller *installer, const QString &file)
    : QObject(QCoreApplication::instance()), installer(installer), file(file),
      folder(file.isEmpty() ? QString() : QFileInfo(file).path()), silence(new QTimer(this))
{
    silence->setObjectName(QStringLiteral("installerSilence"));
    silence->setSingleShot(true);
    silence->setInterval(msMostSilence);
    connect(silence, &QTimer::timeout, this, &InstallerRun::fallSilent);
}

InstallerRun::~InstallerRun()
{
    removeFolder();
}

void InstallerRun::begin(const PackageInfo &package)
{
    isBegun = true;
    if (!installer || installer->run) {
        end(false, installer ? installerBusyText() : installerGoneText());
        deleteLater();
        return;
    }
    installer->run = this;
    connect(installer, &PackageInstaller::progress, this, [this](int value, int total, const QString &what) {
        if (isOver)
            return;
        silence->start();
        emit progress(value, total, what);
    });
    connect(installer, &PackageInstaller::finished, this, &InstallerRun::release);
    connect(installer, &QObject::destroyed, this, [this] { release(false, installerGoneText()); });
    silence->start();
    PackageInfo downloaded = package;
    downloaded.localFile = file;
    installer->install(downloaded, file);
}

void InstallerRun::cancel()
{
    if (std::exchange(isCancelled, true) || !installer)
        return;
    if (!isOver)
        silence->start();
    installer->cancel();
}

/// The installer is free for another run; what it still says is none of this one's business.
void InstallerRun::release(bool isInstalled, const QString &message)
{
    isCancelled = true; // there is nothing left that could be
    if (installer) {
        installer->disconnect(this);
        installer->run.clear();
    }
    end(isInstalled, message);
    deleteLater();
}

/// The installer counts as busy until it does end: its late word must not be taken for that on the next package.
void InstallerRun::fallSilent()
{
    LogQt::write(Log::Error, QStringLiteral("InstallerRun::fallSilent() -> no sign of life from the installer"));
    end(false, installerSilentText());
    cancel();
}

void InstallerRun::end(bool isInstalled, const QString &message)
{
    if (std::exchange(isOver, true))
        return;
    silence->stop();
    removeFolder();
    emit ended(isInstalled, message);
}

void InstallerRun::removeFolder()
{
    const QString gone = std::exchange(folder, QString());
    if (!gone.isEmpty() && !FileUtils::eraseFolder(gone))
        LogQt::write(Log::Error, QStringLiteral("InstallerRun::removeFolder() -> could not remove ") + gone);
}

} // namespace qv
