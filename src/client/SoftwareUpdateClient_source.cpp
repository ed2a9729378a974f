// Catalogues by a host's policy: sealed, kept from the last time, or from a mirror. Called with the answers of a check;
// leaves the catalogue to be read, or another request.
#include "SoftwareUpdateClient_p.h"

#include "HttpLogin.h"
#include "LogQt.h"
#include "PolicyTexts.h"

#include <QNetworkReply>

#include <utility>

namespace qv {

bool SoftwareUpdateClientPrivate::isSignatureMissing(const QNetworkReply &reply) const
{
    return !unsealed.isEmpty()
        && (reply.error() == QNetworkReply::ContentNotFoundError || reply.error() == QNetworkReply::ContentGoneError);
}

/// Another policy may have come since the catalogue was here.
bool SoftwareUpdateClientPrivate::isSealAwaited() const
{
    return trust.isSet() || !unsealed.isEmpty();
}

/// From what is kept where nothing has changed, and with keys only when they vouch for it: first comes the catalogue,
/// and then, from where that came from, its signature.
void SoftwareUpdateClientPrivate::takeByPolicy(QNetworkReply *reply)
{
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const CatalogueAnswer answer =
        current.source.take({ reply->request().url(), status, reply->readAll(),
                              [reply](const char *name) { return reply->rawHeader(name); } });
    const bool isSealed = isSealAwaited();
    const QByteArray signature = unsealed.isEmpty() || isSignatureMissing(*reply) ? QByteArray() : answer.body;
    QByteArray catalogue = std::exchange(unsealed, QByteArray());
    if (catalogue.isEmpty() && isSealed && !answer.body.isEmpty()) {
        unsealed = answer.body;
        performUpdateCheck(signatureUrl(urlWithLogin(*reply)));
        return;
    }
    if (catalogue.isEmpty())
        catalogue = answer.body;
    if (isSealed && !examineSeal(catalogue, signature))
        return;
    parseServerResponse(catalogue);
}

bool SoftwareUpdateClientPrivate::examineSeal(const QByteArray &catalogue, const QByteArray &signature)
{
    const Seal seal = trust.examine(catalogue, signature);
    if (seal.verdict == Seal::Accepted) {
        isPage = false; // whatever its server calls it
        storeSeals();
        return true;
    }
    if (current.source.isOld() && !seal.isGenuine()) {
        askAnew();
    } else if (!askMirror(QStringLiteral("not accepted"))) {
        packages.clear();
        const QString text = isPage ? toldText(refusalText(seal), Failure::WebPage) : refusalText(seal);
        showNotification(text);
        endCheck(current, CheckOutcome::NotTrusted, text);
        offerNothing();
    }
    return false;
}

/// Once for each check: nothing that is kept will be left to be in the way.
void SoftwareUpdateClientPrivate::askAnew()
{
    current.source.askAnew();
    unsealed.clear();
    performUpdateCheck(current.catalogue);
}

/// False where there is none left.
bool SoftwareUpdateClientPrivate::askMirror(const QString &reason)
{
    const QUrl mirror = trust.isSet() ? current.source.nextMirror() : QUrl();
    if (mirror.isEmpty())
        return false;
    LogQt::write(Log::Progress, QStringLiteral("SoftwareUpdateClient::askMirror() -> ") + reason);
    unsealed.clear();
    performUpdateCheck(mirror);
    return true;
}

/// In the place of a server that is silent, for the youngest of the checks that wait for it.
bool SoftwareUpdateClientPrivate::askMirrorInTime()
{
    if (!trust.isSet() || underWay.isEmpty() || !underWay.constLast().source.hasMirrors())
        return false;
    q->deleteNetworkmanager();
    resumeCheck(underWay.constLast().id);
    askMirror(QStringLiteral("timeout"));
    tellOutcomes();
    return true;
}

} // namespace qv
