// Catalogues as servers write them: which package gets which value, and what becomes of bad ones.
#include "DownloadManager.h"
#include "LogCapture.h"
#include "Row.h"
#include "XmlUtils.h"

#include <QBuffer>
#include <QFile>
#include <QRandomGenerator>
#include <QtTest>

#include <memory>

using namespace qv;

namespace {

PackageInfoList parse(const QByteArray &xml)
{
    QByteArray bytes = xml;
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    return DownloadManager::parseXML(&device);
}

/// The value of one field as text, sets sorted.
QString field(const PackageInfo &package, const QString &name)
{
    const auto sorted = [](const QStringSet &set) {
        QStringList words = set.values();
        words.sort();
        return words.join(' ');
    };
    const auto links = [](const UrlMap &map) {
        QStringList texts;
        for (auto link = map.cbegin(); link != map.cend(); ++link)
            texts << link.key() + '=' + link.value().toString();
        return texts.join(' ');
    };
    if (name == "name")
        return package.name;
    if (name == "status")
        return package.status;
    if (name == "comment")
        return package.comment;
    if (name == "url")
        return package.url.toString();
    if (name == "platforms")
        return sorted(package.platforms);
    if (name == "languages")
        return sorted(package.languages);
    if (name == "releaseNotes")
        return links(package.releaseNotes);
    qFatal("no field %s", qPrintable(name));
}

void resetPeak()
{
    QFile file("/proc/self/clear_refs");
    if (file.open(QIODevice::WriteOnly))
        file.write("5");
}

/// The most memory that the process has had since resetPeak().
qint64 peakKiB()
{
    QFile file("/proc/self/status");
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no /proc");
    const QByteArray status = file.readAll();
    return status.mid(status.indexOf("VmHWM:") + 6).split('k').first().trimmed().toLongLong();
}

/// A random piece of catalogue. Small alphabets, so that everything meets everything.
QByteArray randomElement(QRandomGenerator &random, const QByteArray &name, int depth)
{
    static const QList<QByteArray> values { "name", "status",   "platform",      "language",
                                            "url",  "base-url", "release-notes", "readme" };
    QByteArray attributes, content;
    for (const QByteArray &value : values) {
        const QByteArray text = value + QByteArray::number(random.bounded(9));
        if (random.bounded(5) == 0)
            attributes += ' ' + value + "='" + text + "'";
        for (int count = random.bounded(8) - 5; count > 0; --count) {
            const bool isLink = value == "release-notes" || value == "readme";
            content +=
                isLink && depth < 9 ? randomElement(random, value, 9) : '<' + value + '>' + text + "</" + value + '>';
        }
    }
    if (random.bounded(3) == 0 && depth < 10)
        content += randomElement(random, "file", 10);
    for (int count = depth < 3 ? random.bounded(4) : 0; count > 0; --count)
        content +=
            randomElement(random, random.bounded(2) ? "package" : "package-set", name == "package" ? 9 : depth + 1);
    return '<' + name + attributes + '>' + content + "</" + name + '>';
}

} // namespace

class CatalogueTest : public QObject
{
    Q_OBJECT

private slots:
    void values_data()
    {
        columns<QByteArray, QString, QString>("xml", "name", "value");
        const auto add = [](const char *title, const QByteArray &xml, const char *name, const char *value) {
            row(title, xml, name, value);
        };
        add("any root", "<list><package name='a'/></list>", "name", "a");
        add("child before attribute", "<s><package name='a'><name>b</name></package></s>", "name", "b");
        add("first child", "<s><package><name>a</name><name>b</name></package></s>", "name", "a");
        add("empty child counts", "<s name='x'><package><name/></package></s>", "name", "");
        add("file before package", "<s><package><status>a</status><file status='b'/></package></s>", "status", "b");
        add("package before set", "<s status='a'><package><status>b</status></package></s>", "status", "b");
        add("only the first file", "<s><package><file/><file name='b'/></package></s>", "name", "");
        add("set after its package", "<s><package/><name>a</name></s>", "name", "a");
        add("nearest set", "<s name='a'><package-set name='b'><package-set><package/></package-set></package-set></s>",
            "name", "b");
        add("root named like a value", "<comment>x<package><name>a</name></package>y</comment>", "comment", "xay");
        add("markup in a value", "<s><package><name>a<b>b</b>c</name></package></s>", "name", "abc");
        add("base and url", "<s base-url='http://h/d'><package url='/a.zip'/></s>", "url", "http://h/d/a.zip");
        add("base alone", "<s base-url='http://h/d.zip'><package/></s>", "url", "http://h/d.zip");
        add("platforms add up", "<s platform='a,b'><package><platform>c d</platform><file platform='e'/></package></s>",
            "platforms", "a b c d e");
        add("languages from child and attribute", "<s><package language='de'><language>en</language></package></s>",
            "languages", "de en");
        add("notes without language", "<s><package><release-notes url='n'/></package></s>", "releaseNotes", "en=n");
        add("notes take the raw language", "<s><package language='de en'><release-notes url='n'/></package></s>",
            "releaseNotes", "de en=n");
        add("notes take the package's url", "<s><package url='p.zip'><release-notes language='de'/></package></s>",
            "releaseNotes", "de=p.zip");
        add("notes as attribute", "<s><package release-notes='n'><language>fr</language></package></s>", "releaseNotes",
            "fr=n");
        add("attribute looks into file",
            "<s><package release-notes='n' language='a'><file language='b'/></package></s>", "releaseNotes", "b=n");
        add("child does not", "<s><package language='a'><file language='b'/><release-notes url='n'/></package></s>",
            "releaseNotes", "a=n");
        add("outer notes first",
            "<s><release-notes url='o1'/><release-notes url='o2'/><package><release-notes url='i'/></package></s>",
            "releaseNotes", "en=o2 en=o1 en=i");
    }
    void values()
    {
        QFETCH(QByteArray, xml);
        QFETCH(QString, name);
        LogCapture quiet;
        const PackageInfoList packages = parse(xml);
        QCOMPARE(packages.size(), 1);
        QTEST(field(packages.first(), name), "value");
    }

    void order()
    {
        LogCapture quiet;
        QStringList names;
        for (const PackageInfo &package :
             parse("<s><package-set><package name='3'/><package-set><package name='4'/></package-set></package-set>"
                   "<package name='1'/><other><package name='x'/></other>"
                   "<package-set><package name='5'/></package-set><package name='2'/></s>"))
            names << package.name;
        QCOMPARE(names.join(""), QStringLiteral("12345"));
    }

    void oneRuleForTreeAndNodes()
    {
        LogCapture quiet;
        QRandomGenerator random(7);
        int seen = 0;
        for (int round = 0; round < 200; ++round) {
            QByteArray xml = randomElement(random, random.bounded(5) ? "softwareList" : "name", 0);
            QBuffer device(&xml);
            device.open(QIODevice::ReadOnly);
            const std::unique_ptr<QDomDocument> document(XmlUtils::parseXml(&device, nullptr));
            PackageInfoList fromNodes;
            DownloadManager::parseSet(document->documentElement(), fromNodes);
            const PackageInfoList packages = parse(xml);
            QCOMPARE(packages.size(), fromNodes.size());

            QList<QDomElement> nodes;
            collect(document->documentElement(), nodes);
            QCOMPARE(packages.size(), nodes.size());
            for (int i = 0; i < packages.size(); ++i, ++seen) {
                const QDomElement &node = nodes.at(i);
                QCOMPARE(packages[i].name, DownloadManager::findString(node, "name"));
                QCOMPARE(packages[i].status, DownloadManager::findString(node, "status"));
                QCOMPARE(
                    packages[i].url,
                    QUrl(DownloadManager::findString(node, "base-url") + DownloadManager::findString(node, "url")));
                QStringSet platforms;
                DownloadManager::findAllStrings(node, "platform", platforms);
                QCOMPARE(packages[i].platforms, platforms);
                UrlMap notes, readme;
                QCOMPARE(DownloadManager::findAllTranslatedUrls(node, "release-notes", notes),
                         packages[i].releaseNotes.size());
                DownloadManager::findAllTranslatedUrls(node, "readme", readme);
                QCOMPARE(packages[i].releaseNotes, notes);
                QCOMPARE(packages[i].readme, readme);
                PackageInfo single;
                DownloadManager::parsePackage(node, single);
                QCOMPARE(single.releaseNotes, notes);
                QCOMPARE(single.languages, packages[i].languages);
            }
        }
        QVERIFY(seen > 100);
    }

    void sizes_data()
    {
        columns<QString, qint64>("text", "bytes");
        const auto add = [](const char *text, qint64 bytes) { row(text, text, bytes); };
        add("2048", 2048);
        add(" 2048 ", 2048);
        add("4kB", 4096);
        add("4KB", 4096);
        add("1.5MB", 1 << 20);
        add("12.9mb", 12 << 20);
        add("12 MB", 12 << 20);
        add("1e3kB", 1024000);
        add("abc", 0);
        add("MB", 0);
        add("5GB", 0);
        add("-5", 0);
        add("-5MB", 0);
        add("infMB", 0);
        add("nanMB", 0);
        add("1e300MB", 0);
        add("8796093022208MB", std::numeric_limits<qint64>::min()); // 2^63, to be read as unsigned
        add("9223372036854775808", std::numeric_limits<qint64>::min());
        add("18446744073709551615", -1);
        add("18446744073709551616", 0);
        add("", 0);
    }
    void sizes()
    {
        QFETCH(QString, text);
        QTEST(DownloadManager::parseFileSize(text), "bytes");
    }

    void dates_data()
    {
        columns<QString, QDateTime>("text", "date");
        row("time", "2011-04-05 13:45:59", QDateTime(QDate(2011, 4, 5), QTime(13, 45, 59)));
        row("day", "2011-04-05", QDateTime(QDate(2011, 4, 5), QTime(0, 0)));
        for (const char *text : { "05.04.2011", "2011-02-30", "2011-04-05 24:00:00", "2011-04-05T13:45:59",
                                  "2011-04-05 ", "0000-01-01", "2011-0a-05", "" })
            row(text, text, QDateTime());
    }
    void dates()
    {
        QFETCH(QString, text);
        const QDateTime date = DownloadManager::parseReleaseDate(text);
        QTEST(date, "date");
        QCOMPARE(date.isNull(), !date.isValid());
        // Whatever is read by hand is what Qt reads.
        const QDateTime asDateTime = QDateTime::fromString(text, "yyyy-MM-dd hh:mm:ss");
        const QDateTime asDate = QDateTime::fromString(text, "yyyy-MM-dd");
        QCOMPARE(date, asDateTime.isValid() ? asDateTime : asDate.isValid() ? asDate : QDateTime());
    }

    void suffixes_data()
    {
        columns<QString, QString, bool>("url", "suffix", "suspicious");
        const auto add = [](const char *url, const char *suffix, bool suspicious = false) {
            row(url, url, suffix, suspicious);
        };
        add("http://h/setup.exe", "exe");
        add("pkg.tar.gz", "tar.gz");
        add("pkg.tar..bz2", "tar.bz2");
        add("Tool.mpkg.zip", "mpkg");
        add("a.zip", "zip");
        add("a.ZIP", "ZIP");
        add("Tool.mpkg.ZIP", "ZIP");
        add("file.gz", "gz", true);
        add("archive.jpeg2000", "jpeg2000", true);
        add("http://h.example/file", "example/file", true);
        add("", "", true);
    }
    void suffixes()
    {
        QFETCH(QString, url);
        QFETCH(bool, suspicious);
        LogCapture log;
        const QString suffix = DownloadManager::parsePackageSuffix(url);
        QTEST(suffix, "suffix");
        const QStringList warning { "DownloadManager::parsePackageType() -> parsed suspicious package suffix '" + suffix
                                    + "' in " + url };
        QCOMPARE(log.take(), suspicious ? warning : QStringList());
    }

    void wholePackage()
    {
        const PackageInfo package =
            parse(
                "<softwareList base-url='http://h/'><package type='t' public-name='P' release='1' public-release='1.0'"
                " comment='c' readme='r'><file url='a.zip' file-size='2kB' "
                "release-date='2020-01-02'/></package></softwareList>")
                .value(0);
        QCOMPARE(package.type, QStringLiteral("t"));
        QCOMPARE(package.publicName, QStringLiteral("P"));
        QCOMPARE(package.release + package.publicRelease + package.comment, QStringLiteral("11.0c"));
        QCOMPARE(package.readme.value("en"), QUrl("r"));
        QCOMPARE(package.stringID(), QStringLiteral("1-2020-01-02T00:00:00-2048"));
        QCOMPARE(package.suffix, QStringLiteral("zip"));
        QCOMPARE(package.flags, 0);
    }

    void refused_data()
    {
        columns<QByteArray>("xml");
        const QByteArray manyPackages =
            QByteArray("<package platform='x'><readme url='y'/></package>").repeated(50'000);
        QByteArray words;
        for (int i = 0; i < 50'000; ++i)
            words += QByteArray::number(i) + ' ';
        row("no XML", QByteArray("404 not found"));
        row("broken", QByteArray("<s><package>"));
        QByteArray otherPackages;
        for (int i = 0; i < 50'000; ++i)
            otherPackages += "<package platform='x" + QByteArray::number(i) + "'/>";
        row("words times packages", "<s platform='" + words + "'>" + otherPackages + "</s>");
        row("links times packages", "<s>" + QByteArray("<readme url='a'/>").repeated(50'000) + manyPackages + "</s>");
        row("long base times packages", "<s base-url='" + QByteArray(1 << 20, 'b') + "'>" + manyPackages + "</s>");
        row("long url times links",
            "<s><url>" + QByteArray(1 << 20, 'u') + "</url>" + QByteArray("<readme/>").repeated(50'000)
                + "<package/></s>");
    }
    void refused()
    {
        QFETCH(QByteArray, xml);
        LogCapture log;
        LogQt::setLevel(Log::Warning);
        QVERIFY(parse(xml).isEmpty());
        QVERIFY(log.take().contains("XML parser error"));
    }

    void richRoots_data()
    {
        columns<QByteArray, int, int>("package", "packages", "MiB");
        const QByteArray plain = "\n  <package>\n    <name>QC-%</name>\n    <public-name>Quorvel QC %</public-name>\n"
                                 "    <release>10.2.%</release>\n    <public-release>10.2</public-release>\n"
                                 "    <status>STABLE</status>\n    <file>\n      <url>firmware/qc-%.zip</url>\n"
                                 "      <file-size>%kB</file-size>\n      <release-date>2024-03-05</release-date>\n"
                                 "    </file>\n  </package>";
        row("as many as a document holds", plain, (16 << 20) / int(plain.size() + 24), 64);
        row("each with values of its own",
            QByteArray("<package name='%' platform='QC-%' language='es' url='%.zip' file-size='%' "
                       "release-date='2024-03-05'><release-notes language='en' url='n/%.html'/></package>"),
            20'000, 64);
    }
    void richRoots()
    {
        QFETCH(QByteArray, package);
        QFETCH(int, packages);
        QFETCH(int, MiB);
        QByteArray xml = "<s base-url='http://updates.example/' language='de en fr it' platform='";
        for (int i = 0; i < 12; ++i)
            xml += "platform-" + QByteArray::number(i) + ' ';
        xml += "'>";
        for (const char *language : { "de", "en", "fr", "it", "es", "nl" })
            xml += QByteArray("<release-notes language='") + language + "' url='http://updates.example/notes.html'/>";
        for (int i = 0; i < packages; ++i)
            xml += QByteArray(package).replace('%', QByteArray::number(i));
        xml += "</s>";
        resetPeak();
        const qint64 before = peakKiB();
        QCOMPARE(parse(xml).size(), packages);
#ifndef __SANITIZE_ADDRESS__
        const qint64 peak = peakKiB();
        QVERIFY2(peak - before <= MiB * 1024, qPrintable(QString::number((peak - before) / 1024)));
#endif
    }

    void sharedValues()
    {
        // Large, and still no more than one copy of each value: 20,000 packages times a comment of a megabyte.
        const PackageInfoList packages = parse("<s base-url='a.zip'><comment>" + QByteArray(1 << 20, 'c') + "</comment>"
                                               + QByteArray("<readme url='a'/>").repeated(2000)
                                               + QByteArray("<package/>").repeated(20'000) + "</s>");
        QCOMPARE(packages.size(), 20'000);
        QVERIFY(packages.first().comment.isSharedWith(packages.last().comment));
        QVERIFY(packages.first().readme.isSharedWith(packages.last().readme));
    }

private:
    static void collect(const QDomElement &set, QList<QDomElement> &packages)
    {
        for (QDomElement e = set.firstChildElement("package"); !e.isNull(); e = e.nextSiblingElement("package"))
            packages << e;
        for (QDomElement e = set.firstChildElement("package-set"); !e.isNull(); e = e.nextSiblingElement("package-set"))
            collect(e, packages);
    }
};

QTEST_MAIN(CatalogueTest)
#include "tst_catalogue.moc"
