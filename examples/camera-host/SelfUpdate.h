#pragma once

#include "DownloadManager.h"

#include <QProgressDialog>
#include <QTemporaryDir>

/// Puts the next version of this program in its place, with the download manager alone: asks @p catalogue for a newer
/// "zip" package, downloads and unpacks it, and hands over to UpdateInstaller. The dialog shows how far that is.
///
/// Made with new for one attempt, as a download manager unpacks one package in its life. At the end it tells why and
/// deletes itself - or the whole program gives way to its new version.
class SelfUpdate : public QProgressDialog
{
    Q_OBJECT

public:
    /// Begins at once. Without a @p window nobody is asked, and the program ends when there is no update.
    SelfUpdate(const QUrl &catalogue, const qv::UpdatePolicy &policy, QWidget *window);

    /// What came of the update by which this program was started; empty when the user did that.
    static QString outcome();

private:
    void offer(qv::PackageInfoList found);
    void handOver(const QString &newFolder);
    void end(const QString &outcome);

    qv::DownloadManager manager;
    QTemporaryDir downloads;
};
