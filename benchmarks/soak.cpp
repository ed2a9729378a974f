// A long life of a host in one process: checks, downloads and installations against a server on loopback. Prints
// memory, threads and descriptors of this process and fails where they grow beyond the first hundred of a kind.
//   soak [CHECKS [DOWNLOADS [INSTALLATIONS]]]    10,000, 1,000 and 100 where nothing is said
// Installations go as far as the question whether to restart, which is answered with "later".
#include "BoxClicker.h"
#include "DownloadManager.h"
#include "FileUtils.h"
#include "HttpServer.h"
#include "NodeDB.h"
#include "ProcessFigures.h"
#include "TestHost.h"
#include "ZipBuilder.h"

#include <QApplication>
#include <QDirIterator>

#include <cstdio>
#include <malloc.h>

using namespace qv;

namespace {

constexpr double mebibytesAllowed = 3; // more than that within one kind of work is a leak
constexpr int msPatience = 60'000;

struct Figures
{
    double mebibytes = processFigure("VmRSS") / 1024;
    int threads = int(processFigure("Threads"));
    int descriptors = int(QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::NoDotAndDotDot | QDir::System).size());
};

template<class Condition>
void waitUntil(const Condition &isMet, const char *what)
{
    QElapsedTimer elapsed;
    QTimer watchdog; // wakes the loop below
    watchdog.start(1000);
    for (elapsed.start(); !isMet();) {
        if (elapsed.elapsed() > msPatience)
            qFatal("nothing came of: %s", what);
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        TestHost::release();
    }
}

/// The server, the proxy that packages come through, and a host that has updates to find.
struct Host : TestHost
{
    Host() : client("Host", VersionNumber("1.0"), "http://updates.example/catalogue", &window)
    {
        NodeDB::getDB().setGlobalProxy(NetworkProxy("127.0.0.1", server.serverPort()));
        for (const char *key : { "supportedPackageTypes", "installablePackageTypes" })
            set(key, "zip");
        const QByteArray zip = ZipBuilder::archive({ { "a", QByteArray(2 << 20, 'x') },
                                                     { "d/b", QByteArray(1 << 20, 'y') },
                                                     ZipItem("d/c", QByteArray(1 << 20, 'z')).deflate() });
        server.route("/host.zip", zip);
        server.route("/large.zip", HttpAnswer().generate(packageBytes));
        server.route("/catalogue",
                     "<softwareList><package name='Camera Host' release='2.0' status='STABLE' "
                     "url='http://updates.example/host.zip' file-size='"
                         + QByteArray::number(zip.size()) + "'/></softwareList>");
        qputenv("TMPDIR", temporary.path().toLocal8Bit());
    }

    void check()
    {
        client.checkForUpdate();
        waitUntil([this] { return availableDialog() && availableDialog()->isVisible(); }, "a check");
    }

    void closeTable()
    {
        availableDialog()->reject();
        waitUntil([this] { return !availableDialog(); }, "closing the table");
    }

    void download() const
    {
        PackageInfo package;
        package.url = QUrl(QStringLiteral("http://updates.example/large.zip"));
        package.fileSize = packageBytes;
        DownloadManager manager(package.url);
        bool isDone = false;
        QObject::connect(&manager, qOverload<>(&DownloadManager::downloadSuccess), [&isDone] { isDone = true; });
        manager.startDownload(package, temporary.filePath(QStringLiteral("large.zip")));
        waitUntil([&isDone] { return isDone; }, "a download");
        FileUtils::emptyFolder(temporary.path());
    }

    void install()
    {
        check();
        BoxClicker clicker({ "Proceed", "Restart later" });
        emit availableDialog()->installPackage(0);
        waitUntil([this, &clicker] { return clicker.boxes.size() == 2 && !hasPackage(); }, "an installation");
        FileUtils::emptyFolder(temporary.path());
    }

    /// A package goes from the disk when it has been unpacked.
    bool hasPackage() const
    {
        return QDirIterator(temporary.path(), { "*.zip" }, QDir::Files, QDirIterator::Subdirectories).hasNext();
    }

    static constexpr qint64 packageBytes = 1 << 20;
    HttpServer server;
    QTemporaryDir temporary;
    SoftwareUpdateClient client;
};

/// Threads of Qt end a little later than what they worked for, and what was freed is no leak.
void comeToRest()
{
    QTest::qWait(300);
    malloc_trim(0);
}

void show(const char *when, const Figures &figures)
{
    std::printf("  %-22s %8.1f %8d %12d\n", when, figures.mebibytes, figures.threads, figures.descriptors);
}

/// Returns whether the process is no larger behind @p count times than behind the first of them.
template<class Work>
bool endure(const char *name, int count, HttpServer &server, const Work &work)
{
    const int first = std::min(100, (count + 9) / 10);
    const Figures start;
    Figures early;
    for (int i = 1; i <= count; ++i) {
        work();
        server.requests.clear();
        if (i == first || i == count)
            comeToRest();
        if (i == first)
            early = Figures();
    }
    const Figures end;
    const bool isFlat = end.mebibytes <= early.mebibytes + mebibytesAllowed && end.threads <= early.threads
        && end.descriptors <= early.descriptors;
    std::printf("%-24s %8s %8s %12s\n", name, "MiB", "threads", "descriptors");
    show("at the start", start);
    show(qPrintable(QStringLiteral("after %1").arg(first)), early);
    show(qPrintable(QStringLiteral("after %1%2").arg(count).arg(isFlat ? "" : ", it grew")), end);
    std::fflush(stdout);
    return isFlat;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const auto count = [=](int place, int usual) { return place < argc ? QByteArray(argv[place]).toInt() : usual; };
    Host host;
    bool isFlat = endure("checks", count(1, 10'000), host.server, [&host] {
        host.check();
        host.closeTable();
    });
    isFlat = endure("downloads", count(2, 1000), host.server, [&host] { host.download(); }) && isFlat;
    isFlat = endure("installations", count(3, 100), host.server, [&host] { host.install(); }) && isFlat;
    return isFlat ? 0 : 1;
}
