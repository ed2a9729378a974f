// A package that takes the place of the application's folder: unpacked beside it, looked at, handed to the updater.
// Made by the client when Install is pressed; leaves a running updater, or nothing.
#include "Replacement.h"

#include "DownloadManager.h"
#include "FileUtils.h"
#include "LogQt.h"
#include "PolicyTexts.h"
#include "Unzipper.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>

namespace qv {

namespace {

constexpr QLatin1String updaterName("UpdateInstaller");
constexpr int secondsToEnd = 60 * 60; // that the updater grants a process that is about to end

QString applicationFolder()
{
    return QCoreApplication::applicationDirPath();
}

QString programName()
{
    return QFileInfo(QCoreApplication::applicationFilePath()).fileName();
}

QString folderAround()
{
    return QFileInfo(applicationFolder()).path();
}

/// Outside of what it replaces.
QString updaterPath()
{
    return folderAround() + QLatin1Char('/') + updaterName;
}

/// What root would start there could be somebody else's.
bool canOthersWrite(const QFileInfo &folder)
{
    return geteuid() == 0
        && (folder.ownerId() != 0 || folder.permission(QFile::WriteGroup) || folder.permission(QFile::WriteOther));
}

bool holdsProgram(const QString &folder)
{
    const QFileInfo program(folder + QLatin1Char('/') + programName());
    return program.isFile() && program.isExecutable();
}

bool bringUpdater()
{
    QFile::remove(updaterPath());
    return QFile::copy(applicationFolder() + QLatin1Char('/') + updaterName, updaterPath());
}

} // namespace

QString Replacement::obstacle()
{
    for (const QString &folder : { applicationFolder(), folderAround() }) {
        const QFileInfo info(folder);
        if (!info.isWritable())
            return obstacleText(Obstacle::NotWritable, folder);
        if (canOthersWrite(info))
            return obstacleText(Obstacle::WritableByOthers, folder);
    }
    if (!QFileInfo(applicationFolder() + QLatin1Char('/') + updaterName).isExecutable())
        return obstacleText(Obstacle::NoUpdater, applicationFolder());
    return QString();
}

Replacement::Replacement(const QString &archive, DownloadManager *manager, QObject *parent)
    : QObject(parent), archive(archive), manager(manager)
{
    connect(qApp, &QCoreApplication::aboutToQuit, this, &Replacement::finish);
    if (!manager)
        return;
    manager->setParent(this);
    connect(manager, qOverload<int>(&DownloadManager::downloadFailure), this, &QObject::deleteLater);
    connect(manager, &DownloadManager::downloadAborted, this, &QObject::deleteLater);
}

Replacement::~Replacement()
{
    finish();
}

void Replacement::unpack()
{
    const QString name = QFileInfo(applicationFolder()).fileName();
    QTemporaryDir made(folderAround() + QStringLiteral("/.%1.update-XXXXXX").arg(name));
    made.setAutoRemove(false);
    if (!made.isValid()) {
        emit failed(obstacleText(Obstacle::NotWritable, folderAround()));
        return;
    }
    unzipper = new Unzipper(archive, made.path(), false);
    unzipper->setParent(this);
    connect(unzipper, &Unzipper::unzippingDone, this, [this](const QString &unpackedFolder) {
        folder = unpackedFolder;
        examine();
    });
    connect(unzipper, &Unzipper::unzippingFailed, this, [this](const QString &message) {
        const QString text =
            QCoreApplication::translate("DownloadManager", "Downloaded file could not be unpacked:<br>");
        emit failed(QString(text).replace(QLatin1String("<br>"), QLatin1String("\n")) + message);
    });
}

void Replacement::examine()
{
    removeArchive();
    if (findProgram())
        emit unpacked();
    else
        emit failed(obstacleText(Obstacle::NoProgram, programName()));
}

/// Where the package holds all it has in one folder, that is the new version.
bool Replacement::findProgram()
{
    if (holdsProgram(folder))
        return true;
    const QFileInfoList entries =
        QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    if (entries.size() != 1 || entries[0].isSymLink() || !holdsProgram(entries[0].filePath()))
        return false;
    const QString inner = entries[0].filePath(), moved = folder + QStringLiteral("-inner");
    QFile::setPermissions(inner, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner); // or it could not be moved
    if (!QDir().rename(inner, moved))
        return false;
    QDir().rmdir(folder);
    folder = moved;
    return true;
}

QStringList Replacement::updaterArguments() const
{
    return { QStringLiteral("-oldDir"), applicationFolder(), QStringLiteral("-newDir"), folder,
             QStringLiteral("-exe"),    programName(),       QStringLiteral("-discard") };
}

void Replacement::installNow()
{
    if (!bringUpdater())
        return;
    supersede();
    const QStringList words = QStringList { updaterPath() } + updaterArguments() + QStringList("-tell");
    QList<QByteArray> bytes;
    for (const QString &word : words)
        bytes << QFile::encodeName(word);
    std::vector<char *> arguments;
    for (QByteArray &word : bytes)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    LogQt::write(Log::Progress, QStringLiteral("Replacement::installNow() -> ") + words.join(QLatin1Char(' ')));
    execv(arguments[0], arguments.data());
}

bool Replacement::installAtEnd()
{
    if (!bringUpdater())
        return false;
    supersede();
    isForLater = true;
    LogQt::write(Log::Progress,
                 QStringLiteral("Replacement::installAtEnd() -> %1 waits for the end of the application").arg(folder));
    return true;
}

/// The user has chosen once more: what was chosen before is not installed.
void Replacement::supersede() const
{
    for (Replacement *earlier : parent()->findChildren<Replacement *>()) {
        if (!earlier->isForLater || earlier == this)
            continue;
        earlier->isForLater = false;
        delete earlier;
    }
}

/// Called twice where the application ends before this object goes.
void Replacement::finish()
{
    if (std::exchange(isForLater, false))
        startUpdaterForLater();
    delete manager;
    delete std::exchange(unzipper, nullptr); // it removes what it has not told of
    removeArchive();
    if (!folder.isEmpty())
        FileUtils::eraseFolder(folder);
    folder.clear();
}

void Replacement::startUpdaterForLater()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return;
    QProcess updater;
    updater.setProgram(updaterPath());
    updater.setArguments(updaterArguments()
                         << QStringLiteral("-wait") << QString::number(secondsToEnd) << QStringLiteral("-noStart"));
    updater.setStandardInputFile(QStringLiteral("/proc/self/fd/%1").arg(ends[0]));
    const bool isStarted = updater.startDetached();
    close(ends[0]);
    if (isStarted) { // the other end is closed with this process, however it ends
        folder.clear();
        return;
    }
    close(ends[1]);
    LogQt::write(Log::Error, QStringLiteral("Replacement::finish() -> could not start ") + updaterPath());
}

void Replacement::removeArchive() const
{
    if (archive.isEmpty())
        return;
    FileUtils::erase(archive);
    QDir().rmdir(QFileInfo(archive).path());
}

} // namespace qv
