// The two dialogs on their own: what they show for what they are given, and which signals leave them.
#include "LogCapture.h"
#include "Row.h"
#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"

#include <QtTest>
#include <QtWidgets>

using namespace qv;

namespace {

template<class Widget>
Widget &child(const QWidget &dialog, const char *name)
{
    auto found = dialog.findChild<Widget *>(QString::fromLatin1(name));
    if (!found)
        qFatal("no %s of that class", name);
    return *found;
}

const QList<QStringList> packages { { "Viewer 2", "2.0 MB" }, { "QC-20", "7.0 MB" }, { "QC-30", "9.0 MB" } };

} // namespace

class DialogsTest : public QObject
{
    Q_OBJECT

private slots:
    // Hosts connect to these, and call them, by name.
    void methodsKeepTheirNames()
    {
        for (const char *name : { "checkForUpdate()", "applySettings(SoftwareUpdateDialogSettings)",
                                  "forceUpdateAvailable()", "enableProgress()", "disbaleProgress()",
                                  "emitApplySettings()", "standardButtonClicked(QAbstractButton*)" })
            QVERIFY2(SoftwareUpdateDialog::staticMetaObject.indexOfMethod(name) >= 0, name);
        for (const char *name :
             { "downloadUrls(SoftUpIndexList)", "installPackage(int)", "currentItemsChangedSig(SoftUpIndexList)",
               "downloadReleaseNotes(SoftUpIndexList)", "showAllLanguages(bool)", "openUpdateSettings()",
               "downloadPackagePressed()", "installPackagePressed()", "currentItemsChanged()", "releaseNotesPressed()",
               "getCurrentSelectedItems()", "showAllLanguagesPressed()" })
            QVERIFY2(SoftwareUpdateAvailableDialog::staticMetaObject.indexOfMethod(name) >= 0, name);
    }

    void expertsHoldAModifier()
    {
        for (const auto modifiers :
             { Qt::KeyboardModifiers(Qt::NoModifier), Qt::KeyboardModifiers(Qt::ShiftModifier),
               Qt::ControlModifier | Qt::AltModifier, Qt::KeyboardModifiers(Qt::KeypadModifier) }) {
            QWidget window;
            QTest::keyPress(&window, Qt::Key_A, modifiers);
            const SoftwareUpdateDialog dialog(nullptr, {});
            QTest::keyRelease(&window, Qt::Key_A, Qt::NoModifier);
            for (const char *name : { "checkForBetaCheckBox", "updateServerLabel", "updateServerLineEdit" })
                QCOMPARE(child<QWidget>(dialog, name).isHidden(), modifiers == Qt::NoModifier);
        }
    }

    void settingsPassThrough_data()
    {
        columns<QString, QString, QString, QString>("version", "lastCheck", "versionAfter", "lastCheckAfter");
        row("texts", "2.1", "today", "2.1", "today");
        row("empty texts show the captions", "", "", "", "");
        row("null version keeps the old text", QString(), "today", "1.0", "today");
        row("null check keeps the old text", "2.1", QString(), "2.1", "long ago");
    }

    void settingsPassThrough()
    {
        QFETCH(QString, version);
        QFETCH(QString, lastCheck);
        SoftwareUpdateDialog dialog(nullptr, {});
        dialog.setDialogSettings({ true, false, 1, "http://old.example", "1.0", "long ago" });
        dialog.setDialogSettings({ false, true, 3, "http://new.example/?a=1&b=2", version, lastCheck });

        QCOMPARE(child<QLabel>(dialog, "currentVersionLabel").isHidden(), version.isNull());
        QCOMPARE(child<QLabel>(dialog, "lastCheckLabel").isHidden(), lastCheck.isNull());
        QCOMPARE(child<QComboBox>(dialog, "updateComboBox").currentText(), QString("Monthly"));
        const SoftwareUpdateDialogSettings read = dialog.getDialogSettings();
        QCOMPARE(read.doUpdateCheck, false);
        QCOMPARE(read.checkForBeta, true);
        QCOMPARE(read.updateInterval, 3);
        QCOMPARE(read.serverURL, QString("http://new.example/?a=1&b=2"));
        QTEST(read.currentVersion, "versionAfter");
        QTEST(read.lastCheck, "lastCheckAfter");
    }

    void closing()
    {
        for (const auto button : { QDialogButtonBox::Ok, QDialogButtonBox::Cancel, QDialogButtonBox::NoButton }) {
            const bool isOk = button == QDialogButtonBox::Ok;
            SoftwareUpdateDialog dialog(nullptr, {});
            QStringList applied;
            connect(&dialog, &SoftwareUpdateDialog::applySettings, this,
                    [&](const auto &settings) { applied << settings.serverURL; });
            QSignalSpy finished(&dialog, &QDialog::finished);
            dialog.setDialogSettings({ true, false, 2, "http://typed.example", "1", "2" });
            dialog.show();
            if (button)
                child<QDialogButtonBox>(dialog, "buttonBox").button(button)->click();
            else
                dialog.close(); // by the window's own button
            QCOMPARE(applied, isOk ? QStringList("http://typed.example") : QStringList());
            QCOMPARE(finished.count(), 1);
            QCOMPARE(finished.first().first().toInt(), int(isOk ? QDialog::Accepted : QDialog::Rejected));
        }
    }

    void progressIsTheCallersBusiness()
    {
        SoftwareUpdateDialog dialog(nullptr, {});
        auto &button = child<QPushButton>(dialog, "updatePushButton");
        auto &bar = child<QProgressBar>(dialog, "progressBar");
        const auto isIn = [&](bool progress) {
            return bar.isHidden() != progress && bar.isEnabled() == progress && button.isEnabled() != progress;
        };
        QSignalSpy check(&dialog, &SoftwareUpdateDialog::checkForUpdate);
        QVERIFY(isIn(false));
        button.click();
        QCOMPARE(check.count(), 1);
        QVERIFY(isIn(false));
        QVERIFY(QMetaObject::invokeMethod(&dialog, "enableProgress"));
        QVERIFY(isIn(true));
        QVERIFY(QMetaObject::invokeMethod(&dialog, "disbaleProgress"));
        QVERIFY(isIn(false));
    }

    void notificationIsPlainText()
    {
        SoftwareUpdateDialog dialog(nullptr, {});
        dialog.setNotificationText("<b>server replied</b>");
        const auto &label = child<QLabel>(dialog, "updateNotificationLabel");
        QCOMPARE(label.text(), QString("<b>server replied</b>"));
        QCOMPARE(label.textFormat(), Qt::PlainText);
    }

    void tableContents_data()
    {
        using Rows = QList<QStringList>;
        // cells: row by row; "-" is a cell without item
        columns<Rows, QString>("rows", "cells");
        row("even", Rows { { "a", "b" }, { "c", "d" } }, "abcd");
        row("short row", Rows { { "a", "b" }, { "c" } }, "abc-");
        row("long row", Rows { { "a" }, { "b", "c" }, {} }, "ab-");
        row("nothing", Rows {}, "");
    }

    void tableContents()
    {
        QFETCH(QList<QStringList>, rows);
        SoftwareUpdateAvailableDialog dialog(nullptr, {});
        auto &table = child<QTableWidget>(dialog, "tableWidget");
        dialog.setTableEntries(packages);
        dialog.setTableHeaders({ "Name", "File Size" });
        dialog.setHiddenEntries({ 0, 2 });
        dialog.setCommentText("<b>old</b>");
        table.selectRow(1);

        QSignalSpy changed(&dialog, &SoftwareUpdateAvailableDialog::currentItemsChangedSig);
        const LogCapture log;
        dialog.setTableEntries(rows);

        QString cells;
        for (int row = 0; row < table.rowCount(); ++row) {
            QVERIFY(!table.isRowHidden(row));
            for (int column = 0; column < table.columnCount(); ++column)
                cells += (table.item(row, column) ? table.item(row, column)->text() : QString("-"));
        }
        QTEST(cells, "cells");
        QCOMPARE(table.rowCount(), int(rows.size()));
        QVERIFY(child<QTextBrowser>(dialog, "commentText").isHidden());
        QVERIFY(child<QTextBrowser>(dialog, "commentText").toPlainText().isEmpty());
        QVERIFY(!table.horizontalHeaderItem(0));
        QCOMPARE(changed.count(), rows.isEmpty() ? 0 : 1);
        QVERIFY(changed.value(0).value(0).value<SoftUpIndexList>().isEmpty());
        const QStringList told { "SoftwareUpdateAvailableDialog::setTableEntries() -> no table entries set!" };
        QCOMPARE(log.lines(), rows.isEmpty() ? told : QStringList());
    }

    void hiddenRows()
    {
        SoftwareUpdateAvailableDialog dialog(nullptr, {});
        dialog.setTableEntries(packages);
        for (const auto &hidden : { SoftUpIndexList { 0, 1 }, { 2 }, {}, { 0, 1, 2 }, {}, { -1, 1, 1, 99 } }) {
            dialog.setHiddenEntries(hidden);
            for (int row = 0; row < packages.size(); ++row)
                QCOMPARE(child<QTableWidget>(dialog, "tableWidget").isRowHidden(row), hidden.contains(row));
        }
    }

    void selectionAndButtons()
    {
        SoftwareUpdateAvailableDialog dialog(nullptr, {});
        dialog.setTableEntries(packages);
        auto &table = child<QTableWidget>(dialog, "tableWidget");
        QSignalSpy changed(&dialog, &SoftwareUpdateAvailableDialog::currentItemsChangedSig);
        QSignalSpy urls(&dialog, &SoftwareUpdateAvailableDialog::downloadUrls);
        QSignalSpy notes(&dialog, &SoftwareUpdateAvailableDialog::downloadReleaseNotes);
        QSignalSpy install(&dialog, &SoftwareUpdateAvailableDialog::installPackage);
        QSignalSpy languages(&dialog, &SoftwareUpdateAvailableDialog::showAllLanguages);
        QSignalSpy settings(&dialog, &SoftwareUpdateAvailableDialog::openUpdateSettings);
        const auto pick = [&](int row, QItemSelectionModel::SelectionFlags how) {
            table.setCurrentCell(row, 0, how | QItemSelectionModel::Rows);
        };
        pick(2, QItemSelectionModel::Select);
        pick(0, QItemSelectionModel::Select);
        QCOMPARE(changed.count(), 2);
        const SoftUpIndexList both { 2, 0 }; // as selected, each row once though each has two cells
        QCOMPARE(changed.last().first().value<SoftUpIndexList>(), both);
        SoftUpIndexList byName;
        QVERIFY(QMetaObject::invokeMethod(&dialog, "getCurrentSelectedItems", Q_RETURN_ARG(SoftUpIndexList, byName)));
        QCOMPARE(byName, both);

        pick(0, QItemSelectionModel::Deselect);
        for (const char *name :
             { "downloadPushButton", "releaseNotesPushButton", "installPushButton", "updateSettingsPushButton" })
            child<QPushButton>(dialog, name).click();
        QCOMPARE(urls.takeFirst().first().value<SoftUpIndexList>(), SoftUpIndexList { 2 });
        QCOMPARE(notes.takeFirst().first().value<SoftUpIndexList>(), SoftUpIndexList { 2 });
        QCOMPARE(install.takeFirst().first().toInt(), 0); // the current row, no longer selected
        QCOMPARE(settings.count(), 1);
        for (const bool state : { true, false }) {
            child<QCheckBox>(dialog, "showAllLanguagesCheckBox").click();
            QCOMPARE(languages.takeFirst().first().toBool(), state);
            QCOMPARE(dialog.getShowAllLanguagesState(), state);
        }
    }

    void commentReadsNoFiles()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath("big.png");
        QVERIFY(QImage(40, 40, QImage::Format_RGB32).save(file));
        SoftwareUpdateAvailableDialog dialog(nullptr, {});
        auto &comment = child<QTextBrowser>(dialog, "commentText");
        QVERIFY(comment.isHidden());
        for (const QUrl &url :
             { QUrl::fromLocalFile(file), QUrl(file), QUrl(":/qt-project.org/styles/commonstyle/images/up-16.png") }) {
            dialog.setCommentText(QString("<b>Viewer</b><img src=\"%1\">").arg(url.toString()));
            QVERIFY(!comment.isHidden());
            QCOMPARE(comment.document()->resource(QTextDocument::ImageResource, url).value<QImage>().size(),
                     QSize(1, 1));
        }
        QVERIFY(comment.toPlainText().startsWith("Viewer"));
        dialog.setCommentText(QString());
        QVERIFY(comment.isHidden());
    }
};

QTEST_MAIN(DialogsTest)
#include "tst_dialogs.moc"
