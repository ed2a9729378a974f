// The demo host from its command line to its end: names, language, update server, cameras, window.
#include "DemoCameras.h"
#include "DemoServer.h"
#include "MainWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QStandardPaths>

#include <cstdio>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("Quorvel Demo");
    QCoreApplication::setApplicationName("Camera Host"); // the name of its packages in the catalogue
    QCoreApplication::setApplicationVersion(VERSION);
    MainWindow::installTranslators();

    const QCommandLineOption server("server", "Ask the update server at <URL> instead of the demo's own.", "URL");
    const QCommandLineOption key("key", "Trust what is signed with <KEY>, line 2 of the .pub file of minisign.", "KEY");
    const QCommandLineOption tamper("tamper", "Let the demo's own server do harm: catalogue, package or freeze.",
                                    "what");
    const QCommandLineOption fault(
        "fault", "Have a camera that is offline, or refuses firmware, stays old, or gets lost.", "what");
    QCommandLineParser options;
    options.setApplicationDescription("A host of the software-update library, and an update server to go with it.");
    options.addHelpOption();
    options.addVersionOption();
    options.addOptions({ server, key, tamper, fault });
    options.process(application);

    DemoServer ownServer({ SITE, NEXT_VERSION });
    QUrl catalogue = options.value(server);
    qv::UpdatePolicy policy;
    policy.trustedKeys = options.values(key);
    policy.followAddresses = true; // by default packages come from port 80
    policy.catalogueCache = QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + "/catalogue";
    if (catalogue.isEmpty()) {
        catalogue = ownServer.url("catalogue.xml");
        policy.trustedKeys << ownServer.key();
    }
    if (options.isSet(tamper) && (options.isSet(server) || !ownServer.tamper(options.value(tamper)))) {
        qCritical("--tamper wants catalogue, package or freeze, and no --server");
        return 1;
    }

    DemoCameras cameras;
    if (options.isSet(fault) && !cameras.setFault(options.value(fault))) {
        qCritical("--fault wants offline, refuses, old or lost");
        return 1;
    }

    // For scripts: tells what came of the update by which it was started, and ends.
    if (qEnvironmentVariableIsSet("CAMERA_HOST_UPDATE") && !MainWindow::updateResult().isEmpty())
        return puts(qPrintable(MainWindow::updateResult())) < 0;

    MainWindow window(catalogue, policy, cameras.places, cameras.logins);
    window.show();
    return QApplication::exec();
}
