// Where catalogues come from by a host's policy, and when they are asked for: what is kept, mirrors, the spread.
#include "CheckOutcome.h"
#include "DownloadManager.h"
#include "HttpServer.h"
#include "Row.h"
#include "Signer.h"
#include "TestHost.h"

#include <QtNetwork>
#include <QtWidgets>

using namespace qv;

namespace {

constexpr int msPerHour = 60 * 60 * 1000;

/// A server of catalogues, and a client or a manager, who asks it. What is asked and answered is written down: "c s =
/// 1" for catalogue and signature of one package, "?" where a request has a condition, the status if not 200.
struct Site : TestHost
{
    Site(const Signer &signer, bool isManager)
        : publisher(signer), client("P", VersionNumber("1.0"), server.url("/c").toString(), &window),
          manager(server.url("/c"))
    {
        policy.trustedKeys << signer.key();
        policy.catalogueCache = folder.filePath("new/cache");
        policy.announce = [](const PackageInfoList &) { return true; };
        policy.checked = [this](const CheckOutcome &outcome) { result = QString::number(outcome.packages.size()); };
        QObject::connect(&manager, &DownloadManager::packageFound, &manager,
                         [this](const PackageInfoList &found) { result = QString::number(found.size()); });
        QObject::connect(&manager, &DownloadManager::noPackageFound, &manager, [this] { result = "0"; });
        publish();
        words = {
            { "check", [=] { check(isManager); } },
            { "open", [=] { policy.trustedKeys.clear(); } },
            { "dated", [=] { tagName = "Last-Modified", publish(); } },
            { "future", [=] { time.replace("Sun, 06 Nov 19", "Thu, 06 Nov 29"), publish(); } },
            { "endless", [=] { server.route("/c", HttpAnswer(catalogue()).header("ETag", "\"1\"").unannounced()); } },
            { "unkept", [=] { route("/c", catalogue(), "\"1\"\r\nCache-Control: private, No-Store"); } },
            { "longtag", [=] { route("/c", catalogue(), QByteArray(2000, 'x')); } },
            { "page", [=] { route("/c", "<html>", "\"1\""); } },
            { "newer", [=] { ++serial, publish(); } },
            { "older", [=] { --serial, publish(); } },
            { "resigned", [=] { route("/c.minisig", publisher.sign(catalogue(), QStringList("-cx")), "\"new\""); } },
            { "torn", [=] { ++serial, route("/c.minisig", publisher.sign(catalogue()), "\"new\""); } },
            { "unsigned", [=] { route("/c.minisig", "x", "\"none\""); } },
            { "fussy", [=] { once(HttpAnswer("x", 400)); } },
            { "lying", [=] { once(HttpAnswer("", 304)); } },
            { "up", [=] { publish(); } },
            { "down", [=] { server.route("/c", HttpAnswer("x", 503)); } },
            { "forged", [=] { route("/c", catalogue() + ' ', "\"forged\""); } },
            { "silent", [=] { server.route("/c", HttpAnswer().hold()), isSilent = true; } },
            { "elsewhere", [=] { address = "/d"; } },
            { "moved",
              [=] { server.route("/r", HttpAnswer::redirect(server.url("/c").toEncoded())), address = "/r"; } },
            { "mirror", [=] { policy.mirrors << server.url("/m"); } },
            { "otherfile", [=] { policy.catalogueCache += "2"; } },
            { "firstfile", [=] { policy.catalogueCache.chop(1); } },
            { "cut", [=] { change([](QByteArray &bytes) { bytes.chop(1); }); } },
            { "flip",
              [=] { change([](QByteArray &bytes) { bytes[bytes.size() / 2] = bytes[bytes.size() / 2] ^ 1; }); } },
            { "folder", [=] { QFile::remove(policy.catalogueCache), QDir().mkpath(policy.catalogueCache + "/x"); } },
        };
    }

    QByteArray catalogue() const
    {
        return "<s serial='" + QByteArray::number(serial)
            + "' expires='2999-01-01T00:00:00Z'><package name='Camera Host' release='2.0' status='STABLE' "
              "url='http://h/a.deb' file-size='7' sha256='"
            + QByteArray(64, 'a') + "'/></s>";
    }

    void route(const QByteArray &path, const QByteArray &body, const QByteArray &tag)
    {
        server.route(path, HttpAnswer(body).header(tagName, tag));
    }

    void publish()
    {
        const QByteArray signature = publisher.sign(catalogue()),
                         tag = tagName == "ETag" ? '"' + QByteArray::number(serial) + '"' : time;
        for (const char *path : { "/c", "/d", "/m" }) {
            route(path, catalogue(), tag);
            route(path + QByteArray(".minisig"), signature, tag);
        }
    }

    /// Answers so one time.
    void once(const HttpAnswer &answer)
    {
        server.route("/c", answer);
        auto *first = new QObject(&server);
        QObject::connect(&server, &HttpServer::answered, first, [=] { publish(), delete first; });
    }

    void change(const std::function<void(QByteArray &)> &how) const
    {
        QFile file(policy.catalogueCache);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QByteArray bytes = file.readAll();
        how(bytes);
        QVERIFY(file.resize(0) && file.seek(0) && file.write(bytes) == bytes.size());
    }

    void check(bool isManager)
    {
        server.requests.clear();
        result.clear();
        if (isManager) {
            manager.setServer(server.url(address));
            manager.setPolicy(policy);
            manager.queryUpdate();
        } else {
            set("serverURL", server.url(address));
            client.setPolicy(policy);
            client.checkForUpdate();
        }
        if (isSilent) {
            QTRY_VERIFY(!server.requests.isEmpty());
            QVERIFY(QMetaObject::invokeMethod(&client, "requestTimeout"));
        }
        QTRY_VERIFY2(!result.isEmpty(), qPrintable(seen.join(", ")));
        QThreadPool::globalInstance()->waitForDone();
        QString line;
        for (const HttpTestRequest &request : std::as_const(server.requests)) {
            line += request.target.mid(1).replace("c.minisig", "s").replace(".minisig", "s");
            line +=
                request.headers.contains("if-none-match") || request.headers.contains("if-modified-since") ? "?" : "";
            line += request.status == 200 ? " " : QString("%1 ").arg(request.status);
        }
        seen << line + "= " + result;
    }

    const Signer &publisher;
    HttpServer server;
    QTemporaryDir folder;
    QByteArray tagName = "ETag", time = "Sun, 06 Nov 1994 08:49:37 GMT";
    int serial = 7;
    QString address = "/c", result;
    bool isSilent = false;
    UpdatePolicy policy;
    SoftwareUpdateClient client;
    DownloadManager manager;
    QHash<QString, std::function<void()>> words;
    QStringList seen;
};

class SourceTest : public QObject
{
    Q_OBJECT

    const Signer publisher;

private slots:
    void stories_data()
    {
        columns<QString, QString, bool>("story", "seen", "isManager");
        const QString all = "c s = 1", unchanged = "c?304 s?304 = 1";
        const auto add = [](const QString &story, const QStringList &seen, const QString &askers = "client manager") {
            for (const QString &asker : askers.split(' '))
                row(qPrintable(asker + ' ' + story), story, seen.join(", "), asker == "manager");
        };
        add("check check newer check check", { all, unchanged, "c? s? = 1", unchanged });
        add("dated check check", { all, unchanged });
        add("open check check", { "c = 1", "c?304 = 1" });
        add("check resigned check check", { all, "c?304 s? = 1", unchanged });
        add("check elsewhere check check", { all, "d ds = 1", "d?304 ds?304 = 1" });

        add("moved check check", { "r302 c s = 1", "r302 c?304 s?304 = 1" }, "client");
        add("moved check check", { "r302 c s = 1", "r?302 c?304 s?304 = 1" }, "manager");

        // Not to be kept.
        for (const char *kind : { "dated future", "endless", "unkept", "longtag" })
            add(QString("open %1 check check").arg(kind), { "c = 1", "c = 1" });
        add("open page check check", { "c = 0", "c = 0" });
        add("forged check check", { "c s = 0", "c s = 0" });

        // Broken, and then fetched anew.
        for (const char *harm : { "cut", "flip" })
            add(QString("check %1 check check").arg(harm), { all, all, unchanged });
        add("check folder check check", { all, all, all });
        add("check torn check", { all, "c?304 s? c s = 0" });
        add("check unsigned check", { all, "c?304 s? c s = 0" });
        add("check fussy check", { all, "c?400 c s = 1" });
        add("open lying check check", { "c304 = 0", "c = 1" });

        // Kept, and yet not to be believed any more.
        add("check otherfile newer check firstfile older check", { all, "c s = 1", "c?304 s?304 = 0" });

        // Mirrors.
        add("down mirror check check", { "c503 m ms = 1", "c503 m?304 ms?304 = 1" });
        add("check down mirror check up check", { all, "c?503 m ms = 1", unchanged });
        add("check newer down mirror check up check", { all, "c?503 m ms = 1", all });
        add("forged mirror check", { "c s m ms = 1" });
        add("down open mirror check", { "c503 = 0" });
        add("silent mirror check", { "c m ms = 1" }, "client");
    }
    void stories()
    {
        QFETCH(QString, story);
        QFETCH(bool, isManager);
        Site site(publisher, isManager);
        QSignalSpy connections(&site.server, &QTcpServer::newConnection);
        for (const QString &word : story.split(' ')) {
            QVERIFY2(site.words.contains(word), qPrintable(word));
            site.words.value(word)();
        }
        QTEST(site.seen.join(", "), "seen");
        QVERIFY(connections.size() <= story.count("check") + site.isSilent); // signatures come over the same
    }

    void mirrorsTakeTurns()
    {
        Site site(publisher, false);
        site.words["down"]();
        for (int i = 0; i < 20; ++i)
            site.policy.mirrors << site.server.url(QString("/%1").arg(i));
        QList<QByteArray> orders[2];
        for (QList<QByteArray> &order : orders) {
            site.words["check"]();
            order = site.server.targets();
            QCOMPARE(QSet<QByteArray>(order.cbegin(), order.cend()).size(), 21);
        }
        QVERIFY(orders[0] != orders[1]);
    }

    void spread()
    {
        Site site(publisher, false);
        SoftwareUpdateClient *client = &site.client;
        const auto turn = [=] {
            QTimer *found = nullptr;
            for (QTimer *timer : client->findChildren<QTimer *>())
                if (timer->isSingleShot() && timer->isActive() && timer->timerType() != Qt::PreciseTimer) // a request's
                    found = timer;
            return found;
        };
        const auto isWithin = [=](qint64 least) { // and an hour
            return turn() && turn()->interval() >= least && turn()->interval() < least + msPerHour + 10'000;
        };
        site.policy.msSpread = msPerHour;
        client->setPolicy(site.policy);

        // At start: later by chance, each time another, one at a time.
        client->doInitialCheck(2 * msPerHour);
        QVERIFY(isWithin(2 * msPerHour));
        const int first = turn()->interval();
        client->doInitialCheck();
        QCOMPARE(turn()->interval(), first);
        client->disableSoftwareUpdate();
        QVERIFY(!turn());
        client->enableSoftwareUpdate();
        client->doInitialCheck(2 * msPerHour);
        QVERIFY(turn()->interval() != first && site.server.requests.isEmpty());

        // Ever later after failures.
        site.words["down"]();
        for (const int hours : { 1, 2, 4, 8, 16, 24, 24 }) {
            site.result.clear();
            turn()->start(0);
            QTRY_VERIFY(!site.result.isEmpty());
            QVERIFY(isWithin(hours * msPerHour));
        }
        site.words["check"](); // at once; and it counts for nothing
        QVERIFY(isWithin(24 * msPerHour));
        QCOMPARE(site.stored("failedChecks").toInt(), 7);

        // After a restart, by rhythm: what is left of it, whatever the clock says.
        for (const auto &[interval, hoursAgo, least] :
             { std::tuple(9, 5, -1), { 2, 5, 0 }, { 2, -240, 4 }, { 3, 1, 3 } }) {
            client->setPolicy(UpdatePolicy());
            QVERIFY(!turn());
            client->setPolicy(site.policy);
            site.set("failedChecks", 3);
            site.set("updateInterval", interval);
            site.set("lastCheck", QDateTime::currentDateTime().addSecs(5 - 3600 * hoursAgo));
            QVERIFY(QMetaObject::invokeMethod(client, "queryLastUpdate"));
            QVERIFY(least < 0 ? !turn() : isWithin(least * msPerHour));
        }

        // Until one succeeds, which is the user's here.
        site.publish();
        site.words["check"]();
        QVERIFY(!turn() && !site.stored("failedChecks").isValid());
    }
};

} // namespace

QTEST_MAIN(SourceTest)
#include "tst_source.moc"
