// Walks through all windows of the demo without a human and saves pictures of them: a table of steps, and the loop that
// takes one after the other.
#include "CatalogueWindow.h"
#include "DemoCameras.h"
#include "DemoServer.h"
#include "MainWindow.h"
#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"

#include <QTest>
#include <QtWidgets>
#include <cstdio>

/// What the leak check shall not mind: the managers of installations are never freed, by design.
extern "C" Q_DECL_EXPORT const char *__lsan_default_suppressions() // NOLINT(bugprone-reserved-identifier)
{
    return "leak:qv::SoftwareUpdateClient*install\nleak:qv::HttpClient::";
}

namespace {

using Action = std::function<void()>;
using Window = QWidget *(*)();

struct Step
{
    const char *told;                ///< printed when it has happened
    std::vector<Action> done;        ///< by the user, in this order; may open boxes that wait for the next step
    Window window;                   ///< is shown then, and no box unless it is this one
    const char *picture = "";        ///< of the window; "" for none
    const char *parts = "";          ///< of it, by name, that are shown and enabled; "-" before those that are not
    std::function<bool()> then = {}; ///< what else is the case
};

std::unique_ptr<DemoServer> server;
std::unique_ptr<DemoCameras> cameras;
QString firstCatalogue = "catalogue.xml";
QUrl opened; // by the desktop, last
std::unique_ptr<MainWindow> host;

template<class Type>
QWidget *shown()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && qobject_cast<Type *>(window))
            return window;
    }
    return nullptr;
}

constexpr Window mainWindow = shown<MainWindow>, settings = shown<qv::SoftwareUpdateDialog>,
                 available = shown<qv::SoftwareUpdateAvailableDialog>, catalogue = shown<CatalogueWindow>,
                 menu = shown<QMenu>;
constexpr Window progress = [] {
    for (auto *dialog : host->findChildren<QProgressDialog *>())
        dialog->setMinimumDuration(0); // else it appears for what takes more than four seconds
    return shown<QProgressDialog>();
};

template<class Part>
Part *part(Window window, const QString &name = QString())
{
    Part *found = window() ? window()->findChild<Part *>(name) : nullptr;
    if (!found)
        qFatal("There is no %s \"%s\"", Part::staticMetaObject.className(), qPrintable(name));
    return found;
}

const auto question = [] { return qobject_cast<QMessageBox *>(QApplication::activeModalWidget()); }; // the newest
const auto box = []() -> QWidget * { return question(); };
const auto table = [] { return part<QTableWidget>(available); };
const auto list = [] { return part<QTreeWidget>(catalogue); };

// What a user does.
const auto click = [](Window in, const char *name) { return [=] { part<QAbstractButton>(in, name)->click(); }; };
const auto close = [](Window window) { return [=] { window()->close(); }; };
const auto agree = [] { question()->buttons().first()->click(); }; // the first is that of accepting, or Yes
const auto check = [](const char *document) {
    return [=] {
        part<QLineEdit>(settings, "updateServerLineEdit")
            ->setText(server->url(document ? document : firstCatalogue).toString());
        part<QAbstractButton>(settings, "updatePushButton")->click();
    };
};
const auto choose = [](Window window, const char *entry) {
    return [=] {
        for (QAction *action : window()->findChildren<QAction *>()) {
            if (action->text().remove('&') == entry)
                action->trigger();
        }
    };
};
const auto tamper = [](const char *what) { return [=] { server->tamper(what); }; };
const auto select = [](const char *text) {
    return [=] {
        for (const QTableWidgetItem *item : table()->findItems(text, Qt::MatchStartsWith)) {
            if (!table()->isRowHidden(item->row()))
                table()->selectRow(item->row());
        }
    };
};
const auto start = [] {
    qv::UpdatePolicy policy;
    policy.trustedKeys << server->key();
    policy.followAddresses = true;
    host = std::make_unique<MainWindow>(server->url(firstCatalogue), policy, cameras->places, cameras->logins);
    host->show();
};
const auto fault = [](const char *what) { return [=] { cameras->setFault(what); }; };
const Action install = click(available, "installPushButton"), showFound = click(mainWindow, "updates");
const Action openMenu = [] {
    auto *button = part<QPushButton>(mainWindow, "updates");
    const QPoint middle = button->rect().center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, middle, button->mapToGlobal(middle));
    QCoreApplication::sendEvent(button, &event);
};

// What is the case then.
const auto told = [](const char *outcome, const char *context = "SoftwareUpdateClient") {
    return [=] {
        const QString text = QCoreApplication::translate(context, outcome);
        const QString end = text.section(QRegularExpression("%[12]"), -1);
        return part<QLabel>(settings, "updateNotificationLabel")->text().contains(end);
    };
};
const auto downloading = [](Window window) {
    return [=] {
        const auto *bar = part<QProgressBar>(window);
        return bar->value() > bar->maximum() / 3 && bar->value() < bar->maximum();
    };
};
const auto exists = [](const char *pattern) {
    return QDirIterator(QDir::tempPath(), { pattern }, QDir::Files, QDirIterator::Subdirectories).hasNext();
};
const auto updates = [](const char *count) {
    return [=] {
        const auto *button = part<QPushButton>(mainWindow, "updates");
        return button->isVisible() && button->text() == count;
    };
};
const auto runs = [](const QStringList &versions) { // the first cameras
    return [=] {
        QStringList told;
        for (int camera = 0; camera < versions.size(); ++camera)
            told << part<QTreeWidget>(mainWindow, "cameras")->topLevelItem(camera)->text(2);
        return told == versions;
    };
};
const auto updating = [] {
    const auto *bar = part<QProgressBar>(progress);
    static const QRegularExpression either("Main entrance|Reception"); // whichever was heard of last
    return 4 * bar->value() > 3 * bar->maximum() && part<QLabel>(progress)->text().contains(either);
};
const auto gone = [](Window window) { return [=] { return !window(); }; };
const auto failure = [] { return question()->icon() == QMessageBox::Critical; };
const auto hiddenRows = [] { return table()->verticalHeader()->hiddenSectionCount(); };
const auto newPackages = [] { return list()->findItems("new", Qt::MatchExactly, 5).size(); };

// clang-format off
const std::vector<Step> steps = {
    // The window: updates found by themselves, and firmware onto the cameras.
    { "The main window lists the cameras", {}, mainWindow, "main-window", "",
      [] { return runs({ "4.1.0", "4.1.0", "10.2.0", "10.3.2", "10.2.0", "2.9", "1.6.3", "3.0.1" })()
               && updates("5 updates")(); } },
    { "The updates can be skipped", { openMenu }, menu, "skip" },
    { "One is skipped", { close(menu), choose(mainWindow, "Skip Dome Firmware 4.2.0") }, mainWindow, "skipped", "",
      updates("4 updates") },
    { "Not for ever", { [] { QSettings().remove("skippedUpdates"); }, choose(mainWindow, "Check Now") }, mainWindow,
      "", "", updates("5 updates") },
    { "A check that fails tells why", { tamper("catalogue"), choose(mainWindow, "Check Now") }, mainWindow,
      "check-failed", "", [] { return part<QLabel>(mainWindow, "told")->isVisible(); } },
    { "One that works brings the button back", { tamper(""), choose(mainWindow, "Check Now") }, mainWindow, "", "",
      updates("5 updates") },
    { "It shows the table", { showFound }, available },
    { "Install asks for firmware", { fault("refuses"), select("Dome Firmware"), install }, box, "firmware" },
    { "The cameras are updated", { agree }, progress, "firmware-progress", "", updating },
    { "One has refused it", {}, box, "firmware-refused", "", runs({ "4.2.0", "4.1.0" }) },
    { "The firmware is still offered", { close(box), close(available), choose(mainWindow, "Check Now") }, mainWindow,
      "", "", updates("5 updates") },
    { "Install asks again", { fault(""), showFound, select("Dome Firmware"), install }, box },
    { "Now all have it", { agree }, box, "firmware-installed", "", runs({ "4.2.0", "4.2.0" }) },
    { "The list shows it", { close(box), close(available) }, mainWindow, "firmware-afterwards", "",
      updates("4 updates") },

    // The client: settings, checks, the table of packages.
    { "The menu opens the settings, without what is for experts",
      { choose(mainWindow, "Check for Updates...") }, settings, "settings",
      "lastCheckLabel updatePushButton -updateServerLabel -updateServerLineEdit -checkForBetaCheckBox" },
    { "Check Now starts a check", { click(settings, "updatePushButton") }, settings, "checking",
      "progressBar -updatePushButton" },
    { "The table shows updates, firmware in foreign languages left out", {}, available, "update-available",
      "-downloadPushButton -commentText", [] { return hiddenRows() > 0 && hiddenRows() < table()->rowCount(); } },
    { "A package has a link and release notes", { select("deb") }, available, "application-selected",
      "commentText downloadPushButton releaseNotesPushButton" },

    { "The product is up to date", { close(available), check("old.xml") }, settings, "up-to-date", "",
      told("Congratulations! Your product is up-to-date!") },
    { "There is no update", { check("empty.xml") }, settings, "no-update", "",
      told("The list of updates from the server %1 is empty or cannot be read. Please try again later.",
           "SoftwareUpdatePolicy") },
    { "There is no catalogue", { check("missing.xml") }, settings, "error", "",
      told("The server %1 does not have what was asked for. It may have been replaced: please check for updates again "
           "later.", "SoftwareUpdatePolicy") },

    // Packages of all types, installed from the table.
    { "There are packages", { check("catalogue.xml") }, available },
    { "Install asks before it begins", { select("exe"), install }, box, "install" },
    { "The package is downloaded", { agree }, progress, "progress", "", downloading(progress) },
    { "The installer runs", {}, settings, "", "", [] { return !available() && exists("*.exe.log"); } },
    { "There are packages", { check("catalogue.xml") }, available },
    { "Install asks for installers in an archive", { select("mpkg"), install }, box },
    { "They are opened", { agree }, settings, "", "", [] { return opened.toLocalFile().endsWith(".mpkg"); } },

    // What a user sees when that fails.
    { "There are faulty packages",
      { [] { QSettings().setValue("installablePackageTypes", "deb,zip"); }, check("faults.xml") }, available },
    { "Install asks for one that the server does not have", { select("deb"), install }, box },
    { "It cannot be downloaded", { agree }, box, "missing-package", "", failure },
    { "The box closes", { close(box) }, available },
    { "The application cannot be replaced where no updater is", { select("zip"), install }, box, "no-updater", "",
      failure },

    // What users see when somebody got into the server.
    { "A catalogue was changed after it was signed",
      { close(box), close(available), tamper("catalogue"), check("catalogue.xml") }, settings, "tampered-catalogue", "",
      told("The list of updates is not what the publisher signed. No update can be offered!", "SoftwareUpdatePolicy") },
    { "New catalogues are held back", { tamper("freeze"), check("catalogue.xml") }, settings, "frozen-catalogue", "",
      told("The list of updates was valid until %1, and your clock says %2. No update can be offered!",
           "SoftwareUpdatePolicy") },
    { "A package was changed, of the same size", { tamper("package"), check("catalogue.xml") }, available },
    { "Install asks for it", { select("deb"), install }, box },
    { "What arrived is not kept", { agree }, box, "tampered-package", "",
      [] { return failure() && !exists("camera-host_1.2_amd64.deb"); } },
    { "Cancel closes the settings", { close(box), tamper(""), close(available), close(settings) }, mainWindow,
      "", "", gone(settings) },

    // What is for experts.
    { "With Shift held the settings show it", { [] { QTest::keyPress(mainWindow(), Qt::Key_Shift, Qt::ShiftModifier); },
      choose(mainWindow, "Check for Updates..."), [] { QTest::keyRelease(mainWindow(), Qt::Key_Shift); } }, settings,
      "expert-settings", "updateServerLabel updateServerLineEdit checkForBetaCheckBox" },
    { "There are beta versions", { click(settings, "checkForBetaCheckBox"), check("catalogue.xml") }, available, "beta",
      "", [] { return table()->item(0, 0)->text().endsWith(" BETA"); } },

    // The download manager alone.
    { "At first all packages are new",
      { close(available), close(settings), choose(mainWindow, "Catalogue..."), choose(catalogue, "Query Server") },
      catalogue, "", "", [] { return newPackages() > 0 && newPackages() == list()->topLevelItemCount(); } },
    { "A selected one shows its release notes",
      { [] { list()->setCurrentItem(list()->findItems("Camera Host 1.2", Qt::MatchExactly).value(0)); } }, catalogue,
      "catalogue", "", [] { return !part<QPlainTextEdit>(catalogue)->toPlainText().isEmpty(); } },
    { "It is downloaded", { choose(catalogue, "Download") }, catalogue, "downloading", "", downloading(catalogue) },
    { "Cancel ends that and leaves no file", { choose(catalogue, "Cancel") }, catalogue, "cancelled", "",
      [] { return !part<QProgressBar>(catalogue)->isVisible() && !exists("camera-host-1.2.zip"); } },
    { "The next download is complete", { choose(catalogue, "Download") }, catalogue, "", "",
      [] { return QFile(part<QStatusBar>(catalogue)->currentMessage().section("Saved as ", 1)).size() == 336251; } },
    { "Nothing is new any more", { choose(catalogue, "Query Server") }, catalogue, "nothing-new", "",
      [] { return newPackages() == 0; } },
    { "Nor is it after the next start", { start, choose(mainWindow, "Catalogue..."), choose(catalogue, "Query Server") },
      catalogue, "", "", [] { return list()->topLevelItemCount() > 0 && newPackages() == 0; } },
    { "A camera may be away", { fault("offline"), start }, mainWindow, "camera-away", "",
      [] { return updates("4 updates")() && !runs({ "4.2.0", "" })() && !runs({ "4.2.0", "4.2.0" })(); } },
};

// With an updater beside this program. The last step replaces it.
const std::vector<Step> replacement = {
    { "The check at application start finds the next version", {}, mainWindow, "", "", updates("5 updates") },
    { "There is one that is no archive", { choose(mainWindow, "Check for Updates..."), check("faults.xml") },
      available },
    { "Install asks for it", { select("zip"), install }, box },
    { "It cannot be unpacked", { agree }, box, "broken-package", "", failure },
    { "The next version is in the table", { close(box), check(nullptr) }, available },
    { "It can be installed", { select("zip") }, available, "next-version", "installPushButton" },
    { "Install asks before it begins", { install }, box, "replace" },
    { "A restart is asked for", { agree }, box, "restart" },
    { "The next version starts", { agree }, available },
};
// clang-format on

/// Takes the steps while the application runs, in the loops of its boxes, too. Ends it after the last one, or with an
/// exit code at the first that does not happen.
class Tour : public QObject
{
    Q_OBJECT

public:
    Tour(const std::vector<Step> &steps, const QDir &pictures) : steps(steps), pictures(pictures)
    {
        pictures.mkpath(".");
        QDesktopServices::setUrlHandler("file", this, "openUrl");
        connect(&timer, &QTimer::timeout, this, &Tour::look);
        timer.start(20);
    }

    Q_INVOKABLE void openUrl(const QUrl &url) { opened = url; }

private:
    void look()
    {
        const Step &step = steps.at(index);
        if (!begun) {
            begun = true;
            patience.start();
            QTimer::singleShot(0, this, [&step] {
                for (const Action &action : step.done)
                    action();
            });
        } else if (hasHappened(step)) {
            printf("%s\n", step.told);
            fflush(stdout); // a crash shall not take it along
            if (*step.picture)
                save(step.window()->grab(), step.picture);
            begun = false;
            if (++index == steps.size())
                QCoreApplication::exit(0);
        } else if (patience.hasExpired(30'000)) { // twice what a check may take
            fprintf(stderr, "This did not happen: %s\n", step.told);
            if (question())
                fprintf(stderr, "A box says: %s\n", qPrintable(question()->text()));
            QCoreApplication::exit(1);
        }
    }

    void save(const QPixmap &picture, const char *name)
    {
        const QString file = QStringLiteral("%1-%2.png").arg(++pictureCount, 2, 10, QLatin1Char('0')).arg(name);
        if (!picture.save(pictures.filePath(file)))
            qFatal("Cannot write %s to %s", qPrintable(file), qPrintable(pictures.path()));
    }

    static bool hasHappened(const Step &step)
    {
        const QWidget *window = step.window();
        if (!window || (question() && question() != window))
            return false;
        for (const QString &name : QString(step.parts).split(' ', Qt::SkipEmptyParts)) {
            const auto *found = part<QWidget>(step.window, QString(name).remove('-'));
            if ((found->isVisible() && found->isEnabled()) == name.startsWith('-'))
                return false;
        }
        return !step.then || step.then();
    }

    const std::vector<Step> &steps;
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
    options.addOption({ "language", "Speak <language>: de, fr or en.", "language", "en" });
    options.addOption({ "replace", "Replace this program by what <catalogue> offers.", "catalogue" });
    options.addVersionOption();
    options.addPositionalArgument("pictures", "The folder for the pictures.");
    options.parse(QStringList(argv, argv + argc));
    // Qt asks for the language of the system once, while the application is constructed.
    qputenv("LC_ALL", QLocale(options.value("language")).name().toLatin1() + ".UTF-8");
    const QTemporaryDir scratch; // nothing is found or left elsewhere
    qputenv("TMPDIR", scratch.path().toLocal8Bit());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, scratch.path());

    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("Quorvel Demo");
    QCoreApplication::setApplicationName("Camera Host");
    QCoreApplication::setApplicationVersion("1.0");
    MainWindow::installTranslators();

    if (!MainWindow::updateResult().isEmpty()) // where the next version did not start
        return puts(qPrintable(MainWindow::updateResult())) < 0;
    options.process(application);
    if (options.positionalArguments().size() != 1)
        options.showHelp(1);
    const bool isReplaced = options.isSet("replace");
    if (isReplaced)
        firstCatalogue = options.value("replace");
    server = std::make_unique<DemoServer>(isReplaced ? QStringList { NEXT_VERSION, SITE } : QStringList { SITE });
    cameras = std::make_unique<DemoCameras>();
    Tour tour(isReplaced ? replacement : steps, options.positionalArguments().first());
    start();
    const int code = QApplication::exec();
    QDesktopServices::unsetUrlHandler("file");
    host.reset();
    cameras.reset();
    server.reset();
    return code;
}

#include "tour.moc"
