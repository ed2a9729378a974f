// Downloads of packages and release notes, mostly over a proxy on loopback: there the requests tell which port they are
// meant for.
#include "DownloadManager.h"
#include "HttpServer.h"
#include "Row.h"
#include "SmallDisk.h"

#include <QtTest>

using namespace qv;

Q_DECLARE_METATYPE(HttpAnswer)

namespace {

constexpr qint64 MiB = 1024 * 1024;

PackageInfo package(qint64 fileSize, const QString &url = "http://packages.example:8099/dir/p 1.zip?v=2")
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

class tst_download : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        path = folder->filePath("p.zip");
        proxy = std::make_unique<HttpServer>();
        manager = std::make_unique<DownloadManager>(
            HttpHost(HttpAccess(), HttpAccess("127.0.0.1", proxy->serverPort()), QString()), QString());
    }
    void cleanup() { manager.reset(); }

    void outcomes_data()
    {
        // status: of a failure; -1: success
        columns<HttpAnswer, qint64, int, int>("answer", "announced", "status", "size");

        row("exact", Ten, qint64(10), -1, 10);
        row("one byte short", Ten, qint64(11), 200, 10);
        row("longer", Ten, qint64(9), -1, 10);
        row("short error page", HttpAnswer("gone", 404), qint64(10), 404, 4);
        row("error page as long as the package", HttpAnswer(Ten.body, 404), qint64(10), -1, 10);
        row("dropped", HttpAnswer(Ten).dropAfter(5), qint64(10), 200, 5);
        row("server announces more", HttpAnswer(Ten).announce(20).dropAfter(10), qint64(10), -1, 10);
        row("endless", HttpAnswer().generate(HttpAnswer::Endless), qint64(10), 200,
            int(10 + DownloadManager::maxSurplusBytes));
        row("nothing", HttpAnswer::raw(""), qint64(10), 0, 0);
        row("largest size", Ten, qint64(-1), 200, 10);
        row("size beyond 2^63", Ten, std::numeric_limits<qint64>::min(), 200, 10);
    }
    void outcomes()
    {
        QFETCH(HttpAnswer, answer);
        QFETCH(qint64, announced);
        QFETCH(int, status);
        proxy->route(PackageTarget, answer);
        Witness witness(manager.get());
        const PackageInfo asked = package(announced);
        manager->startDownload(asked, path);
        QVERIFY(witness.saw(status < 0 ? "BSs" : "BFf"));
        QCOMPARE(witness.status, status);
        QCOMPARE(witness.fileName, path);
        QCOMPARE(witness.pack.name, asked.name);
        QCOMPARE(witness.pack.localFile, status < 0 ? path : QString());
        QTEST(int(QFileInfo(path).size()), "size");
        QCOMPARE(proxy->targets().first(), PackageTarget);
    }

    void hashes_data()
    {
        columns<QByteArray, qint64, QString, bool>("of", "announced", "seen", "isKept");
        row("right", Ten.body, qint64(10), QString("BSs"), true);
        row("wrong", QByteArray("012345678x"), qint64(10), QString("BFf"), false);
        row("of the announced bytes, more came", Ten.body.left(9), qint64(9), QString("BFf"), false);
        row("right, less than announced", Ten.body, qint64(11), QString("BFf"), true);
        row("wrong, no size", QByteArray(), qint64(0), QString(), false);
    }
    void hashes()
    {
        QFETCH(QByteArray, of);
        QFETCH(qint64, announced);
        QFETCH(QString, seen);
        proxy->route(PackageTarget, Ten);
        Witness witness(manager.get());
        PackageInfo asked = package(announced);
        asked.sha256 = QCryptographicHash::hash(of, QCryptographicHash::Sha256).toHex();
        manager->startDownload(asked, path);
        QVERIFY(QTest::qWaitFor([&] { return !manager->isQueryBusy(); }));
        QCOMPARE(witness.order, seen);
        QTEST(QFileInfo::exists(path), "isKept");
    }

    void packageWithoutSizeStaysSilent()
    {
        proxy->route(PackageTarget, HttpAnswer().generate(3 * MiB));
        Witness witness(manager.get());
        manager->startDownload(package(0), path);
        QVERIFY(QTest::qWaitFor([&] { return !manager->isQueryBusy(); }, 30'000));
        QCOMPARE(witness.order, QString());
        QCOMPARE(QFileInfo(path).size(), 3 * MiB);
    }

    void badTargets()
    {
        proxy->route(PackageTarget, HttpAnswer().generate(HttpAnswer::Endless));
        for (const char *target : { "/nowhere/p.zip", "/dev/full", "/usr/bin" }) { // which has a size
            Witness witness(manager.get());
            manager->startDownload(package(10), target);
            QVERIFY2(witness.saw("BFf") && witness.status == 200, target);
        }
    }

    void leavesRoomOnTheDisk()
    {
        const SmallDisk disk(folder->path().toLocal8Bit(), 70);
        if (!disk.isMounted())
            QSKIP("This user may not mount a small disk.");
        proxy->route(PackageTarget, HttpAnswer().generate(HttpAnswer::Endless));
        for (const qint64 size : { 0 * MiB, 40 * MiB }) {
            Witness witness(manager.get());
            manager->startDownload(package(size), path);
            QVERIFY(QTest::qWaitFor([&] { return !manager->isQueryBusy(); }, 60'000));
            QCOMPARE(witness.order, QString(size == 0 ? "" : "BFf"));
            QVERIFY(QFileInfo(path).size() <= 12 * MiB);
        }
    }

    void managerWithoutServerRelaysNothing()
    {
        DownloadManager bare;
        bare.server() = manager->server();
        proxy->route(PackageTarget, Ten);
        QSignalSpy progress(&bare, &DownloadManager::downloadProgress);
        Witness witness(&bare);
        bare.startDownload(package(10), path);
        QVERIFY(witness.saw("Ss") && progress.isEmpty());
    }

    void abortLeavesWhatCameAndWhatElseWaits()
    {
        proxy->route(PackageTarget, HttpAnswer(Ten).holdAfter(4));
        proxy->route("/c", HttpAnswer("<softwareList/>"));
        Witness witness(manager.get());
        QSignalSpy finished(manager.get(), &DownloadManager::queryFinished);
        manager->abortDownload();
        manager->startDownload(package(10), path);
        QSignalSpy progress(manager.get(), &DownloadManager::downloadProgress);
        QVERIFY(progress.wait());
        manager->server().server.setUrl(QUrl("http://s.example:81"));
        manager->server().path = "/c";
        manager->queryUpdate();
        manager->abortDownload();
        QCOMPARE(QFileInfo(path).size(), qint64(4));
        QVERIFY(finished.wait());
        QCOMPARE(witness.order, QString("ABA"));
        QCOMPARE(proxy->targets().last(), QByteArray("http://s.example:81/c"));
    }

    // In flight is a download from startDownload() on, whatever it waits for.
    void abortDropsWhatWaits()
    {
        proxy->route("http://s.example/c", QByteArray("<softwareList><package/></softwareList>"));
        proxy->route(PackageTarget, Ten);
        for (const bool inSlot : { false, true }) {
            manager->setServer(QUrl("http://s.example/c"));
            Witness witness(manager.get());
            QSignalSpy finished(manager.get(), &DownloadManager::queryFinished);
            const auto startAndAbort = [&] {
                manager->startDownload(package(10), path);
                manager->abortDownload();
            };
            manager->queryUpdate();
            if (inSlot)
                connect(manager.get(), &DownloadManager::packageFound, this, startAndAbort);
            else
                startAndAbort();
            QVERIFY(QTest::qWaitFor([&] { return !manager->isQueryBusy(); }));
            QCOMPARE(finished.count(), inSlot ? 1 : 0);
            QCOMPARE(witness.order, QString("A"));
        }
    }

    void managerMayBeDeletedInItsSignals()
    {
        proxy->route(PackageTarget, Ten);
        for (const auto &[order, announced] :
             { std::pair("B", 10), { "BS", 10 }, { "BSs", 10 }, { "BF", 11 }, { "BFf", 11 } }) {
            auto doomed = new DownloadManager(manager->server(), QString());
            Witness witness(doomed, QString(order).right(1));
            doomed->startDownload(package(announced), path);
            QVERIFY2(witness.saw(order), order);
        }
    }

    void releaseNotes()
    {
        const QUrl asked("https://notes.example:8443/n.html#new");
        proxy->route("http://notes.example/elsewhere", HttpAnswer("elsewhere"));
        QSignalSpy notes(manager.get(), &DownloadManager::releaseNotesDownloaded);
        manager->downloadReleaseNotes(QUrl());
        QCOMPARE(notes.takeFirst(), QVariantList({ QUrl(), QString() })); // at once
        for (const auto &[answer, text] : { std::pair(HttpAnswer("Grüße"), "Grüße"),
                                            { HttpAnswer::redirect("/elsewhere"), "elsewhere" },
                                            { HttpAnswer("made", 201), "" },
                                            { HttpAnswer("gone", 404), "" },
                                            { HttpAnswer::raw(""), "" } }) {
            proxy->route("http://notes.example/n.html", answer);
            manager->downloadReleaseNotes(asked);
            QVERIFY(notes.wait());
            QCOMPARE(notes.takeFirst(), QVariantList({ asked, QString(text) }));
        }
    }

    void directDownloadLeavesForPort80()
    {
        HttpServer server(QHostAddress("127.0.0.31"), 80);
        if (!server.isListening())
            QSKIP("This user may not listen on port 80 of 127.0.0.31.");
        server.route("/p.zip", Ten);
        DownloadManager direct(QUrl("http://127.0.0.1:1/c"));
        Witness witness(&direct);
        direct.startDownload(package(10, "https://127.0.0.31:8443/p.zip"), path);
        QVERIFY(witness.saw("BSs"));
    }

private:
    std::unique_ptr<QTemporaryDir> folder;
    QString path;
    std::unique_ptr<HttpServer> proxy;
    std::unique_ptr<DownloadManager> manager;
};

QTEST_GUILESS_MAIN(tst_download)
#include "tst_download.moc"
