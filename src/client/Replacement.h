#pragma once

// Not installed: the inside of SoftwareUpdateClient.

#include <QObject>
#include <QPointer>
#include <QStringList>

namespace qv {

class DownloadManager;
class Unzipper;

/// One package on its way into the place of the application's folder, from its download to the updater. Owns all that
/// is made for it: the manager, the downloaded file with its folder, and the folder beside the application's into which
/// it is unpacked. What has not been handed to the updater goes with this object, or when the application ends.
class Replacement : public QObject
{
    Q_OBJECT

public:
    /// What keeps this application's folder from being replaced, for the user; empty where nothing is seen.
    static QString obstacle();

    /// @p archive lies alone in its folder, or will: @p manager fetches it. Without one it is there. A download that
    /// fails or is aborted ends this object.
    Replacement(const QString &archive, DownloadManager *manager, QObject *parent);
    ~Replacement() override;

    const QString archive;

    /// Unpacks the archive in the background and looks at what it holds; unpacked() or failed() follow.
    void unpack();

    /// Makes the updater take the place of this process: it starts the new version. Returns when that failed.
    void installNow();

    /// Leaves the folder to the updater as soon as the application ends or this object goes: it waits for the end of
    /// this process and starts nothing. Takes the place of one that was left so before. False when that failed.
    bool installAtEnd();

signals:
    void unpacked();
    void failed(const QString &text); ///< plain text for the user

private:
    void examine();
    bool findProgram();
    void supersede() const;
    void finish();
    void startUpdaterForLater();
    void removeArchive() const;
    QStringList updaterArguments() const;

    QPointer<DownloadManager> manager;
    Unzipper *unzipper = nullptr;
    QString folder; // with the new version; empty when it is not ours, or not whole
    bool isForLater = false;
};

} // namespace qv
