#pragma once

#include <QTcpServer>
#include <QTcpSocket>

/// An update server that answers whatever it is asked with one catalogue. A host has meta-objects of its own.
class CatalogueServer : public QTcpServer
{
    Q_OBJECT

public:
    explicit CatalogueServer(const QByteArray &catalogue)
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this, catalogue] {
            QTcpSocket *socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, socket, [socket, catalogue] {
                socket->write("HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n" + catalogue);
                socket->disconnectFromHost();
            });
        });
    }

    QString url() const { return QString("http://127.0.0.1:%1/catalogue.xml").arg(serverPort()); }
};
