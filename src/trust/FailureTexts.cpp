// Failures in words that help: what happened, and what a user can do about it. Called by client and manager where a
// host wants that; the texts are those of policies, in their context.
#include "FailureTexts.h"

#include "PolicyTexts.h"

#include <QCoreApplication>
#include <QDir>

namespace qv {

namespace {

struct Words
{
    Q_DECLARE_TR_FUNCTIONS(SoftwareUpdatePolicy)
};

constexpr int unauthorized = 401, forbidden = 403, notFound = 404, proxyLogin = 407, requestTimeout = 408, gone = 410,
              tooManyRequests = 429, networkLogin = 511;

QString statusText(const Failure &failure)
{
    switch (failure.status) {
    case 0:
        return Words::tr("The transfer from the server %1 failed. Please try again later.").arg(failure.server);
    case unauthorized:
    case forbidden:
        return Words::tr("The server %1 denies access. Please ask its administrator.").arg(failure.server);
    case notFound:
    case gone:
        return Words::tr("The server %1 does not have what was asked for. It may have been replaced: please check for "
                         "updates again later.")
            .arg(failure.server);
    default:
        break;
    }
    if (failure.status / 100 == 5 || failure.status == requestTimeout || failure.status == tooManyRequests)
        return Words::tr("The server %1 cannot answer at the moment. Please try again later.").arg(failure.server);
    return Words::tr("The server %1 answered with an error (%2). Please try again later.")
        .arg(failure.server, QString::number(failure.status));
}

QString brokenText(const Failure &failure, const QLocale &locale)
{
    if (failure.received > 0 && failure.expected > failure.received)
        return Words::tr("The connection broke off after %1. Please check your network connection and try again.")
            .arg(amountText(failure.received, failure.expected, locale));
    return Words::tr("The connection to the server %1 broke off. Please check your network connection and try again.")
        .arg(failure.server);
}

QString diskFullText(const Failure &failure, const QLocale &locale)
{
    const QString folder = QDir::toNativeSeparators(failure.place);
    if (failure.expected > 0)
        return Words::tr("There is not enough room on the disk: %1 are needed in %2. Please make room and try again.")
            .arg(amountText(failure.expected, 0, locale), folder);
    return Words::tr("The disk is full: there is no room left in %1. Please make room and try again.").arg(folder);
}

} // namespace

Failure failureOf(QNetworkReply::NetworkError error, int status)
{
    switch (error) {
    case QNetworkReply::SslHandshakeFailedError:
        return Failure::Certificate;
    case QNetworkReply::TimeoutError:
        return Failure::TimedOut;
    case QNetworkReply::RemoteHostClosedError:
        return Failure::Broken;
    case QNetworkReply::ProtocolUnknownError:
    case QNetworkReply::ProtocolInvalidOperationError:
        return Failure::BadAddress;
    case QNetworkReply::ProxyAuthenticationRequiredError:
        return Failure::ProxyLogin;
    default:
        break;
    }
    if (status == proxyLogin)
        return Failure::ProxyLogin;
    if (status == networkLogin)
        return Failure::WebPage;
    if (error >= QNetworkReply::ProxyConnectionRefusedError && error <= QNetworkReply::UnknownProxyError)
        return Failure::ProxyUnreachable;
    if (status == 0 && error != QNetworkReply::NoError && error < QNetworkReply::ProxyConnectionRefusedError)
        return Failure::Unreachable;
    Failure failure;
    failure.status = status;
    return failure;
}

bool isWebPage(const QString &contentType, const QByteArray &beginning)
{
    for (const char *type : { "text/html", "application/xhtml+xml" }) {
        if (contentType.startsWith(QLatin1String(type), Qt::CaseInsensitive))
            return true;
    }
    const QByteArray start = beginning.left(1024);
    const QByteArray text = start.mid(start.startsWith("\xef\xbb\xbf") ? 3 : 0).trimmed().toLower();
    return text.startsWith("<!doctype html") || text.startsWith("<html");
}

QString failureText(const Failure &failure, const QLocale &locale)
{
    switch (failure.kind) {
    case Failure::Unreachable:
        return Words::tr("The server %1 cannot be reached. Please check your network connection and try again.")
            .arg(failure.server);
    case Failure::ProxyUnreachable:
        return Words::tr("The proxy server cannot be reached. Please check the proxy settings and your network "
                         "connection.");
    case Failure::ProxyLogin:
        return Words::tr("The proxy server asks for a login. Please check user name and password in the proxy "
                         "settings.");
    case Failure::Certificate:
        return Words::tr("The certificate of the server %1 was not accepted. Please check the date and time of your "
                         "computer, and whether your network asks for a login in a web browser.")
            .arg(failure.server);
    case Failure::BadAddress:
        return Words::tr("\"%1\" is not the address of a web server. Please correct it, or tell the publisher of the "
                         "software.")
            .arg(failure.place);
    case Failure::TimedOut:
        return Words::tr("The server %1 does not answer. Please check your network connection, or try again later.")
            .arg(failure.server);
    case Failure::Status:
        return statusText(failure);
    case Failure::WebPage:
        return Words::tr("The server %1 answered with a web page. Your network may ask for a login: please open a web "
                         "browser, log in there, and try again.")
            .arg(failure.server);
    case Failure::NoCatalogue:
        return Words::tr("The list of updates from the server %1 is empty or cannot be read. Please try again later.")
            .arg(failure.server);
    case Failure::Broken:
        return brokenText(failure, locale);
    case Failure::DiskFull:
        return diskFullText(failure, locale);
    case Failure::NotWritable:
        return Words::tr("The package cannot be saved in %1. Please check that you may write there, and that the disk "
                         "has room.")
            .arg(QDir::toNativeSeparators(failure.place));
    case Failure::Damaged:
        return Words::tr("The package arrived damaged and was not installed. Please try again; if that does not help, "
                         "tell the publisher of the software.");
    case Failure::NotStarted:
        return Words::tr("The installer could not be started. It lies in %1: please start it from there yourself.")
            .arg(QDir::toNativeSeparators(failure.place));
    case Failure::NoInstaller:
        return Words::tr("The package holds no installer that can be started. Please tell the publisher of the "
                         "software.");
    }
    return QString();
}

} // namespace qv
