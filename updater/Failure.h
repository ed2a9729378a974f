#pragma once

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace qv {

/// One step could not be done; the message is a whole sentence for the log.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;

    /// The message is @p doing and the reason that errno holds.
    static Failure ofSystem(const std::string &doing) { return Failure(doing + ": " + std::strerror(errno)); }
};

} // namespace qv
