#pragma once

#include <QBuffer>
#include <QXmlStreamReader>

namespace qv {

/// A stream reader for documents that nobody vouches for: what no honest document contains ends it early. Internal to
/// the platform library.
///
/// Refused are documents of more than 16 MiB, 64 levels, 1,000,000 elements and attributes together or 64 attributes on
/// one element, DTDs that declare entities or are longer than 4 KiB, and encodings other than UTF-8, UTF-16 with a
/// byte-order mark, US-ASCII, the ISO-8859 family and the Windows code pages 125x, under their usual names. No file and
/// no network is touched, whatever the document refers to.
class XmlReader
{
public:
    static constexpr int maxDepth = 64;
    static constexpr int maxElements = 1'000'000;
    static constexpr int maxAttributes = 64;

    /// Reads all that @p device, open for reading, has to give. Throws ParseException.
    explicit XmlReader(QIODevice *device);

    /// Goes to the next token, false at the end of the document. Throws ParseException.
    bool readNext();

    const QXmlStreamReader &token() const { return reader; }

    /// Characters that count: not white space alone, such as stands between elements.
    bool isText() const;

    /// The document as it came; empty where it had to be recoded.
    const QByteArray &document() const { return bytes; }

    /// Puts @p fresh at the start of the same document, which this object has read to its end; it must live as long.
    void restart(QXmlStreamReader &fresh) const;

private:
    void checkElement();
    void checkDtd() const;

    QByteArray bytes; // the document, unless it had to be recoded
    QString recoded;
    mutable QBuffer source; // of the bytes: a reader that pulls them decodes piece by piece
    QXmlStreamReader reader;
    int depth = 0;
    int elements = 0; // and attributes
};

} // namespace qv
