// The general utilities of the platform: versions, words, preferences, the log, queued calls by name, XML.
#include "ConnectHelpers.h"
#include "LogCapture.h"
#include "ParseException.h"
#include "Preferences.h"
#include "QtCompat.h"
#include "QuorvelSoftwareVersion.h"
#include "Row.h"
#include "StringUtils.h"
#include "VersionNumber.h"
#include "XmlTree.h"
#include "XmlUtils.h"

#include <QtTest>

#include <ctime>

using namespace qv;

using AliasOfBytes = QByteArray;

class Receiver : public QObject
{
    Q_OBJECT

public slots:
    void plain(const QByteArray &bytes) { seen << QLatin1String("plain ") + QString::fromLatin1(bytes); }
    void alias(AliasOfBytes) { seen << QStringLiteral("alias"); }
    void none() { seen << QStringLiteral("none"); }

public:
    QStringList seen;
};

class PlatformTest : public QObject
{
    Q_OBJECT

private slots:
    void versionOrder()
    {
        const QStringList ladder =
            QString(
                "0,unknown,0.0.1,1-alpha,1.0.2,1.0.2a,1.0.2b,1.99999999999999999998,1.99999999999999999999,2.1alpha,"
                "2.1 BETA 2,2.1beta10,2.1-dev,2.1_pre,2.1-rc1,2.1-RC2,2.1~snapshot,2.1,2.9.1,2.10,9.0,10.0,"
                "99999999999999999999,100000000000000000000")
                .split(',');
        for (int i = 0; i < ladder.size(); ++i) {
            for (int j = 0; j < ladder.size(); ++j) {
                const VersionNumber a(ladder[i].toStdString()), b(ladder[j].toStdString());
                QVERIFY2((a == b) == (i == j) && (a < b) == (i < j) && (a > b) == (i > j) && (a <= b) == (i <= j),
                         qPrintable(ladder[i] + ' ' + ladder[j]));
            }
        }
        for (const char *same : { "2.1.0.0", "02.001", " 2.1 ", "2.1." })
            QVERIFY2(VersionNumber(same) == VersionNumber("2.1"), same);
    }

    void versionTexts()
    {
        QCOMPARE(VersionNumber().toString(), QStringLiteral("0"));
        QCOMPARE(VersionNumber(" ").toString(), QStringLiteral("0"));
        QCOMPARE(VersionNumber(" 2.10.0 beta ").toString(), QStringLiteral("2.10.0 beta"));
        QCOMPARE(VersionNumber("4.4.2.34").toShortVersion(), QStringLiteral("4.4.2"));
        QCOMPARE(VersionNumber("4.4.2.34-rc1").toShortVersion(), QStringLiteral("4.4.2-rc1"));
        QCOMPARE(VersionNumber("3").toShortVersion(), QStringLiteral("3"));
        QCOMPARE(QuorvelSoftwareVersion::applicationVersion("4.4.2.34", "?", 0), QStringLiteral("4.4.2.34"));
        QCOMPARE(QuorvelSoftwareVersion::applicationVersion("4.4.2.34", "?", 2), QStringLiteral("4.4"));
        QCOMPARE(QuorvelSoftwareVersion::applicationVersion(" ", "?", 0), QStringLiteral("?"));
    }

    void words()
    {
        int count = 0;
        const QStringSet words =
            StringUtils::splitStringSet("de, en\tfr\n,de", StringUtils::splitWords, Qt::SkipEmptyParts, &count);
        QCOMPARE(words, (QStringSet { "de", "en", "fr" }));
        QCOMPARE(count, 4);
        QVERIFY(StringUtils::splitStringSet(" , ", StringUtils::splitWords, Qt::SkipEmptyParts).isEmpty());

        const QStringSet word { "QC-2" }, longer { "x", "QC-2000" };
        QVERIFY(StringUtils::intersectsOnBeginning(word, longer) && StringUtils::intersectsOnBeginning(longer, word));
        QVERIFY(!StringUtils::intersectsOnBeginning({ "qc-2" }, longer)
                && !StringUtils::intersectsOnBeginning(word, {}));
    }

    void passwordsAreNotShown()
    {
        for (const auto &[url, shown] : { std::pair("http://me:s3cret@h/x.s3?y", "http://me@h/x.s3?y"),
                                          { "//a@b:1@2:3@h:99999", "//a@b@h:99999" },
                                          { "http://:x@[::1", "http://@[::1" } })
            QCOMPARE(StringUtils::withoutPassword(QString(url)), QString(shown));
        for (const char *same : { "http://h:80/a:b@c", "http://me@h/", "http://h?a:b@c", "//h#a:b@c", "mailto:a@b",
                                  "a:b@c", "http:///a:b@c", "http://[::1]:81/", "\n \t%%", "" })
            QCOMPARE(StringUtils::withoutPassword(QString(same)), QString(same));
    }

    void preferences()
    {
        QTemporaryDir folder;
        QSettings settings(folder.filePath("a.ini"), QSettings::IniFormat);
        settings.setValue("yes", true);
        settings.setValue("number", "12");
        settings.setValue("junk", "fast");
        QVERIFY(Preferences::boolValue(settings, "yes", false) && Preferences::boolValue(settings, "absent", true));
        QVERIFY(Preferences::boolValue(settings, "junk", true) && !Preferences::boolValue(settings, "junk", false));
        QCOMPARE(Preferences::intValue(settings, "number", 3) + Preferences::intValue(settings, "junk", 3), 15);
        QCOMPARE(Preferences::stringValue(settings, "absent", "x"), QStringLiteral("x"));

        const QDateTime time(QDate(2026, 3, 4), QTime(5, 6, 7, 89));
        Preferences::setDateTimeValue(settings, "time", time);
        Preferences::setDateTimeValue(settings, "never", QDateTime());
        QCOMPARE(settings.value("time").toString(), time.toUTC().toString(Qt::ISODateWithMs));
        QCOMPARE(Preferences::dateTimeValue(settings, "time", QDateTime()), time);
        QCOMPARE(Preferences::dateTimeValue(settings, "never", time), time);
        QCOMPARE(Preferences::dateTimeValue(settings, "junk", time), time);
    }

    /// Only what claims more than it holds is taken out, however it is spelled.
    void mendedStore()
    {
        const QByteArray deep = QByteArray("\\0\\0\\0\\x9\\0\\0\\0\\x1").repeated(100'000);
        const bool isLatin1 = !storesAreUtf8;
        for (const auto &[line, isKept] :
             { std::pair(QByteArray("a=@Variant(\\0\\0\\0\\x9\\0\\0\\x1\\0)"), false),
               { "a=\\x40V\\x61riant(\\0\\0\\0\\v\\x7f\\xff\\xff\\xff)", false },
               { "a=@DateTime(\\0\\0\\0\\x9\\0\\x7f\\xff\\xff\\xff)", false },
               { "a=@DateTime(\\0\\0\\0\\x10\\0\\0)", true },
               { "a=@Variant(\\0\\0\\0\\b\\0\\0\\0\\x1\\0\\0\\0\\x2\\0x\\0\\0\\0\\x9\\0\\0\\xff\\0)", false },
               { "a=1, \\x40Variant(\\0\\0\\0\\t\\377\\0\\0\\0), \"\n\"", false },
               { "a=@Variant(\\0\\0\\0\\n\\xff\\0\\0\\0)", true },
               { "a=@Variant(\\0\\0\\0\\x9\\x100\\0\\0\\0)", false },
               { "a=@Variant(\\0\xd1\\0\\0\\x9 \\0\\0\\0)", isLatin1 },
               { "a=\\x40\xef\xbb\xbfVariant(\\0\\0\\0\\x9\\x7f\\0\\0\\0)", isLatin1 },
               { "a=\xc3\xbc \\x40home", true },
               { "a=@Vari\\qant(\\0\\0\\0\\x9\\x7f\\0\\0\\0)", false },
               { "a=@Var\\\r\niant(\\0\\0\\0\\x9\\x7f\\0\\0\\0)", false },
               { ";don\"t @Variant(\\0\\0\\0\\x9\\0\\0\\0\\0)", true },
               { "a=@Variant(" + deep + ')', false } }) {
            const QTemporaryDir folder;
            QFile file(folder.filePath("a.ini"));
            const QVariantMap map { { "list", QVariantList { 1, "two", 3.5, QStringList { "four", "" }, QVariant() } },
                                    { "bytes", QByteArray("\0\xff", 2) },
                                    { "map", QVariantMap { { "date", QDate(2026, 1, 2) } } } };
            QSettings(file.fileName(), QSettings::IniFormat).setValue("map", map);
            QVERIFY(file.open(QIODevice::ReadWrite));
            const QByteArray before = file.readAll();
            file.write(line + "\nafter=2\n");
            file.close();

            QSettings settings(file.fileName(), QSettings::IniFormat);
            QVERIFY(Preferences::mend(settings) && file.open(QIODevice::ReadOnly));
            QCOMPARE(file.readAll(), before + (isKept ? line + '\n' : QByteArray()) + "after=2\n");
            QCOMPARE(settings.value("after").toInt(), 2);
            QCOMPARE(settings.value("map"), QVariant(map));
        }
    }

    void log()
    {
        LogCapture capture;
        LogQt::setLevel(Log::Warning);
        LogQt::write(Log::Progress, "too low");
        LogQt::write(Log::Error, QString::fromUtf8("Grüße\nforged\x1b[31m"));
        QCOMPARE(capture.take(), QStringList { QString::fromUtf8("Grüße?forged?[31m") });
        LogQt::setStream(Log::Error, nullptr);
        LogQt::write(Log::Error, "dropped");
        QVERIFY(capture.take().isEmpty());
    }

    void queuedCalls()
    {
        qRegisterMetaType<QByteArray>("AliasOfBytes");
        // slot, type of the argument as it is spelled, what the receiver sees
        for (const QString words :
             { "plain|QByteArray|plain x", "1plain(QByteArray)|QByteArray|plain x", "plain|const QByteArray &|plain x",
               "alias|QByteArray|alias", "other|QByteArray|", "none|QByteArray|" }) {
            const QByteArray slot = words.section('|', 0, 0).toLatin1(), type = words.section('|', 1, 1).toLatin1();
            const QByteArray argument = "x";
            const QString seen = words.section('|', 2);
            LogCapture capture;
            Receiver receiver;
            QCOMPARE(invokeQueued(&receiver, slot, QGenericArgument(type, &argument)), !seen.isEmpty());
            QVERIFY(receiver.seen.isEmpty());
            QCoreApplication::processEvents();
            QCOMPARE(receiver.seen.join('|'), seen);
            QCOMPARE(capture.take().isEmpty(), !seen.isEmpty());
            QVERIFY(!invokeQueued(nullptr, slot));
        }
    }

    void treeEqualsDom_data()
    {
        columns<QByteArray>("xml");
        row("siblings of one name", QByteArray("<a><b>1</b><c/><b>2</b><b x='y'/></a>"));
        row("mixed text", QByteArray("<a>x<b>y<!-- no --></b>z <![CDATA[<&]]>\n <b> </b>&amp;</a>"));
        row("comments and white space", QByteArray("<?xml version='1.0'?>\n<!-- a --><a>\n <b>\n</b></a>\n"));
        row("entities and odd blanks",
            QByteArray("<a b='&lt;\xc3\xa4' c=\"'>\">&amp; &apos;<b>\xc2\xa0</b><b> x\n</b><!-- - -->y</a >\n"));
        row("name with a colon", QByteArray("<a xmlns:n='u'><n:b c='d'>t</n:b></a>"));
        row("blank sections", QByteArray("<a>x<![CDATA[ ]]>y<b><![CDATA[\n]]></b><b> <![CDATA[]]> </b></a>"));
        for (const char *encoding : { "utf8", "latin1", "ISO-8859-1", "ASCII", "ISO-8859-15", "windows-1252" })
            row(encoding,
                QByteArray("<?xml version='1.0' encoding='") + encoding + "'?><a b='\xc3\xa4'>\xe2\x82\xac</a>");
        row("UTF-8 mark", QByteArray("\xef\xbb\xbf<a>\xc3\xa4</a>"));
        row("UTF-16", QByteArray("\xff\xfe<\0a\0>\0\xe4\0<\0/\0a\0>\0", 18));
        row("harmless DTD", QByteArray("<!DOCTYPE a SYSTEM 'http://127.0.0.1:9/x.dtd'><a>x</a>"));
        row("harmless DTD within",
            "<?a?>\n<!-- ' --><!DOCTYPE a [<!-- ' --><!ATTLIST a b CDATA ']'>]><a>" + QByteArray(5000, 'x') + "</a>");
    }
    void treeEqualsDom()
    {
        QFETCH(QByteArray, xml);
        QBuffer first(&xml), second(&xml);
        first.open(QIODevice::ReadOnly);
        second.open(QIODevice::ReadOnly);
        const XmlTree tree(&first);
        const std::unique_ptr<QDomDocument> document(XmlUtils::parseXml(&second, nullptr));
        QXmlStreamReader reader(xml);
        reader.setNamespaceProcessing(false);
        QDomDocument plain;
        QVERIFY(plain.setContent(&reader, false));
        compare(tree.documentElement(), plain.documentElement());
        compare(tree.documentElement(), document->documentElement());
        QVERIFY(tree.documentElement().parent().parent().isNull());
    }

    void refusedXml_data()
    {
        columns<QByteArray>("xml");
        for (const char *xml :
             { "", "hello", "<a><b>", "<a/><b/>", "<a>&b;</a>", "<a>\xff\xff</a>", "<a>\x01</a>", "<a b='x' b='y'/>",
               "<a b='x'c='y'/>", "<a b='<'/>", "<a>]]></a>", "<a><!-- -- --></a>", "<a></b>", "<a/>x",
               "\n<?xml version='1.0'?><a/>", "<?xml version='1.0' encoding='utf-7'?><a/>",
               "<!DOCTYPE a [<!ENTITY b 'x'><!ENTITY c '&b;&b;&b;&b;'>]><a>&c;</a>",
               "<!DOCTYPE a [<!ENTITY b SYSTEM 'file:///etc/passwd'>]><a>&b;</a>" })
            row(xml, QByteArray(xml));
        QByteArray manyAttributes = "<a";
        for (int i = 0; i < 100'000; ++i)
            manyAttributes += " b" + QByteArray::number(i) + "='>'";
        QByteArray manyNames = "<a>";
        for (int i = 0; i < 1000; ++i)
            manyNames += "<b" + QByteArray::number(i) + "/>";
        QByteArray manyDefaults;
        for (int i = 0; i < 40'000; ++i)
            manyDefaults += "<!ATTLIST a b" + QByteArray::number(i) + " CDATA 'x'>";
        row("default attributes",
            "<!-- > --><!DOCTYPE a [<?b ]>?><!-- ]> --><!ENTITY % c ']>'>" + manyDefaults + "]><a/>");
        row("65 levels", QByteArray("<a>").repeated(65) + QByteArray("</a>").repeated(65));
        row("100,000 attributes", manyAttributes + "/>");
        row("65 attributes", manyAttributes.left(int(manyAttributes.indexOf(" b65="))) + "/>");
        row("too many elements", "<a>" + QByteArray("<b/>").repeated(1'000'000) + "</a>");
        row("too long", "<a>" + QByteArray((16 << 20) + 1, 'x') + "</a>");
        row("UTF-32", QByteArray("<\0\0\0a\0\0\0/\0\0\0>\0\0\0", 16));
        row("UTF-32 with a mark", QByteArray("\xff\xfe\0\0<\0\0\0a\0\0\0/\0\0\0>\0\0\0", 20));
        row("UTF-16 without end", QByteArray("\xfe\xff\0<", 4));
        row("tree only: names without end", manyNames + "</a>");
    }
    void refusedXml()
    {
        QFETCH(QByteArray, xml);
        QBuffer device(&xml);
        device.open(QIODevice::ReadOnly);
        [[maybe_unused]] const std::clock_t before = std::clock();
        QVERIFY_EXCEPTION_THROWN(XmlTree tree(&device), ParseException);
#ifndef __SANITIZE_ADDRESS__
        QVERIFY(std::clock() - before < 2 * CLOCKS_PER_SEC); // of the processor: some would take minutes
#endif
        if (qstrncmp(QTest::currentDataTag(), "tree only", 9) == 0)
            return;
        device.seek(0);
        QDomDocument document("before");
        QVERIFY_EXCEPTION_THROWN(XmlUtils::parseXml(&device, &document), ParseException);
        QVERIFY(document.documentElement().isNull());
    }

private:
    static void compare(const XmlElement &element, const QDomElement &node)
    {
        QCOMPARE(element.isNull(), node.isNull());
        if (node.isNull())
            return;
        QCOMPARE(element.text(), node.text());
        const QDomNamedNodeMap attributes = node.attributes();
        for (int i = 0; i < attributes.count(); ++i)
            QCOMPARE(element.attribute(attributes.item(i).nodeName()).value_or("none"), attributes.item(i).nodeValue());
        QVERIFY(!element.attribute("none"));
        for (const QString &name : { QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("n:b") }) {
            QDomElement child = node.firstChildElement(name);
            for (XmlElement twin = element.firstChild(name); !twin.isNull(); twin = twin.nextSameName()) {
                compare(twin, child);
                child = child.nextSiblingElement(name);
            }
            QVERIFY(child.isNull());
        }
    }
};

QTEST_MAIN(PlatformTest)
#include "tst_platform.moc"
