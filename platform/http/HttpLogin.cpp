// What a server or a proxy is told that asks who we are. Called for each request of a check or a client; leaves behind
// on a reply whose credentials it carries, and, where it aborted that, which status it was for.
//
// Left to itself Qt answers "NTLM" without being asked for credentials, and, given some, does so without end.
#include "HttpLogin.h"

#include <QAuthenticator>
#include <QNetworkAccessManager>
#include <QNetworkReply>

#include <utility>

namespace qv {

namespace {

const char *const refused = "qvRefusedChallenge";
const char *const carried = "qvLogin"; // the URL asked for, with credentials

/// Qt calls with its thread standing still: what is aborted here sends nothing more. Of its schemes Basic and Digest
/// alone have a realm. @p tried is the URL for which this was answered last.
void answer(QAuthenticator *challenge, const QString &user, const QString &password, QNetworkReply *reply, int status,
            QUrl &tried)
{
    if (!challenge->options().contains(QStringLiteral("realm"))) {
        reply->setProperty(refused, status);
        reply->abort();
    } else if (!user.isEmpty() && std::exchange(tried, reply->url()) != reply->url()) {
        challenge->setUser(user);
        challenge->setPassword(password);
    }
}

bool isSameServer(const QUrl &a, const QUrl &b)
{
    constexpr auto besides = QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment;
    return a.matches(b, besides);
}

/// Qt would use what a proxy carries before it asks.
QNetworkProxy withoutLogin(QNetworkProxy proxy)
{
    proxy.setUser(QString());
    proxy.setPassword(QString());
    return proxy;
}

} // namespace

QNetworkReply *getWithLogin(QNetworkAccessManager &network, const QNetworkRequest &request, const QNetworkProxy &proxy)
{
    const QUrl login = request.url();
    QNetworkRequest open(request);
    if (!login.userInfo().isEmpty())
        open.setUrl(login.adjusted(QUrl::RemoveUserInfo));
    if (login.userName().isEmpty() && proxy.user().isEmpty())
        open.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual); // answers nothing
    network.setProxy(withoutLogin(proxy));
    QNetworkReply *reply = network.get(open);
    reply->setProperty(carried, login);
    QObject::connect(&network, &QNetworkAccessManager::authenticationRequired, reply,
                     [reply, login, tried = QUrl()](const QNetworkReply *asked, QAuthenticator *challenge) mutable {
                         if (asked != reply)
                             return;
                         const bool isMeant = isSameServer(reply->url(), login);
                         answer(challenge, isMeant ? login.userName(QUrl::FullyDecoded) : QString(),
                                login.password(QUrl::FullyDecoded), reply, 401, tried);
                     });
    QObject::connect(&network, &QNetworkAccessManager::proxyAuthenticationRequired, reply,
                     [reply, proxy, tried = QUrl()](const QNetworkProxy &, QAuthenticator *challenge) mutable {
                         answer(challenge, proxy.user(), proxy.password(), reply, 407, tried);
                     });
    return reply;
}

QUrl urlWithLogin(const QNetworkReply &reply)
{
    QUrl url = reply.url();
    const QUrl login = reply.property(carried).toUrl();
    if (isSameServer(url, login))
        url.setUserInfo(login.userInfo(QUrl::FullyEncoded));
    return url;
}

int refusedChallenge(const QNetworkReply &reply)
{
    return reply.property(refused).toInt();
}

} // namespace qv
