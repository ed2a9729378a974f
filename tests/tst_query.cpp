// Catalogue queries against a server on loopback, and what a manager remembers between runs.
#include "DownloadManager.h"
#include "FileUtils.h"
#include "HttpAccessHistory.h"
#include "HttpServer.h"
#include "NodeDB.h"

#include <QtTest>

using namespace qv;

namespace {

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

} // namespace

class tst_query : public QObject
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
            QSignalSpy taken(this, &tst_query::taken);
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
        auto receiver = std::make_unique<tst_query>();
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

    void abortDropsAQuery()
    {
        server->route("/c", HttpAnswer(TwoPackages).holdAfter(10));
        DownloadManager manager(server->url("/c"));
        Query query(manager);
        manager.queryUpdate();
        QVERIFY(QSignalSpy(server.get(), &HttpServer::held).wait());
        manager.abortDownload();
        QVERIFY(!manager.isQueryBusy());
        server->release();
        QCOMPARE(newIn(manager), 2);
        QCOMPARE(query.finished.count(), 1);
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
        QByteArray packages;
        for (int size = 1; size <= 100'003; ++size)
            packages += "<package file-size='" + QByteArray::number(size) + "'/>";
        server->route("/many", HttpAnswer(catalogue(packages)));
        DownloadManager manager(server->url("/many"));
        QCOMPARE(newIn(manager), 100'003);
        QCOMPARE(newIn(manager), 3);
        for (const int count : { 2, 0 }) {
            manager.setServer(server->url("/c"));
            QCOMPARE(newIn(manager), count);
        }
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
    QString cacheFile;
};

QTEST_GUILESS_MAIN(tst_query)
#include "tst_query.moc"
