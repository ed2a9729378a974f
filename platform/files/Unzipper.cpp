// An archive unpacked in the background. Made by whoever does not want to wait; leaves the unpacked folder, or no
// folder and a message.
#include "Unzipper.h"
#include "FileUtils.h"
#include "IOException.h"
#include "ZipExtractor.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>

namespace qv {

namespace {

constexpr std::chrono::milliseconds patience(30); // of the GUI thread with a worker that tidies up

} // namespace

/// What the worker has to do. It never touches the Unzipper but to report, and that only while nobody stopped it.
struct Q_DECL_HIDDEN Unzipper::Job
{
    Job(Unzipper *receiver, const QString &archiveFile, const QString &targetFolder, bool flatten)
        : unzipper(receiver), archive(archiveFile), folder(targetFolder), flat(flatten)
    {
    }

    bool unpack() const
    {
        QFile file(archive);
        std::vector<ZipEntry> entries = readZipDirectory(file);
        if (flat)
            flattenZipPaths(entries);
        return extractZip(file, entries, folder, [this](quint64, quint64) { return !stopped; });
    }

    QString message(const std::exception &exception) const
    {
        return printableZipName(QFileInfo(archive).fileName().toUtf8()) + ": " + QString::fromUtf8(exception.what());
    }

    Unzipper *const unzipper;
    const QString archive;
    const QString folder;
    const bool flat;
    std::mutex reporting; // held while stopped is set or a report is made
    std::atomic<bool> stopped { false };
    bool isUnclaimed = false; // the folder is whole, and the report of it has not been delivered
    std::promise<void> ended;
};

Unzipper::Unzipper(const QString &archive, const QString &folder, bool flat)
    : job(std::make_shared<Job>(this, archive, folder, flat))
{
    if (qApp) // whoever forgets this object when the application ends still leaves nothing behind
        connect(qApp, &QCoreApplication::aboutToQuit, this, &Unzipper::stop);
    try {
        worker = std::thread(&Unzipper::run, job);
    } catch (const std::exception &exception) { // no thread can be had
        report(job, false, job->message(exception));
    }
}

Unzipper::~Unzipper()
{
    stop();
}

void Unzipper::stop()
{
    {
        const std::lock_guard<std::mutex> lock(job->reporting);
        job->stopped = true;
    }
    if (std::exchange(job->isUnclaimed, false))
        FileUtils::eraseFolder(job->folder);
    if (!worker.joinable())
        return;
    const auto left = std::make_shared<std::thread>(std::move(worker)); // what takes long, the application's end awaits
    if (qApp && job->ended.get_future().wait_for(patience) != std::future_status::ready)
        connect(qApp, &QObject::destroyed, [left] { left->join(); });
    else
        left->join();
}

bool Unzipper::removeZipFile()
{
    return FileUtils::erase(job->archive);
}

void Unzipper::run(const std::shared_ptr<Job> &job)
{
    QString failure;
    bool isWhole = false;
    try {
        isWhole = job->unpack();
    } catch (const ExceptionQt &exception) {
        failure = exception.message();
    } catch (const std::exception &exception) {
        failure = job->message(exception);
    }
    report(job, isWhole, failure);
    job->ended.set_value();
}

void Unzipper::report(const std::shared_ptr<Job> &job, bool isWhole, const QString &failure)
{
    if (!isWhole)
        QDir().rmdir(job->folder);
    const std::lock_guard<std::mutex> lock(job->reporting);
    if (job->stopped) {
        if (isWhole)
            FileUtils::eraseFolder(job->folder);
        return;
    }
    job->isUnclaimed = isWhole;
    const auto deliver = [job, isWhole, failure] {
        job->isUnclaimed = false;
        if (job->stopped)
            return;
        if (job->unzipper->worker.joinable())
            job->unzipper->worker.join(); // its stack would stay for as long as a forgotten Unzipper
        if (isWhole)
            emit job->unzipper->unzippingDone(job->folder);
        else
            emit job->unzipper->unzippingFailed(failure);
    };
    QMetaObject::invokeMethod(job->unzipper, deliver, Qt::QueuedConnection);
}

} // namespace qv
