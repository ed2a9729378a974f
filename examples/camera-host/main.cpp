// The demo host from its command line to its end: names, language, update server, window.
#include "DemoServer.h"
#include "MainWindow.h"
#include "NodeDB.h"
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
    QCommandLineParser options;
    options.setApplicationDescription("A host of the software-update library, and an update server to go with it.");
    options.addHelpOption();
    options.addVersionOption();
    options.addOption(server);
    options.process(application);

    DemoServer ownServer({ SITE, NEXT_VERSION });
    QUrl catalogue = options.value(server);
    if (catalogue.isEmpty()) {
        catalogue = ownServer.url("catalogue.xml");
        qv::NodeDB::getDB().setGlobalProxy(qv::NetworkProxy("127.0.0.1", ownServer.serverPort()));
    }

    MainWindow window(catalogue, catalogue.resolved(QUrl("next.xml")));
    window.show();

    // For scripts: takes the update that this catalogue offers without asking, tells what came of it, and ends.
    const QString unattended = qEnvironmentVariable("CAMERA_HOST_UPDATE");
    if (!unattended.isEmpty() && !SelfUpdate::outcome().isEmpty())
        return puts(qPrintable(SelfUpdate::outcome())) < 0;
    if (!unattended.isEmpty())
        new SelfUpdate(catalogue.resolved(unattended), nullptr);
    return QApplication::exec();
}
