#pragma once

#include "Publisher.h"

#include <QTcpServer>
#include <QUrl>

#include <optional>

class QTcpSocket;

/// The demo's update server: serves the files of some folders on a loopback port, in the demo's own event loop. Any web
/// server does the same (docs/catalogue.md); this one saves starting one. Catalogues on disk name "http://127.0.0.1/"
/// as their server, so that one on port 80 may serve them as they are; this one puts its own address there.
///
/// It is the publisher, too, which no real server shall be (docs/catalogue.md, "Sign it"): each catalogue is sealed and
/// signed as it leaves. The hashes of the packages stand in the catalogues on disk.
class DemoServer : public QTcpServer
{
    Q_OBJECT

public:
    /// Listens at once; isListening() tells whether it worked. The first of @p folders that has a file serves it.
    explicit DemoServer(const QStringList &folders);

    /// The address of the file @p path here.
    QUrl url(const QString &path) const;

    /// What a host has to trust, for UpdatePolicy::trustedKeys.
    QString key() const { return publisher.key(); }

    /// Does the harm of somebody who got into the server, from now on: changes each "catalogue" that is signed already,
    /// or each "package", or has only catalogues that have expired ("freeze"). Anything else ends that, and is false.
    bool tamper(const QString &what);

private:
    void answer(QTcpSocket *client);
    std::optional<QByteArray> content(const QString &path);
    void seal(const QByteArray &catalogue);

    const Publisher publisher;
    QString sealedPath; // of the catalogue that was handed out last, as it left
    QByteArray sealed, signature;
    QString tampered;
};
