#pragma once

#include "OnvifExport.h"
#include "PackageInstaller.h"
#include "SoftwareUpdateTypes.h"

#include <QList>
#include <QUrl>

#include <memory>

namespace qv {

class OnvifCamerasPrivate;

/// One camera of the host, by its ONVIF device service. A plain value.
struct OnvifCamera
{
    /// "http://192.0.2.7" or "https://...", with a port if it is another; the usual path of the service is added where
    /// there is none. Credentials in it are dropped.
    QUrl address;
    QString user; ///< an administrator, who alone may send firmware
    QString password;

    /// As catalogues call its model, among their platforms; empty: what the camera calls itself.
    QString model;

    /// The SHA-256 of its certificate, 64 hexadecimal digits in either case, also with ":" between, as openssl and
    /// browsers show it. Then this certificate counts and no other, whoever signed it, and over http nothing is sent at
    /// all. Empty: https is verified as everywhere.
    QByteArray certificateSha256;

    QString name; ///< as users know it, "Main entrance"; empty: they are told host and port
};

/// How long cameras are waited for, in milliseconds.
struct OnvifTimes
{
    int msRequest = 15000; ///< from a question to the end of its answer
    int msStalled = 60000; ///< between two pieces of the firmware that the camera takes
    int msPoll = 2000;     ///< from one look whether the camera is back to the next
    int msBack = 60000;    ///< the least that it gets to come back; else twice what it announces, up to an hour
};

/// Brings firmware ("rpk") onto the host's cameras, as an installer of UpdatePolicy::installers, and asks them what
/// they run. Lives in the GUI thread, which it never blocks; the memory that it takes does not depend on the firmware's
/// size.
/// @code
/// qv::OnvifCameras cameras({ { QUrl("http://192.0.2.7"), "admin", "secret", "QD-2204", {}, "Main entrance" } });
/// qv::UpdatePolicy policy;
/// policy.installers.insert("rpk", &cameras);
/// updates.setPolicy(policy);
/// QObject::connect(&cameras, &qv::OnvifCameras::versionsRead, &updates,
///                  &qv::SoftwareUpdateClient::setCurrentCameraVersions);
/// cameras.readVersions();
/// @endcode
///
/// install() updates each camera whose model begins with a platform of the package, or the reverse, and that runs an
/// older version; other cameras are left alone. A camera is updated when it has restarted and says that it runs the
/// package's version ("V5.7.3 build 220315" is "5.7.3"). The message of finished() has a line for each camera that was
/// meant; the result is false where one of them failed, which keeps no other from its update.
///
/// cancel() leaves cameras alone that have not begun, and breaks off the sending of a file. A camera that has the whole
/// of it is waited for to its end, as nothing can stop it: finished() may take minutes then, and progress() goes on.
///
/// A camera is asked for user and password by HTTP Digest or a username token, each at most once for each question: one
/// that locks accounts counts two at most. Basic is not answered. No proxy is used. The file goes to the host of
/// OnvifCamera::address, whatever other host the camera names; over https where that is.
class ONVIF_EXPORT OnvifCameras : public PackageInstaller
{
    Q_OBJECT

public:
    explicit OnvifCameras(const QList<OnvifCamera> &cameras = QList<OnvifCamera>(), QObject *parent = nullptr);
    ~OnvifCameras() override;

    /// Other cameras from now on. False, and nothing changes, while one is being asked or updated.
    bool setCameras(const QList<OnvifCamera> &cameras);

    /// How many cameras are asked or updated at once, at least one and 2 unless changed; never two of one host name.
    void setMaxParallel(int cameras);

    /// From the next question on.
    void setTimes(const OnvifTimes &times);

    /// Asks all cameras; versionRead() or cameraFailed() for each, then versionsRead(). Once more does nothing until
    /// then.
    void readVersions();

    void install(const PackageInfo &package, const QString &file) override;
    void cancel() override;

signals:
    /// What the camera, by its place in the list, calls its model and its firmware: from readVersions(), when install()
    /// has asked, and when an update has changed it.
    void versionRead(int camera, const QString &model, const QString &version);

    /// readVersions() has got no answer; @p why is a text for users.
    void cameraFailed(int camera, const QString &why);

    /// After readVersions(), of all cameras that have answered, now or before, for
    /// SoftwareUpdateClient::setCurrentCameraVersions(): each model once, with the oldest version that one of its
    /// cameras runs, so that the client offers what any of them needs. Once more before finished(), if it has come
    /// before, as versions change then. Not in it are models that the client's settings cannot keep, with "," or ":",
    /// as the log says: name them in OnvifCamera::model.
    void versionsRead(const SoftUpCurrentCameraVersions &versions);

private:
    const std::unique_ptr<OnvifCamerasPrivate> d;
};

} // namespace qv
