#pragma once

#include "HttpAccess.h"

#include <QMap>
#include <QString>
#include <QVariant>

class QSettings;

namespace qv {

/// A server, the path of its main page, and the way there: direct or through a proxy. A plain value that a settings
/// group can hold.
class QV_PLATFORM_EXPORT HttpHost
{
public:
    /// The values are stored in settings files.
    enum ProxyPreference {
        NoProxy = 0,
        OwnProxy = 1,    ///< through proxy
        GlobalProxy = 2, ///< through the host application's NodeDB::globalProxy(); through proxy where it has none
    };

    /// Goes direct to a server yet to be named.
    HttpHost() = default;

    /// Goes through @p proxy, direct where that is empty.
    HttpHost(const HttpAccess &server, const HttpAccess &proxy, const QString &path);

    HttpAccess server;
    ProxyPreference proxyPreference = NoProxy;
    HttpAccess proxy; ///< unused with NoProxy; an empty one means direct
    QString path;     ///< encoded, with a query where the page has one

    /// With GlobalProxy, puts what NodeDB says now into proxy, for a request to @p url (empty: any). What stood there
    /// comes back when NodeDB has none any more or the preference has changed, unless proxy was given anything else by
    /// then. The system's own proxy configuration is never asked.
    void updateProxy(const QUrl &url);

    /// The encoded text of a URL on this server, or of its path and query alone. An empty @p path stands for the main
    /// page; @p parameters go behind it as a query.
    QString makeURL(const QString &path, const QMap<QString, QVariant> &parameters, bool withServer) const;

    /// Reads the keys "server", "server-path", "proxy-preference" and "proxy" of the current group; what is missing or
    /// unreadable becomes as in a new host.
    void load(const QSettings &settings);

    /// Writes these keys. Passwords are written only @p withPasswords, and what came from NodeDB stays there.
    void store(QSettings &settings, bool withPasswords) const;

private:
    const HttpAccess &storedProxy() const { return proxy.isGlobalProxy ? ownProxy : proxy; }

    HttpAccess ownProxy; // what stood in proxy before a copy from NodeDB took its place
};

} // namespace qv
