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

#include <optional>

using namespace qv;

Q_DECLARE_METATYPE(HttpAnswer)

namespace {

constexpr long long MiB = 1 << 20, GiB = 1 << 30, minute = 60'000;

HttpAnswer page(int status = 200)
{
    return HttpAnswer("Welcome", status).header("Content-Type", "text/html; charset=utf-8");
}

const QByteArray sized = "file-size='3145728' sha256='" + QByteArray(64, 'a') + "'";

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
            const QByteArray url = server.url(file).toEncoded();
            server.route("/c",
                         "<l><package name='Camera Host' release='2.0' status='STABLE' url='" + url + "' " + values
                             + ">" + notes + "</package></l>");
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

    void texts()
    {
        Failure broken(Failure::Broken), full(Failure::DiskFull), error;
        broken.received = 12 * MiB, broken.expected = 40 * MiB;
        full.place = "/tmp/%1", full.expected = 3 * GiB / 2;
        error.server = "h.example", error.status = 418;
        for (const auto &[name, told] :
             { std::pair("C",
                         "after 12.0 of 40.0 MB.|1.5 GB are needed in /tmp/%1.|h.example answered with an error (418)"
                         "|about 2 minutes left"),
               { "de_DE",
                 "nach 12,0 von 40,0 MB abgebrochen|1,5 GB werden in /tmp/%1 ben\u00f6tigt"
                 "|Der Server h.example hat mit einem Fehler geantwortet (418)|noch etwa 2 Minuten" },
               { "fr_FR",
                 "apr\u00e8s 12,0 sur 40,0 Mo.|il faut 1,5 Go dans /tmp/%1.|Le serveur h.example a"
                 "|environ 2 minutes restantes" } }) {
            const QLocale locale(name);
            QTranslator translator;
            if (translator.load(QString(":/translations/SoftwareUpdatePolicy_") + name))
                QCoreApplication::installTranslator(&translator);
            const QString text = failureText(broken, locale) + failureText(full, locale) + failureText(error, locale)
                + progressText(20 * MiB, 40 * MiB, 2 * minute, locale);
            for (const QString &part : QString(told).split('|'))
                QVERIFY2(text.contains(part), qPrintable(text));
        }
    }

    void progress()
    {
        for (const auto &[bytes, total, msElapsed, text] :
             { std::tuple(MiB, 40 * MiB, 1999LL, "1.0 of 40.0 MB"),
               { 20 * MiB, 40 * MiB, minute, "20.0 of 40.0 MB, about a minute left" },
               { 41 * MiB, 40 * MiB, minute, "41.0 of 40.0 MB, less than a minute left" },
               { GiB, 4 * GiB, 20 * minute, "1.0 of 4.0 GB, about an hour left" },
               { GiB, 4 * GiB, 100 * minute, "1.0 of 4.0 GB, about 5 hours left" },
               { MiB, 4 * GiB, minute, "0.0 of 4.0 GB, more than a day left" },
               { 5 * MiB, -1, minute, "5.0 MB" } })
            QCOMPARE(progressText(bytes, total, msElapsed, QLocale::c()), QString(text));
    }

    // With keys and without.
    void checks_data()
    {
        columns<HttpAnswer, QString>("answer", "told");
        const QString aPage = "answered with a web page";
        row("page", page(), aPage);
        row("page without a type", HttpAnswer("\xef\xbb\xbf\n <!DOCTYPE HTML><p>"), aPage);
        row("login to the network", page(511), aPage);
        row("missing page", page(404), QString("does not have what"));
        row("login", HttpAnswer("", 401).header("WWW-Authenticate", "NTLM"), QString("denies access"));
        row("trouble", HttpAnswer("", 503), QString("cannot answer at the moment"));
        row("not XML", HttpAnswer("x"), QString("from the server 127.0.0.1 is empty or cannot be read"));
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
        columns<QString, HttpAnswer, QString>("file", "answer", "told");
        const HttpAnswer whole = HttpAnswer().generate(3 * MiB);
        const auto archive = [](const char *file) { return HttpAnswer(ZipBuilder::archive({ { file, "x" } })); };
        const QString deb("/p.deb"), zip("/p.mpkg.zip"), damaged("arrived damaged"),
            notStarted("could not be started. It lies in %1/qv-");
        row("cut off", deb, HttpAnswer(whole).dropAfter(MiB), "broke off after " + amountText(MiB, 3 * MiB));
        row("missing page", deb, page(404), QString("does not have what"));
        row("page", deb, page(), QString("answered with a web page"));
        row("short", deb, HttpAnswer("short"), damaged);
        row("wrong hash", deb, whole, damaged);
        row("disk full", deb, whole, amountText(67 * MiB, 0) + " are needed in %1/qv-");
        row("nowhere to write", deb, whole, QString("cannot be saved in %1/missing."));
        row("no program", QString("/p.exe"), HttpAnswer("x"), notStarted);
        row("nothing opens", zip, archive("a.mpkg"), notStarted);
        row("no installer", zip, archive("a"), QString("holds no installer"));
    }
    void downloads()
    {
        QFETCH(QString, file);
        QFETCH(HttpAnswer, answer);
        QFETCH(QString, told);
        QTemporaryDir folder;
        std::optional<SmallDisk> disk;
        if (told.contains("needed") && !disk.emplace(folder.path().toUtf8(), 32).isMounted())
            QSKIP("mounting is for root");
        qputenv("TMPDIR", (folder.path() + (told.contains("missing") ? "/missing" : "")).toUtf8());
        Fixture f;
        BoxClicker clicker({ "Proceed" });
        f.server.route(file.toUtf8(), answer);
        f.publish(file, file == "/p.deb" ? sized : "");
        emit f.availableDialog()->installPackage(0);
        QTRY_COMPARE_WITH_TIMEOUT(clicker.boxes.size(), 2, 30'000);
        QVERIFY2(clicker.boxes[1].contains(told.replace("%1", folder.path())), qPrintable(clicker.boxes[1]));
    }

    void progressIsTold()
    {
        Fixture f;
        BoxClicker clicker({ "Proceed" });
        f.server.route("/p.deb", HttpAnswer().generate(3 * MiB).holdAfter(MiB));
        f.publish("/p.deb", sized);
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
            f.availableDialog()->findChild<QPushButton *>("releaseNotesPushButton")->click();
            QCOMPARE(opened, QUrl("http://h/" + chosen));
        }
        QDesktopServices::unsetUrlHandler("http");
    }
};

QTEST_MAIN(tst_explains)
#include "tst_explains.moc"
