// The update of one camera, in the order of events: what it runs, where the file goes, the file, its return. Called by
// OnvifCameras; leaves behind which model and version the camera has told.
#include "CameraUpdate.h"

#include "Firmware.h"

#include <algorithm>
#include <utility>

namespace qv {

namespace {

constexpr int msMostDelay = 10 * 60 * 1000;
constexpr int msMostDownTime = 30 * 60 * 1000;
constexpr int mostRefusals = 3; // a camera that starts may not know its users yet; many refusals lock them out
constexpr int sentPercent = 80;

} // namespace

CameraUpdate::CameraUpdate(const OnvifCamera &itsCamera, const OnvifTimes &times)
    : camera(itsCamera), times(times), link(camera, times, this)
{
    next.setSingleShot(true);
    connect(&next, &QTimer::timeout, this, [this] {
        if (stage == Stage::Asking) {
            send();
            return;
        }
        link.drop(); // its connections ended with the camera
        askVersion([this](const CameraAnswer &answer) { look(answer); });
    });
    connect(&link, &CameraLink::uploaded, this, [this](qint64 bytes, qint64 total) {
        stage = bytes < total ? Stage::Sending : Stage::Returning;
        emit moved(int(sentPercent * bytes / total), bytes < total ? CameraNews::Sending : CameraNews::Restarting);
    });
}

QString CameraUpdate::name() const
{
    if (!camera.name.isEmpty())
        return camera.name;
    const QString port = camera.address.port() < 0 ? QString() : QStringLiteral(":%1").arg(camera.address.port());
    return camera.address.host() + port;
}

void CameraUpdate::read()
{
    stage = Stage::Asking;
    askVersion([this](const CameraAnswer &answer) { end(answer.news, answer.detail); });
}

void CameraUpdate::update(const PackageInfo &newPackage, const QString &file)
{
    package = newPackage;
    path = file;
    stage = Stage::Asking;
    askVersion([this](const CameraAnswer &answer) { decide(answer); });
    emit moved(0, CameraNews::Asked);
}

void CameraUpdate::askVersion(const CameraLink::Handler &then)
{
    link.ask(QStringLiteral("<tds:GetSystemDateAndTime/>"), false, [this, then](const CameraAnswer &clock) {
        if (clock.news == CameraNews::Unreachable || clock.news == CameraNews::OtherCamera) {
            then(clock);
            return;
        }
        const QDateTime time = cameraTime(clock.soap);
        link.setClockAhead(time.isValid() ? QDateTime::currentDateTimeUtc().secsTo(time) : 0);
        link.ask(QStringLiteral("<tds:GetDeviceInformation/>"), true, [this, then](CameraAnswer answer) {
            const QString told = oneLine(answer.soap.text("tds:GetDeviceInformationResponse/tds:FirmwareVersion"));
            if (answer.news == CameraNews::Asked && told.isEmpty())
                answer.news = CameraNews::Unintelligible;
            if (answer.news == CameraNews::Asked) {
                itsModel = oneLine(answer.soap.text("tds:GetDeviceInformationResponse/tds:Model"));
                if (std::exchange(itsVersion, told) != told || stage == Stage::Asking)
                    emit versionRead();
            }
            then(answer);
        });
    });
}

void CameraUpdate::decide(const CameraAnswer &answer)
{
    if (answer.news != CameraNews::Asked)
        end(answer.news, answer.detail);
    else if (!isForModel(package, model()))
        end(CameraNews::NotMeant);
    else if (firmwareVersion(itsVersion) >= firmwareVersion(package.release))
        end(CameraNews::UpToDate, itsVersion);
    else
        link.ask(QStringLiteral("<tds:StartFirmwareUpgrade/>"), true,
                 [this](const CameraAnswer &begun) { prepare(begun); });
}

void CameraUpdate::prepare(const CameraAnswer &answer)
{
    const auto text = [&answer](const char *name) {
        return answer.soap.texts.value(QStringLiteral("tds:StartFirmwareUpgradeResponse/tds:") + QLatin1String(name));
    };
    if (answer.news != CameraNews::Asked) {
        end(answer.news, answer.detail);
        return;
    }
    uploadUrl = uploadAddress(text("UploadUri"), link.address());
    if (text("UploadUri").isEmpty() || uploadUrl.isEmpty()) {
        end(CameraNews::NoAddress);
        return;
    }
    msAway = std::max(times.msBack, 2 * msDuration(text("ExpectedDownTime"), msMostDownTime));
    versionBefore = itsVersion;
    next.start(std::max(0, msDuration(text("UploadDelay"), msMostDelay)));
}

void CameraUpdate::send()
{
    stage = Stage::Sending;
    link.setMsForAnswer(msAway);
    link.upload(uploadUrl, path, [this](const CameraAnswer &answer) {
        // A camera may restart before it answers.
        const bool isLost = stage == Stage::Returning && answer.news == CameraNews::NotSent;
        if (answer.news == CameraNews::Asked || isLost)
            awaitReturn();
        else
            end(answer.news, answer.detail);
    });
    emit moved(0, CameraNews::Sending);
}

void CameraUpdate::awaitReturn()
{
    stage = Stage::Returning;
    refusals = 0;
    away.start();
    emit moved(sentPercent, CameraNews::Restarting);
    next.start(times.msPoll);
}

void CameraUpdate::look(const CameraAnswer &answer)
{
    const bool hasAnswered = answer.news == CameraNews::Asked;
    const bool isRefused = answer.news == CameraNews::NotAuthorized;
    refusals += int(isRefused);
    // The version from before says that it is not away yet, even where it might pass for the new one.
    if (hasAnswered && itsVersion != versionBefore
        && isFirmware(firmwareVersion(itsVersion), firmwareVersion(package.release)))
        end(CameraNews::Installed, itsVersion);
    else if (away.elapsed() < msAway && refusals < mostRefusals)
        next.start(times.msPoll);
    else if (hasAnswered)
        end(CameraNews::StillOld, itsVersion);
    else
        end(isRefused || answer.news == CameraNews::OtherCamera ? answer.news : CameraNews::NotBack);
}

void CameraUpdate::cancel()
{
    if (stage == Stage::Asking || stage == Stage::Sending)
        end(CameraNews::Skipped);
}

void CameraUpdate::end(CameraNews news, const QString &detail)
{
    stage = Stage::Idle;
    next.stop();
    link.drop();
    emit ended(news, detail);
}

} // namespace qv
