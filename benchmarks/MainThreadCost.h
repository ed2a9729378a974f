#pragma once

#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <sys/resource.h>
#include <vector>

/// What a piece of work costs this process: wall and processor time, memory above the idle process, and how long the
/// main thread was kept from a timer of 1 ms. Begins when it is made.
class MainThreadCost
{
public:
    MainThreadCost() : idle(mebibytes("VmRSS")), processorBefore(processorNow())
    {
        tick.setTimerType(Qt::PreciseTimer);
        QObject::connect(&tick, &QTimer::timeout, [this] {
            gaps.push_back(double(sinceTick.nsecsElapsed()) / 1e6);
            sinceTick.start();
        });
        tick.start(1);
        wall.start();
        sinceTick.start();
    }

    double wallSeconds() const { return double(wall.nsecsElapsed()) / 1e9; }
    double processorSeconds() const { return processorNow() - processorBefore; }
    double mebibytesAboveIdle() const { return mebibytes("VmHWM") - idle; }

    /// In milliseconds; 1 for the longest, 0.99 for the one that 99 of 100 do not exceed.
    double gap(double quantile)
    {
        if (gaps.empty())
            return wallSeconds() * 1e3;
        std::sort(gaps.begin(), gaps.end());
        return gaps[std::min(gaps.size() - 1, size_t(double(gaps.size()) * quantile))];
    }

private:
    static double processorNow()
    {
        rusage usage;
        getrusage(RUSAGE_SELF, &usage);
        const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    }

    /// A value of /proc/self/status: VmRSS is the memory now, VmHWM the most there ever was.
    static double mebibytes(const QByteArray &key)
    {
        QFile file(QStringLiteral("/proc/self/status"));
        file.open(QIODevice::ReadOnly);
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (line.startsWith(key + ':'))
                return line.mid(key.size() + 1).simplified().split(' ').first().toDouble() / 1024;
        }
        return 0;
    }

    double idle, processorBefore;
    QElapsedTimer wall, sinceTick;
    QTimer tick;
    std::vector<double> gaps;
};
