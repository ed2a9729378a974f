#pragma once

#include "CatalogueWindow.h"
#include "OnvifCameras.h"
#include "SoftwareUpdateClient.h"

#include <QMainWindow>

class QLabel;
class QPushButton;
class QTreeWidget;

/// The window of a small host application: a list of cameras with their firmware, a button for the updates that a check
/// has found, and a Help menu. SoftwareUpdateClient does all of that; "Catalogue..." shows what the download manager
/// does alone.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// @p logins are those of the cameras at these @p places. The ways to update keep to the @p policy, to which the
    /// window adds its own part.
    MainWindow(const QUrl &updateServer, qv::UpdatePolicy policy, const QStringList &places,
               const QList<qv::OnvifCamera> &logins);

    /// The library carries its own translations, those of the standard buttons come with Qt. To be called before there
    /// are windows, as they keep the language that they were made in.
    static void installTranslators();

    /// What came of the update by which this program was started; empty when the user did that.
    static QString updateResult();

private:
    void listCameras(const QStringList &places);
    void tellOfUpdates(qv::UpdatePolicy &policy);
    void showFound(const qv::PackageInfoList &packages);

    qv::OnvifCameras cameras;
    qv::SoftwareUpdateClient updates;
    CatalogueWindow catalogue;
    QTreeWidget *list;
    QLabel *told; // of the check that the user asked for
    QPushButton *button;
};
