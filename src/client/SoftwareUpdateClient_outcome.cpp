// Who learns how a check ended, and who decides what is shown: the host where its policy says so, else the user.
// Called by checks; leaves the outcome told. Hosts that are asked may do anything, deleting the client included: what
// is called here is a copy, and nobody goes on without a client.
#include "SoftwareUpdateClient_p.h"

#include "SoftwareUpdateDialog.h"

#include <QCoreApplication>
#include <QMessageBox>

#include <algorithm>
#include <utility>

namespace qv {

/// Those that are under way are given up where this one takes their place; else the first answer counts.
void SoftwareUpdateClientPrivate::beginCheck(const QDateTime &started, Asker asker)
{
    const bool isSignatureAwaited = !std::exchange(unsealed, QByteArray()).isEmpty();
    if (isSignatureAwaited || asker == Asker::Host) {
        q->deleteNetworkmanager();
        untold += std::exchange(underWay, {});
    }
    current = Check();
    current.id = ++lastCheckId;
    current.asker = asker;
    current.source = CatalogueSource(policy);
    current.outcome.started = started;
    current.outcome.isByUser = isUser(asker);
}

/// Goes on with the check of this @p id. Those beside it are given up: their requests went with the manager. Where the
/// user waits for one of them, this is the answer to that.
void SoftwareUpdateClientPrivate::resumeCheck(int id)
{
    bool isByUser = false;
    current = Check();
    for (const Check &check : std::exchange(underWay, {})) {
        isByUser = isByUser || check.outcome.isByUser;
        if (check.id == id)
            current = check;
        else
            untold << check;
    }
    current.outcome.isByUser = isByUser;
}

bool SoftwareUpdateClientPrivate::isHostAsking() const
{
    return std::any_of(underWay.cbegin(), underWay.cend(),
                       [](const Check &check) { return check.asker == Asker::Host; });
}

bool SoftwareUpdateClientPrivate::isSettingsDialogOpen() const
{
    return settingsDialog && !settingsDialog->isHidden();
}

/// False when the client has gone.
bool SoftwareUpdateClientPrivate::keepOffered(PackageInfoList &found)
{
    const auto isOffered = policy.isOffered;
    if (!isOffered)
        return true;
    const QPointer<SoftwareUpdateClient> self(q);
    const auto isUnwanted = [&](const PackageInfo &package) { return self && !isOffered(package); };
    found.erase(std::remove_if(found.begin(), found.end(), isUnwanted), found.end());
    return !self.isNull();
}

void SoftwareUpdateClientPrivate::announceUpdates(Check check)
{
    check.outcome.packages = packages;
    const bool isLookedFor = check.outcome.isByUser && isSettingsDialogOpen();
    const auto announce = policy.announce;
    if (!announce || isLookedFor) {
        q->updateAvailable();
    } else {
        if (availableDialog)
            fillTable(); // its rows are the packages'
        const QPointer<SoftwareUpdateClient> self(q);
        const bool isToldByHost = announce(check.outcome.packages);
        if (!self)
            return;
        if (!isToldByHost)
            q->showAvailable();
    }
    endCheck(check, CheckOutcome::UpdatesFound, QString());
}

/// The outcome is told when all else is done, by tellOutcomes().
void SoftwareUpdateClientPrivate::endCheck(Check check, CheckOutcome::Kind kind, const QString &text)
{
    check.outcome.kind = kind;
    check.outcome.text = text;
    countFailure(check, kind);
    if (check.id != 0)
        untold << check;
}

void SoftwareUpdateClientPrivate::tellOutcomes()
{
    const QPointer<SoftwareUpdateClient> self(q);
    while (self && !untold.isEmpty()) {
        const Check check = untold.takeFirst();
        const auto checked = policy.checked;
        if (checked)
            checked(check.outcome);
        else if (check.asker == Asker::Host && !isSettingsDialogOpen())
            showOutcome(check.outcome);
    }
}

void SoftwareUpdateClientPrivate::showOutcome(const CheckOutcome &outcome)
{
    if (outcome.text.isEmpty())
        return; // the table tells, or another check will
    const auto icon = outcome.kind == CheckOutcome::UpToDate ? QMessageBox::Information : QMessageBox::Warning;
    auto *box = new QMessageBox(icon, QCoreApplication::translate("SoftwareUpdateDialogGui", "Check for Updates"),
                                outcome.text, QMessageBox::Ok, parentWidget, windowFlags);
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace qv
