// The download manager: catalogue queries against a server on loopback, what is remembered between runs, and downloads
// of packages and release notes, mostly over a proxy: there the requests tell which port they are meant for.
#include "DownloadManager.h"
#include "FileUtils.h"
#include "HttpAccessHistory.h"
#include "HttpServer.h"
#include "NodeDB.h"
#include "SmallDisk.h"

#include <QtTest>

using namespace qv;

namespace {

constexpr qint64 MiB = 1024 * 1024;

QByteArray package(const QByteArray &date, const QByteArray &more = QByteArray())
{
    return "<package url='http://s.example/p.zip' release='3.1' status='BETA' platform='p' file-size='7'><release-date>"
        + date + "</release-date>" + more + "</package>";
}

QByteArray catalogue(const QByteArray &packages)
{
    return "<softwareList>" + packages + "</softwareList>";
}

const QByteArray German = "<language>de</language>";
const QByteArray TwoPackages = catalogue(package("2024-05-01") + package("2024-06-01", German));

struct Query
{
    explicit Query(DownloadManager &manager)
        : found(&manager, SIGNAL(packageFound(PackageInfoList))), finished(&manager, &DownloadManager::queryFinished)
    {
    }

    bool wait() { return finished.wait(30'000); }
    PackageInfoList packages() const
    {
        return found.isEmpty() ? PackageInfoList() : qvariant_cast<PackageInfoList>(found.last().first());
    }

    QSignalSpy found, finished;
};

/// The packages that a query of @p manager calls new.
int newIn(DownloadManager &manager)
{
    Query query(manager);
    manager.queryUpdate();
    return query.wait() ? DownloadManager::countNew(query.packages()) : -1;
}

PackageInfo announced(qint64 fileSize, const QString &url = "http://packages.example:8099/dir/p 1.zip?v=2")
{
    PackageInfo info("t", "p", "1", "s", QDateTime(), {}, {}, "zip", "");
    info.url = QUrl(url);
    info.fileSize = fileSize;
    return info;
}

const QByteArray PackageTarget = "http://packages.example/dir/p%201.zip?v=2";
const HttpAnswer Ten("0123456789");

/// Notes the signals of a manager in their order: S and s for success with and without package, F and f for failure,
/// B for the start, A for an abort. At the one named @p deleteAt it deletes the manager.
struct Witness : QObject
{
    explicit Witness(DownloadManager *manager, const QString &deleteAt = QString())
    {
        using Manager = DownloadManager;
        const auto note = [=](char letter) {
            order += QLatin1Char(letter);
            isDone = deleteAt == QLatin1Char(letter) || letter == 's' || letter == 'f';
            if (deleteAt == QLatin1Char(letter))
                delete manager;
            if (isDone)
                end.quit();
        };
        const auto noteOf = [=](char letter) {
            return [=](const PackageInfo &p, const QString &f) {
                pack = p;
                fileName = f;
                note(letter);
            };
        };
        connect(manager, &Manager::downloadStarted, this, noteOf('B'));
        connect(manager, qOverload<PackageInfo, QString>(&Manager::downloadSuccess), this, noteOf('S'));
        connect(manager, qOverload<PackageInfo, QString>(&Manager::downloadFailure), this, noteOf('F'));
        connect(manager, qOverload<>(&Manager::downloadSuccess), this, [=] { note('s'); });
        connect(manager, &Manager::downloadAborted, this, [=] { note('A'); });
        connect(manager, qOverload<int>(&Manager::downloadFailure), this, [=](int httpStatusCode) {
            status = httpStatusCode;
            note('f');
        });
    }

    /// True when that came to an end, with these signals.
    bool saw(const QString &signalsSeen)
    {
        QTimer::singleShot(60'000, &end, &QEventLoop::quit);
        if (!isDone)
            end.exec();
        if (order != signalsSeen)
            qWarning("signals: %s", qPrintable(order));
        return order == signalsSeen;
    }

    QString order;
    PackageInfo pack;
    QString fileName;
    int status = -1;
    bool isDone = false;
    QEventLoop end;
};

} // namespace

class tst_manager : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        settings = std::make_unique<QSettings>(folder->filePath("s.ini"), QSettings::IniFormat);
        cacheFile = folder->filePath("last.xml");
        server = std::make_unique<HttpServer>();
        server->route("/c", HttpAnswer(TwoPackages));
        path = folder->filePath("p.zip");
        proxied = std::make_unique<DownloadManager>(
            HttpHost(HttpAccess(), HttpAccess("127.0.0.1", server->serverPort()), QString()), QString());
    }
    void cleanup() { NodeDB::getDB().setGlobalProxy(NetworkProxy()); }

    void packagesAreNewOnce()
    {
        DownloadManager manager(server->url("/c"));
        Query query(manager);
        QSignalSpy started(&manager, &DownloadManager::queryStarted);
        QVERIFY(!manager.isQueryBusy());
        manager.queryCameraFirmwareUpdate("9", "STABLE", { "de" });
        QVERIFY(manager.isQueryBusy());
        QCOMPARE(started.value(0).value(0).toString() + "/c", server->url("/c").toString());
        QVERIFY(query.wait() && !manager.isQueryBusy());
        QCOMPARE(DownloadManager::countNew(query.packages()), 2);
        QCOMPARE(newIn(manager), 0);
        server->route("/c", catalogue(package("2024-05-01") + package("2024-07-01")));
        QCOMPARE(newIn(manager), 1);
        const PackageInfoList recent = manager.recentPackages(PackageInfo());
        QCOMPARE(recent.size(), qsizetype(2));
        QCOMPARE(DownloadManager::countNew(recent), 0);
    }

    void answers()
    {
        for (const auto &[answer, count] : { std::pair(HttpAnswer(TwoPackages, 500), 2), // whatever the status
                                             { HttpAnswer(catalogue("")), 0 },
                                             { HttpAnswer(TwoPackages).dropAfter(100), 0 },
                                             { HttpAnswer("<s>").generate(HttpAnswer::Endless), 0 } }) {
            DownloadManager manager(server->url("/c"));
            server->route("/c", TwoPackages);
            QCOMPARE(newIn(manager), 2);
            server->route("/c", answer);
            Query query(manager);
            const QSignalSpy nothing(&manager, &DownloadManager::noPackageFound);
            manager.queryUpdate();
            QVERIFY(query.wait());
            QCOMPARE(nothing.count(), count ? 0 : 1);
            QCOMPARE(query.packages().size(), qsizetype(count));
            QCOMPARE(manager.recentPackages("t", "n", "r", "s", QDateTime(), {}, {}).size(), qsizetype(count));
        }
    }

    void callbackGetsTheWholeCatalogue()
    {
        for (QByteArray slot : { QByteArray("take"), QByteArray(SLOT(take(qv::PackageInfoList))) }) {
            DownloadManager manager(server->url("/c"));
            QSignalSpy taken(this, &tst_manager::taken);
            manager.queryUpdate("x", "x", "9", "A", QDateTime::currentDateTime(), { "x" }, { "de" }, this, slot);
            slot.fill('x');
            QVERIFY(taken.wait());
            QCOMPARE(DownloadManager::countNew(qvariant_cast<PackageInfoList>(taken.first().first())), 2);
        }
    }

    void callbackReceiverMayDie()
    {
        DownloadManager manager(server->url("/c"));
        Query query(manager);
        auto receiver = std::make_unique<tst_manager>();
        manager.queryUpdate(PackageInfo(), receiver.get(), "take");
        receiver.reset();
        QVERIFY(query.wait());
        QCOMPARE(query.packages().size(), qsizetype(2));
    }

    void managerMayBeDeletedInItsSignals()
    {
        for (const char *name : { SIGNAL(queryStarted(QString)), SIGNAL(packageFound(PackageInfoList)),
                                  SIGNAL(downloadProgress(int, int)), SIGNAL(queryFinished()) }) {
            doomed = new DownloadManager(server->url("/c"));
            connect(doomed, name, this, SLOT(deleteDoomed()));
            doomed->queryUpdate();
            QVERIFY2(QTest::qWaitFor([&] { return !doomed; }), name);
        }
    }

    void slotsOutOfTurn()
    {
        DownloadManager manager(server->url("/c"));
        QSignalSpy finished(&manager, &DownloadManager::queryFinished);
        for (const char *slot : { "queryResult", "downloadStarting", "downloadResult", "releaseNotesResult" })
            QVERIFY(QMetaObject::invokeMethod(&manager, slot, Q_ARG(RequestPtr, RequestPtr())));
        QVERIFY(finished.isEmpty());
    }

    void serverAndProxy()
    {
        const HttpAccess proxy("p.example", 80);
        NodeDB::getDB().setGlobalProxy(NetworkProxy("global.example", 1));
        DownloadManager manager;
        QVERIFY(!manager.isRegularCheck());
        for (const auto preference : { HttpHost::NoProxy, HttpHost::GlobalProxy, HttpHost::OwnProxy }) {
            manager.setProxy(preference, "p.example");
            QCOMPARE(HttpAccessHistory::proxies.accesses().contains(proxy), preference == HttpHost::OwnProxy);
        }
        manager.storeHistory(*settings, QString());
        QCOMPARE(DownloadManager(*settings, QString()).server().proxyPreference, HttpHost::OwnProxy);
        QCOMPARE(DownloadManager(*settings, QString()).server().proxy, proxy);
        NodeDB::getDB().setGlobalProxy(NetworkProxy("127.0.0.1", server->serverPort()));
        manager.setServer(QUrl("http://s.example:81/c?d=e f#g"));
        QCOMPARE(newIn(manager), 2); // over the global one
        QCOMPARE(server->targets(), QList<QByteArray> { "http://s.example:81/c?d=e%20f" });
        QCOMPARE(HttpAccessHistory::proxies.accesses().value(0), HttpAccess("127.0.0.1", server->serverPort()));
    }

    void memorySurvivesTheRun()
    {
        {
            DownloadManager first(server->url("/c?v=1"));
            QVERIFY(first.isRegularCheck());
            QCOMPARE(newIn(first), 2);
            settings->setValue("Download/regular-check", true);
            first.storeHistory(*settings, cacheFile);
        }
        QCOMPARE(settings->value("Download/ver").toInt(), 3);
        QCOMPARE(settings->value("Download/hist/size").toInt(), 2);
        QVERIFY(settings->contains("Download/last-check") && !settings->contains("Download/regular-check"));
        QVERIFY(settings->group().isEmpty());
        DownloadManager second(*settings, cacheFile);
        QVERIFY(second.isRegularCheck());
        QCOMPARE(second.queryUrl(), server->url("/c?v=1").toString());
        QCOMPARE(second.recentPackages(PackageInfo()).size(), qsizetype(2));
        QCOMPARE(newIn(second), 0);
    }

    void oldSettingsMoveToTheBuiltInServer()
    {
        for (const QVariant &version : { QVariant(), QVariant(2), QVariant(3), QVariant("three") }) {
            const bool moves = version != QVariant(3);
            DownloadManager earlier(QUrl("http://s.example/c"));
            earlier.setProxy(HttpHost::OwnProxy, "p.example:3128");
            earlier.storeHistory(*settings, QString());
            settings->setValue("Download/ver", version);
            DownloadManager manager(*settings, QString());
            QCOMPARE(manager.queryUrl(), moves ? DownloadManager::UPDATE_URL : QString("http://s.example/c"));
            QCOMPARE(manager.server().proxyPreference, moves ? HttpHost::GlobalProxy : HttpHost::OwnProxy);
            manager.storeHistory(*settings, QString());
            QCOMPARE(DownloadManager(*settings, QString()).queryUrl(), manager.queryUrl());
        }
    }

    void packagesAreForgottenAfterTwoYears()
    {
        const QDateTime now = QDateTime::currentDateTime(), limit = now.addYears(-2);
        const auto text = [](const QDateTime &time) { return QVariant(time.toString(Qt::ISODate)); };
        for (const auto &[time, isKnown] : { std::pair(text(now), true),
                                             { text(limit.addDays(1)), true },
                                             { text(limit.addDays(-1)), false },
                                             { QVariant(), false },
                                             { QVariant("yesterday"), false } }) {
            DownloadManager(server->url("/c")).storeHistory(*settings, QString());
            remember({ { "gone", time }, { "something else", time }, { "1-2024-05-01T00:00:00-7", time } });
            settings->remove("Download/hist/1"); // a gap
            DownloadManager manager(*settings, QString());
            QCOMPARE(newIn(manager), isKnown ? 1 : 2);
        }
    }

    void oldestOfTooManyAreForgotten()
    {
        DownloadManager manager(server->url("/many"));
        const auto newAmong = [&](int first, int end) {
            QByteArray packages;
            for (int size = first; size < end; ++size)
                packages += "<package file-size='" + QByteArray::number(size) + "'/>";
            server->route("/many", HttpAnswer(catalogue(packages)));
            return newIn(manager);
        };
        for (int first = 1; first < 100'000; first += 20'000)
            QCOMPARE(newAmong(first, first + 20'000), 20'000);
        QCOMPARE(newAmong(1, 4), 0);
        QCOMPARE(newAmong(100'001, 100'004), 3);
        QCOMPARE(newAmong(1, 20'001), 3);
    }

    void laterEntryOfAPackageCounts()
    {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        const QString later = now.addDays(-9).toString(Qt::ISODate);
        remember({ { "twice", now.addDays(-10).toString(Qt::ISODate) }, { "twice", later } });
        DownloadManager(*settings, QString()).storeHistory(*settings, QString());
        QCOMPARE(settings->value("Download/hist/size").toInt(), 1);
        QVERIFY(settings->value("Download/hist/1/time").toString().startsWith(later.left(10)));
        QVERIFY(!settings->contains("Download/hist/2/time"));
    }

    void cacheIsReplacedByAnAnswerOnly()
    {
        QVERIFY(FileUtils::writeBytes("before", cacheFile));
        DownloadManager manager(server->url("/c"));
        manager.storeHistory(*settings, cacheFile);
        QCOMPARE(FileUtils::readBytes(cacheFile), QByteArray("before"));
        QCOMPARE(newIn(manager), 2);
        manager.storeHistory(*settings, QString());
        manager.storeHistory(*settings, cacheFile);
        QCOMPARE(FileUtils::readBytes(cacheFile), TwoPackages);
        QCOMPARE(QDir(folder->path()).entryList({ "last*" }), QStringList({ "last.xml" }));
        for (const char *endless : { "/dev/zero", "/" })
            QVERIFY(DownloadManager(*settings, endless).recentPackages(PackageInfo()).isEmpty());
    }

    void downloads()
    {
        // what the catalogue announces; status of a failure, or -1 for success; the size of the file
        using Case = std::tuple<HttpAnswer, qint64, int, int>;
        const HttpAnswer endless = HttpAnswer().generate(HttpAnswer::Endless);
        for (const auto &[answer, most, status, size] :
             { Case(Ten, 10, -1, 10), Case(Ten, 11, 200, 10), Case(Ten, 9, -1, 10),
               Case(HttpAnswer("gone", 404), 10, 404, 4),
               Case(HttpAnswer(Ten.body, 404), 10, -1, 10), // an error page as long as the package
               Case(HttpAnswer(Ten).dropAfter(5), 10, 200, 5),
               Case(HttpAnswer(Ten).announce(20).dropAfter(10), 10, -1, 10),
               Case(endless, 10, 200, int(10 + DownloadManager::maxSurplusBytes)), Case(Ten, -1, 200, 10),
               Case(Ten, std::numeric_limits<qint64>::min(), 200, 10) }) { // beyond 2^63
            server->route(PackageTarget, answer);
            Witness witness(proxied.get());
            const PackageInfo asked = announced(most);
            proxied->startDownload(asked, path);
            QVERIFY(witness.saw(status < 0 ? "BSs" : "BFf"));
            QCOMPARE(witness.status, status);
            QCOMPARE(witness.fileName, path);
            QCOMPARE(witness.pack.name, asked.name);
            QCOMPARE(witness.pack.localFile, status < 0 ? path : QString());
            QCOMPARE(QFileInfo(path).size(), qint64(size));
            QCOMPARE(server->targets().last(), PackageTarget);
        }
    }

    void hashes()
    {
        // of what the catalogue announces the hash; the size that it announces; the signals; whether the file stays
        using Case = std::tuple<QByteArray, qint64, QString, bool>;
        for (const auto &[of, size, seen, isKept] :
             { Case(Ten.body, 10, "BSs", true), Case("012345678x", 10, "BFf", false),
               Case(Ten.body.left(9), 9, "BFf", false), // of the announced bytes, more came
               Case(Ten.body, 11, "BFf", true), Case("", 0, "", false) }) {
            server->route(PackageTarget, Ten);
            Witness witness(proxied.get());
            PackageInfo asked = announced(size);
            asked.sha256 = QCryptographicHash::hash(of, QCryptographicHash::Sha256).toHex();
            proxied->startDownload(asked, path);
            QVERIFY(QTest::qWaitFor([&] { return !proxied->isQueryBusy(); }));
            QCOMPARE(witness.order, seen);
            QCOMPARE(QFileInfo::exists(path), isKept);
        }
    }

    void packageWithoutSizeStaysSilent()
    {
        server->route(PackageTarget, HttpAnswer().generate(3 * MiB));
        Witness witness(proxied.get());
        proxied->startDownload(announced(0), path);
        QVERIFY(QTest::qWaitFor([&] { return !proxied->isQueryBusy(); }, 30'000));
        QCOMPARE(witness.order, QString());
        QCOMPARE(QFileInfo(path).size(), 3 * MiB);
    }

    void badTargets()
    {
        server->route(PackageTarget, HttpAnswer().generate(HttpAnswer::Endless));
        for (const char *target : { "/nowhere/p.zip", "/dev/full", "/usr/bin" }) { // which has a size
            Witness witness(proxied.get());
            proxied->startDownload(announced(10), target);
            QVERIFY2(witness.saw("BFf") && witness.status == 200, target);
        }
    }

    void leavesRoomOnTheDisk()
    {
        const SmallDisk disk(folder->path().toLocal8Bit(), 70);
        if (!disk.isMounted())
            QSKIP("This user may not mount a small disk.");
        server->route(PackageTarget, HttpAnswer().generate(HttpAnswer::Endless));
        for (const qint64 size : { 0 * MiB, 40 * MiB }) {
            Witness witness(proxied.get());
            proxied->startDownload(announced(size), path);
            QVERIFY(QTest::qWaitFor([&] { return !proxied->isQueryBusy(); }, 60'000));
            QCOMPARE(witness.order, QString(size == 0 ? "" : "BFf"));
            QVERIFY(QFileInfo(path).size() <= 12 * MiB);
        }
    }

    void managerWithoutServerRelaysNothing()
    {
        DownloadManager bare;
        bare.server() = proxied->server();
        server->route(PackageTarget, Ten);
        QSignalSpy progress(&bare, &DownloadManager::downloadProgress);
        Witness witness(&bare);
        bare.startDownload(announced(10), path);
        QVERIFY(witness.saw("Ss") && progress.isEmpty());
    }

    void abortLeavesWhatCameAndWhatElseWaits()
    {
        server->route(PackageTarget, HttpAnswer(Ten).holdAfter(4));
        server->route("/c", HttpAnswer("<softwareList/>"));
        Witness witness(proxied.get());
        QSignalSpy finished(proxied.get(), &DownloadManager::queryFinished);
        proxied->abortDownload();
        proxied->startDownload(announced(10), path);
        QSignalSpy progress(proxied.get(), &DownloadManager::downloadProgress);
        QVERIFY(progress.wait());
        proxied->server().server.setUrl(QUrl("http://s.example:81"));
        proxied->server().path = "/c";
        proxied->queryUpdate();
        proxied->abortDownload();
        QCOMPARE(QFileInfo(path).size(), qint64(4));
        QVERIFY(finished.wait());
        QCOMPARE(witness.order, QString("ABA"));
        QCOMPARE(server->targets().last(), QByteArray("http://s.example:81/c"));
    }

    // In flight is a download from startDownload() on, whatever it waits for.
    void abortDropsWhatWaits()
    {
        server->route("http://s.example/c", QByteArray("<softwareList><package/></softwareList>"));
        server->route(PackageTarget, Ten);
        for (const bool inSlot : { false, true }) {
            proxied->setServer(QUrl("http://s.example/c"));
            Witness witness(proxied.get());
            QSignalSpy finished(proxied.get(), &DownloadManager::queryFinished);
            const auto startAndAbort = [&] {
                proxied->startDownload(announced(10), path);
                proxied->abortDownload();
            };
            proxied->queryUpdate();
            if (inSlot)
                connect(proxied.get(), &DownloadManager::packageFound, this, startAndAbort);
            else
                startAndAbort();
            QVERIFY(QTest::qWaitFor([&] { return !proxied->isQueryBusy(); }));
            QCOMPARE(finished.count(), inSlot ? 1 : 0);
            QCOMPARE(witness.order, QString("A"));
        }
    }

    void downloadingManagerMayBeDeletedInItsSignals()
    {
        server->route(PackageTarget, Ten);
        for (const auto &[order, size] :
             { std::pair("B", 10), { "BS", 10 }, { "BSs", 10 }, { "BF", 11 }, { "BFf", 11 } }) {
            auto doomed = new DownloadManager(proxied->server(), QString());
            Witness witness(doomed, QString(order).right(1));
            doomed->startDownload(announced(size), path);
            QVERIFY2(witness.saw(order), order);
        }
    }

    void releaseNotes()
    {
        const QUrl asked("https://notes.example:8443/n.html#new");
        server->route("http://notes.example/elsewhere", HttpAnswer("elsewhere"));
        QSignalSpy notes(proxied.get(), &DownloadManager::releaseNotesDownloaded);
        proxied->downloadReleaseNotes(QUrl());
        QCOMPARE(notes.takeFirst(), QVariantList({ QUrl(), QString() })); // at once
        for (const auto &[answer, text] : { std::pair(HttpAnswer("Grüße"), "Grüße"),
                                            { HttpAnswer::redirect("/elsewhere"), "elsewhere" },
                                            { HttpAnswer("made", 201), "" },
                                            { HttpAnswer("gone", 404), "" },
                                            { HttpAnswer::raw(""), "" } }) {
            server->route("http://notes.example/n.html", answer);
            proxied->downloadReleaseNotes(asked);
            QVERIFY(notes.wait());
            QCOMPARE(notes.takeFirst(), QVariantList({ asked, QString(text) }));
        }
    }

    void directDownloadLeavesForPort80()
    {
        HttpServer direct(QHostAddress("127.0.0.31"), 80);
        if (!direct.isListening())
            QSKIP("This user may not listen on port 80 of 127.0.0.31.");
        direct.route("/p.zip", Ten);
        DownloadManager manager(QUrl("http://127.0.0.1:1/c"));
        Witness witness(&manager);
        manager.startDownload(announced(10, "https://127.0.0.31:8443/p.zip"), path);
        QVERIFY(witness.saw("BSs"));
    }

signals:
    void taken(const qv::PackageInfoList &packages);

public slots:
    void take(const qv::PackageInfoList &packages) { emit taken(packages); }
    void deleteDoomed() { delete doomed.data(); }

private:
    void remember(const QList<QPair<QString, QVariant>> &history)
    {
        settings->beginWriteArray("Download/hist");
        for (int i = 0; i < history.size(); ++i) {
            settings->setArrayIndex(i);
            settings->setValue("version", history.at(i).first);
            settings->setValue("time", history.at(i).second);
        }
        settings->endArray();
    }

    QPointer<DownloadManager> doomed;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<QSettings> settings;
    std::unique_ptr<HttpServer> server;
    std::unique_ptr<DownloadManager> proxied;
    QString cacheFile, path;
};

QTEST_GUILESS_MAIN(tst_manager)
#include "tst_manager.moc"
