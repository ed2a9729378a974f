// The cameras behind the demo's list. They take any firmware, and a second and a half to restart.
#include "DemoCameras.h"

DemoCameras::DemoCameras()
{
    static const struct
    {
        const char *place, *model, *version, *nextVersion; // "": as the file says
    } cameras[] = {
        { "Main entrance", "QD-2204", "4.1.0", "" },
        { "Reception", "QF-1812", "4.1.0", "" },
        { "Car park, north", "QB-3108", "10.2.0", "10.4.1.17" },
        { "Car park, south", "QB-3108", "10.3.2", "10.4.1.17" },
        { "Loading bay", "QP-5216", "10.2.0", "10.4.1.17" },
        { "Server room", "QT-4402", "2.9", "" },
        { "Back door", "QI-7001", "1.6.3", "" },
        { "Warehouse", "QM-6060", "3.0.1", "" },
    };
    quint32 address = QHostAddress(QHostAddress::LocalHost).toIPv4Address();
    for (const auto &camera : cameras) {
        auto server = std::make_unique<CameraServer>(QHostAddress(++address)); // two of one host would take turns
        server->model = camera.model;
        server->version = camera.version;
        server->nextVersion = camera.nextVersion;
        server->msAway = 1500;
        places << camera.place;
        logins.append({ server->url(), server->user, server->password, {}, {}, camera.place });
        servers.push_back(std::move(server));
    }
}

bool DemoCameras::setFault(const QString &fault)
{
    static const QHash<QString, CameraServer::Fault> faults = { { "offline", CameraServer::None },
                                                                { "refuses", CameraServer::RefusesFile },
                                                                { "old", CameraServer::StaysOld },
                                                                { "lost", CameraServer::NeverBack } };
    CameraServer &reception = *servers.at(1);
    reception.fault = faults.value(fault, CameraServer::None);
    reception.setOnline(fault != "offline");
    return faults.contains(fault);
}
