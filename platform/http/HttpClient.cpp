// One request after the other over QNetworkAccessManager: execute() queues, start() sends, readBody() streams,
// endRequest() takes stock, report() calls the receiver.
//
// No foreign code runs inside a signal of Qt's reply: progress comes from a timer, the end from a queued call. That is
// what makes it safe for whoever is called to delete the client.
#include "HttpClient.h"

#include "HttpLogin.h"
#include "HttpThreads.h"

#include <QMetaMethod>
#include <QNetworkAccessManager>
#include <QNetworkReply>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace qv {

namespace {

constexpr int msProgressInterval = 50;

// Bounds what Qt reads ahead: without it a fast server fills the memory. Where a connection breaks off while this much
// is waiting, Qt drops what it has read beyond.
constexpr qint64 readBufferBytes = 4LL * 1024 * 1024;
constexpr qint64 roundBytes = 512LL * 1024; // then others have their turn on this thread
constexpr qint64 pieceBytes = 64LL * 1024;

QNetworkProxy routeOf(const HttpHost &host)
{
    const HttpAccess &proxy = host.proxy;
    if (host.proxyPreference == HttpHost::NoProxy || proxy.isEmpty())
        return QNetworkProxy::NoProxy;
    return QNetworkProxy(QNetworkProxy::HttpProxy, proxy.address(), quint16(proxy.port()), proxy.user(),
                         proxy.password());
}

bool isHttp(const QUrl &url)
{
    return !url.host().isEmpty() && (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https"));
}

QNetworkRequest networkRequest(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(HttpClient::maxRedirects);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    // HTTP/2 takes no notice of the read buffer's limit.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // Sizes and progress are those of the file; and no bomb is unpacked on the way.
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

/// Whether it was the way to the server that failed, not its answer.
bool isOfTheWay(QNetworkReply::NetworkError error)
{
    return error != QNetworkReply::NoError && error <= QNetworkReply::UnknownProxyError
        && error != QNetworkReply::TooManyRedirectsError && error != QNetworkReply::InsecureRedirectError;
}

/// After a redirect Qt may tell the old status once more: a server that was not reached then has none.
bool isLeftOver(int status, QNetworkReply::NetworkError error)
{
    return status / 100 == 3 && isOfTheWay(error);
}

/// Whether the same request may end better another time.
bool mightPass(QNetworkReply::NetworkError error)
{
    const bool isDecided =
        error == QNetworkReply::SslHandshakeFailedError || error == QNetworkReply::ProxyAuthenticationRequiredError;
    return (isOfTheWay(error) && !isDecided) || error >= QNetworkReply::InternalServerError;
}

HttpHeader headerOf(const QNetworkReply &reply)
{
    HttpHeader header;
    for (const auto &line : reply.rawHeaderPairs()) {
        // Qt joins the lines of one name, cookies with a line end.
        for (const QByteArray &value : line.second.split('\n'))
            header.addValue(line.first, value);
    }
    return header;
}

} // namespace

// NOLINTNEXTLINE(performance-no-int-to-ptr)
QIODevice *const HttpClient::keepInRequest = reinterpret_cast<QIODevice *>(~quintptr(0));

HttpClient::HttpClient()
{
    qRegisterMetaType<RequestPtr>("RequestPtr");
    qRegisterMetaType<RequestPtr>("qv::RequestPtr");
    progressTimer.setSingleShot(true);
    progressTimer.setInterval(msProgressInterval);
    for (QTimer *limit : { &stallTimer, &wholeTimer }) {
        limit->setSingleShot(true);
        connect(limit, &QTimer::timeout, this, [this] {
            endRequest();
            current->status = 0;
            current->timedOut = true;
        });
    }
    connect(&HttpThreads::instance(), &HttpThreads::freed, this, &HttpClient::ask);
    roundTimer.setSingleShot(true);
    connect(&roundTimer, &QTimer::timeout, this, &HttpClient::readBody);
    connect(&progressTimer, &QTimer::timeout, this, [this] {
        // Qt may lose sight of a connection after its buffer was full. Told the size again, it looks.
        reply->setReadBufferSize(readBufferBytes);
        reportProgress();
    });
}

HttpClient::HttpClient(const HttpHost &host) : HttpClient()
{
    setHost(host);
}

HttpClient::~HttpClient()
{
    dropReply();
}

void HttpClient::setHost(const HttpHost &host)
{
    this->host = host;
}

void HttpClient::setStallLimit(int msDelay)
{
    msStallDelay = msDelay;
}

RequestPtr HttpClient::prepareGet(const QString &path, const QMap<QString, QVariant> &parameters, QObject *receiver,
                                  const char *slot, QIODevice *output, const qvb::smart<QIODevice> &outputHandle)
{
    QUrl url(host.makeURL(path, parameters, true));
    url.setUserName(host.server.user(), QUrl::DecodedMode);
    url.setPassword(host.server.password(), QUrl::DecodedMode);
    return prepareGet(url, receiver, slot, output, outputHandle);
}

RequestPtr HttpClient::prepareGet(const QUrl &url, QObject *receiver, const char *slot, QIODevice *output,
                                  const qvb::smart<QIODevice> &outputHandle)
{
    auto request = std::make_shared<RequestData>();
    request->address = url;
    request->visited = { url.adjusted(QUrl::RemoveUserInfo) };
    request->host = host;
    request->host.updateProxy(url);
    if (output && output != keepInRequest) {
        request->isKept = false;
        request->output = output;
        request->outputHandle = outputHandle;
        request->maxBodySize = std::numeric_limits<qint64>::max();
        request->msTimeLimit = 0;
    }
    if (receiver && slot) {
        request->receiver = receiver;
        request->slot = QMetaObject::normalizedSignature(slot + (*slot >= '0' && *slot <= '9'));
        if (receiver->metaObject()->indexOfMethod(request->slot) < 0)
            qWarning("HttpClient::prepareGet: no such slot %s::%s", receiver->metaObject()->className(),
                     request->slot.constData());
    }
    return request;
}

void HttpClient::execute(const RequestPtr &request)
{
    if (!request || std::exchange(request->isExecuted, true))
        return;
    waiting.append(request);
    if (phase == Idle)
        next();
}

RequestPtr HttpClient::get(const QString &path, const QMap<QString, QVariant> &parameters, QObject *receiver,
                           const char *slot, QIODevice *output, const qvb::smart<QIODevice> &outputHandle)
{
    RequestPtr request = prepareGet(path, parameters, receiver, slot, output, outputHandle);
    execute(request);
    return request;
}

void HttpClient::next()
{
    const RequestPtr past = std::exchange(current, waiting.isEmpty() ? RequestPtr() : waiting.takeFirst());
    phase = current ? Waiting : Idle;
    if (current) {
        QMetaObject::invokeMethod(this, &HttpClient::start, Qt::QueuedConnection);
    } else { // with its thread and its connections
        HttpThreads::instance().release(std::exchange(network, nullptr));
    }
}

void HttpClient::start()
{
    if (phase != Waiting)
        return;
    const RequestPtr request = current;
    if (!request->slot.isEmpty() && !request->receiver) {
        next();
        return;
    }
    phase = Running;
    bytesReported = 0;
    if (request->receiver)
        receiverDeath = connect(request->receiver, &QObject::destroyed, this, &HttpClient::reset);
    const QPointer<HttpClient> self(this);
    emit requestStarted(request);
    if (self && current == request)
        send(*request);
}

void HttpClient::send(const RequestData &request)
{
    if (!isHttp(request.address)) {
        endRequest();
        return;
    }
    stallTimer.start(HttpThreads::instance().areStuck() ? 0 : msStallDelay);
    if (request.msTimeLimit > 0)
        wholeTimer.start(request.msTimeLimit);
    if (HttpThreads::instance().areFree())
        ask();
}

void HttpClient::ask()
{
    if (reply || !stallTimer.isActive()) // nobody waits
        return;
    if (!network)
        network = new QNetworkAccessManager(this);
    QNetworkRequest request = networkRequest(current->address);
    for (const auto &line : std::as_const(current->ownHeaders))
        request.setRawHeader(line.first, line.second);
    reply = getWithLogin(*network, request, routeOf(current->host));
    reply->setReadBufferSize(readBufferBytes);
    connect(reply, &QNetworkReply::redirected, this, [this](const QUrl &to) {
        if (!to.userInfo().isEmpty()) { // which Qt would use there
            readHead();
            endRequest();
            return;
        }
        current->visited.append(to);
        current->status = 0; // until that server answers
    });
    connect(reply, &QNetworkReply::metaDataChanged, this, &HttpClient::readHead);
    connect(reply, &QNetworkReply::readyRead, this, &HttpClient::readBody);
    connect(reply, &QNetworkReply::finished, this, &HttpClient::readBody);
}

void HttpClient::readHead()
{
    stallTimer.start();
    current->status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
    current->announced = length.isValid() ? length.toLongLong() : -1;
}

void HttpClient::readBody()
{
    if (current->resumedAt > 0 && reply->bytesAvailable() > 0)
        current->begin(headerOf(*reply));
    std::array<char, pieceBytes> piece;
    qint64 bytes = 0;
    while (reply && reply->isOpen() && bytes < roundBytes) {
        const qint64 size = reply->read(piece.data(), pieceBytes);
        if (size <= 0)
            break;
        bytes += size;
        stallTimer.start();
        if (!progressTimer.isActive())
            progressTimer.start();
        if (!current->append(piece.data(), size))
            endRequest();
    }
    if (!reply)
        return;
    if (bytes >= roundBytes) {
        roundTimer.start();
    } else if (reply->isFinished()) {
        const int refused = refusedChallenge(*reply);
        if (refused != 0 || isLeftOver(current->status, reply->error()))
            current->status = refused;
        const bool isFine = reply->error() == QNetworkReply::NoError;
        current->whole = isFine && current->received >= current->announced; // after a reset Qt may tell less as whole
        current->broken = (isFine && !current->whole) || mightPass(reply->error());
        if (!isFine)
            current->error = reply->errorString();
        current->errorCode = reply->error();
        endRequest();
    }
}

void HttpClient::endRequest()
{
    if (phase != Running)
        return;
    phase = Ended;
    if (reply)
        current->header = headerOf(*reply);
    dropReply();
    current->flush();
    QMetaObject::invokeMethod(this, &HttpClient::report, Qt::QueuedConnection);
}

void HttpClient::dropReply()
{
    stallTimer.stop();
    wholeTimer.stop();
    progressTimer.stop();
    roundTimer.stop();
    if (QNetworkReply *dropped = std::exchange(reply, nullptr)) {
        dropped->disconnect(this);
        dropped->deleteLater();
        if (!dropped->isFinished())
            HttpThreads::instance().release(std::exchange(network, nullptr));
    }
}

void HttpClient::report()
{
    if (phase != Ended)
        return;
    const RequestPtr request = current;
    const QPointer<HttpClient> self(this);
    reportProgress();
    if (!self || phase != Ended || current != request)
        return;
    phase = Reporting;
    disconnect(receiverDeath);
    if (QObject *receiver = request->receiver) {
        const QMetaObject *meta = receiver->metaObject();
        meta->method(meta->indexOfMethod(request->slot))
            .invoke(receiver, Qt::DirectConnection, Q_ARG(RequestPtr, request));
    }
    if (self)
        next();
}

void HttpClient::reportProgress()
{
    if (std::exchange(bytesReported, current->received) == current->received)
        return;
    const QPair<int, int> progress = progressOf(current->received, current->announced);
    emit downloadProgress(progress.first, progress.second);
}

void HttpClient::reset()
{
    if (phase == Idle || phase == Reporting)
        return;
    dropReply();
    disconnect(receiverDeath);
    next();
}

void HttpClient::drop(const RequestPtr &request)
{
    if (request == current)
        reset();
    else
        waiting.removeOne(request);
}

QString HttpClient::encodedUrlPath(const QUrl &url)
{
    if (url.isEmpty())
        return QString();
    const QString path = url.path(QUrl::FullyEncoded);
    const QString query = url.hasQuery() ? QLatin1Char('?') + url.query(QUrl::FullyEncoded) : QString();
    return (path.isEmpty() ? QStringLiteral("/") : path) + query;
}

QString HttpClient::encodedUrlPath(const QString &url)
{
    return encodedUrlPath(QUrl(url));
}

QPair<int, int> HttpClient::progressOf(qint64 bytes, qint64 totalBytes)
{
    constexpr qint64 most = std::numeric_limits<int>::max();
    if (totalBytes < 0)
        return { int(std::min(bytes, most)), -1 };
    int shift = 0;
    while (totalBytes >> shift > most)
        ++shift;
    return { int(std::min(bytes, totalBytes) >> shift), int(totalBytes >> shift) };
}

} // namespace qv
