// What a host writes to have software updates: the client as a member of its main window, the firmware versions of its
// cameras told, a check at start, and a menu entry.
#include "MainWindow.h"

#include "CatalogueWindow.h"
#include "SelfUpdate.h"

#include <QAction>
#include <QCoreApplication>
#include <QHeaderView>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QTreeWidget>

namespace {

struct Camera
{
    const char *place;
    const char *model;
    const char *firmware;
};

// A real host asks its cameras.
const Camera cameras[] = {
    { "Main entrance", "QD-2204", "4.1.0" },    { "Reception", "QF-1812", "4.1.0" },
    { "Car park, north", "QB-3108", "10.2.0" }, { "Car park, south", "QB-3108", "10.3.2" },
    { "Loading bay", "QP-5216", "10.2.0" },     { "Server room", "QT-4402", "2.9" },
    { "Back door", "QI-7001", "1.6.3" },        { "Warehouse", "QM-6060", "3.0.1" },
};

constexpr int msBeforeInitialCheck = 500; // first the window, then the network

} // namespace

MainWindow::MainWindow(const QUrl &updateServer, const QUrl &nextVersion)
    : updateServer(updateServer), nextVersion(nextVersion),
      updates(QCoreApplication::applicationName(),
              qv::VersionNumber(QCoreApplication::applicationVersion().toStdString()), updateServer.toString(), this)
{
    // What the client has written is the host's to change: the types of packages that it knows how to handle, and the
    // address. The store keeps the first one it was given, while the demo's server has another one at each start.
    qv::SoftwareUpdateSettings settings;
    updates.getCurrentSettings(&settings);
    settings.serverURL = updateServer.toString();
    settings.supportedPackageTypes = QStringList { "deb", "tar.gz", "zip", "exe", "mpkg" };
    settings.installablePackageTypes = QStringList { "zip", "exe", "mpkg" };
    updates.setCurrentSettings(&settings);

    qv::SoftUpCurrentCameraVersions versions;
    for (const Camera &camera : cameras)
        versions.append({ camera.model, qv::VersionNumber(camera.firmware) });
    updates.setCurrentCameraVersions(versions);

    showCameras();
    buildMenus();
    updates.doInitialCheck(msBeforeInitialCheck);
}

void MainWindow::tellUpdate(const QString &previous)
{
    const QString version = QCoreApplication::applicationVersion();
    statusBar()->showMessage(previous == version ? tr("The update did not work, %1 goes on").arg(version)
                                                 : tr("Updated from %1 to %2").arg(previous, version));
}

void MainWindow::showCameras()
{
    auto *list = new QTreeWidget;
    list->setHeaderLabels({ tr("Camera"), tr("Model"), tr("Firmware") });
    list->setRootIsDecorated(false);
    list->setAlternatingRowColors(true);
    for (const Camera &camera : cameras)
        list->addTopLevelItem(new QTreeWidgetItem({ camera.place, camera.model, camera.firmware }));
    list->header()->setSectionResizeMode(QHeaderView::Stretch);
    setCentralWidget(list);
    setWindowTitle(QCoreApplication::applicationName());
    resize(560, 320);
}

void MainWindow::buildMenus()
{
    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addAction(tr("&Quit"), this, &QWidget::close);

    QMenu *help = menuBar()->addMenu(tr("&Help"));
    QAction *check = help->addAction(tr("Check for &Updates..."));
    check->setObjectName("checkForUpdates");
    connect(check, &QAction::triggered, &updates, [this] { updates.queryForUpdate(); });
    help->addAction(tr("&Catalogue..."), this, &MainWindow::showCatalogue)->setObjectName("catalogue");
    help->addAction(tr("Update &Myself..."), this, &MainWindow::updateMyself)->setObjectName("updateMyself");
    help->addSeparator();
    help->addAction(tr("&About"), this, &MainWindow::about)->setObjectName("about");
}

void MainWindow::showCatalogue()
{
    auto *window = findChild<CatalogueWindow *>();
    if (!window)
        window = new CatalogueWindow(updateServer, this);
    window->show();
    window->activateWindow();
}

void MainWindow::updateMyself()
{
    if (!findChild<SelfUpdate *>())
        (new SelfUpdate(nextVersion, this))->start();
}

void MainWindow::about()
{
    QMessageBox::about(this, tr("About %1").arg(QCoreApplication::applicationName()),
                       tr("<b>%1 %2</b><p>Shows how an application that manages network cameras keeps itself and the "
                          "firmware of its cameras up to date.")
                           .arg(QCoreApplication::applicationName(), QCoreApplication::applicationVersion()));
}
