#pragma once

#include <QFile>

/// What the kernel says of this process's memory, in KiB: @p figure is "VmPeak:" or "VmHWM:".
inline qint64 memoryKiB(const QByteArray &figure)
{
    QFile file("/proc/self/status");
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no /proc");
    const QByteArray status = file.readAll();
    return status.mid(status.indexOf(figure) + figure.size()).split('k').first().trimmed().toLongLong();
}
