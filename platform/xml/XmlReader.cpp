// Guards QXmlStreamReader against documents made to exhaust time or memory. Called by XmlTree and by XmlUtils.
#include "XmlReader.h"

#include "ParseException.h"
#include "QtCompat.h"

#include <QRegularExpression>

#include <algorithm>
#include <cstring>

namespace qv {

namespace {

constexpr qint64 maxBytes = 16 << 20;
constexpr int maxDtdLength = 4096;

[[noreturn]] void refuse(const char *reason, qint64 line = 0)
{
    const QString place = line > 0 ? QStringLiteral(" (line %1)").arg(line) : QString();
    throw ParseException(QStringLiteral("XML refused: ") + QLatin1String(reason) + place);
}

/// The reader itself takes quadratic time for the attributes of one element, before it reports any of them.
void refuseEndlessTags(const QByteArray &bytes)
{
    constexpr qsizetype suspiciousLength = 40'000;
    constexpr qsizetype maxEqualsSigns = 8'000;
    const char *begin = bytes.constData();
    const char *const end = begin + bytes.size();
    while (begin != end) {
        const auto *next = static_cast<const char *>(std::memchr(begin + 1, '<', size_t(end - begin - 1)));
        if (!next)
            next = end;
        if (next - begin > suspiciousLength && std::count(begin, next, '=') > maxEqualsSigns)
            refuse("too many attributes");
        begin = next;
    }
}

/// The position behind the next @p mark, or the end.
qsizetype behind(const QByteArray &bytes, const char *mark, qsizetype from)
{
    const qsizetype found = bytes.indexOf(mark, int(from));
    return found < 0 ? bytes.size() : found + qsizetype(strlen(mark));
}

/// Behind the comment or processing instruction that begins at @p position; the position itself where none does.
qsizetype behindAside(const QByteArray &bytes, qsizetype position)
{
    const QByteArray start = bytes.mid(int(position), 4);
    if (start == "<!--")
        return behind(bytes, "-->", position + 4);
    return start.startsWith("<?") ? behind(bytes, "?>", position + 2) : position;
}

/// The reader works on attribute declarations for minutes, before it reports any of them. A DTD stands before the first
/// element, or there is none.
void refuseLongDtd(const QByteArray &bytes)
{
    qsizetype position = std::max<qsizetype>(bytes.indexOf('<'), 0);
    for (qsizetype next = 0; (next = behindAside(bytes, position)) != position;)
        position = std::max<qsizetype>(bytes.indexOf('<', int(next)), next);
    if (bytes.mid(int(position), 9) != "<!DOCTYPE")
        return;
    const qsizetype end = std::min(position + maxDtdLength, qsizetype(bytes.size()));
    char quote = '\0';
    for (int depth = 0; position < end; ++position) {
        const char c = bytes.at(int(position));
        if (quote != '\0')
            quote = c == quote ? '\0' : quote;
        else if (const qsizetype next = behindAside(bytes, position); next != position)
            position = next - 1;
        else if (c == '"' || c == '\'')
            quote = c;
        else if (c == '[' || c == ']')
            depth += c == '[' ? 1 : -1;
        else if (c == '>' && depth == 0)
            return;
    }
    refuse("too long a DTD");
}

/// All that @p device holds, or more than may be read. In pieces: for one, Qt reserves twice the limit.
QByteArray beginningOf(QIODevice *device)
{
    constexpr int pieceSize = 64 * 1024;
    QByteArray bytes = device->read(pieceSize);
    for (QByteArray piece = bytes; !piece.isEmpty() && bytes.size() <= maxBytes; bytes += piece)
        piece = device->read(pieceSize);
    return bytes;
}

QByteArray declaredEncoding(const QByteArray &bytes)
{
    const QByteArray declaration = bytes.startsWith("<?xml") ? bytes.left(bytes.indexOf("?>")) : QByteArray();
    const auto attribute = declaration.indexOf("encoding");
    const QByteArray value = attribute < 0 ? QByteArray() : declaration.mid(attribute + int(strlen("encoding")));
    const auto quote = std::find_if(value.cbegin(), value.cend(), [](char c) { return c == '"' || c == '\''; });
    if (quote == value.cend())
        return "utf-8";
    return QByteArray(quote + 1, int(std::find(quote + 1, value.cend(), *quote) - quote - 1)).toLower();
}

bool hasUtf16Mark(const QByteArray &bytes)
{
    return bytes.startsWith("\xff\xfe") || bytes.startsWith("\xfe\xff");
}

/// True for encodings in which the signs of XML are single bytes of ASCII, and which both Qts read alike.
bool isPlainEncoding(const QByteArray &name)
{
    static const QRegularExpression plain(
        QRegularExpression::anchoredPattern(QStringLiteral("utf-?8|(us-)?ascii|latin-?[0-9]+|iso[-_]?8859[-_]1?[0-9]"
                                                           "|(windows-|cp)125[0-8]")));
    return plain.match(QString::fromLatin1(name)).hasMatch();
}

/// @p bytes as text where they are UTF-16; null where they can be read as they are.
QString recode(const QByteArray &bytes)
{
    if (bytes.startsWith(QByteArray("\xff\xfe\0\0", 4))) // the mark of UTF-32 begins like that of UTF-16
        refuse("unknown encoding");
    if (hasUtf16Mark(bytes))
        return QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData()), int(bytes.size() / 2));
    if (bytes.contains('\0'))
        refuse("not a text");
    if (!isPlainEncoding(declaredEncoding(bytes)))
        refuse("unknown encoding");
    return QString();
}

} // namespace

XmlReader::XmlReader(QIODevice *device) : bytes(beginningOf(device))
{
    if (bytes.size() > maxBytes)
        refuse("too long");
    recoded = recode(bytes);
    if (!recoded.isNull())
        bytes.clear();
    const QByteArray signs = recoded.isNull() ? bytes : recoded.toUtf8();
    refuseLongDtd(signs);
    refuseEndlessTags(signs);
    source.setBuffer(&bytes);
    source.open(QIODevice::ReadOnly);
    restart(reader);
}

void XmlReader::restart(QXmlStreamReader &fresh) const
{
    fresh.clear();
    if (recoded.isNull()) {
        source.seek(0);
        fresh.setDevice(&source);
    } else {
        fresh.addData(recoded);
    }
    fresh.setNamespaceProcessing(false);
}

bool XmlReader::readNext()
{
    switch (reader.readNext()) {
    case QXmlStreamReader::Invalid:
        throw ParseException(QStringLiteral("%1 (line %2)").arg(reader.errorString()).arg(reader.lineNumber()));
    case QXmlStreamReader::EndDocument:
        return false;
    case QXmlStreamReader::DTD:
        checkDtd();
        break;
    case QXmlStreamReader::StartElement:
        checkElement();
        break;
    case QXmlStreamReader::EndElement:
        --depth;
        break;
    default:
        break;
    }
    return true;
}

bool XmlReader::isText() const
{
    if (reader.isCDATA() && domKeepsBlankSections)
        return true;
    return reader.isCharacters() && !reader.isWhitespace() && !reader.text().trimmed().isEmpty();
}

void XmlReader::checkElement()
{
    if (++depth > maxDepth)
        refuse("too deep", reader.lineNumber());
    const int attributes = int(reader.attributes().size());
    if (attributes > maxAttributes)
        refuse("too many attributes", reader.lineNumber());
    elements += 1 + attributes;
    if (elements > maxElements)
        refuse("too many elements", reader.lineNumber());
}

void XmlReader::checkDtd() const
{
    if (!reader.entityDeclarations().isEmpty())
        refuse("declares entities", reader.lineNumber());
}

} // namespace qv
