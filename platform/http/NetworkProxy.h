#pragma once

#include "PlatformExport.h"

#include <QString>

namespace qv {

/// The host's proxy setting: a plain value. Default-constructed it says "no proxy".
/// @code
/// NodeDB::getDB().setGlobalProxy(NetworkProxy("proxy.example", 3128));
/// @endcode
class QV_PLATFORM_EXPORT NetworkProxy
{
public:
    NetworkProxy() = default;
    NetworkProxy(const QString &address, int port, const QString &user = QString(), const QString &password = QString())
        : enabled(true), address(address), port(port), user(user), password(password)
    {
    }

    bool useProxy() const { return enabled; }
    QString proxyAddress() const { return address; } ///< host name or IP address
    int proxyPort() const { return port; }
    QString proxyUser() const { return user; }
    QString proxyPassword() const { return password; }

private:
    bool enabled = false;
    QString address;
    int port = 0;
    QString user;
    QString password;
};

} // namespace qv
