// What a host's policy changes: client and manager against a server, beyond the defaults.
#include "DownloadManager.h"
#include "HttpServer.h"
#include "LogCapture.h"
#include "Row.h"
#include "Signer.h"
#include "TestHost.h"

#include <QtNetwork>
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

/// The same server over TLS, with a certificate that nobody has signed.
class TlsServer : public HttpServer
{
public:
    TlsServer()
    {
        QProcess::execute("openssl",
                          { "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=127.0.0.1", "-addext",
                            "subjectAltName=IP:127.0.0.1", "-keyout", folder.filePath("key"), "-out",
                            folder.filePath("certificate") });
    }

    QList<QSslCertificate> certificates() const { return QSslCertificate::fromPath(folder.filePath("certificate")); }

private:
    void incomingConnection(qintptr descriptor) override
    {
        auto *socket = new QSslSocket(this);
        socket->setSocketDescriptor(descriptor);
        QFile key(folder.filePath("key"));
        if (key.open(QIODevice::ReadOnly))
            socket->setPrivateKey(QSslKey(&key, QSsl::Rsa));
        socket->setLocalCertificate(certificates().value(0));
        socket->startServerEncryption();
        addPendingConnection(socket);
    }

    QTemporaryDir folder;
};

/// A download over its own address, with what the policy gives.
struct Download
{
    explicit Download(const QByteArray &body, int attempts = 4) : body(body), manager(QUrl("http://127.0.0.1:1/c"))
    {
        UpdatePolicy policy;
        policy.followAddresses = true;
        policy.downloadAttempts = attempts;
        manager.setPolicy(policy);
        package.fileSize = body.size();
        package.sha256 = QCryptographicHash::hash(body, QCryptographicHash::Sha256).toHex();
        QObject::connect(&manager, qOverload<>(&DownloadManager::downloadSuccess), &manager,
                         [this] { outcome = "success"; });
        QObject::connect(&manager, qOverload<int>(&DownloadManager::downloadFailure), &manager, [this](int status) {
            outcome = QString("failure %1 %2: %3").arg(status).arg(manager.errorText(), manager.failureText());
        });
        QObject::connect(&manager, &DownloadManager::downloadProgress, &manager, [](int bytes, int total) {
            if (total >= 0 && bytes > total)
                qFatal("more than all");
        });
    }

    /// From the server, which gives one answer after the other.
    void start()
    {
        const auto next = [this] { server.route("/p", answers.isEmpty() ? last : answers.takeFirst()); };
        next();
        QObject::connect(&server, &HttpServer::answered, &manager, next);
        package.url = server.url("/p");
        manager.startDownload(package, path());
    }

    /// How it ended: "success", or "failure" with its reason.
    QString from(const QUrl &url)
    {
        package.url = url;
        manager.startDownload(package, path());
        return QTest::qWaitFor([this] { return !outcome.isEmpty(); }, 30'000) ? outcome : "no end";
    }

    QString path() const { return folder.filePath("p"); }
    bool isRight() const
    {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) && file.readAll() == body;
    }

    const QByteArray body;
    QTemporaryDir folder;
    HttpServer server;
    QList<HttpAnswer> answers;
    HttpAnswer last;
    DownloadManager manager;
    PackageInfo package;
    QString outcome;
    int expectedRequests = 0;
};

QString download(const QUrl &url, qint64 size, const QByteArray &body)
{
    Download one(body, 1);
    one.package.fileSize = size;
    return one.from(url);
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
        QCOMPARE(f.server.targets().count("/s"), 2);
    }

    // The login of the server's URL is for its catalogue and for its signature, and for nobody whom it leads to.
    void behindALogin()
    {
        for (const bool isElsewhere : { false, true }) {
            Fixture f({ publisher.key() });
            HttpServer elsewhere;
            f.publish(catalogue(1), HttpAnswer(publisher.sign(catalogue(1))));
            f.server.requireLogin("me:s3cret");
            if (isElsewhere)
                f.server.route("/c", HttpAnswer::redirect(elsewhere.url("/c").toString().toUtf8()));
            elsewhere.route("/c", HttpAnswer(catalogue(1)));
            elsewhere.route("/c.minisig", HttpAnswer("who?", 401).header("WWW-Authenticate", "Basic realm=\"r\""));
            QUrl url = f.server.url("/c");
            url.setUserInfo("me:s3cret");
            TestHost::set("serverURL", url.toString());
            QCOMPARE(f.check(), QString(isElsewhere ? "Host requires authentication" : ""));
            DownloadManager manager(url);
            manager.setPolicy(f.policy);
            QCOMPARE(foundBy(manager), isElsewhere ? 0 : 1);
            QCOMPARE(elsewhere.targets().count("/c.minisig"), isElsewhere ? 2 : 0);
            for (const HttpTestRequest &request : std::as_const(elsewhere.requests))
                QVERIFY(!request.headers.contains("authorization"));
            QVERIFY(!f.log.take().join(' ').contains("s3cret"));
        }
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

    void addresses_data()
    {
        columns<HttpAnswer, qint64, QString>("answer", "size", "outcome");
        const HttpAnswer ten("0123456789");
        row("exact", ten, qint64(10), QString("success"));
        row("no size", ten, qint64(0), QString("success"));
        row("no size, to the end of the connection", HttpAnswer(ten).unannounced(), qint64(0), QString("success"));
        row("created", HttpAnswer(ten.body, 201), qint64(10), QString("success"));
        row("error page of the same length", HttpAnswer(ten.body, 404), qint64(10), QString("failure 404"));
        row("short", ten, qint64(11), QString("failure 200"));
        row("long", ten, qint64(9), QString("failure 200"));
        row("dropped, no size", HttpAnswer(ten).dropAfter(5), qint64(0), QString("failure 200"));
        row("whole for Qt, but shorter than announced", HttpAnswer(ten).chunked().header("Content-Length", "11"),
            qint64(0), QString("failure 200"));
        row("other bytes", HttpAnswer("012345678x"), qint64(10), QString("failure 200"));
        row("redirect", HttpAnswer::redirect("/there"), qint64(10), QString("success"));
    }
    void addresses()
    {
        QFETCH(HttpAnswer, answer);
        QFETCH(qint64, size);
        QFETCH(QString, outcome);
        HttpServer server;
        server.route("/p.zip", answer);
        server.route("/there", HttpAnswer("0123456789"));
        const QString seen = download(server.url("/p.zip"), size, "0123456789");
        QVERIFY2(seen.startsWith(outcome), qPrintable(seen));
    }

    void certificates()
    {
        TlsServer server;
        server.route("/p.zip", HttpAnswer("0123456789"));
        HttpServer plain;
        plain.route("/p.zip", HttpAnswer("0123456789"));
        server.route("/down", HttpAnswer::redirect(plain.url("/p.zip").toString().toUtf8()));
        const auto url = [&server](const QString &path) {
            QUrl url = server.url(path);
            url.setScheme("https");
            return url;
        };
        const QString refused = download(url("/p.zip"), 10, "0123456789");
        QVERIFY(refused.contains("SSL handshake failed")); // Qt 6 says why
        QVERIFY(refused.contains("The certificate of the server 127.0.0.1 was not accepted."));
        const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
        QSslConfiguration trusting = before;
        trusting.setCaCertificates(server.certificates());
        QSslConfiguration::setDefaultConfiguration(trusting);
        QCOMPARE(download(url("/p.zip"), 10, "0123456789"), QString("success"));
        QVERIFY(download(url("/down"), 10, "0123456789").startsWith("failure"));
        QVERIFY(plain.requests.isEmpty());
        QSslConfiguration::setDefaultConfiguration(before);
    }

    // All at once, as each waits for a second: cut at any place, gone on with or begun anew, and never with other
    // bytes.
    void brokenDownloads()
    {
        QRandomGenerator random(7);
        QByteArray body(1'000'000, Qt::Uninitialized);
        random.generate(body.begin(), body.end());
        enum Kind { Whole, Cut, CutTwice, NoTag, Changed, Refused, Unavailable, kinds };
        std::vector<std::unique_ptr<Download>> downloads;
        for (int i = 0; i < 10 * kinds; ++i) {
            auto one = std::make_unique<Download>(body);
            const Kind kind = Kind(i % kinds);
            const HttpAnswer whole = HttpAnswer(body).ranges("\"a\"");
            const qint64 place = 1 + random.bounded(body.size() - 2);
            HttpAnswer first = HttpAnswer(whole).dropAfter(place);
            if (kind == NoTag)
                first = HttpAnswer(body).dropAfter(place);
            if (kind == Unavailable)
                first = HttpAnswer("later", 503);
            if (kind == Whole)
                first = whole;
            HttpAnswer second = kind == CutTwice ? HttpAnswer(whole).dropAfter((body.size() - place) / 2) : whole;
            if (kind == Changed)
                second = HttpAnswer(body).ranges("\"b\"");
            if (kind == Refused)
                second = HttpAnswer("no such range", 416);
            one->answers = { first, second };
            one->last = whole;
            one->expectedRequests = kind == Whole ? 1 : kind == CutTwice || kind == Refused ? 3 : 2;
            one->start();
            downloads.push_back(std::move(one));
        }
        for (const auto &one : downloads) {
            QVERIFY(QTest::qWaitFor([&one] { return !one->outcome.isEmpty(); }, 60'000));
            QCOMPARE(one->outcome, QString("success"));
            QCOMPARE(one->server.requests.size(), one->expectedRequests);
            QVERIFY(one->isRight());
        }
    }

    void cancelledInThePause()
    {
        Download one("0123456789");
        one.answers = { HttpAnswer("0123456789").ranges("\"a\"").dropAfter(5) };
        one.start();
        QTRY_VERIFY(QFileInfo(one.path()).size() == 5);
        QSignalSpy aborted(&one.manager, &DownloadManager::downloadAborted);
        QTRY_VERIFY(one.manager.isQueryBusy() && one.manager.findChild<QTimer *>());
        one.manager.abortDownload();
        QCOMPARE(aborted.size(), 1);
        QVERIFY(!one.manager.isQueryBusy() && one.outcome.isEmpty());
    }
};

QTEST_MAIN(tst_policy)
#include "tst_policy.moc"
