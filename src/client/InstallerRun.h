#pragma once

#include "PackageInstaller.h"

#include <QTimer>

namespace qv {

/// One package in the hands of a host's installer, from its download on. The folder that holds its file is the run's,
/// and goes at the end. Whoever made it deletes it as long as nothing was handed over. Afterwards it belongs to itself
/// and ends with what it waits for: an installer that works does not lose its file because nobody waits any more. No
/// run outlives the application.
class InstallerRun : public QObject
{
    Q_OBJECT

public:
    InstallerRun(PackageInstaller *installer, const QString &file);
    ~InstallerRun() override;

    /// Hands over; ended() follows, maybe from within this call. At once, where the installer works for another run or
    /// has been deleted.
    void begin(const PackageInfo &package);

    /// Asks the installer to end, once.
    void cancel();

    bool hasBegun() const { return isBegun; }

signals:
    void progress(int value, int total, const QString &what);

    /// The end, once. @p message is the installer's, or why there was none from it.
    void ended(bool isInstalled, const QString &message);

private:
    void release(bool isInstalled, const QString &message);
    void end(bool isInstalled, const QString &message);
    void fallSilent();
    void removeFolder();

    const QPointer<PackageInstaller> installer;
    const QString file;
    QString folder;        // empty when it is gone
    QTimer *const silence; // "installerSilence": runs from one sign of life to the next
    bool isBegun = false;
    bool isCancelled = false;
    bool isOver = false;
};

} // namespace qv
