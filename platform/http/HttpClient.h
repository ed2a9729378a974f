#pragma once

#include "HttpHost.h"
#include "RequestData.h"

#include <QList>
#include <QObject>
#include <QPair>
#include <QTimer>

class QNetworkAccessManager;
class QNetworkReply;

namespace qv {

/// Fetches pages and files over HTTP, one request at a time, in the order of execute(). Lives on the GUI thread; all
/// signals and slots are called from its event loop, never from inside a call.
/// @code
/// HttpClient client(host);
/// client.get("/manual.pdf", {}, this, SLOT(manualHere(RequestPtr)), &file, nullptr);
/// @endcode
///
/// Redirects are followed, at most maxRedirects and never from https to http. A server that sends nothing for a minute
/// ends the request. Whatever went wrong, the slot is called once, and what arrived is there; only where a server
/// breaks off while the GUI thread is 4 MiB behind it, the end of what it sent may be lost. Cookies are neither kept
/// nor sent, compressed answers are not asked for, and the system is never asked for a proxy. A client that has nothing
/// to do holds neither thread nor descriptor. While Qt still reads, and cannot be stopped reading, what a server sends
/// without end, requests end at once, as those whose server is silent (see HttpThreads).
///
/// The client, the receiver or the output device may be deleted at any time, in a slot called by the client too:
/// without its receiver a request is dropped, without its device it ends.
class QV_PLATFORM_EXPORT HttpClient : public QObject
{
    Q_OBJECT

public:
    static constexpr int maxRedirects = 10;
    static constexpr int msStallLimit = 60'000;

    /// As an output device: the body stays in the request, as it does without a device. Never to be dereferenced.
    static QIODevice *const keepInRequest;

    HttpClient();
    explicit HttpClient(const HttpHost &host);
    ~HttpClient() override;

    /// The host of the requests prepared from now on; those prepared before keep theirs.
    void setHost(const HttpHost &host);

    /// How long a server may be silent; msStallLimit unless set.
    void setStallLimit(int msDelay);

    /// A GET that waits for execute().
    /// @param path        encoded, with or without a query; empty for the host's own path
    /// @param parameters  go behind it as a query
    /// @param receiver    told about the end by @p slot; null: nobody is. When it dies the request is dropped
    /// @param slot        SLOT(name(RequestPtr)), private ones too. The output device is flushed by then
    /// @param output      takes the body as it comes, whatever the status; opened and owned by the caller. Null or
    ///                    keepInRequest: RequestData::getResponseBuffer() takes it. A device that is not open for
    ///                    writing or takes no more ends the request at that point
    /// @param outputHandle keeps @p output alive as long as the request; may be null
    RequestPtr prepareGet(const QString &path, const QMap<QString, QVariant> &parameters, QObject *receiver,
                          const char *slot, QIODevice *output, const qvb::smart<QIODevice> &outputHandle);

    /// The same for @p url as it stands, its scheme, port, query and credentials, over the route of the client's host
    /// and without the credentials of that host's server. Anything but http and https ends with status 0.
    RequestPtr prepareGet(const QUrl &url, QObject *receiver, const char *slot, QIODevice *output,
                          const qvb::smart<QIODevice> &outputHandle);

    /// Starts @p request when those before it have ended. A request runs once only.
    void execute(const RequestPtr &request);

    /// prepareGet() and execute() in one.
    RequestPtr get(const QString &path, const QMap<QString, QVariant> &parameters, QObject *receiver, const char *slot,
                   QIODevice *output, const qvb::smart<QIODevice> &outputHandle);

    /// Drops the executing request: nothing is told about it any more, and what it carries is freed. Those that wait
    /// behind it take their turn. A request whose slot is being called has ended already and is left alone.
    void reset();

    /// Drops @p request as reset() does, be it executing or waiting; it will not run again. One that has ended, or was
    /// never executed here, is left alone.
    void drop(const RequestPtr &request);

    /// From execute() until the slot has returned.
    bool isExecutingRequest() const { return phase != Idle; }

    /// Path and query of @p url, percent-encoded; "/" where it has none, empty for an empty URL.
    static QString encodedUrlPath(const QUrl &url);
    static QString encodedUrlPath(const QString &url);

    /// The arguments of downloadProgress() for these byte counts.
    static QPair<int, int> progressOf(qint64 bytes, qint64 totalBytes);

signals:
    void requestStarted(const RequestPtr &request);

    /// At most 20 a second, and one more at the end. @p totalBytes is -1 where the server announces no size. Both count
    /// bytes up to a total of 2 GiB; beyond, both are divided by the same power of two. An unannounced size stops the
    /// count there.
    void downloadProgress(int bytes, int totalBytes);

private:
    enum Phase { Idle, Waiting, Running, Ended, Reporting };

    void start();
    void send(const RequestData &request);
    void ask();
    void readHead();
    void readBody();
    void endRequest();
    void dropReply();
    void report();
    void reportProgress();
    void next();

    HttpHost host;
    int msStallDelay = msStallLimit;
    QNetworkAccessManager *network = nullptr; // made with the first request: the first of a process is costly
    QNetworkReply *reply = nullptr;           // while Running
    Phase phase = Idle;
    RequestPtr current;
    QList<RequestPtr> waiting;
    QMetaObject::Connection receiverDeath;
    QTimer stallTimer;
    QTimer wholeTimer;    // of the request, however busy its server is
    QTimer roundTimer;    // runs while there is more to read
    QTimer progressTimer; // runs while there is progress to tell
    qint64 bytesReported = 0;
};

} // namespace qv
