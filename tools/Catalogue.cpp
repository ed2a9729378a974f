// From a file name or URL to a catalogue as text and as packages. Called first by each command; fails where there is
// nothing to read, and where no client would read what is there.
#include "Catalogue.h"

#include "CatalogueReader.h"
#include "HttpClient.h"
#include "Kinds.h"
#include "ParseException.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QXmlStreamReader>

namespace qv {

namespace {

QByteArray fetch(const QUrl &url)
{
    HttpClient client;
    const RequestPtr request = client.prepareGet(url, nullptr, nullptr, HttpClient::keepInRequest, nullptr);
    client.execute(request);
    while (client.isExecutingRequest())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (request->statusCode() == 404)
        return QByteArray();
    if (request->statusCode() != 200)
        throw Failure(url.toString(QUrl::RemovePassword) + QStringLiteral(": ")
                      + (request->statusCode() == 0 ? QStringLiteral("no answer")
                                                    : QStringLiteral("HTTP status %1").arg(request->statusCode())));
    const QByteArray body = request->getResponseBuffer()->data();
    return body.isNull() ? QByteArray("") : body;
}

/// The elements in the order of readSet(). No deeper than XmlTree lets through.
void collectPackages(const XmlElement &set, QList<XmlElement> &out)
{
    for (XmlElement package = set.firstChild(Word::package); !package.isNull(); package = package.nextSameName())
        out.append(package);
    for (XmlElement inner = set.firstChild(Word::packageSet); !inner.isNull(); inner = inner.nextSameName())
        collectPackages(inner, out);
}

/// What is wrong with a document that XmlTree does not take: ":LINE: reason", and the element that is open there.
QString faultOf(const QByteArray &bytes, const QString &refusal)
{
    struct Open
    {
        QString name;
        qint64 line;
    };
    QList<Open> open;
    QXmlStreamReader reader(bytes);
    reader.setNamespaceProcessing(false);
    // What is well-formed was refused for what it costs to read.
    while (!refusal.startsWith(QLatin1String("XML refused")) && !reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::StartElement)
            open.append({ reader.qualifiedName().toString(), reader.lineNumber() });
        else if (token == QXmlStreamReader::EndElement)
            open.removeLast();
    }
    if (!reader.hasError())
        return QStringLiteral(": ") + refusal;
    const QString fault = QStringLiteral(":%1: %2").arg(reader.lineNumber()).arg(reader.errorString());
    return open.isEmpty()
        ? fault
        : fault + QStringLiteral(" Inside <%1> of line %2").arg(open.last().name).arg(open.last().line);
}

/// Recodes UTF-16; in all other encodings that are let through, the signs of XML are single bytes.
QByteArray withAsciiSigns(const QByteArray &bytes)
{
    if (bytes.startsWith("\xff\xfe") || bytes.startsWith("\xfe\xff"))
        return QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData()), int(bytes.size() / 2))
            .toUtf8();
    return bytes;
}

} // namespace

QString Catalogue::title(int index) const
{
    const PackageInfo &package = packages.at(index);
    return (QStringList { QStringLiteral("package"), QString::number(index + 1), package.name, package.release })
        .join(QLatin1Char(' '))
        .simplified();
}

Written written(const XmlElement &package, const QString &word)
{
    const XmlElement file = package.firstChild(Word::file);
    for (XmlElement level = file.isNull() ? package : file; !level.isNull(); level = level.parent()) {
        if (const auto text = ownValue(level, word))
            return { level, *text };
    }
    return {};
}

bool isAddress(const QString &source)
{
    return source.startsWith(QLatin1String("http://")) || source.startsWith(QLatin1String("https://"));
}

QByteArray readSource(const QString &source)
{
    if (isAddress(source))
        return fetch(QUrl(source));
    QFile file(source);
    if (!file.exists())
        return QByteArray();
    if (!file.open(QIODevice::ReadOnly))
        throw Failure(source + QStringLiteral(": ") + file.errorString());
    const QByteArray bytes = file.read(RequestData::maxBytesKept);
    return bytes.isNull() ? QByteArray("") : bytes;
}

Catalogue loadCatalogue(const QString &source)
{
    const QByteArray bytes = readSource(source);
    if (bytes.isNull())
        throw Failure(source
                      + (isAddress(source) ? QStringLiteral(": HTTP status 404") : QStringLiteral(": no such file")));
    return parseCatalogue(source, bytes);
}

Catalogue parseCatalogue(const QString &source, const QByteArray &bytes)
{
    Catalogue catalogue;
    catalogue.source = source;
    catalogue.bytes = bytes;
    QBuffer device(&catalogue.bytes);
    device.open(QIODevice::ReadOnly);
    try {
        catalogue.tree = std::make_unique<const XmlTree>(&device);
        device.seek(0);
        catalogue.packages = qv::parseCatalogue(&device);
    } catch (const ParseException &refusal) {
        throw Refused(source + faultOf(bytes, refusal.message()));
    }
    collectPackages(catalogue.tree->documentElement(), catalogue.elements);

    catalogue.text = withAsciiSigns(bytes);
    catalogue.markup = readMarkup(catalogue.text);
    if (int(catalogue.markup.size()) != catalogue.tree->size())
        throw Failure(source + QStringLiteral(": its tags are not where they should be"));
    return catalogue;
}

} // namespace qv
