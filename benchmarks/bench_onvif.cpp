// Updates eight cameras at once, which live in a process of their own, and tells what it cost this one: wall and
// processor time, memory above the idle process, and how long the main thread was kept from a timer of 1 ms.
// bench_onvif [MIB]
#include "CameraServer.h"
#include "MainThreadCost.h"
#include "OnvifCameras.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr int cameraCount = 8;

/// Each camera has an address of its own; its port is written into @p ports.
int playCameras(int argc, char **argv, int ports)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    QCoreApplication application(argc, argv);
    std::vector<std::unique_ptr<CameraServer>> cameras;
    for (quint32 i = 1; i <= cameraCount; ++i) {
        cameras.push_back(std::make_unique<CameraServer>(QHostAddress(0x7f000000 + i)));
        const quint16 port = cameras.back()->serverPort();
        if (write(ports, &port, sizeof port) != sizeof port)
            return 1;
    }
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    int pipes[2];
    if (pipe(pipes) != 0)
        return 1;
    if (fork() == 0)
        return playCameras(argc, argv, pipes[1]);

    QCoreApplication application(argc, argv);
    QList<qv::OnvifCamera> list;
    for (quint32 i = 1; i <= cameraCount; ++i) {
        quint16 port = 0;
        if (read(pipes[0], &port, sizeof port) != sizeof port)
            return 1;
        list.append({ QUrl(QStringLiteral("http://127.0.0.%1:%2").arg(i).arg(port)), "admin", "secret", {}, {}, {} });
    }
    QTemporaryDir folder;
    QFile file(folder.filePath("firmware.rpk"));
    const qint64 bytes = (argc > 1 ? QByteArray(argv[1]).toLongLong() : 512) << 20;
    if (!file.open(QIODevice::WriteOnly) || file.write("Firmware 4.3.0\n") < 0 || !file.resize(bytes))
        return 1;
    file.close();
    qv::PackageInfo package;
    package.suffix = "rpk";
    package.release = "4.3.0";
    package.platforms = { "QD-2204" };

    qv::OnvifCameras cameras(list);
    cameras.setMaxParallel(cameraCount);
    bool isInstalled = false;
    QObject::connect(&cameras, &qv::OnvifCameras::finished, &application, [&](bool succeeded, const QString &message) {
        isInstalled = succeeded;
        std::fprintf(stderr, "%s\n", qPrintable(message));
        QCoreApplication::quit();
    });
    MainThreadCost cost;
    cameras.install(package, file.fileName());
    QCoreApplication::exec();
    std::printf("%.3f %.3f %.1f %.1f %.1f\n", cost.wallSeconds(), cost.processorSeconds(), cost.mebibytesAboveIdle(),
                cost.gap(0.99), cost.gap(1));
    return isInstalled ? 0 : 1;
}
