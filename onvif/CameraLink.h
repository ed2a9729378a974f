#pragma once

#include "HttpDigest.h"
#include "OnvifCameras.h"
#include "OnvifTexts.h"
#include "Soap.h"

#include <QTimer>

#include <functional>
#include <optional>

class QNetworkAccessManager;
class QNetworkReply;
class QNetworkRequest;

namespace qv {

/// What a request came to.
struct CameraAnswer
{
    CameraNews news = CameraNews::Asked; ///< anything else: it failed, and so
    QString detail;                      ///< of that
    SoapAnswer soap;
};

/// Speaks with one camera, one request at a time: who we are, the clock, the certificate, and what an answer may cost.
/// Goes to the camera directly, through no proxy, and follows no redirect. Lives in the GUI thread.
///
/// Who we are is told where a camera asks: by HTTP Digest, then by a username token, each once; the one that the camera
/// took comes first the next time. Basic is never answered.
class CameraLink : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<void(const CameraAnswer &)>;

    /// @p camera and @p times are the caller's and outlive this object.
    CameraLink(const OnvifCamera &camera, const OnvifTimes &times, QObject *parent);
    ~CameraLink() override;

    /// Sends @p body and calls @p handler with the answer, never from within this call; what was asked before is
    /// forgotten. A request without @p credentials tells nobody who we are.
    void ask(const QString &body, bool credentials, const Handler &handler);

    /// Posts the file at @p path to @p address, piece by piece, with uploaded() meanwhile.
    void upload(const QUrl &address, const QString &path, const Handler &handler);

    /// How long the camera may take to answer once it has the whole file.
    void setMsForAnswer(int ms) { msForAnswer = ms; }

    /// By how much the camera's clock is ahead of ours.
    void setClockAhead(qint64 seconds) { secondsAhead = seconds; }

    /// Where the device service is.
    const QUrl &address() const { return service; }

    /// Ends what is under way, of which nothing more is heard, and all connections.
    void drop();

signals:
    void uploaded(qint64 bytes, qint64 total);

private:
    enum class Login { None, Digest, Token };

    void begin(const QUrl &url, const Handler &whenAnswered);
    void failLater(CameraNews news, const QString &detail = QString());
    void send(Login login);
    void sendFile(QNetworkRequest request);
    QNetworkAccessManager &access();
    bool isPinned(const QNetworkReply &reply) const;
    void watch(QNetworkReply *reply);
    void evaluate(QNetworkReply *reply);
    CameraAnswer answerToQuestion(const QNetworkReply &reply) const;
    CameraAnswer answerToFile(const QNetworkReply &reply) const;
    bool chooseLogin(const QByteArray &challenges);
    void finish(const CameraAnswer &answer);
    void forget();

    const OnvifCamera &camera;
    const OnvifTimes &times;
    QUrl service;
    QNetworkAccessManager *network = nullptr;
    QNetworkReply *current = nullptr;
    QTimer guard;

    QUrl target;
    QString body; // of a question
    QString path; // of a file, instead of it
    Handler handler;
    bool mayTell = false; // who we are
    QByteArray received;
    CameraNews failure = CameraNews::Asked; // why we ended it; Asked: we did not
    QString failureDetail;

    Login worked = Login::None; // the last that a camera took
    Login tried = Login::None;
    bool hasTriedDigest = false;
    bool hasTriedToken = false;
    std::optional<DigestChallenge> challenge;
    int answersToChallenge = 0;
    qint64 secondsAhead = 0;
    int msForAnswer = 0;
};

} // namespace qv
