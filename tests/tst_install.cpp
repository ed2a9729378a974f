// From a downloaded package to the program that takes over: unpacking, choosing a program, and each package type's road
// through a real download. What replaces the process runs in a child: this program once more, told what to do.
#include "BoxClicker.h"
#include "DownloadManager.h"
#include "FileUtils.h"
#include "HttpServer.h"
#include "IOException.h"
#include "LogCapture.h"
#include "NodeDB.h"
#include "TestHost.h"
#include "ZipBuilder.h"

#include <QtWidgets>

#include <iostream>

using namespace qv;

namespace {

const QString question = "Warning|Install Package|After downloading the package, the installer will automatically exit "
                         "and restart your application!|Cancel Install:Reject,Proceed:Accept";
const QString restart = "Warning|Restart required|Please restart your application to finish the installation process.|"
                        "Restart later:Reject,Restart now:Accept";
const QString installationFailed = "Critical|Installation failed|Installation process failed. If problem persists try "
                                   "manual install.|OK:Accept";
const unsigned Program = S_IFREG | 0755;
const QByteArray showArguments = "#!/bin/sh\nprintf '%s\\n' $$ \"$0\" \"$@\"\n";
const QByteArray zip = ZipBuilder::archive({ { "a", "x" } });
const QByteArray largeZip = ZipBuilder::archive({ ZipItem("big", QByteArray(30 << 20, 'x')).deflate() });

void writeProgram(const QString &path, const QByteArray &script)
{
    FileUtils::writeBytes(script, path);
    QFile::setPermissions(path, QFile::Permissions(0x7755));
}

/// A client that has found one package over the proxy on loopback at @p port, and begun to install it.
struct InstallingHost : TestHost
{
    explicit InstallingHost(int port) : client("P", VersionNumber("1.0"), "http://updates.example/xml", &window)
    {
        NodeDB::getDB().setGlobalProxy(NetworkProxy("127.0.0.1", port));
        for (const char *key : { "supportedPackageTypes", "installablePackageTypes" })
            set(key, "mpkg,zip,ZIP,msi,deb,rpk,tar.gz,bin");
        client.checkForUpdate();
        QTRY_VERIFY(availableDialog() && availableDialog()->isVisible());
        emit availableDialog()->installPackage(0);
    }
    ~InstallingHost() { NodeDB::getDB().setGlobalProxy(NetworkProxy()); }

    SoftwareUpdateClient client;
};

/// What the child does; a return value means that nothing has replaced it.
int runChild(const QStringList &arguments)
{
    const QString what = arguments.value(0);
    BoxClicker clicker(what == "client" ? QStringList { "Proceed", "Restart now" } : QStringList(), arguments.value(2));
    if (what == "update") {
        DownloadManager::startUpdate(arguments[1], arguments[2], arguments[3], arguments[4]);
    } else if (what == "unpack") {
        QTimer impatience;
        QObject::connect(&impatience, &QTimer::timeout, [&] {
            for (QWidget *widget : QApplication::topLevelWidgets()) {
                auto *progress = qobject_cast<QProgressDialog *>(widget);
                if (!progress || progress->wasCanceled() || arguments[3] != "cancelled while it unpacks")
                    continue;
                progress->cancel();
                clicker.boxes << "cancelled";
            }
        });
        impatience.start();
        try {
            DownloadManager().runInstaller(arguments[1]);
        } catch (const IOException &exception) {
            clicker.boxes << "thrown: " + exception.message();
        }
        clicker.boxes << (QGuiApplication::overrideCursor() ? "waiting" : "not waiting");
    } else {
        InstallingHost host(arguments[1].toInt());
        (void)QTest::qWaitFor([&] { return clicker.boxes.size() == 3; }, 60'000);
    }
    std::cout << clicker.boxes.join('\n').toStdString() << std::endl;
    return 0;
}

} // namespace

/// A desktop that gives @p receiver what it is asked to open; without one nothing can be opened.
struct Desktop
{
    explicit Desktop(QObject *receiver) { QDesktopServices::setUrlHandler("file", receiver, "open"); }
    ~Desktop() { QDesktopServices::unsetUrlHandler("file"); }
};

class InstallTest : public QObject
{
    Q_OBJECT

public:
    QStringList opened; // by the desktop
    Q_INVOKABLE void open(const QUrl &url) { opened << url.fileName(); }

private slots:
    void init()
    {
        scratch = std::make_unique<QTemporaryDir>(base);
        QVERIFY(QDir(scratch->path()).mkpath("tmp"));
        server = std::make_unique<HttpServer>();
        packages.clear();
        qputenv("TMPDIR", at("tmp").toLocal8Bit());
        QCoreApplication::setApplicationName("Camera Host");
    }

    void unzips()
    {
        LogCapture log;
        FileUtils::writeBytes(zip, at("p.zip"));
        DownloadManager manager;
        QSignalSpy done(&manager, &DownloadManager::unzippingDone);
        manager.unzipPackage(at("p.zip"));
        manager.unzipPackage(at("p.zip")); // only logs
        QVERIFY(done.wait());
        QCOMPARE(done.count(), 1);
        const QString folder = done[0][0].toString();
        QCOMPARE(temporary(), QStringList { QFileInfo(folder).fileName() });
        QCOMPARE(FileUtils::readBytes(folder + "/a"), QByteArray("x"));
        QVERIFY(!QFile::exists(at("p.zip")));
        const QString line = "DownloadManager::installPackage() -> trying to extract " + at("p.zip") + " to ";
        QVERIFY(log.lines()[0] == line + folder && log.lines()[1].startsWith(line));
        qputenv("TMPDIR", at("missing").toLocal8Bit());
        manager.unzipPackage(at("p.zip"));
        QVERIFY(log.lines().last().endsWith("unzipPackage() -> Could not create folder to unzip into!"));
    }

    void unzipFails()
    {
        BoxClicker clicker;
        FileUtils::writeBytes(ZipBuilder::archive({ { "../evil", "text" } }), at("p.zip"));
        DownloadManager manager;
        QSignalSpy done(&manager, &DownloadManager::unzippingDone);
        manager.unzipPackage(at("p.zip"));
        QTRY_COMPARE(clicker.boxes,
                     QStringList { "Critical|Camera Host|Downloaded file could not be unpacked:<br>p.zip: the entry "
                                   "'../evil' leads out of its folder|OK:Accept" });
        QVERIFY(done.isEmpty() && temporary().isEmpty() && QFile::exists(at("p.zip")));
    }

    void defaultExecutable()
    {
        // files: x: a program, -: a file, >: a link to the rest
        for (const auto &[files, program] : { std::pair("-readme -bin/data", ""),
                                              { "x1 x22 -333", "22" }, // the largest
                                              { "x1 xbin/222", "1" },
                                              { "-readme -doc/a xbin/deep/tool", "bin/deep/tool" },
                                              { ">run>bin/tool xbin/tool", "run" },
                                              { ">run>/bin/sh >etc>/bin xbin/tool", "bin/tool" },
                                              { ">bin/up>.. >run>run >bin/self>.", "" } }) {
            init();
            for (const QByteArray &file : QByteArray(files).split(' ')) {
                const QList<QByteArray> parts = file.mid(1).split('>');
                const QString path = at("out/" + parts[0]);
                QDir().mkpath(QFileInfo(path).path());
                if (file[0] == '>')
                    QVERIFY(QFile::link(parts[1], path));
                else if (file[0] == 'x')
                    writeProgram(path, parts[0]);
                else
                    FileUtils::writeBytes("a rather long text", path);
            }
            QCOMPARE(DownloadManager::findDefaultExecutable(QDir(at("out"))), QString(program));
        }
    }

    void setsAside()
    {
        DownloadManager manager;
        QVERIFY(!manager.hasInstallPackage());
        PackageInfo package("t", "n", "1", "s", QDateTime(), {}, {}, "zip", "");
        package.localFile = at("p.zip");
        package.fileSize = 4;
        manager.installLater(package, true);
        QVERIFY(manager.installPackage().spareFlag && manager.installPackage().name == "n");
        for (const QByteArray content : { "", "one", "four", "fiver" }) {
            QVERIFY(FileUtils::writeBytes(content, at("p.zip")));
            QCOMPARE(manager.hasInstallPackage(), content.size() == 4);
        }
        QVERIFY(FileUtils::writeBytes("4444", at("other.zip")));
        QVERIFY(QMetaObject::invokeMethod(&manager, "installLater", Q_ARG(QString, at("other.zip")),
                                          Q_ARG(QString, "updater"), Q_ARG(QString, "target")));
        QCOMPARE(manager.installPackage().localFile, at("other.zip"));
        QVERIFY(manager.hasInstallPackage());
    }

    void otherInstallersAreNotStarted()
    {
        for (const char *name : { "p.ZIP", "p.exe", "" })
            QVERIFY_EXCEPTION_THROWN(DownloadManager().runInstaller(name), ExceptionQt);
    }

    void updaterTakesOver()
    {
        writeProgram(at("\xc3\xbcpdater"), showArguments);
        const QStringList arguments { at("\xc3\xbcpdater"), "/old f\xc3\xb6lder", "", "pr\xc3\xb6g" };
        QCOMPARE(child(QStringList { "update" } + arguments),
                 (QStringList { "PID", arguments[0], "-oldDir", arguments[1], "-newDir", "", "-exe", arguments[3] }));
        QCOMPARE(child({ "update", at("missing"), "", "", "" }), QStringList { "" });
    }

    void zipInstaller()
    {
        const QByteArray package = ZipBuilder::archive({ { "readme", "text" }, { "bin/tool", "#!/bin/sh", Program } });
        const QString chooser = "Select Installation Path for 'p.zip'|" + QCoreApplication::applicationDirPath();
        // Of the folder's 16-bit characters only the first is seen.
        const QStringList words { "PID", "sh", "cp", "-fr", "%2", "/", "&&rm", "-fr", "%2", "&&" };
        const QString broken = "p.zip: this is no ZIP archive, or its end is missing";
        const QString box = "Critical|Unpacking failed|" + broken + "|OK:Accept";
        const QStringList self { QCoreApplication::applicationFilePath() };
        // what is told by the program; %1: the scratch folder, %2: the temporary one
        using Case = std::tuple<QString, QByteArray, QStringList>;
        for (const auto &[what, archive, output] :
             { Case("shell", package, words + QStringList("%1/chosen/bin/tool")),
               Case("shell, no program", zip, words + self), Case("no shell", package, { chooser, "waiting" }),
               Case("cancelled", package, { chooser, "not waiting" }),
               Case("cancelled while it unpacks", largeZip, { chooser, "cancelled", "waiting" }),
               Case("broken", package.left(99), { chooser, box, "thrown: " + broken, "not waiting" }) }) {
            init();
            FileUtils::writeBytes(archive, at("p.zip"));
            QVERIFY(QDir().mkpath(at("chosen")));
            if (what != "no shell")
                writeProgram(at("sh"), showArguments);
            const QStringList seen = child({ "unpack", at("p.zip"), what == "cancelled" ? "" : at("chosen"), what });
            QCOMPARE(temporary().size(), output[0] == "PID" || output.contains("cancelled") ? 1 : 0);
            QStringList expected = output;
            expected.replaceInStrings("%1", scratch->path());
            expected.replaceInStrings("%2", at("tmp/") + temporary().value(0).toUtf8());
            QCOMPARE(seen, expected);
        }
    }

    void outcomes()
    {
        const QString run = "SoftwareUpdateClient::install%1Package() -> trying to run %2";
        const QString unknown = "Critical|Download Error|Unknown package type! Installation cannot proceed!|OK:Accept";
        const QString error = "Critical|Download Error|Error downloading! Http status code 404|OK:Accept";
        const QString rejected = "SoftwareUpdateClient::installPackage() -> user rejected installation";
        const QString download =
            "SoftwareUpdateClient::downloadPackage() -> http://me@packages.example/dir/p.bin to %1";
        const QString unzip = "SoftwareUpdateClient::installZipPackage() -> unzipping %1 to ";
        // the file; the box besides the question; a line of the log, %1 for the file; the folders that stay, one alone
        // with the file
        for (const auto &[file, box, line, folders] :
             { std::tuple(QString("p.msi"), QString(), run.arg("MSI", "%1"), 1),
               { "p.deb", "", run.arg("DEB", "%1"), 1 },
               { "p.rpk", "", run.arg("RPK", "%1"), 1 },
               { "p.tar.gz", "", run.arg("TARGZ", "%1"), 1 },
               { "p.zip", restart, unzip, 2 },
               { "p.bin", unknown, download, 0 },
               { "p.ZIP", unknown, "", 0 },
               { "missing.deb", error, "", 0 },
               { "forged.zip", QString(error).replace("404", "200"), "", 0 }, // not what the catalogue has the hash of
               { "p.deb", "", rejected, 0 } }) {
            init();
            const Desktop desktop(this);
            LogCapture log;
            BoxClicker clicker(
                { line.contains("rejected") ? "Cancel Install" : "Proceed", box == restart ? "Restart later" : "OK" });
            bool mayShowProgress = false;
            clicker.onBox = [&] {
                for (const QWidget *widget : QApplication::allWidgets()) {
                    for (const QTimer *timer : widget->findChildren<QTimer *>())
                        mayShowProgress |= widget->inherits("QProgressDialog") && timer->isActive();
                }
            };
            InstallingHost host(serve(file, file.startsWith('m') ? HttpAnswer("", 404) : HttpAnswer(zip)));
            QTRY_COMPARE(clicker.boxes, box.isEmpty() ? QStringList { question } : (QStringList { question, box }));
            const QString target = log.lines().filter("downloadPackage() -> ").value(0).section(" to ", -1);
            const QString expected = QString(line).replace("%1", target);
            QTRY_VERIFY2(line.isEmpty() || log.lines().contains(expected), qPrintable(log.lines().join('\n')));
            QTRY_COMPARE(temporary().size(), folders); // the file goes with its folder
            QTRY_COMPARE(QFile::exists(target), folders == 1);
            QVERIFY(!QFileInfo(target).isExecutable() && opened.isEmpty()); // nothing is run
            host.release();
            QVERIFY(!mayShowProgress && !host.window.findChild<QProgressDialog *>());
            QCOMPARE(host.availableDialog() != nullptr, folders == 0 && !box.contains("type"));
        }
    }

    void duringTheDownload()
    {
        enum What { Cancelled, DialogClosed, TypeTakenAway, ClientAndWindowDestroyed };
        for (const What what : { Cancelled, DialogClosed, TypeTakenAway, ClientAndWindowDestroyed }) {
            init();
            LogCapture log;
            BoxClicker clicker({ "Proceed" });
            QSignalSpy held(server.get(), &HttpServer::held);
            auto host = std::make_unique<InstallingHost>(serve("p.deb", HttpAnswer("content").holdAfter(3)));
            QVERIFY(!held.isEmpty() || held.wait());
            auto *dialog = host->availableDialog()->findChild<QProgressDialog *>();
            QVERIFY(dialog && dialog->labelText() == "Downloading package to temporary folder...");
            QTRY_COMPARE(dialog->maximum(), 7);
            QTRY_COMPARE(dialog->value(), 3);
            if (what == Cancelled) {
                dialog->findChild<QPushButton *>()->click();
                QCOMPARE(temporary(), QStringList());
            } else if (what == DialogClosed) { // it goes on
                host->availableDialog()->reject();
                host->release();
                QVERIFY(!host->availableDialog());
                server->release();
                QTRY_VERIFY(log.lines().last().endsWith("trying to run " + downloaded("p.deb")));
            } else if (what == TypeTakenAway) {
                host->set("installablePackageTypes", "zip");
                server->release();
                QTRY_COMPARE(clicker.boxes.size(), 2);
                QVERIFY(clicker.boxes.takeLast().contains("Unknown package type!"));
                QTRY_COMPARE(temporary(), QStringList());
            } else { // and so does the manager, which nobody owns
                host.reset();
                server->release();
                QTRY_COMPARE(QFileInfo(downloaded("p.deb")).size(), 7);
                QVERIFY(log.lines().filter("trying to run").isEmpty());
            }
            QCOMPARE(clicker.boxes, QStringList { question });
        }
    }

    void unpackingOutlivesTheClient()
    {
        BoxClicker clicker({ "Proceed", "Restart later" });
        auto host = std::make_unique<InstallingHost>(serve("p.zip", HttpAnswer(largeZip)));
        QTRY_COMPARE(clicker.boxes.size(), 2);
        host.reset();
        QTRY_VERIFY(!QDirIterator(at("tmp"), { "p.zip" }, QDir::Files, QDirIterator::Subdirectories).hasNext());
    }

    void secondInstallBesideTheFirst()
    {
        LogCapture log;
        BoxClicker clicker({ "Proceed", "Proceed" });
        serve("a.deb", HttpAnswer("content").holdAfter(3));
        QSignalSpy held(server.get(), &HttpServer::held);
        InstallingHost host(serve("b.rpk", HttpAnswer("another")));
        QVERIFY(!held.isEmpty() || held.wait());
        clicker.onBox = [&] { // meanwhile there is nothing left to install
            server->route("http://updates.example/xml", HttpAnswer("<s/>"));
            host.client.checkForUpdate();
            QTRY_VERIFY(log.lines().last().endsWith("no update available"));
        };
        emit host.availableDialog()->installPackage(1);
        const QStringList files =
            log.lines().filter("downloadPackage() -> ").replaceInStrings(QRegularExpression(".* to "), "");
        QCOMPARE(files.size(), 2);
        QTRY_COMPARE(QFileInfo(files[1]).size(), 7);
        QVERIFY(log.lines().filter("trying to run").isEmpty()); // nobody hears of the second
        server->release();
        QTRY_COMPARE(log.lines().last(), "SoftwareUpdateClient::installDEBPackage() -> trying to run " + files[0]);
        QVERIFY(files[0].endsWith("/a.deb"));
        QCOMPARE(FileUtils::readBytes(files[0]), QByteArray("content"));
    }

    void macPackages()
    {
        for (const bool canOpen : { false, true }) {
            LogCapture log;
            BoxClicker clicker({ "Proceed" });
            const std::unique_ptr<Desktop> desktop(canOpen ? new Desktop(this) : nullptr);
            init();
            InstallingHost host(serve(
                "p.mpkg.zip", ZipBuilder::archive({ { "readme", "" }, { "b.mpkg", "x" }, { "a.mpkg/c.mpkg", "x" } })));
            const QString last =
                canOpen ? "/b.mpkg" : "SoftwareUpdateClient::installMPKGPackage, can't start package installer!";
            QTRY_VERIFY(log.lines().last().endsWith(last));
            const QStringList lines = log.lines().mid(log.lines().size() - 3);
            QVERIFY(lines[0].startsWith("SoftwareUpdateClient::unzippedMPKGPackage() -> unzipped succesfully to "));
            QCOMPARE(lines[1], "SoftwareUpdateClient::installMPKGPackage " + lines[0].section(' ', -1) + "/a.mpkg");
            QVERIFY(!QFile::exists(downloaded("p.mpkg.zip")));
        }
        QCOMPARE(opened, (QStringList { "a.mpkg", "b.mpkg" }));
    }

    void restartNow()
    {
        const QStringList handOver { "-oldDir", "%1/app", "-newDir", "", "-exe", "tst_install" };
        const QStringList failure { question, restart, installationFailed };
        const QByteArray old = QByteArray(showArguments).replace("$$", "$$ old");
        // beside the application; one folder above: a program, or a link to nowhere; %1: the scratch folder
        using Case = std::tuple<QByteArray, QByteArray, QStringList>;
        for (const auto &[updater, present, output] :
             { Case(showArguments, "", QStringList { "PID", "%1/UpdateInstaller" } + handOver),
               Case(showArguments, old, QStringList { "PID", "old", "%1/UpdateInstaller" } + handOver),
               Case("", old, failure), Case(showArguments, ">no/such/folder", failure) }) {
            init();
            QVERIFY(QDir().mkpath(at("app")));
            QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), at("app/tst_install")));
            if (!updater.isEmpty())
                writeProgram(at("app/UpdateInstaller"), updater);
            if (present.startsWith('>'))
                QVERIFY(QFile::link(present.mid(1), at("UpdateInstaller")));
            else if (!present.isEmpty())
                writeProgram(at("UpdateInstaller"), present);
            QStringList expected = output;
            expected.replaceInStrings("%1", scratch->path());
            QCOMPARE(child({ "client", QString::number(serve("p.zip", zip)) }, at("app/tst_install")), expected);
        }
    }

private:
    QString at(const QByteArray &name) const { return scratch->filePath(QString::fromUtf8(name)); }
    QStringList temporary() const { return QDir(at("tmp")).entryList({ "qv-*" }); }

    /// The path of a downloaded file, while it is alone.
    QString downloaded(const QString &file) const { return at("tmp/") + temporary().value(0) + '/' + file; }

    /// Puts one more package on the server, whose port it returns.
    int serve(const QString &file, const HttpAnswer &answer)
    {
        const QByteArray path = "packages.example/dir/" + file.toUtf8();
        packages += "<package name='Camera Host' release='2.0' status='STABLE' file-size='"
            + QByteArray::number(answer.body.size() + (answer.status == 200 ? 0 : 9)) + "' release-date='2026-01-0"
            + QByteArray::number(packages.count("url") + 1) + "' url='http://me:s3cret@" + path
            + (file.startsWith('f') ? "' sha256='" + QByteArray(64, '0') : QByteArray()) + "'/>";
        server->route("http://updates.example/xml", HttpAnswer("<softwareList>" + packages + "</softwareList>"));
        server->route("http://" + path, answer);
        return server->serverPort();
    }

    /// Runs this program as a child and returns what it, or what replaced it, wrote: a line each, its process id as
    /// PID.
    QStringList child(const QStringList &arguments, const QString &path = QCoreApplication::applicationFilePath()) const
    {
        QProcess process;
        process.setWorkingDirectory(scratch->path());
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start("env", QStringList { "LC_ALL=C.UTF-8", path, "--child" } + arguments);
        const QString id = QString::number(process.processId());
        if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 60'000))
            return { "still running" };
        QStringList lines = QString::fromUtf8(process.readAllStandardOutput()).split('\n');
        lines.removeLast();
        if (lines.value(0) == id)
            lines[0] = "PID";
        return lines;
    }

    const QString base = QDir::tempPath() + "/tst_install-XXXXXX"; // each test sets another folder
    std::unique_ptr<QTemporaryDir> scratch;
    std::unique_ptr<HttpServer> server;
    QByteArray packages; // in its catalogue
};

/// The managers of installations are never freed, by design.
extern "C" Q_DECL_EXPORT const char *__lsan_default_suppressions() // NOLINT(bugprone-reserved-identifier)
{
    return "leak:qv::SoftwareUpdateClient*install\nleak:qv::HttpClient::";
}

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    if (application.arguments().value(1) == "--child")
        return runChild(application.arguments().mid(2));
    InstallTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_install.moc"
