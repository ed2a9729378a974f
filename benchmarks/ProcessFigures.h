#pragma once

#include <QByteArray>
#include <QFile>

/// A number of /proc/self/status: "VmRSS" is the memory now and "VmHWM" the most there ever was, both in KiB.
inline double processFigure(const QByteArray &key)
{
    QFile file(QStringLiteral("/proc/self/status"));
    file.open(QIODevice::ReadOnly);
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith(key + ':'))
            return line.mid(key.size() + 1).simplified().split(' ').first().toDouble();
    }
    return 0;
}
