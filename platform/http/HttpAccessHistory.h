#pragma once

#include "HttpAccess.h"

#include <QList>

namespace qv {

/// Accesses that were used, for a host that offers them again, as in the list of an address field. Kept in memory only.
/// GUI thread only.
class QV_PLATFORM_EXPORT HttpAccessHistory
{
public:
    static constexpr int maxEntries = 20; ///< the oldest make room

    /// The proxies that this process used.
    static HttpAccessHistory proxies;

    /// Puts @p access in front; an equal one further back goes.
    void add(const HttpAccess &access);

    /// The most recent first.
    QList<HttpAccess> accesses() const { return entries; }

private:
    QList<HttpAccess> entries;
};

} // namespace qv
