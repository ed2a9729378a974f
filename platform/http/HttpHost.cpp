// The route to a server: its URLs, its proxy, its keys in the settings.
#include "HttpHost.h"

#include "NodeDB.h"

#include <QSettings>

namespace qv {

namespace {

constexpr QLatin1String serverKey("server");
constexpr QLatin1String pathKey("server-path");
constexpr QLatin1String preferenceKey("proxy-preference");
constexpr QLatin1String proxyKey("proxy");

HttpHost::ProxyPreference toPreference(const QVariant &value)
{
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    const bool isKnown = isNumber && number >= HttpHost::NoProxy && number <= HttpHost::GlobalProxy;
    return isKnown ? static_cast<HttpHost::ProxyPreference>(number) : HttpHost::NoProxy;
}

HttpAccess toAccess(const QVariant &value)
{
    HttpAccess access;
    access.setUrl(QUrl(value.toString()));
    return access;
}

QString toText(const HttpAccess &access, bool withPassword)
{
    return access.url().toString(QUrl::FullyEncoded | (withPassword ? QUrl::None : QUrl::RemovePassword));
}

} // namespace

HttpHost::HttpHost(const HttpAccess &server, const HttpAccess &proxy, const QString &path)
    : server(server), proxyPreference(proxy.isEmpty() ? NoProxy : OwnProxy), proxy(proxy), path(path)
{
}

void HttpHost::updateProxy(const QUrl &)
{
    ownProxy = storedProxy();
    proxy = ownProxy;
    const NetworkProxy global = NodeDB::getDB().globalProxy();
    if (proxyPreference != GlobalProxy || !global.useProxy())
        return;
    proxy = HttpAccess(global.proxyAddress(), global.proxyPort(), global.proxyUser(), global.proxyPassword());
    proxy.isGlobalProxy = true;
}

QString HttpHost::makeURL(const QString &path, const QMap<QString, QVariant> &parameters, bool withServer) const
{
    QString text = path.isEmpty() ? this->path : path;
    if (!text.startsWith(QLatin1Char('/')))
        text.prepend(QLatin1Char('/'));
    QChar separator = QLatin1Char(text.contains(QLatin1Char('?')) ? '&' : '?');
    for (auto entry = parameters.begin(); entry != parameters.end(); ++entry) {
        text += separator + QString::fromLatin1(QUrl::toPercentEncoding(entry.key())) + QLatin1Char('=')
            + QString::fromLatin1(QUrl::toPercentEncoding(entry.value().toString()));
        separator = QLatin1Char('&');
    }
    return withServer ? QString(server) + text : text;
}

void HttpHost::load(const QSettings &settings)
{
    *this = HttpHost();
    server = toAccess(settings.value(serverKey));
    path = settings.value(pathKey).toString();
    proxyPreference = toPreference(settings.value(preferenceKey));
    proxy = toAccess(settings.value(proxyKey));
}

void HttpHost::store(QSettings &settings, bool withPasswords) const
{
    settings.setValue(serverKey, toText(server, withPasswords));
    settings.setValue(pathKey, path);
    settings.setValue(preferenceKey, int(proxyPreference));
    settings.setValue(proxyKey, toText(storedProxy(), withPasswords));
}

} // namespace qv
