// Requests in, files out: one request a connection. Called by the network; what is no GET of a file inside the folders
// gets a 404.
#include "DemoServer.h"

#include <QDir>
#include <QTcpSocket>
#include <QTimer>

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

void DemoServer::answer(QTcpSocket *client)
{
    if (!client->peek(client->bytesAvailable()).contains("\r\n\r\n"))
        return;
    const QList<QByteArray> request = client->readAll().split(' ');
    // As a proxy it is asked for whole URLs: the path is all that counts.
    const QString path = QUrl::fromEncoded(request.value(1)).path(QUrl::FullyDecoded);

    QFile file("site:" + path);
    const bool found = request.first() == "GET" && !path.contains("..") && file.open(QIODevice::ReadOnly);
    QByteArray body = found ? file.readAll() : "Not found\n";
    if (path.endsWith(".xml"))
        body.replace("http://127.0.0.1/", url(QString()).toEncoded());
    body.prepend((found ? "HTTP/1.1 200 OK" : "HTTP/1.1 404 Not Found")
                 + ("\r\nContent-Length: " + QByteArray::number(body.size())) + "\r\nConnection: close\r\n\r\n");

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
