// One check through the client, from the request to the table on show, against a server on loopback, and what it cost:
// wall and processor time, memory above the idle process, and how long the main thread was kept from a timer of 1 ms.
// With MODELS, that many of them and as many packages as there are, all of which are offered: what of the client's
// life keeps the main thread how long, a line for each.
// bench_check PACKAGES|FILE [CAMERAS [MODELS]]
#include "MainThreadCost.h"
#include "SoftwareUpdateClient.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
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

/// With @p isFleet all are of one release: none gives way to a newer one. Every second one of a model is in French.
QByteArray catalogue(int packages, int models, bool isFleet)
{
    QByteArray xml = "<softwareList base-url='http://updates.example/'><package-set type='Camera Firmware'>";
    for (int i = 0; i < packages; ++i) {
        const QByteArray n = QByteArray::number(i), model = "QC-" + QByteArray::number(i % models);
        xml += "<package><name>" + model + "</name><platform>" + model + "</platform><release>10.2."
            + (isFleet ? "4.7" : n) + "</release><public-release>10.2</public-release><status>STABLE</status><language>"
            + (isFleet && i / models % 2 == 1 ? "fr" : "de en") + "</language><file url='firmware/qc-" + n
            + ".zip' file-size='" + n
            + "kB' release-date='2024-03-05 10:20:30'/><release-notes language='en' url='http://updates.example/notes/"
            + n + ".html'/></package>";
    }
    return xml + "</package-set></softwareList>";
}

/// Hands out @p body from a process of its own, which ends with this one; @p msAway, as a server far away would.
/// Returns the port.
int serve(const QByteArray &body, int msAway)
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
            usleep(useconds_t(msAway) * 1000);
            for (qsizetype sent = 0, n = 1; sent < answer.size() && n > 0; sent += n)
                n = write(connection, answer.constData() + sent, size_t(answer.size() - sent));
        }
        close(connection);
    }
}

qv::SoftUpCurrentCameraVersions fleet(int cameras, int models)
{
    qv::SoftUpCurrentCameraVersions all;
    for (int i = cameras; i-- > 0;) {
        const std::string version = models < cameras ? "10.1." + std::to_string(i / models % 5) + ".34" : "1.0";
        all.append(qMakePair(QStringLiteral("QC-%1").arg(i % models), qv::VersionNumber(version)));
    }
    return all;
}

/// Ends the event loop a few ticks after the table has been painted.
class TableWatch : public QObject
{
public:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && object->parent()
            && object->parent()->objectName() == QLatin1String("tableWidget"))
            QTimer::singleShot(5, qApp, [] { QCoreApplication::exit(); });
        return false;
    }
};

/// How long @p step, and what it leaves to the event loop, keep the main thread from its timer.
template<class Step>
void measure(const char *name, Step step)
{
    MainThreadCost cost;
    step();
    QTimer::singleShot(100, qApp, [] { QCoreApplication::exit(); }); // to quit would close the windows
    QCoreApplication::exec();
    std::printf("%s\t%.1f\n", name, cost.gap(1));
}

/// Before the check; with @p cameras in the store.
void measureSettings(qv::SoftwareUpdateClient &client, const QWidget &host,
                     const qv::SoftUpCurrentCameraVersions &cameras)
{
    qv::SoftwareUpdateSettings settings;
    const auto read = [&] { client.getCurrentSettings(&settings); };
    measure("cameras set", [&] { client.setCurrentCameraVersions(cameras); });
    measure("cameras set again", [&] { client.setCurrentCameraVersions(cameras); });
    measure("settings read", read);
    QFile store(QSettings(QStringLiteral("Bench"), QStringLiteral("Host")).fileName());
    if (store.open(QIODevice::ReadWrite)) {
        QByteArray text = store.readAll();
        text.insert(text.indexOf("QC-"), "another:1,");
        store.seek(0);
        store.write(text);
        store.close();
    }
    measure("changed settings read", read);
    measure("hourly tick", [&] { QMetaObject::invokeMethod(&client, "queryLastUpdate"); });
    measure("settings dialog", [&] { client.queryForUpdate(); });
    host.findChild<QDialog *>()->reject();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// After the check.
void measureTable(qv::SoftwareUpdateClient &client, const QWidget &host)
{
    measure("table again", [&] { client.showAvailable(); });
    auto *table = host.findChild<QTableWidget *>(QStringLiteral("tableWidget"));
    std::printf("rows\t%d\n", table->rowCount());
    auto *languages = table->window()->findChild<QCheckBox *>();
    measure("all languages", [&] { languages->click(); });
    measure("all rows selected", [&] { table->selectAll(); });
    measure("own languages", [&] { languages->click(); });
    measure("selection gone", [&] { table->clearSelection(); });
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2 || argc > 4) {
        std::fprintf(stderr, "usage: bench_check PACKAGES|FILE [CAMERAS [MODELS]]\n");
        return 2;
    }
    const int cameraCount = argc > 2 ? QByteArray(argv[2]).toInt() : 100;
    const bool isFleet = argc > 3;
    const int models = isFleet ? QByteArray(argv[3]).toInt() : 500;
    QFile file(QString::fromLocal8Bit(argv[1]));
    const int port =
        serve(file.open(QIODevice::ReadOnly) ? file.readAll() : catalogue(QByteArray(argv[1]).toInt(), models, isFleet),
              isFleet ? 50 : 0);

    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "en_US.UTF-8"); // what is in French alone is hidden at first
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
    const qv::SoftUpCurrentCameraVersions cameras = fleet(cameraCount, isFleet ? models : cameraCount);
    client.setCurrentCameraVersions(cameras);
    if (isFleet)
        measureSettings(client, window, cameras);

    TableWatch watch;
    application.installEventFilter(&watch);
    QTimer::singleShot(120'000, &application, [] { QCoreApplication::exit(1); }); // nothing was offered
    MainThreadCost cost;
    client.doInitialCheck();
    const double msStart = cost.wallSeconds() * 1e3;
    const int result = QCoreApplication::exec();
    if (isFleet) {
        std::printf("check started\t%.1f\nwhole check\t%.1f\n", msStart, cost.gap(1));
        measureTable(client, window);
        return result;
    }
    std::printf("%.4f %.3f %.1f %.1f %.1f\n", cost.wallSeconds(), cost.processorSeconds(), cost.mebibytesAboveIdle(),
                cost.gap(0.99), cost.gap(1));
    return result;
}
