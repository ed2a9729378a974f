#pragma once

#include "ProcessFigures.h"

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <sys/resource.h>
#include <vector>

/// What a piece of work costs this process: wall and processor time, memory above the idle process, and how long the
/// main thread was kept from a timer of 1 ms. Begins when it is made.
class MainThreadCost
{
public:
    MainThreadCost() : idle(processFigure("VmRSS")), processorBefore(processorNow())
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
    double mebibytesAboveIdle() const { return (processFigure("VmHWM") - idle) / 1024; }

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

    double idle, processorBefore; // KiB and seconds
    QElapsedTimer wall, sinceTick;
    QTimer tick;
    std::vector<double> gaps;
};
