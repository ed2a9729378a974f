#pragma once

#include "SoftwareUpdateClient.h"

#include <QMainWindow>

/// The window of a small host application: a list of cameras, and a Help menu with "Check for Updates...".
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(const QUrl &updateServer);

private:
    void showCameras();
    void buildMenus();
    void about();

    qv::SoftwareUpdateClient updates;
};
