// The servers that the pages name: an unchanged catalogue stays with each of them, as the connection shows.
#include "CheckOutcome.h"
#include "DemoServer.h"
#include "Row.h"
#include "Signer.h"
#include "TestHost.h"

#include <QtNetwork>

using namespace qv;

namespace {

/// Stands between a client and a server, writes down the status of each answer, and counts bytes.
class Relay : public QTcpServer
{
public:
    explicit Relay(quint16 port)
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this, port] {
            QTcpSocket *client = nextPendingConnection();
            auto *server = new QTcpSocket(client);
            connect(client, &QTcpSocket::readyRead, server, [=] { server->write(client->readAll()); });
            connect(client, &QTcpSocket::disconnected, client, &QTcpSocket::deleteLater);
            connect(server, &QTcpSocket::disconnected, client, &QTcpSocket::disconnectFromHost);
            connect(server, &QTcpSocket::readyRead, client, [this, client, server] {
                const QByteArray bytes = server->readAll();
                if (bytes.startsWith("HTTP/1."))
                    statuses << QString::fromLatin1(bytes).section(' ', 1, 1);
                sent += client->write(bytes);
            });
            server->connectToHost(QHostAddress::LocalHost, port);
        });
    }

    QStringList statuses;
    qint64 sent = 0;
};

/// The port that a program serves on, which is the first number in its first line.
quint16 started(QProcess &program, QStringList command)
{
    const QString name = command.takeFirst();
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(name, command);
    while (!program.canReadLine() && program.waitForReadyRead()) { }
    return quint16(QRegularExpression("(^|port )(\\d+)").match(program.readLine()).captured(2).toInt());
}

} // namespace

class tst_servers : public QObject
{
    Q_OBJECT

private slots:
    void unchangedCatalogueStaysThere_data()
    {
        columns<QStringList>("command");
        row("nginx", QStringList { SUPPORT "/serve-page", PAGE });
        row("Python",
            QStringList { "/usr/bin/python3", "-um", "http.server", "0", "--bind", "127.0.0.1", "--directory" });
        row("the demo's", QStringList());
    }
    void unchangedCatalogueStaysThere()
    {
        QFETCH(QStringList, command);
        if (command.value(0).endsWith("serve-page") && QStandardPaths::findExecutable("nginx").isEmpty()
            && QStandardPaths::findExecutable("nginx", { "/usr/sbin" }).isEmpty())
            QSKIP("there is no nginx: scripts/install-packages nginx");
        TestHost host;
        QTemporaryDir folder;
        const Signer signer;
        QFile catalogue(SITE "/catalogue.xml");
        QVERIFY(catalogue.open(QIODevice::ReadOnly));
        const QByteArray sealed =
            catalogue.readAll().replace("<softwareList", "<softwareList serial='1' expires='2999-01-01T00:00:00Z'");
        for (const auto &[name, bytes] :
             { std::pair("catalogue.xml", sealed), { "catalogue.xml.minisig", signer.sign(sealed) } }) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        }

        DemoServer demo({ SITE });
        QProcess program;
        const quint16 port = command.isEmpty() ? demo.serverPort() : started(program, command << folder.path());
        QVERIFY2(port != 0, "see what the server said");
        Relay relay(port);

        SoftwareUpdateClient client("P", VersionNumber("1.0"),
                                    QString("http://127.0.0.1:%1/catalogue.xml").arg(relay.serverPort()), &host.window);
        qint64 found = 0;
        UpdatePolicy policy;
        policy.trustedKeys << (command.isEmpty() ? demo.key() : signer.key());
        policy.catalogueCache = folder.filePath("cache");
        policy.announce = [](const PackageInfoList &) { return true; };
        policy.checked = [&found](const CheckOutcome &outcome) { found = outcome.packages.size(); };
        client.setPolicy(policy);
        for (const QStringList &statuses : { QStringList { "200", "200" }, QStringList { "304", "304" } }) {
            relay.statuses.clear();
            relay.sent = found = 0;
            client.checkNow();
            QTRY_VERIFY(found > 0);
            QThreadPool::globalInstance()->waitForDone(); // until the catalogue is kept
            QCOMPARE(relay.statuses, statuses);
        }
        QVERIFY(relay.sent < 1024); // for an unchanged catalogue, however long
        program.terminate();
        program.waitForFinished();
    }
};

QTEST_MAIN(tst_servers)
#include "tst_servers.moc"
