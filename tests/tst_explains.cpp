// Words that help: the texts in three languages, and what a client tells of a real server's failures.
#include "BoxClicker.h"
#include "FailureTexts.h"
#include "HttpServer.h"
#include "PolicyTexts.h"
#include "Row.h"
#include "Signer.h"
#include "SmallDisk.h"
#include "TestHost.h"
#include "ZipBuilder.h"

#include <QtWidgets>

using namespace qv;

Q_DECLARE_METATYPE(HttpAnswer)
Q_DECLARE_METATYPE(Failure)

namespace {

Failure failure(Failure::Kind kind, qint64 received, qint64 expected, int status = 0)
{
    Failure failure(kind);
    failure.server = "server.example";
    failure.place = "/tmp/%1";
    failure.received = received;
    failure.expected = expected;
    failure.status = status;
    return failure;
}

HttpAnswer page(int status = 200)
{
    return HttpAnswer("Welcome", status).header("Content-Type", "text/html; charset=utf-8");
}

constexpr qint64 MiB = 1 << 20, GiB = 1 << 30, minute = 60'000;

} // namespace

class tst_explains : public QObject
{
    Q_OBJECT

    struct Fixture : TestHost
    {
        Fixture() : client("P", VersionNumber("1.0"), server.url("/c").toString(), &window)
        {
            set("supportedPackageTypes", "deb,exe,mpkg");
            set("installablePackageTypes", "deb,exe,mpkg");
            policy.explains = policy.followAddresses = true;
            client.setPolicy(policy);
        }

        void publish(const QString &file, const QByteArray &values, const QByteArray &notes = QByteArray())
        {
            server.route("/c",
                         "<softwareList><package name='Camera Host' release='2.0' status='STABLE' url='"
                             + server.url(file).toEncoded() + "' " + values + ">" + notes
                             + "</package></softwareList>");
            client.checkForUpdate();
            QTRY_VERIFY(availableDialog());
        }

        HttpServer server;
        UpdatePolicy policy;
        SoftwareUpdateClient client;
    };

public:
    QUrl opened;
    Q_INVOKABLE void open(const QUrl &url) { opened = url; }

private slots:
    void init() { qunsetenv("TMPDIR"); }

    void texts_data()
    {
        columns<Failure, QStringList>("failure", "words"); // in English, German and French
        row("broken", failure(Failure::Broken, 12 * MiB, 40 * MiB),
            QStringList { "broke off after 12.0 of 40.0 MB.", "ist nach 12,0 von 40,0 MB ab",
                          "après 12,0 sur 40,0 Mo." });
        row("disk full", failure(Failure::DiskFull, 0, 3 * GiB / 2),
            QStringList { "1.5 GB are needed in /tmp/%1.", "1,5 GB werden in /tmp/%1 ben",
                          "il faut 1,5 Go dans /tmp/%1." });
        row("error", failure(Failure::Status, 0, 0, 418),
            QStringList { "server.example answered with an error (418).",
                          "Server server.example hat mit einem Fehler "
                          "geantwortet (418).",
                          "Le serveur server.example a répondu par une erreur (418)." });
    }
    void texts()
    {
        QFETCH(Failure, failure);
        QFETCH(QStringList, words);
        for (const char *name : { "C", "de_DE", "fr_FR" }) {
            QTranslator translator;
            if (translator.load(QString(":/translations/SoftwareUpdatePolicy_") + name))
                QCoreApplication::installTranslator(&translator);
            const QString text = failureText(failure, QLocale(name));
            QVERIFY2(text.contains(words.takeFirst()), qPrintable(text));
        }
    }

    void progress_data()
    {
        columns<qint64, qint64, qint64, QString>("bytes", "total", "msElapsed", "text");
        row("too early", MiB, 40 * MiB, qint64(1999), QString("1.0 of 40.0 MB"));
        row("minutes", 20 * MiB, 40 * MiB, 2 * minute, QString("20.0 of 40.0 MB, about 2 minutes left"));
        row("one minute", 20 * MiB, 40 * MiB, minute, QString("20.0 of 40.0 MB, about a minute left"));
        row("end", 40 * MiB, 40 * MiB, minute, QString("40.0 of 40.0 MB, less than a minute left"));
        row("more than all", 41 * MiB, 40 * MiB, minute, QString("41.0 of 40.0 MB, less than a minute left"));
        row("an hour", GiB, 4 * GiB, 20 * minute, QString("1.0 of 4.0 GB, about an hour left"));
        row("hours", GiB, 4 * GiB, 100 * minute, QString("1.0 of 4.0 GB, about 5 hours left"));
        row("days", MiB, 4 * GiB, minute, QString("0.0 of 4.0 GB, more than a day left"));
        row("no total", 5 * MiB, qint64(-1), minute, QString("5.0 MB"));
        row("bytes", qint64(5), qint64(9), qint64(0), QString("5 of 9 bytes"));
    }
    void progress()
    {
        QFETCH(qint64, bytes);
        QFETCH(qint64, total);
        QFETCH(qint64, msElapsed);
        QTEST(progressText(bytes, total, msElapsed, QLocale::c()), "text");
    }

    // On a closed port, in time, with or without keys: the line of the settings dialog.
    void checks_data()
    {
        columns<HttpAnswer, QString>("answer", "told");
        row("page", page(), QString("answered with a web page"));
        row("page without a type", HttpAnswer("\xef\xbb\xbf\n <!DOCTYPE HTML><p>"),
            QString("answered with a web page"));
        row("login to the network", page(511), QString("answered with a web page"));
        row("missing page", page(404), QString("does not have what"));
        row("login", HttpAnswer("", 401).header("WWW-Authenticate", "NTLM"), QString("denies access"));
        row("trouble", HttpAnswer("", 503), QString("cannot answer at the moment"));
        row("not XML", HttpAnswer("x"),
            QString("list of updates from the server 127.0.0.1 is empty or cannot be read"));
        row("cut off", HttpAnswer::raw(""), QString("connection to the server 127.0.0.1 broke off"));
        row("silent", HttpAnswer().hold(), QString("does not answer"));
        row("device", HttpAnswer::redirect("file:///etc"), QString("\"file:///etc\" is not the address"));
        row("closed", HttpAnswer::redirect("http://127.0.0.1:1/"), QString("127.0.0.1 cannot be reached"));
    }
    void checks()
    {
        QFETCH(HttpAnswer, answer);
        QFETCH(QString, told);
        for (const bool isSealed : { false, true }) {
            Fixture f;
            f.policy.trustedKeys = isSealed ? QStringList(Signer().key()) : QStringList();
            f.client.setPolicy(f.policy);
            f.server.route("/c", answer);
            connect(&f.server, &HttpServer::held, &f.client,
                    [&f] { QMetaObject::invokeMethod(&f.client, "requestTimeout"); });
            f.client.queryForUpdate();
            auto *button = f.settingsDialog()->findChild<QPushButton *>("updatePushButton");
            button->click();
            QTRY_VERIFY_WITH_TIMEOUT(button->isEnabled(), 30'000);
            const QString expected = isSealed && answer.body == "x" ? QString("is not signed") : told;
            QVERIFY2(f.notification().contains(expected), qPrintable(f.notification()));
        }
    }

    void downloads_data()
    {
        columns<QString, QByteArray, HttpAnswer, QString>("file", "values", "answer", "told");
        const QByteArray size = "file-size='3145728'", hash = size + " sha256='" + QByteArray(64, 'a') + "'";
        const HttpAnswer whole = HttpAnswer().generate(3 * MiB);
        const QString damaged("arrived damaged"), notStarted("could not be started. It lies in %1/qv-");
        row("cut off", QString("/p.deb"), size, HttpAnswer(whole).dropAfter(MiB),
            QString("broke off after ") + amountText(MiB, 3 * MiB));
        row("missing page", QString("/p.deb"), size, page(404), QString("does not have what"));
        row("page", QString("/p.deb"), size, page(), QString("answered with a web page"));
        row("short", QString("/p.deb"), size, HttpAnswer("short"), damaged);
        row("wrong hash", QString("/p.deb"), hash, whole, damaged);
        row("disk full", QString("/p.deb"), size, whole, amountText(67 * MiB, 0) + " are needed in %1/qv-");
        row("nowhere to write", QString("/p.deb"), size, whole, QString("cannot be saved in %1/missing."));
        row("no program", QString("/p.exe"), QByteArray(), HttpAnswer("x"), notStarted);
        row("nothing opens", QString("/p.mpkg.zip"), QByteArray(),
            HttpAnswer(ZipBuilder::archive({ { "a.mpkg", "x" } })), notStarted);
        row("no installer", QString("/p.mpkg.zip"), QByteArray(), HttpAnswer(ZipBuilder::archive({ { "a", "x" } })),
            QString("holds no installer"));
    }
    void downloads()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, values);
        QFETCH(HttpAnswer, answer);
        QFETCH(QString, told);
        QTemporaryDir folder;
        std::optional<SmallDisk> disk;
        if (QTest::currentDataTag() == QByteArray("disk full") && !disk.emplace(folder.path().toUtf8(), 32).isMounted())
            QSKIP("mounting is for root");
        qputenv("TMPDIR", (folder.path() + (told.contains("missing") ? "/missing" : "")).toUtf8());
        Fixture f;
        BoxClicker clicker({ "Proceed" });
        f.server.route(file.toUtf8(), answer);
        f.publish(file, values);
        emit f.availableDialog()->installPackage(0);
        QTRY_COMPARE_WITH_TIMEOUT(clicker.boxes.size(), 2, 30'000);
        const QString text = told.contains("%1") ? told.arg(folder.path()) : told;
        QVERIFY2(clicker.boxes[1].contains(text), qPrintable(clicker.boxes[1]));
    }

    void progressIsTold()
    {
        Fixture f;
        BoxClicker clicker({ "Proceed" });
        f.server.route("/p.deb", HttpAnswer().generate(3 * MiB).holdAfter(MiB));
        f.publish("/p.deb", "file-size='3145728'");
        emit f.availableDialog()->installPackage(0);
        const QPointer<QProgressDialog> dialog = f.window.findChild<QProgressDialog *>();
        QTRY_VERIFY(dialog && dialog->labelText().contains("\n"));
        QVERIFY2(dialog->labelText().contains(amountText(MiB, 3 * MiB).mid(3)), qPrintable(dialog->labelText()));
        f.server.stop();
        QTRY_COMPARE(clicker.boxes.size(), 2);
    }

    void releaseNotes()
    {
        QDesktopServices::setUrlHandler("http", this, "open");
        const QByteArray own = QLocale::system().name().left(2).toLatin1();
        for (const auto &[languages, chosen] : { std::pair("en,xx," + own, own), { "xx,en", "en" }, { "xx", "xx" } }) {
            Fixture f;
            QByteArray notes;
            for (const QByteArray &language : languages.split(','))
                notes += "<release-notes language='" + language + "' url='http://h/" + language + "'/>";
            f.publish("/p.deb", "", notes);
            f.availableDialog()->findChild<QTableWidget *>()->selectRow(0);
            auto *button = f.availableDialog()->findChild<QPushButton *>("releaseNotesPushButton");
            button->click(); // nothing, where it is off
            QCOMPARE(opened, QUrl("http://h/" + chosen));
        }
        QDesktopServices::unsetUrlHandler("http");
    }
};

QTEST_MAIN(tst_explains)
#include "tst_explains.moc"
