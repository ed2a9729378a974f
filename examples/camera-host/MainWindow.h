#pragma once

#include "CatalogueWindow.h"
#include "SoftwareUpdateClient.h"

#include <QMainWindow>

/// The window of a small host application: a list of cameras, and a Help menu with "Check for Updates...".
/// SoftwareUpdateClient does all of that; the other entries show what the download manager does alone.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// @p nextVersion is the catalogue for "Update Myself". All three ways to update keep to the @p policy.
    MainWindow(const QUrl &updateServer, const QUrl &nextVersion, const qv::UpdatePolicy &policy);

    /// The library carries its own translations, those of the standard buttons come with Qt. To be called before there
    /// are windows, as they keep the language that they were made in.
    static void installTranslators();

private:
    qv::SoftwareUpdateClient updates;
    CatalogueWindow catalogue;
};
