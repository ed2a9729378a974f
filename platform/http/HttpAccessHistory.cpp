// A short list of accesses, the most recent first.
#include "HttpAccessHistory.h"

namespace qv {

HttpAccessHistory HttpAccessHistory::proxies;

void HttpAccessHistory::add(const HttpAccess &access)
{
    entries.removeAll(access);
    entries.prepend(access);
    entries.first().isGlobalProxy = false; // who takes it from here has chosen it
    if (entries.size() > maxEntries)
        entries.removeLast();
}

} // namespace qv
