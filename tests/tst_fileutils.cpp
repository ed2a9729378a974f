// Single files and folders: what removing spares and reaches, replacing in one step, private temporary folders.
#include "FileUtils.h"

#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using qv::FileUtils;

class TestFileUtils : public QObject
{
    Q_OBJECT

private slots:
    void erasingFollowsNoLinksAndReachesAnyDepth()
    {
        const rlimit few { 50, 50 }; // open descriptors
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &few), 0);
        const mode_t before = umask(0);
        const QString tree = FileUtils::createTempDir();
        umask(before);
        int inner = open(qPrintable(tree), O_RDONLY);
        struct stat status;
        QVERIFY(fstat(inner, &status) == 0 && (status.st_mode & 07777) == 0700);
        QVERIFY(QDir().mkpath(at("kept/content")) && QFile::link(at("kept"), at("link")));
        const char *const name = ".not UTF-8: \xff";
        for (int level = 0; level < 300; ++level) {
            QVERIFY(symlinkat(qPrintable(at("kept")), inner, "link") == 0 && mknodat(inner, "1", S_IFIFO, 0) == 0);
            QVERIFY(mkdirat(inner, "2", 0700) == 0 && mkdirat(inner, name, 0700) == 0);
            close(std::exchange(inner, openat(inner, name, O_RDONLY)));
        }
        close(inner);
        QVERIFY(!FileUtils::eraseFolder(at("link/")) && !FileUtils::eraseFolder(at("missing")));
        QVERIFY(!FileUtils::erase(at("link")) && !FileUtils::erase(at("kept")));
        QVERIFY(FileUtils::eraseFolder(tree) && !QFileInfo::exists(tree));

        QVERIFY(QDir().mkdir(at("locked")) && QFile::link(at("kept"), at("locked/link")));
        for (const char *shared : { "", "kept" })
            QCOMPARE(chmod(qPrintable(at(shared)), 0777), 0);
        QCOMPARE(chmod(qPrintable(at("locked")), 0555), 0);
        const uid_t user = geteuid();
        (void)!seteuid(user == 0 ? 65534 : user); // root may remove anything
        QVERIFY(!FileUtils::eraseFolder(at("locked")));
        QCOMPARE(seteuid(user), 0);
        QVERIFY(QFileInfo(at("link")).isSymLink() && QFileInfo::exists(at("kept/content")));
    }

    void bytesAreReplacedInOneStep()
    {
        const QByteArray old("old\0content", 11);
        QFile reader(at("bytes"));
        QVERIFY(FileUtils::writeBytes(old, at("bytes")) && reader.open(QIODevice::ReadOnly));
        QVERIFY(FileUtils::writeBytes("new", at("bytes")) && !FileUtils::writeBytes("x", folder.path()));
        QCOMPARE(reader.readAll(), old);
        QCOMPARE(FileUtils::readBytes(at("bytes")), QByteArray("new"));
    }

private:
    QString at(const char *name) const { return folder.filePath(QLatin1String(name)); }

    QTemporaryDir folder;
};

QTEST_MAIN(TestFileUtils)
#include "tst_fileutils.moc"
