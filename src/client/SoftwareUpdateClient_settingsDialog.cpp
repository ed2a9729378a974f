// The settings dialog's life: opened, filled, stored, closed. Called by hosts and by the update-available dialog;
// leaves the user's choices in the store.
#include "SoftwareUpdateClient_p.h"

#include "ConnectHelpers.h"
#include "DialogFlags.h"
#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"

namespace qv {

void SoftwareUpdateClient::queryForUpdate(Qt::WindowFlags flags, bool modal)
{
    if (!d->settingsDialog) {
        d->settingsDialog = new SoftwareUpdateDialog(d->parentWidget, flags ? flags : d->windowFlags);
        d->settingsDialog->setModal(modal);
        qv::connect(d->settingsDialog, SIGNAL(checkForUpdate()), this, SLOT(checkForUpdate()));
        qv::connect(d->settingsDialog, SIGNAL(applySettings(const SoftwareUpdateDialogSettings &)), this,
                    SLOT(applyDialogSettings(const SoftwareUpdateDialogSettings &)));
        qv::connect(d->settingsDialog, SIGNAL(rejected()), this, SLOT(deleteUpdateDialog()));
        qv::connect(d->settingsDialog, SIGNAL(accepted()), this, SLOT(deleteUpdateDialog()));
        qv::connect(d->settingsDialog, SIGNAL(destroyed(QObject *)), this, SLOT(setUpdateDialogNull(QObject *)));
        qv::connect(d->settingsDialog, SIGNAL(forceUpdateAvailable()), this, SLOT(updateAvailable()));
    }
    d->settingsDialog->setNotificationText(QString());

    const SoftwareUpdateSettings settings = d->currentSettings();
    SoftwareUpdateDialogSettings shown;
    shown.doUpdateCheck = settings.doUpdateCheck;
    shown.checkForBeta = settings.checkForBeta;
    shown.updateInterval = settings.updateInterval;
    shown.serverURL = settings.serverURL;
    shown.currentVersion = settings.versionNumber.toShortVersion();
    shown.lastCheck = SoftwareUpdateClientPrivate::lastCheckText(settings.lastCheck);
    d->settingsDialog->setDialogSettings(shown);
    d->settingsDialog->show();
    d->settingsDialog->activateWindow();
}

void SoftwareUpdateClient::openSettingsDialogFromUpdateAvailableDialog()
{
    queryForUpdate(dialogFlags(false), true);
}

void SoftwareUpdateClient::applyDialogSettings(const SoftwareUpdateDialogSettings &dialogSettings)
{
    SoftwareUpdateSettings settings = d->currentSettings();
    settings.doUpdateCheck = dialogSettings.doUpdateCheck;
    settings.updateInterval = dialogSettings.updateInterval;
    settings.checkForBeta = dialogSettings.checkForBeta;
    settings.serverURL = dialogSettings.serverURL;
    setCurrentSettings(&settings);
    if (dialogSettings.doUpdateCheck)
        enableSoftwareUpdate();
    else
        disableSoftwareUpdate();
}

void SoftwareUpdateClient::deleteUpdateDialog()
{
    if (!d->settingsDialog)
        return;
    d->passTableOn();
    d->settingsDialog->hide();
    d->settingsDialog->deleteLater();
}

/// The table of packages outlives the settings dialog that it was opened from: it stays where it is on the screen.
void SoftwareUpdateClientPrivate::passTableOn()
{
    if (!availableDialog || availableDialog->parent() != settingsDialog)
        return;
    const bool isShown = availableDialog->isVisible();
    const QRect place = availableDialog->geometry();
    availableDialog->setParent(parentWidget, availableDialog->windowFlags());
    availableDialog->setGeometry(place);
    availableDialog->setVisible(isShown);
}

void SoftwareUpdateClient::setUpdateDialogNull(QObject *)
{
    d->settingsDialog = nullptr;
}

} // namespace qv
