// Walks through all windows of the demo without a human and saves pictures of them: a table of steps, and the loop that
// takes them one after the other.
//   tour [--language L] [--server URL] PICTURES
#include "CatalogueWindow.h"
#include "DemoServer.h"
#include "MainWindow.h"
#include "NodeDB.h"
#include "SelfUpdate.h"
#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QCommandLineParser>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <QTableWidget>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <QTreeWidget>

#include <cstdio>
#include <memory>

/// What the leak check shall not mind: the managers of installations are never freed, by design.
extern "C" Q_DECL_EXPORT const char *__lsan_default_suppressions() // NOLINT(bugprone-reserved-identifier)
{
    return "leak:qv::SoftwareUpdateClient::install\nleak:qv::HttpClient::";
}

namespace {

QUrl server; // the catalogue that the demo asks
std::unique_ptr<MainWindow> host;
QUrl openedUrl; // what would have gone to the browser last

using Action = std::function<void()>;
using Window = QWidget *(*)();

struct Step
{
    const char *told;                ///< printed when it has happened
    Action done;                     ///< by the user; none: the demo does something by itself
    Window window;                   ///< is shown then, and no box unless it is this one
    const char *parts = "";          ///< of it, by name, that are shown and enabled; "-" before those that are not
    std::function<bool()> then = {}; ///< what else is the case
    const char *picture = nullptr;   ///< of the window
};

template<class Type>
QWidget *shown()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && qobject_cast<Type *>(window))
            return window;
    }
    return nullptr;
}

constexpr Window mainWindow = shown<MainWindow>;
constexpr Window settings = shown<qv::SoftwareUpdateDialog>;
constexpr Window available = shown<qv::SoftwareUpdateAvailableDialog>;
constexpr Window catalogue = shown<CatalogueWindow>;

QWidget *box() // the newest
{
    return qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
}

QWidget *progress()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (auto *dialog = qobject_cast<QProgressDialog *>(window))
            dialog->setMinimumDuration(0); // else it appears for what takes more than four seconds
    }
    return shown<QProgressDialog>();
}

template<class Part>
Part *part(Window window, const QString &name = QString())
{
    Part *found = window() ? window()->findChild<Part *>(name) : nullptr;
    if (!found)
        qFatal("There is no %s \"%s\"", Part::staticMetaObject.className(), qPrintable(name));
    return found;
}

bool isUsable(const QWidget *window, const QString &name)
{
    const auto *found = window->findChild<QWidget *>(name);
    return found && found->isVisible() && found->isEnabled();
}

Action choose(Window window, const char *text)
{
    return [=] {
        for (QAction *action : window()->findChildren<QAction *>()) {
            if (action->text().remove('&') == text)
                return action->trigger();
        }
        qFatal("There is no action \"%s\"", text);
    };
}

Action click(Window window, const char *button)
{
    return [=] { part<QAbstractButton>(window, button)->click(); };
}

Action answer(QMessageBox::ButtonRole role)
{
    return [=] {
        auto *asked = qobject_cast<QMessageBox *>(box());
        for (QAbstractButton *button : asked->buttons()) {
            if (asked->buttonRole(button) == role || asked->buttons().size() == 1)
                return button->click();
        }
    };
}

Action close(Window window)
{
    return [=] { window()->close(); };
}

Action check(const char *document)
{
    return [=] {
        part<QLineEdit>(settings, "updateServerLineEdit")->setText(server.resolved(QUrl(document)).toString());
        click(settings, "updatePushButton")();
    };
}

bool isTold(const char *outcome)
{
    return part<QLabel>(settings, "updateNotificationLabel")
        ->text()
        .contains(QCoreApplication::translate("SoftwareUpdateClient", outcome));
}

QTableWidget *table()
{
    return part<QTableWidget>(available);
}

QList<int> visibleRows()
{
    QList<int> rows;
    for (int row = 0; row < table()->rowCount(); ++row) {
        if (!table()->isRowHidden(row))
            rows << row;
    }
    return rows;
}

void selectFirst()
{
    table()->selectRow(0);
}

Action install(const QString &type)
{
    return [=] {
        for (int row = 0; row < table()->rowCount(); ++row) {
            if (table()->item(row, 2)->text() == type)
                table()->selectRow(row);
        }
        click(available, "installPushButton")();
    };
}

int downloaded(const QString &pattern)
{
    int files = 0;
    for (QDirIterator found(QDir::tempPath(), { pattern }, QDir::Files, QDirIterator::Subdirectories); found.hasNext();
         found.next())
        ++files;
    return files;
}

bool isUnderWay(const QProgressBar *bar)
{
    return bar->value() > bar->maximum() / 3 && bar->value() < bar->maximum();
}

int newPackages()
{
    return part<QTreeWidget>(catalogue)->findItems("new", Qt::MatchExactly, 5).size();
}

Action restart(const char *before)
{
    return [=] {
        qputenv("CAMERA_HOST_UPDATED_FROM", before);
        host = std::make_unique<MainWindow>(server, server.resolved(QUrl("faults.xml")));
        host->show();
    };
}

bool isCritical()
{
    return qobject_cast<QMessageBox *>(box())->icon() == QMessageBox::Critical;
}

constexpr auto yes = QMessageBox::YesRole, proceed = QMessageBox::AcceptRole, reject = QMessageBox::RejectRole;

// clang-format off
const std::vector<Step> steps = {
    // A check for updates as a human makes it.
    { "The main window lists the cameras", {}, mainWindow, "",
      [] { return part<QTreeWidget>(mainWindow)->topLevelItemCount() == 8; }, "main-window" },
    { "The check at application start finds updates by itself", {}, available },
    { "The table closes", close(available), mainWindow, "", [] { return !available(); } },
    { "The menu opens the settings, without what is for experts", choose(mainWindow, "Check for Updates..."), settings,
      "lastCheckLabel updatePushButton -updateServerLineEdit", {}, "settings" },
    { "Check Now starts a check", click(settings, "updatePushButton"), settings, "progressBar -updatePushButton", {},
      "checking" },
    { "The table shows what it has found, firmware in foreign languages left out", {}, available, "-downloadPushButton",
      [] { return isUsable(settings(), "updatePushButton") && visibleRows().size() < table()->rowCount(); },
      "update-available" },
    { "A package of the application has a link and release notes", selectFirst, available,
      "commentText downloadPushButton releaseNotesPushButton", {}, "application-selected" },
    { "So has a camera's firmware", [] { table()->selectRow(visibleRows().last()); }, available, "commentText",
      [] { return part<QTextBrowser>(available)->toPlainText().contains(table()->item(visibleRows().last(), 0)->text()); },
      "firmware-selected" },
    { "Two packages can only be downloaded", [] { table()->setSelectionMode(QTableWidget::MultiSelection); selectFirst(); },
      available, "downloadPushButton -installPushButton -releaseNotesPushButton -commentText", {}, "two-selected" },
    { "Show all languages shows what was left out", click(available, "showAllLanguagesCheckBox"), available, "",
      [] { return visibleRows().size() == table()->rowCount(); }, "all-languages" },
    { "and hides it again", click(available, "showAllLanguagesCheckBox"), available, "",
      [] { return visibleRows().size() < table()->rowCount(); } },
    { "One package is selected", [] { table()->setSelectionMode(QTableWidget::SingleSelection); selectFirst(); },
      available, "releaseNotesPushButton" },
    { "Release Notes opens a page in the browser", click(available, "releaseNotesPushButton"), available, "",
      [] { return openedUrl.path().endsWith(".html"); } },
    { "Download Package opens its link", click(available, "downloadPushButton"), available, "",
      [] { return openedUrl.path().endsWith(table()->item(0, 2)->text()); } },
    { "Update Settings leads back to the one settings dialog", click(available, "updateSettingsPushButton"), settings, "",
      [] { return host->findChildren<qv::SoftwareUpdateDialog *>().size() == 1; } },
    { "The table closes", close(available), settings, "", [] { return !available(); } },
    { "The product is up to date", check("old.xml"), settings, "",
      [] { return isTold("Congratulations! Your product is up-to-date!"); }, "up-to-date" },
    { "There is no update", check("empty.xml"), settings, "", [] { return isTold("No update available!"); }, "no-update" },
    { "There is no catalogue, in Qt's words", check("missing.xml"), settings, "", [] { return isTold("missing.xml"); },
      "error" },

    // Packages of all types, installed from the table.
    { "Packages are found", check("catalogue.xml"), available },
    { "Install asks before it begins", install("exe"), box, "", {}, "install-exe" },
    { "Cancel Install leaves all as it was", answer(reject), available },
    { "It asks again", install("exe"), box },
    { "The package is downloaded", answer(proceed), progress, "",
      [] { return isUnderWay(part<QProgressBar>(progress)); }, "progress" },
    { "Cancel ends that and leaves no file", [] { part<QAbstractButton>(progress)->click(); }, available, "",
      [] { return !progress() && downloaded("*.exe") == 0; } },
    { "It asks again", install("exe"), box },
    { "The installer runs", answer(proceed), settings, "", [] { return downloaded("*.exe.log") > 0 && !available(); } },
    { "Packages are found", check("catalogue.xml"), available },
    { "Install asks for a package of installers", install("mpkg"), box, "", {}, "install-mpkg" },
    { "The unpacked installers are opened", answer(proceed), settings, "",
      [] { return openedUrl.isLocalFile() && openedUrl.path().endsWith(".mpkg"); } },
    { "Packages are found", check("catalogue.xml"), available },
    { "Install asks for an archive", install("zip"), box, "", {}, "install-zip" },
    { "A restart is asked for", answer(proceed), box, "", {}, "restart" },
    { "Restart later leaves the unpacked package", answer(reject), settings, "",
      [] { return downloaded("*.zip") == 0 && downloaded("camera-host") > 0; } },

    // What a user sees when that fails.
    { "Faulty packages are found", [] {
         QSettings().setValue("supportedPackageTypes", "deb,zip,bin");
         QSettings().setValue("installablePackageTypes", "deb,zip,bin");
         check("faults.xml")();
      }, available },
    { "Install asks", install("deb"), box, "", {}, "install-deb" },
    { "A package that the server does not have", answer(proceed), box, "", isCritical, "missing-package" },
    { "Its box closes", answer(reject), available },
    { "Install asks", install("bin"), box, "", {}, "install-bin" },
    { "A package of no known type", answer(proceed), box, "", isCritical, "unknown-type" },
    { "Its box closes", answer(reject), settings },
    { "Faulty packages are found", check("faults.xml"), available },
    { "Install asks", install("zip"), box },
    { "A package that is no archive", answer(proceed), box, "", isCritical, "broken-package" },
    { "The restart did not wait for it", answer(reject), box, "", [] { return !isCritical(); } },
    { "All boxes close", answer(reject), settings },
    { "Cancel closes the settings", [] { part<QDialogButtonBox>(settings)->button(QDialogButtonBox::Cancel)->click(); },
      mainWindow, "", [] { return !settings(); } },

    // What is for experts.
    { "With Shift held the settings show what is for experts", [] {
         QTest::keyPress(mainWindow(), Qt::Key_Shift, Qt::ShiftModifier);
         choose(mainWindow, "Check for Updates...")();
         QTest::keyRelease(mainWindow(), Qt::Key_Shift);
      }, settings, "updateServerLineEdit checkForBetaCheckBox", {}, "expert-settings" },
    { "With beta versions there are others", [] {
         click(settings, "checkForBetaCheckBox")();
         check("catalogue.xml")();
      }, available, "", [] { return table()->item(0, 0)->text().endsWith(" BETA"); } },
    { "of which a beta is one", selectFirst, available, "commentText", {}, "beta" },
    { "The table closes", close(available), settings, "", [] { return !available(); } },
    { "OK closes the settings", [] { part<QDialogButtonBox>(settings)->button(QDialogButtonBox::Ok)->click(); },
      mainWindow, "", [] { return !settings(); } },

    // The download manager alone.
    { "The catalogue is empty at first", choose(mainWindow, "Catalogue..."), catalogue, "",
      [] { return part<QTreeWidget>(catalogue)->topLevelItemCount() == 0; } },
    { "The catalogue is queried, all packages are new", choose(catalogue, "Query Server"), catalogue, "",
      [] { return newPackages() > 0 && newPackages() == part<QTreeWidget>(catalogue)->topLevelItemCount(); } },
    { "A selected package shows its release notes", [] {
         auto *list = part<QTreeWidget>(catalogue);
         list->setCurrentItem(list->findItems("Camera Host 1.2", Qt::MatchExactly).value(0));
      }, catalogue, "", [] { return !part<QPlainTextEdit>(catalogue)->toPlainText().isEmpty(); }, "catalogue" },
    { "It is downloaded", choose(catalogue, "Download"), catalogue, "",
      [] { return isUnderWay(part<QProgressBar>(catalogue)); }, "downloading" },
    { "Cancel ends the download and leaves no file", choose(catalogue, "Cancel"), catalogue, "",
      [] { return !part<QProgressBar>(catalogue)->isVisible(); }, "cancelled" },
    { "The next one is complete", choose(catalogue, "Download"), catalogue, "", [] {
         return QFileInfo(part<QStatusBar>(catalogue)->currentMessage().section("Saved as ", -1)).size() > 0;
      } },
    { "Nothing is new any more", choose(catalogue, "Query Server"), catalogue, "",
      [] { return newPackages() == 0; }, "nothing-new" },
    { "The next window remembers the packages", {}, catalogue, "",
      [] { return part<QTreeWidget>(catalogue)->topLevelItemCount() == CatalogueWindow(server, nullptr).findChild<QTreeWidget *>()->topLevelItemCount(); } },

    // "Update Myself", as far as there is something left of the tour after it.
    { "A newer version is offered", choose(mainWindow, "Update Myself..."), box, "", {}, "update-offered" },
    { "It is no archive", answer(yes), box, "", isCritical, "update-broken" },
    { "Its box closes, the update waits", answer(reject), progress, "", {}, "update-waits" },
    { "Cancel ends the update", [] { part<QAbstractButton>(progress)->click(); }, box, "", {}, "update-cancelled" },
    { "Its box closes", answer(reject), mainWindow, "", [] { return !progress(); } },
    { "The next attempt asks, too", choose(mainWindow, "Update Myself..."), box, "", [] { return !isCritical(); } },
    { "and goes as far", answer(yes), box, "", isCritical },
    { "Its box closes", answer(reject), progress },
    { "A version that was updated tells so", restart("0.9"), mainWindow, "", {}, "after-update" },
    { "So does one that was not", restart("1.0"), mainWindow, "", {}, "after-failed-update" },
};
// clang-format on

/// Takes the steps while the application runs, in the loops of its boxes, too, and ends it after the last one or at the
/// first that does not happen.
class Tour : public QObject
{
    Q_OBJECT

public:
    explicit Tour(const QDir &pictures) : pictures(pictures)
    {
        for (const char *scheme : { "http", "file" })
            QDesktopServices::setUrlHandler(scheme, this, "openUrl");
        connect(&timer, &QTimer::timeout, this, &Tour::look);
        timer.start(20);
        begin();
    }

private slots:
    void openUrl(const QUrl &url) { openedUrl = url; }

private:
    void begin()
    {
        begun = false;
        patience.start();
        QTimer::singleShot(0, this, [this] {
            begun = true;
            if (steps.at(index).done)
                steps.at(index).done();
        });
    }

    void look()
    {
        if (patience.hasExpired(30'000)) { // twice what a check may take
            const auto *asked = qobject_cast<QMessageBox *>(box());
            fprintf(stderr, "This did not happen: %s\n%s\n", steps.at(index).told, asked ? qPrintable(asked->text()) : "");
            return QCoreApplication::exit(1);
        }
        if (!begun || !hasHappened(steps.at(index)))
            return;
        if (steps.at(index).picture && !save(*steps.at(index).window(), steps.at(index).picture))
            return QCoreApplication::exit(1);
        puts(steps.at(index).told);
        if (++index < steps.size())
            return begin();
        printf("The tour is over. Its %d pictures are in %s\n", pictureCount, qPrintable(pictures.absolutePath()));
        timer.stop();
        QCoreApplication::exit(0);
    }

    static bool hasHappened(const Step &step)
    {
        QWidget *window = step.window();
        if (!window || (box() && box() != window))
            return false;
        for (const QString &part : QString(step.parts).split(' ', Qt::SkipEmptyParts)) {
            if (part.startsWith('-') ? isUsable(window, part.mid(1)) : !isUsable(window, part))
                return false;
        }
        return !step.then || step.then();
    }

    bool save(QWidget &window, const char *name)
    {
        const QString file = QStringLiteral("%1-%2.png").arg(++pictureCount, 2, 10, QLatin1Char('0')).arg(name);
        return window.grab().save(pictures.filePath(file));
    }

    const QDir pictures;
    QTimer timer;
    QElapsedTimer patience;
    size_t index = 0;
    bool begun = false;
    int pictureCount = 0;
};

} // namespace

int main(int argc, char *argv[])
{
    QCommandLineParser options;
    options.addOptions({ { "language", "", "language", "en" }, { "server", "", "URL" } });
    options.addPositionalArgument("pictures", "The folder for the pictures.");
    // Qt asks for the language of the system once, while the application is constructed.
    options.parse(QStringList(argv, argv + argc));
    qputenv("LC_ALL", QLocale(options.value("language")).name().toLatin1() + ".UTF-8");
    const QTemporaryDir scratch; // the tour finds and leaves nothing elsewhere
    qputenv("TMPDIR", scratch.path().toLocal8Bit());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, scratch.path());

    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("Quorvel Demo");
    QCoreApplication::setApplicationName("Camera Host");
    QCoreApplication::setApplicationVersion("1.0");
    options.process(application);
    MainWindow::installTranslators();
    const QDir pictures(options.positionalArguments().value(0));
    pictures.mkpath(".");

    DemoServer demoServer({ SITE });
    server = options.value("server");
    if (server.isEmpty()) {
        server = demoServer.url("catalogue.xml");
        qv::NodeDB::getDB().setGlobalProxy(qv::NetworkProxy("127.0.0.1", demoServer.serverPort()));
    }
    host = std::make_unique<MainWindow>(server, server.resolved(QUrl("faults.xml")));
    host->show();
    const Tour tour(pictures);
    const int code = QApplication::exec();
    host.reset();
    return code;
}

#include "tour.moc"
