#pragma once

#include "CameraLink.h"
#include "PackageInfo.h"

#include <QElapsedTimer>

namespace qv {

/// The road of one camera: what it runs, and from there to a newer firmware. One thing at a time, each with one
/// ended(), which never comes from within the call; OnvifCameras sees to both.
class CameraUpdate : public QObject
{
    Q_OBJECT

public:
    /// @p times are the caller's and outlive this object.
    CameraUpdate(const OnvifCamera &camera, const OnvifTimes &times);

    /// Asks for model and version.
    void read();

    /// Asks, and updates where @p package is newer, from @p file.
    void update(const PackageInfo &package, const QString &file);

    /// Ends an update with CameraNews::Skipped, unless the camera has the whole file.
    void cancel();

    /// As the host calls it, else as the camera called itself; empty: not known yet.
    QString model() const { return camera.model.isEmpty() ? itsModel : camera.model; }

    /// As the camera calls it; null: not known yet.
    const QString &version() const { return itsVersion; }

    QString host() const { return camera.address.host(); }

    /// For users: the host, with the port if it is a special one.
    QString name() const;

signals:
    void versionRead();
    void moved(int percent, qv::CameraNews news);
    /// Asked: it has been read.
    void ended(qv::CameraNews news, const QString &detail);

private:
    enum class Stage { Idle, Asking, Sending, Returning };

    void askVersion(const CameraLink::Handler &then);
    void decide(const CameraAnswer &answer);
    void prepare(const CameraAnswer &answer);
    void send();
    void awaitReturn();
    void look(const CameraAnswer &answer);
    void end(CameraNews news, const QString &detail = QString());

    const OnvifCamera camera;
    const OnvifTimes &times;
    CameraLink link;
    QString itsModel;
    QString itsVersion;

    Stage stage = Stage::Idle;
    PackageInfo package;
    QString path;
    QUrl uploadUrl;
    QString versionBefore;
    QTimer next; // until the file may go, then until the next look
    QElapsedTimer away;
    int msAway = 0; // at most
    int refusals = 0;
};

} // namespace qv
