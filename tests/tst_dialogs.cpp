// The two dialogs on their own: what they show for what they are given, and which signals leave them.
#include "LogQt.h"
#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTextBrowser>
#include <QtTest>

#include <iostream>
#include <sstream>

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

QString text(const QWidget &dialog, const char *label)
{
    return child<QLabel>(dialog, label).text();
}

/// What the dialog's class declares itself, in order, arguments with their names.
QStringList methods(const QMetaObject &meta)
{
    QStringList found;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        found << QString::fromLatin1(meta.method(i).methodSignature() + ' '
                                     + meta.method(i).parameterNames().join(','));
    return found;
}

const QList<QStringList> packages { { "Viewer 2", "2.0 MB" }, { "QC-20", "7.0 MB" }, { "QC-30", "9.0 MB" } };

} // namespace

class DialogsTest : public QObject
{
    Q_OBJECT

private slots:
    void settingsMethods()
    {
        QCOMPARE(methods(SoftwareUpdateDialog::staticMetaObject),
                 (QStringList { "checkForUpdate() ", "applySettings(SoftwareUpdateDialogSettings) ",
                                "forceUpdateAvailable() ", "enableProgress() ", "disbaleProgress() ",
                                "emitApplySettings() ", "standardButtonClicked(QAbstractButton*) button" }));
    }

    void expertsHoldAModifier_data()
    {
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<bool>("shown");
        QTest::newRow("none") << Qt::KeyboardModifiers(Qt::NoModifier) << false;
        QTest::newRow("shift") << Qt::KeyboardModifiers(Qt::ShiftModifier) << true;
        QTest::newRow("ctrl and alt") << (Qt::ControlModifier | Qt::AltModifier) << true;
        QTest::newRow("keypad") << Qt::KeyboardModifiers(Qt::KeypadModifier) << true;
    }

    void expertsHoldAModifier()
    {
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(bool, shown);
        QWidget window;
        QTest::keyPress(&window, Qt::Key_A, modifiers);
        const SoftwareUpdateDialog dialog(nullptr, Qt::WindowFlags());
        QTest::keyRelease(&window, Qt::Key_A, Qt::NoModifier);

        QCOMPARE(!child<QCheckBox>(dialog, "checkForBetaCheckBox").isHidden(), shown);
        QCOMPARE(!child<QLabel>(dialog, "updateServerLabel").isHidden(), shown);
        QCOMPARE(!child<QLineEdit>(dialog, "updateServerLineEdit").isHidden(), shown);
    }

    void settingsPassThrough_data()
    {
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("lastCheck");
        QTest::addColumn<QString>("versionAfter");
        QTest::addColumn<QString>("lastCheckAfter");
        const auto row = [](const char *name, const QStringList &given, const QStringList &after) {
            QTest::newRow(name) << given.first() << given.last() << after.first() << after.last();
        };
        row("texts", { "2.1", "today" }, { "2.1", "today" });
        row("empty texts show the captions", { "", "" }, { "", "" });
        row("null version keeps the old text", { QString(), "today" }, { "1.0", "today" });
        row("null check keeps the old text", { "2.1", QString() }, { "2.1", "long ago" });
    }

    void settingsPassThrough()
    {
        QFETCH(QString, version);
        QFETCH(QString, lastCheck);
        SoftwareUpdateDialog dialog(nullptr, Qt::WindowFlags());
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

    void closing_data()
    {
        QTest::addColumn<int>("button"); // 0: the window's own
        QTest::addColumn<int>("applied");
        QTest::addColumn<int>("result");
        QTest::newRow("ok") << int(QDialogButtonBox::Ok) << 1 << int(QDialog::Accepted);
        QTest::newRow("cancel") << int(QDialogButtonBox::Cancel) << 0 << int(QDialog::Rejected);
        QTest::newRow("window") << 0 << 0 << int(QDialog::Rejected);
    }

    void closing()
    {
        QFETCH(int, button);
        SoftwareUpdateDialog dialog(nullptr, Qt::WindowFlags());
        QList<SoftwareUpdateDialogSettings> applied;
        connect(&dialog, &SoftwareUpdateDialog::applySettings, this,
                [&](const auto &settings) { applied << settings; });
        QSignalSpy finished(&dialog, &QDialog::finished);
        dialog.setDialogSettings({ true, false, 2, "http://typed.example", "1", "2" });
        dialog.show();
        if (button)
            child<QDialogButtonBox>(dialog, "buttonBox").button(QDialogButtonBox::StandardButton(button))->click();
        else
            dialog.close();

        QTEST(int(applied.size()), "applied");
        if (!applied.isEmpty())
            QCOMPARE(applied.first().serverURL, QString("http://typed.example"));
        QCOMPARE(finished.count(), 1);
        QTEST(finished.first().first().toInt(), "result");
    }

    void progressIsTheCallersBusiness()
    {
        SoftwareUpdateDialog dialog(nullptr, Qt::WindowFlags());
        auto &button = child<QPushButton>(dialog, "updatePushButton");
        auto &bar = child<QProgressBar>(dialog, "progressBar");
        const auto isChecking = [&] { return !bar.isHidden() && bar.isEnabled() && !button.isEnabled(); };
        const auto isIdle = [&] { return bar.isHidden() && !bar.isEnabled() && button.isEnabled(); };
        QSignalSpy check(&dialog, &SoftwareUpdateDialog::checkForUpdate);
        QVERIFY(isIdle());
        button.click();
        QCOMPARE(check.count(), 1);
        QVERIFY(isIdle());
        QVERIFY(QMetaObject::invokeMethod(&dialog, "enableProgress"));
        QVERIFY(isChecking());
        QVERIFY(QMetaObject::invokeMethod(&dialog, "disbaleProgress"));
        QVERIFY(isIdle());
    }

    void notificationIsPlainText()
    {
        SoftwareUpdateDialog dialog(nullptr, Qt::WindowFlags());
        dialog.setNotificationText("<b>server replied</b>");
        QCOMPARE(text(dialog, "updateNotificationLabel"), QString("<b>server replied</b>"));
        QCOMPARE(child<QLabel>(dialog, "updateNotificationLabel").textFormat(), Qt::PlainText);
    }

    void availableMethods()
    {
        QCOMPARE(methods(SoftwareUpdateAvailableDialog::staticMetaObject),
                 (QStringList { "downloadUrls(SoftUpIndexList) ", "installPackage(int) ",
                                "currentItemsChangedSig(SoftUpIndexList) ", "downloadReleaseNotes(SoftUpIndexList) ",
                                "showAllLanguages(bool) state", "openUpdateSettings() ", "downloadPackagePressed() ",
                                "installPackagePressed() ", "currentItemsChanged() ", "releaseNotesPressed() ",
                                "getCurrentSelectedItems() ", "showAllLanguagesPressed() " }));
    }

    void tableContents_data()
    {
        QTest::addColumn<QList<QStringList>>("rows");
        QTest::addColumn<QStringList>("cells"); // row by row; "-" is a cell without item
        using Rows = QList<QStringList>;
        QTest::newRow("even") << Rows { { "a", "b" }, { "c", "d" } } << QStringList { "a", "b", "c", "d" };
        QTest::newRow("short row") << Rows { { "a", "b" }, { "c" } } << QStringList { "a", "b", "c", "-" };
        QTest::newRow("long row") << Rows { { "a" }, { "b", "c" }, {} } << QStringList { "a", "b", "-" };
        QTest::newRow("nothing") << Rows {} << QStringList {};
    }

    void tableContents()
    {
        QFETCH(QList<QStringList>, rows);
        SoftwareUpdateAvailableDialog dialog(nullptr, Qt::WindowFlags());
        auto &table = child<QTableWidget>(dialog, "tableWidget");
        dialog.setTableEntries(packages);
        dialog.setTableHeaders({ "Name", "File Size" });
        dialog.setHiddenEntries({ 0, 2 });
        dialog.setCommentText("<b>old</b>");
        table.selectRow(1);

        QSignalSpy changed(&dialog, &SoftwareUpdateAvailableDialog::currentItemsChangedSig);
        std::ostringstream log;
        LogQt::setStream(Log::Error, &log);
        dialog.setTableEntries(rows);
        LogQt::setStream(Log::Error, &std::cerr);

        QStringList cells;
        for (int row = 0; row < table.rowCount(); ++row) {
            QVERIFY(!table.isRowHidden(row));
            for (int column = 0; column < table.columnCount(); ++column)
                cells << (table.item(row, column) ? table.item(row, column)->text() : QString("-"));
        }
        QTEST(cells, "cells");
        QCOMPARE(table.rowCount(), int(rows.size()));
        QVERIFY(child<QTextBrowser>(dialog, "commentText").isHidden());
        QVERIFY(child<QTextBrowser>(dialog, "commentText").toPlainText().isEmpty());
        QVERIFY(!table.horizontalHeaderItem(0));
        QCOMPARE(changed.count(), rows.isEmpty() ? 0 : 1);
        if (!rows.isEmpty())
            QVERIFY(changed.first().first().value<SoftUpIndexList>().isEmpty());
        QCOMPARE(log.str(),
                 std::string(rows.isEmpty()
                                 ? "SoftwareUpdateAvailableDialog::setTableEntries() -> no table entries set!\n"
                                 : ""));
    }

    void hiddenRows_data()
    {
        QTest::addColumn<SoftUpIndexList>("first");
        QTest::addColumn<SoftUpIndexList>("second");
        QTest::newRow("others") << SoftUpIndexList { 0, 1 } << SoftUpIndexList { 2 };
        QTest::newRow("none") << SoftUpIndexList { 0, 1, 2 } << SoftUpIndexList {};
        QTest::newRow("rows that are not there") << SoftUpIndexList {} << SoftUpIndexList { -1, 1, 1, 99 };
    }

    void hiddenRows()
    {
        QFETCH(SoftUpIndexList, first);
        QFETCH(SoftUpIndexList, second);
        SoftwareUpdateAvailableDialog dialog(nullptr, Qt::WindowFlags());
        dialog.setTableEntries(packages);
        dialog.setHiddenEntries(first);
        dialog.setHiddenEntries(second);
        for (int row = 0; row < packages.size(); ++row)
            QCOMPARE(child<QTableWidget>(dialog, "tableWidget").isRowHidden(row), second.contains(row));
    }

    void selectionAndButtons()
    {
        SoftwareUpdateAvailableDialog dialog(nullptr, Qt::WindowFlags());
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
        const SoftUpIndexList one { 2 };
        for (const char *name :
             { "downloadPushButton", "releaseNotesPushButton", "installPushButton", "updateSettingsPushButton" })
            child<QPushButton>(dialog, name).click();
        QCOMPARE(urls.takeFirst().first().value<SoftUpIndexList>(), one);
        QCOMPARE(notes.takeFirst().first().value<SoftUpIndexList>(), one);
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
        QImage picture(40, 40, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QVERIFY(picture.save(file));
        SoftwareUpdateAvailableDialog dialog(nullptr, Qt::WindowFlags());
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
