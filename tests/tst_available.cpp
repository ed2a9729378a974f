// Found packages on show: their rows and comments, foreign languages, and what a selection enables and opens.
#include "HttpServer.h"
#include "LogCapture.h"
#include "Row.h"
#include "TestHost.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QTableWidget>
#include <QTextBrowser>

using namespace qv;

namespace {

PackageInfo package(const QString &type, const QStringSet &languages = {})
{
    PackageInfo package(type, "name", "1.0", "STABLE", QDateTime(), { "p" }, languages, "zip", "");
    package.fileSize = 1572864;
    return package;
}

} // namespace

/// Takes the links that are opened in the browser.
class Browser : public QObject
{
    Q_OBJECT

public:
    Browser()
    {
        for (const char *scheme : { "http", "smb" })
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~Browser() override
    {
        for (const char *scheme : { "http", "smb" })
            QDesktopServices::unsetUrlHandler(scheme);
    }

    QList<QUrl> opened;

public slots:
    void open(const QUrl &url) { opened << url; }
};

class AvailableTest : public QObject
{
    Q_OBJECT

private slots:
    void rows_data()
    {
        columns<PackageInfo, QString>("package", "row");
        PackageInfo p = package("Application", { "de" });
        p.publicName = "public";
        p.publicRelease = "2026";
        row("internal name, public release", p, "name 2026|1.5 MB|zip|Multilingual|p");
        p.name.clear();
        p.publicRelease.clear();
        p.status = "BETA";
        p.platforms.clear();
        p.fileSize = 0;
        row("public name, internal release", p, "public 1.0 BETA|0.0 MB|zip|Multilingual|");
        p.status = "beta";
        p.fileSize = 1048576;
        row("status' case", p, "public 1.0|1.0 MB|zip|Multilingual|");
        row("firmware", package("Camera Firmware", { "de" }), "name 1.0|1.5 MB|zip|de|p");
    }
    void rows()
    {
        QFETCH(PackageInfo, package);
        QTEST(SoftwareUpdateClient::packageRow(package).join('|'), "row");
    }

    void comment()
    {
        PackageInfo p = package("Application");
        p.status = "BETA";
        p.url = QUrl("http://h/a.zip");
        const QString link = "<a href=\"http://h/a.zip\">http://h/a.zip</a><br />";
        QCOMPARE(SoftwareUpdateClient::packageComment(p), "<b>name 1.0 BETA, Application</b><br />" + link);
        p.releaseDate = QDateTime(QDate(2026, 3, 4), QTime(1, 2));
        p.name = "<img src='/dev/zero'>";
        QCOMPARE(SoftwareUpdateClient::packageComment(p),
                 "<b>&lt;img src='/dev/zero'&gt; 1.0 BETA, Application</b><br />Published on "
                     + QLocale::system().toString(QDate(2026, 3, 4), QLocale::LongFormat) + link);
    }

    void foreignRows_data()
    {
        // foreign: row 0 is the application
        columns<QList<QStringSet>, QString, SoftUpIndexList>("firmware", "language", "foreign");
        const QList<QStringSet> mixed { { "de", "en" }, { "en" }, { "fr" } };
        row("de", mixed, "de", SoftUpIndexList { 2, 3 });
        row("fr", mixed, "fr", SoftUpIndexList { 1, 2 });
        row("en wants de too", mixed, "en", SoftUpIndexList { 2, 3 });
        row("en, none with de", QList<QStringSet> { { "en" }, { "fr" } }, "en", SoftUpIndexList());
        row("none matches", mixed, "it", SoftUpIndexList());
        row("no firmware", QList<QStringSet>(), "de", SoftUpIndexList());
    }
    void foreignRows()
    {
        QFETCH(QList<QStringSet>, firmware);
        QFETCH(QString, language);
        PackageInfoList packages { package("Application", { "xx" }) };
        for (const QStringSet &languages : firmware)
            packages << package("Camera Firmware", languages);
        QTEST(SoftwareUpdateClient::foreignLanguageRows(packages, language), "foreign");
    }

    void selection()
    {
        const QString own = QLocale::system().name().section('_', 0, 0);
        const QByteArray ownFirmware = own == "en" ? QByteArray("de en") : own.toLatin1();
        TestHost host;
        HttpServer server;
        SoftwareUpdateClient client("P", VersionNumber("1.0"), server.url("/c").toString(), &host.window);
        client.setCurrentCameraVersions({ { "QC-1", VersionNumber("1") } });
        host.set("installablePackageTypes", "deb");
        server.route("/c",
                     QByteArray("<s><package name='Camera Host' release='2' status='STABLE' url='http://h/a.deb'"
                                " file-size='1'><release-notes language='en' url='http://h/notes'/></package>"
                                "<package name='own' release='2' status='STABLE' platform='QC-1' file-size='2'"
                                " url='http://h/b.zip' language='"
                                + ownFirmware
                                + "'><release-notes language='de' url='http://h/hinweise'/></package>"
                                  "<package name='foreign' release='2' status='STABLE' platform='QC-1' file-size='3'"
                                  " url='smb://h/c.zip' language='xx'/></s>"));
        client.checkForUpdate(0);
        QTRY_VERIFY(host.availableDialog());
        QPointer<SoftwareUpdateAvailableDialog> dialog = host.availableDialog();
        const auto child = [&dialog](auto pointer, const char *name) {
            return dialog->findChild<decltype(pointer)>(QString::fromLatin1(name));
        };
        auto *table = child((QTableWidget *)nullptr, "tableWidget");
        const auto *comment = child((QTextBrowser *)nullptr, "commentText");
        const auto enabled = [&] {
            QString names;
            for (const char *name : { "installPushButton", "downloadPushButton", "releaseNotesPushButton" }) {
                if (child((QPushButton *)nullptr, name)->isEnabled())
                    names += name[0];
            }
            return names;
        };
        QCOMPARE(table->horizontalHeaderItem(1)->text(), QStringLiteral("File Size"));
        QCOMPARE(enabled(), QString());
        QVERIFY(!table->isRowHidden(1) && table->isRowHidden(2));

        table->selectRow(0);
        QCOMPARE(enabled(), QStringLiteral("idr"));
        QVERIFY(comment->toPlainText().startsWith("Camera Host 2, Application"));
        table->selectRow(1);
        QCOMPARE(enabled(), QStringLiteral("d"));
        QVERIFY(!comment->isHidden());

        auto *all = child((QCheckBox *)nullptr, "showAllLanguagesCheckBox");
        all->click();
        QVERIFY(!table->isRowHidden(2));
        table->selectRow(0);
        QVERIFY(!table->isRowHidden(2));

        const Browser browser;
        LogCapture log;
        child((QPushButton *)nullptr, "releaseNotesPushButton")->click();
        QCOMPARE(browser.opened, QList<QUrl> { QUrl("http://h/notes") });
        table->selectAll();
        QCOMPARE(enabled(), QStringLiteral("d"));
        QVERIFY(comment->isHidden());
        child((QPushButton *)nullptr, "downloadPushButton")->click();
        QCOMPARE(browser.opened.mid(1), (QList<QUrl> { QUrl("http://h/a.deb"), QUrl("http://h/b.zip") }));
        QCOMPARE(log.take().last(),
                 QStringLiteral("SoftwareUpdateClient::downloadUrls() -> no address for the browser: smb://h/c.zip"));

        child((QPushButton *)nullptr, "updateSettingsPushButton")->click();
        QVERIFY(host.settingsDialog()->isModal() && host.settingsDialog()->isVisible());

        // Closed, it waits for its deletion; until then it is used again.
        dialog->reject();
        QVERIFY(!dialog->isVisible());
        QVERIFY(QMetaObject::invokeMethod(&client, "updateAvailable"));
        QVERIFY(dialog->isVisible());
        host.release();
        QVERIFY(!dialog);
        QVERIFY(QMetaObject::invokeMethod(&client, "updateAvailable"));
        QVERIFY(host.availableDialog());
    }

    void privateSlotsOutOfTurn()
    {
        TestHost host;
        auto window = std::make_unique<QWidget>();
        SoftwareUpdateClient client("P", VersionNumber("1.0"), "http://h/", window.get());
        QNetworkAccessManager network;
        for (QNetworkReply *reply : { static_cast<QNetworkReply *>(nullptr), network.get(QNetworkRequest()) })
            QVERIFY(QMetaObject::invokeMethod(&client, "evaluateServerResponse", Q_ARG(QNetworkReply *, reply)));
        for (const char *slot : { "deleteUpdateDialog", "deleteUpdateAvailableDialog", "deleteNetworkmanager" })
            QVERIFY(QMetaObject::invokeMethod(&client, slot));
        QVERIFY(QMetaObject::invokeMethod(&client, "showHideForeignLanguageItems", Q_ARG(bool, true)));
        QVERIFY(QMetaObject::invokeMethod(&client, "manageUpdateAvailableDialog", Q_ARG(SoftUpIndexList, { 3 })));

        window.reset();
        client.queryForUpdate();
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *dialog = qobject_cast<SoftwareUpdateDialog *>(widget)) {
                QVERIFY(dialog->isVisible());
                delete dialog;
                return;
            }
        }
        QFAIL("no dialog");
    }
};

QTEST_MAIN(AvailableTest)
#include "tst_available.moc"
