// Found packages on show: their rows and comments, foreign languages, and what a selection enables and opens.
#include "HttpServer.h"
#include "LogCapture.h"
#include "Row.h"
#include "TestHost.h"

#include <QtNetwork>
#include <QtWidgets>

using namespace qv;

namespace {

PackageInfo package(const QString &type, const QStringSet &languages = {})
{
    PackageInfo package(type, "name", "1.0", "STABLE", QDateTime(), { "p" }, languages, "zip", "");
    package.fileSize = 1572864;
    return package;
}

} // namespace

class AvailableTest : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> opened; // in the browser
    Q_INVOKABLE void open(const QUrl &url) { opened << url; }

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
        QCOMPARE(SoftwareUpdateClient::packageComment(p),
                 "<b>name 1.0 BETA, Application</b><br /><a href=\"http://h/a.zip\">http://h/a.zip</a><br />");
        p.url = QUrl("http://h/\u202epiz.a");
        p.releaseDate = QDateTime(QDate(2026, 3, 4), QTime(1, 2));
        p.name = QString("<img src='/dev/zero'>\n\u202eexe\x01");
        QCOMPARE(SoftwareUpdateClient::packageComment(p),
                 "<b>&lt;img src='/dev/zero'&gt;\n&lt;U+202E&gt;exe&lt;U+0001&gt; 1.0 BETA, Application</b><br "
                 "/>Published on "
                     + QLocale::system().toString(QDate(2026, 3, 4), QLocale::LongFormat)
                     + "<a href=\"http://h/\u202epiz.a\">http://h/&lt;U+202E&gt;piz.a</a><br />");
    }

    void foreignRows()
    {
        const QList<QStringSet> mixed { { "de", "en" }, { "en" }, { "fr" } }, none;
        using Rows = SoftUpIndexList; // 0 is the application
        for (const auto &[firmware, language, foreign] : { std::tuple(mixed, "de", Rows { 2, 3 }),
                                                           { mixed, "fr", Rows { 1, 2 } },
                                                           { mixed, "en", Rows { 2, 3 } }, // wants de too
                                                           { mixed.mid(1), "en", Rows() },
                                                           { mixed, "it", Rows() },
                                                           { none, "de", Rows() } }) {
            PackageInfoList packages { package("Application", { "xx" }) };
            for (const QStringSet &languages : firmware)
                packages << package("Camera Firmware", languages);
            QCOMPARE(SoftwareUpdateClient::foreignLanguageRows(packages, language), foreign);
        }
    }

    void selection()
    {
        const QByteArray own = QLocale::system().name().section('_', 0, 0).toLatin1();
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
                                + (own == "en" ? "de en" : own)
                                + "'><release-notes language='de' url='http://h/hinweise'/></package>"
                                  "<package name='foreign' release='2' status='STABLE' platform='QC-1' file-size='3'"
                                  " url='smb://me:s3cret@h/c.zip' language='xx'/></s>"));
        client.checkForUpdate(0);
        QTRY_VERIFY(host.availableDialog());
        QPointer<SoftwareUpdateAvailableDialog> dialog = host.availableDialog();
        auto *table = dialog->findChild<QTableWidget *>("tableWidget");
        const auto *comment = dialog->findChild<QTextBrowser *>("commentText");
        const auto button = [&](const QString &name) { return dialog->findChild<QAbstractButton *>(name); };
        const auto enabled = [&] {
            QString names;
            for (const char *name : { "installPushButton", "downloadPushButton", "releaseNotesPushButton" })
                names += QLatin1Char(button(name)->isEnabled() ? name[0] : '-');
            return names;
        };
        QCOMPARE(table->horizontalHeaderItem(1)->text(), QString("File Size"));
        QCOMPARE(enabled(), QString("---"));
        QVERIFY(!table->isRowHidden(1) && table->isRowHidden(2));

        table->selectRow(0);
        QCOMPARE(enabled(), QString("idr"));
        QVERIFY(comment->toPlainText().startsWith("Camera Host 2, Application"));
        table->selectRow(1);
        QCOMPARE(enabled(), QString("-d-"));
        QVERIFY(!comment->isHidden());

        button("showAllLanguagesCheckBox")->click();
        table->selectRow(0);
        QVERIFY(!table->isRowHidden(2));

        for (const char *scheme : { "http", "smb" })
            QDesktopServices::setUrlHandler(scheme, this, "open");
        LogCapture log;
        button("releaseNotesPushButton")->click();
        table->selectAll();
        QCOMPARE(enabled(), QString("-d-"));
        QVERIFY(comment->isHidden());
        button("downloadPushButton")->click();
        for (const char *scheme : { "http", "smb" })
            QDesktopServices::unsetUrlHandler(scheme);
        QCOMPARE(opened, (QList<QUrl> { QUrl("http://h/notes"), QUrl("http://h/a.deb"), QUrl("http://h/b.zip") }));
        QCOMPARE(log.take().last(),
                 QString("SoftwareUpdateClient::downloadUrls() -> no address for the browser: smb://me@h/c.zip"));

        button("updateSettingsPushButton")->click();
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
        const QWidgetList widgets = QApplication::topLevelWidgets();
        const auto isDialog = [](const QWidget *widget) { return widget->inherits("qv::SoftwareUpdateDialog"); };
        const auto dialog = std::find_if(widgets.cbegin(), widgets.cend(), isDialog);
        QVERIFY(dialog != widgets.cend() && (*dialog)->isVisible());
        delete *dialog;
    }
};

QTEST_MAIN(AvailableTest)
#include "tst_available.moc"
