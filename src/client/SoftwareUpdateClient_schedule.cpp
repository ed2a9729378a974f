// When to check: at start, after a delay, on the weekly and the other rhythms, or because the user presses "Check Now"
// in the settings dialog, which is opened and closed here. What is due ends in checkForUpdate().
#include "SoftwareUpdateClient.h"

#include "ConnectHelpers.h"
#include "DialogFlags.h"
#include "LogQt.h"
#include "SoftwareUpdateDialog.h"

#include <QTimer>

namespace qv {

bool SoftwareUpdateClient::isCheckDue(int interval, const QDateTime &lastCheck, const QDateTime &now)
{
    switch (interval) {
    case 1:
        return lastCheck.addDays(1) < now;
    case 2:
        return lastCheck.addDays(7) < now;
    case 3:
        return lastCheck.addMonths(1) < now;
    default:
        return false;
    }
}

void SoftwareUpdateClient::doInitialCheck(int msDelay)
{
    const SoftwareUpdateSettings settings = currentSettings();
    if (settings.doUpdateCheck && settings.updateInterval == 0)
        checkForUpdate(msDelay);
}

void SoftwareUpdateClient::checkForUpdate(int millisecondsDelay)
{
    if (!currentSettings().doUpdateCheck)
        return;
    if (millisecondsDelay <= 0) {
        doBackgroundCheck();
        return;
    }
    // Deliberate: the timer lives on with the client.
    auto *delayTimer = new QTimer(this);
    connect(delayTimer, &QTimer::timeout, this, &SoftwareUpdateClient::doBackgroundCheck);
    delayTimer->setSingleShot(true);
    delayTimer->start(millisecondsDelay);
}

void SoftwareUpdateClient::doBackgroundCheck()
{
    if (!settingsDialog)
        checkForUpdate();
}

void SoftwareUpdateClient::checkForUpdate()
{
    SoftwareUpdateSettings settings = currentSettings();
    settings.lastCheck = QDateTime::currentDateTime();
    if (settingsDialog)
        performUpdateCheck(QUrl(settingsDialog->getDialogSettings().serverURL));
    else if (settings.doUpdateCheck)
        performUpdateCheck(QUrl(settings.serverURL));
    else
        return;
    // Only now: the dialog has just been given the time of the check before this one.
    setCurrentSettings(&settings);
}

void SoftwareUpdateClient::queryLastUpdate(int delay)
{
    const SoftwareUpdateSettings settings = currentSettings();
    if (settingsDialog || !isCheckDue(settings.updateInterval, settings.lastCheck, QDateTime::currentDateTime()))
        return;
    checkForUpdate(delay);
    switch (settings.updateInterval) {
    case 2:
        LogQt::write(Log::Progress, QStringLiteral("SoftwareUpdateClient::queryLastUpdate() -> weekly update fired"));
        break;
    case 3:
        LogQt::write(Log::Progress, QStringLiteral("SoftwareUpdateClient::queryLastUpdate() -> monthly update fired"));
        break;
    default:
        LogQt::write(Log::Progress, QStringLiteral("SoftwareUpdateClient::queryLastUpdate() -> daily update fired"));
    }
}

void SoftwareUpdateClient::queryForUpdate(Qt::WindowFlags flags, bool modal)
{
    if (!settingsDialog) {
        settingsDialog = new SoftwareUpdateDialog(parentWidget, flags ? flags : windowFlags);
        settingsDialog->setModal(modal);
        qv::connect(settingsDialog, SIGNAL(checkForUpdate()), this, SLOT(checkForUpdate()));
        qv::connect(settingsDialog, SIGNAL(applySettings(const SoftwareUpdateDialogSettings &)), this,
                    SLOT(applyDialogSettings(const SoftwareUpdateDialogSettings &)));
        qv::connect(settingsDialog, SIGNAL(rejected()), this, SLOT(deleteUpdateDialog()));
        qv::connect(settingsDialog, SIGNAL(accepted()), this, SLOT(deleteUpdateDialog()));
        qv::connect(settingsDialog, SIGNAL(destroyed(QObject *)), this, SLOT(setUpdateDialogNull(QObject *)));
        qv::connect(settingsDialog, SIGNAL(forceUpdateAvailable()), this, SLOT(updateAvailable()));
    }
    settingsDialog->setNotificationText(QString());

    const SoftwareUpdateSettings settings = currentSettings();
    SoftwareUpdateDialogSettings shown;
    shown.doUpdateCheck = settings.doUpdateCheck;
    shown.checkForBeta = settings.checkForBeta;
    shown.updateInterval = settings.updateInterval;
    shown.serverURL = settings.serverURL;
    shown.currentVersion = settings.versionNumber.toShortVersion();
    shown.lastCheck = lastCheckText(settings.lastCheck);
    settingsDialog->setDialogSettings(shown);
    settingsDialog->show();
    settingsDialog->activateWindow();
}

void SoftwareUpdateClient::openSettingsDialogFromUpdateAvailableDialog()
{
    queryForUpdate(dialogFlags(false), true);
}

void SoftwareUpdateClient::deleteUpdateDialog()
{
    if (!settingsDialog)
        return;
    settingsDialog->hide();
    settingsDialog->deleteLater();
}

void SoftwareUpdateClient::setUpdateDialogNull(QObject *)
{
    settingsDialog = nullptr;
}

} // namespace qv
