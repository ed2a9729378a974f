// Cameras and their firmware: what cameras say, the update of one with whatever may go wrong, and many at once.
#include "CameraServer.h"
#include "Firmware.h"
#include "HttpDigest.h"
#include "Memory.h"
#include "OnvifCameras.h"
#include "Row.h"
#include "Soap.h"

#include <QProcess>
#include <QSignalSpy>
#include <QSslConfiguration>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <numeric>

using namespace qv;

namespace {

QByteArray envelope(const QByteArray &body)
{
    return "<?xml version='1.0'?>\n<E:Envelope xmlns:E='http://www.w3.org/2003/05/soap-envelope'\n xmlns:t='http://"
           "www.onvif.org/ver10/device/wsdl'><E:Header><t:Model>head</t:Model></E:Header><E:Body>"
        + body + "</E:Body></E:Envelope>";
}

QByteArray information(const QByteArray &content)
{
    return envelope("<t:GetDeviceInformationResponse>" + content + "</t:GetDeviceInformationResponse>");
}

/// A firmware of @p bytes, and the update of cameras with it.
struct Update
{
    explicit Update(const QList<CameraServer *> &servers, qint64 bytes = 100'000)
    {
        QList<OnvifCamera> list;
        for (const CameraServer *server : servers)
            list.append({ server->url(), "admin", "secret", {}, {}, {} });
        cameras.setCameras(list);
        cameras.setTimes({ 3000, 300, 20, 1200 });
        package.suffix = "rpk";
        package.release = "4.3.0";
        package.platforms = { "QD-22", "QX" };
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("Firmware 4.3.0\n") > 0 && file.resize(bytes));
    }

    bool run(int msPatience = 20'000)
    {
        cameras.install(package, path);
        return !finished.isEmpty() || finished.wait(msPatience);
    }

    bool isInstalled() const { return finished.value(0).value(0).toBool(); }
    QString message() const { return finished.value(0).value(1).toString(); }

    QTemporaryDir folder;
    QString path = folder.filePath("firmware.rpk");
    PackageInfo package;
    OnvifCameras cameras;
    QSignalSpy finished { &cameras, &PackageInstaller::finished };
};

using SetUp = void (*)(CameraServer &);

} // namespace

Q_DECLARE_METATYPE(SetUp)

class TestOnvif : public QObject
{
    Q_OBJECT

private slots:
    void answers_data();
    void answers();
    void durations_data();
    void durations();
    void addresses_data();
    void addresses();
    void versions_data();
    void versions();
    void challenges_data();
    void challenges();
    void road_data();
    void road();
    void certificates();
    void reading();
    void others();
    void parallel();
    void cancelling_data();
    void cancelling();
    void cancellingTheWaiting();
    void memory();
};

void TestOnvif::answers_data()
{
    columns<QByteArray, QString, QString>("bytes", "model", "subcode");
    const QByteArray model = "<t:Model>QD-2204</t:Model>";
    const QByteArray fault = "<E:Fault><E:Code><E:Value>E:Sender</E:Value><E:Subcode><E:Value>ter:Action</E:Value>"
                             "<E:Subcode><E:Value> x:Deep </E:Value></E:Subcode></E:Subcode></E:Code></E:Fault>";
    const QString none("invalid");
    row("own prefixes", information(model), QString("QD-2204"), QString());
    row("default namespace", information("<Model xmlns='http://www.onvif.org/ver10/device/wsdl'>QD</Model>"),
        QString("QD"), QString());
    row("order, blanks and extensions",
        information("\n<x:Model xmlns:x='urn:x'>no</x:Model> <t:Firmware/>\n<t:Model>\n QD <!-- x -->&amp;<![CDATA[<]]>"
                    "</t:Model><t:Model>second</t:Model>"),
        QString("QD &<"), QString());
    row("prefix of another namespace", information("<t:Model xmlns:t='urn:x'>no</t:Model>"), QString(), QString());
    row("elsewhere", envelope("<t:Other>" + model + "</t:Other>"), QString(), QString());
    row("fault", envelope(fault), QString(), QString("Action Deep"));
    row("empty body", envelope({}), QString(), QString());
    row("nothing", QByteArray(), none, none);
    row("a page", QByteArray("<html><body/></html>"), none, none);
    row("older envelope", information(model).replace("www.w3.org/2003/05/soap", "schemas.xmlsoap.org/soap"), none,
        none);
    row("cut", information(model).chopped(8), none, none);
    row("a DTD", "<!DOCTYPE E [<!ENTITY m 'QD'>]>" + information("<t:Model>&m;</t:Model>").mid(22), none, none);
    row("unknown entity", information("<t:Model>&m;</t:Model>"), none, none);
    row("too long", information(model + QByteArray(mostSoapBytes, ' ')), none, none);
    row("too deep", information(QByteArray("<a>").repeated(40) + QByteArray("</a>").repeated(40)), none, none);
    row("too many", information(QByteArray("<a/>").repeated(5000)), none, none);
    row("long names", information('<' + QByteArray(100'000, 'a') + "/>"), none, none);
    QByteArray attributes;
    for (int i = 0; i < 20'000; ++i)
        attributes += " a" + QByteArray::number(i) + "=''";
    row("attributes", information("<t:Model" + attributes + "/>"), none, none);
}

void TestOnvif::answers()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, model);
    QFETCH(const QString, subcode);
    const SoapAnswer answer = readSoap(bytes);
    QCOMPARE(answer.isValid, model != "invalid");
    if (answer.isValid) {
        QCOMPARE(answer.text("tds:GetDeviceInformationResponse/tds:Model"), model);
        QCOMPARE(answer.subcodes.join(' '), subcode);
        QCOMPARE(answer.isFault(), !subcode.isEmpty());
    } else {
        QVERIFY(answer.texts.isEmpty() || bytes.startsWith("<html"));
    }
}

void TestOnvif::durations_data()
{
    columns<QString, int>("text", "ms");
    row("seconds", QString("PT5S"), 5000);
    row("parts", QString(" P1DT1H2M3.5S "), 90'000'000); // the most
    row("minutes", QString("PT2M"), 120'000);
    row("fraction", QString("PT0.25S"), 250);
    row("month", QString("P1M"), 90'000'000);
    row("endless", QString("PT" + QString(90, '9') + "H"), 90'000'000);
    for (const char *text : { "", "P", "PT", "P1DT", "5", "-PT5S", "PT5", "PT5M5M", "P1S", "PT٥S" })
        row(*text ? text : "empty", QString::fromUtf8(text), -1);
}

void TestOnvif::durations()
{
    QFETCH(const QString, text);
    QTEST(msDuration(text, 90'000'000), "ms");
}

void TestOnvif::addresses_data()
{
    columns<QString, QString, QString>("asked", "told", "url");
    const QString http("http://cam:81/onvif"), https("https://cam:444/onvif");
    row("its own", http, QString("http://cam:8080/up?a=b"), QString("http://cam:8080/up?a=b"));
    row("its own, usual port", http, QString("http://cam/up"), QString("http://cam/up"));
    row("no host", http, QString("http://0.0.0.0:8080/up"), QString("http://cam:8080/up"));
    row("an inner host without a port", http, QString("http://192.168.0.9/up"), QString("http://cam:81/up"));
    row("relative", http, QString("/up"), QString("http://cam:81/up"));
    row("credentials", http, QString("http://a:b@cam/up#x"), QString("http://cam/up"));
    row("better", http, QString("https://localhost/up"), QString("https://cam/up"));
    row("never weaker", https, QString("http://cam:80/up"), QString("https://cam:444/up"));
    row("as strong", https, QString("https://cam/up"), QString("https://cam/up"));
    row("files", http, QString("file:///etc/passwd"), QString());
    row("another scheme", http, QString("ftp://cam/up"), QString());
    row("none", http, QString("http://[/up"), QString());
}

void TestOnvif::addresses()
{
    QFETCH(const QString, asked);
    QFETCH(const QString, told);
    QTEST(uploadAddress(told, QUrl(asked)).toString(), "url");
}

void TestOnvif::versions_data()
{
    columns<QString, QString, QString, bool>("text", "version", "wanted", "isIt");
    row("plain", QString("10.4.1.17"), QString("10.4.1.17"), QString("10.4.1"), false);
    row("letter and build", QString("V5.7.3 build 220315"), QString("5.7.3 build 220315"), QString("5.7.3"), true);
    row("another build", QString("V5.7.3 build 220315"), QString("5.7.3 build 220315"), QString("V5.7.3 build 3"),
        false);
    row("the list knows the build", QString("5.7.3"), QString("5.7.3"), QString("5.7.3 build 3"), true);
    row("before a release", QString("5.7.3-rc1"), QString("5.7.3-rc1"), QString("5.7.3"), false);
    row("zeros", QString("5.7"), QString("5.7"), QString("5.7.0"), true);
    row("after a model", QString("QD2204 FW 4.1.0"), QString("4.1.0"), QString("4.1"), true);
    row("one number", QString("Release 7"), QString("7"), QString("7"), true);
    row("what a store cannot keep", QString("4.1.0 (a:b, c)"), QString("4.1.0"), QString("4.1.0"), true);
    row("none", QString("unknown"), QString("0"), QString("1"), false);
}

void TestOnvif::versions()
{
    QFETCH(const QString, text);
    QFETCH(const QString, wanted);
    QTEST(firmwareVersion(text).toString(), "version");
    QTEST(isFirmware(firmwareVersion(text), firmwareVersion(wanted)), "isIt");
}

void TestOnvif::challenges_data()
{
    columns<QByteArray, QByteArray>("header", "response");
    const QByteArray rest = "realm=\"http-auth@example.org\", qop=\"auth, auth-int\", "
                            "nonce=\"7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v\", opaque=\"a\\\"b\"";
    const QByteArray md5 = "8ca523f5e9506fed4657c9700eebdbec";
    const QByteArray sha256 = "753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1";
    row("no algorithm", "Digest " + rest, md5);
    row("the stronger one first", "Digest algorithm=SHA-256, " + rest + ", Digest algorithm=MD5, " + rest, sha256);
    row("between others", "Negotiate, Basic realm=\"Digest x\", digest Algorithm=MD5," + rest + ",NTLM a==", md5);
    row("unknown ones first", "Digest algorithm=SHA-512-256, " + rest + ", Digest algorithm=md5, " + rest, md5);
    row("with the body only", "Digest " + QByteArray(rest).replace("auth, ", ""), QByteArray());
    row("no nonce", QByteArray("Digest realm=\"a\""), QByteArray());
    row("Basic", QByteArray("Basic realm=\"a\", nonce=\"b\""), QByteArray());
    row("open quotes", QByteArray("Digest realm=\"a, nonce=b"), QByteArray());
}

void TestOnvif::challenges()
{
    QFETCH(const QByteArray, header);
    QFETCH(const QByteArray, response);
    const auto challenge = readDigestChallenge(header);
    QCOMPARE(challenge.has_value(), !response.isEmpty());
    if (!challenge)
        return;
    const QByteArray answer = digestAuthorization(*challenge, "GET", "/dir/index.html", "Mufasa", "Circle of Life",
                                                  "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ", 1);
    QVERIFY2(answer.contains("response=\"" + response + '"'), answer);
    QVERIFY2(answer.contains("nc=00000001") && answer.contains("opaque=\"a\\\"b\""), answer);
}

void TestOnvif::road_data()
{
    columns<SetUp, QString, int>("setUp", "message", "refused");
    const auto on = [](const char *name, const char *message, SetUp setUp, int refused = 0) {
        row(name, setUp, QString(message), refused);
    };
    on("all is well", "Version 4.3.0 is installed.", [](CameraServer &) {});
    on("Digest only", "is installed.", [](CameraServer &c) { c.login = CameraServer::Digest; });
    on("token only, by a fault", "is installed.",
       [](CameraServer &c) { c.login = CameraServer::Token | CameraServer::Silent; });
    on("token only, by 401", "is installed.", [](CameraServer &c) { c.login = CameraServer::Token; });
    on("nobody is asked", "is installed.", [](CameraServer &c) { c.login = CameraServer::Nobody; });
    on("clock is off", "is installed.", [](CameraServer &c) { c.login = CameraServer::Token, c.secondsAhead = -1234; });
    on("spelled unlike", "V4.3.0 build 22 is installed.", [](CameraServer &c) { c.nextVersion = "V4.3.0 build 22"; });
    on("names another host", "is installed.",
       [](CameraServer &c) { c.uploadAddress = QString("http://192.0.2.1:%1/upload").arg(c.serverPort()); });
    on("no times told", "is installed.", [](CameraServer &c) { c.uploadDelay.clear(), c.downTime.clear(); });
    on("is there already", "Version 4.10 is already there.", [](CameraServer &c) { c.version = "4.10"; });
    on("of another model", "No camera needs this firmware.", [](CameraServer &c) { c.model = "QB-1"; });
    on(
        "wrong password", "does not accept the user", [](CameraServer &c) { c.password = "other"; }, 2);
    on("offline", "cannot be reached", [](CameraServer &c) { c.setOnline(false); });
    on("no device service", "cannot be understood", [](CameraServer &c) { c.fault = CameraServer::Garbled; });
    on("no end", "cannot be understood", [](CameraServer &c) { c.fault = CameraServer::Endless; });
    on("no version", "cannot be understood", [](CameraServer &c) { c.version.clear(); });
    on("no uploads", "cannot be updated this way", [](CameraServer &c) { c.fault = CameraServer::ManagesNoHttp; });
    on("no address", "where the firmware is to go", [](CameraServer &c) { c.uploadAddress = "file:///etc"; });
    on("refuses the file", "it is no firmware", [](CameraServer &c) { c.fault = CameraServer::RefusesFile; });
    on("fails", "The camera reports: Flash is worn? out",
       [](CameraServer &c) { c.fault = CameraServer::FailsUpgrade; });
    on("cuts the upload", "could not be sent: ", [](CameraServer &c) { c.fault = CameraServer::CutsUpload; });
    on("takes no more", "It does not answer in time.", [](CameraServer &c) { c.fault = CameraServer::StallsUpload; });
    on("stays old", "runs version 4.1.0, not the new one", [](CameraServer &c) { c.fault = CameraServer::StaysOld; });
    on("never back", "has not come back", [](CameraServer &c) { c.fault = CameraServer::NeverBack; });
    on(
        "forgets its users", "does not accept the user", [](CameraServer &c) { c.fault = CameraServer::LosesUsers; },
        6);
}

void TestOnvif::road()
{
    QFETCH(const SetUp, setUp);
    QFETCH(const QString, message);
    CameraServer camera;
    setUp(camera);
    Update update({ &camera }, 12'000'000);
    QSignalSpy progress(&update.cameras, &PackageInstaller::progress);
    QVERIFY(update.run());
    QVERIFY2(update.message().contains(message), qPrintable(update.message()));
    QCOMPARE(update.isInstalled(),
             message.contains("installed.") || message.contains("already") || message.startsWith("No camera"));
    QTEST(camera.refused, "refused");
    QVERIFY(!camera.given.contains("Basic"));
    QVERIFY(!message.endsWith("is installed.") || camera.received == 12'000'000);
    QCOMPARE(progress.last().at(0), progress.last().at(1));
}

void TestOnvif::certificates()
{
    QTemporaryDir folder;
    const QString keyPath = folder.filePath("key"), path = folder.filePath("certificate");
    QProcess::execute("openssl",
                      { "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=camera", "-addext",
                        "subjectAltName=IP:127.0.0.1", "-keyout", keyPath, "-out", path });
    QFile key(keyPath);
    QVERIFY(key.open(QIODevice::ReadOnly));
    const QSslCertificate certificate = QSslCertificate::fromPath(path).value(0);
    const QByteArray pin = certificate.digest(QCryptographicHash::Sha256).toHex(':').toUpper();
    CameraServer camera, open;
    camera.setCertificate(certificate, QSslKey(&key, QSsl::Rsa));
    camera.login = CameraServer::Token;
    camera.uploadAddress = "http://127.0.0.1/upload"; // to be sent by TLS in spite of that
    const auto outcome = [](const QUrl &url, const QByteArray &pin) {
        Update update({});
        update.cameras.setCameras({ { url, "admin", "secret", "QD-2204", pin, {} } });
        return update.run() ? update.message() : QString();
    };
    for (const QByteArray &wrong : { QByteArray(pin).replace(0, 2, pin.startsWith("00") ? "01" : "00"), pin.left(20) })
        QVERIFY(outcome(camera.url(), wrong).contains("The certificate is not that of the camera."));
    QVERIFY(outcome(open.url(), pin).contains("The certificate is not that of the camera."));
    QVERIFY(outcome(camera.url(), {}).contains("cannot be reached") && camera.actions.isEmpty());
    QVERIFY(outcome(camera.url(), pin).contains("is installed.") && open.actions.isEmpty());

    // One that everybody trusts is not the pinned one either.
    const QSslConfiguration usual = QSslConfiguration::defaultConfiguration();
    QSslConfiguration trusting = usual;
    trusting.setCaCertificates({ certificate });
    QSslConfiguration::setDefaultConfiguration(trusting);
    camera.version = "4.1.0";
    camera.actions.clear();
    const QString refusal = outcome(camera.url(), QByteArray(64, '0'));
    const bool isAsked = !camera.actions.isEmpty();
    const QString trusted = outcome(camera.url(), {});
    QSslConfiguration::setDefaultConfiguration(usual);
    QVERIFY2(refusal.contains("The certificate is not that of the camera.") && !isAsked, qPrintable(refusal));
    QVERIFY2(trusted.contains("is installed."), qPrintable(trusted));
}

void TestOnvif::reading()
{
    QList<std::shared_ptr<CameraServer>> servers;
    QList<OnvifCamera> list;
    for (int i = 0; i < 6; ++i) {
        servers.append(std::make_shared<CameraServer>(QHostAddress(0x7f000001 + quint32(i))));
        list.append({ servers.last()->url(), "admin", "secret", {}, {}, {} });
    }
    servers[1]->version = "V4.0.9 build 7";
    servers[2]->model = "QX,1";
    servers[3]->model = "QY:1";
    list[3].model = "QY";
    servers[4]->setOnline(false);
    servers[5]->version = "none";
    OnvifCameras cameras(list);
    QSignalSpy read(&cameras, &OnvifCameras::versionRead), failed(&cameras, &OnvifCameras::cameraFailed);
    SoftUpCurrentCameraVersions versions;
    bool isRead = false;
    connect(&cameras, &OnvifCameras::versionsRead, this, [&](const SoftUpCurrentCameraVersions &all) {
        versions = all;
        isRead = true;
    });
    cameras.readVersions();
    QVERIFY(!cameras.setCameras({}));
    QTRY_VERIFY(isRead);
    QCOMPARE(read.size(), 5);
    QCOMPARE(failed.size(), 1);
    QCOMPARE(failed.at(0).at(0).toInt(), 4);
    const SoftUpCurrentCameraVersions expected { { "QD-2204", VersionNumber("4.0.9 build 7") },
                                                 { "QY", VersionNumber("4.1.0") } };
    QCOMPARE(versions, expected);

    isRead = false;
    QVERIFY(cameras.setCameras({}));
    cameras.readVersions();
    QVERIFY(isRead && versions.isEmpty());
}

void TestOnvif::others()
{
    CameraServer camera;
    Update update({ &camera });
    QStringList told; // versions, by the first camera alone
    connect(&update.cameras, &OnvifCameras::versionsRead, this,
            [&told](const SoftUpCurrentCameraVersions &all) { told << all.value(0).second.toString(); });
    update.cameras.readVersions();
    QTRY_COMPARE(told.size(), 1);
    QVERIFY(update.run() && update.isInstalled());
    QCOMPARE(told, QStringList({ "4.1.0", "4.3.0" }));
    update.finished.clear();
    camera.actions.clear();
    update.package.suffix = "zip";
    QVERIFY(update.run() && !update.isInstalled() && camera.actions.isEmpty());
    update.finished.clear();
    update.package.suffix = "rpk";
    update.package.release = "4.3.0 build 7"; // for which the version from before would do, as it tells no build
    camera.version = "4.3.0";
    camera.fault = CameraServer::StaysOld;
    QVERIFY(update.run() && !update.isInstalled() && update.message().contains("runs version 4.3.0, not the new one"));
    update.finished.clear();
    camera.actions.clear();
    QFile::remove(update.path);
    connect(&update.cameras, &PackageInstaller::finished, this, [&] { QVERIFY(update.cameras.setCameras({})); });
    QVERIFY(update.run() && !update.isInstalled() && update.message().contains("The firmware cannot be read"));
    QVERIFY(!camera.actions.contains("upload"));
}

void TestOnvif::parallel()
{
    // Two of one host, and four of others; one fails, which is the others' no matter.
    QList<std::shared_ptr<CameraServer>> servers;
    QList<CameraServer *> list;
    QHash<QString, int> busy;
    int most = 0, mostOfOne = 0;
    for (const quint32 host : { 1, 1, 2, 3, 4, 5 }) {
        auto server = std::make_shared<CameraServer>(QHostAddress(0x7f000000 + host));
        const QString name = server->url().host();
        connect(server.get(), &CameraServer::uploading, this, [&, name] {
            mostOfOne = std::max(mostOfOne, ++busy[name]);
            const QList<int> all = busy.values();
            most = std::max(most, std::accumulate(all.cbegin(), all.cend(), 0));
        });
        connect(server.get(), &CameraServer::returned, this, [&, name] { --busy[name]; });
        servers.append(server);
        list.append(server.get());
    }
    servers[3]->model = "QB-1";
    Update update(list);
    update.cameras.setMaxParallel(3);
    QVERIFY(update.run());
    QVERIFY2(update.isInstalled() && update.message().count('\n') == 4, qPrintable(update.message()));
    QCOMPARE(most, 3);
    QCOMPARE(mostOfOne, 1);
}

void TestOnvif::cancelling_data()
{
    columns<QString, QString>("stage", "message");
    for (const char *action : { "GetSystemDateAndTime", "GetDeviceInformation", "StartFirmwareUpgrade" })
        row(action, QString(action), QString("Cancelled"));
    row("while it is sent", QString("uploading"), QString("Cancelled"));
    row("when it is there", QString("uploaded"), QString("is installed."));
    row("at the first progress", QString("progress"), QString("Cancelled"));
}

void TestOnvif::cancelling()
{
    QFETCH(const QString, stage);
    CameraServer camera;
    Update update({ &camera }, 30'000'000);
    camera.fault = stage == "uploading" ? CameraServer::StallsUpload : CameraServer::None;
    bool isCancelled = false;
    const auto cancel = [&](const QString &at) {
        if (at == stage && !std::exchange(isCancelled, true))
            update.cameras.cancel();
    };
    connect(&camera, &CameraServer::asked, this, cancel);
    connect(&camera, &CameraServer::uploading, this, [&] { cancel("uploading"); });
    connect(&camera, &CameraServer::uploaded, this, [&] { cancel("uploaded"); });
    connect(&update.cameras, &PackageInstaller::progress, this, [&] { cancel("progress"); });
    QVERIFY(update.run());
    QFETCH(const QString, message);
    QVERIFY2(update.message().contains(message), qPrintable(update.message()));
    QCOMPARE(update.finished.size(), 1);
    // Whoever was cancelled can be updated.
    camera.fault = CameraServer::None;
    update.finished.clear();
    QVERIFY(update.run() && update.isInstalled());
}

void TestOnvif::cancellingTheWaiting()
{
    CameraServer first, second; // of one host
    Update update({ &first, &second });
    connect(&first, &CameraServer::uploaded, &update.cameras, &OnvifCameras::cancel);
    QVERIFY(update.run());
    QVERIFY2(!update.isInstalled() && update.message().contains("is installed.\n")
                 && update.message().endsWith("Cancelled before the camera had the firmware."),
             qPrintable(update.message()));
    QCOMPARE(second.actions, QStringList());
}

void TestOnvif::memory()
{
    CameraServer camera;
    Update update({ &camera }, 20 << 20);
    const qint64 before = peakKiB(true);
    QVERIFY(update.run() && update.isInstalled());
    QCOMPARE(camera.received, qint64(20 << 20));
#ifndef __SANITIZE_ADDRESS__
    QVERIFY2(peakKiB(false) - before < 8 * 1024, qPrintable(QString::number(peakKiB(false) - before)));
#else
    Q_UNUSED(before)
#endif
}

QTEST_GUILESS_MAIN(TestOnvif)

#include "tst_onvif.moc"
