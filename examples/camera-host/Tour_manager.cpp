// What the demo does with the download manager alone: the catalogue window, and the update of the program itself.
#include "Tour.h"

#include "CatalogueWindow.h"

#include <QAction>
#include <QCoreApplication>
#include <QFileInfo>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <QTextBrowser>
#include <QTimer>
#include <QTreeWidget>
#include <cstdio>

void Tour::openCatalogue()
{
    find<QAction>(&mainWindow, "catalogue")->trigger();
    catalogueWindow = mainWindow.findChild<CatalogueWindow *>();
}

int Tour::newPackages() const
{
    const auto *list = find<QTreeWidget>(catalogueWindow);
    int count = 0;
    for (int row = 0; row < list->topLevelItemCount(); ++row)
        count += list->topLevelItem(row)->text(list->columnCount() - 1).isEmpty() ? 0 : 1;
    return count;
}

void Tour::queryCatalogue()
{
    openCatalogue();
    auto *list = find<QTreeWidget>(catalogueWindow);
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
        [this] { return !find<QTextBrowser>(catalogueWindow)->toPlainText().isEmpty(); }, "catalogue", catalogueWindow);
}

void Tour::downloadFromCatalogue()
{
    auto *status = find<QLabel>(catalogueWindow, "status");
    auto *progress = find<QProgressBar>(catalogueWindow);
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
    step("It remembers the packages", [this] { return find<QTreeWidget>(catalogueWindow)->topLevelItemCount() > 0; });
    button(catalogueWindow, "query")->click();
    step(
        "Nothing is new any more",
        [this] { return button(catalogueWindow, "query")->isEnabled() && newPackages() == 0; }, "nothing-new",
        catalogueWindow);
    catalogueWindow->close();
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
