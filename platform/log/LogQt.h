#pragma once

#include "PlatformExport.h"

#include <QString>

#include <iosfwd>

namespace qv {

/// The levels of the log.
struct Log
{
    /// How grave a line is.
    enum ELevel {
        Progress = 1, ///< what is being done
        Warning = 2,  ///< input that could not be understood
        Error = 3,    ///< what went wrong
    };
};

/// The host's diagnostic log. Every line names its class and method, as in
/// "Report::print() -> no printer".
///
/// A line is written when the threshold is at most its level and its level has a stream. Unless the host says
/// otherwise, the threshold is Log::Warning and all levels go to standard error:
/// @code
/// std::ofstream file("updates.log");
/// for (auto level : {Log::Progress, Log::Warning, Log::Error})
///     LogQt::setStream(level, &file);
/// LogQt::setLevel(Log::Progress);
/// @endcode
///
/// All members may be called from any thread; one mutex is held while a line is written, so that lines never mix.
class QV_PLATFORM_EXPORT LogQt
{
public:
    static Log::ELevel level();
    static void setLevel(Log::ELevel threshold);

    /// Sends the lines of @p level to @p stream, which the caller owns and keeps alive until another one is set;
    /// null drops them.
    static void setStream(Log::ELevel level, std::ostream *stream);

    /// Writes @p line as UTF-8, a line end behind it, and flushes. Control characters in @p line become "?", so that a
    /// text from the network cannot forge a line of its own.
    static void write(Log::ELevel level, const QString &line);
};

} // namespace qv
