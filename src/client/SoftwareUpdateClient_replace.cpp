// "zip" packages that really replace the application, where the policy wants it: what keeps them from it is told before
// the download, then one is unpacked, and then the user is asked. Called on the road of an installation; leaves a
// Replacement that waits for the end of the application, or the updater in its place.
#include "SoftwareUpdateClient_p.h"

#include "DownloadManager.h"
#include "Kinds.h"
#include "Replacement.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace qv {

bool SoftwareUpdateClientPrivate::replaces(const PackageInfo &package) const
{
    return policy.replacesApplication && package.suffix == Suffix::zip && !policy.installers.value(package.suffix);
}

/// False when it cannot, and the user has been told.
bool SoftwareUpdateClientPrivate::canReplace()
{
    const QString obstacle = Replacement::obstacle();
    if (!obstacle.isEmpty())
        failInstallation(obstacle);
    return obstacle.isEmpty();
}

void SoftwareUpdateClientPrivate::replaceApplication(const Download &download)
{
    Replacement *replacement = nullptr;
    for (Replacement *begun : q->findChildren<Replacement *>()) {
        if (begun->archive == download.file)
            replacement = begun;
    }
    if (!replacement) // the policy is younger than the download
        replacement = new Replacement(download.file, nullptr, q);

    auto *progress = new QProgressDialog(parentWidget, windowFlags);
    progress->setLabelText(
        QCoreApplication::translate("DownloadManager", "Unpacking '%1'").arg(QFileInfo(download.file).fileName()));
    progress->setRange(0, 0);
    const auto dismiss = [progress] {
        progress->reset(); // or it would still show itself, until it is gone
        progress->deleteLater();
    };
    QObject::connect(progress, &QProgressDialog::canceled, replacement, &QObject::deleteLater);
    QObject::connect(replacement, &Replacement::unpacked, progress, dismiss);
    QObject::connect(replacement, &Replacement::failed, progress, dismiss);
    QObject::connect(replacement, &QObject::destroyed, progress, dismiss);
    QObject::connect(replacement, &Replacement::unpacked, q, [this, replacement] { finishReplacement(replacement); });
    QObject::connect(replacement, &Replacement::failed, q, [this, replacement](const QString &text) {
        replacement->deleteLater();
        failInstallation(text);
    });
    replacement->unpack();
}

void SoftwareUpdateClientPrivate::finishReplacement(Replacement *replacement)
{
    const QPointer<Replacement> alive(replacement);
    const bool isWantedNow = acceptsRestart();
    if (!alive)
        return;
    if (isWantedNow)
        replacement->installNow();
    else if (replacement->installAtEnd())
        return;
    replacement->deleteLater();
    failInstallation();
}

} // namespace qv
