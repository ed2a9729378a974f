#pragma once

#include <QByteArray>

#include <string_view>
#include <utility>
#include <vector>

namespace qv {

/// A tokenizer for documents as programs write them: UTF-8, elements with attributes, texts, the five entities that all
/// know, and comments. Takes a tenth of the time of QXmlStreamReader. Whatever is less plain, or not well-formed, or
/// beyond a limit of XmlReader, is foreign to it. Internal to the platform library.
class PlainXml
{
public:
    enum Token { Start, End, Text, Done, Foreign };
    using Attribute = std::pair<std::string_view, std::string_view>;

    /// @p document is looked at until the last token.
    explicit PlainXml(const QByteArray &document);

    /// Goes to the next token. White space alone is no text. Foreign: XmlReader has to read the document anew, and to
    /// say what is wrong with it, if anything is.
    Token next();

    std::string_view name() const { return open.back(); }                      ///< of the Start
    const std::vector<Attribute> &attributes() const { return itsAttributes; } ///< of the Start, values as they stand
    std::string_view text() const { return itsText; }                          ///< of the Text, as it stands

    /// Appends what a value or text stands for; false where that takes another reader.
    static bool append(QByteArray &bytes, std::string_view raw);

private:
    bool take(std::string_view word);
    bool takeBlanks();
    bool takeComment();
    std::string_view takeName();
    Token takeStart();
    bool takeAttribute();
    Token takeEnd();
    Token close();

    std::string_view rest;
    std::vector<std::string_view> open;
    std::vector<Attribute> itsAttributes;
    std::string_view itsText;
    bool isEmptyTag = false; // its end is the next token
    bool hasRoot = false;
    int elements = 0; // and attributes
};

} // namespace qv
