#pragma once

#include <QFile>

/// The most memory that the process has had, from now on when it is to @p begin.
inline qint64 peakKiB(bool begin)
{
    QFile reset("/proc/self/clear_refs"), file("/proc/self/status");
    if ((begin && (!reset.open(QIODevice::WriteOnly) || reset.write("5") < 0 || !reset.flush()))
        || !file.open(QIODevice::ReadOnly))
        qFatal("no /proc");
    const QByteArray status = file.readAll();
    return status.mid(status.indexOf("VmHWM:") + 6).split('k').first().trimmed().toLongLong();
}
