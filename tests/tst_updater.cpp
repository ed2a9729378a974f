// UpdateInstaller from outside: real child processes on real folders, killed wherever they can be.
#include "Row.h"

#include <QtTest>

#include <fcntl.h>
#include <filesystem>
#include <linux/capability.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/file.h>
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

/// Waits for the end of @p child, and makes it: kills it before its system call number @p killAt of those that change
/// the disk takes effect. With 0 it is not traced and comes to its own end.
int endOf(pid_t child, int killAt)
{
    int status = 0, changes = 0;
    while (waitpid(child, &status, 0) == child && WIFSTOPPED(status)) {
        ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
        __ptrace_syscall_info call {};
        ptrace(static_cast<__ptrace_request>(PTRACE_GET_SYSCALL_INFO), child, sizeof call, &call);
        if (call.op == PTRACE_SYSCALL_INFO_ENTRY && changesTheDisk(call) && ++changes == killAt)
            kill(child, SIGKILL);
        const int signal = WSTOPSIG(status) & ~0x80;
        ptrace(PTRACE_SYSCALL, child, nullptr, signal == SIGTRAP || signal == SIGSTOP ? 0 : signal);
    }
    return status;
}

/// Forks, calls @p prepare in the child and lets the updater take its place, as a host does.
Outcome run(const QStringList &arguments, int killAt = 0, const std::function<void()> &prepare = {})
{
    std::vector<std::string> words { UPDATE_INSTALLER };
    std::vector<char *> vector;
    for (const QString &argument : arguments)
        words.push_back(argument.toStdString());
    for (std::string &word : words)
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
    const int status = endOf(child, killAt);
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

/// Called in the child: permissions hold for root, too.
void obeyPermissions()
{
    for (const int right : { CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_FOWNER })
        prctl(PR_CAPBSET_DROP, right, 0, 0, 0);
}

/// Names, kinds, permissions, times, targets and contents of all below @p folder but the log; empty when it is not
/// there.
QByteArray tree(const QString &folder)
{
    std::map<std::string, QByteArray> lines;
    const std::string top = folder.toStdString();
    std::error_code error;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(top, error)) {
        const std::string path = entry.path().string();
        struct stat status
        {
        };
        lstat(path.c_str(), &status);
        const auto &time = status.st_mtim;
        QByteArray &line = lines[path.substr(top.size())];
        line = QByteArray::number(status.st_mode, 8) + ' ' + QByteArray::number(qint64(time.tv_sec)) + '.'
            + QByteArray::number(qint64(time.tv_nsec)) + ' ';
        QFile file(QString::fromStdString(path));
        if (S_ISLNK(status.st_mode))
            line += std::filesystem::read_symlink(path).string().c_str();
        else if (S_ISREG(status.st_mode) && file.open(QIODevice::ReadOnly))
            line += file.readAll();
    }
    lines.erase("/app.update.log");
    QByteArray text;
    for (const auto &[path, line] : lines)
        text += path.c_str() + QByteArray(" ") + line + '\n';
    return text;
}

bool shell(const QString &command)
{
    return QProcess::execute("sh", { "-ec", command }) == 0;
}

} // namespace

class UpdaterTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        umask(022); // root minds
        QVERIFY(shell(QString(R"(
        cd '%1'; mkdir -p master/'pläce with blanks' master/incoming
        for version in 1.0 2.0 3.0; do
            mkdir '%1/'$version; cd '%1/'$version
            mkdir -p sub/deep empty closed
            echo 'data '$version | tee sub/deep/data sub/$version closed/data >/dev/null
            printf '#!/bin/sh\necho '$version' runs $QV_UPDATE_RESULT\n' >program
            ln -s deep/data sub/link; ln -s program start
            chmod 750 program; chmod 640 sub/deep/data; chmod 555 closed
            touch -hd '2026-01-02 03:04:05.678 UTC' sub/link sub/deep/* sub/* closed/* * .
        done
        cd '%1'; chmod 711 1.0; chmod 700 2.0
        mv 1.0 master/'pläce with blanks/app'; mv 2.0 master/incoming/new; mv 3.0 master/incoming/other)")
                          .arg(first.path())));
    }

    /// Folders without write permission would stay.
    void cleanupTestCase() { QVERIFY(shell(QString("chmod -R u+w '%1' '%2'").arg(first.path(), second.path()))); }

    void oneRun_data()
    {
        // work: a shell's, in the folder with the new versions
        // words: OLD is the installed folder, IN and OUT are where the new ones wait, a hyphen alone is an empty word
        // error: of the exchange, of writing anything large, or of root who does what only root can do
        columns<QString, QString, int, int, QString>("work", "words", "error", "exitCode", "says");

        for (const char *words :
             { "", "-oldDir OLD -newDir IN/new", "-oldDir OLD -newDir IN/new -exe",
               "-oldDir OLD -newdir IN/new -exe program", "-oldDir OLD -oldDir IN/new -exe program",
               "-oldDir OLD -newDir IN/new -exe program --help x",
               "-oldDir OLD -newDir IN/new -exe program -tell -tell", "-oldDir OLD -newDir IN/new -exe program -wait",
               "-oldDir OLD -newDir IN/new -exe program -wait 1h", "-oldDir - -newDir IN/new -exe program",
               "-oldDir OLD -newDir IN/new -exe -", "-oldDir OLD -newDir IN/new -exe /bin/true",
               "-oldDir OLD -newDir IN/new -exe sub/../../program" })
            row(words, ":", words, 0, 2, "usage: UpdateInstaller -oldDir DIR -newDir DIR -exe NAME\n");
        for (const char *root : { "/", "/no/where" })
            row(root, ":", QString("-oldDir %1 -newDir IN/new -exe program").arg(root), 0, 5, "no place for a folder");

        const auto add = [](const char *title, const char *work, const QString &newDir, int exitCode, const char *says,
                            int error = 0, const QString &oldDir = "OLD") {
            row(title, work, QString("-oldDir %1 -newDir %2 -exe program").arg(oldDir, newDir), error, exitCode, says);
        };
        add("empty argument", ":", "-", 1, "there is no new version");
        add("no new folder", ":", "IN/missing", 1, "there is no new version");
        add("empty new folder", "mkdir void", "IN/void", 1, "lacks its program");
        add("not executable", "chmod -x new/program", "IN/new", 1, "is not executable");
        add("program is a folder", "rm new/program; mkdir new/program", "IN/new", 1, "is not executable");
        add("program elsewhere", "ln -sf /bin/true new/program", "IN/new", 1, "leads out of its folder");
        add("new is a file", ":", "IN/new/program", 1, "is not a folder");
        add("new is a link", "ln -s new link", "IN/link/", 1, "is a symbolic link");
        add("old is a link", "mv \"$APP\" kept; ln -s \"$PWD/kept\" \"$APP\"", "IN/new", 1, "is a symbolic link");
        add("the same", "ln -s \"$APP/..\" way", "IN/way/app", 1, "are the same");
        add("new in old", "ln -s \"$APP\" way", "IN/way/sub", 1, "inside each other");
        add("old in new", "ln -s \"$APP/../../..\" way", "IN/way/work", 1, "inside each other");
        add("the same, to be discarded", "ln -s \"$APP/..\" way", "IN/way/app -discard", 1, "are the same");
        add("old in new, to be discarded", "ln -s \"$APP/../../..\" way", "IN/way/work -discard", 1,
            "inside each other");
        add("swap impossible", ":", "IN/new", 1, "cannot swap", EPERM);
        add("disk full", ":", "OUT/new", 1, "cannot write", EFBIG);

        add("one step", ":", "IN/new", 0, "2.0 runs\n");
        add("three steps", ":", "IN/new", 0, "2.0 runs\n", EINVAL);
        add("slashes behind", ":", "IN/new/", 0, "2.0 runs\n", 0, "OLD//");
        add("relative", ":", "IN/new", 0, "2.0 runs\n", 0, "../../app/.");
        add("another file system", ":", "OUT/new", 0, "copying the new version");

        add("fails", "printf '#!/bin/sh\nexit 3' >new/program", "IN/new", 3, "ended with exit code 3");
        add("crashes", "printf '#!/bin/sh\nkill -SEGV $$' >new/program", "OUT/new", 3, "was killed by signal 11");
        add("no interpreter", "echo '#!/no/where' >new/program", "IN/new", 3, "cannot start");

        add("nothing can leave", "chmod a-w .", "IN/new", 0, "update-spare: Permission denied\n", EACCES);
        add("log is a folder", "mkdir $OUR.log", "IN/new", 0, "app.update.log: Is a directory\n");
        add("log is a second name", "ln other/program $OUR.log", "IN/new", 0, "no log of ours");
        add("lock is a pipe", "mkfifo -m 600 $OWN-lock", "IN/new", 1, "no lock of ours");
        add("lock is a second name", "touch one; chmod 600 one; ln one $OWN-lock", "IN/new", 1, "no lock of ours");
        add("lock can be read by all", "install -m 644 /dev/null $OWN-lock", "IN/new", 1, "no lock of ours");
        add("spare is a link", "ln -s $PWD/other $OWN-spare", "IN/new", 1, "spare is not of our making");
        add("aside is a link", "ln -s $PWD/other $OWN-aside", "IN/new", 1, "aside is not of our making");
        add("journal is a link", "ln -s $PWD/other $OWN-journal", "IN/new", 1, "journal is not of our making");
        if (geteuid() != 0) // nobody else can give files away, or has to fear whoever can write
            return;
        add("log of a stranger", "touch $OUR.log; chown 65534 $OUR.log", "IN/new", 0, "no log of ours");
        add("lock of a stranger", "install -o 65534 -m 600 /dev/null $OWN-lock", "IN/new", 1, "no lock of ours");
        add("spare of a stranger", "install -d -o 65534 $OWN-spare", "IN/new", 1, "spare is not of our making");
        add("journal of a stranger", "install -o 65534 /dev/null $OWN-journal", "IN/new", 1, "journal is not of our");
        for (const char *theirs : { "$APP", "$APP/..", "$APP/../..", ".", "new", "new/sub/deep/data" }) {
            const QByteArray given = QByteArray("chown 65534 ") + theirs, opened = QByteArray("chmod g+w ") + theirs;
            add(given, given, "IN/new", 1, "belongs to another user than root");
            add(opened, opened, "IN/new", 1, "can be written by others than root");
        }
        add("installed beside strangers", "chmod 1777 $APP/..", "IN/new", 1, "can be written by others than root");
        add("new beside strangers", "chmod 1777 . $APP/../..", "IN/new", 0, "2.0 runs\n");
    }

    /// Whatever the reason not to update, nothing is changed anywhere, and the installed program runs again; unless the
    /// command line is not understood.
    void oneRun()
    {
        QFETCH(QString, work);
        QFETCH(QString, words);
        QFETCH(int, error);
        QFETCH(int, exitCode);
        QFETCH(QString, says);
        prepare(work);
        const QByteArray waiting = tree(incoming + "/new") + tree(abroad), beside = tree(place);
        QStringList names = namesBeside();
        QFile lock; // one that stands there is held
        lock.open(open(qPrintable(place + "/.app.update-lock"), O_RDONLY | O_NONBLOCK | O_CLOEXEC), QFile::ReadOnly,
                  QFile::AutoCloseHandle);
        flock(lock.handle(), LOCK_EX | LOCK_NB);
        QStringList arguments = words.split(QChar(' '), Qt::SkipEmptyParts);
        arguments.replaceInStrings(QRegularExpression("^OLD"), app);
        arguments.replaceInStrings(QRegularExpression("^IN"), incoming);
        arguments.replaceInStrings(QRegularExpression("^OUT"), abroad);
        arguments.replaceInStrings(QRegularExpression("^-$"), QString());
        const QByteArray inside = (app + "/sub").toLocal8Bit();

        const Outcome outcome = run(arguments, 0, [error, inside] {
            const rlimit small { 10, 10 };
            if (chdir(inside) != 0 || (error == EFBIG && setrlimit(RLIMIT_FSIZE, &small) != 0))
                _exit(125);
            if (error == EACCES)
                obeyPermissions();
            else if (error != 0 && error != EFBIG)
                failExchange(unsigned(error));
        });
        const bool starts = exitCode == 0 || exitCode == 1 || exitCode == 3;
        QVERIFY2(outcome.output.contains(says.toUtf8()), outcome.output);
        QCOMPARE(outcome.output.contains("1.0 runs\n"), starts && exitCode != 0);
        QCOMPARE(outcome.output.contains("2.0 runs\n"), exitCode == 0);
        QCOMPARE(outcome.exitCode, exitCode);
        QCOMPARE(tree(app), exitCode == 0 ? newTree : oldTree);
        if (starts && !names.contains("app.update.log"))
            names.append("app.update.log");
        QCOMPARE(namesBeside(), names);
        QCOMPARE(tree(incoming + "/other"), otherTree);
        if (exitCode == 0) {
            QCOMPARE(int(QFile::permissions(app)), 0x7711); // of the old folder; the unpacked one is private
            QCOMPARE(QFile::exists(arguments[3]), error == EACCES);
            QVERIFY2(says.contains(": ") || !outcome.output.contains("cannot"), outcome.output);
        } else {
            QCOMPARE(tree(place), beside);
            QCOMPARE(tree(incoming + "/new") + tree(abroad), waiting);
        }
    }

    void options_data()
    {
        // tells: a line of the started program; work is done in the folder of the new version
        columns<QString, QString, int, QString>("work", "options", "exitCode", "tells");

        row("told", ":", "-tell", 0, "2.0 runs updated\n");
        row("told of nothing new", "rm program", "-tell", 1, "1.0 runs unchanged: the new version lacks its program");
        row("told of a failure", "echo exit 3 >>program", "-tell -discard", 3,
            "1.0 runs reverted: the new program ended with exit code 3\n");
        row("told of a swap", ":", "-tell -discard -wait 0 <", 0, "2.0 runs updated\n");
        row("discarded", "rm program", "-discard", 1, "1.0 runs\n");
        row("not started", ":", "-noStart", 0, "");
        row("not tried", "echo exit 3 >>program", "-noStart", 0, "");
        row("nothing new, not started", "rm program", "-noStart -discard", 1, "");
        row("given up", ":", "-wait 0", 6, "");
        row("given up, discarded", ":", "-wait 0 -discard", 6, "");
        if (geteuid() == 0)
            row("discarded by strangers", "chmod 777 ..", "-discard", 1, "1.0 runs\n");
    }

    void options()
    {
        QFETCH(QString, work);
        QFETCH(QString, options);
        QFETCH(int, exitCode);
        QFETCH(QString, tells);
        prepare("cd new; " + work + "; cd ..");
        const bool ends = options.endsWith('<');
        const bool discards = options.contains("-discard") && !work.contains("777");
        int pipe[2];
        QVERIFY(pipe2(pipe, O_CLOEXEC) == 0);

        const Outcome outcome = run(order(incoming + "/new") + options.remove(" <").split(QChar(' ')), 0, [&] {
            dup2(ends ? open("/dev/null", O_RDONLY | O_CLOEXEC) : pipe[0], STDIN_FILENO);
        });
        close(pipe[0]);
        close(pipe[1]);
        QCOMPARE(outcome.exitCode, exitCode);
        QVERIFY2(outcome.output.contains(tells.toUtf8()), outcome.output);
        QCOMPARE(outcome.output.contains(" runs"), !tells.isEmpty());
        QCOMPARE(tree(app), exitCode == 0 ? newTree : oldTree);
        QCOMPARE(tree(incoming + "/new"), exitCode == 0 || discards ? QByteArray() : newTree);
        QCOMPARE(namesBeside(), withLog);
    }

    /// A caller that still runs loses nothing; what it writes meanwhile does not matter, its end does.
    void waitsForItsCaller()
    {
        prepare(":");
        QProcess updater;
        updater.setProcessChannelMode(QProcess::MergedChannels);
        updater.start(UPDATE_INSTALLER, order(incoming + "/new") + QStringList { "-wait", "3600", "-noStart" });
        QByteArray output;
        while (!output.contains("waiting for the caller")) {
            QVERIFY(updater.waitForReadyRead());
            output += updater.readAll();
        }
        updater.write("still here");
        QVERIFY(updater.waitForBytesWritten());
        QCOMPARE(tree(app), oldTree);
        QCOMPARE(namesBeside(), withLog);
        updater.closeWriteChannel();
        QVERIFY(updater.waitForFinished());
        QCOMPARE(updater.exitCode(), 0);
        QCOMPARE(tree(app), newTree);
    }

    void tellsAboutItself()
    {
        prepare(":");
        for (const char *word : { "--help", "--version" }) {
            const Outcome outcome = run({ word });
            QVERIFY2(outcome.exitCode == 0 && outcome.output.contains("UpdateInstaller "), outcome.output);
            QCOMPARE(namesBeside(), QStringList("app"));
        }
    }

    /// Kills the updater before each of its steps on the disk. The installed folder is whole, old or new, whenever; the
    /// next run comes to the end that an undisturbed one comes to, and leaves as little behind.
    void killedAnywhere()
    {
        for (const QString how : { "good", "good, three steps", "good, copied", "bad", "bad, three steps",
                                   "good the first time", "good, killed twice", "bad, three steps, killed twice",
                                   "good, another next", "good, three steps, another next", "good, not started",
                                   "good, three steps, not started", "bad, discarded" }) {
            const bool exchange = !how.contains("three steps"), twice = how.contains("twice");
            const bool other = how.contains("another");
            const bool isBad = how.startsWith("bad"), isFickle = how == "good the first time";
            const auto failing = [exchange] { exchange ? void() : failExchange(EINVAL); };
            const QString newDir = (how.contains("copied") ? abroad : incoming) + "/new";
            const bool discards = how.contains("discarded"), starts = !how.contains("not started");
            const QStringList more(!starts ? "-noStart" : discards ? "-discard" : "-tell");
            const QString script = isBad ? "false" : isFickle ? "mkdir " + first.filePath("work/tried") : "true";

            int step = 0, exitCode = killed;
            while (exitCode == killed) {
                prepare("printf '#!/bin/sh\n" + script + "\n' >new/program");
                const QByteArray where = how.toLatin1() + ", killed at step " + QByteArray::number(++step);

                exitCode = run(order(newDir) + more, step, failing).exitCode;
                if (twice)
                    run(order(newDir), step, failing);
                // Between the steps of three, and only there, the installed folder is aside for a moment.
                const QByteArray found = tree(exchange || QFile::exists(app) ? app : place + "/.app.update-aside");
                QVERIFY2(found == oldTree || found == newTree, where);

                const Outcome next = run(order(other ? incoming + "/other" : newDir) + more, 0, failing);
                const QByteArray what = where + '\n' + next.output;
                const QByteArray left = tree(newDir);
                if (next.exitCode == 3) {
                    QVERIFY2((isBad || isFickle)
                                 && next.output.contains(discards ? "1.0 runs\n" : "1.0 runs reverted: "),
                             what);
                    QVERIFY2(tree(app) == oldTree && left == (discards ? QByteArray() : newTree), what);
                } else if (discards) { // so far that nothing new was left
                    QVERIFY2(next.exitCode == 1 && tree(app) == oldTree && !QFile::exists(newDir), what);
                } else {
                    QVERIFY2(next.exitCode == 0 || (next.exitCode == 1 && !QFile::exists(newDir)), what);
                    QVERIFY2(!isBad
                                 && next.output.contains(other        ? "3.0 runs updated\n"
                                                             : starts ? "started "
                                                                      : "is "),
                             what);
                    QVERIFY2(tree(app) == (other ? otherTree : newTree), what);
                    QVERIFY2(left.isEmpty() || (other && left == newTree), what);
                }
                QVERIFY2(namesBeside() == withLog, where);
            }
            QVERIFY2(exitCode != 124, "processes cannot be traced here");
            QVERIFY2(step > 10, QByteArray::number(step));
        }
    }

    /// As long as the new program is on trial the old version stays, and nobody else may touch the folder.
    void watchesUnderLock()
    {
        prepare("printf '#!/bin/sh\necho 2.0 runs\nread line\n' >new/program");
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
        QCOMPARE(tree(app), newTree);
        QCOMPARE(tree(incoming + "/other"), otherTree);

        QVERIFY(updater.waitForFinished());
        QCOMPARE(updater.exitCode(), 0);
        QCOMPARE(tree(app), newTree);
        QCOMPARE(namesBeside(), withLog);
    }

    /// The host is replaced in the middle of whatever it does; nothing of that may reach the updater or the new
    /// program.
    void forgetsItsCaller()
    {
        prepare("printf '#!/bin/sh\npwd; grep ^Sig[BI] /proc/self/status; ls -l /proc/self/fd' >new/program");
        const QByteArray inside = (app + "/sub/deep").toLocal8Bit(), leak = (incoming + "/leak").toLocal8Bit();

        const Outcome outcome = run(order(abroad + "/new"), 0, [&] {
            sigset_t all;
            sigfillset(&all);
            sigprocmask(SIG_BLOCK, &all, nullptr);
            raise(SIGTERM);
            signal(SIGCHLD, SIG_IGN);
            signal(SIGPIPE, SIG_IGN);
            const itimerval soon { {}, { 0, 1 } };
            setitimer(ITIMER_REAL, &soon, nullptr);
            if (open(leak, O_CREAT | O_RDWR, 0600) < 0 || chdir(inside) != 0)
                _exit(125);
            close(STDIN_FILENO);
        });
        QVERIFY2(outcome.exitCode == 0, outcome.output);
        QVERIFY2(outcome.output.contains('\n' + inside + '\n'), outcome.output);
        // Of the ignored signals only those that the C library keeps for itself, 32 and 33.
        const QRegularExpression clean("SigBlk:\t0+\nSigIgn:\t[0-9a-f]{8}[08]0{7}\n");
        QVERIFY2(QString::fromLocal8Bit(outcome.output).contains(clean), outcome.output);
        QVERIFY2(!outcome.output.contains("leak"), outcome.output);
    }

private:
    /// The old version installed in @c app, two new ones in @c incoming and @c abroad, nothing else; but for what
    /// @p work of a shell does to them.
    void prepare(const QString &work)
    {
        QVERIFY(shell(
            QString("cd '%1'; mkdir -p work '%2'; chmod -R u+w work '%2'; rm -rf work '%2'; cp -a master work; "
                    "APP='%3'; OUR=$APP.update; OWN=${APP%app}.app.update; IFS=; cd work/incoming; %4; cp -a . '%2'")
                .arg(first.path(), abroad, app, work)));
        oldTree = tree(app);
        newTree = tree(incoming + "/new");
        otherTree = tree(incoming + "/other");
        QVERIFY(oldTree.contains("/sub/deep/data") && otherTree.contains("/sub/deep/data") && oldTree != newTree);
    }

    QStringList order(const QString &newDir) const { return { "-oldDir", app, "-newDir", newDir, "-exe", "program" }; }

    QStringList namesBeside() const
    {
        return QDir(place).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }

    // Two file systems: memory for most of the work, as nothing here has to wait for a disk then.
    const QTemporaryDir first { "/dev/shm/updater-XXXXXX" }, second;
    const QString place = first.filePath("work/pläce with blanks"), app = place + "/app";
    const QString incoming = first.filePath("work/incoming"), abroad = second.filePath("incoming");
    QByteArray oldTree, newTree, otherTree;
    const QStringList withLog { "app", "app.update.log" };
};

QTEST_GUILESS_MAIN(UpdaterTest)
#include "tst_updater.moc"
