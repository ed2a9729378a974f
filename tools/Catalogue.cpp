// From a file name or URL to a catalogue as text and as packages. Called first by each command; fails where there is
// nothing to read, and where no client would read what is there.
#include "Catalogue.h"

#include "DownloadManager.h"
#include "HttpClient.h"
#include "ParseException.h"
#include "XmlUtils.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>

namespace qv {

namespace {

QByteArray fetch(const QUrl &url)
{
    HttpClient client;
    const RequestPtr request = client.prepareGet(url, nullptr, nullptr, HttpClient::keepInRequest, nullptr);
    client.execute(request);
    while (client.isExecutingRequest())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (request->statusCode() != 200)
        throw Failure(url.toString(QUrl::RemovePassword) + QStringLiteral(": ")
                      + (request->statusCode() == 0 ? QStringLiteral("no answer")
                                                    : QStringLiteral("HTTP status %1").arg(request->statusCode())));
    return request->getResponseBuffer()->data();
}

QByteArray read(const QString &source)
{
    if (source.startsWith(QLatin1String("http://")) || source.startsWith(QLatin1String("https://")))
        return fetch(QUrl(source));
    QFile file(source);
    if (!file.open(QIODevice::ReadOnly))
        throw Failure(source + QStringLiteral(": ") + file.errorString());
    return file.read(RequestData::maxBytesKept);
}

/// The elements in the order of DownloadManager::parseSet(). No deeper than XmlUtils lets through.
void collectPackages(const QDomElement &set, QList<QDomElement> &out)
{
    for (auto package = set.firstChildElement(DownloadManager::PACKAGE); !package.isNull();
         package = package.nextSiblingElement(DownloadManager::PACKAGE))
        out.append(package);
    for (auto inner = set.firstChildElement(DownloadManager::PACKAGE_SET); !inner.isNull();
         inner = inner.nextSiblingElement(DownloadManager::PACKAGE_SET))
        collectPackages(inner, out);
}

} // namespace

Catalogue loadCatalogue(const QString &source)
{
    Catalogue catalogue;
    catalogue.source = source;
    QByteArray bytes = read(source);
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    try {
        XmlUtils::parseXml(&device, &catalogue.document);
    } catch (const ParseException &refusal) {
        throw Refused(source + QStringLiteral(": ") + refusal.message());
    }
    collectPackages(catalogue.document.documentElement(), catalogue.elements);

    device.seek(0);
    catalogue.packages = DownloadManager::parseXML(&device);
    // The reader of whole catalogues is stricter than that of single documents.
    if (catalogue.packages.size() != catalogue.elements.size())
        throw Refused(
            source + QStringLiteral(": an element has too many names in it, or inherited values unfold to too much"));
    return catalogue;
}

} // namespace qv
