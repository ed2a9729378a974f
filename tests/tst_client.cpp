// The client as an object: its settings in the host's store, key by key, the schedule, and the slots that hosts call.
#include "LogCapture.h"
#include "NodeDB.h"
#include "Row.h"
#include "TestHost.h"

#include <QNetworkAccessManager>
#include <QTimer>

using namespace qv;

class ClientTest : public QObject
{
    Q_OBJECT

private slots:
    // First, because every construction adds to the lists of the process.
    void firstAndSecondClient()
    {
        TestHost host;
        SoftwareUpdateClient first("Product", VersionNumber("1.4"), "http://server/", &host.window);
        QCOMPARE(host.store().allKeys(),
                 QStringList({ "checkForBeta", "doUpdateCheck", "installablePackageTypes", "product", "serverURL",
                               "supportedPackageTypes", "updateInterval", "versionNumber" }));
        QCOMPARE(host.stored("doUpdateCheck").toBool(), true);
        QCOMPARE(host.stored("checkForBeta").toBool(), false);
        QCOMPARE(host.stored("updateInterval").toInt(), 0);
        QCOMPARE(host.stored("product").toString(), QStringLiteral("Product"));
        QCOMPARE(host.stored("versionNumber").toString(), QStringLiteral("1.4"));
        QCOMPARE(host.stored("serverURL").toString(), QStringLiteral("http://server/"));
        QCOMPARE(host.stored("supportedPackageTypes").toString(), QStringLiteral("tar.gz,rpm,deb,tar.bz2"));
        QCOMPARE(host.stored("installablePackageTypes").toString(), QString());

        SoftwareUpdateClient second("Product", VersionNumber("1.4"), "http://other/", nullptr);
        QCOMPARE(host.stored("supportedPackageTypes").toString(),
                 QStringLiteral("tar.gz,rpm,deb,tar.bz2,tar.gz,rpm,deb,tar.bz2"));
        QCOMPARE(host.stored("installablePackageTypes").toString(), QStringLiteral(","));
        QCOMPARE(host.stored("serverURL").toString(), QStringLiteral("http://server/"));
    }

    void storedServer_data()
    {
        columns<QVariant, QString>("stored", "server");
        row("none", QVariant(), "http://argument/");
        row("other", QVariant("http://stored/"), "http://stored/");
        row("empty", QVariant(""), "");
    }
    void storedServer()
    {
        QFETCH(QVariant, stored);
        TestHost host;
        if (stored.isValid())
            host.set("serverURL", stored);
        SoftwareUpdateClient client("P", VersionNumber("1"), "http://argument/", nullptr);
        QTEST(host.stored("serverURL").toString(), "server");
    }

    void hourlyTimer()
    {
        TestHost host;
        host.set("doUpdateCheck", false);
        SoftwareUpdateClient client("P", VersionNumber("1"), "http://127.0.0.1:1/", nullptr);
        const QTimer *timer = client.findChild<QTimer *>();
        QVERIFY(!timer->isActive());
        SoftwareUpdateDialogSettings applied;
        applied.updateInterval = 2;
        applied.serverURL = "http://typed/";
        QVERIFY(
            QMetaObject::invokeMethod(&client, "applyDialogSettings", Q_ARG(SoftwareUpdateDialogSettings, applied)));
        QVERIFY(timer->isActive());
        QCOMPARE(timer->interval(), 3600000);
        QCOMPARE(host.stored("updateInterval").toInt(), 2);
        QCOMPARE(host.stored("serverURL").toString(), QStringLiteral("http://typed/"));
        client.disableSoftwareUpdate();
        QVERIFY(!timer->isActive());
        QCOMPARE(host.stored("doUpdateCheck").toBool(), true);
    }

    void readingTheStore_data()
    {
        // expected: the fields in order
        columns<QVariantMap, QString>("stored", "expected");
        row("nothing", QVariantMap(), "-|0|-|true|false|0|||");
        row("all",
            QVariantMap { { "product", "P" },
                          { "versionNumber", "2.1" },
                          { "serverURL", "u" },
                          { "doUpdateCheck", false },
                          { "checkForBeta", true },
                          { "updateInterval", 3 },
                          { "supportedPlatforms", "a,,b" },
                          { "installablePackageTypes", "zip" },
                          { "currentCameraVersions", "QC:1.2,QD:" } },
            "P|2.1|u|false|true|3|a b|zip|QC=1.2 QD=0");
        row("junk",
            QVariantMap {
                { "doUpdateCheck", "" }, { "updateInterval", "weekly" }, { "currentCameraVersions", ",:,::,QC" } },
            "-|0|-|true|false|0|||=0 =0 QC=0");
        row("lists without quotes", QVariantMap { { "supportedPlatforms", QStringList { "a", "b" } } },
            "-|0|-|true|false|0|a b||");
    }
    void readingTheStore()
    {
        QFETCH(QVariantMap, stored);
        TestHost host;
        SoftwareUpdateClient client("P", VersionNumber("1"), "http://server/", nullptr);
        host.store().clear();
        for (auto value = stored.cbegin(); value != stored.cend(); ++value)
            host.set(value.key(), value.value());
        SoftwareUpdateSettings s;
        s.supportedPlatforms << "rest of before";
        client.getCurrentSettings(&s);
        QStringList cameras;
        for (const auto &camera : s.currentCameraVersions)
            cameras << camera.first + '=' + camera.second.toString();
        const auto orNull = [](const QString &text) { return text.isNull() ? QStringLiteral("-") : text; };
        QTEST(QStringList({ orNull(s.product), s.versionNumber.toString(), orNull(s.serverURL),
                            s.doUpdateCheck ? "true" : "false", s.checkForBeta ? "true" : "false",
                            QString::number(s.updateInterval), s.supportedPlatforms.join(' '),
                            s.installablePackageTypes.join(' '), cameras.join(' ') })
                  .join('|'),
              "expected");
    }

    void nothingIsRemoved()
    {
        TestHost host;
        SoftwareUpdateClient client("P", VersionNumber("1"), "http://server/", nullptr);
        client.setCurrentCameraVersions({ { "QC-1", VersionNumber("10.1") }, { "QC-2", VersionNumber() } });
        QCOMPARE(host.stored("currentCameraVersions").toString(), QStringLiteral("QC-1:10.1,QC-2:0"));
        client.setCurrentCameraVersions({});
        QCOMPARE(host.stored("currentCameraVersions").toString(), QStringLiteral("QC-1:10.1,QC-2:0"));
        client.setVersionNumber(VersionNumber("2.0"));
        client.setVersionNumber(VersionNumber());
        QCOMPARE(host.stored("versionNumber").toString(), QStringLiteral("2.0"));
        const SoftwareUpdateSettings empty;
        client.setCurrentSettings(&empty);
        QCOMPARE(host.stored("product").toString(), QStringLiteral("P"));
        QCOMPARE(host.stored("serverURL").toString(), QStringLiteral("http://server/"));
        QVERIFY(!host.store().contains("lastCheck"));

        const QDateTime time(QDate(2026, 1, 2), QTime(3, 4, 5));
        SoftwareUpdateSettings settings;
        settings.lastCheck = time;
        client.setCurrentSettings(&settings);
        QCOMPARE(host.stored("lastCheck"), QVariant(time));
        client.getCurrentSettings(&settings);
        QCOMPARE(settings.lastCheck, time);
    }

    void storeIsNamedAfterTheHost()
    {
        TestHost host;
        QCoreApplication::setOrganizationName("");
        SoftwareUpdateClient client("P", VersionNumber("1"), "http://server/", nullptr);
        QVERIFY(QSettings("Quorvel", "Camera Host").contains("serverURL"));
        QVERIFY(!host.store().contains("serverURL"));
    }

    void proxyOfTheHost()
    {
        TestHost host;
        SoftwareUpdateClient client("P", VersionNumber("1"), "http://server/", nullptr);
        QCOMPARE(client.networkProxy(), QNetworkProxy(QNetworkProxy::NoProxy));
        NodeDB::getDB().setGlobalProxy(NetworkProxy("proxy", 3128, "me", "secret"));
        QCOMPARE(client.networkProxy(), QNetworkProxy(QNetworkProxy::HttpProxy, "proxy", 3128, "me", "secret"));
        NodeDB::getDB().setGlobalProxy(NetworkProxy());
    }

    void whenACheckIsDue_data()
    {
        columns<int, QDateTime, QDateTime>("interval", "last", "due");
        const auto at = [](int month, int day) { return QDateTime(QDate(2025, month, day), QTime(12, 0)); };
        row("daily", 1, at(3, 1), at(3, 2));
        row("weekly", 2, at(3, 1), at(3, 8));
        row("monthly", 3, at(3, 1), at(4, 1));
        row("monthly, short month", 3, at(1, 31), at(2, 28));
    }
    void whenACheckIsDue()
    {
        QFETCH(int, interval);
        QFETCH(QDateTime, last);
        QFETCH(QDateTime, due);
        QVERIFY(!SoftwareUpdateClient::isCheckDue(interval, last, due));
        QVERIFY(SoftwareUpdateClient::isCheckDue(interval, last, due.addMSecs(1)));
        QVERIFY(SoftwareUpdateClient::isCheckDue(interval, QDateTime(), last));
        for (const int never : { 0, 4, -1 })
            QVERIFY(!SoftwareUpdateClient::isCheckDue(never, last, due.addYears(1)));
    }

    void hourlyTick_data()
    {
        columns<int, int, QString>("interval", "daysAgo", "line");
        const QString prefix = "SoftwareUpdateClient::queryLastUpdate() -> ";
        row("at start", 0, 99, QString());
        row("daily", 1, 2, prefix + "daily update fired");
        row("weekly", 2, 8, prefix + "weekly update fired");
        row("weekly, too early", 2, 6, QString());
        row("monthly", 3, 40, prefix + "monthly update fired");
    }
    void hourlyTick()
    {
        QFETCH(int, interval);
        QFETCH(int, daysAgo);
        QFETCH(QString, line);
        TestHost host;
        SoftwareUpdateClient client("P", VersionNumber("1"), "http://127.0.0.1:1/", &host.window);
        host.set("updateInterval", interval);
        host.set("lastCheck", QDateTime::currentDateTime().addDays(-daysAgo));
        // The line is written even where checking is off; nothing is sent then.
        host.set("doUpdateCheck", false);
        LogCapture log;
        QVERIFY(QMetaObject::invokeMethod(&client, "queryLastUpdate"));
        QCOMPARE(log.take().join('\n'), line);

        client.queryForUpdate();
        QVERIFY(QMetaObject::invokeMethod(&client, "queryLastUpdate"));
        QVERIFY(log.take().isEmpty());
    }

    void slotsByName()
    {
        QStringList declared;
        const QMetaObject &meta = SoftwareUpdateClient::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            declared << QString::fromLatin1(meta.method(i).methodSignature());
        QCOMPARE(
            declared.join('\n'),
            QStringLiteral("checkForUpdate()\ncheckForUpdate(int)\ndoInitialCheck(int)\ndoInitialCheck()\n"
                           "queryForUpdate(Qt::WindowFlags,bool)\nqueryForUpdate(Qt::WindowFlags)\nqueryForUpdate()\n"
                           "enableSoftwareUpdate()\ndisableSoftwareUpdate()\nsetVersionNumber(VersionNumber)\n"
                           "setCurrentCameraVersions(SoftUpCurrentCameraVersions)\nsetParent(QWidget*)\n"
                           "setWindowFlags(Qt::WindowFlags)\nupdateAvailable()\ndoBackgroundCheck()\n"
                           "applyDialogSettings(SoftwareUpdateDialogSettings)\ndownloadUrls(SoftUpIndexList)\n"
                           "downloadReleaseNotes(SoftUpIndexList)\ndownloadProgress(int,int)\ndownloadError(int)\n"
                           "installPackage(int)\ndetermineForeignLanguageRows(PackageInfoList)\ndownloadFinished()\n"
                           "abortDownload()\nevaluateServerResponse(QNetworkReply*)\nrequestTimeout()\n"
                           "requestError(QString)\nqueryLastUpdate(int)\nqueryLastUpdate()\ndeleteUpdateDialog()\n"
                           "deleteUpdateAvailableDialog()\ndeleteNetworkmanager()\ndeleteProgressDialog()\n"
                           "startZipInstall()\nunzippedMPKGPackage(QString)\n"
                           "manageUpdateAvailableDialog(SoftUpIndexList)\nshowHideForeignLanguageItems(bool)\n"
                           "setUpdateAvailableNull(QObject*)\nsetUpdateAvailableNull()\n"
                           "setUpdateDialogNull(QObject*)\nsetUpdateDialogNull()\n"
                           "openSettingsDialogFromUpdateAvailableDialog()"));
    }
};

QTEST_MAIN(ClientTest)
#include "tst_client.moc"
