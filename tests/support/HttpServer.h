#pragma once

#include <QHash>
#include <QHostAddress>
#include <QTcpServer>
#include <QUrl>

/// What the test server answers: a status, headers and a body, and where the answer goes wrong.
/// @code
/// HttpAnswer("not here", 404)
/// HttpAnswer("0123456789").dropAfter(5)
/// HttpAnswer().generate(100 << 20).holdAfter(1 << 20)
/// @endcode
struct HttpAnswer
{
    HttpAnswer(const QByteArray &body = QByteArray(), int status = 200) : status(status), body(body) { }

    /// These bytes and nothing else, then the end of the connection.
    static HttpAnswer raw(const QByteArray &bytes) { return HttpAnswer(bytes).set(&HttpAnswer::framing, Raw); }
    static HttpAnswer redirect(const QByteArray &location, int status = 302)
    {
        return HttpAnswer("This page has moved.", status).header("Location", location);
    }

    HttpAnswer &header(const QByteArray &name, const QByteArray &value)
    {
        return headers.append({ name, value }), *this;
    }
    /// So many "x" behind the body, made as they leave.
    HttpAnswer &generate(qint64 bytes) { return set(&HttpAnswer::generated, bytes); }
    /// A Content-Length that is not the body's.
    HttpAnswer &announce(qint64 bytes) { return set(&HttpAnswer::announced, bytes); }
    /// Takes ranges of the body, and has this ETag.
    HttpAnswer &ranges(const QByteArray &tag) { return header("ETag", tag).set(&HttpAnswer::hasRanges, true); }
    /// No Content-Length: the end of the connection ends the body.
    HttpAnswer &unannounced() { return set(&HttpAnswer::framing, UntilClose); }
    HttpAnswer &chunked() { return set(&HttpAnswer::framing, Chunked); }
    /// Nothing leaves before HttpServer::release().
    HttpAnswer &hold() { return holdAfter(-1); }
    /// Head and so many bytes leave, the rest after HttpServer::release().
    HttpAnswer &holdAfter(qint64 bodyBytes) { return set(&HttpAnswer::heldAt, bodyBytes); }
    /// The connection ends there.
    HttpAnswer &dropAfter(qint64 bodyBytes) { return set(&HttpAnswer::droppedAt, bodyBytes); }

    static constexpr qint64 Endless = Q_INT64_C(1) << 62;

    enum Framing { Counted, Chunked, UntilClose, Raw };

    int status;
    QByteArray body;
    QList<std::pair<QByteArray, QByteArray>> headers;
    Framing framing = Counted;
    qint64 generated = 0;
    bool hasRanges = false;
    qint64 announced = -1; // the body's own length
    qint64 heldAt = -2;    // never; -1: before the head
    qint64 droppedAt = -1; // never

private:
    template<class Value>
    HttpAnswer &set(Value HttpAnswer::*member, Value value)
    {
        this->*member = value;
        return *this;
    }
};

struct HttpTestRequest
{
    QByteArray method;
    QByteArray target;                     ///< as it came: a path, or a whole URL where the server stands as a proxy
    QHash<QByteArray, QByteArray> headers; ///< names in lower case
    int status = 0;                        ///< of the answer
};

/// A scriptable HTTP/1.1 server for tests. It lives in the test's own event loop and keeps connections alive. A target
/// without a route gets a 404 page, one whose ETag or Last-Modified is known to the client a 304. As a proxy it knows
/// its routes by whole URL, or by path alone.
/// @code
/// HttpServer server;
/// server.route("/catalogue.xml", HttpAnswer(xml).header("Set-Cookie", "a=b"));
/// DownloadManager manager(server.url("/catalogue.xml"));
/// @endcode
class HttpServer : public QTcpServer
{
    Q_OBJECT

public:
    /// Listens at once; port 0 takes a free one. Where the address is refused isListening() is false.
    explicit HttpServer(const QHostAddress &address = QHostAddress(QHostAddress::LocalHost), quint16 port = 0);

    /// The address of @p path here; port 80 is left out.
    QUrl url(const QString &path = QStringLiteral("/")) const;

    void route(const QByteArray &path, const HttpAnswer &answer) { routes.insert(path, answer); }

    /// From now on answers 401, or 407, to requests without this login, "user:password".
    void requireLogin(const QByteArray &login) { ownLogin = "Basic " + login.toBase64(); }
    void requireProxyLogin(const QByteArray &login) { proxyLogin = "Basic " + login.toBase64(); }

    /// Lets go all answers that are held, and those that get to their hold later.
    void release() { isReleased = true, emit released(); }

    /// Ends all connections and listens no more.
    void stop() { close(), emit stopped(); }

    QList<HttpTestRequest> requests;   ///< in the order they came
    QList<QByteArray> targets() const; ///< of these

signals:
    void answered(); ///< a request has its answer, which is yet to leave
    void held();     ///< an answer got to the point where it is held
    void released();
    void stopped();

private:
    friend class HttpServerConnection;
    HttpAnswer answerTo(const HttpTestRequest &request) const;

    QHash<QByteArray, HttpAnswer> routes;
    QByteArray ownLogin, proxyLogin; // as in the header; empty: everybody may
    bool isReleased = false;
};
