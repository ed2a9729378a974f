// Downloads one package the way the update client does and tells what it cost: wall and processor time, memory above
// the idle process, and how long the main thread was kept from a timer of 1 ms. Called by compare-download, and by
// compare-resume with the attempts that a policy allows.
#include "DownloadManager.h"
#include "MainThreadCost.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    if (argc < 4) {
        std::fprintf(stderr, "usage: bench_download URL BYTES FILE [SHA256 [ATTEMPTS]]\n");
        return 2;
    }
    QCoreApplication application(argc, argv);
    qv::PackageInfo package;
    package.url = QUrl(QString::fromLocal8Bit(argv[1]));
    package.fileSize = QByteArray(argv[2]).toLongLong();
    if (argc > 4)
        package.sha256 = argv[4];

    qv::DownloadManager manager(package.url);
    if (argc > 5) {
        qv::UpdatePolicy policy;
        policy.followAddresses = true;
        policy.downloadAttempts = QByteArray(argv[5]).toInt();
        manager.setPolicy(policy);
    }
    int result = 1;
    QObject::connect(&manager, qOverload<>(&qv::DownloadManager::downloadSuccess), [&result] { result = 0; });
    QObject::connect(&manager, qOverload<>(&qv::DownloadManager::downloadSuccess), &QCoreApplication::quit);
    QObject::connect(&manager, qOverload<int>(&qv::DownloadManager::downloadFailure), &QCoreApplication::quit);

    MainThreadCost cost;
    manager.startDownload(package, QString::fromLocal8Bit(argv[3]));
    QCoreApplication::exec();
    std::printf("%.3f %.3f %.1f %.1f %.1f\n", cost.wallSeconds(), cost.processorSeconds(), cost.mebibytesAboveIdle(),
                cost.gap(0.99), cost.gap(1));
    return result;
}
