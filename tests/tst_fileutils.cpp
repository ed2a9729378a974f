// Single files and folders: private temporary folders, what erase() spares, replacing in one step, the folder chooser.
#include "FileUtils.h"
#include "Row.h"

#include <QDir>
#include <QFileDialog>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <sys/stat.h>

using qv::FileUtils;

class TestFileUtils : public QObject
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(folder.isValid()); }

    void temporaryFoldersArePrivateAndUnique()
    {
        const mode_t before = umask(0);
        const QString first = FileUtils::createTempDir();
        const QString second = FileUtils::createTempDir();
        umask(before);
        for (const QString &path : { first, second }) {
            struct stat info;
            QCOMPARE(stat(QFile::encodeName(path).constData(), &info), 0);
            QCOMPARE(info.st_mode & 07777, mode_t(0700));
            QVERIFY(QDir::isAbsolutePath(path) && QDir(path).isEmpty());
            QVERIFY(QDir().rmdir(path));
        }
        QVERIFY(first != second);
    }

    void noTemporaryFolderGivesAnEmptyPath()
    {
        const QByteArray before = qgetenv("TMPDIR");
        qputenv("TMPDIR", "/nowhere/at/all");
        const QString path = FileUtils::createTempDir();
        before.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", before);
        QCOMPARE(path, QString());
    }

    void eraseRemovesOneRegularFile()
    {
        const QString file = at("file");
        QVERIFY(FileUtils::writeBytes("x", file));
        QVERIFY(QFile::link(file, at("link")) && QDir().mkdir(at("folder")));
        QVERIFY(!FileUtils::erase(at("link")) && !FileUtils::erase(at("folder")) && !FileUtils::erase(at("missing")));
        QVERIFY(!FileUtils::erase(QString()));
        QVERIFY(QFileInfo(at("link")).isSymLink() && QFileInfo(at("folder")).isDir());
        QVERIFY(FileUtils::erase(file));
        QVERIFY(!QFile::exists(file));
    }

    void bytesAreReplacedWholeOrNotAtAll()
    {
        const QByteArray old("old\0content", 11);
        QVERIFY(FileUtils::writeBytes(old, at("bytes")));
        QCOMPARE(FileUtils::readBytes(at("bytes")), old);

        QFile reader(at("bytes"));
        QVERIFY(reader.open(QIODevice::ReadOnly));
        QVERIFY(FileUtils::writeBytes("new", at("bytes")));
        QCOMPARE(reader.readAll(), old);
        QCOMPARE(FileUtils::readBytes(at("bytes")), QByteArray("new"));

        QVERIFY(!FileUtils::writeBytes("x", at("no/such/folder")));
        QVERIFY(!FileUtils::writeBytes("x", folder.path()));
        QCOMPARE(FileUtils::readBytes(at("missing")), QByteArray());
    }

    void folderChooser_data()
    {
        columns<bool>("accept");
        QTest::newRow("chosen") << true;
        QTest::newRow("cancelled") << false;
    }
    void folderChooser()
    {
        QFETCH(bool, accept);
        QVERIFY(QDir().mkpath(at("proposed")) && QDir().mkpath(at("chosen")));
        QString path = at("proposed"), title, proposed;
        QTimer::singleShot(0, this, [&] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            title = dialog->windowTitle();
            proposed = dialog->directory().absolutePath();
            dialog->selectFile(at("chosen"));
            accept ? QMetaObject::invokeMethod(dialog, "accept") : QMetaObject::invokeMethod(dialog, "reject");
        });
        QCOMPARE(FileUtils::openDirectoryDialog(path, QStringLiteral("Where to?"), QString(), nullptr), accept);
        QCOMPARE(title, QStringLiteral("Where to?"));
        QCOMPARE(proposed, at("proposed"));
        QCOMPARE(path, accept ? at("chosen") : at("proposed"));
    }

private:
    QString at(const char *name) const { return folder.filePath(QLatin1String(name)); }

    QTemporaryDir folder;
};

QTEST_MAIN(TestFileUtils)
#include "tst_fileutils.moc"
