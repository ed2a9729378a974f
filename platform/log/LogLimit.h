#pragma once

#include "LogQt.h"

namespace qv {

/// Counts log lines of one kind where a stranger's input says how many there are: 100 are written, and when the object
/// goes, one that tells how many more there were.
/// @code
/// LogLimit limit(Log::Error, QStringLiteral("Report::print() -> %1 more pages without a number"));
/// for (const Page &page : pages) {
///     if (page.number.isEmpty() && limit.hasRoom())
///         LogQt::write(Log::Error, QStringLiteral("Report::print() -> no number on ") + page.title);
/// }
/// @endcode
class LogLimit
{
public:
    LogLimit(Log::ELevel level, const QString &more) : level(level), more(more) { }
    ~LogLimit()
    {
        if (lines > mostLines)
            LogQt::write(level, more.arg(lines - mostLines));
    }
    LogLimit(const LogLimit &) = delete;
    LogLimit &operator=(const LogLimit &) = delete;

    /// Asked once for each line, and true where it is to be written.
    bool hasRoom() { return ++lines <= mostLines; }

private:
    static constexpr int mostLines = 100;

    const Log::ELevel level;
    const QString more;
    int lines = 0;
};

} // namespace qv
