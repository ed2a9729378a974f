// Downloads one package the way the update client does and tells what it cost: wall and processor time, memory above
// the idle process, and how long the main thread was kept from a timer of 1 ms. Called by compare-download.
#include "DownloadManager.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <sys/resource.h>
#include <vector>

namespace {

double processorSeconds()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// A value of /proc/self/status: VmRSS is the memory now, VmHWM the most there ever was.
double mebibytes(const QByteArray &key)
{
    QFile file(QStringLiteral("/proc/self/status"));
    file.open(QIODevice::ReadOnly);
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith(key + ':'))
            return line.mid(key.size() + 1).simplified().split(' ').first().toDouble() / 1024;
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: bench_download URL BYTES FILE\n");
        return 2;
    }
    QCoreApplication application(argc, argv);
    qv::PackageInfo package;
    package.url = QUrl(QString::fromLocal8Bit(argv[1]));
    package.fileSize = QByteArray(argv[2]).toLongLong();

    qv::DownloadManager manager(package.url);
    int result = 1;
    QObject::connect(&manager, qOverload<>(&qv::DownloadManager::downloadSuccess), [&result] { result = 0; });
    QObject::connect(&manager, qOverload<>(&qv::DownloadManager::downloadSuccess), &QCoreApplication::quit);
    QObject::connect(&manager, qOverload<int>(&qv::DownloadManager::downloadFailure), &QCoreApplication::quit);

    std::vector<double> gaps;
    QElapsedTimer sinceTick;
    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        gaps.push_back(double(sinceTick.nsecsElapsed()) / 1e6);
        sinceTick.start();
    });
    tick.start(1);

    const double idle = mebibytes("VmRSS");
    const double processorBefore = processorSeconds();
    QElapsedTimer wall;
    wall.start();
    sinceTick.start();
    manager.startDownload(package, QString::fromLocal8Bit(argv[3]));
    QCoreApplication::exec();
    const double seconds = double(wall.nsecsElapsed()) / 1e9;

    std::sort(gaps.begin(), gaps.end());
    std::printf("%.3f %.3f %.1f %.1f %.1f\n", seconds, processorSeconds() - processorBefore, mebibytes("VmHWM") - idle,
                gaps[gaps.size() * 99 / 100], gaps.back());
    return result;
}
