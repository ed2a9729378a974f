#pragma once

#include "DownloadManager.h"

#include <QSettings>
#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;
class QTextBrowser;
class QTreeWidget;

/// Everything the update server has, read with the download manager alone: which packages are new since the last time,
/// their release notes, and a download. What has been seen is remembered in the application's settings.
class CatalogueWindow : public QWidget
{
    Q_OBJECT

public:
    explicit CatalogueWindow(const QUrl &updateServer, QWidget *parent);

private:
    void build();
    void query();
    void showPackages(const qv::PackageInfoList &found);
    void showReleaseNotes();
    void download();
    void downloadEnded(const QString &outcome);

    QSettings settings;
    const QString cacheFile; // holds the last catalogue
    qv::DownloadManager manager;
    qv::PackageInfoList packages; // by row of the list
    QString downloadedFile;

    QTreeWidget *list;
    QTextBrowser *notes;
    QLabel *status;
    QProgressBar *progress;
    QPushButton *queryButton;
    QPushButton *downloadButton;
    QPushButton *cancelButton;
};
