#pragma once

#include "ExceptionQt.h"

namespace qv {

/// A file, folder or archive could not be read or written; the message names it.
class QV_PLATFORM_EXPORT IOException : public ExceptionQt
{
public:
    using ExceptionQt::ExceptionQt;
    IOException(const IOException &) = default;
    IOException &operator=(const IOException &) = default;
    ~IOException() override;
};

} // namespace qv
