#pragma once

#include "NetworkProxy.h"

namespace qv {

/// The process-wide configuration of the host, as far as the libraries of the maker read it. GUI thread only.
class QV_PLATFORM_EXPORT NodeDB
{
public:
    static NodeDB &getDB();

    /// The proxy for everything that the libraries fetch; none until the host sets one.
    NetworkProxy globalProxy() const { return proxy; }
    void setGlobalProxy(const NetworkProxy &globalProxy) { proxy = globalProxy; }

private:
    NodeDB() = default;

    NetworkProxy proxy;
};

} // namespace qv
