// One check through the client, from the request to the table on show, against a server on loopback, and what it cost:
// wall and processor time, memory above the idle process, and how long the main thread was kept from a timer of 1 ms.
// bench_check PACKAGES|FILE [CAMERAS]
#include "MainThreadCost.h"
#include "SoftwareUpdateClient.h"

#include <QApplication>
#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>

#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

QByteArray catalogue(int packages)
{
    QByteArray xml = "<softwareList base-url='http://updates.example/'><package-set type='Camera Firmware'>";
    for (int i = 0; i < packages; ++i) {
        const QByteArray n = QByteArray::number(i), model = "QC-" + QByteArray::number(i % 500);
        xml += "<package><name>" + model + "</name><platform>" + model + "</platform><release>10.2." + n
            + "</release><public-release>10.2</public-release><status>STABLE</status><language>de en</language>"
              "<file url='firmware/qc-"
            + n + ".zip' file-size='" + n
            + "kB' release-date='2024-03-05 10:20:30'/><release-notes language='en' url='http://updates.example/notes/"
            + n + ".html'/></package>";
    }
    return xml + "</package-set></softwareList>";
}

/// Hands out @p body from a process of its own, which ends with this one. Returns the port.
int serve(const QByteArray &body)
{
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (bind(listener, generic, size) != 0 || listen(listener, 1) != 0 || getsockname(listener, generic, &size) != 0)
        return 0;
    if (fork() != 0)
        return ntohs(address.sin_port);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const QByteArray answer = "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: "
        + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    for (;;) {
        const int connection = accept(listener, nullptr, nullptr);
        char request[4096];
        if (read(connection, request, sizeof request) > 0) {
            for (qsizetype sent = 0, n = 1; sent < answer.size() && n > 0; sent += n)
                n = write(connection, answer.constData() + sent, size_t(answer.size() - sent));
        }
        close(connection);
    }
}

/// Ends the event loop a few ticks after the table has been painted.
class TableWatch : public QObject
{
public:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && object->parent()
            && object->parent()->objectName() == QLatin1String("tableWidget"))
            QTimer::singleShot(5, qApp, &QCoreApplication::quit);
        return false;
    }
};

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: bench_check PACKAGES|FILE [CAMERAS]\n");
        return 2;
    }
    QFile file(QString::fromLocal8Bit(argv[1]));
    const int port = serve(file.open(QIODevice::ReadOnly) ? file.readAll() : catalogue(QByteArray(argv[1]).toInt()));

    qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir home;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home.path());
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Bench"));
    QCoreApplication::setApplicationName(QStringLiteral("Host"));
    QTableWidget window(1, 1); // a host has found its fonts before
    window.setItem(0, 0, new QTableWidgetItem(QStringLiteral("Camera")));
    window.show();
    QCoreApplication::processEvents();

    qv::SoftwareUpdateClient client(QStringLiteral("Host"), qv::VersionNumber("1.0"),
                                    QStringLiteral("http://127.0.0.1:%1/").arg(port), &window);
    qv::SoftUpCurrentCameraVersions cameras;
    for (int i = argc == 3 ? QByteArray(argv[2]).toInt() : 100; i-- > 0;)
        cameras.append(qMakePair(QStringLiteral("QC-%1").arg(i), qv::VersionNumber("1.0")));
    client.setCurrentCameraVersions(cameras);

    TableWatch watch;
    application.installEventFilter(&watch);
    QTimer::singleShot(120'000, &application, [] { QCoreApplication::exit(1); }); // nothing was offered
    MainThreadCost cost;
    client.doInitialCheck();
    const int result = QCoreApplication::exec();
    std::printf("%.4f %.3f %.1f %.1f %.1f\n", cost.wallSeconds(), cost.processorSeconds(), cost.mebibytesAboveIdle(),
                cost.gap(0.99), cost.gap(1));
    return result;
}
