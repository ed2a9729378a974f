// UpdateInstaller from outside: real child processes on real folders, killed wherever they can be.
#include <QtTest>

#include <filesystem>
#include <functional>

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/fs.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int killed = -1; // in the place of an exit code

struct Outcome
{
    int exitCode;
    QByteArray output; // of the updater and of the programs it started, which have all ended
};

bool changesTheDisk(const __ptrace_syscall_info &call)
{
    static const QSet<quint64> always {
        SYS_mkdirat,  SYS_renameat2, SYS_unlinkat, SYS_symlinkat, SYS_fchmod,  SYS_fchmodat, SYS_fchown,
        SYS_fchownat, SYS_utimensat,
#ifdef SYS_renameat
        SYS_renameat,
#endif
#ifdef SYS_rename // the architectures that still have their old calls
        SYS_mkdir,    SYS_rename,    SYS_unlink,   SYS_rmdir,     SYS_symlink, SYS_chmod,    SYS_lchown,
#endif
    };
    const bool creates = call.entry.nr == SYS_openat && (call.entry.args[2] & O_CREAT);
    const bool writes = call.entry.nr == SYS_write && call.entry.args[0] > 3; // else it speaks: standard error, the log
    return creates || writes || always.contains(call.entry.nr);
}

/// Runs @p child until its system call number @p killAt of those that change the disk, and kills it before that takes
/// effect. It has ended or will, either way: the caller waits for it.
void killAtChange(pid_t child, int killAt)
{
    int status = 0, changes = 0;
    siginfo_t event {};
    waitid(P_PID, static_cast<id_t>(child), &event, WEXITED | WSTOPPED | WNOWAIT);
    if (event.si_code == CLD_EXITED)
        return;
    waitpid(child, &status, 0);
    ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    for (long signal = 0;;) {
        ptrace(PTRACE_SYSCALL, child, nullptr, signal);
        waitid(P_PID, static_cast<id_t>(child), &event, WEXITED | WSTOPPED | WNOWAIT);
        if (event.si_code != CLD_TRAPPED)
            return;
        waitpid(child, &status, 0);
        signal = WSTOPSIG(status) == SIGTRAP ? 0 : WSTOPSIG(status);
        if (signal != (SIGTRAP | 0x80))
            continue;
        signal = 0;
        __ptrace_syscall_info call {};
        ptrace(static_cast<__ptrace_request>(PTRACE_GET_SYSCALL_INFO), child, sizeof call, &call);
        if (call.op == PTRACE_SYSCALL_INFO_ENTRY && changesTheDisk(call) && ++changes == killAt) {
            kill(child, SIGKILL);
            return;
        }
    }
}

/// Forks, calls @p prepare in the child and lets the updater take its place, as a host does.
Outcome run(const QStringList &arguments, int killAt = 0, const std::function<void()> &prepare = {})
{
    QList<QByteArray> words { UPDATE_INSTALLER };
    for (const QString &argument : arguments)
        words << argument.toLocal8Bit();
    std::vector<char *> vector;
    for (QByteArray &word : words)
        vector.push_back(word.data());
    vector.push_back(nullptr);

    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        qFatal("no pipe");
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        if (killAt) {
            setenv("ASAN_OPTIONS", "detect_leaks=0", 1); // the leak detector cannot work in a traced process
            if (ptrace(PTRACE_TRACEME) != 0)
                _exit(124);
            raise(SIGSTOP);
        }
        if (prepare)
            prepare();
        execv(UPDATE_INSTALLER, vector.data());
        _exit(127);
    }
    close(ends[1]);
    if (killAt)
        killAtChange(child, killAt);
    int status = 0;
    waitpid(child, &status, 0);

    QFile output;
    output.open(ends[0], QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    return { WIFEXITED(status) ? WEXITSTATUS(status) : killed, output.readAll() };
}

/// Called in the child: renameat2() with RENAME_EXCHANGE fails with @p error from now on.
void failExchange(unsigned error)
{
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_renameat2, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[4])),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, RENAME_EXCHANGE, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter { sizeof program / sizeof *program, program };
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
        _exit(126);
}

/// Names, kinds, permissions, times and contents of all below @p folder; empty when it is not there.
QStringList tree(const QString &folder)
{
    QStringList entries;
    QDirIterator all(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                     QDirIterator::Subdirectories);
    while (all.hasNext()) {
        const QString path = all.next();
        struct stat status
        {
        };
        lstat(path.toLocal8Bit(), &status);
        QFile file(path);
        QString content;
        if (S_ISLNK(status.st_mode))
            content = QString::fromStdString(std::filesystem::read_symlink(path.toLocal8Bit().toStdString()).string());
        if (S_ISREG(status.st_mode) && file.open(QIODevice::ReadOnly))
            content = QString::fromUtf8(file.readAll().left(4096));
        entries << QStringLiteral("%1 %2 %3.%4 %5")
                       .arg(path.mid(folder.size() + 1))
                       .arg(status.st_mode, 0, 8)
                       .arg(status.st_mtim.tv_sec)
                       .arg(status.st_mtim.tv_nsec)
                       .arg(content);
    }
    entries.sort();
    return entries;
}

bool shell(const QString &command)
{
    return QProcess::execute(QStringLiteral("sh"), { QStringLiteral("-ec"), command }) == 0;
}

quint64 deviceOf(const QString &path)
{
    struct stat status
    {
    };
    return stat(path.toLocal8Bit(), &status) == 0 ? status.st_dev : 0;
}

} // namespace

class UpdaterTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void commandLine_data();
    void commandLine();
    void refuses_data();
    void refuses();
    void installs_data();
    void installs();
    void swapsBack_data();
    void swapsBack();
    void killedAnywhere_data();
    void killedAnywhere();
    void watchesUnderLock();
    void forgetsItsCaller();

private:
    QStringList order(const QString &newDir) const;
    void makeFolders();
    void giveNewProgram(const QString &script) const;
    QStringList namesBeside() const;

    std::unique_ptr<QTemporaryDir> first, second; // on two file systems where the machine has them
    QString place, app, incoming, abroad;
    QStringList oldTree, newTree, otherTree;
};

/// Two file systems: memory for most of the work, as nothing here has to wait for a disk then.
void UpdaterTest::initTestCase()
{
    QStringList roots { QStringLiteral("/dev/shm"), QStringLiteral("/run"), QDir::tempPath(), QDir::currentPath() };
    const auto isClosed = [](const QString &root) { return !QFileInfo(root).isWritable(); };
    roots.erase(std::remove_if(roots.begin(), roots.end(), isClosed), roots.end());
    first = std::make_unique<QTemporaryDir>(roots.first() + QStringLiteral("/updater-XXXXXX"));
    for (const QString &root : roots) {
        if (!second && deviceOf(root) != deviceOf(first->path()))
            second = std::make_unique<QTemporaryDir>(root + QStringLiteral("/updater-XXXXXX"));
    }
    place = first->filePath(QStringLiteral("work/pläce with blanks"));
    app = place + QStringLiteral("/app");
    incoming = first->filePath(QStringLiteral("work/incoming"));
    abroad = second ? second->filePath(QStringLiteral("incoming")) : QString();

    QVERIFY(shell(QStringLiteral(R"(
        cd '%1'; mkdir -p work master/'pläce with blanks' master/incoming
        for version in 1.0 2.0 3.0; do
            mkdir '%1/'$version; cd '%1/'$version
            mkdir -p sub/deep empty closed
            echo 'data '$version | tee sub/deep/data sub/$version closed/data >/dev/null
            printf '#!/bin/sh\necho '$version' runs\n' >program
            ln -s deep/data sub/link; ln -s program start
            chmod 750 program; chmod 640 sub/deep/data; chmod 555 closed
            touch -hd '2026-01-02 03:04:05.678 UTC' sub/link sub/deep/* sub/* closed/* * .
        done
        cd '%1'; chmod 711 1.0; chmod 700 2.0
        mv 1.0 master/'pläce with blanks/app'; mv 2.0 master/incoming/new; mv 3.0 master/incoming/other)")
                      .arg(first->path())));
}

/// Folders without write permission would stay.
void UpdaterTest::cleanupTestCase()
{
    QVERIFY(shell(QStringLiteral("chmod -R u+w '%1' '%2'").arg(first->path(), (second ? second : first)->path())));
}

void UpdaterTest::init()
{
    makeFolders();
}

/// The old version installed in @c app, two new ones in @c incoming and @c abroad, nothing else.
void UpdaterTest::makeFolders()
{
    QString command = QStringLiteral("cd '%1'; chmod -R u+w work; rm -rf work; cp -a master work;").arg(first->path());
    if (second)
        command +=
            QStringLiteral("mkdir -p '%2'; chmod -R u+w '%2'; rm -rf '%2'; cp -a '%1' '%2'").arg(incoming, abroad);
    QVERIFY(shell(command));
    oldTree = tree(app);
    newTree = tree(incoming + QStringLiteral("/new"));
    otherTree = tree(incoming + QStringLiteral("/other"));
    QVERIFY(oldTree.size() == 10 && newTree.size() == 10 && oldTree != newTree);
}

QStringList UpdaterTest::order(const QString &newDir) const
{
    return { QStringLiteral("-oldDir"), app, QStringLiteral("-newDir"), newDir, QStringLiteral("-exe"),
             QStringLiteral("program") };
}

/// Replaces the program of the new version, wherever it waits.
void UpdaterTest::giveNewProgram(const QString &script) const
{
    for (const QString &folder : { incoming, abroad }) {
        QFile program(folder + QStringLiteral("/new/program"));
        if (program.open(QIODevice::WriteOnly | QIODevice::Truncate))
            program.write(script.toUtf8());
    }
}

QStringList UpdaterTest::namesBeside() const
{
    return QDir(place).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

void UpdaterTest::commandLine_data()
{
    QTest::addColumn<QString>("words"); // OLD and NEW stand for the folders, a hyphen alone for an empty word
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("says");

    const QByteArray usage = "usage: UpdateInstaller -oldDir DIR -newDir DIR -exe NAME\n";
    QTest::newRow("help") << "--help" << 0 << QByteArray("Exit codes:");
    QTest::newRow("version") << "--version" << 0 << QByteArray("UpdateInstaller ");
    QTest::newRow("nothing") << "" << 2 << usage;
    QTest::newRow("one missing") << "-oldDir OLD -newDir NEW" << 2 << usage;
    QTest::newRow("value missing") << "-oldDir OLD -newDir NEW -exe" << 2 << usage;
    QTest::newRow("unknown word") << "-oldDir OLD -newdir NEW -exe program" << 2 << usage;
    QTest::newRow("one twice") << "-oldDir OLD -oldDir NEW -exe program" << 2 << usage;
    QTest::newRow("one too many") << "-oldDir OLD -newDir NEW -exe program --help x" << 2 << usage;
    QTest::newRow("no old folder") << "-oldDir - -newDir NEW -exe program" << 2 << usage;
    QTest::newRow("no program") << "-oldDir OLD -newDir NEW -exe -" << 2 << usage;
    QTest::newRow("absolute program") << "-oldDir OLD -newDir NEW -exe /bin/true" << 2 << usage;
    QTest::newRow("program outside") << "-oldDir OLD -newDir NEW -exe sub/../../program" << 2 << usage;
    QTest::newRow("root") << "-oldDir / -newDir NEW -exe program" << 5 << QByteArray("no place for a folder");
    QTest::newRow("nowhere") << "-oldDir /no/where -newDir NEW -exe program" << 5 << QByteArray("no place");
}

void UpdaterTest::commandLine()
{
    QFETCH(QString, words);
    QStringList arguments = words.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    arguments.replaceInStrings(QRegularExpression(QStringLiteral("^OLD$")), app);
    arguments.replaceInStrings(QRegularExpression(QStringLiteral("^NEW$")), incoming + QStringLiteral("/new"));
    arguments.replaceInStrings(QRegularExpression(QStringLiteral("^-$")), QString());

    const Outcome outcome = run(arguments);
    QTEST(outcome.exitCode, "exitCode");
    QFETCH(QByteArray, says);
    QVERIFY2(outcome.output.contains(says) && !outcome.output.contains(" runs"), outcome.output);
    QCOMPARE(tree(app), oldTree);
    QCOMPARE(namesBeside(), QStringList { QStringLiteral("app") });
}

void UpdaterTest::refuses_data()
{
    QTest::addColumn<QString>("before"); // a shell's work in the folder above "new"
    QTest::addColumn<QString>("newDir"); // a path in that folder, or nothing
    QTest::addColumn<QByteArray>("says");
    QTest::addColumn<int>("exchangeError");

    QTest::newRow("empty argument") << ""
                                    << "" << QByteArray("there is no new version") << 0;
    QTest::newRow("no new folder") << ""
                                   << "missing" << QByteArray("there is no new version") << 0;
    QTest::newRow("new folder in no folder") << ""
                                             << "missing/new" << QByteArray("there is no new version") << 0;
    QTest::newRow("empty new folder") << "mkdir void"
                                      << "void" << QByteArray("lacks its program") << 0;
    QTest::newRow("program missing") << "rm new/program"
                                     << "new" << QByteArray("lacks its program") << 0;
    QTest::newRow("not executable") << "chmod -x new/program"
                                    << "new" << QByteArray("is not executable") << 0;
    QTest::newRow("program is a folder") << "rm new/program; mkdir new/program"
                                         << "new" << QByteArray("is not executable") << 0;
    QTest::newRow("program elsewhere") << "ln -sf /bin/true new/program"
                                       << "new" << QByteArray("leads out of its folder") << 0;
    QTest::newRow("new is a file") << ""
                                   << "new/program" << QByteArray("is not a folder") << 0;
    QTest::newRow("new is a link") << "ln -s new link"
                                   << "link/" << QByteArray("is a symbolic link") << 0;
    QTest::newRow("old is a link") << "mv \"$APP\" kept; ln -s \"$PWD/kept\" \"$APP\""
                                   << "new" << QByteArray("is a symbolic link") << 0;
    QTest::newRow("the same") << "ln -s \"$APP/..\" way"
                              << "way/app" << QByteArray("are the same") << 0;
    QTest::newRow("new in old") << "ln -s \"$APP\" way"
                                << "way/sub" << QByteArray("inside each other") << 0;
    QTest::newRow("old in new") << "ln -s \"$APP/../..\" way"
                                << "way/pläce with blanks" << QByteArray("inside each other") << 0;
    QTest::newRow("swap impossible") << ""
                                     << "new" << QByteArray("cannot swap") << EPERM;
}

/// Every reason not to update: nothing is changed anywhere, and the installed program runs again.
void UpdaterTest::refuses()
{
    QFETCH(QString, before);
    QFETCH(QString, newDir);
    QFETCH(QByteArray, says);
    QFETCH(int, exchangeError);
    QVERIFY(shell(QStringLiteral("APP='%1'; cd '%2'; %3").arg(app, incoming, before)));
    const QStringList all = tree(incoming);

    const Outcome outcome = run(order(newDir.isEmpty() ? newDir : incoming + QLatin1Char('/') + newDir), 0,
                                [&] { exchangeError ? failExchange(unsigned(exchangeError)) : void(); });
    QVERIFY2(outcome.output.contains(says), outcome.output);
    QVERIFY2(outcome.output.contains("1.0 runs\n"), outcome.output);
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(tree(app), oldTree);
    QCOMPARE(namesBeside(), QStringList({ QStringLiteral("app"), QStringLiteral("app.update.log") }));
    if (!exchangeError) // else the new folder has been on its way and kept the permissions of the old one
        QCOMPARE(tree(incoming), all);
    QCOMPARE(tree(incoming + QStringLiteral("/other")), otherTree);
}

void UpdaterTest::installs_data()
{
    QTest::addColumn<bool>("exchange");
    QTest::addColumn<QString>("oldDir");
    QTest::addColumn<QString>("newDir");

    const QString near = incoming + QStringLiteral("/new");
    QTest::newRow("one step") << true << app << near;
    QTest::newRow("three steps") << false << app << near;
    QTest::newRow("slashes behind") << true << app + QStringLiteral("//") << near + QStringLiteral("/");
    QTest::newRow("relative") << true << "../../app/." << near;
    if (second)
        QTest::newRow("another file system") << true << app << abroad + QStringLiteral("/new");
}

void UpdaterTest::installs()
{
    QFETCH(bool, exchange);
    QFETCH(QString, oldDir);
    QFETCH(QString, newDir);
    QStringList arguments = order(newDir);
    arguments[1] = oldDir;
    const QString inside = app + QStringLiteral("/sub");

    const Outcome outcome = run(arguments, 0, [&] {
        if (chdir(inside.toLocal8Bit()) != 0)
            _exit(125);
        exchange ? void() : failExchange(EINVAL);
    });
    QVERIFY2(outcome.output.contains("2.0 runs\n") && !outcome.output.contains("cannot"), outcome.output);
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(tree(app), newTree);
    QCOMPARE(int(QFile::permissions(app)), 0x7711); // of the old folder; the unpacked one is private
    QCOMPARE(namesBeside(), QStringList({ QStringLiteral("app"), QStringLiteral("app.update.log") }));
    QVERIFY(!QFile::exists(newDir));
}

void UpdaterTest::swapsBack_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<bool>("exchange");
    QTest::addColumn<QByteArray>("says");

    QTest::newRow("fails") << "#!/bin/sh\nexit 3\n" << true << QByteArray("ended with exit code 3");
    QTest::newRow("crashes") << "#!/bin/sh\nkill -SEGV $$\n" << true << QByteArray("was killed by signal 11");
    QTest::newRow("crashes, three steps") << "#!/bin/sh\nkill -SEGV $$\n"
                                          << false << QByteArray("was killed by signal 11");
    QTest::newRow("no interpreter") << "#!/no/where\n" << true << QByteArray("cannot start");
    QTest::newRow("no program at all") << "\177ELF" << true << QByteArray("cannot start");
}

void UpdaterTest::swapsBack()
{
    QFETCH(QString, script);
    QFETCH(bool, exchange);
    QFETCH(QByteArray, says);
    giveNewProgram(script);
    newTree = tree(incoming + QStringLiteral("/new"));

    for (const QString &folder : { incoming, abroad }) {
        if (folder.isEmpty())
            continue;
        const QString newDir = folder + QStringLiteral("/new");
        const QStringList before = tree(newDir);
        const Outcome outcome = run(order(newDir), 0, [&] { exchange ? void() : failExchange(EINVAL); });
        QVERIFY2(outcome.output.contains(says) && outcome.output.contains("1.0 runs\n"), outcome.output);
        QCOMPARE(outcome.exitCode, 3);
        QCOMPARE(tree(app), oldTree);
        QCOMPARE(tree(newDir), before);
        QCOMPARE(namesBeside(), QStringList({ QStringLiteral("app"), QStringLiteral("app.update.log") }));
    }
}

void UpdaterTest::killedAnywhere_data()
{
    QTest::addColumn<bool>("exchange");
    QTest::addColumn<bool>("copied");
    QTest::addColumn<QString>("program"); // the new one: good, bad, or fickle, when it stands the first trial only
    QTest::addColumn<bool>("twice");      // the next run is killed, too
    QTest::addColumn<bool>("other");      // the next run brings another version

    QTest::newRow("one step") << true << false << "good" << false << false;
    QTest::newRow("three steps") << false << false << "good" << false << false;
    QTest::newRow("copied") << true << true << "good" << false << false;
    QTest::newRow("failing") << true << false << "bad" << false << false;
    QTest::newRow("failing, three steps") << false << false << "bad" << false << false;
    QTest::newRow("failing, copied") << true << true << "bad" << false << false;
    QTest::newRow("failing from the second time on") << true << false << "fickle" << false << false;
    QTest::newRow("twice") << true << false << "good" << true << false;
    QTest::newRow("failing twice, three steps") << false << false << "bad" << true << false;
    QTest::newRow("another version next") << true << false << "good" << false << true;
    QTest::newRow("another version next, three steps") << false << false << "good" << false << true;
}

/// Kills the updater before each of its steps on the disk. The installed folder is whole, old or new, whenever; the
/// next run comes to the end that an undisturbed one comes to, and leaves as little behind.
void UpdaterTest::killedAnywhere()
{
    QFETCH(bool, exchange);
    QFETCH(bool, copied);
    QFETCH(QString, program);
    QFETCH(bool, twice);
    QFETCH(bool, other);
    if (copied && !second)
        QSKIP("one file system only");
    const auto prepare = [exchange] { exchange ? void() : failExchange(EINVAL); };
    const QString source = copied ? abroad : incoming;
    const QString newDir = source + QStringLiteral("/new");
    const QString aside = place + QStringLiteral("/.app.update-aside");
    const QHash<QString, QString> scripts {
        { "good", QStringLiteral("true") },
        { "bad", QStringLiteral("false") },
        { "fickle", QStringLiteral("mkdir '%1/work/tried' 2>/dev/null").arg(first->path()) },
    };

    int step = 0, exitCode = killed;
    while (exitCode == killed) {
        makeFolders();
        giveNewProgram(QStringLiteral("#!/bin/sh\n") + scripts[program] + QStringLiteral("\n"));
        const QStringList before = tree(newDir);
        const QByteArray where = "killed at step " + QByteArray::number(++step);

        exitCode = run(order(newDir), step, prepare).exitCode;
        if (twice)
            run(order(newDir), step, prepare);
        const bool isBetween = !exchange && !QFile::exists(app) && (tree(aside) == oldTree || tree(aside) == before);
        QVERIFY2(isBetween || tree(app) == oldTree || tree(app) == before, where);

        const Outcome next = run(order(other ? incoming + QStringLiteral("/other") : newDir), 0, prepare);
        const QByteArray what = where + '\n' + next.output;
        const QStringList left = tree(newDir);
        if (next.exitCode == 3) {
            QVERIFY2(program != QLatin1String("good") && next.output.contains("1.0 runs\n"), what);
            QVERIFY2(tree(app) == oldTree && left == before, what);
        } else {
            QVERIFY2(next.exitCode == 0 || (next.exitCode == 1 && !QFile::exists(newDir)), what);
            QVERIFY2(program != QLatin1String("bad") && next.output.contains(other ? "3.0 runs\n" : "started "), what);
            QVERIFY2(tree(app) == (other ? otherTree : before), what);
            QVERIFY2(left.isEmpty() || (other && left == before), what);
        }
        QVERIFY2(namesBeside() == QStringList({ QStringLiteral("app"), QStringLiteral("app.update.log") }), where);
    }
    QVERIFY2(exitCode != 124, "processes cannot be traced here");
    QVERIFY2(step > 10, QByteArray::number(step));
}

/// As long as the new program is on trial the old version stays, and nobody else may touch the folder.
void UpdaterTest::watchesUnderLock()
{
    giveNewProgram(QStringLiteral("#!/bin/sh\necho 2.0 runs\nread line\n"));
    const QStringList before = tree(incoming + QStringLiteral("/new"));
    QProcess updater;
    updater.setProcessChannelMode(QProcess::MergedChannels);
    updater.start(QStringLiteral(UPDATE_INSTALLER), order(incoming + QStringLiteral("/new")));
    QByteArray output;
    while (!output.contains("2.0 runs\n")) {
        QVERIFY2(updater.waitForReadyRead(), output);
        output += updater.readAll();
    }

    QCOMPARE(tree(place + QStringLiteral("/.app.update-spare")), oldTree);
    QCOMPARE(run(order(incoming + QStringLiteral("/other"))).exitCode, 4);
    QCOMPARE(tree(app), before);
    QCOMPARE(tree(incoming + QStringLiteral("/other")), otherTree);

    QVERIFY(updater.waitForFinished());
    QCOMPARE(updater.exitCode(), 0);
    QCOMPARE(tree(app), before);
    QCOMPARE(namesBeside(), QStringList({ QStringLiteral("app"), QStringLiteral("app.update.log") }));
}

/// The host is replaced in the middle of whatever it does; nothing of that may reach the updater or the new program.
void UpdaterTest::forgetsItsCaller()
{
    const QString abroadOrNot = second ? abroad : incoming;
    giveNewProgram(QStringLiteral("#!/bin/sh\npwd; grep '^Sig[BI]' /proc/self/status; ls -l /proc/self/fd\n"));
    const QString inside = app + QStringLiteral("/sub/deep");
    const QString leak = incoming + QStringLiteral("/leak");

    const Outcome outcome = run(order(abroadOrNot + QStringLiteral("/new")), 0, [&] {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, nullptr);
        raise(SIGTERM);
        signal(SIGCHLD, SIG_IGN);
        signal(SIGPIPE, SIG_IGN);
        const itimerval soon { {}, { 0, 1 } };
        setitimer(ITIMER_REAL, &soon, nullptr);
        if (open(leak.toLocal8Bit(), O_CREAT | O_RDWR, 0600) < 0 || chdir(inside.toLocal8Bit()) != 0)
            _exit(125);
        close(STDIN_FILENO);
    });
    QVERIFY2(outcome.exitCode == 0, outcome.output);
    QVERIFY2(outcome.output.contains('\n' + inside.toLocal8Bit() + '\n'), outcome.output);
    // Of the ignored signals only those that the C library keeps for itself, 32 and 33.
    const QRegularExpression clean(QStringLiteral("SigBlk:\t0+\nSigIgn:\t[0-9a-f]{8}[08]0{7}\n"));
    QVERIFY2(QString::fromLocal8Bit(outcome.output).contains(clean), outcome.output);
    QVERIFY2(!outcome.output.contains("leak"), outcome.output);

    // A full disk, or as here a limit of the host's, ends the copy and changes nothing.
    makeFolders();
    if (!second)
        return;
    const QStringList before = tree(abroad);
    const Outcome full = run(order(abroad + QStringLiteral("/new")), 0, [] {
        const rlimit small { 10, 10 };
        setrlimit(RLIMIT_FSIZE, &small);
    });
    QVERIFY2(full.exitCode == 1 && full.output.contains("1.0 runs\n"), full.output);
    QCOMPARE(tree(app), oldTree);
    QCOMPARE(tree(abroad), before);
    QCOMPARE(namesBeside(), QStringList({ QStringLiteral("app"), QStringLiteral("app.update.log") }));
}

QTEST_GUILESS_MAIN(UpdaterTest)
#include "tst_updater.moc"
