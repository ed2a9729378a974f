// When to check: at start, after a delay, on the weekly and the other rhythms, or because the user presses "Check Now"
// in the settings dialog. What is due ends in a request.
#include "SoftwareUpdateClient_p.h"

#include "Kinds.h"
#include "LogQt.h"
#include "SoftwareUpdateDialog.h"

namespace qv {

bool SoftwareUpdateClient::isCheckDue(int interval, const QDateTime &lastCheck, const QDateTime &now)
{
    switch (Interval(interval)) {
    case Interval::Daily:
        return lastCheck.addDays(1) < now;
    case Interval::Weekly:
        return lastCheck.addDays(7) < now;
    case Interval::Monthly:
        return lastCheck.addMonths(1) < now;
    default:
        return false;
    }
}

void SoftwareUpdateClient::doInitialCheck(int msDelay)
{
    const SoftwareUpdateSettings settings = d->currentSettings();
    if (Interval(settings.updateInterval) == Interval::AtApplicationStart)
        d->checkLater(settings, msDelay);
}

void SoftwareUpdateClient::checkForUpdate(int msDelay)
{
    d->checkLater(d->currentSettings(), msDelay);
}

void SoftwareUpdateClientPrivate::checkLater(const SoftwareUpdateSettings &settings, int msDelay)
{
    if (!settings.doUpdateCheck)
        return;
    if (msDelay <= 0) {
        if (!settingsDialog)
            check(settings);
        return;
    }
    // Deliberate: the timer lives on with the client.
    auto *delayTimer = new QTimer(q);
    QObject::connect(delayTimer, &QTimer::timeout, q, &SoftwareUpdateClient::doBackgroundCheck);
    delayTimer->setSingleShot(true);
    delayTimer->start(msDelay);
}

void SoftwareUpdateClient::doBackgroundCheck()
{
    if (!d->settingsDialog)
        checkForUpdate();
}

void SoftwareUpdateClient::checkForUpdate()
{
    using Asker = SoftwareUpdateClientPrivate::Asker;
    const bool isByUser = d->settingsDialog && sender() == d->settingsDialog;
    d->check(d->currentSettings(), isByUser ? Asker::SettingsDialog : Asker::Nobody);
}

void SoftwareUpdateClient::checkNow()
{
    d->check(d->currentSettings(), SoftwareUpdateClientPrivate::Asker::Host);
}

void SoftwareUpdateClientPrivate::check(SoftwareUpdateSettings settings, Asker asker)
{
    const bool isTyped = settingsDialog && asker != Asker::Host;
    if (asker == Asker::Nobody && (isHostAsking() || (!isTyped && !settings.doUpdateCheck)))
        return;
    settings.lastCheck = QDateTime::currentDateTime();
    beginCheck(settings.lastCheck, asker);
    performUpdateCheck(QUrl(isTyped ? settingsDialog->getDialogSettings().serverURL : settings.serverURL));
    // Only now: the dialog has just been given the time of the check before this one.
    q->setCurrentSettings(&settings);
    tellOutcomes();
}

void SoftwareUpdateClient::queryLastUpdate(int msDelay)
{
    const SoftwareUpdateSettings settings = d->currentSettings();
    if (d->settingsDialog || !isCheckDue(settings.updateInterval, settings.lastCheck, QDateTime::currentDateTime()))
        return;
    d->checkLater(settings, msDelay);
    switch (Interval(settings.updateInterval)) {
    case Interval::Weekly:
        LogQt::write(Log::Progress, QStringLiteral("SoftwareUpdateClient::queryLastUpdate() -> weekly update fired"));
        break;
    case Interval::Monthly:
        LogQt::write(Log::Progress, QStringLiteral("SoftwareUpdateClient::queryLastUpdate() -> monthly update fired"));
        break;
    default:
        LogQt::write(Log::Progress, QStringLiteral("SoftwareUpdateClient::queryLastUpdate() -> daily update fired"));
    }
}

} // namespace qv
