#pragma once

#include "PlatformExport.h"

#include <QString>
#include <QUrl>

namespace qv {

/// Where to knock: a server or a proxy by address and port, plain or secure, with the credentials it may ask for.
/// A plain value; empty until it is given an address. What it cannot understand leaves it empty.
/// @code
/// HttpAccess proxy;
/// proxy.parseAddress("user:secret@proxy.example", 3128);
/// @endcode
class QV_PLATFORM_EXPORT HttpAccess
{
public:
    HttpAccess() = default;

    /// A port outside 1 to 65535 cannot be reached.
    HttpAccess(const QString &address, int port, const QString &user = QString(), const QString &password = QString());

    bool isEmpty() const { return host.isEmpty(); }
    QString address() const { return host; } ///< host name or IP address, without brackets
    int port() const { return portNumber; }
    bool isSecure() const { return secure; } ///< https
    QString user() const { return userName; }
    QString password() const { return secret; }

    /// Forgets the credentials: they were meant for somebody else.
    void setAddress(const QString &address, int port, bool isSecure);

    /// Takes scheme (http or https), credentials, address and port of @p url; its path does not matter.
    void setUrl(const QUrl &url);

    /// Reads "[http://][user[:password]@]address[:port]", as people type it.
    void parseAddress(const QString &text, int defaultPort);

    /// Scheme, credentials, address, and the port where it is not the usual one; the path is empty.
    QUrl url() const;

    /// url() without the credentials, as in "http://updates.example:8080"; empty for an empty access.
    operator QString() const;

    friend bool operator==(const HttpAccess &a, const HttpAccess &b) { return a.url() == b.url(); }
    friend bool operator!=(const HttpAccess &a, const HttpAccess &b) { return !(a == b); }

private:
    QString host;
    int portNumber = 0;
    bool secure = false;
    QString userName;
    QString secret;

    friend class HttpHost;
    friend class HttpAccessHistory;
    bool isGlobalProxy = false; // a copy that a host took from NodeDB, until something else is put in its place
};

} // namespace qv
