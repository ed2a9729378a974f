// Downloads of packages and release notes, mostly over a proxy on loopback: there the requests tell which port they are
// meant for.
#include "DownloadManager.h"
#include "HttpServer.h"
#include "Row.h"

#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace qv;

Q_DECLARE_METATYPE(HttpAnswer)

namespace {

constexpr qint64 MiB = 1024 * 1024;

PackageInfo package(qint64 fileSize)
{
    PackageInfo info;
    info.name = "p";
    info.url = QUrl("http://packages.example:8099/dir/p 1.zip?v=2");
    info.fileSize = fileSize;
    return info;
}

const QByteArray PackageTarget = "http://packages.example/dir/p%201.zip?v=2";

/// Notes the signals of a manager in their order: S and s for success with and without package, F and f for failure,
/// B for the start, A for an abort.
class Witness : public QObject
{
    Q_OBJECT

public:
    explicit Witness(DownloadManager *manager)
    {
        connect(manager, SIGNAL(downloadStarted(PackageInfo, QString)), this, SLOT(started(PackageInfo, QString)));
        connect(manager, SIGNAL(downloadSuccess(PackageInfo, QString)), this, SLOT(success(PackageInfo, QString)));
        connect(manager, SIGNAL(downloadSuccess()), this, SLOT(success()));
        connect(manager, SIGNAL(downloadFailure(PackageInfo, QString)), this, SLOT(failure(PackageInfo, QString)));
        connect(manager, SIGNAL(downloadFailure(int)), this, SLOT(failure(int)));
        connect(manager, SIGNAL(downloadAborted()), this, SLOT(aborted()));
    }

    bool wait() { return isDone || QSignalSpy(this, &Witness::done).wait(60'000); }

    QString order;
    PackageInfo pack;
    QString fileName;
    int status = -1;
    QString deleteAt; // deletes the manager when that is noted

signals:
    void done();

private slots:
    void started(const PackageInfo &p, const QString &f) { note("B", p, f); }
    void success(const PackageInfo &p, const QString &f) { note("S", p, f); }
    void success() { note("s", pack, fileName); }
    void failure(const PackageInfo &p, const QString &f) { note("F", p, f); }
    void failure(int httpStatusCode)
    {
        status = httpStatusCode;
        note("f", pack, fileName);
    }
    void aborted() { note("A", pack, fileName); }

private:
    void note(const char *letter, const PackageInfo &p, const QString &f)
    {
        order += letter;
        pack = p;
        fileName = f;
        if (deleteAt == letter)
            delete sender();
        if (deleteAt == letter || *letter == 's' || *letter == 'f') {
            isDone = true;
            emit done();
        }
    }

    bool isDone = false;
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
        QTest::addColumn<HttpAnswer>("answer");
        QTest::addColumn<qint64>("announced");
        QTest::addColumn<int>("status"); // of a failure; -1: success
        QTest::addColumn<qint64>("size");

        const auto add = [](const char *name, const HttpAnswer &answer, qint64 announced, int status, qint64 size) {
            row(name, answer, announced, status, size);
        };
        const HttpAnswer ten("0123456789");
        add("exact", ten, 10, -1, 10);
        add("one byte short", ten, 11, 200, 10);
        add("longer", ten, 9, -1, 10);
        add("large", HttpAnswer().generate(30 * MiB), 30 * MiB, -1, 30 * MiB);
        add("chunked", HttpAnswer(ten).chunked(), 10, -1, 10);
        add("short error page", HttpAnswer("gone", 404), 10, 404, 4);
        add("error page as long as the package", HttpAnswer("0123456789", 404), 10, -1, 10);
        add("proxy wants a login", HttpAnswer("who?", 407).header("Proxy-Authenticate", "Basic realm=\"x\""), 10, 407,
            4);
        add("dropped", HttpAnswer(ten).dropAfter(5), 10, 200, 5);
        add("server announces more", HttpAnswer(ten).announce(20).dropAfter(10), 10, -1, 10);
        add("server announces less", HttpAnswer(ten).announce(5), 10, 200, 5);
        add("bad chunks", HttpAnswer::raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\nZZ\r\n"),
            10, 200, 3);
        add("compressed without being asked", HttpAnswer(ten).header("Content-Encoding", "gzip"), 10, -1, 10);
        add("endless", HttpAnswer().generate(HttpAnswer::Endless), 10, -1, 10 + DownloadManager::maxSurplusBytes);
        add("nothing", HttpAnswer::raw(""), 10, 0, 0);
        add("negative size", ten, -1, 200, 10);
        add("largest size", ten, std::numeric_limits<qint64>::max(), 200, 10);
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
        QVERIFY(witness.wait());
        QCOMPARE(witness.order, QString(status < 0 ? "BSs" : "BFf"));
        QCOMPARE(witness.status, status);
        QCOMPARE(witness.fileName, path);
        QCOMPARE(witness.pack.name, asked.name);
        QCOMPARE(witness.pack.localFile, status < 0 ? path : QString());
        QVERIFY(asked.localFile.isEmpty());
        QTEST(QFileInfo(path).size(), "size");
        QCOMPARE(proxy->targets().first(), PackageTarget);
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

    void badTargets_data()
    {
        QTest::addColumn<QString>("target");
        row("a folder", "/");
        row("no such folder", "/nowhere/p.zip");
        row("disk full", "/dev/full");
    }
    void badTargets()
    {
        QFETCH(QString, target);
        proxy->route(PackageTarget, HttpAnswer().generate(HttpAnswer::Endless));
        Witness witness(manager.get());
        manager->startDownload(package(10), target);
        QVERIFY(witness.wait());
        QCOMPARE(witness.order, QString("BFf"));
        QCOMPARE(witness.status, 200);
    }

    // A running program cannot be opened for writing, not even by root.
    void lockedTargetCountsAsEmptyWhateverLiesThere()
    {
        QVERIFY(QFile::copy("/bin/sleep", path));
        QProcess running;
        running.start(path, { "1000" });
        QVERIFY(running.waitForStarted());
        const qint64 size = QFileInfo(path).size();
        proxy->route(PackageTarget, HttpAnswer("0123456789"));
        Witness witness(manager.get());
        manager->startDownload(package(10), path);
        QVERIFY(witness.wait());
        QCOMPARE(witness.order, QString("BFf"));
        QCOMPARE(QFileInfo(path).size(), size);
        running.kill();
        QVERIFY(running.waitForFinished());
    }

    void managerWithoutServerRelaysNothing()
    {
        DownloadManager bare;
        bare.server() = manager->server();
        proxy->route(PackageTarget, HttpAnswer("0123456789"));
        QSignalSpy progress(&bare, &DownloadManager::downloadProgress);
        Witness witness(&bare);
        bare.startDownload(package(10), path);
        QVERIFY(witness.wait());
        QCOMPARE(witness.order, QString("Ss"));
        QCOMPARE(progress.count(), 0);
    }

    void abortLeavesWhatCame()
    {
        proxy->route(PackageTarget, HttpAnswer("0123456789").holdAfter(4));
        proxy->route("/c", HttpAnswer("<softwareList/>"));
        Witness witness(manager.get());
        QSignalSpy finished(manager.get(), &DownloadManager::queryFinished);
        manager->abortDownload();
        manager->startDownload(package(10), path);
        QSignalSpy progress(manager.get(), &DownloadManager::downloadProgress);
        QVERIFY(progress.wait());
        manager->abortDownload();
        QCOMPARE(QFileInfo(path).size(), qint64(4));
        manager->server().server.setUrl(QUrl("http://s.example:81"));
        manager->server().path = "/c";
        manager->queryUpdate();
        QVERIFY(finished.wait());
        QCOMPARE(witness.order, QString("ABA"));
        QCOMPARE(proxy->targets().last(), QByteArray("http://s.example:81/c"));
    }

    void managerMayBeDeletedInItsSignals_data()
    {
        QTest::addColumn<QString>("at");
        QTest::addColumn<qint64>("announced");
        QTest::addColumn<QString>("order");
        row("started", "B", qint64(10), "B");
        row("success with package", "S", qint64(10), "BS");
        row("success", "s", qint64(10), "BSs");
        row("failure with package", "F", qint64(11), "BF");
        row("failure", "f", qint64(11), "BFf");
    }
    void managerMayBeDeletedInItsSignals()
    {
        QFETCH(QString, at);
        QFETCH(qint64, announced);
        proxy->route(PackageTarget, HttpAnswer("0123456789"));
        Witness witness(manager.get());
        witness.deleteAt = at;
        manager->startDownload(package(announced), path);
        manager.release();
        QVERIFY(witness.wait());
        QTEST(witness.order, "order");
    }

    void releaseNotes_data()
    {
        QTest::addColumn<HttpAnswer>("answer");
        QTest::addColumn<QString>("text");
        row("found",
            HttpAnswer("Gr\xc3\xbc\xc3\x9f"
                       "e"),
            QString::fromUtf8("Grüße"));
        row("redirected", HttpAnswer::redirect("/elsewhere"), "elsewhere");
        row("another good status", HttpAnswer("made", 201), "");
        row("not found", HttpAnswer("gone", 404), "");
        row("no answer", HttpAnswer::raw(""), "");
    }
    void releaseNotes()
    {
        QFETCH(HttpAnswer, answer);
        proxy->route("http://notes.example/n.html", answer);
        proxy->route("http://notes.example/elsewhere", HttpAnswer("elsewhere"));
        QSignalSpy notes(manager.get(), &DownloadManager::releaseNotesDownloaded);
        manager->downloadReleaseNotes(QUrl("https://notes.example:8443/n.html"));
        QVERIFY(notes.wait());
        QCOMPARE(notes.first().at(0).toUrl(), QUrl("http://notes.example/n.html"));
        QTEST(notes.first().at(1).toString(), "text");
    }

    void releaseNotesOfNowhereAnswerAtOnce()
    {
        QSignalSpy notes(manager.get(), &DownloadManager::releaseNotesDownloaded);
        manager->downloadReleaseNotes(QUrl());
        QCOMPARE(notes.count(), 1);
        QCOMPARE(notes.first(), QVariantList({ QUrl(), QString() }));
    }

    void directDownloadLeavesForPort80()
    {
        HttpServer server(QHostAddress("127.0.0.31"), 80);
        if (!server.isListening())
            QSKIP("This user may not listen on port 80 of 127.0.0.31.");
        server.route("/p.zip", HttpAnswer("0123456789"));
        DownloadManager direct(QUrl("http://127.0.0.1:1/c"));
        Witness witness(&direct);
        PackageInfo info = package(10);
        info.url = QUrl("https://127.0.0.31:8443/p.zip");
        direct.startDownload(info, path);
        QVERIFY(witness.wait());
        QCOMPARE(witness.order, QString("BSs"));
    }

private:
    std::unique_ptr<QTemporaryDir> folder;
    QString path;
    std::unique_ptr<HttpServer> proxy;
    std::unique_ptr<DownloadManager> manager;
};

QTEST_GUILESS_MAIN(tst_download)
#include "tst_download.moc"
