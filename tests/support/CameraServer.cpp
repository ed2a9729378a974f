// The camera of tests and demo: one CameraConnection per socket takes requests and files, the server decides.
#include "CameraServer.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QRegularExpression>
#include <QSslSocket>

namespace {

/// What stands in @p text where @p pattern has its brackets.
QByteArray found(const QByteArray &text, const QString &pattern)
{
    return QRegularExpression(pattern).match(QString::fromUtf8(text)).captured(1).toUtf8();
}

QByteArray fault(const QByteArray &subcode, const QByteArray &text)
{
    return "<x:Fault><x:Code><x:Value>x:Sender</x:Value><x:Subcode><x:Value>e:InvalidArgVal</"
           "x:Value><x:Subcode><x:Value>e:"
        + subcode + "</x:Value></x:Subcode></x:Subcode></x:Code><x:Reason><x:Text xml:lang='en'>" + text
        + "</x:Text></x:Reason></x:Fault>";
}

} // namespace

class CameraConnection : public QObject
{
public:
    CameraConnection(CameraServer *camera, QTcpSocket *socket) : QObject(camera), camera(camera), socket(socket)
    {
        socket->setParent(this);
        connect(socket, &QTcpSocket::readyRead, this, &CameraConnection::read);
        connect(socket, &QTcpSocket::disconnected, this, &QObject::deleteLater);
    }

private:
    void read()
    {
        if (isStalled)
            return;
        input += socket->readAll();
        if (missing < 0) {
            const auto end = input.indexOf("\r\n\r\n");
            if (end < 0)
                return;
            head = input.left(end + 2);
            input.remove(0, end + 4);
            target = head.split(' ').value(1);
            missing = header("content-length").toLongLong();
            body.clear();
            if (isUpload())
                camera->actions << "upload";
        }
        const QByteArray piece = input.left(int(std::min<qint64>(missing, input.size())));
        input.remove(0, piece.size());
        missing -= piece.size();
        if (isUpload() && !takePiece(piece))
            return;
        if (body.size() < 65536)
            body += piece;
        if (missing > 0)
            return;
        missing = -1;
        isUpload() ? finishUpload() : answer();
    }

    bool isUpload() const { return target.startsWith("/upload"); }

    QByteArray header(const QString &name) const { return found(head, "(?i)\r\n" + name + ": *([^\r]*)\r"); }

    bool takePiece(const QByteArray &piece)
    {
        const bool isFirst = body.isEmpty() && !piece.isEmpty();
        camera->received += piece.size();
        if (isFirst)
            emit camera->uploading();
        if (isFirst && camera->fault == CameraServer::CutsUpload)
            socket->abort();
        if (isFirst && camera->fault == CameraServer::StallsUpload) {
            isStalled = true;
            socket->setReadBufferSize(1);
        }
        return !isStalled && socket->isOpen();
    }

    void send(int status, const QByteArray &content, const QByteArray &more = QByteArray())
    {
        socket->write("HTTP/1.1 " + QByteArray::number(status) + " Camera\r\nContent-Length: "
                      + QByteArray::number(content.size()) + "\r\n" + more + "\r\n" + content);
    }

    void sendSoap(int status, const QByteArray &content)
    {
        send(status,
             "<x:Envelope xmlns:x='http://www.w3.org/2003/05/soap-envelope' xmlns:d='http://www.onvif.org/ver10/device/"
             "wsdl' xmlns:c='http://www.onvif.org/ver10/schema' xmlns:e='http://www.onvif.org/ver10/error'><x:Body>"
                 + content + "</x:Body></x:Envelope>");
    }

    bool challenge()
    {
        if (camera->isWelcome(header("authorization"), target, body))
            return false;
        if (camera->login & CameraServer::Silent)
            sendSoap(400, fault("NotAuthorized", "Sender not authorized"));
        else
            send(401, {},
                 camera->login & CameraServer::Digest ? "WWW-Authenticate: Basic realm=\"camera\"\r\nWWW-Authenticate: "
                                                        "Digest realm=\"camera\", qop=\"auth\", "
                                                        "nonce=\""
                         + camera->nonce + "\"\r\n"
                                                      : QByteArray());
        return true;
    }

    void answer()
    {
        const QByteArray action = found(body, "<tds:(\\w+)/>");
        camera->actions << action;
        emit camera->asked(action);
        if (action != "GetSystemDateAndTime" && challenge())
            return;
        if (camera->fault == CameraServer::Garbled)
            send(200, "<html><p>Camera</html>");
        else if (camera->fault == CameraServer::Endless)
            send(200, QByteArray(1 << 20, ' '));
        else if (action == "StartFirmwareUpgrade" && camera->fault == CameraServer::ManagesNoHttp)
            sendSoap(500, fault("ActionNotSupported", "Not supported"));
        else
            sendSoap(200, camera->answerTo(action));
    }

    void finishUpload()
    {
        camera->sentTo = header("host");
        if (camera->login & CameraServer::Digest && challenge())
            return;
        if (camera->fault == CameraServer::RefusesFile)
            return send(415, "no firmware");
        if (camera->fault == CameraServer::FailsUpgrade)
            return sendSoap(500, fault("FirmwareUpgradeFailed", "Flash is\nworn\xe2\x80\xae out"));
        send(200, {});
        socket->flush();
        camera->restart(body.left(int(body.indexOf('\n'))));
    }

    CameraServer *camera;
    QTcpSocket *socket;
    QByteArray input, head, target, body;
    qint64 missing = -1; // of the body; -1: the head is
    bool isStalled = false;
};

CameraServer::CameraServer(const QHostAddress &address, quint16 port) : home(address), port(port)
{
    connect(this, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = nextPendingConnection())
            new CameraConnection(this, socket);
    });
    setOnline(true);
}

void CameraServer::setOnline(bool online)
{
    if (online == isListening())
        return;
    if (!online) {
        close();
        for (auto *socket : findChildren<QTcpSocket *>())
            socket->disconnectFromHost();
    } else if (listen(home, port)) {
        port = serverPort();
    }
}

void CameraServer::incomingConnection(qintptr descriptor)
{
    auto *socket = new QSslSocket(this);
    socket->setSocketDescriptor(descriptor);
    if (!certificate.isNull()) {
        socket->setLocalCertificate(certificate);
        socket->setPrivateKey(key);
        socket->startServerEncryption();
    }
    addPendingConnection(socket);
}

QUrl CameraServer::url() const
{
    QUrl url((certificate.isNull() ? "http://" : "https://") + home.toString());
    url.setPort(port);
    return url;
}

bool CameraServer::isDigestRight(const QByteArray &authorization, const QByteArray &target) const
{
    const auto value = [&](const QString &name) { return found(authorization, "\\b" + name + "=\"?([^\",]*)"); };
    const auto hash = [](const QByteArray &text) {
        return QCryptographicHash::hash(text, QCryptographicHash::Md5).toHex();
    };
    const QByteArray secret = hash(user.toUtf8() + ":camera:" + password.toUtf8());
    const QByteArray once = nonce + ':' + value("nc") + ':' + value("cnonce") + ":auth:";
    return value("username") == user.toUtf8() && value("uri") == target && value("nonce") == nonce
        && value("response") == hash(secret + ':' + once + hash("POST:" + target));
}

bool CameraServer::isTokenRight(const QByteArray &body)
{
    const QByteArray once = QByteArray::fromBase64(found(body, "<wsse:Nonce[^>]*>([^<]*)<"));
    const QByteArray created = found(body, "<wsu:Created>([^<]*)<");
    const QByteArray digest = QCryptographicHash::hash(once + created + password.toUtf8(), QCryptographicHash::Sha1);
    const QDateTime time = QDateTime::fromString(created, Qt::ISODate);
    const qint64 late = time.secsTo(QDateTime::currentDateTimeUtc().addSecs(secondsAhead));
    if (once.size() < 16 || nonces.contains(once) || qAbs(late) > 30)
        return false;
    nonces.insert(once);
    return found(body, "<wsse:Username>([^<]*)<") == user.toUtf8()
        && found(body, "<wsse:Password[^>]*PasswordDigest\">([^<]*)<") == digest.toBase64();
}

bool CameraServer::isWelcome(const QByteArray &authorization, const QByteArray &target, const QByteArray &body)
{
    if (login == Nobody)
        return true;
    const QString header = authorization.left(authorization.indexOf(' '));
    const bool hasToken = body.contains("<wsse:Security s:mustUnderstand=\"1\"");
    if (!header.isEmpty())
        given << header;
    if (hasToken)
        given << "Token";
    const bool isRight = (login & Digest && header == "Digest" && isDigestRight(authorization, target))
        || (login & Token && hasToken && isTokenRight(body));
    refused += int(!isRight && (hasToken || !header.isEmpty()));
    return isRight;
}

QByteArray CameraServer::answerTo(const QByteArray &action) const
{
    const auto element = [](const char *name, const QString &text) {
        return text.isEmpty() ? QByteArray() : QByteArray("<d:") + name + '>' + text.toUtf8() + "</d:" + name + '>';
    };
    const QByteArray tag = "d:" + action + "Response>";
    if (action == "GetSystemDateAndTime") {
        const QDateTime now = QDateTime::currentDateTimeUtc().addSecs(secondsAhead);
        const QString date = "'<c:Year>'yyyy'</c:Year><c:Month>'M'</c:Month><c:Day>'d'</c:Day>'";
        const QString time = "'<c:Hour>'H'</c:Hour><c:Minute>'m'</c:Minute><c:Second>'s'</c:Second>'";
        return "<" + tag + "<d:SystemDateAndTime><c:UTCDateTime><c:Time>" + now.toString(time).toUtf8()
            + "</c:Time><c:Date>" + now.toString(date).toUtf8() + "</c:Date></c:UTCDateTime></d:SystemDateAndTime></"
            + tag;
    }
    if (action == "GetDeviceInformation")
        return "<" + tag + element("Model", model) + element("FirmwareVersion", version) + "</" + tag;
    const QString address = uploadAddress.isEmpty() ? url().toString() + "/upload" : uploadAddress;
    return "<" + tag + element("UploadUri", address) + element("UploadDelay", uploadDelay)
        + element("ExpectedDownTime", downTime) + "</" + tag;
}

void CameraServer::restart(const QByteArray &firstLine)
{
    if (fault != StaysOld)
        version = nextVersion.isEmpty() ? found(firstLine, "(\\d+(?:\\.\\d+)+)") : nextVersion;
    nonce += '1';
    if (fault == LosesUsers)
        password += "-forgotten";
    emit uploaded();
    QTimer::singleShot(0, this, [this] { setOnline(false); });
    if (fault != NeverBack)
        QTimer::singleShot(msAway, this, [this] { setOnline(true), emit returned(); });
}
