// A host from its start to the packages that a check finds. Prints their rows; fails when none are shown.
#include "CatalogueServer.h"

#include <OnvifCameras.h>
#include <SoftwareUpdateAvailableDialog.h>
#include <SoftwareUpdateClient.h>

#include <QApplication>
#include <QFile>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("Consumer");
    QCoreApplication::setApplicationName("Consumer");
    QTemporaryDir store;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, store.path());

    CatalogueServer server(R"(<softwareList base-url="http://127.0.0.1/"><package-set>
        <package type="Application" name="Consumer" release="2.0" status="STABLE" url="consumer-2.0.tar.gz"/>
        </package-set></softwareList>)");
    QWidget window;
    qv::SoftwareUpdateClient updates("Consumer", qv::VersionNumber("1.0"), server.url(), &window);
    qv::OnvifCameras cameras;
    qv::UpdatePolicy policy;
    policy.installers.insert("rpk", &cameras);
    updates.setPolicy(policy);
    updates.doInitialCheck();

    // An open dialog is idle: its table is filled by then.
    QTimer idle;
    QObject::connect(&idle, &QTimer::timeout, [&window] {
        const auto *dialog = window.findChild<qv::SoftwareUpdateAvailableDialog *>();
        if (!dialog || !dialog->isVisible())
            return;
        const auto *name = dialog->findChild<QTableWidget *>()->item(0, 0);
        printf("%s\n", name ? qPrintable(name->text()) : "an empty table");
        const bool hasTranslations = QFile::exists(":/translations/SoftwareUpdateClient_de_DE.qm");
        QApplication::exit(name && name->text().contains("2.0") && hasTranslations ? 0 : 1);
    });
    idle.start(20);
    QTimer::singleShot(20'000, [] { QApplication::exit(2); });
    return QApplication::exec();
}
