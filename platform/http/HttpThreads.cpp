// The end of access managers. Called where a check or a client is done with one; leaves behind none but that whose
// thread a server keeps busy.
#include "HttpThreads.h"

#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>

namespace qv {

HttpThreads &HttpThreads::instance()
{
    static auto *const threads = new HttpThreads; // never deleted: it would wait for the threads
    return *threads;
}

void HttpThreads::release(QNetworkAccessManager *manager)
{
    if (!manager)
        return;
    manager->disconnect();
    manager->setParent(this);
    bool isReading = false;
    for (QNetworkReply *reply : manager->findChildren<QNetworkReply *>()) {
        isReading = isReading || reply->isRunning();
        reply->abort(); // nothing, where it has finished
    }
    if (!isReading) {
        manager->deleteLater();
        return;
    }
    // Nobody can listen there, so the answer comes at once: as soon as the manager's thread is there to give it.
    const QUrl nowhere(QStringLiteral("http://127.0.0.1:0/"));
    if (asked++ == 0)
        busy.start();
    manager->setProxy(QNetworkProxy::NoProxy);
    connect(manager->get(QNetworkRequest(nowhere)), &QNetworkReply::finished, this, [this, manager] {
        manager->deleteLater();
        if (--asked == 0)
            emit freed();
    });
}

} // namespace qv
