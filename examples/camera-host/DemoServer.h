#pragma once

#include <QTcpServer>
#include <QUrl>

class QTcpSocket;

/// The demo's update server: serves the files of some folders on a loopback port, in the demo's own event loop. Any web
/// server does the same (docs/catalogue.md); this one saves starting one. Catalogues on disk name "http://127.0.0.1/"
/// as their server, so that one on port 80 may serve them as they are; this one puts its own address there.
///
/// It also stands in as the proxy of the demo: packages are asked for at port 80, where only root may listen. A proxy
/// gets those requests whatever the port.
class DemoServer : public QTcpServer
{
    Q_OBJECT

public:
    /// Listens at once; isListening() tells whether it worked. The first of @p folders that has a file serves it.
    explicit DemoServer(const QStringList &folders);

    /// The address of the file @p path here.
    QUrl url(const QString &path) const;

private:
    void answer(QTcpSocket *client);
};
