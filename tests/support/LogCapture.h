#pragma once

#include "LogQt.h"

#include <QString>
#include <QStringList>

#include <iostream>
#include <sstream>

/// Takes the log's lines of all levels for as long as it lives.
class LogCapture
{
public:
    LogCapture()
    {
        for (const qv::Log::ELevel level : { qv::Log::Progress, qv::Log::Warning, qv::Log::Error })
            qv::LogQt::setStream(level, &stream);
        qv::LogQt::setLevel(qv::Log::Progress);
    }
    ~LogCapture()
    {
        for (const qv::Log::ELevel level : { qv::Log::Progress, qv::Log::Warning, qv::Log::Error })
            qv::LogQt::setStream(level, &std::cerr);
        qv::LogQt::setLevel(before);
    }

    QStringList lines() const
    {
        return QString::fromStdString(stream.str()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    /// The lines since the last call.
    QStringList take()
    {
        const QStringList taken = lines();
        stream.str(std::string());
        return taken;
    }

private:
    const qv::Log::ELevel before = qv::LogQt::level();
    std::ostringstream stream;
};
