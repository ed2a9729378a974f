// Packages that installers of the host's own install: from the question to the last word, and whatever goes meanwhile.
#include "BoxClicker.h"
#include "HttpServer.h"
#include "NodeDB.h"
#include "PackageInstaller.h"
#include "Row.h"
#include "TestHost.h"

#include <QtWidgets>

using namespace qv;

namespace {

const QString one = "Question|Install Package|The package will be downloaded and installed. Your application goes on "
                    "running.\n\nP1 <b>2|Cancel Install:Reject,Proceed:Accept";
const QString three = "Question|Install Package|3 packages will be downloaded and installed one after the other. Your "
                      "application goes on running.|Cancel Install:Reject,Proceed:Accept";
const QString done = "Information|Install Package|P1 <b>2 has been installed.|OK:Accept";
const QString fault = "Critical|Installation failed|P1 <b>2 could not be installed.";

QString failed(const QString &why)
{
    return fault + "\n\n" + why + "|OK:Accept";
}

QStringList heard; // by installers

QProgressDialog *progressDialog()
{
    for (QWidget *widget : QApplication::allWidgets()) {
        if (auto *dialog = qobject_cast<QProgressDialog *>(widget); dialog && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

/// Does what it is told: a word for each step.
class Installer : public PackageInstaller
{
public:
    void install(const PackageInfo &package, const QString &file) override
    {
        heard << package.name + '=' + QFileInfo(file).fileName() + (package.localFile == file ? "" : "?");
        path = file;
        play(onInstall.value(qMin(int(heard.size()), int(onInstall.size())) - 1));
    }
    void cancel() override
    {
        heard << "cancel";
        play(onCancel);
    }

    void play(const QString &steps)
    {
        for (const QString &step : steps.split(' ', Qt::SkipEmptyParts)) {
            const auto act = [this, step] { this->act(step); };
            isLate ? QTimer::singleShot(0, this, act) : act();
        }
    }

    void act(const QString &step)
    {
        if (step == "progress")
            emit progress(heard.size() > 5 ? -7 : 1, heard.size() > 5 ? -1 : 2, "<i>" + QString(5000, 'x'));
        else if (step == "done")
            emit finished(true, QString());
        else if (step == "failed")
            emit finished(false, "<b>no");
        else if (step == "die")
            delete this;
        else if (step == "silence")
            qApp->findChild<QTimer *>("installerSilence")->start(0); // of two minutes
        else if (step == "cancel")
            progressDialog()->findChild<QPushButton *>()->click();
        else if (step == "look")
            seen = progressDialog()->findChild<QLabel *>()->text();
        else
            QVERIFY(QFile::remove(path));
    }

    QStringList onInstall; // of the first, the second...; the last again
    QString onCancel;
    bool isLate = false;
    QString path;
    QString seen;
};

/// A host whose client has found three packages, P1 to P3, over a proxy on loopback.
struct Host : TestHost
{
    explicit Host(const HttpAnswer &answer = HttpAnswer("content"), Installer *installer = nullptr)
        : installer(installer ? installer : new Installer), window(new QWidget),
          client(new SoftwareUpdateClient("P", VersionNumber("1"), "http://updates.example/xml", window))
    {
        heard.clear();
        NodeDB::getDB().setGlobalProxy(NetworkProxy("127.0.0.1", server.serverPort()));
        client->setCurrentCameraVersions(
            { { "P1", VersionNumber("1") }, { "P2", VersionNumber("1") }, { "P3", VersionNumber("1") } });
        setPolicy(*client);
        for (int number = 1; number <= 3; ++number) {
            const QByteArray name = "P" + QByteArray::number(number);
            catalogue += "<package name='" + name + "' platform='" + name
                + "' release='2' public-release='&lt;b&gt;2' status='STABLE' file-size='" + QByteArray::number(number)
                + "' url='http://h/" + name + ".rpk'/>";
            server.route("http://h/" + name + ".rpk", answer);
        }
        check(catalogue);
        QTRY_VERIFY(table() && table()->isVisible());
    }
    ~Host()
    {
        delete client;
        delete window;
        delete installer;
        NodeDB::getDB().setGlobalProxy(NetworkProxy());
    }

    void setPolicy(SoftwareUpdateClient &client) const
    {
        UpdatePolicy policy;
        policy.installers.insert("rpk", installer);
        client.setPolicy(policy);
    }
    void check(const QByteArray &packages)
    {
        server.route("http://updates.example/xml", "<s>" + packages + "</s>");
        client->checkForUpdate();
    }
    SoftwareUpdateAvailableDialog *table() const
    {
        return window ? window->findChild<SoftwareUpdateAvailableDialog *>() : nullptr;
    }
    QTableWidget *rows() const { return table()->findChild<QTableWidget *>(); }
    QPushButton *button() const { return table()->findChild<QPushButton *>("installPushButton"); }

    void install(bool isAll = false)
    {
        isAll ? rows()->selectAll() : rows()->selectRow(0);
        QVERIFY(button()->isEnabled());
        button()->click();
    }

    HttpServer server;
    QByteArray catalogue;
    QPointer<Installer> installer;
    QPointer<QWidget> window;
    QPointer<SoftwareUpdateClient> client;
};

} // namespace

class InstallersTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { qputenv("TMPDIR", temporary.path().toLocal8Bit()); }

    void one_data()
    {
        columns<QString, QString, QString, QString, int>("install", "cancel", "box", "heard", "left");
        const QString begun = "P1=P1.rpk", cancelled = begun + " cancel";
        row("done", "done", "", done, begun, 2);
        row("with progress", "progress progress done", "", done, begun, 2);
        row("told twice", "done failed", "", done, begun, 2);
        row("failed", "failed done", "", failed("<b>no"), begun, 3);
        row("the file is gone", "remove failed", "", failed("<b>no"), begun, 3);
        row("dead", "die", "", failed("The installer has ended unexpectedly."), begun, 3);
        row("silent", "silence", "done", failed("The installer does not respond."), cancelled, 3);
        row("cancelled", "progress cancel", "failed", failed("<b>no"), cancelled, 3);
        row("cancelled too late", "cancel cancel", "done", done, cancelled, 2);
        row("cancelled, no answer", "cancel", "silence", failed("The installer does not respond."), cancelled, 3);
        row("dead when cancelled", "cancel", "die", failed("The installer has ended unexpectedly."), cancelled, 3);
    }
    void one()
    {
        QFETCH(QString, install);
        for (const bool isLate : { false, true }) {
            BoxClicker clicker({ "Proceed" });
            Host host;
            host.installer->onInstall = QStringList { install };
            QFETCH(QString, cancel);
            host.installer->onCancel = cancel;
            host.installer->isLate = isLate;
            host.install();
            QFETCH(QString, box);
            QTRY_COMPARE(clicker.boxes, (QStringList { ::one, box }));
            QTEST(heard.join(' '), "heard");
            QTEST(host.rows()->rowCount(), "left");
            QCOMPARE(left(), QStringList());
            QVERIFY(!progressDialog());
        }
    }

    void several_data()
    {
        columns<QStringList, QString, QString, QString, int>("install", "box", "details", "heard", "left");
        const QStringList begun { "P1=P1.rpk", "P2=P2.rpk", "P3=P3.rpk" };
        const QString box = "|Install Package|Packages installed: %1 of 3|OK:Accept,Hide Details...:other";
        const QString installed = "P1 <b>2: installed.\nP2 <b>2: installed.\nP3 <b>2: installed.";
        row("all", QStringList { "done" }, "Information" + box.arg(3), installed, begun.join(' '), 0);
        row("one fails", QStringList { "done", "look failed", "progress done" }, "Warning" + box.arg(2),
            QString(installed).replace("2: installed.\nP3", "2: not installed. <b>no\nP3"), begun.join(' '), 1);
        row("cancelled", QStringList { "done", "look cancel failed" }, "Warning" + box.arg(1),
            "P1 <b>2: installed.\nP2 <b>2: cancelled. <b>no\nP3 <b>2: cancelled.", "P1=P1.rpk P2=P2.rpk cancel", 2);
        row("stuck", QStringList { "silence" }, "Warning" + box.arg(0),
            "P1 <b>2: not installed. The installer does not respond.\nP2 <b>2: not installed. The installer is busy "
            "with another package.\nP3 <b>2: not installed. The installer is busy with another package.",
            "P1=P1.rpk cancel", 3);
    }
    void several()
    {
        QFETCH(QStringList, install);
        BoxClicker clicker({ "Proceed" });
        Host host;
        host.installer->onInstall = install;
        QString details;
        clicker.onBox = [&] {
            details = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())->detailedText();
        };
        host.install(true);
        QFETCH(QString, box);
        QTRY_COMPARE(clicker.boxes, (QStringList { three, box }));
        QTEST(details, "details");
        QTEST(heard.join(' '), "heard");
        QVERIFY(host.installer->seen.isEmpty() || host.installer->seen.startsWith("2 of 3: P2 <b>2\u2028"));
        QFETCH(int, left);
        QTRY_COMPARE(host.table() && host.table()->isVisible() ? host.rows()->rowCount() : 0, left);
        QCOMPARE(this->left(), QStringList());
        emit host.installer->finished(true, "late");
        QCOMPARE(clicker.boxes.size(), 2);
    }

    void downloads()
    {
        const QString missing = failed("Error downloading! Http status code 404");
        for (const auto &[answer, box] : { std::pair(HttpAnswer("", 404), missing), { HttpAnswer("c").hold(), "" } }) {
            BoxClicker clicker({ "Proceed" });
            Host host(answer);
            host.install();
            if (box.isEmpty()) {
                QTRY_VERIFY(progressDialog() && left().size() == 1);
                progressDialog()->findChild<QPushButton *>()->click();
            }
            QTRY_VERIFY(host.button()->isEnabled());
            QCOMPARE(clicker.boxes, box.isEmpty() ? QStringList { ::one } : (QStringList { ::one, box }));
            QVERIFY(!progressDialog() && heard.isEmpty() && left().isEmpty());
        }
    }

    void selection()
    {
        Host host;
        QPointer<Installer> other = new Installer;
        UpdatePolicy policy;
        policy.installers.insert("rpk", other);
        host.client->setPolicy(policy);
        host.rows()->selectAll();
        QVERIFY(host.button()->isEnabled());
        delete other;
        host.rows()->selectRow(0);
        QVERIFY(!host.button()->isEnabled());
        host.rows()->selectAll();
        QVERIFY(!host.button()->isEnabled());
    }

    void busyWithAnotherClient()
    {
        BoxClicker clicker({ "Proceed", "Proceed" });
        Host host;
        host.install();
        QTRY_COMPARE(heard.size(), 1);
        Host second(HttpAnswer("content"), host.installer);
        second.install();
        QTRY_COMPARE(clicker.boxes.size(), 3);
        QCOMPARE(clicker.boxes.last(), failed("The installer is busy with another package."));
        emit host.installer->finished(true, "Restarts.");
        QTRY_COMPARE(clicker.boxes.size(), 4);
        QCOMPARE(clicker.boxes.last(), QString(done).replace("|OK", "\n\nRestarts.|OK"));
        QCOMPARE(left(), QStringList());
    }

    void deaths_data()
    {
        columns<QString, QString>("stage", "victim");
        for (const QString stage : { "question", "download", "install", "last box" }) {
            for (const QString victim : { "client", "window", "table", "installer", "check", "nothing found" })
                row(qPrintable(victim + " at " + stage), stage, victim);
        }
    }
    void deaths()
    {
        QFETCH(QString, stage);
        QFETCH(QString, victim);
        BoxClicker clicker({ "Proceed" });
        Host host(stage == "download" ? HttpAnswer("content").holdAfter(3) : HttpAnswer("content"));
        QSignalSpy held(&host.server, &HttpServer::held);
        const auto strike = [&] {
            if (victim == "client")
                delete host.client;
            else if (victim == "window")
                delete host.window;
            else if (victim == "table")
                host.table()->reject(), TestHost::release();
            else if (victim == "installer")
                delete host.installer;
            else
                host.check(victim == "check" ? QByteArray(host.catalogue).replace("P1", "Q1") : QByteArray());
        };
        if (stage == "question" || stage == "last box")
            host.installer->onInstall = QStringList { "done" };
        clicker.onBox = [&] {
            if (clicker.boxes.size() == (stage == "question" ? 1 : stage == "last box" ? 2 : 99))
                strike();
        };
        host.install();
        if (stage == "download")
            QVERIFY(!held.isEmpty() || held.wait());
        else if (stage == "install")
            QTRY_COMPARE(heard.size(), 1);
        if (stage == "download" || stage == "install") {
            strike();
            // Whoever works keeps his file until he has ended, even if nobody waits any more.
            QCOMPARE(left().size(),
                     victim == "installer" && stage == "install"     ? 0
                         : victim == "client" && stage == "download" ? 0
                                                                     : 1);
        }
        if (stage == "install" && victim == "client")
            QCOMPARE(heard.size(), 2);
        host.server.release();
        if (host.installer && (stage == "install" || stage == "download")) {
            QTRY_VERIFY(heard.size() > 0 || victim == "client");
            emit host.installer->finished(true, QString());
        }
        QTRY_COMPARE(left(), QStringList());
        QTRY_VERIFY(!QApplication::activeModalWidget() && !progressDialog());
    }

private:
    QStringList left() const { return QDir(temporary.path()).entryList({ "qv-*" }); }

    const QTemporaryDir temporary { QDir::tempPath() + "/tst_installers-XXXXXX" };
};

QTEST_MAIN(InstallersTest)

#include "tst_installers.moc"
