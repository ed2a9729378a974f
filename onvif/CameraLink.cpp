// The way to one camera and back. Called by CameraUpdate; leaves behind which login the camera took.
#include "CameraLink.h"

#include "HttpThreads.h"

#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QRandomGenerator>
#include <QSslCertificate>
#include <QSslConfiguration>

#include <memory>
#include <utility>

namespace qv {

namespace {

QByteArray randomBytes(int words)
{
    QByteArray bytes(words * int(sizeof(quint32)), Qt::Uninitialized);
    QRandomGenerator::system()->fillRange(reinterpret_cast<quint32 *>(bytes.data()), words);
    return bytes;
}

QUrl serviceOf(QUrl address)
{
    address.setUserInfo(QString());
    if (address.path().isEmpty() || address.path() == QStringLiteral("/"))
        address.setPath(QStringLiteral("/onvif/device_service"));
    return address;
}

QNetworkRequest plainRequest(const QUrl &url, const char *contentType)
{
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QString::fromLatin1(contentType));
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual); // Qt answers nothing
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setRawHeader("Accept-Encoding", "identity"); // what unfolds on arrival could unfold without end
    return request;
}

/// Whether there was no answer, or half a one.
bool isBroken(const QNetworkReply &reply)
{
    return reply.error() != QNetworkReply::NoError && reply.error() < QNetworkReply::ProxyConnectionRefusedError;
}

} // namespace

CameraLink::CameraLink(const OnvifCamera &camera, const OnvifTimes &times, QObject *parent)
    : QObject(parent), camera(camera), times(times), service(serviceOf(camera.address))
{
    guard.setSingleShot(true);
    connect(&guard, &QTimer::timeout, this, [this] {
        if (!current) {
            finish({ failure, failureDetail, SoapAnswer() });
            return;
        }
        failure = path.isNull() ? CameraNews::Unreachable : CameraNews::NotSent;
        failureDetail = noAnswerText();
        current->abort(); // evaluates
    });
}

CameraLink::~CameraLink()
{
    drop();
}

void CameraLink::ask(const QString &question, bool credentials, const Handler &whenAnswered)
{
    begin(service, whenAnswered);
    body = question;
    mayTell = credentials && !camera.user.isEmpty();
    hasTriedToken = mayTell && worked == Login::Token;
    send(hasTriedToken ? Login::Token : Login::None);
}

void CameraLink::upload(const QUrl &address, const QString &file, const Handler &whenAnswered)
{
    begin(address, whenAnswered);
    path = file;
    mayTell = !camera.user.isEmpty();
    hasTriedToken = true; // there is no place for one
    // At once, so that the file need not be sent twice; one answer to a new challenge is left.
    send(worked == Login::Digest && challenge ? Login::Digest : Login::None);
}

void CameraLink::begin(const QUrl &url, const Handler &whenAnswered)
{
    forget();
    target = url;
    handler = whenAnswered;
    hasTriedDigest = false;
    path.clear();
}

void CameraLink::send(Login login)
{
    tried = login;
    received.clear();
    failure = CameraNews::Asked;
    failureDetail.clear();
    const bool isSecure = target.scheme() == QStringLiteral("https");
    if (target.host().isEmpty() || (!isSecure && target.scheme() != QStringLiteral("http"))) {
        failLater(CameraNews::Unreachable, oneLine(target.toDisplayString()));
        return;
    }
    if (!isSecure && !camera.certificateSha256.isEmpty()) {
        failLater(CameraNews::OtherCamera); // nobody could tell who listens
        return;
    }
    QNetworkRequest request =
        plainRequest(target, path.isNull() ? "application/soap+xml; charset=utf-8" : "application/octet-stream");
    if (login == Login::Digest) {
        constexpr auto besides = QUrl::RemoveScheme | QUrl::RemoveAuthority | QUrl::RemoveFragment;
        request.setRawHeader("Authorization",
                             digestAuthorization(*challenge, "POST", target.toEncoded(besides), camera.user,
                                                 camera.password, randomBytes(4).toHex(), ++answersToChallenge));
    }
    if (!path.isNull()) {
        sendFile(request);
        return;
    }
    const QDateTime now = QDateTime::currentDateTimeUtc().addSecs(secondsAhead);
    const QString header =
        login == Login::Token ? usernameToken(camera.user, camera.password, randomBytes(5), now) : QString();
    watch(access().post(request, soapMessage(body, header)));
    guard.start(times.msRequest);
}

void CameraLink::sendFile(QNetworkRequest request)
{
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::ReadOnly)) {
        failLater(CameraNews::NoFile, oneLine(file->errorString()));
        return;
    }
    request.setHeader(QNetworkRequest::ContentLengthHeader, file->size());
    QNetworkReply *reply = access().post(request, file.get());
    file.release()->setParent(reply); // which reads it to its own end
    watch(reply);
    guard.start(times.msStalled);
}

void CameraLink::failLater(CameraNews news, const QString &detail)
{
    failure = news;
    failureDetail = detail;
    guard.start(0);
}

QNetworkAccessManager &CameraLink::access()
{
    if (network)
        return *network;
    network = new QNetworkAccessManager(this);
    network->setProxy(QNetworkProxy::NoProxy);
    // Both before anything is sent over the connection.
    connect(network, &QNetworkAccessManager::encrypted, this, [this](QNetworkReply *reply) {
        if (!camera.certificateSha256.isEmpty() && !isPinned(*reply))
            failure = CameraNews::OtherCamera, reply->abort();
    });
    connect(network, &QNetworkAccessManager::sslErrors, this, [this](QNetworkReply *reply) {
        if (isPinned(*reply))
            reply->ignoreSslErrors();
        else if (!camera.certificateSha256.isEmpty())
            failure = CameraNews::OtherCamera;
    });
    return *network;
}

bool CameraLink::isPinned(const QNetworkReply &reply) const
{
    const QByteArray pin = QByteArray::fromHex(camera.certificateSha256);
    const QSslCertificate certificate = reply.sslConfiguration().peerCertificate();
    return !certificate.isNull() && certificate.digest(QCryptographicHash::Sha256) == pin;
}

void CameraLink::watch(QNetworkReply *reply)
{
    current = reply;
    reply->setReadBufferSize(mostSoapBytes);
    connect(reply, &QNetworkReply::finished, this, [this, reply] { evaluate(reply); });
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] {
        received += reply->read(mostSoapBytes + 1 - received.size());
        if (received.size() > mostSoapBytes)
            failure = CameraNews::Unintelligible, reply->abort();
    });
    connect(reply, &QNetworkReply::uploadProgress, this, [this](qint64 bytes, qint64 total) {
        if (path.isNull() || bytes == 0)
            return;
        guard.start(bytes < total ? times.msStalled : msForAnswer);
        emit uploaded(bytes, total);
    });
}

void CameraLink::evaluate(QNetworkReply *reply)
{
    if (reply != current)
        return;
    guard.stop();
    current = nullptr;
    reply->deleteLater();
    if (failure == CameraNews::Asked)
        received += reply->read(mostSoapBytes + 1 - received.size());
    CameraAnswer answer = path.isNull() ? answerToQuestion(*reply) : answerToFile(*reply);
    if (failure != CameraNews::Asked)
        answer = { failure, failureDetail, SoapAnswer() };
    if (answer.news == CameraNews::NotAuthorized && mayTell && chooseLogin(reply->rawHeader("WWW-Authenticate"))) {
        send(tried);
        return;
    }
    if (answer.news == CameraNews::Asked && tried != Login::None)
        worked = tried;
    finish(answer);
}

CameraAnswer CameraLink::answerToQuestion(const QNetworkReply &reply) const
{
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    CameraAnswer answer { CameraNews::Asked, QString(), readSoap(received) };
    if (isBroken(reply)) {
        answer.news = CameraNews::Unreachable;
        answer.detail = oneLine(reply.errorString());
    } else if (status == 401 || answer.soap.hasSubcode(QStringLiteral("NotAuthorized"))) {
        answer.news = CameraNews::NotAuthorized;
    } else if (answer.soap.hasSubcode(QStringLiteral("ActionNotSupported"))) {
        answer.news = CameraNews::NotThisWay;
    } else if (answer.soap.isFault()) {
        answer.news = CameraNews::Fault;
        answer.detail = oneLine(answer.soap.reason());
    } else if (status / 100 != 2 || !answer.soap.isValid) {
        answer.news = CameraNews::Unintelligible;
    }
    return answer;
}

CameraAnswer CameraLink::answerToFile(const QNetworkReply &reply) const
{
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    CameraAnswer answer { CameraNews::Asked, QString(), readSoap(received) };
    if (isBroken(reply)) {
        answer.news = CameraNews::NotSent;
        answer.detail = oneLine(reply.errorString());
    } else if (status == 401) {
        answer.news = CameraNews::NotAuthorized;
    } else if (status == 415) {
        answer.news = CameraNews::FileRefused;
    } else if (status / 100 != 2) {
        answer.news = CameraNews::Fault;
        const QString reason = oneLine(answer.soap.reason());
        answer.detail = reason.isEmpty() ? QStringLiteral("HTTP %1").arg(status) : reason;
    }
    return answer;
}

bool CameraLink::chooseLogin(const QByteArray &challenges)
{
    const std::optional<DigestChallenge> asked = readDigestChallenge(challenges);
    if (asked && !std::exchange(hasTriedDigest, true)) {
        challenge = asked;
        answersToChallenge = 0;
        tried = Login::Digest;
        return true;
    }
    tried = Login::Token;
    return !std::exchange(hasTriedToken, true);
}

void CameraLink::finish(const CameraAnswer &answer)
{
    if (const Handler told = std::exchange(handler, Handler()))
        told(answer);
}

void CameraLink::forget()
{
    guard.stop();
    handler = Handler();
    if (QNetworkReply *reply = std::exchange(current, nullptr)) {
        reply->abort();
        reply->deleteLater();
    }
}

void CameraLink::drop()
{
    forget();
    HttpThreads::instance().release(std::exchange(network, nullptr));
}

} // namespace qv
