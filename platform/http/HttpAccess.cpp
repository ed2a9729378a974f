// Addresses in and out of their text forms.
#include "HttpAccess.h"

namespace qv {

namespace {

constexpr QLatin1String plainScheme("http");
constexpr QLatin1String secureScheme("https");

int usualPort(bool isSecure)
{
    return isSecure ? 443 : 80;
}

} // namespace

HttpAccess::HttpAccess(const QString &address, int port, const QString &user, const QString &password)
    : host(address), portNumber(port), userName(user), secret(password)
{
}

void HttpAccess::setAddress(const QString &address, int port, bool isSecure)
{
    *this = HttpAccess(address, port);
    secure = isSecure;
}

void HttpAccess::setUrl(const QUrl &url)
{
    *this = HttpAccess();
    if (!url.isValid() || (url.scheme() != plainScheme && url.scheme() != secureScheme))
        return;
    const bool isSecure = url.scheme() == secureScheme;
    setAddress(url.host(), url.port(usualPort(isSecure)), isSecure);
    userName = url.userName(QUrl::FullyDecoded);
    secret = url.password(QUrl::FullyDecoded);
}

void HttpAccess::parseAddress(const QString &text, int defaultPort)
{
    const QString typed = text.trimmed();
    const QUrl url(typed.contains(QLatin1String("://")) ? typed : plainScheme + QLatin1String("://") + typed);
    setUrl(url);
    if (!isEmpty() && url.port() < 0)
        portNumber = defaultPort;
}

QUrl HttpAccess::url() const
{
    QUrl url;
    if (isEmpty())
        return url;
    url.setScheme(secure ? secureScheme : plainScheme);
    url.setHost(host);
    if (portNumber != usualPort(secure))
        url.setPort(portNumber);
    url.setUserName(userName, QUrl::DecodedMode);
    url.setPassword(secret, QUrl::DecodedMode);
    return url;
}

HttpAccess::operator QString() const
{
    return url().toString(QUrl::RemoveUserInfo | QUrl::FullyEncoded);
}

} // namespace qv
