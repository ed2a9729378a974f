// UpdateInstaller from outside: real child processes on real folders, killed wherever they can be.
#include "Row.h"

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
        struct stat status = {};
        lstat(path.toLocal8Bit(), &status);
        QFile file(path);
        QString content;
        if (S_ISLNK(status.st_mode))
            content = QString::fromStdString(std::filesystem::read_symlink(path.toLocal8Bit().toStdString()).string());
        if (S_ISREG(status.st_mode) && file.open(QIODevice::ReadOnly))
            content = QString::fromUtf8(file.readAll().left(4096));
        entries << path.mid(folder.size() + 1)
                + QString::asprintf(" %o %ld.%ld ", status.st_mode, status.st_mtim.tv_sec, status.st_mtim.tv_nsec)
                + content;
    }
    entries.sort();
    return entries;
}

bool shell(const QString &command)
{
    return QProcess::execute("sh", { "-ec", command }) == 0;
}

quint64 deviceOf(const QString &path)
{
    struct stat status = {};
    return stat(path.toLocal8Bit(), &status) == 0 ? status.st_dev : 0;
}

} // namespace

class UpdaterTest : public QObject
{
    Q_OBJECT

private slots:
    /// Two file systems: memory for most of the work, as nothing here has to wait for a disk then.
    void initTestCase()
    {
        for (const QString &root : { QString("/dev/shm"), QString("/run"), QDir::tempPath(), QDir::currentPath() }) {
            std::unique_ptr<QTemporaryDir> &dir = first ? second : first;
            if (!dir && QFileInfo(root).isWritable() && (!first || deviceOf(root) != deviceOf(first->path())))
                dir = std::make_unique<QTemporaryDir>(root + "/updater-XXXXXX");
        }
        place = first->filePath("work/pläce with blanks");
        app = place + "/app";
        incoming = first->filePath("work/incoming");
        abroad = second ? second->filePath("incoming") : incoming;

        QVERIFY(shell(QString(R"(
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
    void cleanupTestCase()
    {
        QVERIFY(shell(QString("chmod -R u+w '%1' '%2'").arg(first->path(), (second ? second : first)->path())));
    }

    /// The old version installed in @c app, two new ones in @c incoming and @c abroad, nothing else.
    void init()
    {
        QString command = QString("cd '%1'; chmod -R u+w work; rm -rf work; cp -a master work;").arg(first->path());
        if (second)
            command += QString("mkdir -p '%2'; chmod -R u+w '%2'; rm -rf '%2'; cp -a '%1' '%2'").arg(incoming, abroad);
        QVERIFY(shell(command));
        oldTree = tree(app);
        newTree = tree(incoming + "/new");
        otherTree = tree(incoming + "/other");
        QVERIFY(oldTree.size() == 10 && newTree.size() == 10 && oldTree != newTree);
    }

    void commandLine_data()
    {
        // words: OLD and NEW stand for the folders, a hyphen alone for an empty word
        columns<QString, int, QByteArray>("words", "exitCode", "says");

        const QByteArray usage = "usage: UpdateInstaller -oldDir DIR -newDir DIR -exe NAME\n";
        row("help", "--help", 0, QByteArray("Exit codes:"));
        row("version", "--version", 0, QByteArray("UpdateInstaller "));
        row("nothing", "", 2, usage);
        row("one missing", "-oldDir OLD -newDir NEW", 2, usage);
        row("value missing", "-oldDir OLD -newDir NEW -exe", 2, usage);
        row("unknown word", "-oldDir OLD -newdir NEW -exe program", 2, usage);
        row("one twice", "-oldDir OLD -oldDir NEW -exe program", 2, usage);
        row("one too many", "-oldDir OLD -newDir NEW -exe program --help x", 2, usage);
        row("no old folder", "-oldDir - -newDir NEW -exe program", 2, usage);
        row("no program", "-oldDir OLD -newDir NEW -exe -", 2, usage);
        row("absolute program", "-oldDir OLD -newDir NEW -exe /bin/true", 2, usage);
        row("program outside", "-oldDir OLD -newDir NEW -exe sub/../../program", 2, usage);
        row("root", "-oldDir / -newDir NEW -exe program", 5, QByteArray("no place for a folder"));
        row("nowhere", "-oldDir /no/where -newDir NEW -exe program", 5, QByteArray("no place"));
    }

    void commandLine()
    {
        QFETCH(QString, words);
        QStringList arguments = words.split(QChar(' '), Qt::SkipEmptyParts);
        arguments.replaceInStrings(QRegularExpression("^OLD$"), app);
        arguments.replaceInStrings(QRegularExpression("^NEW$"), incoming + "/new");
        arguments.replaceInStrings(QRegularExpression("^-$"), QString());

        const Outcome outcome = run(arguments);
        QTEST(outcome.exitCode, "exitCode");
        QFETCH(QByteArray, says);
        QVERIFY2(outcome.output.contains(says) && !outcome.output.contains(" runs"), outcome.output);
        QCOMPARE(tree(app), oldTree);
        QCOMPARE(namesBeside(), QStringList { "app" });
    }

    void refuses_data()
    {
        // before: a shell's work in the folder above "new"
        // newDir: a path in that folder, or nothing
        // error: of the exchange, or of writing anything large
        columns<QString, QString, QByteArray, int>("before", "newDir", "says", "error");

        row("empty argument", "", "", QByteArray("there is no new version"), 0);
        row("no new folder", "", "missing", QByteArray("there is no new version"), 0);
        row("new folder in no folder", "", "missing/new", QByteArray("there is no new version"), 0);
        row("empty new folder", "mkdir void", "void", QByteArray("lacks its program"), 0);
        row("program missing", "rm new/program", "new", QByteArray("lacks its program"), 0);
        row("not executable", "chmod -x new/program", "new", QByteArray("is not executable"), 0);
        row("program is a folder", "rm new/program; mkdir new/program", "new", QByteArray("is not executable"), 0);
        row("program elsewhere", "ln -sf /bin/true new/program", "new", QByteArray("leads out of its folder"), 0);
        row("new is a file", "", "new/program", QByteArray("is not a folder"), 0);
        row("new is a link", "ln -s new link", "link/", QByteArray("is a symbolic link"), 0);
        row("old is a link", "mv \"$APP\" kept; ln -s \"$PWD/kept\" \"$APP\"", "new", QByteArray("is a symbolic link"),
            0);
        row("the same", "ln -s \"$APP/..\" way", "way/app", QByteArray("are the same"), 0);
        row("new in old", "ln -s \"$APP\" way", "way/sub", QByteArray("inside each other"), 0);
        row("old in new", "ln -s \"$APP/../..\" way", "way/pläce with blanks", QByteArray("inside each other"), 0);
        row("swap impossible", "", "new", QByteArray("cannot swap"), EPERM);
        if (second)
            row("disk full", "", abroad + "/new", QByteArray("cannot"), EFBIG);
    }

    /// Every reason not to update: nothing is changed anywhere, and the installed program runs again.
    void refuses()
    {
        QFETCH(QString, before);
        QFETCH(QString, newDir);
        QFETCH(QByteArray, says);
        QFETCH(int, error);
        QVERIFY(shell(QString("APP='%1'; cd '%2'; %3").arg(app, incoming, before)));
        const QStringList all = tree(incoming) + tree(abroad);

        const Outcome outcome = run(order(newDir.isEmpty() ? newDir : QDir(incoming).filePath(newDir)), 0, [error] {
            const rlimit small { 10, 10 };
            if (error == EPERM)
                failExchange(EPERM);
            else if (error == EFBIG)
                setrlimit(RLIMIT_FSIZE, &small);
        });
        QVERIFY2(outcome.output.contains(says), outcome.output);
        QVERIFY2(outcome.output.contains("1.0 runs\n"), outcome.output);
        QCOMPARE(outcome.exitCode, 1);
        QCOMPARE(tree(app), oldTree);
        QCOMPARE(namesBeside(), withLog);
        if (error != EPERM) // else the new folder has been on its way and kept the permissions of the old one
            QCOMPARE(tree(incoming) + tree(abroad), all);
        QCOMPARE(tree(incoming + "/other"), otherTree);
    }

    void installs_data()
    {
        columns<bool, QString, QString>("exchange", "oldDir", "newDir");

        const QString near = incoming + "/new";
        row("one step", true, app, near);
        row("three steps", false, app, near);
        row("slashes behind", true, app + "//", near + "/");
        row("relative", true, "../../app/.", near);
        if (second)
            row("another file system", true, app, abroad + "/new");
    }

    void installs()
    {
        QFETCH(bool, exchange);
        QFETCH(QString, oldDir);
        QFETCH(QString, newDir);
        QStringList arguments = order(newDir);
        arguments[1] = oldDir;
        const QString inside = app + "/sub";

        const Outcome outcome = run(arguments, 0, [&] {
            if (chdir(inside.toLocal8Bit()) != 0)
                _exit(125);
            exchange ? void() : failExchange(EINVAL);
        });
        QVERIFY2(outcome.output.contains("2.0 runs\n") && !outcome.output.contains("cannot"), outcome.output);
        QCOMPARE(outcome.exitCode, 0);
        QCOMPARE(tree(app), newTree);
        QCOMPARE(int(QFile::permissions(app)), 0x7711); // of the old folder; the unpacked one is private
        QCOMPARE(namesBeside(), withLog);
        QVERIFY(!QFile::exists(newDir));
    }

    void swapsBack_data()
    {
        columns<QString, bool, QByteArray>("script", "exchange", "says");

        row("fails", "#!/bin/sh\nexit 3\n", true, QByteArray("ended with exit code 3"));
        row("crashes", "#!/bin/sh\nkill -SEGV $$\n", true, QByteArray("was killed by signal 11"));
        row("crashes, three steps", "#!/bin/sh\nkill -SEGV $$\n", false, QByteArray("was killed by signal 11"));
        row("no interpreter", "#!/no/where\n", true, QByteArray("cannot start"));
        row("no program at all", "\177ELF", true, QByteArray("cannot start"));
    }

    void swapsBack()
    {
        QFETCH(QString, script);
        QFETCH(bool, exchange);
        QFETCH(QByteArray, says);
        giveNewProgram(script);

        for (const QString &folder : { incoming, abroad }) {
            const QString newDir = folder + "/new";
            const QStringList before = tree(newDir);
            const Outcome outcome = run(order(newDir), 0, [&] { exchange ? void() : failExchange(EINVAL); });
            QVERIFY2(outcome.output.contains(says) && outcome.output.contains("1.0 runs\n"), outcome.output);
            QCOMPARE(outcome.exitCode, 3);
            QCOMPARE(tree(app), oldTree);
            QCOMPARE(tree(newDir), before);
            QCOMPARE(namesBeside(), withLog);
        }
    }

    void killedAnywhere_data()
    {
        columns<QString>("how");
        for (const char *how : { "good", "good, three steps", "good, copied", "bad", "bad, three steps", "bad, copied",
                                 "good the first time", "good, killed twice", "bad, three steps, killed twice",
                                 "good, another next", "good, three steps, another next" })
            row(how, QString(how));
    }

    /// Kills the updater before each of its steps on the disk. The installed folder is whole, old or new, whenever; the
    /// next run comes to the end that an undisturbed one comes to, and leaves as little behind.
    void killedAnywhere()
    {
        QFETCH(QString, how);
        const bool exchange = !how.contains("three steps"), copied = how.contains("copied");
        const bool twice = how.contains("twice"), other = how.contains("another");
        const bool isBad = how.startsWith("bad"), isFickle = how == "good the first time";
        if (copied && !second)
            QSKIP("one file system only");
        const auto prepare = [exchange] { exchange ? void() : failExchange(EINVAL); };
        const QString source = copied ? abroad : incoming;
        const QString newDir = source + "/new";
        const QString aside = place + "/.app.update-aside";
        const QString tried = QString("mkdir '%1/work/tried' 2>/dev/null").arg(first->path());

        int step = 0, exitCode = killed;
        while (exitCode == killed) {
            init();
            giveNewProgram("#!/bin/sh\n" + (isBad ? "false" : isFickle ? tried : "true") + "\n");
            const QStringList before = tree(newDir);
            const QByteArray where = "killed at step " + QByteArray::number(++step);

            exitCode = run(order(newDir), step, prepare).exitCode;
            if (twice)
                run(order(newDir), step, prepare);
            const bool isBetween =
                !exchange && !QFile::exists(app) && (tree(aside) == oldTree || tree(aside) == before);
            QVERIFY2(isBetween || tree(app) == oldTree || tree(app) == before, where);

            const Outcome next = run(order(other ? incoming + "/other" : newDir), 0, prepare);
            const QByteArray what = where + '\n' + next.output;
            const QStringList left = tree(newDir);
            if (next.exitCode == 3) {
                QVERIFY2((isBad || isFickle) && next.output.contains("1.0 runs\n"), what);
                QVERIFY2(tree(app) == oldTree && left == before, what);
            } else {
                QVERIFY2(next.exitCode == 0 || (next.exitCode == 1 && !QFile::exists(newDir)), what);
                QVERIFY2(!isBad && next.output.contains(other ? "3.0 runs\n" : "started "), what);
                QVERIFY2(tree(app) == (other ? otherTree : before), what);
                QVERIFY2(left.isEmpty() || (other && left == before), what);
            }
            QVERIFY2(namesBeside() == withLog, where);
        }
        QVERIFY2(exitCode != 124, "processes cannot be traced here");
        QVERIFY2(step > 10, QByteArray::number(step));
    }

    /// As long as the new program is on trial the old version stays, and nobody else may touch the folder.
    void watchesUnderLock()
    {
        giveNewProgram("#!/bin/sh\necho 2.0 runs\nread line\n");
        const QStringList before = tree(incoming + "/new");
        QProcess updater;
        updater.setProcessChannelMode(QProcess::MergedChannels);
        updater.start(UPDATE_INSTALLER, order(incoming + "/new"));
        QByteArray output;
        while (!output.contains("2.0 runs\n")) {
            QVERIFY2(updater.waitForReadyRead(), output);
            output += updater.readAll();
        }

        QCOMPARE(tree(place + "/.app.update-spare"), oldTree);
        QCOMPARE(run(order(incoming + "/other")).exitCode, 4);
        QCOMPARE(tree(app), before);
        QCOMPARE(tree(incoming + "/other"), otherTree);

        QVERIFY(updater.waitForFinished());
        QCOMPARE(updater.exitCode(), 0);
        QCOMPARE(tree(app), before);
        QCOMPARE(namesBeside(), withLog);
    }

    /// The host is replaced in the middle of whatever it does; nothing of that may reach the updater or the new
    /// program.
    void forgetsItsCaller()
    {
        giveNewProgram("#!/bin/sh\npwd; grep '^Sig[BI]' /proc/self/status; ls -l /proc/self/fd\n");
        const QString inside = app + "/sub/deep";
        const QString leak = incoming + "/leak";

        const Outcome outcome = run(order(abroad + "/new"), 0, [&] {
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
        const QRegularExpression clean("SigBlk:\t0+\nSigIgn:\t[0-9a-f]{8}[08]0{7}\n");
        QVERIFY2(QString::fromLocal8Bit(outcome.output).contains(clean), outcome.output);
        QVERIFY2(!outcome.output.contains("leak"), outcome.output);
    }

private:
    QStringList order(const QString &newDir) const { return { "-oldDir", app, "-newDir", newDir, "-exe", "program" }; }

    /// Replaces the program of the new version, wherever it waits.
    void giveNewProgram(const QString &script) const
    {
        for (const QString &folder : { incoming, abroad }) {
            QFile program(folder + "/new/program");
            if (program.open(QIODevice::WriteOnly | QIODevice::Truncate))
                program.write(script.toUtf8());
        }
    }

    QStringList namesBeside() const
    {
        return QDir(place).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }

    std::unique_ptr<QTemporaryDir> first, second; // on two file systems where the machine has them
    QString place, app, incoming, abroad;         // the last on the second file system, or the same as incoming
    QStringList oldTree, newTree, otherTree;
    const QStringList withLog { "app", "app.update.log" };
};

QTEST_GUILESS_MAIN(UpdaterTest)
#include "tst_updater.moc"
