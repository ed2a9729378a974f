// Packages of all types installed from the table, and what a user sees when that fails.
#include "Tour.h"

#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"

#include <QAction>
#include <QDirIterator>
#include <QLineEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QSettings>
#include <QTableWidget>
#include <QTimer>

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

QStringList Tour::downloaded(const QString &pattern) const
{
    QStringList files;
    QDirIterator found(QDir::tempPath(), { pattern }, QDir::Files, QDirIterator::Subdirectories);
    while (found.hasNext())
        files << found.next();
    return files;
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
    find<QPushButton>(progress)->click();
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
