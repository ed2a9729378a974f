// What a host's policy changes: client and manager against a server, beyond the defaults.
#include "DownloadManager.h"
#include "HttpServer.h"
#include "LogCapture.h"
#include "Row.h"
#include "Signer.h"
#include "TestHost.h"

#include <QtWidgets>

using namespace qv;

Q_DECLARE_METATYPE(HttpAnswer)

namespace {

const QByteArray hash(64, 'a');
const QByteArray application = "<package name='Camera Host' release='2.0' status='STABLE' url='http://h/a.deb' "
                               "file-size='7' sha256='"
    + hash + "'/>";
const QByteArray unvouched = "<package name='Camera Host' release='3.0' status='STABLE' url='http://h/b.deb'"
                             " file-size='7'/>";

QByteArray catalogue(int serial, const QByteArray &packages = application, const char *expires = "2999-01-01T00:00:00Z")
{
    return "<softwareList serial='" + QByteArray::number(serial) + "' expires='" + expires + "'>" + packages
        + "</softwareList>";
}

} // namespace

class tst_policy : public QObject
{
    Q_OBJECT

    struct Fixture : TestHost
    {
        explicit Fixture(const QStringList &keys)
            : client("P", VersionNumber("1.0"), server.url("/c").toString(), &window)
        {
            policy.trustedKeys = keys;
            client.setPolicy(policy);
        }

        void publish(const QByteArray &bytes, const HttpAnswer &signature)
        {
            server.route("/c", HttpAnswer(bytes));
            server.route("/c.minisig", signature);
        }

        /// What the settings dialog says after "Check Now"; nothing when the table has come up.
        QString check()
        {
            client.queryForUpdate();
            auto *button = settingsDialog()->findChild<QPushButton *>("updatePushButton");
            button->click();
            if (!QTest::qWaitFor([&] { return availableDialog() || button->isEnabled(); }, 30'000))
                return "no end";
            return availableDialog() ? QString() : notification();
        }

        HttpServer server;
        UpdatePolicy policy;
        SoftwareUpdateClient client;
        LogCapture log;
    };

    /// How many packages a manager finds, -1 without an end.
    static int foundBy(DownloadManager &manager)
    {
        int count = 0;
        connect(&manager, &DownloadManager::packageFound, [&count](const PackageInfoList &all) { count = all.size(); });
        QSignalSpy finished(&manager, &DownloadManager::queryFinished);
        manager.queryUpdate();
        return finished.wait(30'000) ? count : -1;
    }

    const Signer publisher, stranger;

private slots:
    void seals_data()
    {
        columns<QByteArray, HttpAnswer, QString>("bytes", "signature", "told");
        const auto signedBy = [](const Signer &signer, const QByteArray &bytes) {
            return HttpAnswer(signer.sign(bytes));
        };
        const QByteArray good = catalogue(7);
        const QString notSigned = "is not signed", notThat = "is not what the publisher signed";
        row("sealed", good, signedBy(publisher, good), QString());
        row("none", good, HttpAnswer("gone", 404), notSigned);
        row("an error page", good, HttpAnswer("<html/>"), notSigned);
        row("longer than any", good, HttpAnswer(publisher.sign(good) + QByteArray(5000, '\n')), notSigned);
        row("of a stranger", good, signedBy(stranger, good), notThat);
        row("of another catalogue", good, signedBy(publisher, catalogue(8)), notThat);
        row("not sealed", QByteArray("<softwareList/>"), signedBy(publisher, "<softwareList/>"), notSigned);
        const QByteArray late = catalogue(7, application, "2020-01-01T00:00:00Z");
        row("expired", late, signedBy(publisher, late), QString("was valid until"));
        const QByteArray old = catalogue(3);
        row("older than the last", old, signedBy(publisher, old), QString("is older than one that was seen"));
        const QByteArray empty = catalogue(7, unvouched);
        row("nothing vouched for", empty, signedBy(publisher, empty), QString("No update available!"));
        row("no server", good, HttpAnswer::raw(""), QString("Connection closed"));
    }
    void seals()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(HttpAnswer, signature);
        QFETCH(QString, told);
        Fixture f({ "no key", publisher.key() });
        QVERIFY(f.log.take().join(' ').contains("no public key: no key"));
        TestHost::store().setValue("seals/" + publisher.name() + "/serial", 5);
        f.client.setPolicy(f.policy);
        f.publish(bytes, signature);
        const QString text = f.check();
        QVERIFY2(told.isEmpty() ? text.isEmpty() : text.contains(told), qPrintable(text));
        QCOMPARE(f.server.targets().mid(0, 2), QList<QByteArray>({ "/c", "/c.minisig" }));
        QCOMPARE(TestHost::store().value("seals/" + publisher.name() + "/serial").toInt(),
                 told.isEmpty() || told.startsWith("No update") ? 7 : 5);

        QTemporaryDir folder;
        QSettings settings(folder.filePath("s.ini"), QSettings::IniFormat);
        settings.setValue("Download/seals/" + publisher.name() + "/serial", 5);
        DownloadManager manager(settings, QString());
        manager.setServer(f.server.url("/c"));
        manager.setPolicy(f.policy);
        QCOMPARE(foundBy(manager), told.isEmpty() ? 1 : 0);
        QCOMPARE(manager.recentPackages(PackageInfo()).size(), told.isEmpty() ? 1 : 0);
    }

    // Fetched from where the catalogue came from, over redirects of its own.
    void signatureIsBesideTheCatalogue()
    {
        Fixture f({ publisher.key() });
        f.server.route("/c", HttpAnswer::redirect(f.server.url("/d/e?f=g").toString().toUtf8()));
        f.server.route("/d/e?f=g", HttpAnswer(catalogue(1)));
        f.server.route("/d/e.minisig?f=g", HttpAnswer::redirect(f.server.url("/s").toString().toUtf8()));
        f.server.route("/s", HttpAnswer(publisher.sign(catalogue(1))));
        QCOMPARE(f.check(), QString());
        DownloadManager manager(f.server.url("/c"));
        manager.setPolicy(f.policy);
        QCOMPARE(foundBy(manager), 1);
        QCOMPARE(f.server.targets().size(), 8);
    }

    // What was seen counts for all runs, where the store can be written, and else for this one.
    void serialsAreRemembered()
    {
        Fixture f({ publisher.key() });
        f.publish(catalogue(2), HttpAnswer(publisher.sign(catalogue(2))));
        QCOMPARE(f.check(), QString());
        DownloadManager manager(f.server.url("/c"));
        manager.setPolicy(f.policy);
        QCOMPARE(foundBy(manager), 1);
        QTemporaryDir folder;
        QSettings settings(folder.filePath("s.ini"), QSettings::IniFormat);
        manager.storeHistory(settings, QString());
        f.publish(catalogue(1), HttpAnswer(publisher.sign(catalogue(1))));
        QCOMPARE(foundBy(manager), 0);
        DownloadManager later(settings, QString());
        later.setServer(f.server.url("/c"));
        later.setPolicy(f.policy);
        QCOMPARE(foundBy(later), 0);
        SoftwareUpdateClient nextRun("P", VersionNumber("1.0"), f.server.url("/c").toString(), &f.window);
        nextRun.setPolicy(f.policy);
        nextRun.checkForUpdate();
        QVERIFY(
            QTest::qWaitFor([&f] { return f.log.take().join(' ').contains("serial 1 is older than what was seen"); }));
    }

    void withoutKeysNothingChanges()
    {
        Fixture f({});
        f.server.route("/c", HttpAnswer(catalogue(1, unvouched)));
        QCOMPARE(f.check(), QString());
        QCOMPARE(f.server.targets(), QList<QByteArray>({ "/c" }));
        QVERIFY(!TestHost::store().childGroups().contains("seals"));
    }
};

QTEST_MAIN(tst_policy)
#include "tst_policy.moc"
