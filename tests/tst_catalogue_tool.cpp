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
QByteArray list(const QByteArray &packages)
{
    return "<list url='http://h/a.zip' file-size='1' release-date='2026-01-02' release='1.0' status='STABLE'>\n"
        + packages + "</list>";
}

QByteArray package(const QByteArray &attributes = QByteArray())
{
    return "<package " + attributes + (attributes.contains("platform=") ? "/>" : " platform='p'/>");
}

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
        row("broken", QByteArray("<package>"), "(line 2); clients|[xml]");
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
        row("order", package("release='2.10'") + '\n' + package("release='2.9' file-size='2'"),
            "1 2.10: as text \"2.10\" comes before \"2.9\" of package 2;|[order]");
        row("two products", package("release='2.10' name='a'") + package("release='2.9' name='b' file-size='2'"), "");
        row("spelling", package("release='2.1'") + '\n' + package("release='2.1.0' file-size='2'"),
            ":3: package 2 2.1.0: \"2.1.0\" is the same version as \"2.1\" of package 1;|[spelling]");
        const QByteArray firmware = "<type>Camera Firmware</type>";
        row("languages",
            firmware + package("language='de en'") + package("language='en' file-size='2'")
                + package("language='fr' file-size='3'"),
            "1 1.0: hidden from users of fr; its languages are \"de,en\"|[languages]\n"
            "2 1.0: hidden from users of en, de, fr; its languages are \"en\", and English|[languages]\n"
            "3 1.0: hidden from users of en, de; its languages are \"fr\"|[languages]");
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
             { "", "check SITE", "lint", "lint SITE SITE", "lint SITE/none", "show /", "lint --json SITE",
               "offer SITE --name a", "offer SITE --name a --version 1 --camera m", "show MAIN" }) {
            QStringList arguments = words.split(' ', Qt::SkipEmptyParts);
            arguments.replaceInStrings("SITE", SITE "/catalogue.xml").replaceInStrings("MAIN", SITE "/../main.cpp");
            const Outcome outcome = run(arguments);
            QVERIFY2(outcome.exitCode == 2 && outcome.out.isEmpty() && !outcome.err.isEmpty(), qPrintable(words));
        }
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

    QString written(const QByteArray &packages) const
    {
        QFile catalogue(file());
        if (!catalogue.open(QIODevice::WriteOnly) || catalogue.write(list(packages)) < 0)
            qFatal("cannot write %s", qPrintable(file()));
        return file();
    }

    QTemporaryDir folder;
};

QTEST_GUILESS_MAIN(CatalogueToolTest)
#include "tst_catalogue_tool.moc"
