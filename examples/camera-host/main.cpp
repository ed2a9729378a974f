// The demo host from its command line to its end: names, language, update server, window.
#include "DemoServer.h"
#include "MainWindow.h"
#include "SelfUpdate.h"

#include <QApplication>
#include <QCommandLineParser>

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
    QCommandLineParser options;
    options.setApplicationDescription("A host of the software-update library, and an update server to go with it.");
    options.addHelpOption();
    options.addVersionOption();
    options.addOptions({ server, key, tamper });
    options.process(application);

    DemoServer ownServer({ SITE, NEXT_VERSION });
    QUrl catalogue = options.value(server);
    qv::UpdatePolicy policy;
    policy.trustedKeys = options.values(key);
    policy.followAddresses = true; // by default packages come from port 80
    if (catalogue.isEmpty()) {
        catalogue = ownServer.url("catalogue.xml");
        policy.trustedKeys << ownServer.key();
    }
    if (options.isSet(tamper) && (options.isSet(server) || !ownServer.tamper(options.value(tamper)))) {
        qCritical("--tamper wants catalogue, package or freeze, and no --server");
        return 1;
    }

    MainWindow window(catalogue, catalogue.resolved(QUrl("next.xml")), policy);
    window.show();

    // For scripts: takes the update that this catalogue offers without asking, tells what came of it, and ends.
    const QString unattended = qEnvironmentVariable("CAMERA_HOST_UPDATE");
    if (!unattended.isEmpty() && !SelfUpdate::outcome().isEmpty())
        return puts(qPrintable(SelfUpdate::outcome())) < 0;
    if (!unattended.isEmpty())
        new SelfUpdate(catalogue.resolved(unattended), policy, nullptr);
    return QApplication::exec();
}
