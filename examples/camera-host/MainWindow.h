#pragma once

#include "SoftwareUpdateClient.h"

#include <QMainWindow>
#include <QUrl>

/// The window of a small host application: a list of cameras, and a Help menu with "Check for Updates...".
/// SoftwareUpdateClient does all of that; the catalogue window shows what the download manager does alone.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(const QUrl &updateServer);

private:
    void showCameras();
    void buildMenus();
    void showCatalogue();
    void about();

    const QUrl updateServer;
    qv::SoftwareUpdateClient updates;
};
