#pragma once

#include "LogQt.h"

#include <QStringList>

#include <iostream>
#include <sstream>

/// Takes the log's lines of all levels for as long as it lives.
class LogCapture
{
public:
    LogCapture() { setUp(&stream, qv::Log::Progress); }
    ~LogCapture() { setUp(&std::cerr, before); }

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
    static void setUp(std::ostream *stream, qv::Log::ELevel level)
    {
        for (const qv::Log::ELevel one : { qv::Log::Progress, qv::Log::Warning, qv::Log::Error })
            qv::LogQt::setStream(one, stream);
        qv::LogQt::setLevel(level);
    }

    const qv::Log::ELevel before = qv::LogQt::level();
    std::ostringstream stream;
};
