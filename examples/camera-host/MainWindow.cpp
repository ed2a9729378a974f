// What a host writes to have software updates: the client as a member of its main window, a policy, its cameras with
// their firmware versions, a check at start, and a menu.
#include "MainWindow.h"

#include "CheckOutcome.h"

#include <QCoreApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLibraryInfo>
#include <QLocale>
#include <QMenuBar>
#include <QPushButton>
#include <QStatusBar>
#include <QTranslator>
#include <QTreeWidget>
#include <QVBoxLayout>

static constexpr char skipped[] = "skippedUpdates"; // a setting of this host's own

static QString versionOf(const qv::PackageInfo &package)
{
    return package.name + ' ' + package.release;
}

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

QString MainWindow::updateResult()
{
    const QString version = QCoreApplication::applicationVersion();
    switch (qv::DownloadManager::lastUpdateResult().kind) {
    case qv::UpdateResult::None:
        return QString();
    case qv::UpdateResult::Updated:
        return tr("Updated to %1").arg(version);
    default:
        return tr("The update did not work, %1 goes on").arg(version);
    }
}

MainWindow::MainWindow(const QUrl &updateServer, qv::UpdatePolicy policy, const QStringList &places,
                       const QList<qv::OnvifCamera> &logins)
    : cameras(logins),
      updates(QCoreApplication::applicationName(), qv::VersionNumber::fromText(QCoreApplication::applicationVersion()),
              updateServer.toString(), this),
      catalogue(updateServer, policy, this), list(new QTreeWidget), told(new QLabel), button(new QPushButton)
{
    policy.installers.insert("rpk", &cameras);
    policy.replacesApplication = true;
    policy.explains = true;
    tellOfUpdates(policy);
    updates.setPolicy(policy);

    // What the client has written is the host's to change: the types of packages that it knows how to handle, and the
    // address. The store keeps the first one it was given, while the demo's server has another one at each start.
    qv::SoftwareUpdateSettings settings;
    updates.getCurrentSettings(&settings);
    settings.serverURL = updateServer.toString();
    settings.supportedPackageTypes = QStringList { "deb", "tar.gz", "zip", "exe", "mpkg" };
    settings.installablePackageTypes = QStringList { "zip", "exe", "mpkg" };
    updates.setCurrentSettings(&settings);

    menuBar()->addMenu(tr("&File"))->addAction(tr("&Quit"), this, &QWidget::close);
    QMenu *help = menuBar()->addMenu(tr("&Help"));
    help->addAction(tr("Check &Now"), &updates, [this] { updates.checkNow(); });
    help->addAction(tr("Check for &Updates..."), &updates, [this] { updates.queryForUpdate(); });
    help->addAction(tr("&Catalogue..."), &catalogue, [this] {
        catalogue.show();
        catalogue.activateWindow();
    });
    setWindowTitle(QCoreApplication::applicationName() + ' ' + QCoreApplication::applicationVersion());
    statusBar()->showMessage(updateResult());
    resize(560, 320);
    listCameras(places);
}

void MainWindow::listCameras(const QStringList &places)
{
    list->setHeaderLabels({ tr("Camera"), tr("Model"), tr("Firmware") });
    list->setObjectName("cameras");
    list->setRootIsDecorated(false);
    for (const QString &place : places)
        list->addTopLevelItem(new QTreeWidgetItem({ place }));
    list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    setCentralWidget(new QWidget);
    auto *rows = new QVBoxLayout(centralWidget());
    rows->addWidget(list);
    rows->addWidget(told);

    connect(&cameras, &qv::OnvifCameras::versionRead, list,
            [this](int camera, const QString &model, const QString &version) {
                list->topLevelItem(camera)->setText(1, model);
                list->topLevelItem(camera)->setText(2, version);
            });
    connect(&cameras, &qv::OnvifCameras::cameraFailed, list,
            [this](int camera, const QString &why) { list->topLevelItem(camera)->setText(2, why); });
    connect(&cameras, &qv::OnvifCameras::versionsRead, &updates,
            [this](const qv::SoftUpCurrentCameraVersions &versions) {
                updates.setCurrentCameraVersions(versions);
                updates.doInitialCheck(); // at start, and for what is left after an update
            });
    qv::OnvifTimes times;
    times.msPoll = 200;
    times.msBack = 5000; // real ones take longer
    cameras.setTimes(times);
    cameras.readVersions();
}

void MainWindow::tellOfUpdates(qv::UpdatePolicy &policy)
{
    told->setObjectName("told");
    told->setTextFormat(Qt::PlainText);
    told->setWordWrap(true); // a status bar would cut it
    told->hide();
    button->setObjectName("updates");
    button->setContextMenuPolicy(Qt::ActionsContextMenu);
    button->hide();
    statusBar()->addPermanentWidget(button);
    connect(button, &QPushButton::clicked, &updates, [this] { updates.showAvailable(); });

    policy.isOffered = [](const qv::PackageInfo &package) {
        return !QSettings().value(skipped).toStringList().contains(versionOf(package));
    };
    policy.announce = [](const qv::PackageInfoList &) { return true; }; // the button does
    policy.checked = [this](const qv::CheckOutcome &outcome) {
        if (outcome.kind == qv::CheckOutcome::Cancelled)
            return; // another check tells
        if (outcome.kind != qv::CheckOutcome::Unreachable && outcome.kind != qv::CheckOutcome::TimedOut)
            showFound(outcome.packages); // else those found before still stand
        told->setText(outcome.isByUser ? outcome.text : QString());
        told->setHidden(told->text().isEmpty());
    };
}

void MainWindow::showFound(const qv::PackageInfoList &packages)
{
    QStringList versions;
    for (const qv::PackageInfo &package : packages)
        versions << versionOf(package);
    versions.removeDuplicates(); // of one version there are packages for several systems and languages
    button->setText(versions.size() == 1 ? tr("1 update") : tr("%1 updates").arg(versions.size()));
    button->setVisible(!versions.isEmpty());

    for (QAction *action : button->actions())
        action->deleteLater();
    for (const QString &version : std::as_const(versions)) {
        auto *skip = new QAction(tr("Skip %1").arg(version), button);
        connect(skip, &QAction::triggered, &updates, [this, version] {
            QSettings().setValue(skipped, QSettings().value(skipped).toStringList() << version);
            updates.checkNow();
        });
        button->addAction(skip);
    }
}
