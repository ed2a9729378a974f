#pragma once

#include "SoftwareUpdateClient.h"

#include <QMainWindow>
#include <QUrl>

/// The window of a small host application: a list of cameras, and a Help menu with "Check for Updates...".
/// SoftwareUpdateClient does all of that; the other entries show what the download manager does alone.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// @p nextVersion is the catalogue for "Update Myself".
    MainWindow(const QUrl &updateServer, const QUrl &nextVersion);

    /// After an update, whether it came from version @p previous to this one or, as this is the same, did not work.
    void tellUpdate(const QString &previous);

private:
    void showCameras();
    void buildMenus();
    void showCatalogue();
    void updateMyself();
    void about();

    const QUrl updateServer;
    const QUrl nextVersion;
    qv::SoftwareUpdateClient updates;
};
