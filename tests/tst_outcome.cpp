// Who tells what a check has found, and how each check ended: the host by its policy, or the user.
#include "BoxClicker.h"
#include "CheckOutcome.h"
#include "HttpServer.h"
#include "Row.h"
#include "Signer.h"
#include "TestHost.h"

#include <QtNetwork>
#include <QtWidgets>

using namespace qv;

Q_DECLARE_METATYPE(HttpAnswer)

/// A host that writes down what is seen of its checks: "offer", "announce 2", "UpToDate user: Congratulations! ...".
struct Story : TestHost
{
    Story(const HttpAnswer &answer, const QString &key)
        : client(new SoftwareUpdateClient("P", VersionNumber("1.0"), server.url("/c").toString(), &window))
    {
        server.route("/c", answer);
        server.route("/late", HttpAnswer(answer).hold());
        server.route("/moved", HttpAnswer::redirect(server.url("/c").toEncoded()));
        server.route("/c.minisig", HttpAnswer("gone", 404).hold());
        client->setCurrentCameraVersions({ { "QC", VersionNumber("1.0") } });
        policy.isOffered = [this](const PackageInfo &package) { return see("offer"), package.name != unwanted; };
        policy.checked = [this](const CheckOutcome &outcome) { end(outcome); };
        const auto announce = [this](bool isTold) {
            policy.announce = [=](const PackageInfoList &l) {
                return see(QString("announce %1").arg(l.size())), isTold;
            };
        };
        const auto inDialog = [this](const QString &path) {
            client->queryForUpdate();
            settingsDialog()->findChild<QLineEdit *>("updateServerLineEdit")->setText(server.url(path).toString());
            settingsDialog()->findChild<QPushButton *>("updatePushButton")->click();
        };
        words = {
            { "tells", [=] { announce(true); } },
            { "asks", [=] { announce(false); } },
            { "silent", [=] { policy.checked = nullptr; } },
            { "skips", [=] { unwanted = "fw"; } },
            { "sealed", [=] { policy.trustedKeys << key; } },
            { "unsealed", [=] { policy.trustedKeys.clear(); } },
            { "forget", [=] { policy = UpdatePolicy(); } },
            { "manual", [=] { set("doUpdateCheck", false); } },
            { "slow", [=] { set("serverURL", server.url("/late")); } },
            { "timer", [=] { client->checkForUpdate(); } },
            { "click", [=] { client->checkNow(); } },
            { "dialog", [=] { inDialog("/c"); } },
            { "moved", [=] { inDialog("/moved"); } },
            { "late", [=] { inDialog("/late"); } },
            { "settings", [=] { client->queryForUpdate(); } },
            { "release", [=] { server.release(); } },
            { "timeout", [=] { QMetaObject::invokeMethod(client, "requestTimeout"); } },
            { "fires", [=] { client->findChildren<QTimer *>().last()->start(0); } },
            { "null",
              [=] { QMetaObject::invokeMethod(client, "evaluateServerResponse", Q_ARG(QNetworkReply *, nullptr)); } },
            { "delete", [=] { delete client; } },
            { "told", [=] { QTRY_VERIFY(!notification().isEmpty()); } },
            { "drop", [=] { release(); } },
            { "close", [=] { availableDialog()->reject(); } },
            { "show", [=] { seen << (client->showAvailable() ? "shown" : "none to show"); } },
            { "rows", [=] { seen << QString::number(availableDialog()->findChild<QTableWidget *>()->rowCount()); } },
        };
    }
    ~Story() { delete client; }

    /// Words; behind "asked:1" the story goes on when the server was asked so often, behind "seen:1" when so much was
    /// seen. "offer>delete": what is done where that is seen first.
    void tell(const QString &story)
    {
        for (const QString &word : story.split(' ')) {
            const int count = word.section(':', 1).toInt();
            if (word.startsWith("asked:"))
                QTRY_VERIFY(server.requests.size() >= count);
            else if (word.startsWith("seen:"))
                QTRY_VERIFY(seen.size() >= count);
            else if (word.contains('>'))
                deed = word.split('>');
            else
                words.value(word)();
            if (client)
                client->setPolicy(policy);
            starts << stored("lastCheck").toDateTime();
        }
    }

    void see(const QString &what)
    {
        seen << what;
        if (deed.isEmpty() || !what.startsWith(deed.first()))
            return;
        words.value(std::exchange(deed, {}).last())();
        if (client)
            client->setPolicy(policy);
    }

    void end(const CheckOutcome &outcome)
    {
        static const QStringList kinds { "UpdatesFound", "UpToDate", "NoCatalogue", "NotTrusted",
                                         "Unreachable",  "TimedOut", "Cancelled" };
        starts << stored("lastCheck").toDateTime();
        QVERIFY(starts.contains(outcome.started));
        QString what = kinds.at(outcome.kind) + (outcome.isByUser ? " user" : " timer");
        if (!outcome.packages.isEmpty())
            what += QString(" %1").arg(outcome.packages.size());
        if (isTableOpen())
            what += " shown";
        if (!outcome.text.isEmpty())
            what += ": " + outcome.text.section(' ', 0, 1);
        if (settingsDialog() && outcome.kind != CheckOutcome::Cancelled)
            QCOMPARE(notification(), outcome.text);
        see(what);
    }

    HttpServer server;
    QPointer<SoftwareUpdateClient> client;
    UpdatePolicy policy;
    QString unwanted;
    QStringList seen, deed;
    QList<QDateTime> starts;
    QHash<QString, std::function<void()>> words;
    BoxClicker clicker;

private:
    bool isTableOpen() const { return availableDialog() && availableDialog()->isVisible(); }
};

class OutcomeTest : public QObject
{
    Q_OBJECT

    const Signer publisher;

private slots:
    void stories_data()
    {
        columns<HttpAnswer, QString, QString>("answer", "story", "seen");
        const auto add = [](const HttpAnswer &answer, const QString &story, const QString &seen) {
            row(qPrintable(story + (answer.body.size() < 1'000'000 ? "" : ", long")), answer, story, seen);
        };
        const QByteArray firmware =
            "<package name='fw' release='3' status='STABLE' platform='QC' url='http://h/c.zip'/>";
        const auto application = [](const QByteArray &release) {
            return "<package name='Camera Host' release='" + release + "' status='STABLE' url='http://h/a.deb'/>";
        };
        const HttpAnswer found("<s>" + application("2.0") + application("1.9") + firmware + "</s>"),
            upToDate("<s>" + application("1.0") + "</s>"), onlyFirmware("<s>" + firmware + "</s>"),
            longOne(QByteArray(found.body).replace("</s>", QByteArray(1'000'000, ' ') + "</s>")); // read in a thread
        const QString offers = "offer, offer, ", announced = offers + "announce 2, ", late = ": Timeout error!";

        // However it ends, whoever asked for it.
        for (const auto &[answer, before, after, seen] :
             { std::tuple(found, "", "", "offer, offer, UpdatesFound % 2 shown"),
               { longOne, "", "", "offer, offer, UpdatesFound % 2 shown" },
               { upToDate, "", "", "UpToDate %: Congratulations! Your" },
               { HttpAnswer(), "", "", "NoCatalogue %: No update" },
               { HttpAnswer("<html>"), "", "", "NoCatalogue %: No update" },
               { found, "sealed ", " release", "NotTrusted %: The list" },
               { HttpAnswer("x", 404), "", "", "Unreachable %: Error transferring" },
               { HttpAnswer("12345").dropAfter(2), "", "", "Unreachable %: Connection closed" },
               { HttpAnswer("x", 401), "", "", "Unreachable %: Host requires" },
               { HttpAnswer::redirect("file:///dev/ptmx"), "", "", "Unreachable %: Protocol \"file\"" },
               { HttpAnswer(found).hold(), "", " asked:1 timeout", "TimedOut %: Timeout error!" } }) {
            for (const QString asker : { "timer", "dialog", "click" })
                add(answer, before + asker + after, QString(seen).replace("%", asker == "timer" ? asker : "user"));
        }
        add(found, "moved", offers + "UpdatesFound user 2 shown");

        // The host tells, and decides what of.
        add(found, "tells timer", announced + "UpdatesFound timer 2");
        add(found, "tells click", announced + "UpdatesFound user 2");
        add(found, "asks timer", announced + "UpdatesFound timer 2 shown");
        for (const char *looking : { "tells dialog", "tells settings click" })
            add(found, looking, offers + "UpdatesFound user 2 shown");
        add(found, "skips timer", offers + "UpdatesFound timer 1 shown");
        add(onlyFirmware, "skips timer seen:2 show", "offer, UpToDate timer: Congratulations! Your, none to show");
        add(found, "show", "none to show");
        add(found, "tells timer seen:4 show close show drop rows", announced + "UpdatesFound timer 2, shown, shown, 2");
        add(found, "timer seen:3 tells skips timer seen:7 rows", // those of the packages, whoever tells
            offers + "UpdatesFound timer 2 shown, " + offers + "announce 1, UpdatesFound timer 1 shown, 1");

        // One click is answered in any case: by the table, a box, or the open dialog.
        add(found, "manual timer", "");
        add(found, "manual silent click seen:2 rows", offers + "2");
        const QString box = "|Check for Updates|%1|OK:Accept";
        for (const char *who : { "silent click", "silent tells click" })
            add(upToDate, who, "Information" + box.arg("Congratulations! Your product is up-to-date!"));
        add(HttpAnswer(), "silent click", "Warning" + box.arg("No update available!"));
        add(upToDate, "silent settings click told", "");

        // Several at once.
        add(found, "slow timer asked:1 late asked:2 release",
            offers + "Cancelled user shown, UpdatesFound user 2 shown");
        add(found, "tells slow timer asked:1 late asked:2 release", // what the user waits for is no news for the host
            offers + "Cancelled user shown, UpdatesFound user 2 shown");
        add(found, "slow timer asked:1 dialog", offers + "Cancelled timer shown, UpdatesFound user 2 shown");
        add(found, "slow timer asked:1 late asked:2 timeout", "TimedOut timer" + late + ", TimedOut user" + late);
        add(found, "slow timer asked:1 click asked:2 release",
            "Cancelled timer, " + offers + "UpdatesFound user 2 shown");
        add(found, "slow click asked:1 timer release", offers + "UpdatesFound user 2 shown");
        add(found, "slow timer asked:1 null", "Cancelled timer");
        add(found, "timeout null", "");
        add(found, "sealed timer asked:2 timer asked:4 release", "Cancelled timer, NotTrusted timer: The list");
        add(found, "sealed timer asked:2 unsealed release", "NotTrusted timer: The list");

        // Hosts that do anything in what they are called by.
        const QString once = announced + "UpdatesFound timer 2",
                      twice = once + ", " + announced + "UpdatesFound user 2";
        add(found, "tells offer>delete timer", "offer");
        add(found, "tells offer>forget timer seen:2 rows", offers + "2");
        add(found, "tells announce>delete timer", offers + "announce 2");
        add(found, "tells announce>forget timer", offers + "announce 2");
        for (const char *deed : { "tells Updates>delete timer", "tells Updates>forget timer" })
            add(found, deed, once);
        for (const char *deed :
             { "tells offer>click timer", "tells announce>click timer", "tells Updates>click timer" })
            add(found, deed, twice);
        add(onlyFirmware, "skips offer>click timer",
            "offer, UpToDate timer: Congratulations! Your, offer, UpToDate user: Congratulations! Your");
        add(found, "Cancelled>delete slow timer asked:1 click", "Cancelled timer");
        add(found, "TimedOut>delete slow timer asked:1 fires", "TimedOut timer" + late);
        add(found, "slow timer asked:1 delete", "");
        add(longOne, "tells offer>delete timer", "offer");
        add(longOne, "tells Updates>click timer", twice);
    }
    void stories()
    {
        QFETCH(HttpAnswer, answer);
        QFETCH(QString, story);
        QFETCH(QString, seen);
        Story told(answer, publisher.key());
        told.tell(story);
        QTRY_COMPARE((told.seen + told.clicker.boxes).join(", "), seen);
        told.release();
        QCOMPARE((told.seen + told.clicker.boxes).join(", "), seen);
        QCOMPARE(!told.client, story.contains("delete"));
    }
};

QTEST_MAIN(OutcomeTest)
#include "tst_outcome.moc"
