// Requests in, files out: one request a connection. Called by the network; what is no plain GET of a file inside the
// folder gets a 404 or worse.
#include "DemoServer.h"

#include <QFileInfo>
#include <QMimeDatabase>
#include <QTcpSocket>
#include <QTimer>

namespace {

constexpr int maxRequestBytes = 16 * 1024;
constexpr int maxBytesAtOnce = 64 * 1024;
constexpr int msBetweenPortions = 40;
const QByteArray addressInFiles = "http://127.0.0.1/";

QByteArray answer(const QByteArray &status, const QByteArray &type, const QByteArray &body)
{
    return "HTTP/1.1 " + status + "\r\nContent-Type: " + type + "\r\nContent-Length: " + QByteArray::number(body.size())
        + "\r\nConnection: close\r\n\r\n" + body;
}

} // namespace

DemoServer::DemoServer(const QStringList &folders) : folders(folders)
{
    connect(this, &QTcpServer::newConnection, this, [this] {
        QTcpSocket *client = nextPendingConnection();
        connect(client, &QTcpSocket::readyRead, this, [this, client] { receive(client); });
        connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
    });
    listen(QHostAddress::LocalHost);
}

QUrl DemoServer::url(const QString &path) const
{
    return QStringLiteral("http://127.0.0.1:%1/%2").arg(serverPort()).arg(path);
}

void DemoServer::receive(QTcpSocket *client)
{
    const QByteArray request = client->peek(maxRequestBytes);
    if (!request.contains("\r\n\r\n")) {
        if (request.size() == maxRequestBytes)
            client->abort();
        return;
    }
    client->readAll();
    send(client, answerTo(request.left(request.indexOf("\r\n"))));
}

void DemoServer::send(QTcpSocket *client, const QByteArray &answer)
{
    if (answer.size() <= maxBytesAtOnce) {
        client->write(answer);
        client->disconnectFromHost();
        return;
    }
    // Packages take about a second: over loopback nobody would see the progress of a download, nor could cancel it.
    auto *pace = new QTimer(client);
    connect(pace, &QTimer::timeout, client,
            [pace, client, answer, portion = answer.size() / 20, sent = qint64(0)]() mutable {
                sent += client->write(answer.mid(int(sent), portion));
                if (sent < answer.size())
                    return;
                pace->stop();
                client->disconnectFromHost();
            });
    pace->start(msBetweenPortions);
}

QString DemoServer::find(const QString &path) const
{
    for (const QString &folder : folders) {
        const QString root = QFileInfo(folder).canonicalFilePath() + '/';
        const QFileInfo file(QFileInfo(root + path).canonicalFilePath());
        // What leads out of the folder, through ".." or a link, does not exist.
        if (file.isFile() && file.filePath().startsWith(root))
            return file.filePath();
    }
    return QString();
}

QByteArray DemoServer::answerTo(const QByteArray &requestLine) const
{
    const QList<QByteArray> words = requestLine.split(' ');
    if (words.size() != 3 || words.at(0) != "GET")
        return answer("405 Method Not Allowed", "text/plain", "GET only\n");

    // As a proxy it is asked for whole URLs: the path is all that counts.
    const QString path = QUrl::fromEncoded(words.at(1)).path(QUrl::FullyDecoded);
    const QString file = find(path);
    QFile body(file);
    if (file.isEmpty() || !body.open(QIODevice::ReadOnly))
        return answer("404 Not Found", "text/html", "<h1>404 Not Found</h1>\n");

    QByteArray content = body.readAll();
    if (file.endsWith(QLatin1String(".xml")))
        content.replace(addressInFiles, url(QString()).toEncoded());
    return answer("200 OK", QMimeDatabase().mimeTypeForFile(file).name().toLatin1(), content);
}
