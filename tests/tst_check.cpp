// Checks against a real server: what is sent and when, and how each answer ends.
#include "HttpServer.h"
#include "LogCapture.h"
#include "NodeDB.h"
#include "Row.h"
#include "TestHost.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QTableWidget>

using namespace qv;

namespace {

const QByteArray application =
    "<package name='Camera Host' release='2.0' status='STABLE' file-size='1MB'><url>http://h/a.deb</url></package>";
const QByteArray firmware = "<package name='fw' release='11.0' status='STABLE' platform='QC-1' url='http://h/qc.zip'"
                            " file-size='2MB'/>";

QByteArray catalogue(const QByteArray &packages)
{
    return "<softwareList>" + packages + "</softwareList>";
}

} // namespace

Q_DECLARE_METATYPE(HttpAnswer)

class CheckTest : public QObject
{
    Q_OBJECT

    /// A client of version 1.0 whose server is @p server, and its host.
    struct Fixture : TestHost
    {
        Fixture() : client("P", VersionNumber("1.0"), server.url("/catalogue").toString(), &window) { }

        /// Opens the settings dialog with the expert settings shown, and presses "Check Now".
        void openAndCheck()
        {
            client.queryForUpdate();
            QVERIFY(settingsDialog());
            checkNow()->click();
            QVERIFY(!checkNow()->isEnabled());
        }
        QPushButton *checkNow() const { return settingsDialog()->findChild<QPushButton *>("updatePushButton"); }
        bool isIdle() const { return checkNow()->isEnabled(); }

        QStringList rows() const
        {
            const auto *table = availableDialog()->findChild<QTableWidget *>("tableWidget");
            QStringList texts;
            for (int row = 0; row < table->rowCount(); ++row)
                texts << table->item(row, 0)->text();
            return texts;
        }

        HttpServer server;
        SoftwareUpdateClient client;
        LogCapture log;
    };

private slots:
    void outcomes_data()
    {
        columns<HttpAnswer, QString, QString>("answer", "notification", "lastLine");
        const auto add = [](const char *name, const HttpAnswer &answer, const char *notification, const char *line) {
            row(name, answer, notification, line);
        };
        const char *upToDate = "Congratulations! Your product is up-to-date!";
        const char *nothing = "No update available!";
        const char *upToDateLine = "SoftwareUpdateClient::productUpToDate() -> product is up to date!";
        const char *nothingLine = "SoftwareUpdateClient::parseServerResponse() -> no update available";
        add("up to date",
            HttpAnswer(catalogue("<package name='Camera Host' release='1.0' status='STABLE' url='a.deb'/>")), upToDate,
            upToDateLine);
        add("only firmware, no camera", HttpAnswer(catalogue(firmware)), upToDate, upToDateLine);
        add("beta only", HttpAnswer(catalogue("<package name='Camera Host' release='3' status='BETA' url='a.deb'/>")),
            upToDate, upToDateLine);
        add("suffix not supported",
            HttpAnswer(catalogue("<package name='Camera Host' release='3' status='STABLE' url='a.exe'/>")), upToDate,
            upToDateLine);
        add("empty catalogue", HttpAnswer(catalogue("")), nothing, nothingLine);
        add("empty body", HttpAnswer(), nothing, nothingLine);
        add("no XML", HttpAnswer("<html>"), nothing, nothingLine);
        add("302 without target", HttpAnswer(catalogue(""), 302), nothing, nothingLine);
        add("308 is no redirect here", HttpAnswer::redirect("/catalogue", 308), nothing, nothingLine);
        add("compressed all the same", HttpAnswer("\x1f\x8b\x08").header("Content-Encoding", "gzip"), nothing,
            nothingLine);
        add("not found", HttpAnswer("x", 404), nullptr,
            "SoftwareUpdateClient::evaluateServerResponse() -> reply->errorString(): *");
        add("dropped", HttpAnswer("12345").dropAfter(2), nullptr,
            "SoftwareUpdateClient::evaluateServerResponse() -> reply->errorString(): *");
        add("relative redirect", HttpAnswer::redirect("other"), "Protocol \"\" is unknown",
            "SoftwareUpdateClient::evaluateServerResponse() -> reply->errorString(): *");
        add("redirect to a device", HttpAnswer::redirect("file:///dev/ptmx"), "Protocol \"file\" is unknown",
            "SoftwareUpdateClient::evaluateServerResponse() -> reply->errorString(): *");
    }
    void outcomes()
    {
        QFETCH(HttpAnswer, answer);
        QFETCH(QString, notification);
        QFETCH(QString, lastLine);
        Fixture f;
        f.server.route("/catalogue", answer);
        f.openAndCheck();
        QTRY_VERIFY(f.isIdle());
        const QStringList lines = f.log.take();
        if (lastLine.endsWith('*')) {
            lastLine.chop(1);
            QCOMPARE(lines.last(), lastLine + f.notification());
            QVERIFY(notification.isEmpty() || f.notification() == notification);
            // Deliberate in the client: an error is logged in the words of the timeout.
            QVERIFY(
                lines.contains("SoftwareUpdateClient::requestTimeout() -> Timeout occurred requesting update server!"));
        } else {
            QCOMPARE(f.notification(), notification);
            QCOMPARE(lines.last(), lastLine);
        }
        QVERIFY(!f.availableDialog());
        QCOMPARE(f.server.requests.first().headers.value("content-type"), QByteArray("text/xml"));
        QCOMPARE(f.server.requests.first().method, QByteArray("GET"));
    }

    void redirects()
    {
        Fixture f;
        f.server.route("/catalogue", HttpAnswer::redirect(f.server.url("/2").toEncoded(), 301));
        f.server.route("/2", HttpAnswer::redirect(f.server.url("/3").toEncoded(), 303));
        f.server.route("/3", HttpAnswer::redirect(f.server.url("/4?x=1").toEncoded(), 307));
        f.server.route("/4?x=1", catalogue(application));
        f.client.checkForUpdate(0);
        QTRY_VERIFY(f.availableDialog());
        QCOMPARE(f.server.targets(), (QList<QByteArray> { "/catalogue", "/2", "/3", "/4?x=1" }));
        QVERIFY(f.log.take().contains("SoftwareUpdateClient::evaluateServerResponse() -> redirect url "
                                      + f.server.url("/2").toString()));
    }

    void packagesFound()
    {
        Fixture f;
        f.client.setCurrentCameraVersions({ { "QC-1", VersionNumber("10.0") },
                                            { "QC-1", VersionNumber("9.0") },
                                            { "QC-12", VersionNumber("11.0") } });
        f.server.route("/catalogue",
                       catalogue(firmware + application + "<package name='Other' release='9' url='o.deb'/>"));
        f.client.checkForUpdate(0);
        QTRY_VERIFY(f.availableDialog());
        QCOMPARE(f.rows(), QStringList({ "Camera Host 2.0", "fw 11.0" }));
        QVERIFY(f.log.take().contains("SoftwareUpdateClient::evaluateServerResponse() -> update available"));
        QVERIFY(f.availableDialog()->isVisible());
    }

    void dialogCountsBeforeStore()
    {
        Fixture f;
        f.server.route("/typed", catalogue("<package name='Camera Host' release='3' status='BETA' url='a.deb'/>"));
        f.set("doUpdateCheck", false);
        f.set("lastCheck", QDateTime(QDate(2020, 1, 1), QTime(12, 0)));
        f.client.queryForUpdate();
        f.settingsDialog()->findChild<QLineEdit *>("updateServerLineEdit")->setText(f.server.url("/typed").toString());
        f.settingsDialog()->findChild<QCheckBox *>("checkForBetaCheckBox")->setChecked(true);
        const auto *lastCheck = f.settingsDialog()->findChild<QLabel *>("lastCheckDateLabel");
        const QString before = lastCheck->text();
        QVERIFY(!before.isEmpty());
        f.checkNow()->click();
        QTRY_VERIFY(f.availableDialog());
        QCOMPARE(f.rows(), QStringList("Camera Host 3 BETA"));
        // The dialog shows the check before this one; the store has this one, though checking is off.
        QCOMPARE(lastCheck->text(), before);
        QVERIFY(f.stored("lastCheck").toDateTime() > QDateTime::currentDateTime().addSecs(-600));
        QCOMPARE(f.stored("checkForBeta").toBool(), false);
        QPointer<SoftwareUpdateAvailableDialog> table = f.availableDialog();
        QCOMPARE(table->parent(), f.settingsDialog());
        table->move(70, 80);
        const QRect place = table->geometry();
        f.settingsDialog()->accept();
        f.release();
        QVERIFY(!f.settingsDialog() && table && table->isVisible());
        QCOMPARE(table->parent(), &f.window);
        QCOMPARE(table->geometry(), place);
    }

    void neverCheckedHidesTheCaption()
    {
        Fixture f;
        f.client.queryForUpdate();
        QVERIFY(f.settingsDialog()->findChild<QLabel *>("lastCheckLabel")->isHidden());
        QCOMPARE(f.settingsDialog()->findChild<QLabel *>("currentVersionNumberLabel")->text(), QStringLiteral("1.0"));
    }

    void oneSettingsDialog()
    {
        Fixture f;
        f.client.queryForUpdate(Qt::WindowFlags(), false);
        QPointer<SoftwareUpdateDialog> dialog = f.settingsDialog();
        QVERIFY(!dialog->isModal());
        dialog->setNotificationText("old");
        f.set("updateInterval", 3);
        f.client.queryForUpdate(Qt::WindowFlags(), true);
        QCOMPARE(f.settingsDialog(), dialog.data());
        QVERIFY(!dialog->isModal());
        QCOMPARE(f.notification(), QString());
        QCOMPARE(dialog->getDialogSettings().updateInterval, 3);

        dialog->reject();
        QVERIFY(!dialog->isVisible());
        // Closed, but not yet gone: still no background check.
        f.client.checkForUpdate(0);
        f.release();
        QVERIFY(!dialog);
        QVERIFY(f.server.requests.isEmpty());
        f.client.checkForUpdate(0);
        QTRY_COMPARE(f.server.requests.size(), 1);
    }

    void whoChecksWhen_data()
    {
        columns<bool, int, QByteArray, int, bool>("enabled", "interval", "slot", "delay", "checks");
        row("at start", true, 0, QByteArray("doInitialCheck"), 0, true);
        row("at start, later", true, 0, QByteArray("doInitialCheck"), 1, true);
        row("daily, at start", true, 1, QByteArray("doInitialCheck"), 0, false);
        row("off, at start", false, 0, QByteArray("doInitialCheck"), 0, false);
        row("asked", true, 3, QByteArray("checkForUpdate"), -1, true);
        row("asked, off", false, 3, QByteArray("checkForUpdate"), 0, false);
        row("tick", true, 1, QByteArray("queryLastUpdate"), 0, true);
        row("tick, off", false, 1, QByteArray("queryLastUpdate"), 0, false);
    }
    void whoChecksWhen()
    {
        QFETCH(bool, enabled);
        QFETCH(int, interval);
        QFETCH(QByteArray, slot);
        QFETCH(int, delay);
        QFETCH(bool, checks);
        Fixture f;
        f.set("doUpdateCheck", enabled);
        f.set("updateInterval", interval);
        QVERIFY(QMetaObject::invokeMethod(&f.client, slot.constData(), Q_ARG(int, delay)));
        if (checks)
            QTRY_COMPARE(f.server.requests.size(), 1);
        QCOMPARE(f.stored("lastCheck").isValid(), checks);
        if (!checks)
            QCOMPARE(f.log.take().filter("performUpdateCheck"), QStringList());
        // The hourly timer, that of the request, and that of a delay, which lives on.
        QCOMPARE(f.client.findChildren<QTimer *>().size(), checks + 1 + (delay > 0));
    }

    void silentInTheBackground()
    {
        Fixture f;
        f.server.route("/catalogue", catalogue(""));
        f.client.checkForUpdate(0);
        QTRY_VERIFY(f.log.lines().contains("SoftwareUpdateClient::parseServerResponse() -> no update available"));
        QVERIFY(!f.settingsDialog() && !f.availableDialog() && QApplication::topLevelWidgets().size() <= 1);
    }

    void timeoutAndLateAnswer()
    {
        Fixture f;
        f.server.route("/catalogue", HttpAnswer(catalogue(application)).hold());
        f.openAndCheck();
        QSignalSpy held(&f.server, &HttpServer::held);
        QVERIFY(held.count() || held.wait());
        QVERIFY(QMetaObject::invokeMethod(&f.client, "requestTimeout"));
        QVERIFY(f.isIdle());
        QCOMPARE(f.notification(), QStringLiteral("Timeout error! Update server unreachable!"));
        f.server.release();
        f.release();
        // The answer that came too late changes nothing; the next check is a fresh one.
        f.checkNow()->click();
        QTRY_VERIFY(f.availableDialog());
        QCOMPARE(f.server.requests.size(), 2);
        QCOMPARE(f.log.take().filter("update available").size(), 1);
    }

    void timerOfTheRequest()
    {
        Fixture f;
        f.server.route("/catalogue", HttpAnswer("x").hold());
        f.openAndCheck();
        const QList<QTimer *> timers = f.client.findChildren<QTimer *>();
        QCOMPARE(timers.size(), 2);
        QVERIFY(timers.last()->isSingleShot() && timers.last()->isActive());
        QCOMPARE(timers.last()->interval(), 15000);
        QCOMPARE(timers.last()->timerType(), Qt::PreciseTimer);
    }

    void secondCheckWhileOneRuns()
    {
        Fixture f;
        f.server.route("/catalogue", HttpAnswer(catalogue(application)).hold());
        f.client.checkForUpdate();
        f.client.checkForUpdate();
        QTRY_COMPARE(f.server.requests.size(), 2);
        f.server.release();
        QTRY_VERIFY(f.availableDialog());
        f.release();
        QCOMPARE(f.log.take().filter("-> update available").size(), 1);
    }

    void goneInTheMiddle_data()
    {
        columns<int>("what");
        row("dialog closed", 0);
        row("dialog destroyed", 1);
        row("client destroyed", 2);
    }
    void goneInTheMiddle()
    {
        QFETCH(int, what);
        LogCapture log;
        TestHost host;
        HttpServer server;
        server.route("/catalogue", HttpAnswer(catalogue(application)).hold());
        auto client = std::make_unique<SoftwareUpdateClient>("P", VersionNumber("1"),
                                                             server.url("/catalogue").toString(), &host.window);
        client->queryForUpdate();
        client->checkForUpdate();
        QSignalSpy held(&server, &HttpServer::held);
        QVERIFY(held.count() || held.wait());
        if (what == 0)
            host.settingsDialog()->reject();
        else if (what == 1)
            delete host.settingsDialog();
        else
            client.reset();
        server.release();
        if (client)
            QTRY_VERIFY(host.availableDialog());
        host.release();
        QCOMPARE(host.settingsDialog() != nullptr, what == 2);
    }

    void staleRowsAreHarmless()
    {
        Fixture f;
        f.server.route("/catalogue", catalogue(application));
        f.client.checkForUpdate(0);
        QTRY_VERIFY(f.availableDialog());
        auto *table = f.availableDialog()->findChild<QTableWidget *>("tableWidget");
        table->selectRow(0);
        QVERIFY(f.availableDialog()->findChild<QPushButton *>("downloadPushButton")->isEnabled());
        // The list under the open table goes.
        f.server.route("/catalogue", catalogue(""));
        f.client.checkForUpdate(0);
        QTRY_VERIFY(f.log.lines().contains("SoftwareUpdateClient::parseServerResponse() -> no update available"));
        for (const bool again : { false, true }) {
            if (again) {
                table->clearSelection();
                table->selectRow(0);
            }
            for (const char *name : { "installPushButton", "downloadPushButton", "releaseNotesPushButton" })
                QVERIFY(!f.availableDialog()->findChild<QPushButton *>(name)->isEnabled());
            QVERIFY(f.availableDialog()->findChild<QWidget *>("commentText")->isHidden());
        }
    }

    // What no catalogue needs stands still and ends in the timeout; a download beside it shows that time enough went
    // by.
    void longAnswerIsNotKept()
    {
        qputenv("QT_NETWORK_H2C_ALLOWED", "1");
        Fixture f;
        f.server.route("/catalogue", HttpAnswer().generate(32 << 20).unannounced());
        f.server.route("/beside", HttpAnswer().generate(128 << 20).unannounced());
        f.client.checkForUpdate(0);
        QTRY_COMPARE(f.server.requests.size(), 1);
        QVERIFY(!f.server.requests.first().headers.contains("http2-settings")); // whose buffer has no limit
        QNetworkAccessManager network;
        const QNetworkReply *beside = network.get(QNetworkRequest(f.server.url("/beside")));
        QVERIFY(QTest::qWaitFor([beside] { return beside->isFinished(); }, 60'000));
        QCOMPARE(f.log.lines().filter("no update available"), QStringList());
    }

    void throughTheProxyOfTheHost()
    {
        Fixture f;
        HttpServer proxy;
        proxy.route("http://updates.example/c.xml", catalogue(application));
        NodeDB::getDB().setGlobalProxy(NetworkProxy("127.0.0.1", proxy.serverPort()));
        f.set("serverURL", "http://updates.example/c.xml");
        f.client.checkForUpdate(0);
        QTRY_VERIFY(f.availableDialog());
        NodeDB::getDB().setGlobalProxy(NetworkProxy());
        QCOMPARE(proxy.targets(), QList<QByteArray> { "http://updates.example/c.xml" });
    }
};

QTEST_MAIN(CheckTest)
#include "tst_check.moc"
