#pragma once

#include "DownloadManager.h"

#include <QPointer>
#include <QTemporaryDir>

class QProgressDialog;
class QWidget;

/// Puts the next version of this program in its place, with the download manager alone: asks the server for a newer
/// "zip" package, downloads and unpacks it, and hands over to UpdateInstaller. Made for one attempt, at the end of
/// which it deletes itself - or the whole program gives way to its new version.
class SelfUpdate : public QObject
{
    Q_OBJECT

public:
    /// @p window is the parent of the boxes and of this.
    SelfUpdate(const QUrl &catalogue, QWidget *window);

    void start();

    /// What the version before this one was called with. The updater starts programs without arguments; they travel in
    /// the environment, with "--updated-from" and that version behind them.
    static QStringList handedOver();

private:
    void offer(qv::PackageInfoList found);
    void download(const qv::PackageInfo &package);
    void handOver(const QString &newFolder);
    void end(const QString &outcome);

    QWidget *window;
    qv::DownloadManager manager;
    QPointer<QProgressDialog> progress;
    QTemporaryDir downloads;
};
