#pragma once

#include <QByteArray>
#include <QString>

#include <string_view>
#include <vector>

namespace qv {

/// Bytes of a document: from begin up to end.
struct Piece
{
    size_t begin = 0;
    size_t end = 0;
};

/// An element as it is written. Names are looks at the document's bytes.
struct MarkupElement
{
    struct Attribute
    {
        std::string_view name;
        Piece value; ///< between its quotes
    };

    /// Null where it has no such attribute.
    const Attribute *attribute(const QString &word) const;

    std::string_view name;
    int parent = 0;
    int line = 0;
    std::vector<Attribute> attributes;
    size_t attributesEnd = 0; ///< where one more can be written
    Piece content;            ///< between its tags; of <a/> the "/>"
    bool hasEndTag = true;
};

/// The elements of a well-formed document in the order in which they begin, as XmlElement::index() counts; the document
/// itself is the first. @p document is in an encoding in which the signs of XML are single bytes of ASCII, and must
/// outlive the result.
std::vector<MarkupElement> readMarkup(const QByteArray &document);

/// A text that takes the place of a piece.
struct Edit
{
    Piece piece;
    QByteArray text;
};

/// Puts @p value, which needs no escapes, between the quotes of the attribute, or adds the attribute behind the others.
Edit attributeEdit(const MarkupElement &element, const QString &word, const QByteArray &value);

/// Makes @p value the content of the element.
Edit contentEdit(const MarkupElement &element, const QByteArray &value);

/// @p document with all the edits, whose pieces do not overlap; several at one place stand in the order given.
QByteArray edited(const QByteArray &document, std::vector<Edit> edits);

} // namespace qv
