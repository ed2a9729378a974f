// Archives: what unpacking keeps, what it refuses, and that a refusal or a cancellation leaves nothing behind.
#include "FileUtils.h"
#include "IOException.h"
#include "Row.h"
#include "Unzipper.h"
#include "ZipBuilder.h"
#include "ZipReader.h"

#include <QProgressDialog>
#include <QtTest>

#include <clocale>
#include <filesystem>
#include <random>

using namespace qv;

namespace {

const unsigned Folder = S_IFDIR | 0755;
const unsigned Link = S_IFLNK | 0777;

struct stat statusOf(const QString &path)
{
    struct stat status = {};
    lstat(path.toUtf8().constData(), &status);
    return status;
}

QByteArray noise(int size)
{
    std::mt19937 generator(size);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = char(generator());
    return bytes;
}

} // namespace

class TestArchives : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        scratch = std::make_unique<QTemporaryDir>();
        QVERIFY(scratch->isValid());
        QVERIFY(QDir(scratch->path()).mkdir("out"));
    }

    void keeps_data()
    {
        columns<bool>("inBackground");
        row("reader", false);
        row("unzipper", true);
    }
    void keeps()
    {
        QFETCH(bool, inBackground);
        const QByteArray name = "sub/\xc3\xbc \xe6\x97\xa5 e\xcc\x81.txt"; // the accent stays a character of its own
        const QByteArray large = noise(700000);
        write({ ZipItem("./", "", Folder), ZipItem("sub/", "", S_IFDIR | 07777).at(1111111111), //
                ZipItem(name, "text", S_IFREG | 04755).at(1234567890), ZipItem("empty", "", S_IFREG | 0640),
                ZipItem("readonly", large, S_IFREG | 0444).deflate(), ZipItem("wide", large, S_IFREG | 0666).wide(),
                ZipItem("sub/link", "../empty", Link).at(1222222222), ZipItem("here", "sub/./../sub", Link),
                ZipItem("dos\\deep\\file", "x", 0).by(0) });
        QVERIFY(setlocale(LC_ALL, "C")); // as under LC_ALL=C, where libarchive sees no names
        const QString message = inBackground ? unzip() : read();
        setlocale(LC_ALL, "");
        QCOMPARE(message, QString());

        const QHash<QByteArray, QByteArray> contents {
            { name, "text" }, { "readonly", large }, { "wide", large }, { "dos/deep/file", "x" }, { "here/link", "" },
        };
        for (const QByteArray &file : contents.keys())
            QVERIFY2(FileUtils::readBytes(out(file)) == contents[file], file);
        QCOMPARE(QFile(out("sub/link")).symLinkTarget(), out("empty"));
        QVERIFY(QFileInfo(out("here")).isSymLink());
        QCOMPARE(QFileInfo(out("empty")).size(), qint64(0));

        const QHash<QByteArray, mode_t> modes { { name, S_IFREG | 0755 },
                                                { "empty", S_IFREG | 0640 },
                                                { "readonly", S_IFREG | 0644 },
                                                { "wide", S_IFREG | 0644 },
                                                { "sub", S_IFDIR | 0755 } };
        for (const QByteArray &file : modes.keys())
            QCOMPARE(statusOf(out(file)).st_mode, modes[file]);
        QCOMPARE(statusOf(out(name)).st_mtime, time_t(1234567890));
        QCOMPARE(statusOf(out("sub")).st_mtime, time_t(1111111111));
        QCOMPARE(statusOf(out("sub/link")).st_mtime, time_t(1222222222));
    }

    void refuses_data()
    {
        columns<QByteArray, QString>("bytes", "reason");
        const auto row = [](const char *name, const QList<ZipItem> &items, const char *reason) {
            ::row(name, ZipBuilder::archive(items), QString::fromUtf8(reason));
        };
        const ZipItem sound("sound", "text");
        const QByteArray zeros(33 * 1024 * 1024, '\0');
        row("parent", { sound, { "../evil", "x" } }, "'../evil' leads out of its folder");
        row("parent in the middle", { sound, { "a/../../evil", "x" } }, "'a/../../evil' leads out of its folder");
        row("parent, backslash", { sound, { "a\\..\\..\\evil", "x" } }, "leads out of its folder");
        row("parent, DOS", { sound, ZipItem("..\\evil", "x", 0).by(0) }, "'../evil' leads out of its folder");
        row("absolute", { sound, { "/tmp/evil", "x" } }, "'/tmp/evil' has an absolute path");
        row("drive", { sound, { "C:evil", "x" } }, "'C:evil' has an absolute path");
        row("NUL in a name", { sound, { QByteArray("evil\0.txt", 9), "x" } }, "'evil?.txt' has a NUL in its name");
        row("no name", { sound, { "", "x" } }, "an entry has no name");
        row("no name but dots", { sound, { "./.", "x" } }, "'./.' has no name");
        row("long name", { sound, { QByteArray(256, 'n'), "x" } }, "has too long a name");
        row("long path", { sound, { QByteArray(2100, 'n').replace("nn", "n/"), "x" } }, nullptr);
        row("markup in a name", { sound, { "../<img src='x'>", "x" } }, "'../?img src='x'>' leads out");
        row("name is not UTF-8", { sound, { "\xff", "x" } }, "cannot be read");
        row("link to an absolute path", { sound, { "l", "/etc", Link } }, "'l' is a link that leads out of its folder");
        row("link to the parent", { sound, { "d/l", "../../d", Link } },
            "'d/l' is a link that leads out of its folder");
        row("links that add up", { sound, { "a/b/up", "../..", Link }, { "l", "a/b/up/..", Link } }, "'l' is a link");
        row("links that hide",
            { sound, { "l", "m", Link }, { "m", "a/b", Link }, { "a/b/x", "../..", Link }, { "out", "l/x/..", Link } },
            "'out' is a link that leads out of its folder");
        row("link to nothing", { sound, { "l", "", Link } }, "'l' is");
        row("through a link", { { "l", ".", Link }, { "l/evil", "x" } }, "'l' cannot be written");
        row("through a link, link last", { { "l/evil", "x" }, { "l", "/tmp", Link } }, "'l' is a link");
        row("file twice", { sound, sound }, "'sound' cannot be written");
        row("file as folder", { sound, { "sound/evil", "x" } }, "'sound/evil' cannot be written");
        row("folder as file", { { "d/", "", Folder }, { "d", "x" } }, "'d' cannot be written");
        row("folder with content", { sound, { "d/", "x", Folder } }, "'d/' is a folder and something else");
        row("device", { sound, { "null", "", S_IFCHR | 0666 } }, "'null' is neither file, folder nor link");
        row("pipe", { sound, { "pipe", "", S_IFIFO | 0666 } }, "'pipe' is neither file, folder nor link");
        row("encrypted", { sound, ZipItem("secret", "x").flag(1) }, "'secret' is encrypted");
        row("wrong checksum", { sound, ZipItem("bad", "x").checksum(1) }, "'bad' cannot be read");
        row("smaller than it says", { sound, ZipItem("bad", "x").announce(2) }, "'bad'");
        row("larger than it says", { sound, ZipItem("bad", noise(999)).deflate().announce(2) }, "'bad'");
        row("bomb", { sound, ZipItem("zeros", zeros).deflate() }, "times its size");
        row("bomb that lies", { sound, ZipItem("zeros", zeros).deflate().announce(10) }, "'zeros'");
        row("bomb of overlaps", { sound, { "a", noise(99999) }, ZipItem("b", noise(99999)).sameDataAs(1) }, "overlaps");
        row("beyond the disk", { ZipItem("huge", noise(999)).deflate().announce(Q_UINT64_C(1) << 50) },
            "times its size");
        row("beyond all numbers", { ZipItem("a", "x").announce(~0ull >> 1), ZipItem("b", "x").announce(~0ull >> 1) },
            "'b' cannot be as large as it says");

        const QByteArray zip = ZipBuilder::archive({ { "a", "text" }, { "b", noise(99) } });
        ::row("nothing", QByteArray(), "");
        ::row("noise", noise(100000), "");
        ::row("other format", QByteArray("\x1f\x8b\x08\0", 4) + noise(999), "");
        ::row("no beginning", zip.mid(50), "");
        ::row("entry missing from the table", QByteArray(zip).replace("\2\0\2", 4, "\3\0\3", 4), "");
        for (int size : { 1, 60, 200, int(zip.size()) - 1 })
            QTest::addRow("cut at %d", size) << zip.left(size) << "";
    }
    void refuses()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, reason);
        FileUtils::writeBytes(bytes, package());
        const QString fromReader = read();
        QVERIFY2(fromReader.contains(reason) && fromReader.startsWith("package.zip: "), qPrintable(fromReader));
        QVERIFY(QDir(out("")).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System));
        QCOMPARE(unzip(), fromReader);
        QCOMPARE(everything(), QStringList { "package.zip" });
    }

    void everyDamageEndsWell()
    {
        const QByteArray zip = ZipBuilder::archive({ { "d/", "", Folder },
                                                     ZipItem("d/a", QByteArray(5000, 'a') + noise(50)).deflate(),
                                                     { "d/b", noise(20) },
                                                     { "l", "d/a", Link } });
        std::mt19937 random(1);
        for (int i = 0; i < zip.size() * 2; ++i) {
            QByteArray bytes = zip;
            if (i < zip.size())
                bytes[i] = char(bytes[i] ^ (1 << random() % 8));
            else
                bytes.replace(int(random() % unsigned(zip.size())), 8, noise(i).right(8));
            FileUtils::writeBytes(bytes, package());
            if (read().isEmpty())
                std::filesystem::remove_all(qPrintable(out(""))); // Qt cannot remove names that are not UTF-8
            QDir().rmdir(out(""));
            QCOMPARE(everything(), QStringList { "package.zip" });
        }
    }

    void extractsWhatIsAskedFor()
    {
        write({ { "d/", "", Folder }, { "d/a.txt", "a" }, { "d/b.bin", "b" }, { "c", "c" } });
        ZipReader reader(package());
        QVERIFY(!reader.open(QIODevice::ReadWrite));
        QVERIFY(reader.open(QIODevice::ReadOnly));
        QCOMPARE(reader.fileList(QRegularExpression()), (QStringList { "d/", "d/a.txt", "d/b.bin", "c" }));
        QCOMPARE(reader.fileList(QRegularExpression("\\.txt$")), QStringList { "d/a.txt" });
        QCOMPARE(reader.fileList(QRegularExpression("X")), QStringList());
        QVERIFY_EXCEPTION_THROWN(reader.extractFiles({ "c", "x" }, out(""), false), IOException);
        reader.extractFiles({ "d/b.bin" }, out(""), false);
        QCOMPARE(everything(), (QStringList { "out", "out/d", "out/d/b.bin", "package.zip" }));
        QVERIFY_EXCEPTION_THROWN(reader.extractFiles({ "c" }, out(""), false), IOException); // no longer empty
        QVERIFY_EXCEPTION_THROWN(reader.extractFiles({ "c" }, QString(), false), IOException);
        reader.extractFiles(reader.fileList(), out("new/flat"), true);
        QCOMPARE(QDir(out("new/flat")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 (QStringList { "a.txt", "b.bin", "c" }));
    }

    void anyNumberOfEntries()
    {
        write({});
        QCOMPARE(unzip(), QString());
        QVERIFY(QDir(out("")).isEmpty());

        QList<ZipItem> items;
        for (int i = 0; i < 66000; ++i)
            items << ZipItem(QByteArray::number(i / 1000) + "/", "", Folder);
        items << ZipItem("last", "x");
        write(items);
        QCOMPARE(read(), QString());
        QCOMPARE(QDir(out("")).count(), 2u + 66u + 1u);
    }

    void readerCancels()
    {
        write(manyFiles());
        QProgressDialog dialog;
        ZipReader reader(package());
        reader.attachProgressDialog(&dialog);
        reader.open(QIODevice::ReadOnly);
        QTimer::singleShot(0, &dialog, &QProgressDialog::cancel);
        reader.extractFiles(reader.fileList(), out(""), false);
        QVERIFY(reader.wasCanceled());
        QCOMPARE(everything(), (QStringList { "out", "package.zip" }));
        dialog.reset();
        reader.extractFiles({ "0" }, out(""), false);
        QVERIFY(!reader.wasCanceled() && QFile::exists(out("0")));
    }

    void unzipperStopsWhenDestroyed()
    {
        write(manyFiles());
        {
            Unzipper unzipper(package(), out(""), false);
            QTRY_VERIFY(QFile::exists(out("0")));
        }
        QTRY_VERIFY(!QFile::exists(out(""))); // what takes long to remove goes on in the background
    }

    void unzipperReportsInItsOwnThread()
    {
        write({ { "d/a", "a" } });
        Unzipper unzipper(package(), out(""), true);
        QSignalSpy done(&unzipper, &Unzipper::unzippingDone);
        connect(&unzipper, &Unzipper::unzippingDone, [] { QCOMPARE(QThread::currentThread(), qApp->thread()); });
        QVERIFY(done.wait());
        QCOMPARE(done.constFirst().constFirst().toString(), out(""));
        QCOMPARE(FileUtils::readBytes(out("a")), QByteArray("a"));
        QVERIFY(unzipper.removeZipFile());
        QVERIFY(!unzipper.removeZipFile() && !QFile::exists(package()));
    }

private:
    QString package() const { return scratch->filePath("package.zip"); }
    QString out(const QByteArray &name) const
    {
        return scratch->filePath(QString("out") + (name.isEmpty() ? "" : "/") + QString::fromUtf8(name));
    }
    void write(const QList<ZipItem> &items) const { FileUtils::writeBytes(ZipBuilder::archive(items), package()); }

    static QList<ZipItem> manyFiles()
    {
        QList<ZipItem> items;
        for (int i = 0; i < 3000; ++i)
            items << ZipItem(QByteArray::number(i), "x");
        return items;
    }

    /// Unpacks the package into "out"; returns the message of a failure.
    QString read() const
    {
        try {
            ZipReader reader(package());
            reader.open(QIODevice::ReadOnly);
            reader.extractFiles(reader.fileList(), out(""), false);
            return QString();
        } catch (const IOException &exception) {
            return exception.message();
        }
    }
    QString unzip() const
    {
        Unzipper unzipper(package(), out(""), false);
        QSignalSpy done(&unzipper, &Unzipper::unzippingDone), failed(&unzipper, &Unzipper::unzippingFailed);
        (void)QTest::qWaitFor([&] { return !done.isEmpty() || !failed.isEmpty(); }, 60'000);
        return done.isEmpty() ? failed.value(0).value(0, "nothing happened").toString() : QString();
    }

    QStringList everything() const
    {
        QStringList paths;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(qPrintable(scratch->path())))
            paths << QString::fromStdString(entry.path().string()).mid(scratch->path().size() + 1);
        paths.sort();
        return paths;
    }

    std::unique_ptr<QTemporaryDir> scratch;
};

QTEST_MAIN(TestArchives)
#include "tst_archives.moc"
