#pragma once

#include "DownloadManager.h"

#include <QMainWindow>
#include <QSettings>

class QPlainTextEdit;
class QProgressBar;
class QTreeWidget;

/// Everything the update server has, read with the download manager alone: which packages are new since the last time,
/// their release notes, and a download. What has been seen is remembered in the application's settings.
class CatalogueWindow : public QMainWindow
{
    Q_OBJECT

public:
    CatalogueWindow(const QUrl &updateServer, const qv::UpdatePolicy &policy, QWidget *parent);

private:
    void showPackages(const qv::PackageInfoList &found);
    void showReleaseNotes();
    void download();
    void downloadEnded(const QString &outcome);

    QSettings settings;
    qv::DownloadManager manager;
    qv::PackageInfoList packages; // by row of the list
    QString unfinishedFile;       // exists while a package downloads

    QTreeWidget *list;
    QPlainTextEdit *notes;
    QProgressBar *progress;
    QAction *downloadAction;
    QAction *cancelAction;
};
