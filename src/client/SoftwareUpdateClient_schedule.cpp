// When to check: at start, after a delay, on the weekly and the other rhythms, or because the user presses "Check Now"
// in the settings dialog. What is due ends in a request, with a policy's spread not at once.
#include "SoftwareUpdateClient_p.h"

#include "Kinds.h"
#include "LogQt.h"
#include "SoftwareUpdateDialog.h"

#include <QRandomGenerator>

#include <algorithm>
#include <limits>

namespace qv {

namespace {

bool isRhythm(int interval)
{
    return Interval(interval) == Interval::Daily || Interval(interval) == Interval::Weekly
        || Interval(interval) == Interval::Monthly;
}

/// How long the next check waits after so many that failed: 1, 2, 4, ... hours, at most a day.
qint64 msBackOff(int failedChecks)
{
    constexpr int most = 24;
    constexpr qint64 msPerHour = 60 * 60 * 1000;
    return msPerHour * std::min(1 << std::clamp(failedChecks - 1, 0, 8), most);
}

} // namespace

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
        d->checkInTurn(settings, msDelay);
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
    if (!isUser(asker) && (isHostAsking() || (!isTyped && !settings.doUpdateCheck)))
        return;
    settings.lastCheck = QDateTime::currentDateTime();
    beginCheck(settings.lastCheck, asker);
    performUpdateCheck(QUrl(isTyped ? settingsDialog->getDialogSettings().serverURL : settings.serverURL));
    // Only now: the dialog has just been given the time of the check before this one.
    q->setCurrentSettings(&settings);
    tellOutcomes();
}

/// A check by rhythm, or the one at start.
void SoftwareUpdateClientPrivate::checkInTurn(const SoftwareUpdateSettings &settings, int msDelay)
{
    if (policy.msSpread <= 0)
        checkLater(settings, msDelay);
    else if (settings.doUpdateCheck && !isTurnAwaited())
        awaitTurn(std::max<qint64>(msDelay, msUntilRetry(settings.lastCheck)));
}

bool SoftwareUpdateClientPrivate::isTurnAwaited() const
{
    return turnTimer && turnTimer->isActive();
}

void SoftwareUpdateClientPrivate::awaitTurn(qint64 msDelay)
{
    if (!turnTimer) {
        turnTimer = new QTimer(q);
        turnTimer->setSingleShot(true);
        QObject::connect(turnTimer, &QTimer::timeout, q, [this] {
            if (!settingsDialog)
                check(currentSettings(), Asker::Timer);
        });
    }
    const qint64 msSpread = QRandomGenerator::global()->bounded(policy.msSpread);
    turnTimer->start(int(std::min<qint64>(msDelay + msSpread, std::numeric_limits<int>::max())));
}

/// 0 where no check has failed, or long ago.
qint64 SoftwareUpdateClientPrivate::msUntilRetry(const QDateTime &lastCheck) const
{
    const int failed = failedChecks();
    if (failed == 0)
        return 0;
    const qint64 msWait = msBackOff(failed);
    return std::clamp<qint64>(QDateTime::currentDateTime().msecsTo(lastCheck.addMSecs(msWait)), 0, msWait);
}

void SoftwareUpdateClientPrivate::stopTurn()
{
    if (turnTimer)
        turnTimer->stop();
}

/// Goes on sooner than in turn after a failure, ever later after several.
void SoftwareUpdateClientPrivate::countFailure(const Check &check, CheckOutcome::Kind kind)
{
    if (policy.msSpread <= 0 || kind == CheckOutcome::Cancelled)
        return;
    if (kind == CheckOutcome::UpdatesFound || kind == CheckOutcome::UpToDate) {
        stopTurn();
        storeFailedChecks(0);
    } else if (check.asker == Asker::Timer) {
        const int failed = failedChecks() + 1;
        storeFailedChecks(failed);
        if (checkTimer->isActive())
            awaitTurn(msBackOff(failed));
    }
}

void SoftwareUpdateClient::queryLastUpdate(int msDelay)
{
    const SoftwareUpdateSettings settings = d->currentSettings();
    if (d->settingsDialog || d->isTurnAwaited())
        return;
    const bool isRetry = d->failedChecks() > 0 && isRhythm(settings.updateInterval);
    const bool isDue = isCheckDue(settings.updateInterval, settings.lastCheck, QDateTime::currentDateTime());
    if (!isRetry && !isDue)
        return;
    d->checkInTurn(settings, msDelay);
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
