#pragma once

#include <QHash>
#include <QHostAddress>
#include <QSet>
#include <QSslCertificate>
#include <QSslKey>
#include <QStringList>
#include <QTcpServer>
#include <QTimer>
#include <QUrl>

/// A camera on loopback, as far as updates go: clock, version, the upload of a firmware and the restart, over HTTP or
/// TLS. A file brings the first version with dots that its first line names; of the rest nothing is kept. Plain members
/// say what it is like and what goes wrong; they count from the next request on.
/// @code
/// CameraServer camera;
/// camera.fault = CameraServer::RefusesFile;
/// OnvifCameras cameras({ { camera.url(), "admin", "secret", {}, {}, {} } });
/// @endcode
class CameraServer : public QTcpServer
{
    Q_OBJECT

public:
    enum Fault {
        None,
        RefusesFile,  ///< 415
        FailsUpgrade, ///< 500
        StaysOld,     ///< restarts with the version from before
        NeverBack,
        CutsUpload, ///< the connection ends after the first piece
        StallsUpload,
        ManagesNoHttp, ///< takes no upload
        Garbled,       ///< answers with something else
        Endless,       ///< answers without end
        LosesUsers,    ///< after the restart
    };
    enum Login { Nobody = 0, Digest = 1, Token = 2, Both = 3, Silent = 4 /**< tells of no Digest, but by a fault */ };

    /// Listens at once, on a free port unless one is named.
    explicit CameraServer(const QHostAddress &address = QHostAddress(QHostAddress::LocalHost), quint16 port = 0);

    QUrl url() const;

    /// From now on over TLS.
    void setCertificate(const QSslCertificate &itsCertificate, const QSslKey &itsKey)
    {
        certificate = itsCertificate;
        key = itsKey;
    }

    /// Is away, or comes back to the same address.
    void setOnline(bool online);

    QString model = "QD-2204", version = "4.1.0";
    QString nextVersion; ///< what a file brings, unless empty
    QString user = "admin", password = "secret";
    int login = Both;
    Fault fault = None;
    qint64 secondsAhead = 0;
    QString uploadDelay = "PT0S", downTime = "PT0S"; ///< as told; "": not told
    QString uploadAddress;                           ///< empty: its own
    int msAway = 50;                                 ///< from the end of the file to the return

    QStringList actions; ///< what it was asked for, "upload" too
    QSet<QString> given; ///< credentials that came along: "Digest", "Token", "Basic"
    int refused = 0;     ///< requests with wrong credentials
    qint64 received = 0; ///< bytes of files
    QByteArray sentTo;   ///< the header "Host" of the last upload

signals:
    void asked(const QString &action);
    void uploading(); ///< the first piece is there
    void uploaded();
    void returned();

private:
    friend class CameraConnection;
    void incomingConnection(qintptr descriptor) override;
    bool isDigestRight(const QByteArray &authorization, const QByteArray &target) const;
    bool isTokenRight(const QByteArray &body);
    bool isWelcome(const QByteArray &authorization, const QByteArray &target, const QByteArray &body);
    QByteArray answerTo(const QByteArray &action) const;
    void restart(const QByteArray &firstLine);

    QHostAddress home;
    quint16 port = 0;
    QByteArray nonce = "n0";
    QSet<QByteArray> nonces; // of tokens
    QSslCertificate certificate;
    QSslKey key;
};
