// What a host writes to have software updates: the client as a member of its main window, the firmware versions of its
// cameras told, a check at start, and a menu entry.
#include "MainWindow.h"

#include "SelfUpdate.h"

#include <QCoreApplication>
#include <QHeaderView>
#include <QLibraryInfo>
#include <QLocale>
#include <QMenuBar>
#include <QStatusBar>
#include <QTranslator>
#include <QTreeWidget>

// Place, model, firmware. A real host asks its cameras.
static const QStringList cameras[] = {
    { "Main entrance", "QD-2204", "4.1.0" },    { "Reception", "QF-1812", "4.1.0" },
    { "Car park, north", "QB-3108", "10.2.0" }, { "Car park, south", "QB-3108", "10.3.2" },
    { "Loading bay", "QP-5216", "10.2.0" },     { "Server room", "QT-4402", "2.9" },
    { "Back door", "QI-7001", "1.6.3" },        { "Warehouse", "QM-6060", "3.0.1" },
};

void MainWindow::installTranslators()
{
#if QT_VERSION_MAJOR < 6
    const QString ofQt = QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#else
    const QString ofQt = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#endif
    const QString language = QLocale(QLocale::system().language()).name(); // "de_DE" in Austria too
    for (const QString &catalogue :
         { ":/translations/SoftwareUpdateClient_" + language, ":/translations/SoftwareUpdatePolicy_" + language,
           ofQt + "/qtbase_" + language }) {
        auto *translator = new QTranslator(qApp);
        if (translator->load(catalogue))
            QCoreApplication::installTranslator(translator);
    }
}

MainWindow::MainWindow(const QUrl &updateServer, const QUrl &nextVersion, const qv::UpdatePolicy &policy)
    : updates(QCoreApplication::applicationName(), qv::VersionNumber::fromText(QCoreApplication::applicationVersion()),
              updateServer.toString(), this),
      catalogue(updateServer, policy, this)
{
    updates.setPolicy(policy);

    // What the client has written is the host's to change: the types of packages that it knows how to handle, and the
    // address. The store keeps the first one it was given, while the demo's server has another one at each start.
    qv::SoftwareUpdateSettings settings;
    updates.getCurrentSettings(&settings);
    settings.serverURL = updateServer.toString();
    settings.supportedPackageTypes = QStringList { "deb", "tar.gz", "zip", "exe", "mpkg" };
    settings.installablePackageTypes = QStringList { "zip", "exe", "mpkg" };
    updates.setCurrentSettings(&settings);

    qv::SoftUpCurrentCameraVersions versions;
    for (const QStringList &camera : cameras)
        versions.append({ camera.at(1), qv::VersionNumber::fromText(camera.at(2)) });
    updates.setCurrentCameraVersions(versions);

    auto *list = new QTreeWidget;
    list->setHeaderLabels({ tr("Camera"), tr("Model"), tr("Firmware") });
    list->setRootIsDecorated(false);
    for (const QStringList &camera : cameras)
        list->addTopLevelItem(new QTreeWidgetItem(camera));
    list->header()->setSectionResizeMode(QHeaderView::Stretch);
    setCentralWidget(list);
    setWindowTitle(QCoreApplication::applicationName() + ' ' + QCoreApplication::applicationVersion());
    statusBar()->showMessage(SelfUpdate::outcome());
    resize(560, 320);

    menuBar()->addMenu(tr("&File"))->addAction(tr("&Quit"), this, &QWidget::close);
    QMenu *help = menuBar()->addMenu(tr("&Help"));
    help->addAction(tr("Check for &Updates..."), &updates, [this] { updates.queryForUpdate(); });
    help->addAction(tr("&Catalogue..."), &catalogue, [this] {
        catalogue.show();
        catalogue.activateWindow();
    });
    help->addAction(tr("Update &Myself..."), this, [this, nextVersion, policy] {
        if (!findChild<SelfUpdate *>()) // one at a time
            new SelfUpdate(nextVersion, policy, this);
    });

    updates.doInitialCheck(500); // milliseconds: first the window, then the network
}
