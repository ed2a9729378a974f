// From a file name or URL to a catalogue as text and as packages. Called first by each command; fails where there is
// nothing to read, and where no client would read what is there.
#include "Catalogue.h"

#include "CatalogueReader.h"
#include "HttpClient.h"
#include "Kinds.h"
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

/// The elements in the order of readSet(). No deeper than XmlUtils lets through.
void collectPackages(const QDomElement &set, QList<QDomElement> &out)
{
    for (auto package = set.firstChildElement(Word::package); !package.isNull();
         package = package.nextSiblingElement(Word::package))
        out.append(package);
    for (auto inner = set.firstChildElement(Word::packageSet); !inner.isNull();
         inner = inner.nextSiblingElement(Word::packageSet))
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
        device.seek(0);
        catalogue.packages = parseCatalogue(&device); // stricter than the reader of single documents
    } catch (const ParseException &refusal) {
        throw Refused(source + QStringLiteral(": ") + refusal.message());
    }
    collectPackages(catalogue.document.documentElement(), catalogue.elements);
    return catalogue;
}

} // namespace qv
