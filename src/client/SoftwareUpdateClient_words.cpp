// Words that help, for hosts that want them (UpdatePolicy::explains): what a failed check, download or installer is
// told as, how far a download is, and release notes in the user's language. Called where else the usual texts are
// shown; without that policy these stay.
#include "SoftwareUpdateClient_p.h"

#include "DownloadManager.h"
#include "HttpLogin.h"
#include "Kinds.h"
#include "PolicyTexts.h"

#include <QCoreApplication>
#include <QLocale>
#include <QNetworkReply>

#include <limits>

namespace qv {

namespace {

constexpr qint64 msBetweenTexts = 500;

} // namespace

/// A request leaves for @p url, that of a catalogue or of its signature.
void SoftwareUpdateClientPrivate::noteRequest(const QUrl &url)
{
    asked = url;
    if (unsealed.isEmpty())
        isPage = false;
}

/// That of a catalogue: a page in its place explains whatever fails then.
void SoftwareUpdateClientPrivate::noteAnswer(QNetworkReply &reply)
{
    constexpr qint64 enough = 1024;
    asked = reply.url();
    if (policy.explains && unsealed.isEmpty() && reply.error() == QNetworkReply::NoError)
        isPage = isWebPage(reply.header(QNetworkRequest::ContentTypeHeader).toString(), reply.peek(enough));
}

Failure SoftwareUpdateClientPrivate::failureOf(const QNetworkReply &reply)
{
    const int refused = refusedChallenge(reply);
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    return qv::failureOf(reply.error(), refused != 0 ? refused : status);
}

/// @p usual, or in its place what is to be told of the check's @p failure.
QString SoftwareUpdateClientPrivate::toldText(const QString &usual, Failure failure) const
{
    if (!policy.explains)
        return usual;
    if (isPage)
        failure.kind = Failure::WebPage;
    failure.server = asked.host();
    failure.place = asked.toDisplayString(QUrl::RemoveUserInfo);
    return failureText(failure);
}

/// The same of a download.
QString SoftwareUpdateClientPrivate::toldText(const QString &usual, const DownloadManager *manager) const
{
    return manager && policy.explains ? manager->failureText() : usual;
}

void SoftwareUpdateClientPrivate::tellProgress(const Download &download, int value, int total)
{
    if (!policy.explains || !progressDialog)
        return;
    if (!progressClock.isValid())
        progressClock.start();
    const qint64 msElapsed = progressClock.elapsed();
    if (msProgressTold >= 0 && msElapsed - msProgressTold < msBetweenTexts)
        return;
    msProgressTold = msElapsed;
    const qint64 size = download.package.fileSize;
    const bool isScaled =
        total > 0 && size > std::numeric_limits<int>::max(); // see DownloadManager::downloadProgress()
    const qint64 all = size > 0 ? size : total;
    const qint64 bytes = isScaled ? qint64(double(size) / total * value) : value;
    progressDialog->setLabelText(downloadingText() + QLatin1Char('\n') + progressText(bytes, all, msElapsed));
}

/// An installer that lies in the @p folder has not been started.
void SoftwareUpdateClientPrivate::tellNotStarted(Failure::Kind kind, const QString &folder)
{
    if (!policy.explains)
        return;
    Failure failure(kind);
    failure.place = folder;
    showFailure(QCoreApplication::translate("SoftwareUpdateClient", "Installation failed"), failureText(failure));
}

/// Those that "Release Notes" opens; empty: none.
QUrl SoftwareUpdateClientPrivate::releaseNotesOf(const PackageInfo &package) const
{
    if (!policy.explains)
        return package.releaseNotes.value(defaultLanguage);
    QUrl url = package.releaseNotesUrl(QLocale::system().name(), defaultLanguage);
    for (auto any = package.releaseNotes.cbegin(); url.isEmpty() && any != package.releaseNotes.cend(); ++any)
        url = any.value();
    return url;
}

} // namespace qv
