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

    /// With GlobalProxy, brings proxy in line with what NodeDB says now, for a request to @p url (empty: any). The
    /// system's own proxy configuration is never asked.
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
    bool isProxyGlobal = false; // proxy is a copy from NodeDB
};

} // namespace qv
