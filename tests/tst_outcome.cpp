// Who tells what a check has found, and how each check ended: the host by its policy, or the user.
#include "BoxClicker.h"
#include "CheckOutcome.h"
#include "HttpServer.h"
#include "LogCapture.h"
#include "Row.h"
#include "Signer.h"
#include "TestHost.h"

#include <QtNetwork>
#include <QtWidgets>

using namespace qv;

Q_DECLARE_METATYPE(HttpAnswer)

namespace {

const QByteArray updates = "<s status='STABLE' name='Camera Host'><package release='2.0' url='http://h/a.deb'/>"
                           "<package release='1.9' url='http://h/b.deb'/><package name='fw' release='3' platform='QC'"
                           " url='http://h/c.zip'/></s>";
const QByteArray nothingNew = "<s><package name='Camera Host' release='1.0' status='STABLE' url='http://h/a.deb'/></s>";

/// A client and its host, whose policy writes down how it was called: "offer fw 3", "announce 2", "UpToDate user".
struct Fixture : TestHost
{
    explicit Fixture(const HttpAnswer &answer)
        : client(new SoftwareUpdateClient("P", VersionNumber("1.0"), server.url("/c").toString(), &window))
    {
        HttpAnswer first = answer;
        for (auto &header : first.headers)
            header.second.replace("/typed", server.url("/typed").toEncoded());
        server.route("/c", first);
        server.route("/typed", HttpAnswer(updates));
        server.route("/held", HttpAnswer(updates).hold());
        client->setCurrentCameraVersions({ { "QC", VersionNumber("1.0") } });
        policy.checked = [this](const CheckOutcome &outcome) {
            static const QStringList kinds { "UpdatesFound", "UpToDate", "NoCatalogue", "NotTrusted",
                                             "Unreachable",  "TimedOut", "Cancelled" };
            calls << kinds.at(outcome.kind) + (outcome.isByUser ? " user" : " timer");
            last = outcome;
            wasTableOpen = isTableOpen();
        };
    }
    ~Fixture() { delete client; }

    bool isTableOpen() const { return availableDialog() && availableDialog()->isVisible(); }
    int rows() const { return availableDialog()->findChild<QTableWidget *>("tableWidget")->rowCount(); }
    void invoke(const char *slot) { QVERIFY(QMetaObject::invokeMethod(client, slot)); }

    void checkInDialog(const QString &path)
    {
        client->queryForUpdate();
        settingsDialog()->findChild<QLineEdit *>("updateServerLineEdit")->setText(server.url(path).toString());
        settingsDialog()->findChild<QPushButton *>("updatePushButton")->click();
    }

    HttpServer server;
    QPointer<SoftwareUpdateClient> client;
    UpdatePolicy policy;
    QStringList calls;
    CheckOutcome last;
    bool wasTableOpen = false;
};

} // namespace

class OutcomeTest : public QObject
{
    Q_OBJECT

    const Signer publisher;

private slots:
    void outcomes_data()
    {
        columns<HttpAnswer, bool, QString, QString>("answer", "sealed", "kind", "text");
        const QString none = "No update available!";
        row("found", HttpAnswer(updates), false, QString("UpdatesFound"), QString());
        row("found elsewhere", HttpAnswer::redirect("/typed"), false, QString("UpdatesFound"), QString());
        row("up to date", HttpAnswer(nothingNew), false, QString("UpToDate"), QString("Congratulations! Your"));
        row("empty", HttpAnswer(), false, QString("NoCatalogue"), none);
        row("no XML", HttpAnswer("<html>"), false, QString("NoCatalogue"), none);
        row("signature missing", HttpAnswer(updates), true, QString("NotTrusted"), QString("The list of updates is"));
        row("empty, signature missing", HttpAnswer(), true, QString("NotTrusted"), QString("The list of updates is"));
        row("not found", HttpAnswer("x", 404), false, QString("Unreachable"), QString("Error transferring"));
        row("dropped", HttpAnswer("12345").dropAfter(2), false, QString("Unreachable"), QString("Connection closed"));
        row("login", HttpAnswer("x", 401), false, QString("Unreachable"), QString("Host requires authentication"));
        row("redirect to a device", HttpAnswer::redirect("file:///dev/ptmx"), true, QString("Unreachable"),
            QString("Protocol \"file\" is unknown"));
        row("silence", HttpAnswer(updates).hold(), false, QString("TimedOut"), QString("Timeout error! Update server"));
    }
    void outcomes()
    {
        QFETCH(HttpAnswer, answer);
        QFETCH(bool, sealed);
        QFETCH(QString, kind);
        QFETCH(QString, text);
        enum { ByTimer, InDialog, ByOneClick, askers };
        enum { Nobody, Host, HostInVain, announcers };
        for (int i = 0; i < askers * announcers; ++i) {
            const int asker = i % askers, announcer = i / askers;
            Fixture f(answer);
            f.policy.isOffered = [&f](const PackageInfo &package) { return f.calls << "offer " + package.name, true; };
            if (announcer != Nobody)
                f.policy.announce = [&](const PackageInfoList &found) {
                    f.calls << QString("announce %1").arg(found.size());
                    return announcer == Host;
                };
            if (sealed)
                f.policy.trustedKeys << publisher.key();
            f.client->setPolicy(f.policy);
            f.set("doUpdateCheck", asker == ByTimer);
            f.set("updateInterval", 2);
            QSignalSpy held(&f.server, &HttpServer::held);
            asker == ByTimer        ? f.client->checkForUpdate(0)
                : asker == InDialog ? f.checkInDialog("/c")
                                    : f.client->checkNow();
            if (kind == "TimedOut") {
                QVERIFY(held.wait());
                f.invoke("requestTimeout");
                f.server.release();
            }
            const bool isFound = kind == "UpdatesFound";
            QStringList expected;
            if (isFound)
                expected << "offer Camera Host"
                         << "offer fw";
            if (isFound && announcer != Nobody && asker != InDialog)
                expected << "announce 2";
            expected << kind + (asker == ByTimer ? " timer" : " user");
            QTRY_COMPARE(f.calls.size(), expected.size());
            QCOMPARE(f.calls, expected);
            QVERIFY2(f.last.text.startsWith(text) && f.last.text.isEmpty() == isFound, qPrintable(f.last.text));
            QCOMPARE(f.last.packages.size(), isFound ? 2 : 0);
            QCOMPARE(f.last.started, f.stored("lastCheck").toDateTime());
            QVERIFY(asker != InDialog || f.notification() == f.last.text);
            QCOMPARE(f.wasTableOpen, isFound && (announcer != Host || asker == InDialog));
            QCOMPARE(f.isTableOpen(), f.wasTableOpen);
            QCOMPARE(f.client->showAvailable(), isFound);
        }
    }

    // Steps: a check by [t]imer, in the [d]ialog, there of a server that answers at once [D], or by one [c]lick, each
    // until its request has come; one by timer that is none [n]; until the [s]ignature is asked for; the time is [u]p;
    // a slot is called [b]y name; no more [k]eys; the answers [r]eleased.
    void severalChecks_data()
    {
        columns<bool, QString, QString>("sealed", "steps", "calls");
        row("first answer first", false, QString("tdr"), QString("Cancelled user, UpdatesFound timer"));
        row("second answer first", false, QString("tD"), QString("Cancelled timer, UpdatesFound user"));
        row("both too late", false, QString("tdur"), QString("TimedOut timer, TimedOut user"));
        row("one click takes its place", false, QString("tcr"), QString("Cancelled timer, UpdatesFound user"));
        row("one click goes on", false, QString("cnr"), QString("UpdatesFound user"));
        row("two clicks", false, QString("ccr"), QString("Cancelled user, UpdatesFound user"));
        row("no answer", false, QString("tb"), QString("Cancelled timer"));
        row("none under way", false, QString("ub"), QString());
        row("a signature is awaited", true, QString("tstsr"), QString("Cancelled timer, NotTrusted timer"));
        row("keys that go", true, QString("tskr"), QString("NotTrusted timer"));
    }
    void severalChecks()
    {
        QFETCH(bool, sealed);
        QFETCH(QString, steps);
        QFETCH(QString, calls);
        Fixture f(sealed ? HttpAnswer(updates) : HttpAnswer(updates).hold());
        f.server.route("/c.minisig", HttpAnswer("gone", 404).hold());
        if (sealed)
            f.policy.trustedKeys << publisher.key();
        f.client->setPolicy(f.policy);
        int requests = 0;
        for (const QChar step : steps) {
            if (step == 't' || step == 'n')
                f.client->checkForUpdate();
            else if (step == 'd' || step == 'D')
                f.checkInDialog(step == 'd' ? "/held" : "/typed");
            else if (step == 'c')
                f.client->checkNow();
            else if (step == 'u')
                f.invoke("requestTimeout");
            else if (step == 'b')
                QMetaObject::invokeMethod(f.client, "evaluateServerResponse", Q_ARG(QNetworkReply *, nullptr));
            else if (step == 'k')
                f.policy.trustedKeys.clear(), f.client->setPolicy(f.policy);
            else if (step == 'r')
                f.server.release();
            requests += QString("tdDcs").contains(step);
            QTRY_COMPARE(f.server.requests.size(), requests);
        }
        QTRY_COMPARE(f.calls.join(", "), calls);
    }

    // A host may do anything in what it is called by, once here.
    void withinCalls_data()
    {
        columns<QString, QString, QString>("within", "deed", "calls");
        row("the first package, delete", QString("o"), QString("delete"), QString("o"));
        row("the first package, forget", QString("o"), QString("forget"), QString("oo"));
        row("the first package, check", QString("o"), QString("check"), QString("oooac"));
        row("announced, delete", QString("a"), QString("delete"), QString("ooa"));
        row("announced, forget", QString("a"), QString("forget"), QString("ooa"));
        row("announced, check", QString("a"), QString("check"), QString("ooacooac"));
        row("at the end, delete", QString("c"), QString("delete"), QString("ooac"));
        row("at the end, forget", QString("c"), QString("forget"), QString("ooac"));
        row("at the end, check", QString("c"), QString("check"), QString("ooacooac"));
    }
    void withinCalls()
    {
        QFETCH(QString, within);
        QFETCH(QString, deed);
        QFETCH(QString, calls);
        Fixture f { HttpAnswer(updates) };
        QString seen;
        const auto call = [&](const QString &what) {
            seen += what;
            if (what != within || seen.count(what) > 1)
                return true;
            if (deed == "delete")
                delete f.client;
            else if (deed == "forget")
                f.client->setPolicy(UpdatePolicy());
            else
                f.client->checkNow();
            return true;
        };
        f.policy.isOffered = [call](const PackageInfo &) { return call("o"); };
        f.policy.announce = [call](const PackageInfoList &) { return call("a"); };
        f.policy.checked = [call](const CheckOutcome &) { call("c"); };
        f.client->setPolicy(f.policy);
        f.client->checkForUpdate();
        QTRY_COMPARE(seen, calls);
        f.release();
        QCOMPARE(seen, calls);
        QCOMPARE(f.client.isNull(), deed == "delete");
        QCOMPARE(f.isTableOpen(), deed == "forget" && within == "o");
    }

    void goneAtTheEnd()
    {
        for (const char *end : { "replaced", "too late", "deleted" }) {
            Fixture f(HttpAnswer(updates).hold());
            int calls = 0;
            f.policy.checked = [&](const CheckOutcome &) { ++calls, delete f.client; };
            f.client->setPolicy(f.policy);
            f.client->checkForUpdate();
            QTRY_COMPARE(f.server.requests.size(), 1);
            if (end == QByteArray("replaced"))
                f.client->checkNow();
            else if (end == QByteArray("too late"))
                f.client->findChildren<QTimer *>().last()->start(0);
            else
                delete f.client;
            QTRY_VERIFY2(!f.client, end);
            QCOMPARE(calls, end == QByteArray("deleted") ? 0 : 1);
        }
    }

    void tableForTheHost()
    {
        Fixture f { HttpAnswer(updates) };
        QString skipped;
        f.policy.isOffered = [&](const PackageInfo &package) { return package.name != skipped; };
        f.policy.announce = [](const PackageInfoList &) { return true; };
        f.client->setPolicy(f.policy);
        const auto check = [&f] {
            f.client->checkNow();
            return QTest::qWaitFor([&f] { return !f.calls.isEmpty(); }) ? f.calls.takeFirst() : QString();
        };
        QVERIFY(!f.client->showAvailable());
        QCOMPARE(check(), QString("UpdatesFound user"));
        QVERIFY(!f.isTableOpen() && f.client->showAvailable() && f.isTableOpen());
        QCOMPARE(f.rows(), 2);
        f.availableDialog()->reject();
        QVERIFY(f.client->showAvailable());
        f.release(); // what was closed
        QVERIFY(f.isTableOpen());
        // Rows are those of the packages, whoever tells.
        skipped = "fw";
        QCOMPARE(check(), QString("UpdatesFound user"));
        QCOMPARE(f.rows(), 1);
        f.availableDialog()->reject();
        f.release();
        f.policy.isOffered = [](const PackageInfo &) { return false; };
        f.client->setPolicy(f.policy);
        QCOMPARE(check(), QString("UpToDate user"));
        QVERIFY(!f.client->showAvailable() && !f.availableDialog());
    }

    // The user who clicks sees something, where no host tells.
    void boxes_data()
    {
        columns<HttpAnswer, QString>("answer", "box");
        const QString box = "|Check for Updates|%1|OK:Accept", silent;
        row("up to date", HttpAnswer(nothingNew),
            "Information" + box.arg("Congratulations! Your product is up-to-date!"));
        row("no catalogue", HttpAnswer(), "Warning" + box.arg("No update available!"));
        row("found", HttpAnswer(updates), silent);
    }
    void boxes()
    {
        QFETCH(HttpAnswer, answer);
        QFETCH(QString, box);
        enum { Nobody, HostAnnounces, HostIsTold, InSettingsDialog, ByTimer, viewers };
        for (int viewer = 0; viewer < viewers; ++viewer) {
            Fixture f(answer);
            BoxClicker clicker;
            LogCapture log;
            UpdatePolicy policy;
            if (viewer == HostAnnounces)
                policy.announce = [](const PackageInfoList &) { return true; };
            if (viewer == HostIsTold)
                policy.checked = [](const CheckOutcome &) {};
            f.client->setPolicy(policy);
            if (viewer == InSettingsDialog)
                f.client->queryForUpdate();
            viewer == ByTimer ? f.client->checkForUpdate() : f.client->checkNow();
            const bool isBoxed = !box.isEmpty() && (viewer == Nobody || viewer == HostAnnounces);
            QTRY_COMPARE(log.lines().size(), box.isEmpty() ? 2 : 3);
            QTRY_COMPARE(clicker.boxes, isBoxed ? QStringList(box) : QStringList());
            QCOMPARE(f.isTableOpen(), box.isEmpty() && viewer != HostAnnounces);
            f.release();
            QVERIFY(!f.window.findChild<QMessageBox *>());
        }
    }
};

QTEST_MAIN(OutcomeTest)
#include "tst_outcome.moc"
