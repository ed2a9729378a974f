// The diagnostic log: a threshold, a stream for each level, one mutex. Called by every library of the maker.
#include "LogQt.h"
#include "MutexLocker.h"

#include <array>
#include <iostream>

namespace qv {

namespace {

struct Logger
{
    std::mutex mutex;
    Log::ELevel threshold = Log::Warning;
    std::array<std::ostream *, Log::Error> streams { &std::cerr, &std::cerr, &std::cerr };
};

Logger &logger()
{
    static Logger instance;
    return instance;
}

QByteArray singleLine(QString text)
{
    for (QChar &c : text) {
        if (c.category() == QChar::Other_Control)
            c = QLatin1Char('?');
    }
    return text.toUtf8() + '\n';
}

} // namespace

Log::ELevel LogQt::level()
{
    const MutexLocker lock(logger().mutex);
    return logger().threshold;
}

void LogQt::setLevel(Log::ELevel threshold)
{
    const MutexLocker lock(logger().mutex);
    logger().threshold = threshold;
}

void LogQt::setStream(Log::ELevel level, std::ostream *stream)
{
    const MutexLocker lock(logger().mutex);
    logger().streams.at(level - Log::Progress) = stream;
}

void LogQt::write(Log::ELevel level, const QString &line)
{
    const MutexLocker lock(logger().mutex);
    std::ostream *stream = logger().streams.at(level - Log::Progress);
    if (!stream || logger().threshold > level)
        return;
    const QByteArray bytes = singleLine(line);
    stream->write(bytes.constData(), bytes.size()).flush();
}

} // namespace qv
