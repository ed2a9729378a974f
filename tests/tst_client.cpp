// The client as an object: its settings in the host's store, key by key, the schedule, and the slots that hosts call.
#include "LogCapture.h"
#include "NodeDB.h"
#include "TestHost.h"

#include <QNetworkAccessManager>

using namespace qv;

namespace {

/// All that is stored, "key=value|key=value".
QString stored()
{
    QStringList texts;
    const QSettings store = TestHost::store();
    for (const QString &key : store.allKeys())
        texts << key + '=' + store.value(key).toString();
    return texts.join('|');
}

} // namespace

class ClientTest : public QObject
{
    Q_OBJECT

private slots:
    // First, because every construction adds to the lists of the process.
    void firstAndSecondClient()
    {
        TestHost host;
        SoftwareUpdateClient first("Product", VersionNumber("1.4"), "http://server/", &host.window);
        const QString types = "tar.gz,rpm,deb,tar.bz2";
        const QString all = "checkForBeta=false|doUpdateCheck=true|installablePackageTypes=%1|product=Product|"
                            "serverURL=http://server/|supportedPackageTypes=%2|updateInterval=0|versionNumber=1.4";
        QCOMPARE(stored(), all.arg("", types));
        SoftwareUpdateClient second("Product", VersionNumber("1.4"), "http://other/", nullptr);
        QCOMPARE(stored(), all.arg(",", types + ',' + types));
        host.set("serverURL", "");
        const SoftwareUpdateClient third("Product", VersionNumber("1.4"), "http://other/", nullptr);
        QCOMPARE(host.stored("serverURL"), QVariant(""));
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

    void readingTheStore()
    {
        // what is stored, semicolons make a list; what is stored of what was read
        const QString defaults = "checkForBeta=false|doUpdateCheck=true|";
        for (const auto &[before, after] :
             { std::pair(QString(), defaults + "updateInterval=0"),
               { "product=P|versionNumber=2.1|serverURL=u|doUpdateCheck=false|checkForBeta=true|updateInterval=3|"
                 "supportedPlatforms=a,,b|installablePackageTypes=zip|currentCameraVersions=QC:1.2,QD:",
                 "checkForBeta=true|currentCameraVersions=QC:1.2,QD:0|doUpdateCheck=false|installablePackageTypes=zip|"
                 "product=P|serverURL=u|supportedPlatforms=a,b|updateInterval=3|versionNumber=2.1" },
               { "doUpdateCheck=|updateInterval=weekly|currentCameraVersions=,:,::,QC",
                 "checkForBeta=false|currentCameraVersions=:0,:0,QC:0|doUpdateCheck=true|updateInterval=0" },
               { "supportedPlatforms=a;b", defaults + "supportedPlatforms=a,b|updateInterval=0" } }) {
            TestHost host;
            SoftwareUpdateClient client("P", VersionNumber("1"), "http://server/", nullptr);
            host.store().clear();
            for (const QString &one : before.split('|', Qt::SkipEmptyParts)) {
                const QString value = one.section('=', 1);
                host.set(one.section('=', 0, 0), value.contains(';') ? QVariant(value.split(';')) : QVariant(value));
            }
            SoftwareUpdateSettings settings;
            settings.supportedPackageTypes << "rest of before";
            client.getCurrentSettings(&settings);
            host.store().clear();
            client.setCurrentSettings(&settings);
            QCOMPARE(stored(), after);
        }
    }

    void nothingIsRemoved()
    {
        TestHost host;
        SoftwareUpdateClient client("P", VersionNumber("1"), "http://server/", nullptr);
        client.setCurrentCameraVersions({ { "QC-1", VersionNumber("10.1") }, { "QC-2", VersionNumber() } });
        client.setVersionNumber(VersionNumber("2.0"));
        const QString before = stored();
        QVERIFY(before.contains("currentCameraVersions=QC-1:10.1,QC-2:0|") && before.endsWith("|versionNumber=2.0"));
        client.setCurrentCameraVersions({});
        client.setVersionNumber(VersionNumber());
        SoftwareUpdateSettings settings;
        client.setCurrentSettings(&settings);
        QCOMPARE(stored(), before);

        const QDateTime time(QDate(2026, 1, 2), QTime(3, 4, 5));
        settings.lastCheck = time;
        client.setCurrentSettings(&settings);
        QCOMPARE(host.stored("lastCheck"), QVariant(time));
        client.getCurrentSettings(&settings);
        QCOMPARE(settings.lastCheck, time);
        host.set("currentCameraVersions", "QD:3"); // another program does
        client.getCurrentSettings(&settings);
        QCOMPARE(settings.currentCameraVersions, SoftUpCurrentCameraVersions({ { "QD", VersionNumber("3") } }));
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

    void whenACheckIsDue()
    {
        // interval, last check, due
        for (const QString words : { "1 2025-03-01 2025-03-02", "2 2025-03-01 2025-03-08", "3 2025-03-01 2025-04-01",
                                     "3 2025-01-31 2025-02-28" }) {
            const int interval = words.left(1).toInt();
            const QDateTime last = QDateTime::fromString(words.section(' ', 1, 1), Qt::ISODate);
            const QDateTime due = QDateTime::fromString(words.section(' ', 2), Qt::ISODate);
            QVERIFY2(!SoftwareUpdateClient::isCheckDue(interval, last, due), qPrintable(words));
            QVERIFY2(SoftwareUpdateClient::isCheckDue(interval, last, due.addMSecs(1)), qPrintable(words));
            QVERIFY(SoftwareUpdateClient::isCheckDue(interval, QDateTime(), last));
            for (const int never : { 0, 4, -1 })
                QVERIFY(!SoftwareUpdateClient::isCheckDue(never, last, due.addYears(1)));
        }
    }

    void hourlyTick()
    {
        // interval, days since the last check, what fires
        for (const QString words : { "0 99 ", "1 2 daily", "2 8 weekly", "2 6 ", "3 40 monthly" }) {
            TestHost host;
            SoftwareUpdateClient client("P", VersionNumber("1"), "http://127.0.0.1:1/", &host.window);
            host.set("updateInterval", words.left(1));
            host.set("lastCheck", QDateTime::currentDateTime().addDays(-words.section(' ', 1, 1).toInt()));
            // The line is written even where checking is off; nothing is sent then.
            host.set("doUpdateCheck", false);
            LogCapture log;
            QVERIFY(QMetaObject::invokeMethod(&client, "queryLastUpdate"));
            const QString rhythm = words.section(' ', 2), prefix = "SoftwareUpdateClient::queryLastUpdate() -> ";
            QCOMPARE(log.take().join('\n'), rhythm.isEmpty() ? QString() : prefix + rhythm + " update fired");

            client.queryForUpdate();
            QVERIFY(QMetaObject::invokeMethod(&client, "queryLastUpdate"));
            QVERIFY(log.take().isEmpty());
        }
    }

    /// Those that hosts may call by name and the library itself does not.
    void slotsByName()
    {
        for (const char *slot :
             { "setParent(QWidget*)", "queryForUpdate()", "setWindowFlags(Qt::WindowFlags)", "enableSoftwareUpdate()",
               "disableSoftwareUpdate()", "setVersionNumber(VersionNumber)",
               "setCurrentCameraVersions(SoftUpCurrentCameraVersions)", "doInitialCheck()", "doBackgroundCheck()",
               "determineForeignLanguageRows(PackageInfoList)", "requestError(QString)", "deleteProgressDialog()",
               "startZipInstall()", "setUpdateDialogNull()", "setUpdateAvailableNull()" })
            QVERIFY2(SoftwareUpdateClient::staticMetaObject.indexOfMethod(slot) >= 0, slot);
    }
};

QTEST_MAIN(ClientTest)
#include "tst_client.moc"
