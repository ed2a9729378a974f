// Reads the plain majority of documents without a copy of their texts. Called by XmlTree, which has XmlReader read what
// is foreign here.
#include "PlainXml.h"

#include "XmlReader.h"

#include <QString>

#include <algorithm>
#include <iterator>

namespace qv {

namespace {

using std::string_view;

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool isNameSign(char c)
{
    return isLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

QByteArray bytesOf(string_view text)
{
    return QByteArray::fromRawData(text.data(), int(text.size()));
}

/// No control characters, and what is not ASCII is valid and nothing that readers treat in ways of their own: marks,
/// what takes surrogates, and what stands for no character.
bool isPlainText(const QByteArray &bytes)
{
    constexpr uchar firstOdd = 0xef;
    uchar odd = 0, all = 0;
    for (const char c : bytes) { // no way out, no branch: many bytes at once
        const auto code = uchar(c);
        odd |= uchar((code >= firstOdd) | ((code < ' ') & (c != '\t') & (c != '\n') & (c != '\r')));
        all |= code;
    }
    return odd == 0 && (all < 0x80 || QString::fromUtf8(bytes).toUtf8() == bytes);
}

/// What texts are dropped for, as XmlReader::isText() has it.
bool isBlankText(string_view text)
{
    const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
    return first == text.end() || (uchar(*first) >= 0x80 && QString::fromUtf8(bytesOf(text)).trimmed().isEmpty());
}

} // namespace

PlainXml::PlainXml(const QByteArray &document)
{
    if (!isPlainText(document))
        return;
    rest = string_view(document.constData(), size_t(document.size()));
    for (const string_view declaration :
         { "<?xml version=\"1.0\"?>", "<?xml version='1.0'?>", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
           "<?xml version=\"1.0\" encoding=\"utf-8\"?>", "<?xml version='1.0' encoding='UTF-8'?>",
           "<?xml version='1.0' encoding='utf-8'?>" }) {
        if (take(declaration))
            break;
    }
}

PlainXml::Token PlainXml::next()
{
    if (std::exchange(isEmptyTag, false))
        return close();
    while (!rest.empty()) {
        if (take("<!--")) {
            if (!takeComment())
                return Foreign;
        } else if (take("</")) {
            return takeEnd();
        } else if (take("<")) {
            return takeStart();
        } else {
            itsText = rest.substr(0, rest.find('<'));
            rest.remove_prefix(itsText.size());
            if (std::all_of(itsText.begin(), itsText.end(), isBlank))
                continue;
            if (open.empty() || itsText.find('\r') != string_view::npos || itsText.find("]]>") != string_view::npos)
                return Foreign;
            if (!isBlankText(itsText))
                return Text;
        }
    }
    return hasRoot && open.empty() ? Done : Foreign;
}

bool PlainXml::append(QByteArray &bytes, string_view raw)
{
    static constexpr std::pair<string_view, char> entities[] = {
        { "&amp;", '&' }, { "&lt;", '<' }, { "&gt;", '>' }, { "&quot;", '"' }, { "&apos;", '\'' }
    };
    for (;;) {
        const string_view plain = raw.substr(0, raw.find('&'));
        bytes.append(plain.data(), int(plain.size()));
        raw.remove_prefix(plain.size());
        if (raw.empty())
            return true;
        const auto known = std::find_if(std::begin(entities), std::end(entities), [raw](const auto &entity) {
            return raw.substr(0, entity.first.size()) == entity.first;
        });
        if (known == std::end(entities))
            return false;
        bytes.append(known->second);
        raw.remove_prefix(known->first.size());
    }
}

bool PlainXml::take(string_view word)
{
    if (rest.substr(0, word.size()) != word)
        return false;
    rest.remove_prefix(word.size());
    return true;
}

bool PlainXml::takeBlanks()
{
    const auto end = std::find_if_not(rest.begin(), rest.end(), isBlank);
    const auto count = size_t(end - rest.begin());
    rest.remove_prefix(count);
    return count > 0;
}

/// Behind its beginning: two dashes end a comment, or it is none.
bool PlainXml::takeComment()
{
    rest.remove_prefix(std::min(rest.find("--"), rest.size()));
    return take("-->");
}

/// None for those that XML keeps to itself, or that have a prefix.
string_view PlainXml::takeName()
{
    if (rest.empty() || !isLetter(rest.front()))
        return {};
    const auto end = std::find_if_not(rest.begin(), rest.end(), isNameSign);
    const string_view taken = rest.substr(0, size_t(end - rest.begin()));
    rest.remove_prefix(taken.size());
    const bool isReserved = std::equal(taken.begin(), taken.begin() + std::min<size_t>(taken.size(), 3), "xml",
                                       [](char sign, char x) { return (sign | 0x20) == x; });
    return isReserved ? string_view() : taken;
}

PlainXml::Token PlainXml::takeStart()
{
    const string_view taken = takeName();
    if (taken.empty() || (hasRoot && open.empty()))
        return Foreign;
    itsAttributes.clear();
    for (bool isApart = takeBlanks(); !take(">"); isApart = takeBlanks()) {
        isEmptyTag = take("/>");
        if (isEmptyTag)
            break;
        if (!isApart || !takeAttribute())
            return Foreign;
    }
    hasRoot = true;
    open.push_back(taken);
    elements += 1 + int(itsAttributes.size());
    return open.size() > XmlReader::maxDepth || elements > XmlReader::maxElements ? Foreign : Start;
}

bool PlainXml::takeAttribute()
{
    const string_view key = takeName();
    takeBlanks();
    if (key.empty() || !take("="))
        return false;
    takeBlanks();
    const char quote = rest.empty() ? '\0' : rest.front();
    const size_t end = quote == '"' || quote == '\'' ? rest.find(quote, 1) : string_view::npos;
    if (end == string_view::npos || itsAttributes.size() == XmlReader::maxAttributes)
        return false;
    const string_view value = rest.substr(1, end - 1);
    rest.remove_prefix(end + 1);
    const auto isOdd = [](char c) { return c == '<' || (isBlank(c) && c != ' '); };
    if (std::any_of(value.begin(), value.end(), isOdd)
        || std::any_of(itsAttributes.begin(), itsAttributes.end(),
                       [key](const Attribute &other) { return other.first == key; }))
        return false;
    itsAttributes.emplace_back(key, value);
    return true;
}

PlainXml::Token PlainXml::takeEnd()
{
    if (open.empty() || !take(open.back()))
        return Foreign;
    takeBlanks();
    return take(">") ? close() : Foreign;
}

PlainXml::Token PlainXml::close()
{
    open.pop_back();
    return End;
}

} // namespace qv
