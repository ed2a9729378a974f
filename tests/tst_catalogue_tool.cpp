// qv-catalogue as its users run it: what it prints for good, bad and odd catalogues, and its exit code.
#include "HttpServer.h"
#include "Row.h"

#include <QtTest>

namespace {

struct Outcome
{
    int exitCode;
    QString out, err;
};

Outcome run(const QStringList &arguments)
{
    QProcess program;
    QSignalSpy finished(&program, qOverload<int, QProcess::ExitStatus>(&QProcess::finished));
    program.start(TOOL, arguments);
    // Not waitForFinished(): the test's server needs its event loop.
    if (!finished.wait(60'000) || program.exitStatus() != QProcess::NormalExit)
        return { -1, QString(), QStringLiteral("no end") };
    return { program.exitCode(), QString::fromUtf8(program.readAllStandardOutput()),
             QString::fromUtf8(program.readAllStandardError()) };
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A catalogue whose packages have no faults but for what they say themselves.
QByteArray list(const QByteArray &packages, const QByteArray &attributes = QByteArray())
{
    return "<list url='http://h/a.zip' file-size='1' release-date='2026-01-02' release='1.0' status='STABLE'"
        + attributes + ">\n" + packages + "</list>";
}

QByteArray package(const QByteArray &attributes = QByteArray())
{
    return "<package " + attributes + (attributes.contains("platform=") ? "/>" : " platform='p'/>");
}

constexpr char expires[] = "2999-12-31T23:59:59Z";
constexpr char hashOfAbc[] = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

} // namespace

class CatalogueToolTest : public QObject
{
    Q_OBJECT

private slots:
    void lint_data()
    {
        // findings: one a line, part and end of it
        columns<QByteArray, QString>("packages", "findings");
        row("nothing", package(), "");
        row("broken", QByteArray("<package>"), ":2: |Inside <package> of line 2; clients find no update in it [xml]");
        row("too long a value", "<base-url>" + QByteArray(1 << 20, 'x') + "</base-url>" + package().repeated(17),
            "refused: a value is too long; clients|[xml]");
        row("empty", QByteArray("<package-set/>"), "no package|[empty]");
        row("no url", package("url=''"), "1 1.0: no url;|[url]");
        row("relative url", package("url='a.zip'"), "1 1.0: url names no server: \"a.zip\"|[url]");
        row("secure url", package("url='https://h/a.zip'"), "1 1.0: url is not plain|[port]");
        row("other port", package("url='http://h:8080/a.zip'"), "1 1.0: url is not plain|[port]");
        row("suffix", package("url='http://h/a.gz'"), "1 1.0: suspicious suffix \"gz\"|[suffix]");
        row("no size", package("file-size=''"), "1 1.0: no file-size;|[size]");
        row("size", package("file-size='4 GB'"), "1 1.0: file-size is unreadable: \"4 GB\";|[size]");
        row("date", package("release-date='05.04.2011'"), "1 1.0: release-date is unreadable: \"05.04.2011\";|[date]");
        row("no platform", package("platform=','"), "1 1.0: platform is unreadable: \",\";|[platform]");
        row("no release, status", package("release='' status=''"), "1: no release;|[release]\n1: no status;|[status]");
        row("control characters", package("name='a&#x9b;b' url=''"), "1 a?b 1.0: no url;|[url]");
        row("duplicate in a set", "<package-set>" + package("url='http://h/b.zip'") + "</package-set>\n" + package(),
            "2 1.0: date and size are those of package 1;|[duplicate]");
        row("once for a set",
            "<package-set status=' STABLE ' base-url='http://h' url='a.zip' file-size='x'>" + package() + '\n'
                + package("status='BETA'") + package() + package("release-date=''") + "</package-set>",
            ":2: 4 packages (1-4): base-url does not end with \"/\", which gives \"http://ha.zip\"|[url]\n"
            ":2: 4 packages (1-4): file-size is unreadable: \"x\"|[size]\n"
            ":2: 3 packages (1, 3-4): status is neither STABLE nor BETA: \" STABLE \";|[status]\n"
            ":3: package 4 1.0: no release-date;|[date]\n"
            ":2: 2 packages (2-3): date and size are those of package 1;|[duplicate]");
        row("lacking in a set",
            "<package-set><package file-size='2'/>\n<package file-size='3'/></package-set>" + package(),
            ":2: 2 packages (2-3): no platform;|[platform]");
        row("notes",
            "<package-set release-notes='ftp://h/n'>" + package("readme='n.html'") + package("file-size='3'")
                + "<release-notes language='de' url='/n'/></package-set>"
                + package("release-notes='https://h/n' language='fr' file-size='2'"),
            ":2: readme is no whole address: \"n.html\";|[notes]\n"
            ":2: release-notes is no whole address: \"/n\";|[notes]\n"
            "1 1.0: release-notes only in other languages than en: fr;|[notes]");
        row("words",
            package("release='1.2 final'") + package("release='1.2 RC 1' file-size='2'")
                + package("release='1.0.2a' file-size='3'") + package("release='v1.2' name='x' file-size='4'"),
            "1 1.2 final: release with words in it|[release]\n4 x v1.2: release with words in it|[release]");
        row("names",
            "<package-set releasenotes='x'><Package/></package-set>" + package("platforms='p'")
                + package("platforms='q' serial='1' file-size='2' xmlns:x='y'") + "<about><package b='c'/></about>",
            "2: nobody reads the attribute \"releasenotes\" of \"package-set\"; did|\"release-notes\"? [name]\n"
            "the element \"Package\" of \"package-set\"; did you mean \"package\"?|[name]\n"
            "\"platforms\" of \"package\", which stands there 2 times; did you mean \"platform\"?|[name]\n"
            "\"serial\" of \"package\"; its value|[name]\n\"about\" of \"list\"; its|[name]");
        const QByteArray hash(64, 'A');
        row("hashes", package("sha256='" + hash + '\'') + package("sha256='abc' file-size='2'"),
            "2 1.0: sha256 is unreadable: \"abc\";|[sha256]");
        row("hash of a set", "<sha256>" + hash + "</sha256>" + package(),
            "the element \"sha256\" of \"list\"; the hash of a file stands|[sha256]");
        row("sealed", list(package(), " serial='7' expires='2999-01-01T00:00:00Z'"), "1 1.0: no sha256 in|[sha256]");
        row("sealed badly", list(package("sha256='" + hash + '\''), " serial='0' expires='2999-01-01T00:00:00'"),
            ":1: serial is no number above 0: \"0\";|[seal]\n:1: expires is no time in UTC|[seal]");
        row("expired", list(package("sha256='" + hash + '\''), " expires='2026-01-01T00:00:00Z'"),
            ":1: expires without serial;|[seal]\n:1: expires is past|[seal]");
        row("order", package("release='2.10'") + '\n' + package("release='2.9' file-size='2'"),
            "1 2.10: as text \"2.10\" comes before \"2.9\" of package 2;|[order]");
        row("two products", package("release='2.10' name='a'") + package("release='2.9' name='b' file-size='2'"), "");
        row("spelling", package("release='2.1'") + '\n' + package("release='2.1.0' file-size='2'"),
            ":3: package 2 2.1.0: \"2.1.0\" is the same version as \"2.1\" of package 1;|[spelling]");
        const QByteArray firmware = "<type>Camera Firmware</type>";
        row("languages of a release", firmware + package("language='de en'") + package("language='fr' file-size='2'"),
            "");
        row("languages",
            firmware + package("language='de en'") + package("release='1.1' language='en' file-size='2'")
                + package("release='1.2' status='BETA' language='fr' file-size='3'"),
            "2 1.1: nothing of this release is shown to users of de, en, fr; its|de and en together [languages]\n"
            "3 1.2: nothing of this release is shown to users of de, en; its languages are|\"fr\" [languages]");
        row("languages of nobody", firmware + package("language='ja'"), "");
    }
    void lint()
    {
        QFETCH(QByteArray, packages);
        QFETCH(QString, findings);
        const Outcome outcome = run({ "lint", written(packages) });
        const QStringList lines = outcome.out.split('\n', Qt::SkipEmptyParts);
        const QStringList expected = findings.split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), expected.size());
        for (int i = 0; i < lines.size(); ++i) {
            const QString part = expected[i].section('|', 0, 0), end = expected[i].section('|', 1);
            QVERIFY2(lines[i].startsWith(file() + ':') && lines[i].endsWith(' ' + end), qPrintable(lines[i]));
            QVERIFY2(lines[i].contains(part), qPrintable(lines[i]));
        }
        QCOMPARE(outcome.exitCode, expected.isEmpty() ? 0 : 1);
        QCOMPARE(outcome.err, QString());
    }

    void lintLooksAtFiles()
    {
        QVERIFY(write("a.zip", "abc"));
        const QByteArray hash = "sha256='" + QByteArray(64, 'a') + "' file-size='3'";
        const QString path = written(package(hash) + package("file-size='2'") + package("url='http://h/x/c.zip'"));
        const QString out = run({ "lint", path, "--packages", folder.path() }).out;
        for (const char *finding : { "1 1.0: sha256 is not that of", "2 1.0: file-size is 2, but", "a.zip has 3 bytes",
                                     "3 1.0: no file for \"http://h/x/c.zip\"" })
            QVERIFY2(out.contains(finding), qPrintable(out));
        QCOMPARE(out.count('\n'), 3);
    }

    void lintIgnores()
    {
        const QString path = written(package("url='' status=''"));
        QCOMPARE(run({ "lint", path, "--ignore", "url,status" }).exitCode, 0);
        QCOMPARE(run({ "lint", path, "--ignore", "url" }).exitCode, 1);
        QCOMPARE(run({ "lint", path, "--ignore", "url,statsu" }).exitCode, 2);
    }

    void offer()
    {
        const QStringList arguments { "offer", "--name", "Camera Host", SITE "/catalogue.xml" };
        // options, then names and suffixes of the rows
        for (const QString words :
             { "--version 1.0|Camera Host 1.2 deb,Camera Host 1.2 tar.gz", "--version 1.2|",
               "--version 1.0 --name other|",
               "--version 1.2 --beta|Camera Host 2.0 preview BETA deb,Camera Host 2.0 preview BETA tar.gz",
               "--version 1.0 --types zip|Camera Host 1.2 zip",
               "--version 1.0 --platforms win --types=|Camera Host 1.2 exe",
               "--version 1.2 --camera QT-4402=2.9 --camera QT-4402=2.9.1|Thermal Firmware 2.10 rpk",
               "--version 1.2 --camera QD-2204=4.1.0 --language fr|Dome Firmware 4.2.0 rpk" }) {
            const QString files = words.section('|', 1);
            const Outcome outcome = run(arguments + words.section('|', 0, 0).split(' '));
            QStringList rows;
            for (const QString &line : outcome.out.split('\n', Qt::SkipEmptyParts).mid(1)) {
                const QStringList columns = line.split(QStringLiteral("  "), Qt::SkipEmptyParts);
                rows << columns.at(0) + ' ' + columns.at(2).trimmed();
            }
            QCOMPARE(rows.join(','), files);
            QCOMPARE(outcome.exitCode, files.isEmpty() ? 1 : 0);
        }
    }

    void show()
    {
        const QString path =
            written("<package-set base-url='http://h/' platform='b'><package-set name='inner'>" + package("url='a.zip'")
                    + "</package-set>" + package("platform='a c' name='&lt;\"' file-size='2'") + "</package-set>");
        const Outcome table = run({ "show", path });
        QCOMPARE(table.exitCode, 0);
        QCOMPARE(table.out.count('\n'), 3);

        const QByteArray json = run({ "show", "--json", path }).out.toUtf8();
        const QVariantList packages = QJsonDocument::fromJson(json).toVariant().toList();
        QCOMPARE(packages.size(), 2);
        const QVariantMap outer = packages[0].toMap(), inner = packages[1].toMap();
        QCOMPARE(outer["name"].toString(), QString("<\""));
        QCOMPARE(outer["platform"].toStringList().join(' '), QString("a b c"));
        QCOMPARE(inner["url"].toString(), QString("http://h/a.zip"));
        QCOMPARE(inner["identity"].toString(), QString("1-2026-01-02T00:00:00-1"));
    }

    void overHttp()
    {
        HttpServer server;
        server.route("/c.xml?a=b", HttpAnswer(list(package())));
        server.route("/moved", HttpAnswer::redirect("/c.xml?a=b"));
        QCOMPARE(run({ "lint", server.url().resolved(QUrl("/c.xml?a=b")).toString() }).exitCode, 0);
        QCOMPARE(run({ "show", server.url("/moved").toString() }).exitCode, 0);
        const Outcome missing = run({ "lint", server.url("/none").toString() });
        QCOMPARE(missing.exitCode, 2);
        QVERIFY2(missing.err.contains("404"), qPrintable(missing.err));
        server.stop();
        QCOMPARE(run({ "lint", server.url("/c.xml").toString() }).exitCode, 2);
    }

    void cannotWork()
    {
        for (const QString words :
             { "", "check SITE", "lint", "lint SITE SITE", "lint SITE/none", "lint SITE --packages SITE", "show /",
               "lint --json SITE", "offer SITE --name a", "offer SITE --name a --version 1 --camera m", "show MAIN",
               "seal http://h/c.xml --packages / --expires 1d", "seal SITE --expires 1d" }) {
            QStringList arguments = words.split(' ', Qt::SkipEmptyParts);
            arguments.replaceInStrings("SITE", SITE "/catalogue.xml").replaceInStrings("MAIN", SITE "/../main.cpp");
            const Outcome outcome = run(arguments);
            QVERIFY2(outcome.exitCode == 2 && outcome.out.isEmpty() && !outcome.err.isEmpty(), qPrintable(words));
        }
    }

    void seal_data()
    {
        columns<QByteArray, QByteArray>("before", "after");
        const auto rewritten = [](const char *name, const QByteArray &before, QByteArray after) {
            after.replace("@ROOT", "serial=\"1\" expires=\"@EXPIRES\"")
                .replace("@FILE", "file-size=\"3\" sha256=\"@HASH\"");
            after.replace("@EXPIRES", expires).replace("@HASH", hashOfAbc);
            row(name, before, after);
        };
        rewritten("attributes", "<l  a='1'\r\n><package url='http://h/a.zip' file-size=\"9 kB\"\r\n  sha256=''/></l>",
                  "<l  a='1' @ROOT\r\n><package url='http://h/a.zip' file-size=\"3\"\r\n  sha256='@HASH'/></l>");
        rewritten("renewed", "<l expires='x' serial = '41'><package><file url='http://h/d/a.zip'/></package></l>\n",
                  "<l expires='@EXPIRES' serial = '42'><package><file url='http://h/d/a.zip' @FILE/></package></l>\n");
        rewritten("children",
                  "<l url='http://h/a.zip'><package><sha256 /><file-size><![CDATA[1]]><!-- > --></file-size>"
                  "<file><sha256> <a/>x</sha256></file></package></l>",
                  "<l url='http://h/a.zip' @ROOT><package><sha256 /><file-size>3</file-size>"
                  "<file><sha256>@HASH</sha256></file></package></l>");
        rewritten("an empty child, and a value of the set",
                  "<l url='http://h/a.zip' file-size='1'><package name='&lt;&#10;>'><sha256/></package></l>",
                  "<l url='http://h/a.zip' file-size='1' @ROOT><package name='&lt;&#10;>' file-size=\"3\">"
                  "<sha256>@HASH</sha256></package></l>");
        const QByteArray dtd = "\xef\xbb\xbf<?xml version='1.0'?>\r\n<!DOCTYPE l SYSTEM '[>' [<!-- ]> ' -->]>\n";
        const QByteArray aside = "<!-- <package> --><?p <l?>\xc3\xa4\xf0\x9f\x98\x80<![CDATA[<package>']]>";
        rewritten("asides", dtd + "<l>" + aside + "<package url='http://h/a.zip'/></l>",
                  dtd + "<l @ROOT>" + aside + "<package url='http://h/a.zip' @FILE/></l>");
        const QByteArray latin = "<?xml version='1.0' encoding='ISO-8859-1'?><l \xe4='\xfc'";
        rewritten("Latin-1", latin + "><package url='http://h/a.zip'></package></l>",
                  latin + " @ROOT><package url='http://h/a.zip' @FILE></package></l>");
        rewritten("nothing in it", "<l/>", "<l @ROOT/>");
    }
    void seal()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        QVERIFY(write("a.zip", "other") && write("p/a.zip", "abc") && write("real.xml", before));
        const QString link = folder.filePath("link.xml");
        QFile::link("real.xml", link);
        QVERIFY(QFile::setPermissions(link, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
        const auto permissions = QFileInfo(link).permissions();
        const Outcome outcome = run({ "seal", link, "--packages", folder.filePath("p"), "--expires", expires });
        QCOMPARE(outcome.err, QString());
        QCOMPARE(contentOf(link), after);
        QVERIFY(QFileInfo(link).isSymLink() && QFileInfo(link).permissions() == permissions);
        QVERIFY(outcome.out.endsWith("\nminisign -Sm " + link + '\n'));
    }

    void sealRefuses_data()
    {
        columns<QByteArray, QString, QString>("catalogue", "expires", "reasons");
        const auto refused = [](const char *name, const QByteArray &catalogue, const char *reasons) {
            row(name, catalogue, "1d", reasons);
        };
        refused("files", "<l><package url='http://h/x.zip'/><package/><package url='http://h/../a.zip'/></l>",
                "package 1: \"http://h/x.zip\" is not in|package 2: \"\" is not in|package 3");
        refused("empty file", "<l><package url='http://h/empty.zip'/></l>", "empty.zip\" is empty");
        refused("serial", "<l serial='many'/>", "serial \"many\"");
        refused("last serial", "<l serial='9223372036854775807'/>", "serial");
        refused("UTF-16", QByteArray("\xff\xfe<\0l\0/\0>\0", 10), "UTF-16");
        refused("what clients refuse", "<l><package></l>", "Inside <package> of line 1");
        refused("a default that comes first",
                "<!DOCTYPE l [<!ATTLIST file sha256 CDATA 'x'>]><l><package url='http://h/a.zip' sha256='y'><file/>"
                "</package></l>",
                "nothing was");
        for (const QString time : { "1 day", "2999-12-31T00:00:00", "2026-01-01T00:00:00Z", "0w" })
            row(qPrintable(time), QByteArray("<l/>"), time, "--expires");
    }
    void sealRefuses()
    {
        QFETCH(QByteArray, catalogue);
        QFETCH(QString, expires);
        QFETCH(QString, reasons);
        QVERIFY(write("a.zip", "abc") && write("empty.zip", "") && write("catalogue.xml", catalogue));
        const Outcome outcome = run({ "seal", file(), "--packages", folder.path(), "--expires", expires });
        QCOMPARE(outcome.exitCode, 2);
        for (const QString &part : reasons.split('|'))
            QVERIFY2(outcome.err.contains(part), qPrintable(outcome.err));
        QCOMPARE(contentOf(file()), catalogue);
    }

    void walkThrough()
    {
        // The commands of the page, in their order, as an operator types them; but for the passwords.
        QByteArray commands = "set -eu\ncp -r " SITE " site\n";
        for (const QByteArray &part : contentOf(PAGE).replace("```sh\n", "\1").split('\1').mid(1))
            commands += part.left(part.indexOf("```"));
        QVERIFY(commands.count("minisign -G") == 3 && commands.count("qv-catalogue verify") == 2);
        qputenv("HOME", folder.path().toUtf8());
        qputenv("PATH", QFileInfo(TOOL).path().toUtf8() + ':' + qgetenv("PATH"));
        QProcess shell;
        shell.setWorkingDirectory(folder.path());
        shell.start("sh", { "-c", commands.replace("minisign -G", "minisign -G -W") });
        QVERIFY(shell.waitForFinished(60'000));
        QVERIFY2(shell.exitCode() == 0, shell.readAllStandardError().constData());
        QVERIFY(shell.readAllStandardOutput().contains("packages that can be offered: 24 of 24\n"));
    }

    void verify_data()
    {
        columns<QString, int, QString>("arguments", "exitCode", "told");
        row("accepted", "C --key spare.pub --key KEY", 0, ", serial 1, expires 2");
        row("on a server", "URL --key KEY", 0, "accepted");
        row("no signature", "URLx --key next.pub", 1, "/c.xmlx.minisig is missing");
        row("other key", "C --key camera-host.pub", 1, "none of those given");
        row("no signature at all", "C --key KEY --signature next.pub", 1, "next.pub is no signature");
        row("for another file", "next.pub --key KEY --signature C.minisig", 1, "for another catalogue");
        row("not sealed", "plain.xml --key KEY", 1, "has no serial");
        row("expired", "old.xml --key KEY", 1, "it expired at 2026-01-01T00:00:00Z");
        row("not to be read", "broken.xml --key KEY", 1, "broken.xml:1: ");
        row("not offered", "some.xml --key KEY", 0,
            "offered: 0 of 2\nnot offered: package 1 a: no sha256\nnot offered: package 2: no file-size");
        row("no key", "C --key C", 2, "neither a public key");
        row("no keys", "C", 2, "--key");
        row("no catalogue", "none --key KEY", 2, "none: not there");
        row("no such signature", "C --key KEY --signature none", 2, "none: not there");
    }
    void verify() // what the walk-through has left
    {
        QFETCH(QString, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, told);
        const QByteArray seal = "serial='1' expires='2999-01-01T00:00:00Z'", hash(64, 'a');
        const QMap<QString, QByteArray> others {
            { "plain.xml", "<l/>" },
            { "old.xml", "<l serial='1' expires='2026-01-01T00:00:00Z'/>" },
            { "broken.xml", "<l " + seal + "><package></l>" },
            { "some.xml", "<l " + seal + "><package name='a' file-size='1'/><package sha256='" + hash + "'/></l>" },
        };
        for (auto other = others.cbegin(); other != others.cend(); ++other) {
            if (!arguments.contains(other.key()))
                continue;
            QVERIFY(write(other.key(), *other));
            const QStringList sign { "-Ss", folder.filePath("next.key"), "-m", folder.filePath(other.key()) };
            QCOMPARE(QProcess::execute("minisign", sign), 0);
        }
        const QString catalogue = "site/catalogue.xml";
        HttpServer server;
        server.route("/c.xml?a=b", HttpAnswer(contentOf(folder.filePath(catalogue))));
        server.route("/c.xml.minisig?a=b", HttpAnswer(contentOf(folder.filePath(catalogue + ".minisig"))));
        server.route("/c.xmlx", HttpAnswer(contentOf(folder.filePath(catalogue))));
        QDir::setCurrent(folder.path());
        arguments.replace(QRegularExpression("\\bC\\b"), catalogue);
        arguments.replace("URLx", server.url("/c.xmlx").toString());
        arguments.replace("URL", server.url().resolved(QUrl("/c.xml?a=b")).toString());
        arguments.replace("KEY", contentOf("next.pub").split('\n').at(1));
        const Outcome outcome = run(QStringList { "verify" } + arguments.split(' '));
        QVERIFY2((outcome.out + outcome.err).contains(told), qPrintable(outcome.out + outcome.err));
        QCOMPARE(outcome.exitCode, exitCode);
    }

    void documentationShowsTheDemosCatalogue()
    {
        QVERIFY2(contentOf(PAGE).contains("```xml\n" + contentOf(SITE "/catalogue.xml") + "```"),
                 "docs/catalogue.md quotes examples/camera-host/site/catalogue.xml: copy it there");
        const Outcome outcome = run({ "lint", SITE "/catalogue.xml", "--ignore", "order,languages" });
        QCOMPARE(outcome.out, QString());
        QCOMPARE(outcome.exitCode, 0);
    }

private:
    QString file() const { return folder.filePath("catalogue.xml"); }

    /// Packages, or a whole catalogue.
    QString written(const QByteArray &text) const
    {
        if (!write("catalogue.xml", text.startsWith("<list ") ? text : list(text)))
            qFatal("cannot write %s", qPrintable(file()));
        return file();
    }

    bool write(const QString &name, const QByteArray &bytes) const
    {
        const QString path = folder.filePath(name);
        QFile file(path);
        return QFileInfo(path).dir().mkpath(".") && file.open(QIODevice::WriteOnly)
            && file.write(bytes) == bytes.size();
    }

    QTemporaryDir folder;
};

QTEST_GUILESS_MAIN(CatalogueToolTest)
#include "tst_catalogue_tool.moc"
