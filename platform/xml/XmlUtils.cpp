// DOM documents from devices, on both Qts alike. Called by whoever looks at a document node by node.
#include "XmlUtils.h"

#include "ParseException.h"
#include "XmlReader.h"

#include <memory>

namespace qv {

QDomDocument *XmlUtils::parseXml(QIODevice *device, QDomDocument *document)
{
    if (document)
        document->clear();
    XmlReader guard(device);
    while (guard.readNext()) { }

    auto created = document ? nullptr : std::make_unique<QDomDocument>();
    QXmlStreamReader reader;
    guard.restart(reader);
    QString error;
    if (!(document ? document : created.get())->setContent(&reader, false, &error))
        throw ParseException(error);
    return document ? document : created.release();
}

} // namespace qv
