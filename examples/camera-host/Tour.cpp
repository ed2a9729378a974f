// The road of one update, step by step: what a human would do, and what has to happen then. Called by main(); leaves
// pictures of all windows.
#include "Tour.h"

#include "CatalogueWindow.h"
#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QTableWidget>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <QTreeWidget>

#include <cstdio>
#include <stdexcept>

namespace {

constexpr int msForOneStep = 30'000; // twice what a check may take
constexpr int msBetweenLooks = 20;

template<class Widget>
Widget *find(const QWidget *window, const char *name)
{
    Widget *found = window ? window->findChild<Widget *>(name) : nullptr;
    if (!found)
        throw std::runtime_error(std::string("there is no ") + name);
    return found;
}

QPushButton *button(const QWidget *window, const char *name)
{
    return find<QPushButton>(window, name);
}

} // namespace

/// What the leak check shall not mind: the managers of installations are never freed, by design.
extern "C" Q_DECL_EXPORT const char *__lsan_default_suppressions() // NOLINT(bugprone-reserved-identifier)
{
    return "leak:qv::SoftwareUpdateClient::install\nleak:qv::HttpClient::";
}

Tour::Tour(QWidget &mainWindow, const QUrl &catalogue, const QString &folder)
    : mainWindow(mainWindow), catalogue(catalogue), pictures(folder)
{
    pictures.mkpath(".");
    for (const char *scheme : { "http", "file" })
        QDesktopServices::setUrlHandler(scheme, this, "openUrl");
    qApp->installEventFilter(this);
}

Tour::~Tour()
{
    for (const char *scheme : { "http", "file" })
        QDesktopServices::unsetUrlHandler(scheme);
}

bool Tour::run()
{
    return walk({ &Tour::seeMainWindow, &Tour::checkAtStart, &Tour::openSettings, &Tour::checkNow,
                  &Tour::selectPackages, &Tour::showAllLanguages, &Tour::followLinks, &Tour::closeTable,
                  &Tour::seeOtherOutcomes, &Tour::installFromTable, &Tour::seeFailures, &Tour::seeExpertSettings,
                  &Tour::queryCatalogue, &Tour::downloadFromCatalogue, &Tour::queryAgain });
}

bool Tour::update()
{
    return walk({ &Tour::updateProgram });
}

bool Tour::walk(const QList<Stage> &stages)
{
    try {
        for (const Stage stage : stages)
            (this->*stage)();
    } catch (const std::runtime_error &error) {
        fprintf(stderr, "The tour ends here: %s\n", error.what());
        return false;
    }
    printf("The tour is over. Its %d pictures are in %s\n", pictureCount, qPrintable(pictures.absolutePath()));
    return true;
}

void Tour::seeMainWindow()
{
    step(
        "The main window lists the cameras",
        [this] { return mainWindow.isVisible() && find<QTreeWidget>(&mainWindow, "")->topLevelItemCount() == 8; },
        "main-window", &mainWindow);
    expectBox("about");
    QTimer::singleShot(0, find<QAction>(&mainWindow, "about"), &QAction::trigger);
    step("About tells the version", [this] { return boxesExpected == 0; });
}

void Tour::checkAtStart()
{
    step("The check at application start finds updates by itself", [this] {
        available = mainWindow.findChild<qv::SoftwareUpdateAvailableDialog *>();
        return available && available->isVisible();
    });
    available->close();
    step("The table closes", [this] { return !available; });
}

void Tour::openSettings()
{
    find<QAction>(&mainWindow, "checkForUpdates")->trigger();
    settings = mainWindow.findChild<qv::SoftwareUpdateDialog *>();
    step(
        "The menu opens the settings, without what is for experts",
        [this] {
            return settings && settings->isVisible() && !find<QLineEdit>(settings, "updateServerLineEdit")->isVisible()
                && find<QLabel>(settings, "lastCheckLabel")->isVisible();
        },
        "settings", settings);
}

void Tour::checkNow()
{
    button(settings, "updatePushButton")->click();
    step(
        "Check Now starts a check",
        [this] {
            return find<QProgressBar>(settings, "progressBar")->isVisible()
                && !button(settings, "updatePushButton")->isEnabled();
        },
        "checking", settings);
    step("The check finds updates", [this] {
        available = mainWindow.findChild<qv::SoftwareUpdateAvailableDialog *>();
        return available && available->isVisible() && button(settings, "updatePushButton")->isEnabled();
    });
    table = find<QTableWidget>(available, "tableWidget");
    step(
        "The table shows them",
        [this] { return visibleRows() > 0 && !button(available, "downloadPushButton")->isEnabled(); },
        "update-available", available);
}

void Tour::selectPackages()
{
    table->selectRow(0);
    step(
        "A package of the application has a link and release notes",
        [this] {
            return find<QTextBrowser>(available, "commentText")->isVisible()
                && button(available, "downloadPushButton")->isEnabled()
                && button(available, "releaseNotesPushButton")->isEnabled();
        },
        "application-selected", available);

    int firmware = table->rowCount() - 1;
    while (firmware > 0 && table->isRowHidden(firmware))
        --firmware;
    table->selectRow(firmware);
    step(
        "So has a camera's firmware",
        [this, firmware] {
            return find<QTextBrowser>(available, "commentText")
                ->toPlainText()
                .contains(table->item(firmware, 0)->text());
        },
        "firmware-selected", available);

    table->setSelectionMode(QAbstractItemView::MultiSelection);
    table->selectRow(0);
    table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    step(
        "Two packages can only be downloaded",
        [this] {
            return button(available, "downloadPushButton")->isEnabled()
                && !button(available, "installPushButton")->isEnabled()
                && !button(available, "releaseNotesPushButton")->isEnabled()
                && !find<QTextBrowser>(available, "commentText")->isVisible();
        },
        "two-selected", available);
}

void Tour::showAllLanguages()
{
    auto *all = find<QCheckBox>(available, "showAllLanguagesCheckBox");
    step("Firmware in foreign languages is hidden", [this] { return visibleRows() < table->rowCount(); });
    all->click();
    step(
        "Show all languages shows it", [this] { return visibleRows() == table->rowCount(); }, "all-languages",
        available);
    all->click();
    step("and hides it again", [this] { return visibleRows() < table->rowCount(); });
}

void Tour::followLinks()
{
    table->selectRow(0);
    button(available, "releaseNotesPushButton")->click();
    step("Release Notes opens a page in the browser",
         [this] { return openedUrls.size() == 1 && openedUrls.last().path().endsWith(".html"); });
    button(available, "downloadPushButton")->click();
    step("Download Package opens its link",
         [this] { return openedUrls.size() == 2 && openedUrls.last().path().endsWith(table->item(0, 2)->text()); });
}

void Tour::closeTable()
{
    button(available, "updateSettingsPushButton")->click();
    step("Update Settings leads back to the one settings dialog",
         [this] { return mainWindow.findChildren<qv::SoftwareUpdateDialog *>().size() == 1 && settings->isVisible(); });
    available->close();
    step("The table closes", [this] { return !available; });
}

void Tour::seeOtherOutcomes()
{
    const auto check = [this](const QString &document, const char *outcome, const QString &name) {
        find<QLineEdit>(settings, "updateServerLineEdit")->setText(catalogue.resolved(document).toString());
        button(settings, "updatePushButton")->click();
        const QString text = QCoreApplication::translate("SoftwareUpdateClient", outcome);
        step(
            "The settings say: " + text,
            [this, text] { return find<QLabel>(settings, "updateNotificationLabel")->text().contains(text); }, name,
            settings);
    };
    check("old.xml", "Congratulations! Your product is up-to-date!", "up-to-date");
    check("empty.xml", "No update available!", "no-update");
    check("missing.xml", "missing.xml", "error"); // in Qt's words
    settings->reject();
    step("Cancel closes the settings", [this] { return !settings; });
}

void Tour::findPackages(const QString &document)
{
    if (!settings) {
        find<QAction>(&mainWindow, "checkForUpdates")->trigger();
        settings = mainWindow.findChild<qv::SoftwareUpdateDialog *>();
    }
    find<QLineEdit>(settings, "updateServerLineEdit")->setText(catalogue.resolved(document).toString());
    button(settings, "updatePushButton")->click();
    step("Packages are found in " + document, [this] {
        available = mainWindow.findChild<qv::SoftwareUpdateAvailableDialog *>();
        return available && available->isVisible();
    });
    table = find<QTableWidget>(available, "tableWidget");
}

void Tour::install(const QString &type, QMessageBox::ButtonRole answer)
{
    table->clearSelection();
    for (int row = 0; row < table->rowCount(); ++row) {
        if (table->item(row, 2)->text() == type)
            table->selectRow(row);
    }
    expectBox("install-" + type, answer);
    QTimer::singleShot(0, button(available, "installPushButton"), &QPushButton::click);
    step("Install asks before it begins with \"" + type + '"', [this] { return boxesExpected == 0; });
}

void Tour::installFromTable()
{
    findPackages("catalogue.xml");
    install("exe", QMessageBox::RejectRole);
    step("Cancel Install leaves all as it was", [this] { return available->isVisible(); });

    install("exe");
    auto *progress = available->findChild<QProgressDialog *>();
    progress->setMinimumDuration(0); // else it appears for downloads of more than four seconds
    step(
        "The package is downloaded",
        [progress] { return progress->isVisible() && progress->value() > progress->maximum() / 3; }, "progress",
        progress);
    find<QPushButton>(progress, "")->click();
    step("Cancel ends that and leaves no file",
         [this] { return available && !available->findChild<QProgressDialog *>() && downloaded("*.exe").isEmpty(); });

    install("exe");
    step("The installer runs", [this] { return !downloaded("*.exe.log").isEmpty() && !available; });

    findPackages("catalogue.xml");
    install("mpkg");
    step("The unpacked installers are opened",
         [this] { return openedUrls.last().isLocalFile() && openedUrls.last().path().endsWith(".mpkg"); });

    findPackages("catalogue.xml");
    install("zip");
    expectBox("restart", QMessageBox::RejectRole);
    step("A restart is asked for", [this] { return boxesExpected == 0; });
    step("Restart later leaves the unpacked package",
         [this] { return downloaded("*.zip").isEmpty() && !downloaded("camera-host").isEmpty(); });
}

void Tour::seeFailures()
{
    QSettings store;
    store.setValue("supportedPackageTypes", "deb,tar.gz,zip,bin");
    store.setValue("installablePackageTypes", "deb,zip,bin");
    const auto fail = [this](const QString &type, const QString &name, const QString &text, int boxes = 1) {
        findPackages("faults.xml");
        install(type);
        expectBox(name, QMessageBox::RejectRole, boxes);
        step(text, [this] { return boxesExpected == 0; });
    };
    fail("deb", "missing-package", "A package that the server does not have");
    fail("bin", "unknown-type", "A package of no known type");
    fail("zip", "broken-package", "A package that is no archive; the restart does not wait for it", 2);
    settings->reject();
    step("Cancel closes the settings", [this] { return !settings; });
}

void Tour::seeExpertSettings()
{
    QTest::keyPress(&mainWindow, Qt::Key_Shift, Qt::ShiftModifier);
    find<QAction>(&mainWindow, "checkForUpdates")->trigger();
    QTest::keyRelease(&mainWindow, Qt::Key_Shift);
    settings = mainWindow.findChild<qv::SoftwareUpdateDialog *>();
    step(
        "With Shift held the settings show what is for experts",
        [this] { return settings && find<QLineEdit>(settings, "updateServerLineEdit")->isVisible(); },
        "expert-settings", settings);
    find<QCheckBox>(settings, "checkForBetaCheckBox")->setChecked(true);
    button(settings, "updatePushButton")->click();
    step("With beta versions there are others", [this] {
        available = mainWindow.findChild<qv::SoftwareUpdateAvailableDialog *>();
        return available && available->isVisible()
            && find<QTableWidget>(available, "tableWidget")->item(0, 0)->text().endsWith(" BETA");
    });
    find<QTableWidget>(available, "tableWidget")->selectRow(0);
    step(
        "of which a beta is one", [] { return true; }, "beta", available);
    available->close();
    step("The table closes", [this] { return !available; });
    find<QDialogButtonBox>(settings, "buttonBox")->button(QDialogButtonBox::Ok)->click();
    step("OK closes the settings", [this] { return !settings; });
}

void Tour::updateProgram()
{
    const QString version = QCoreApplication::applicationVersion();
    const auto *statusBar = mainWindow.findChild<QStatusBar *>();
    if (statusBar) { // it is there to tell of the update
        const QString message = statusBar->currentMessage();
        step(
            message, [this] { return mainWindow.isVisible(); }, "after-update-" + version, &mainWindow);
        return;
    }
    expectBox("about-" + version);
    QTimer::singleShot(0, find<QAction>(&mainWindow, "about"), &QAction::trigger);
    step("This is " + version, [this] { return boxesExpected == 0; });
    expectBox("update-offered", QMessageBox::YesRole);
    find<QAction>(&mainWindow, "updateMyself")->trigger();
    step("There is a newer version", [this] { return boxesExpected == 0; });
    step("This program gives way to its update", [] { return false; });
}

void Tour::openCatalogue()
{
    find<QAction>(&mainWindow, "catalogue")->trigger();
    catalogueWindow = mainWindow.findChild<CatalogueWindow *>();
}

void Tour::queryCatalogue()
{
    openCatalogue();
    auto *list = find<QTreeWidget>(catalogueWindow, "");
    const bool firstRun = list->topLevelItemCount() == 0;
    button(catalogueWindow, "query")->click();
    step("The catalogue is queried; in the first run all packages are new", [this, list, firstRun] {
        return button(catalogueWindow, "query")->isEnabled() && list->topLevelItemCount() > 0
            && (!firstRun || newPackages() == list->topLevelItemCount());
    });
    printf("  %s\n", qPrintable(find<QLabel>(catalogueWindow, "status")->text()));

    list->setCurrentItem(list->findItems("1.2", Qt::MatchExactly, 1).value(0));
    step(
        "A selected package shows its release notes",
        [this] { return !find<QTextBrowser>(catalogueWindow, "")->toPlainText().isEmpty(); }, "catalogue",
        catalogueWindow);
}

void Tour::downloadFromCatalogue()
{
    auto *status = find<QLabel>(catalogueWindow, "status");
    auto *progress = find<QProgressBar>(catalogueWindow, "");
    button(catalogueWindow, "download")->click();
    step(
        "It is downloaded",
        [progress] { return progress->value() > progress->maximum() / 3 && progress->value() < progress->maximum(); },
        "downloading", catalogueWindow);
    button(catalogueWindow, "cancel")->click();
    step(
        "Cancel ends the download", [this] { return button(catalogueWindow, "download")->isEnabled(); }, "cancelled",
        catalogueWindow);
    button(catalogueWindow, "download")->click();
    step("The next one is complete", [this, status] {
        const QFileInfo file(status->text().section("Saved as ", -1));
        return button(catalogueWindow, "download")->isEnabled() && file.size() > 0;
    });
}

void Tour::queryAgain()
{
    catalogueWindow->close();
    step("The catalogue closes", [this] { return !catalogueWindow; });
    openCatalogue();
    step("It remembers the packages",
         [this] { return find<QTreeWidget>(catalogueWindow, "")->topLevelItemCount() > 0; });
    button(catalogueWindow, "query")->click();
    step(
        "Nothing is new any more",
        [this] { return button(catalogueWindow, "query")->isEnabled() && newPackages() == 0; }, "nothing-new",
        catalogueWindow);
    catalogueWindow->close();
}

void Tour::step(const QString &text, const std::function<bool()> &happened, const QString &name, QWidget *window)
{
    QElapsedTimer elapsed;
    elapsed.start();
    QTimer wakeUp; // the loop below waits for events, and what happens to files is none
    wakeUp.start(msBetweenLooks);
    while (!happened()) {
        if (!unexpectedBox.isEmpty())
            throw std::runtime_error("a box said: " + unexpectedBox.toStdString());
        if (elapsed.hasExpired(msForOneStep))
            throw std::runtime_error("this did not happen: " + text.toStdString());
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        // What has been released with deleteLater() goes in the outermost loop only.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    if (window)
        savePicture(window, name);
    printf("%s\n", qPrintable(text));
    fflush(stdout);
}

void Tour::savePicture(QWidget *window, const QString &name)
{
    QCoreApplication::processEvents(); // what has just been shown finds its place
    const QString file = QStringLiteral("%1-%2.png").arg(++pictureCount, 2, 10, QLatin1Char('0')).arg(name);
    if (!window->grab().save(pictures.filePath(file)))
        throw std::runtime_error("cannot write " + file.toStdString());
}

void Tour::expectBox(const QString &name, QMessageBox::ButtonRole answer, int count)
{
    boxName = name;
    boxAnswer = answer;
    boxesExpected = count;
}

void Tour::answer(QMessageBox *box)
{
    if (boxesExpected == 0) {
        unexpectedBox = box->text();
        box->reject(); // else the tour would wait in its event loop
        return;
    }
    savePicture(box, boxName);
    --boxesExpected;
    for (QAbstractButton *choice : box->buttons()) {
        if (box->buttonRole(choice) == boxAnswer || box->buttons().size() == 1)
            return choice->click();
    }
}

bool Tour::eventFilter(QObject *object, QEvent *event)
{
    auto *box = qobject_cast<QMessageBox *>(object);
    if (box && event->type() == QEvent::Show)
        QTimer::singleShot(0, box, [this, box] { answer(box); });
    return QObject::eventFilter(object, event);
}

void Tour::openUrl(const QUrl &url)
{
    openedUrls << url;
}

QStringList Tour::downloaded(const QString &pattern) const
{
    QStringList files;
    QDirIterator found(QDir::tempPath(), { pattern }, QDir::Files, QDirIterator::Subdirectories);
    while (found.hasNext())
        files << found.next();
    return files;
}

int Tour::newPackages() const
{
    const auto *list = find<QTreeWidget>(catalogueWindow, "");
    int count = 0;
    for (int row = 0; row < list->topLevelItemCount(); ++row)
        count += list->topLevelItem(row)->text(list->columnCount() - 1).isEmpty() ? 0 : 1;
    return count;
}

int Tour::visibleRows() const
{
    int visible = 0;
    for (int row = 0; row < table->rowCount(); ++row)
        visible += table->isRowHidden(row) ? 0 : 1;
    return visible;
}
