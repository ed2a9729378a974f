// The HTTP layer: addresses, hosts and their settings as tables, requests against a server on loopback.
#include "HttpAccessHistory.h"
#include "HttpClient.h"
#include "HttpServer.h"
#include "NodeDB.h"
#include "Row.h"

#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace qv;

Q_DECLARE_METATYPE(HttpAnswer)

namespace {

constexpr qint64 MiB = 1024 * 1024;

class Receiver : public QObject
{
    Q_OBJECT

public:
    RequestPtr wait()
    {
        QSignalSpy spy(this, &Receiver::called);
        if (requests.isEmpty() && !spy.wait(60'000))
            return std::make_shared<RequestData>();
        return requests.takeFirst();
    }

    QList<RequestPtr> requests;
    std::function<void()> reaction;

signals:
    void called();

private slots:
    void done(qv::RequestPtr request)
    {
        requests.append(request);
        if (reaction)
            reaction();
        emit called();
    }
};

HttpHost hostOf(const HttpServer &server, const QString &path = QString())
{
    HttpHost host;
    host.server.setUrl(server.url());
    host.path = path;
    return host;
}

const char *const Done = SLOT(done(qv::RequestPtr));

RequestPtr fetch(const HttpHost &host, const QString &path, int msStallLimit = 30'000)
{
    HttpClient client(host);
    client.setStallLimit(msStallLimit);
    Receiver receiver;
    client.get(path, {}, &receiver, Done, HttpClient::keepInRequest, nullptr);
    return receiver.wait();
}

} // namespace

class tst_http : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { NodeDB::getDB().setGlobalProxy(NetworkProxy()); }

    void accesses_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("login");

        row("address and port", "proxy.example:3128", "http://proxy.example:3128", ":");
        row("default port", " proxy.example ", "http://proxy.example:8080", ":");
        row("usual port", "proxy.example:80", "http://proxy.example", ":");
        row("URL", "http://proxy.example:81/x?y", "http://proxy.example:81", ":");
        row("secure", "https://proxy.example:443", "https://proxy.example", ":");
        row("login", "me:a%40b@proxy.example:1", "http://proxy.example:1", "me:a@b");
        row("IPv6", "[::1]:81", "http://[::1]:81", ":");
        row("port too high", "proxy.example:70000", "", ":");
        row("other scheme", "file:///etc/passwd", "", ":");
        row("nonsense", "a b:c:d", "", ":");
        row("empty", "", "", ":");
    }
    void accesses()
    {
        QFETCH(QString, typed);
        HttpAccess access("before", 1, "user", "password");
        access.parseAddress(typed, 8080);
        QTEST(QString(access), "text");
        QTEST(access.user() + ":" + access.password(), "login");
        QCOMPARE(access.isEmpty(), QString(access).isEmpty());
    }

    void newAddressForgetsLogin()
    {
        HttpAccess access("catalogue.example", 80, "me", "secret");
        access.setAddress("elsewhere.example", 80, false);
        QCOMPARE(access, HttpAccess("elsewhere.example", 80));
    }

    void proxyHistoryHoldsEachOnceLatestFirst()
    {
        HttpAccessHistory history;
        for (int port = 1; port <= HttpAccessHistory::maxEntries + 1; ++port)
            history.add(HttpAccess("p", port));
        history.add(HttpAccess("p", 5));
        QCOMPARE(history.accesses().size(), qsizetype(HttpAccessHistory::maxEntries));
        QCOMPARE(history.accesses().at(0).port(), 5);
        QCOMPARE(history.accesses().at(1).port(), HttpAccessHistory::maxEntries + 1);
        QCOMPARE(history.accesses().last().port(), 2);
    }

    void urls_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QVariantMap>("parameters");
        QTest::addColumn<QString>("url");

        const QVariantMap parameters { { "a", "1 & 2" }, { "ü", 3 } };
        row("main page", "", QVariantMap(), "http://s.example:81/cat.xml?v=1");
        row("main page with parameters", "", parameters, "http://s.example:81/cat.xml?v=1&a=1%20%26%202&%C3%BC=3");
        row("page", "/a%20b", QVariantMap(), "http://s.example:81/a%20b");
        row("page with parameters", "p", parameters, "http://s.example:81/p?a=1%20%26%202&%C3%BC=3");
        row("authority in disguise", "//evil.example/x", QVariantMap(), "http://s.example:81//evil.example/x");
    }
    void urls()
    {
        QFETCH(QString, path);
        QFETCH(QVariantMap, parameters);
        QFETCH(QString, url);
        HttpHost host(HttpAccess("s.example", 81, "me", "secret"), HttpAccess(), "/cat.xml?v=1");
        QCOMPARE(host.makeURL(path, parameters, true), url);
        QCOMPARE(host.makeURL(path, parameters, false), url.mid(int(qstrlen("http://s.example:81"))));
        QCOMPARE(QUrl(url).host(), QString("s.example"));
    }

    void encodedPaths_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("path");

        row("path", "http://s.example:81/a b/c%2Fd", "/a%20b/c%2Fd");
        row("query", "http://s.example/a?b=ü#c", "/a?b=%C3%BC");
        row("no path", "http://s.example", "/");
        row("empty", "", "");
    }
    void encodedPaths()
    {
        QFETCH(QString, url);
        QTEST(HttpClient::encodedUrlPath(url), "path");
        QTEST(HttpClient::encodedUrlPath(QUrl(url)), "path");
    }

    void hostSurvivesSettings()
    {
        const QTemporaryDir folder;
        QSettings settings(folder.filePath("s.ini"), QSettings::IniFormat);
        const HttpHost stored(HttpAccess("s.example", 81, "me", "x"), HttpAccess("p.example", 3128, "you", "y"),
                              "/c?v=1");
        HttpHost loaded;
        stored.store(settings, true);
        loaded.load(settings);
        QCOMPARE(loaded.server, stored.server);
        QCOMPARE(loaded.proxy, stored.proxy);
        QCOMPARE(loaded.proxyPreference, HttpHost::OwnProxy);
        QCOMPARE(loaded.path, stored.path);
        stored.store(settings, false);
        loaded.load(settings);
        QCOMPARE(loaded.server, HttpAccess("s.example", 81, "me"));
        QCOMPARE(loaded.proxy, HttpAccess("p.example", 3128, "you"));
    }

    void hostileSettingsGiveDefaults_data()
    {
        QTest::addColumn<QVariant>("value");
        row("missing", QVariant());
        row("text", QVariant("\x01\xff://%%%"));
        row("number", QVariant(99));
        row("list", QVariant(QStringList { "a", "b" }));
        row("bytes", QVariant(QByteArray(100'000, '\0')));
    }
    void hostileSettingsGiveDefaults()
    {
        QFETCH(QVariant, value);
        const QTemporaryDir folder;
        QSettings settings(folder.filePath("s.ini"), QSettings::IniFormat);
        for (const char *key : { "server", "proxy", "proxy-preference" })
            settings.setValue(key, value);
        HttpHost host(HttpAccess("s", 1), HttpAccess("p", 1), "/x");
        host.load(settings);
        QVERIFY(host.server.isEmpty());
        QVERIFY(host.proxy.isEmpty());
        QCOMPARE(host.proxyPreference, HttpHost::NoProxy);
    }

    void globalProxyComesAndGoes()
    {
        HttpHost host;
        host.proxy = HttpAccess("own.example", 1);
        host.proxyPreference = HttpHost::GlobalProxy;
        host.updateProxy(QUrl());
        QCOMPARE(host.proxy, HttpAccess("own.example", 1));
        NodeDB::getDB().setGlobalProxy(NetworkProxy("global.example", 2, "me", "secret"));
        host.updateProxy(QUrl());
        QCOMPARE(host.proxy, HttpAccess("global.example", 2, "me", "secret"));
        NodeDB::getDB().setGlobalProxy(NetworkProxy());
        host.updateProxy(QUrl());
        QVERIFY(host.proxy.isEmpty());
    }

    void headerNamesCompareWithoutCase()
    {
        HttpHeader header;
        header.addValue("Set-Cookie", "a=1");
        header.addValue("X-Empty", "");
        header.addValue("set-cookie", "b=2");
        QCOMPARE(header.value("SET-COOKIE"), QString("b=2"));
        QVERIFY(header.hasKey("x-empty"));
        QVERIFY(!header.hasKey("Cookie"));
    }

    void progress_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<qint64>("total");
        QTest::addColumn<int>("shownBytes");
        QTest::addColumn<int>("shownTotal");

        constexpr qint64 most = std::numeric_limits<int>::max();
        row("small", qint64(5), qint64(10), 5, 10);
        row("largest as it is", most, most, int(most), int(most));
        row("one more", most + 1, most + 1, 1073741824, 1073741824);
        row("half of 6 GiB", 3072 * MiB, 6144 * MiB, 805306368, 1610612736);
        row("unknown total", qint64(5), qint64(-1), 5, -1);
        row("unknown and beyond", 3 * most, qint64(-1), int(most), -1);
        row("absurd total", qint64(1), std::numeric_limits<qint64>::max(), 0, int(most));
    }
    void progress()
    {
        QFETCH(qint64, bytes);
        QFETCH(qint64, total);
        QTEST(HttpClient::progressOf(bytes, total).first, "shownBytes");
        QTEST(HttpClient::progressOf(bytes, total).second, "shownTotal");
    }

    void answers_data()
    {
        QTest::addColumn<HttpAnswer>("answer");
        QTest::addColumn<int>("status");
        QTest::addColumn<qint64>("size");

        const auto add = [](const char *name, const HttpAnswer &answer, int status, qint64 size) {
            row(name, answer, status, size);
        };
        const HttpAnswer ten("0123456789");
        add("counted", ten, 200, 10);
        add("empty", HttpAnswer(), 200, 0);
        add("chunked", HttpAnswer("ab").generate(MiB).chunked(), 200, MiB + 2);
        add("until close", HttpAnswer("ab").generate(MiB).unannounced(), 200, MiB + 2);
        add("error page", HttpAnswer("no such page", 404), 404, 12);
        add("server error", HttpAnswer("sorry", 503), 503, 5);
        add("wants a login", HttpAnswer("who?", 401).header("WWW-Authenticate", "Basic realm=\"x\""), 401, 4);
        add("dropped", HttpAnswer(ten).dropAfter(5), 200, 5);
        add("dropped late", HttpAnswer().generate(MiB).dropAfter(400'000), 200, 400'000);
        add("dropped before the body", HttpAnswer(ten).dropAfter(0), 200, 0);
        add("announces more", HttpAnswer(ten).announce(20).dropAfter(10), 200, 10);
        add("announces less", HttpAnswer(ten).announce(5), 200, 5);
        add("announces nonsense", HttpAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: -7x\r\n\r\nabc"), 200, 3);
        add("dropped chunks", HttpAnswer("abc").generate(MiB).chunked().dropAfter(70'000), 200, 70'000);
        add("bad chunks",
            HttpAnswer::raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\nZZ\r\nabc\r\n"), 200, 3);
        add("compressed without being asked", HttpAnswer(ten).header("Content-Encoding", "gzip"), 200, 10);
        add("not HTTP", HttpAnswer::raw("220 mail.example ESMTP\r\n\r\n"), 0, 0);
        add("nothing", HttpAnswer::raw(""), 0, 0);
        add("silent", HttpAnswer(ten).hold(), 0, 0);
        add("silent in the body", HttpAnswer(ten).holdAfter(5), 0, 5);
        add("endless", HttpAnswer().generate(HttpAnswer::Endless), 200, RequestData::maxBytesKept);
    }
    void answers()
    {
        QFETCH(HttpAnswer, answer);
        QFETCH(qint64, size);
        HttpServer server;
        server.route("/x", answer);
        const RequestPtr request = fetch(hostOf(server, "/x"), QString(), answer.heldAt > -2 ? 300 : 30'000);
        QTEST(request->statusCode(), "status");
        QCOMPARE(request->bodySize(), size);
        QCOMPARE(request->getResponseBuffer()->size(), size);
        QCOMPARE(request->urls(), QList<QUrl> { server.url("/x") });
        QCOMPARE(server.requests.at(0).headers.value("accept-encoding"), QByteArray("identity"));
    }

    void texts_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("body");
        row("unsaid", QByteArray("text/html"),
            QByteArray("Gr\xc3\xbc\xc3\x9f"
                       "e"));
        row("UTF-8", QByteArray("text/html; charset=utf-8"),
            QByteArray("Gr\xc3\xbc\xc3\x9f"
                       "e"));
        row("Latin-1", QByteArray("text/html; Charset=ISO-8859-1"),
            QByteArray("Gr\xfc\xdf"
                       "e"));
    }
    void texts()
    {
        QFETCH(QByteArray, type);
        QFETCH(QByteArray, body);
        HttpServer server;
        server.route("/x", HttpAnswer(body).header("Content-Type", type));
        QCOMPARE(fetch(hostOf(server), "/x")->getResponseText(), QString::fromUtf8("Grüße"));
    }

    void redirects_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("visited");
        row("most", QByteArray("/10"), 200, 11);
        row("one too many", QByteArray("/11"), 302, 11);
        row("to itself", QByteArray("/loop"), 302, 11);
        row("to a file", QByteArray("/file"), 302, 1);
        row("to nowhere", QByteArray("/nowhere"), 302, 1);
        row("to a dead server", QByteArray("/dead"), 0, 2);
    }
    void redirects()
    {
        QFETCH(QByteArray, path);
        QFETCH(int, visited);
        HttpServer server;
        server.route("/0", HttpAnswer("here"));
        for (int i = 1; i <= 11; ++i)
            server.route("/" + QByteArray::number(i), HttpAnswer::redirect("/" + QByteArray::number(i - 1), 302));
        server.route("/loop", HttpAnswer::redirect("/loop"));
        server.route("/file", HttpAnswer::redirect("file:///etc/passwd"));
        server.route("/nowhere", HttpAnswer("", 302));
        server.route("/dead", HttpAnswer::redirect("http://127.0.0.1:1/"));
        const RequestPtr request = fetch(hostOf(server), path);
        QTEST(request->statusCode(), "status");
        QCOMPARE(request->urls().size(), qsizetype(visited));
        QCOMPARE(request->urls().first(), server.url(path));
        if (request->statusCode() == 200)
            QCOMPARE(request->getResponseBuffer()->data(), QByteArray("here"));
    }

    void unreachableServersHaveStatusZero()
    {
        const HttpAccess nobody("127.0.0.1", 1);
        for (const HttpHost &host :
             { HttpHost(), HttpHost(nobody, HttpAccess(), "/"), HttpHost(HttpAccess("127.0.0.1", 0), HttpAccess(), "/"),
               HttpHost(HttpAccess("127.0.0.1", 80), nobody, "/") }) {
            const RequestPtr request = fetch(host, "/x");
            QCOMPARE(request->statusCode(), 0);
            QCOMPARE(request->urls().size(), qsizetype(1));
        }
    }

    void requestsRunInTurnEachAtItsHost()
    {
        HttpServer first;
        HttpServer second(QHostAddress("127.0.0.2"));
        for (HttpServer *server : { &first, &second })
            server->route("/x", HttpAnswer(server->url().host().toLatin1()).header("Set-Cookie", "a=b"));
        HttpClient client;
        Receiver receiver;
        QSignalSpy started(&client, &HttpClient::requestStarted);
        client.setHost(hostOf(first));
        const RequestPtr early = client.prepareGet("/x", {}, &receiver, Done, nullptr, nullptr);
        client.setHost(hostOf(second));
        const RequestPtr late = client.prepareGet("/x", {}, &receiver, Done, nullptr, nullptr);
        client.execute(late);
        client.execute(early);
        client.execute(early);
        client.get("/x", {}, &receiver, Done, nullptr, nullptr);
        QCOMPARE(started.count(), 0);
        QStringList order;
        for (int i = 0; i < 3; ++i)
            order += receiver.wait()->getResponseText();
        QCOMPARE(order, QStringList({ "127.0.0.2", "127.0.0.1", "127.0.0.2" }));
        QCOMPARE(started.count(), 3);
        QVERIFY(QTest::qWaitFor([&] { return !client.isExecutingRequest(); }));
        QVERIFY(!second.requests.at(1).headers.contains("cookie"));
    }

    void proxies_data()
    {
        QTest::addColumn<QString>("route");
        QTest::addColumn<int>("status");
        row("own", "own", 200);
        row("global", "global", 200);
        row("login", "login", 200);
        row("wrong login", "wrong", 407);
        row("login missing", "missing", 407);
    }
    void proxies()
    {
        QFETCH(QString, route);
        HttpServer server;
        server.route("http://s.example/x", HttpAnswer("over the proxy"));
        HttpAccess proxy("127.0.0.1", server.serverPort());
        if (route == "login" || route == "wrong")
            proxy = HttpAccess("127.0.0.1", server.serverPort(), "me", route);
        HttpHost host(HttpAccess("s.example", 80), proxy, QString());
        if (route == "global") {
            host.proxyPreference = HttpHost::GlobalProxy;
            host.proxy = HttpAccess();
            NodeDB::getDB().setGlobalProxy(NetworkProxy("127.0.0.1", server.serverPort()));
        } else if (route != "own") {
            server.requireProxyLogin("me", "login");
        }
        const RequestPtr request = fetch(host, "/x");
        QTEST(request->statusCode(), "status");
        QCOMPARE(request->getResponseText(), QString(request->statusCode() == 200 ? "over the proxy" : "Who are you?"));
        QVERIFY(server.requests.size() <= 2);
    }

    void systemProxyIsNotAsked()
    {
        qputenv("http_proxy", "http://127.0.0.1:1");
        HttpServer server;
        server.route("/x", HttpAnswer("direct"));
        QCOMPARE(fetch(hostOf(server), "/x")->getResponseText(), QString("direct"));
        qunsetenv("http_proxy");
    }

    void bodyStreamsIntoFile()
    {
        HttpServer server;
        server.route("/x", HttpAnswer("start").generate(40 * MiB));
        HttpClient client(hostOf(server));
        Receiver receiver;
        const QTemporaryDir folder;
        QFile file(folder.filePath("x"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        qint64 sizeSeenBySlot = 0;
        receiver.reaction = [&] { sizeSeenBySlot = QFileInfo(file.fileName()).size(); };
        QSignalSpy progress(&client, &HttpClient::downloadProgress);
        client.get("/x", {}, &receiver, Done, &file, nullptr);
        const RequestPtr request = receiver.wait();
        QCOMPARE(sizeSeenBySlot, 40 * MiB + 5);
        QCOMPARE(request->outputDevice(), &file);
        QCOMPARE(request->getResponseBuffer()->size(), qint64(0));
        int last = 0;
        for (const auto &one : progress) {
            QVERIFY(one.at(0).toInt() > last);
            last = one.at(0).toInt();
            QCOMPARE(one.at(1).toInt(), int(40 * MiB + 5));
        }
        QCOMPARE(last, int(40 * MiB + 5));
    }

    void deviceDeletedInTheMiddleEndsTheRequest()
    {
        HttpServer server;
        server.route("/x", HttpAnswer().generate(HttpAnswer::Endless).holdAfter(100));
        HttpClient client(hostOf(server));
        Receiver receiver;
        auto file = std::make_unique<QFile>("/dev/null");
        QVERIFY(file->open(QIODevice::WriteOnly));
        connect(&server, &HttpServer::held, this, [&] {
            file.reset();
            server.release();
        });
        client.get("/x", {}, &receiver, Done, file.get(), nullptr);
        QCOMPARE(receiver.wait()->statusCode(), 200);
    }

    void resetDropsTheExecutingRequestOnly()
    {
        HttpServer server;
        server.route("/held", HttpAnswer("0123456789").holdAfter(5));
        server.route("/next", HttpAnswer("next"));
        HttpClient client(hostOf(server));
        Receiver receiver;
        RequestPtr dropped = client.prepareGet("/held", {}, &receiver, Done, nullptr, nullptr);
        const auto luggage = std::make_shared<int>();
        dropped->userData = luggage;
        client.execute(dropped);
        dropped.reset();
        client.get("/next", {}, &receiver, Done, nullptr, nullptr);
        QVERIFY(QSignalSpy(&server, &HttpServer::held).wait());
        client.reset();
        QCOMPARE(luggage.use_count(), 1L);
        QCOMPARE(receiver.wait()->getResponseText(), QString("next"));
        QVERIFY(receiver.requests.isEmpty());
        client.reset();
        QVERIFY(!client.isExecutingRequest());
    }

    void deadReceiverDropsItsOwnRequestOnly()
    {
        HttpServer server;
        server.route("/x", HttpAnswer("x"));
        server.route("/held", HttpAnswer("held").holdAfter(2));
        HttpClient client(hostOf(server));
        auto first = std::make_unique<Receiver>();
        Receiver second;
        client.get("/x", {}, first.get(), Done, nullptr, nullptr);
        first->wait();
        client.get("/held", {}, &second, Done, nullptr, nullptr);
        QVERIFY(QSignalSpy(&server, &HttpServer::held).wait());
        first.reset();
        server.release();
        QCOMPARE(second.wait()->getResponseText(), QString("held"));
    }

    void anybodyMayBeDeletedAtAnyTime_data()
    {
        QTest::addColumn<QString>("when");
        for (const char *when : { "executed", "started", "held", "progress", "slot", "receiver", "receiver executed" })
            row(when, when);
    }
    void anybodyMayBeDeletedAtAnyTime()
    {
        QFETCH(QString, when);
        HttpServer server;
        server.route("/x", HttpAnswer("0123456789").generate(MiB).holdAfter(when == "slot" ? -2 : MiB / 2));
        server.route("/y", HttpAnswer("y"));
        auto client = std::make_unique<HttpClient>(hostOf(server));
        auto receiver = std::make_unique<Receiver>();
        Receiver other;
        bool isCalled = false;
        receiver->reaction = [&] {
            isCalled = true;
            client.reset();
        };
        client->get("/x", {}, receiver.get(), Done, nullptr, nullptr);
        client->get("/y", {}, &other, Done, nullptr, nullptr);
        connect(client.get(), &HttpClient::requestStarted, this, [&] {
            if (when == "started")
                client.reset();
        });
        connect(client.get(), &HttpClient::downloadProgress, this, [&] {
            if (when == "progress")
                client.reset();
        });
        connect(&server, &HttpServer::held, this, [&] {
            if (when == "held")
                client.reset();
            if (when == "receiver")
                receiver.reset();
        });
        if (when == "executed")
            client.reset();
        if (when == "receiver executed")
            receiver.reset();
        if (when.startsWith("receiver"))
            QCOMPARE(other.wait()->getResponseText(), QString("y"));
        else
            QVERIFY(QTest::qWaitFor([&] { return !client; }));
        QCOMPARE(isCalled, when == "slot");
    }

    void unknownSlotIsToldAtOnce()
    {
        HttpClient client;
        QTest::ignoreMessage(QtWarningMsg, "HttpClient::prepareGet: no such slot Receiver::nowhere(RequestPtr)");
        Receiver receiver;
        client.prepareGet("/x", {}, &receiver, SLOT(nowhere(RequestPtr)), nullptr, nullptr);
    }
};

QTEST_GUILESS_MAIN(tst_http)
#include "tst_http.moc"
