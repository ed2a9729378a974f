// An archive unpacked in the background. Made by the download manager; leaves the unpacked folder, or no folder and a
// message.
#include "Unzipper.h"
#include "FileUtils.h"
#include "IOException.h"
#include "ZipExtractor.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QThreadPool>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <future>
#include <mutex>

namespace qv {

namespace {

constexpr std::chrono::milliseconds patience(30); // of the GUI thread with a worker that tidies up

} // namespace

/// What the worker has to do. It never touches the Unzipper but to report, and that only while nobody stopped it.
struct Unzipper::Job
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

    template<class Function>
    void report(Function function)
    {
        const std::lock_guard<std::mutex> lock(reporting);
        if (!stopped)
            QMetaObject::invokeMethod(unzipper, function, Qt::QueuedConnection);
    }

    Unzipper *const unzipper;
    const QString archive;
    const QString folder;
    const bool flat;
    std::mutex reporting; // held while stopped is set or a report is posted
    std::atomic<bool> stopped { false };
    std::promise<bool> isWhole;
    bool isDelivered = false; // the receiver's thread alone
};

Unzipper::Unzipper(const QString &archive, const QString &folder, bool flat)
    : job(std::make_shared<Job>(this, archive, folder, flat)), worker(&Unzipper::run, job)
{
    if (qApp) // whoever forgets this object when the application ends still leaves nothing behind
        connect(qApp, &QCoreApplication::aboutToQuit, this, &Unzipper::stop);
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
    if (!worker.joinable())
        return;
    std::future<bool> isWhole = job->isWhole.get_future();
    if (isWhole.wait_for(patience) == std::future_status::ready) {
        worker.join();
        std::error_code ignored;
        if (isWhole.get() && !job->isDelivered) // nobody knows of the folder
            std::filesystem::remove_all(QFile::encodeName(job->folder).constData(), ignored);
        return;
    }
    const auto left = std::make_shared<std::thread>(std::move(worker));
    QThreadPool::globalInstance()->start([left] { left->join(); }); // the application's end waits for the pool
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
        failure = QString::fromUtf8(exception.what());
    }
    if (!isWhole)
        QDir().rmdir(job->folder);
    job->report([job, isWhole, failure] {
        job->isDelivered = true;
        if (isWhole)
            emit job->unzipper->unzippingDone(job->folder);
        else
            emit job->unzipper->unzippingFailed(failure);
    });
    job->isWhole.set_value(isWhole);
}

} // namespace qv
