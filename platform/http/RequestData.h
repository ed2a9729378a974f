#pragma once

#include "HttpHeader.h"
#include "HttpHost.h"
#include "SmartHandle.h"

#include <QBuffer>
#include <QList>
#include <QNetworkReply>
#include <QPointer>

#include <algorithm>
#include <any>

namespace qv {

/// One request of an HttpClient, from prepareGet() to the slot that gets it back. It holds the way there while it
/// waits, and the answer when it has ended. Handled through RequestPtr; the last copy frees what it carries.
class QV_PLATFORM_EXPORT RequestData
{
public:
    RequestData();
    RequestData(const RequestData &) = delete;
    RequestData &operator=(const RequestData &) = delete;
    ~RequestData();

    /// 0 where no answer came, or where the server fell silent in the middle of it.
    int statusCode() const { return status; }
    const HttpHeader &responseHeader() const { return header; }

    /// The URL asked for, without its credentials, then those it was redirected to.
    QList<QUrl> urls() const { return visited; }

    /// The first of these, with its credentials.
    QUrl urlWithLogin() const { return address; }

    /// Before execute(): one more line of the request's head.
    void setHeader(const QByteArray &name, const QByteArray &value) { ownHeaders.append({ name, value }); }

    /// Where the body goes: null while it stays in the request, and when the device was deleted.
    QIODevice *outputDevice() const { return output; }

    /// What keeps that alive with the request; may be null.
    qvb::smart<QIODevice> deviceHandle() const { return outputHandle; }

    /// The body, or what arrived of it, where there is no output device. Owned by the request, open for reading.
    QBuffer *getResponseBuffer() { return &buffer; }

    /// The same as text: ISO-8859-1 where the answer says so by one of its usual names (windows-1252 counts as one),
    /// else UTF-8.
    QString getResponseText() const;

    /// Bytes of the body so far, in the device or in the request.
    qint64 bodySize() const { return received; }

    /// A body that is longer ends there, and with it the request. So an endless one fills neither memory nor disk.
    /// Unless set: maxBytesKept for a body that stays in the request, no limit with an output device. A file ends, too,
    /// where it would leave less than diskReserve of its disk free.
    void setMaxBodySize(qint64 bytes) { maxBodySize = std::max<qint64>(bytes, 0); }
    static constexpr qint64 maxBytesKept = 32LL * 1024 * 1024;
    static constexpr qint64 diskReserve = 64LL * 1024 * 1024; // left to everybody else

    /// The body was longer than the request takes: what is there is its beginning.
    bool isCut() const { return cut; }

    /// For an output device that holds the first @p bytes of the body already: asks for what is behind them, if the
    /// body is still the one that @p validator stands for (RFC 9110, Range and If-Range: a strong ETag or a
    /// Last-Modified). Where the server sends the whole body, that takes the place of what is there; any other answer
    /// ends the request and leaves it alone.
    void resumeAt(qint64 bytes, const QByteArray &validator);

    /// After resumeAt(): those first bytes are still there.
    bool isResumed() const { return resumedAt > 0; }

    /// What resumeAt() takes, from the head of the answer; empty where the server gives nothing to go by.
    QByteArray validator() const;

    /// The answer came to its end as HTTP tells it, with a status that is no error.
    bool isWhole() const { return whole; }

    /// It did not, and might another time: the way there broke, or the server fell silent or has no answer for now
    /// (5xx).
    bool isBroken() const { return broken; }

    /// Why it did not, in Qt's words, those of TLS among them; empty where nobody had to tell Qt.
    QString errorText() const { return error; }

    /// The same for programs; NoError where nobody had to tell Qt.
    QNetworkReply::NetworkError networkError() const { return errorCode; }

    /// The server fell silent, or the request took longer than setTimeLimit() allows.
    bool isTimedOut() const { return timedOut; }

    /// The output device has not taken all that it was to take; a file that reached its disk's reserve is one, too.
    bool isDeviceFull() const { return deviceFull; }

    /// How long the request may take in all, however busy its server is; then it ends as one whose server fell silent.
    /// 0: as long as it likes. Unless set: msKeptLimit for a body that stays in the request, no limit with an output
    /// device.
    void setTimeLimit(int msDelay) { msTimeLimit = msDelay; }
    static constexpr int msKeptLimit = 5 * 60 * 1000;

    /// For the caller's own use; freed with the request at the latest.
    std::any userData;

private:
    friend class HttpClient;
    void begin(const HttpHeader &head);
    bool append(const char *bytes, qint64 size);
    void flush();

    QUrl address;  // with credentials
    HttpHost host; // the route there
    QPointer<QObject> receiver;
    QByteArray slot; // normalized signature, empty: nobody is told
    qint64 maxBodySize = maxBytesKept;

    QPointer<QIODevice> output;
    qvb::smart<QIODevice> outputHandle;
    QBuffer buffer;

    QList<QPair<QByteArray, QByteArray>> ownHeaders;
    qint64 resumedAt = 0;
    qint64 unwantedBytes = 0;

    HttpHeader header;
    QList<QUrl> visited;
    QString error;
    QNetworkReply::NetworkError errorCode = QNetworkReply::NoError;
    qint64 received = 0;
    qint64 nextLookAtDisk = 0;
    qint64 announced = -1;
    int status = 0;
    int msTimeLimit = msKeptLimit;
    bool isExecuted = false;
    bool isKept = true;      // the body stays here
    bool isBegun = false;    // the body
    bool isUnwanted = false; // that of an error, or another part
    bool cut = false;
    bool whole = false;
    bool broken = true;
    bool timedOut = false;
    bool deviceFull = false;
};

/// The shared handle of one request.
using RequestPtr = qvb::smart<RequestData>;

} // namespace qv
