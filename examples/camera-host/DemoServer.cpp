// Requests in, files out: one request a connection. Called by the network; catalogues leave sealed and signed, what is
// no GET of a file inside the folders gets a 404, and what the client has already a 304.
#include "DemoServer.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <utility>

DemoServer::DemoServer(const QStringList &folders)
{
    QDir::setSearchPaths("site", folders);
    connect(this, &QTcpServer::newConnection, this, [this] {
        QTcpSocket *client = nextPendingConnection();
        client->setReadBufferSize(16 * 1024); // longer requests get no answer
        connect(client, &QTcpSocket::readyRead, this, [this, client] { answer(client); });
        connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
    });
    listen(QHostAddress::LocalHost);
}

QUrl DemoServer::url(const QString &path) const
{
    return QStringLiteral("http://127.0.0.1:%1/%2").arg(serverPort()).arg(path);
}

bool DemoServer::tamper(const QString &what)
{
    tampered = what;
    sealedPath.clear();
    return QStringList({ "catalogue", "package", "freeze" }).contains(what);
}

std::optional<QByteArray> DemoServer::content(const QString &path)
{
    if (path == sealedPath + ".minisig")
        return signature;
    QFile file("site:" + path);
    if (path.contains("..") || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray bytes = file.readAll();
    if (path.endsWith(".xml")) {
        if (std::exchange(sealedPath, path) != path)
            seal(bytes);
        bytes = sealed;
        if (tampered == "catalogue")
            bytes += ' ';
    } else if (tampered == "package" && !path.endsWith(".html")) {
        std::reverse(bytes.begin(), bytes.end()); // as long as it was
    }
    return bytes;
}

/// The time as serial: whatever catalogue a client asks for, it is newer than the last one, or the same.
void DemoServer::seal(const QByteArray &catalogue)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const QString attributes = QStringLiteral("<softwareList serial=\"%1\" expires=\"%2\"")
                                   .arg(now.toMSecsSinceEpoch())
                                   .arg(now.addDays(tampered == "freeze" ? -1 : 1).toString(Qt::ISODate));
    sealed = catalogue;
    sealed.replace("http://127.0.0.1/", url(QString()).toEncoded()).replace("<softwareList", attributes.toLatin1());
    signature = publisher.sign(sealed);
}

void DemoServer::answer(QTcpSocket *client)
{
    if (!client->peek(client->bytesAvailable()).contains("\r\n\r\n"))
        return;
    const QByteArray head = client->readAll();
    const QList<QByteArray> request = head.split(' ');
    const auto found = request.first() == "GET" ? content(QUrl::fromEncoded(request.value(1)).path()) : std::nullopt;
    QByteArray body = found.value_or("Not found\n");
    const QByteArray tag = '"' + QCryptographicHash::hash(body, QCryptographicHash::Sha256).toHex() + '"';
    const bool isKnown = found && head.contains("\r\nIf-None-Match: " + tag + "\r\n");
    if (isKnown)
        body = "HTTP/1.1 304 Not Modified\r\nETag: " + tag + "\r\nConnection: close\r\n\r\n";
    else
        body.prepend((found ? "HTTP/1.1 200 OK\r\nETag: " + tag : QByteArray("HTTP/1.1 404 Not Found"))
                     + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n");

    // Packages take about a second: over loopback nobody would see the progress of a download, nor could cancel it.
    auto *pace = new QTimer(client);
    connect(pace, &QTimer::timeout, client, [client, body, portion = body.size() / 20 + 1024]() mutable {
        client->write(body.left(portion));
        body.remove(0, portion);
        if (body.isEmpty())
            client->disconnectFromHost();
    });
    pace->start(40); // milliseconds
}
