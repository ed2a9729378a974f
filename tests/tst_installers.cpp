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
            heard.clear();
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

private:
    QStringList left() const { return QDir(temporary.path()).entryList({ "qv-*" }); }

    const QTemporaryDir temporary { QDir::tempPath() + "/tst_installers-XXXXXX" };
};

QTEST_MAIN(InstallersTest)

#include "tst_installers.moc"
