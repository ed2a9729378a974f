#pragma once

#include "PlatformExport.h"

#include <QNetworkProxy>
#include <QNetworkRequest>

class QNetworkAccessManager;
class QNetworkReply;

namespace qv {

/// QNetworkAccessManager::get() over @p proxy, of type HttpProxy or NoProxy, for a manager that gets over no other.
/// Challenges are answered with the credentials of the request's URL, at its own scheme, host and port alone, and with
/// those of @p proxy there. Basic and Digest only: where Qt would answer with another scheme, the request is aborted
/// before any credentials leave. One without credentials answers nothing at all; Qt 5 opens NTLM, with a message that
/// names nobody, where there are some. Redirects must not bring credentials along.
QV_PLATFORM_EXPORT QNetworkReply *getWithLogin(QNetworkAccessManager &network, const QNetworkRequest &request,
                                               const QNetworkProxy &proxy);

/// The URL of a reply of getWithLogin(), with the credentials of its request where they are meant for that server.
QV_PLATFORM_EXPORT QUrl urlWithLogin(const QNetworkReply &reply);

/// 401 or 407 where a challenge had the request aborted, else 0.
QV_PLATFORM_EXPORT int refusedChallenge(const QNetworkReply &reply);

} // namespace qv
