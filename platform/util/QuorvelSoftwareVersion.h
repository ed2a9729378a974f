#pragma once

#include "PlatformExport.h"

#include <QString>

namespace qv {

/// Internal version texts as users see them.
class QV_PLATFORM_EXPORT QuorvelSoftwareVersion
{
public:
    /// @p version with at most @p numbers of its dotted sections (0: all of them), or @p unknownText where it is blank.
    static QString applicationVersion(const QString &version, const QString &unknownText, short numbers);
};

} // namespace qv
