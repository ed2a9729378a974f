#pragma once

#include "CameraServer.h"
#include "OnvifCameras.h"

#include <memory>
#include <vector>

/// The demo's cameras: servers on loopback, each at an address of its own. What a host knows of real ones it knows of
/// these: where they hang, and how they are reached.
class DemoCameras
{
public:
    DemoCameras();

    QStringList places;
    QList<qv::OnvifCamera> logins; ///< in the same order

    /// From now on the camera in the reception is "offline", "refuses" firmware, stays "old" after an update, or gets
    /// "lost" in it. Anything else ends that, and is false.
    bool setFault(const QString &fault);

private:
    std::vector<std::unique_ptr<CameraServer>> servers;
};
