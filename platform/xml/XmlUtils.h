#pragma once

#include "PlatformExport.h"

#include <QDomDocument>
#include <QIODevice>

namespace qv {

/// XML from a device into a DOM.
class QV_PLATFORM_EXPORT XmlUtils
{
public:
    /// Reads all of @p device, which is open for reading, without name spaces: a name is what stands in the text.
    /// Fills @p document and returns it; with null, returns a new one that the caller deletes.
    ///
    /// Throws ParseException where the text is not well-formed, and for what no honest document contains: over 16 MiB,
    /// more than 64 levels, 1,000,000 elements and attributes or 64 attributes on one element, declared entities,
    /// encodings other than UTF-8, UTF-16 with a byte-order mark, US-ASCII, the ISO-8859 family and the Windows code
    /// pages 125x. @p document is empty then.
    static QDomDocument *parseXml(QIODevice *device, QDomDocument *document);
};

} // namespace qv
