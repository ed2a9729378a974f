// The demo host from its command line to its end: language, settings, update server, window - or the tour through all
// of it.
#include "DemoServer.h"
#include "MainWindow.h"
#include "NodeDB.h"
#include "SelfUpdate.h"
#include "Tour.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QLibraryInfo>
#include <QTemporaryDir>
#include <QTimer>
#include <QTranslator>

#include <cstdio>
#include <memory>

namespace {

const QCommandLineOption server("server", "Ask the update server at <URL> instead of the demo's own.", "URL");
const QCommandLineOption site("site", "Serve <folder> instead of the demo's own site.", "folder", SITE);
const QCommandLineOption settings("settings", "Keep the settings in <folder>.", "folder");
const QCommandLineOption language("language", "Speak <language>: de, fr or en.", "language");
const QCommandLineOption tour("tour", "Walk through all windows unattended and save pictures of them in <folder>.",
                              "folder");
const QCommandLineOption update("update", "Update Myself to what <catalogue> offers; the tour does nothing else.",
                                "catalogue", "next.xml");
const QCommandLineOption updatedFrom("updated-from", "The version that was here before, after an update.", "version");

QString qtTranslations()
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#else
    return QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#endif
}

/// The library carries its own translations; those of the standard buttons come with Qt.
void installTranslators(QCoreApplication &application)
{
    const QString language = QLocale(QLocale::system().language()).name(); // "de_DE" in Austria too
    for (const QString &catalogue :
         { ":/translations/SoftwareUpdateClient_" + language, qtTranslations() + "/qtbase_" + language }) {
        auto *translator = new QTranslator(&application);
        if (translator->load(catalogue))
            QCoreApplication::installTranslator(translator);
    }
}

int fail(const QString &reason)
{
    fprintf(stderr, "%s\n", qPrintable(reason));
    return 1;
}

} // namespace

int main(int argc, char *argv[])
{
    QCommandLineParser options;
    options.setApplicationDescription("A host of the software-update library, and an update server to go with it.");
    options.addHelpOption();
    options.addVersionOption();
    options.addOptions({ server, site, settings, language, tour, update, updatedFrom });

    // Qt asks for the language of the system once, while the application is constructed.
    options.parse(QStringList(argv, argv + argc) + SelfUpdate::handedOver());
    if (options.isSet(language) || options.isSet(tour)) {
        const QLocale locale(options.isSet(language) ? options.value(language) : "en");
        qputenv("LC_ALL", locale.name().toLatin1() + ".UTF-8");
    }

    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("Quorvel Demo");
    QCoreApplication::setApplicationName("Camera Host");
    QCoreApplication::setApplicationVersion(VERSION);
    options.process(QCoreApplication::arguments() + SelfUpdate::handedOver());
    installTranslators(application);

    QString settingsFolder = options.value(settings);
    std::unique_ptr<QTemporaryDir> scratch; // for the tour, which finds and leaves nothing elsewhere
    if (options.isSet(tour)) {
        scratch = std::make_unique<QTemporaryDir>();
        qputenv("TMPDIR", scratch->path().toLocal8Bit());
        if (settingsFolder.isEmpty())
            settingsFolder = scratch->path();
    }
    if (!settingsFolder.isEmpty())
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsFolder);

    DemoServer ownServer({ options.value(site), NEXT_VERSION });
    if (!ownServer.isListening())
        return fail("The update server cannot listen: " + ownServer.errorString());
    QUrl catalogue = options.value(server);
    if (!options.isSet(server)) {
        catalogue = ownServer.url("catalogue.xml");
        qv::NodeDB::getDB().setGlobalProxy(qv::NetworkProxy("127.0.0.1", ownServer.serverPort()));
    }

    MainWindow window(catalogue, catalogue.resolved(options.value(update)));
    if (options.isSet(updatedFrom))
        window.tellUpdate(options.value(updatedFrom));
    window.show();
    if (!options.isSet(tour))
        return QApplication::exec();

    Tour guide(window, catalogue, options.value(tour));
    const auto road = options.isSet(update) ? &Tour::update : &Tour::run;
    QTimer::singleShot(0, &guide, [&guide, road] { QApplication::exit((guide.*road)() ? 0 : 1); });
    return QApplication::exec();
}
