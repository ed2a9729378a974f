// The test server: one HttpServerConnection per socket reads requests and writes what the routes say, in pieces, so
// that a body of any length takes no memory.
#include "HttpServer.h"

#include <QTcpSocket>

class HttpServerConnection : public QObject
{
public:
    HttpServerConnection(HttpServer *server, QTcpSocket *socket) : QObject(server), server(server), socket(socket)
    {
        socket->setParent(this);
        connect(socket, &QTcpSocket::readyRead, this, &HttpServerConnection::read);
        connect(socket, &QTcpSocket::bytesWritten, this, &HttpServerConnection::write);
        connect(socket, &QTcpSocket::disconnected, this, &QObject::deleteLater);
        connect(server, &HttpServer::released, this, &HttpServerConnection::write);
        connect(server, &HttpServer::stopped, socket, &QTcpSocket::abort);
    }

private:
    void read()
    {
        input += socket->readAll();
        const auto end = input.indexOf("\r\n\r\n");
        if (isAnswering || end < 0)
            return;
        const QList<QByteArray> lines = input.left(end).split('\n');
        input.remove(0, end + 4);
        const QList<QByteArray> first = lines.first().split(' ');
        HttpTestRequest request { first.value(0), first.value(1), {}, 0 };
        for (const QByteArray &line : lines.mid(1))
            request.headers.insert(line.left(line.indexOf(':')).toLower(), line.mid(line.indexOf(':') + 1).trimmed());
        answer = server->answerTo(request);
        request.status = answer.status;
        isAnswering = true;
        isHoldTold = false;
        sent = -1;
        server->requests.append(request);
        emit server->answered();
        write();
    }

    qint64 length() const { return answer.body.size() + answer.generated; }

    void write()
    {
        constexpr qint64 mostQueued = 1024 * 1024;
        while (isAnswering && socket->state() == QAbstractSocket::ConnectedState && socket->bytesToWrite() < mostQueued
               && !isHeld()) {
            if (sent < 0)
                writeHead();
            else if (sent == answer.droppedAt || sent == length())
                finish();
            else
                writePiece();
        }
    }

    bool isHeld()
    {
        const bool held = sent == answer.heldAt && !server->isReleased;
        if (held && !std::exchange(isHoldTold, true))
            emit server->held();
        return held;
    }

    void writeHead()
    {
        sent = 0;
        if (answer.framing == HttpAnswer::Raw)
            return;
        QByteArray head = "HTTP/1.1 " + QByteArray::number(answer.status) + " Scripted\r\n";
        if (answer.framing == HttpAnswer::Counted)
            head +=
                "Content-Length: " + QByteArray::number(answer.announced < 0 ? length() : answer.announced) + "\r\n";
        else if (answer.framing == HttpAnswer::Chunked)
            head += "Transfer-Encoding: chunked\r\n";
        for (const auto &header : std::as_const(answer.headers))
            head += header.first + ": " + header.second + "\r\n";
        socket->write(head + "\r\n");
    }

    void writePiece()
    {
        qint64 size = std::min<qint64>(64 * 1024, length() - sent);
        for (qint64 stop : { answer.heldAt, answer.droppedAt })
            if (stop > sent)
                size = std::min(size, stop - sent);
        QByteArray piece = answer.body.mid(int(std::min<qint64>(sent, answer.body.size())), int(size));
        piece.append(int(size) - piece.size(), 'x');
        sent += size;
        if (answer.framing == HttpAnswer::Chunked)
            piece = QByteArray::number(size, 16) + "\r\n" + piece + "\r\n";
        socket->write(piece);
    }

    void finish()
    {
        isAnswering = false;
        const bool isWhole = sent != answer.droppedAt;
        if (isWhole && answer.framing == HttpAnswer::Chunked)
            socket->write("0\r\n\r\n");
        if (isWhole && (answer.framing == HttpAnswer::Counted || answer.framing == HttpAnswer::Chunked))
            read();
        else
            socket->disconnectFromHost();
    }

    HttpServer *server;
    QTcpSocket *socket;
    QByteArray input;
    HttpAnswer answer;
    bool isAnswering = false, isHoldTold = false;
    qint64 sent = -1; // of the body; -1: not even the head
};

HttpServer::HttpServer(const QHostAddress &address, quint16 port)
{
    connect(this, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = nextPendingConnection())
            new HttpServerConnection(this, socket);
    });
    listen(address, port);
}

QUrl HttpServer::url(const QString &path) const
{
    QUrl url(QStringLiteral("http://") + serverAddress().toString() + path);
    url.setPort(serverPort() == 80 ? -1 : serverPort());
    return url;
}

QList<QByteArray> HttpServer::targets() const
{
    QList<QByteArray> all;
    for (const HttpTestRequest &request : requests)
        all.append(request.target);
    return all;
}

HttpAnswer HttpServer::answerTo(const HttpTestRequest &request) const
{
    if (!proxyLogin.isEmpty() && request.headers.value("proxy-authorization") != proxyLogin)
        return HttpAnswer("Who are you?", 407).header("Proxy-Authenticate", "Basic realm=\"tests\"");
    if (!ownLogin.isEmpty() && request.headers.value("authorization") != ownLogin)
        return HttpAnswer("Who are you?", 401).header("WWW-Authenticate", "Basic realm=\"tests\"");
    const QByteArray path = QUrl(QString::fromLatin1(request.target)).path().toLatin1();
    HttpAnswer answer = routes.value(request.target, routes.value(path, HttpAnswer("No such page.", 404)));
    for (const auto &[name, value] : std::as_const(answer.headers)) {
        if (value == request.headers.value(name == "ETag" ? "if-none-match" : "if-modified-since"))
            return HttpAnswer("", 304).header(name, value).announce(answer.body.size());
    }
    QByteArray from = request.headers.value("range").mid(6); // of "bytes=7-"
    from.chop(1);
    if (answer.hasRanges && !from.isEmpty() && answer.headers.first().second == request.headers.value("if-range")) {
        const QByteArray size = QByteArray::number(answer.body.size());
        answer.header("Content-Range", "bytes " + from + '-' + QByteArray::number(answer.body.size() - 1) + '/' + size);
        answer.status = 206;
        answer.body.remove(0, from.toInt());
    }
    return answer;
}
