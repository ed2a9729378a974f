// A check for updates as a human makes it: main window, settings, the table of packages, every outcome.
#include "Tour.h"

#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"

#include <QAction>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <QTreeWidget>

void Tour::seeMainWindow()
{
    step(
        "The main window lists the cameras",
        [this] { return mainWindow.isVisible() && find<QTreeWidget>(&mainWindow)->topLevelItemCount() == 8; },
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

int Tour::visibleRows() const
{
    int visible = 0;
    for (int row = 0; row < table->rowCount(); ++row)
        visible += table->isRowHidden(row) ? 0 : 1;
    return visible;
}
