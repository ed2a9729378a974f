// Which camera has its turn, and what the host hears of all of them. Each camera's own road is CameraUpdate's.
#include "OnvifCameras.h"

#include "CameraUpdate.h"
#include "Firmware.h"
#include "Kinds.h"
#include "LogQt.h"

#include <QMap>
#include <QTimer>

#include <algorithm>
#include <deque>
#include <numeric>
#include <vector>

namespace qv {

class OnvifCamerasPrivate
{
public:
    struct Job
    {
        int camera;
        bool isUpdate;
    };

    explicit OnvifCamerasPrivate(OnvifCameras *q);
    void startNext();
    bool mayStart(const Job &job) const;
    bool has(bool isUpdate) const;
    void end(int camera, CameraNews news, const QString &detail);
    void note(int camera, CameraNews news, const QString &detail);
    void tellVersions();
    void finishInstalling();
    void cancel();
    void tell(const QString &what);
    CameraUpdate &at(int camera) const { return *cameras[size_t(camera)]; }

    OnvifCameras *const q;
    OnvifTimes times;
    int maxParallel = 2;
    std::vector<std::unique_ptr<CameraUpdate>> cameras;
    std::deque<Job> waiting;
    std::vector<Job> running;

    bool hasRead = false; // versions of all cameras, as far as they can be reached
    int installs = 0;     // so far
    PackageInfo package;
    QString file;
    QMap<int, int> percents;  // of the cameras that are meant
    QMap<int, QString> lines; // of those that came to an end
    bool hasFailed = false;
    QTimer heartbeat; // who is silent for two minutes counts as failed
    QString lastTold;
};

OnvifCamerasPrivate::OnvifCamerasPrivate(OnvifCameras *q) : q(q)
{
    heartbeat.setInterval(30 * 1000);
    QObject::connect(&heartbeat, &QTimer::timeout, q, [this] { tell(lastTold); });
}

bool OnvifCamerasPrivate::has(bool isUpdate) const
{
    const auto matches = [isUpdate](const Job &job) { return job.isUpdate == isUpdate; };
    return std::any_of(waiting.cbegin(), waiting.cend(), matches)
        || std::any_of(running.cbegin(), running.cend(), matches);
}

bool OnvifCamerasPrivate::mayStart(const Job &job) const
{
    return int(running.size()) < std::max(1, maxParallel)
        && std::none_of(running.cbegin(), running.cend(), [&](const Job &other) {
               return at(other.camera).host().compare(at(job.camera).host(), Qt::CaseInsensitive) == 0;
           });
}

void OnvifCamerasPrivate::startNext()
{
    const auto next = [this] {
        return std::find_if(waiting.begin(), waiting.end(), [this](const Job &job) { return mayStart(job); });
    };
    for (auto job = next(); job != waiting.end(); job = next()) { // what begins may be heard of, and change the list
        const Job begun = *job;
        waiting.erase(job);
        running.push_back(begun);
        if (begun.isUpdate)
            at(begun.camera).update(package, file);
        else
            at(begun.camera).read();
    }
}

void OnvifCamerasPrivate::end(int camera, CameraNews news, const QString &detail)
{
    const auto job = [this, camera] {
        return std::find_if(running.begin(), running.end(), [camera](const Job &one) { return one.camera == camera; });
    };
    const bool isUpdate = job()->isUpdate;
    if (isUpdate)
        note(camera, news, detail);
    else if (news != CameraNews::Asked)
        emit q->cameraFailed(camera, cameraText(news, detail));
    running.erase(job());
    startNext();
    if (has(isUpdate))
        return;
    if (isUpdate)
        finishInstalling();
    else
        tellVersions();
}

void OnvifCamerasPrivate::note(int camera, CameraNews news, const QString &detail)
{
    percents[camera] = 100;
    if (news != CameraNews::NotMeant) {
        const bool isRight = news == CameraNews::Installed || news == CameraNews::UpToDate;
        hasFailed = hasFailed || !isRight;
        lines.insert(camera, cameraLine(at(camera).name(), cameraText(news, detail)));
        LogQt::write(isRight ? Log::Progress : Log::Error,
                     QStringLiteral("OnvifCameras::install() -> ") + lines.value(camera));
    }
    tell(lines.value(camera, lastTold));
}

void OnvifCamerasPrivate::tell(const QString &what)
{
    lastTold = what;
    const int done = std::accumulate(percents.cbegin(), percents.cend(), 0);
    emit q->progress(done, 100 * int(percents.size()), what);
}

void OnvifCamerasPrivate::tellVersions()
{
    QMap<QString, VersionNumber> oldest;
    for (const auto &camera : cameras) {
        if (camera->version().isNull())
            continue;
        const VersionNumber version = firmwareVersion(camera->version());
        if (!isStorable(camera->model()) || camera->model().isEmpty() || version == VersionNumber()) {
            LogQt::write(Log::Warning,
                         QStringLiteral("OnvifCameras::versionsRead() -> of no use for updates: ") + camera->model()
                             + QLatin1Char(' ') + camera->version());
            continue;
        }
        const auto known = oldest.constFind(camera->model());
        if (known == oldest.cend() || version < *known)
            oldest.insert(camera->model(), version);
    }
    hasRead = true;
    SoftUpCurrentCameraVersions versions;
    for (auto one = oldest.cbegin(); one != oldest.cend(); ++one)
        versions.append({ one.key(), one.value() });
    emit q->versionsRead(versions);
}

void OnvifCamerasPrivate::finishInstalling()
{
    heartbeat.stop();
    if (hasRead)
        tellVersions();
    const QStringList told = lines.values();
    emit q->finished(!hasFailed, told.isEmpty() ? noCameraText() : told.join(QLatin1Char('\n')));
}

void OnvifCamerasPrivate::cancel()
{
    const auto isRead = [](const Job &job) { return !job.isUpdate; };
    const auto begin = std::stable_partition(waiting.begin(), waiting.end(), isRead);
    const std::vector<Job> skipped(begin, waiting.end());
    waiting.erase(begin, waiting.end());
    for (const Job &job : skipped)
        note(job.camera, CameraNews::Skipped, QString());
    if (!has(true)) {
        finishInstalling();
        return;
    }
    const std::vector<Job> begun = running; // shrinks meanwhile
    for (const Job &job : begun) {
        if (job.isUpdate)
            at(job.camera).cancel();
    }
}

OnvifCameras::OnvifCameras(const QList<OnvifCamera> &cameras, QObject *parent)
    : PackageInstaller(parent), d(std::make_unique<OnvifCamerasPrivate>(this))
{
    setCameras(cameras);
}

OnvifCameras::~OnvifCameras() = default;

bool OnvifCameras::setCameras(const QList<OnvifCamera> &cameras)
{
    if (d->has(true) || d->has(false))
        return false;
    d->cameras.clear();
    d->hasRead = false;
    for (const OnvifCamera &camera : cameras) {
        const int place = int(d->cameras.size());
        auto update = std::make_unique<CameraUpdate>(camera, d->times);
        connect(update.get(), &CameraUpdate::versionRead, this,
                [this, place] { emit versionRead(place, d->at(place).model(), d->at(place).version()); });
        connect(update.get(), &CameraUpdate::moved, this, [this, place](int percent, CameraNews news) {
            d->percents[place] = percent;
            d->tell(cameraLine(d->at(place).name(), cameraText(news)));
        });
        connect(update.get(), &CameraUpdate::ended, this,
                [this, place](CameraNews news, const QString &detail) { d->end(place, news, detail); });
        d->cameras.push_back(std::move(update));
    }
    return true;
}

void OnvifCameras::setMaxParallel(int cameras)
{
    d->maxParallel = cameras;
}

void OnvifCameras::setTimes(const OnvifTimes &times)
{
    d->times = times;
}

void OnvifCameras::readVersions()
{
    if (d->has(false))
        return;
    for (int camera = 0; camera < int(d->cameras.size()); ++camera)
        d->waiting.push_back({ camera, false });
    d->startNext();
    if (!d->has(false))
        d->tellVersions();
}

void OnvifCameras::install(const PackageInfo &package, const QString &file)
{
    if (d->has(true)) {
        LogQt::write(Log::Error, QStringLiteral("OnvifCameras::install() -> still busy with another package"));
        return;
    }
    if (package.suffix != Suffix::rpk) {
        emit finished(false, noFirmwareText());
        return;
    }
    ++d->installs;
    d->package = package;
    d->file = file;
    d->hasFailed = false;
    d->lines.clear();
    d->percents.clear();
    for (int camera = 0; camera < int(d->cameras.size()); ++camera) {
        const QString model = d->at(camera).model();
        if (!model.isEmpty() && !isForModel(package, model))
            continue;
        d->percents.insert(camera, 0);
        d->waiting.push_back({ camera, true });
    }
    if (!d->has(true)) {
        d->finishInstalling();
        return;
    }
    d->heartbeat.start();
    d->startNext();
}

void OnvifCameras::cancel()
{
    // Later, as this may come from within a signal of what it ends.
    QTimer::singleShot(0, this, [this, meant = d->installs] {
        if (meant == d->installs && d->has(true))
            d->cancel();
    });
}

} // namespace qv
