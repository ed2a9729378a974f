// Where the elements and attributes of a document stand in its bytes, and changes that leave all other bytes alone.
// Called for each catalogue, when the library has found it well-formed: here nothing is checked again.
#include "Markup.h"

#include <algorithm>

namespace qv {

namespace {

constexpr std::string_view blanks = " \t\r\n";

bool isAt(std::string_view text, size_t at, std::string_view sign)
{
    return text.compare(at, sign.size(), sign) == 0;
}

/// The position behind the next @p sign, or the end.
size_t behind(std::string_view text, std::string_view sign, size_t from)
{
    const size_t found = text.find(sign, from);
    return found == std::string_view::npos ? text.size() : found + sign.size();
}

/// Behind the comment or processing instruction that begins at @p at; the position itself where none does.
size_t behindAside(std::string_view text, size_t at)
{
    if (isAt(text, at, "<!--"))
        return behind(text, "-->", at + 4);
    return isAt(text, at, "<?") ? behind(text, "?>", at) : at;
}

size_t behindDtd(std::string_view text, size_t at)
{
    for (int depth = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (const size_t next = behindAside(text, at); next != at)
            at = next - 1;
        else if (c == '"' || c == '\'')
            at = behind(text, text.substr(at, 1), at + 1) - 1;
        else if (c == '[' || c == ']')
            depth += c == '[' ? 1 : -1;
        else if (c == '>' && depth == 0)
            return at + 1;
    }
    return at;
}

/// Behind whatever begins with a "<" at @p at and is no tag; the position itself where a tag begins.
size_t behindOther(std::string_view text, size_t at)
{
    if (isAt(text, at, "<![CDATA["))
        return behind(text, "]]>", at);
    const size_t next = behindAside(text, at);
    return next == at && isAt(text, at, "<!") ? behindDtd(text, at) : next;
}

/// Reads the start tag at @p at, which moves behind it.
MarkupElement readTag(std::string_view text, size_t &at)
{
    const auto skip = [text, &at](std::string_view signs) {
        at = std::min(text.find_first_not_of(signs, at), text.size());
    };
    const auto takeName = [text, &at] {
        const size_t begin = at;
        at = std::min(text.find_first_of(" \t\r\n=/>", at), text.size());
        return text.substr(begin, at - begin);
    };
    MarkupElement element;
    ++at;
    element.name = takeName();
    element.attributesEnd = at;
    for (skip(blanks); at < text.size() && text[at] != '/' && text[at] != '>'; skip(blanks)) {
        MarkupElement::Attribute attribute { takeName(), {} };
        skip(" \t\r\n=");
        const std::string_view quote = text.substr(at, 1);
        attribute.value.begin = at + 1;
        at = behind(text, quote, at + 1);
        attribute.value.end = at - 1;
        element.attributes.push_back(attribute);
        element.attributesEnd = at;
    }
    element.hasEndTag = isAt(text, at, ">");
    element.content.begin = at;
    at = behind(text, ">", at);
    if (element.hasEndTag)
        element.content.begin = at;
    element.content.end = at;
    return element;
}

} // namespace

const MarkupElement::Attribute *MarkupElement::attribute(const QString &word) const
{
    const QByteArray bytes = word.toUtf8();
    const auto found = std::find_if(attributes.begin(), attributes.end(), [&bytes](const Attribute &attribute) {
        return attribute.name == std::string_view(bytes.constData(), size_t(bytes.size()));
    });
    return found == attributes.end() ? nullptr : &*found;
}

std::vector<MarkupElement> readMarkup(const QByteArray &document)
{
    const std::string_view text(document.constData(), size_t(document.size()));
    std::vector<MarkupElement> elements(1);
    int open = 0;
    int line = elements.front().line = 1;
    size_t counted = 0;
    for (size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at)) {
        if (const size_t next = behindOther(text, at); next != at) {
            at = next;
        } else if (isAt(text, at, "</")) {
            elements[size_t(open)].content.end = at;
            open = elements[size_t(open)].parent;
            at = behind(text, ">", at);
        } else {
            line += int(std::count(text.begin() + counted, text.begin() + at, '\n'));
            counted = at;
            elements.push_back(readTag(text, at));
            elements.back().parent = open;
            elements.back().line = line;
            if (elements.back().hasEndTag)
                open = int(elements.size()) - 1;
        }
    }
    return elements;
}

Edit attributeEdit(const MarkupElement &element, const QString &word, const QByteArray &value)
{
    if (const auto *attribute = element.attribute(word))
        return { attribute->value, value };
    return { { element.attributesEnd, element.attributesEnd }, ' ' + word.toUtf8() + "=\"" + value + '"' };
}

Edit contentEdit(const MarkupElement &element, const QByteArray &value)
{
    if (element.hasEndTag)
        return { element.content, value };
    return { element.content, '>' + value + "</" + QByteArray(element.name.data(), int(element.name.size())) + '>' };
}

QByteArray edited(const QByteArray &document, std::vector<Edit> edits)
{
    std::stable_sort(edits.begin(), edits.end(),
                     [](const Edit &a, const Edit &b) { return a.piece.begin < b.piece.begin; });
    QByteArray result;
    size_t at = 0;
    for (const Edit &edit : edits) {
        result.append(document.constData() + at, int(edit.piece.begin - at));
        result += edit.text;
        at = edit.piece.end;
    }
    return result.append(document.constData() + at, document.size() - int(at));
}

} // namespace qv
