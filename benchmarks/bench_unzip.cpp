// Unpacks one archive in the background, as the download manager does, and tells what it cost; or stops in the middle
// and tells how long that took. Called by compare-unzip.
#include "MainThreadCost.h"
#include "Unzipper.h"

#include <QCoreApplication>

#include <cstdio>
#include <memory>

int main(int argc, char **argv)
{
    if (argc != 3 && argc != 4) {
        std::fprintf(stderr, "usage: bench_unzip ARCHIVE FOLDER [STOP-AFTER-MS]\n");
        return 2;
    }
    QCoreApplication application(argc, argv);
    int result = 1;
    MainThreadCost cost;
    auto unzipper =
        std::make_unique<qv::Unzipper>(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]), false);
    QObject::connect(unzipper.get(), &qv::Unzipper::unzippingDone, [&result] {
        result = 0;
        QCoreApplication::quit();
    });
    QObject::connect(unzipper.get(), &qv::Unzipper::unzippingFailed, [](const QString &message) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        QCoreApplication::quit();
    });
    if (argc == 4) {
        QTimer::singleShot(QByteArray(argv[3]).toInt(), &application, [&unzipper] {
            QElapsedTimer latency;
            latency.start();
            unzipper.reset();
            std::printf("%.2f\n", double(latency.nsecsElapsed()) / 1e6);
            QCoreApplication::quit();
        });
    }
    QCoreApplication::exec();
    if (argc == 4)
        return 0;
    std::printf("%.4f %.3f %.1f %.1f %.1f\n", cost.wallSeconds(), cost.processorSeconds(), cost.mebibytesAboveIdle(),
                cost.gap(0.99), cost.gap(1));
    return result;
}
