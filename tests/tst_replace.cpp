// A "zip" package in the place of the application: a child in a folder of its own installs it with client, policy and
// the real updater. Looked at is what all that wrote, and what stands there when the last of it has ended.
#include "BoxClicker.h"
#include "DownloadManager.h"
#include "FileUtils.h"
#include "HttpServer.h"
#include "NodeDB.h"
#include "Row.h"
#include "TestHost.h"
#include "ZipBuilder.h"

#include <QtWidgets>

#include <iostream>
#include <unistd.h>

using namespace qv;

Q_DECLARE_METATYPE(QList<ZipItem>)

namespace {

/// Installs what the server at the port @p arguments[0] offers, answers the boxes with those from the third on, and
/// ends: behind the last box, or when @p arguments[1] comes to pass.
void runHost(const QStringList &arguments)
{
    const QStringList answers = arguments.mid(2);
    const QString when = arguments[1];
    BoxClicker clicker(answers);
    TestHost host;
    NodeDB::getDB().setGlobalProxy(NetworkProxy("127.0.0.1", arguments[0].toInt()));
    auto client =
        std::make_unique<SoftwareUpdateClient>("P", VersionNumber("1.0"), "http://updates.example/xml", &host.window);
    for (const char *key : { "supportedPackageTypes", "installablePackageTypes" })
        TestHost::set(key, "zip");
    UpdatePolicy policy;
    policy.replacesApplication = true;
    client->setPolicy(policy);
    clicker.onBox = [&] {
        if (when == "asked" && clicker.boxes.size() == 2)
            client.reset();
    };

    QTimer watch; // what it waits for is there for a moment only
    bool isCancelled = false, isBegun = false, isRepeated = false;
    QObject::connect(&watch, &QTimer::timeout, &host.window, [&] {
        if (!std::exchange(isBegun, isBegun || (host.availableDialog() && host.availableDialog()->isVisible()))) {
            if (isBegun)
                QTimer::singleShot(0, &host.window, [&] { emit host.availableDialog()->installPackage(0); });
            return;
        }
        if (clicker.boxes.size() == 2 && answers.size() > 2 && !QApplication::activeModalWidget()
            && !std::exchange(isRepeated, true)) {
            isBegun = false;
            return client->checkForUpdate();
        }
        const auto *dialog = host.window.findChild<QProgressDialog *>();
        const bool unpacks = dialog && dialog->labelText() == "Unpacking 'p.zip'";
        if (unpacks && when == "cancelled" && !std::exchange(isCancelled, true))
            dialog->findChild<QPushButton *>()->click();
        bool owns = false;
        for (const QObject *child : client ? client->children() : QObjectList())
            owns = owns || child->inherits("qv::Replacement");
        if (isCancelled                 ? !owns && !unpacks
                : when == "unpacking"   ? unpacks
                : when == "downloading" ? dialog && dialog->value() == 3
                                        : clicker.boxes.size() == answers.size() && !QApplication::activeModalWidget())
            QCoreApplication::quit();
    });
    watch.start();
    client->checkForUpdate();
    QCoreApplication::exec();
    if (when == "client goes")
        client.reset();
    std::cout << "boxes:\n" << clicker.boxes.join('\n').toStdString() << "\n1.0 ends" << std::endl;
}

bool shell(const QString &command)
{
    return QProcess::execute("sh", { "-ec", command }) == 0;
}

} // namespace

class ReplaceTest : public QObject
{
    Q_OBJECT

private slots:
    void replaces_data()
    {
        // work: a shell's, in the folder of the application, which is %1 in what is told
        columns<QList<ZipItem>, QString, QStringList, QStringList, bool>("package", "work", "host", "says", "isNew");

        const auto program = [](const char *path, const char *end = "") {
            return ZipItem(path, QByteArray("#!/bin/sh\necho 2.0 runs $QV_UPDATE_RESULT\n") + end, S_IFREG | 0755);
        };
        const QList<ZipItem> sound { program("tst_replace"), ZipItem("sub/data") };
        const QList<ZipItem> large { program("tst_replace"), ZipItem("big", QByteArray(30 << 20, 'x')).deflate() };
        const QString failed = "\nCritical|Installation failed|The update cannot be installed: %2.|OK:Accept\n1.0 ends";
        const QStringList now { "", "Proceed", "Restart now" }, later { "", "Proceed", "Restart later" };
        const QStringList fails { "", "Proceed", "OK" };
        const QString missing = QString(failed).replace("%2", "the package does not hold the program tst_replace");

        row("now", sound, ":", now, QStringList("2.0 runs updated\n"), true);
        row("now, one folder deep",
            QList<ZipItem> { ZipItem("v2/", "", S_IFDIR | 0555), program("v2/tst_replace"), ZipItem("v2/sub/data") },
            ":", now, QStringList("2.0 runs updated\n"), true);
        row("now, and it fails", QList<ZipItem> { program("tst_replace", "exit 3") }, ":", now,
            QStringList { "2.0 runs updated\n", "1.0 told 3: the new program ended with exit code 3\n" }, false);
        row("later", sound, ":", later, QStringList { "1.0 ends\n", "the new version is installed\n" }, true);
        row("later, twice", sound, ":", later + later.mid(1), QStringList("the new version is installed\n"), true);
        row("later, the client goes before the host", sound, ":", QStringList { "client goes" } + later.mid(1),
            QStringList("the new version is installed\n"), true);
        row("the client goes while it asks", sound, ":", QStringList { "asked" } + now.mid(1),
            QStringList("\n1.0 ends"), false);
        row("without the program", QList<ZipItem> { program("other"), program("bin/tst_replace") }, ":", fails,
            QStringList(missing), false);
        row("two deep", QList<ZipItem> { program("a/b/tst_replace") }, ":", fails, QStringList(missing), false);
        row("not executable", QList<ZipItem> { ZipItem("tst_replace", "x") }, ":", fails, QStringList(missing), false);
        row("damaged", QList<ZipItem> { program("tst_replace"), ZipItem("<b>", "x").checksum(1) }, ":", fails,
            QStringList { "|Installation failed|Downloaded file could not be unpacked:\np.zip: ", "b>" }, false);
        row("cancelled", large, ":", QStringList { "cancelled", "Proceed" }, QStringList("\n1.0 ends"), false);
        row("ends while it unpacks", large, ":", QStringList { "unpacking", "Proceed" }, QStringList("\n1.0 ends"),
            false);
        row("ends while it downloads", large, ":", QStringList { "downloading", "Proceed" }, QStringList("\n1.0 ends"),
            false);

        // Before anything is asked: the first box is the last.
        const auto refuse = [&](const char *title, const char *work, const char *why) {
            row(title, sound, work, QStringList { "", "OK" },
                QStringList("boxes:" + QString(failed).replace("%2", why)), false);
        };
        refuse("without an updater", "rm UpdateInstaller", "the program UpdateInstaller is missing in the folder %1");
        refuse("not to be written", "chmod a-w .", "you may not write the folder %1");
        refuse("nor around it", "chmod a-w ..", "you may not write the folder %1/..");
        if (geteuid() == 0)
            refuse("written by others", "chmod o+w ..", "others may write the folder %1/.., too");
    }

    /// Old or new, whole, and nothing beside it but the updater, which is a fresh copy, and its log.
    void replaces()
    {
        QFETCH(QList<ZipItem>, package);
        QFETCH(QString, work);
        QFETCH(QStringList, host);
        QFETCH(QStringList, says);
        QFETCH(bool, isNew);
        const QTemporaryDir scratch(QDir::tempPath() + "/replace-XXXXXX");
        const QString place = scratch.filePath("place"), app = place + "/app";
        QVERIFY(shell(QString("mkdir -p '%1' '%2/tmp'; cp '%3' '%4' '%1'; printf '#!/bin/sh\nexit 9' >'%2/place/%5'; "
                              "chmod +x '%2/place/%5'; cd '%1'; %6")
                          .arg(app, scratch.path(), QCoreApplication::applicationFilePath(), UPDATE_INSTALLER,
                               "UpdateInstaller", work)));
        const QByteArray archive = ZipBuilder::archive(package);
        HttpServer server;
        server.route("http://updates.example/xml",
                     HttpAnswer("<s><package name='Camera Host' release='2.0' status='STABLE' file-size='"
                                + QByteArray::number(archive.size()) + "' url='http://packages.example/p.zip'/></s>"));
        server.route("http://packages.example/p.zip",
                     HttpAnswer(archive).holdAfter(host[0] == "downloading" ? 3 : archive.size()));

        QProcess process; // cat ends with the last that writes
        process.setProcessChannelMode(QProcess::MergedChannels);
        QStringList words { "env",
                            "LC_ALL=C.UTF-8",
                            "TMPDIR=" + scratch.filePath("tmp"),
                            app + "/tst_replace",
                            "--host",
                            QString::number(server.serverPort()) };
        if (geteuid() == 0) // permissions hold for root, too
            words = QStringList { "setpriv", "--bounding-set=-dac_override,-dac_read_search" } + words;
        process.start("sh", QStringList { "-c", "\"$@\" 2>&1 | cat", "sh" } + words + host);
        QVERIFY(QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 60'000));

        const QString output = QString::fromUtf8(process.readAll());
        for (QString text : says)
            QVERIFY2(output.contains(text.replace("%1/..", place).replace("%1", app)), qPrintable(output));
        QVERIFY2(!output.contains("Sanitizer") && output.count("updating ") <= 1, qPrintable(output));
        QCOMPARE(output.contains("2.0 runs"), says[0].startsWith("2.0"));
        QVERIFY(shell(QString("chmod u+w '%1' '%2'").arg(app, place)));
        QCOMPARE(QFile(app + "/tst_replace").size() < 100, isNew);
        QCOMPARE(QFile::exists(app + "/sub/data"), isNew);
        QStringList names { "UpdateInstaller", "app" };
        if (isNew || output.contains("1.0 told"))
            names.append("app.update.log");
        QCOMPARE(QDir(place).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name), names);
        QCOMPARE(QDir(scratch.filePath("tmp")).entryList({ "qv-*" }), QStringList());
    }
};

int main(int argc, char *argv[])
{
    const UpdateResult told = DownloadManager::lastUpdateResult();
    if (told.kind != UpdateResult::None) {
        std::cout << "1.0 told " << told.kind << ": " << told.text.toStdString() << std::endl;
        return qEnvironmentVariableIsSet("QV_UPDATE_RESULT");
    }
    QApplication application(argc, argv);
    if (application.arguments().value(1) == "--host")
        return runHost(application.arguments().mid(2)), 0;
    ReplaceTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_replace.moc"
