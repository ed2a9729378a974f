// Archives: what unpacking keeps, what it refuses, and that a refusal or a cancellation leaves nothing behind. Single
// files and folders: what removing spares and reaches, replacing in one step.
#include "FileUtils.h"
#include "IOException.h"
#include "Row.h"
#include "SmallDisk.h"
#include "Unzipper.h"
#include "ZipBuilder.h"
#include "ZipReader.h"

#include <QProgressDialog>
#include <QtTest>

#include <climits>
#include <clocale>
#include <filesystem>
#include <random>

#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace qv;

namespace {

const unsigned Folder = S_IFDIR | 0755;
const unsigned Link = S_IFLNK | 0777;

const QByteArray deepest = QByteArray("d/").repeated(127) + "f";

QByteArray longPath(int size)
{
    return (QByteArray(199, 'n') + '/').repeated(size / 200) + QByteArray(size % 200, 'n');
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

class TestFiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const rlimit few { 100, 100 }; // descriptors: removing a tree must not take one for each level
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &few), 0);
    }
    void init()
    {
        scratch = FileUtils::createTempDir();
        QVERIFY(QDir().mkdir(out("")));
    }
    void cleanup() { QVERIFY(FileUtils::eraseFolder(scratch)); }

    void keeps()
    {
        const QByteArray name = "sub/\xc3\xbc \xe6\x97\xa5 e\xcc\x81.txt"; // the accent stays a character of its own
        const QByteArray large = noise(1500000);                           // two of them keep two threads busy
        write({ ZipItem("./", "", Folder),
                ZipItem("sub/", "", S_IFDIR | 07777).at(1111111111), //
                ZipItem(name, "text", S_IFREG | 04755).at(1234567890),
                ZipItem("empty", "", S_IFREG | 0640).at(5),
                ZipItem("readonly", large, S_IFREG | 0444).at(6).deflate(),
                ZipItem("wide", large, S_IFREG | 0666).at(7).wide(),
                ZipItem("sub/link", "../empty", Link).at(8),
                ZipItem("here", "sub/./../sub", Link).at(9),
                ZipItem("dos\\deep\\file", "x", 0).at(10).by(0),
                { deepest, "x" },
                { longPath(PATH_MAX - 1), "x" } });
        const QHash<QByteArray, QByteArrayList> expected {
            { "sub", { "40755", "1111111111", "" } }, { name, { "100755", "1234567890", "text" } },
            { "empty", { "100640", "5", "" } },       { "readonly", { "100644", "6", large } },
            { "wide", { "100644", "7", large } },     { "here", { "120777", "9", "" } },
            { "here/link", { "120777", "8", "" } },   { "dos/deep/file", { "100644", "10", "x" } },
        };
        for (const bool inBackground : { false, true }) {
            QVERIFY(FileUtils::emptyFolder(out("")));
            QVERIFY(setlocale(LC_ALL, "C")); // as under LC_ALL=C, where libarchive sees no names
            const QString message = inBackground ? unzip() : read();
            setlocale(LC_ALL, "");
            QCOMPARE(message, QString());
            for (const QByteArray &file : expected.keys()) {
                struct stat status = {};
                lstat(qPrintable(out(file)), &status);
                const auto mode = QByteArray::number(status.st_mode, 8),
                           time = QByteArray::number(qint64(status.st_mtime));
                QVERIFY2((QByteArrayList { mode, time, FileUtils::readBytes(out(file)) }) == expected[file], file);
            }
            QCOMPARE(QFile(out("sub/link")).symLinkTarget(), out("empty"));
        }
    }

    void refuses_data()
    {
        columns<QByteArray, QString>("bytes", "reason");
        const auto row = [](const char *name, const QList<ZipItem> &items, const char *reason) {
            ::row(name, ZipBuilder::archive(items), QString::fromUtf8(reason));
        };
        const ZipItem sound("sound", "text");
        ZipItem zeros = ZipItem("zeros", QByteArray(33 * 1024 * 1024, '\0')).deflate().checksum(1);
        row("parent", { sound, { "../evil", "x" } }, "'../evil' leads out of its folder");
        row("parent, backslash", { sound, { "a\\..\\..\\evil", "x" } }, "leads out of its folder");
        row("absolute", { sound, { "/tmp/evil", "x" } }, "'/tmp/evil' has an absolute path");
        row("drive", { sound, { "C:evil", "x" } }, "'C:evil' has an absolute path");
        row("NUL in a name", { sound, { QByteArray("evil\0.txt", 9), "x" } }, "'evil?.txt' has a NUL in its name");
        row("no name", { sound, { "", "x" } }, "an entry has no name");
        row("no name but dots", { sound, { "./.", "x" } }, "'./.' has no name");
        row("long name", { sound, { QByteArray(256, 'n'), "x" } }, "has too long a name");
        row("long path", { sound, { longPath(PATH_MAX), "x" } }, "has too long a name");
        row("deep path", { sound, { QByteArray("d/").repeated(128) + "f", "x" } }, "lies too deep");
        row("deepest path", { { deepest, "x" }, sound, sound }, "'sound' cannot be written");
        row("markup in a name", { sound, { "../<img src='x'>", "x" } }, "'../?img src='x'>' leads out");
        row("name is not UTF-8", { sound, { "\xff", "x" } }, "cannot be read");
        row("link to an absolute path", { sound, { "l", "/etc", Link } }, "'l' is a link that leads out of its folder");
        row("link to the parent", { sound, { "d/l", "../../d", Link } }, "'d/l' is a link that leads out");
        row("link to nothing", { sound, { "l", "", Link } }, "'l' is");
        row("file twice", { sound, sound }, "'sound' cannot be written");
        row("folder as file", { { "d/", "", Folder }, { "d", "x" } }, "'d' cannot be written");
        row("folder with content", { sound, { "d/", "x", Folder } }, "'d/' is a folder and something else");
        row("device", { sound, { "null", "", S_IFCHR | 0666 } }, "'null' is neither file, folder nor link");
        row("encrypted", { sound, ZipItem("secret", "x").flag(1) }, "'secret' is encrypted");
        row("wrong checksum", { sound, ZipItem("bad", "x").checksum(1) }, "'bad' cannot be read");
        row("smaller than it says", { sound, ZipItem("bad", "x").announce(2) }, "'bad'");
        row("larger than it says", { sound, ZipItem("bad", noise(999)).deflate().announce(2) }, "'bad'");
        row("bomb", { sound, zeros }, "times its size");
        row("bomb that lies", { sound, zeros.announce(10) }, "'zeros'");
        row("bomb of overlaps", { sound, { "a", noise(99999) }, ZipItem("b", noise(99999)).sameDataAs(1) }, "overlaps");
        row("beyond all numbers", { ZipItem("a", "x").announce(~0ull >> 1), ZipItem("b", "x").announce(~0ull >> 1) },
            "'b' cannot be as large as it says");

        QList<ZipItem> deep, many; // so much that several threads write it
        for (int i = 0; i < 70; ++i) {
            deep << ZipItem(QByteArray::number(i) + '/' + deepest.mid(2), "x");
            many << ZipItem("d/" + QByteArray::number(i), QByteArray(60000, 'x')).deflate();
        }
        deep << ZipItem("most of what may be", "x").announce(30 << 20);
        row("folders without number", deep, "too many folders");
        many.insert(40, ZipItem("bad", "x").checksum(1));
        row("one among many", many, "'bad' cannot be read");

        const QByteArray zip = ZipBuilder::archive({ { "a", "text" }, { "b", noise(99) } });
        ::row("nothing", QByteArray(), "");
        ::row("noise", noise(100000), "");
        ::row("no beginning", zip.mid(50), "");
        ::row("entry missing from the table", QByteArray(zip).replace("\2\0\2", 4, "\3\0\3", 4), "");
        for (int size : { 1, 60, 200, int(zip.size()) - 1 })
            ::row(qPrintable(QString("cut at %1").arg(size)), zip.left(size), "");
    }
    void refuses()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, reason);
        FileUtils::writeBytes(bytes, package());
        const QString fromReader = read();
        QVERIFY2(fromReader.contains(reason) && fromReader.startsWith("package.zip: "), qPrintable(fromReader));
        QCOMPARE(everything(), (QStringList { "out", "package.zip" }));
        QCOMPARE(unzip(), fromReader);
        QCOMPARE(everything(), QStringList { "package.zip" });
    }

    void leavesRoomOnTheDisk()
    {
        const SmallDisk disk(out("").toLocal8Bit(), 65);
        if (!disk.isMounted())
            QSKIP("This user may not mount a small disk.");
        write({ { "big", noise(2 << 20) } });
        const QString message = read();
        write({ { "small", noise(1 << 19) } });
        QVERIFY2(message.endsWith("the disk is too full for that") && read().isEmpty(), qPrintable(message));
    }

    void extractsWhatIsAskedFor()
    {
        write({ { "d/", "", Folder }, { "d/a.txt", "a" }, { "d/b.bin", "b" }, { "c", "c" } });
        ZipReader reader(package());
        QVERIFY(!reader.open(QIODevice::ReadWrite));
        QVERIFY(reader.open(QIODevice::ReadOnly));
        QCOMPARE(reader.fileList(QRegularExpression()), (QStringList { "d/", "d/a.txt", "d/b.bin", "c" }));
        QCOMPARE(reader.fileList(QRegularExpression("\\.txt$")), QStringList { "d/a.txt" });
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
        writeMany();
        QCOMPARE(read(), QString());
        QCOMPARE(everything().size(), 1 + 300 + 66 + 1 + 1);
    }

    void readerCancels()
    {
        writeMany();
        QProgressDialog dialog;
        ZipReader reader(package());
        reader.attachProgressDialog(&dialog);
        reader.open(QIODevice::ReadOnly);
        QTimer::singleShot(0, &dialog, &QProgressDialog::cancel);
        reader.extractFiles(reader.fileList(), out(""), false);
        QVERIFY(reader.wasCanceled());
        QCOMPARE(everything(), (QStringList { "out", "package.zip" }));
        dialog.reset();
        reader.extractFiles({ "f0" }, out(""), false);
        QVERIFY(!reader.wasCanceled() && QFile::exists(out("f0")));
    }

    void unzipperStopsWhenDestroyed()
    {
        writeMany();
        for (const char *seen : { "f0", "last" }) { // with the last it begins to set the attributes of folders
            QVERIFY(QDir().mkpath(out("")));
            auto unzipper = std::make_unique<Unzipper>(package(), out(""), false);
            QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(out(seen)), 60000);
            unzipper.reset();
            QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(out("")), 60000); // what takes long to remove is removed beside
        }
    }

    void unzipperTellsThatThereIsNoThread()
    {
        write({ { "a", "a" } });
        pthread_attr_t usual, hopeless;
        QVERIFY(pthread_getattr_default_np(&usual) == 0 && pthread_attr_init(&hopeless) == 0);
        QVERIFY(pthread_attr_setstacksize(&hopeless, size_t(1) << 60) == 0);
        QVERIFY(pthread_setattr_default_np(&hopeless) == 0);
        const QString message = unzip();
        pthread_setattr_default_np(&usual);
        QVERIFY2(message.startsWith("package.zip: "), qPrintable(message));
        QCOMPARE(everything(), QStringList { "package.zip" });
    }

    void unzipperReportsInItsOwnThread()
    {
        write({ { "d/a", "a" } });
        Unzipper unzipper(package(), out(""), true);
        connect(&unzipper, &Unzipper::unzippingDone, [] { QCOMPARE(QThread::currentThread(), qApp->thread()); });
        QVERIFY(QSignalSpy(&unzipper, &Unzipper::unzippingDone).wait());
        QCOMPARE(FileUtils::readBytes(out("a")), QByteArray("a"));
        QVERIFY(unzipper.removeZipFile() && !unzipper.removeZipFile() && !QFile::exists(package()));
    }

    void erasingFollowsNoLinksAndReachesAnyDepth()
    {
        const mode_t before = umask(0);
        const QString tree = FileUtils::createTempDir();
        umask(before);
        int inner = open(qPrintable(tree), O_RDONLY);
        struct stat status;
        QVERIFY(fstat(inner, &status) == 0 && (status.st_mode & 07777) == 0700);
        QVERIFY(QDir().mkpath(out("kept/content")) && QFile::link(out("kept"), out("link")));
        const char *const name = ".not UTF-8: \xff";
        for (int level = 0; level < 300; ++level) {
            QVERIFY(symlinkat(qPrintable(out("kept")), inner, "link") == 0 && mknodat(inner, "1", S_IFIFO, 0) == 0);
            QVERIFY(mkdirat(inner, "2", 0700) == 0 && mkdirat(inner, name, 0700) == 0);
            close(std::exchange(inner, openat(inner, name, O_RDONLY)));
        }
        close(inner);
        QVERIFY(!FileUtils::eraseFolder(out("link/")) && !FileUtils::eraseFolder(out("missing")));
        QVERIFY(!FileUtils::erase(out("link")) && !FileUtils::erase(out("kept")));
        QVERIFY(FileUtils::eraseFolder(tree) && !QFileInfo::exists(tree));

        QVERIFY(QDir().mkdir(out("locked")) && QFile::link(out("kept"), out("locked/link")));
        for (const char *shared : { "..", "", "kept" })
            QCOMPARE(chmod(qPrintable(out(shared)), 0777), 0);
        QCOMPARE(chmod(qPrintable(out("locked")), 0555), 0);
        const uid_t user = geteuid();
        (void)!seteuid(user == 0 ? 65534 : user); // root may remove anything
        QVERIFY(!FileUtils::eraseFolder(out("locked")));
        QVERIFY(seteuid(user) == 0 && chmod(qPrintable(out("locked")), 0755) == 0);
        QVERIFY(QFileInfo(out("link")).isSymLink() && QFileInfo::exists(out("kept/content")));
    }

    void bytesAreReplacedInOneStep()
    {
        const QByteArray old("old\0content", 11);
        QFile reader(out("bytes"));
        QVERIFY(FileUtils::writeBytes(old, out("bytes")) && reader.open(QIODevice::ReadOnly));
        QVERIFY(FileUtils::writeBytes("new", out("bytes")) && !FileUtils::writeBytes("x", scratch));
        QCOMPARE(reader.readAll(), old);
        QCOMPARE(FileUtils::readBytes(out("bytes")), QByteArray("new"));
    }

private:
    QString package() const { return scratch + "/package.zip"; }
    QString out(const QByteArray &name) const
    {
        return scratch + (name.isEmpty() ? "/out" : "/out/") + QString::fromUtf8(name);
    }
    void write(const QList<ZipItem> &items) const { FileUtils::writeBytes(ZipBuilder::archive(items), package()); }

    void writeMany() const
    {
        QList<ZipItem> items;
        for (int i = 0; i < 300; ++i)
            items << ZipItem("f" + QByteArray::number(i), "x");
        for (int i = 0; i < 66000; ++i)
            items << ZipItem(QByteArray::number(i / 1000) + "/", "", Folder);
        write(items << ZipItem("last", "x"));
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
        for (const auto &entry : std::filesystem::recursive_directory_iterator(qPrintable(scratch)))
            paths << QString::fromStdString(entry.path().string()).mid(scratch.size() + 1);
        paths.sort();
        return paths;
    }

    QString scratch;
};

QTEST_MAIN(TestFiles)
#include "tst_files.moc"
