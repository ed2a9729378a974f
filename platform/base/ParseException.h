#pragma once

#include "ExceptionQt.h"

namespace qv {

/// A text is not in the format it should be in.
class QV_PLATFORM_EXPORT ParseException : public ExceptionQt
{
public:
    using ExceptionQt::ExceptionQt;
    ParseException(const ParseException &) = default;
    ParseException &operator=(const ParseException &) = default;
    ~ParseException() override;
};

} // namespace qv
