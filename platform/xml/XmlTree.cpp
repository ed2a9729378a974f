// Builds the tree in one pass over the tokens: flat tables, linked by index. Called for whole documents.
#include "XmlTree.h"

#include "ParseException.h"
#include "PlainXml.h"
#include "XmlReader.h"

#include <algorithm>
#include <string_view>

namespace qv {

namespace {

constexpr int none = -1;
constexpr int maxNamesInElement = 256;
constexpr int maxNames = 4096;

QString textOf(const QByteArray &bytes, int begin, int size)
{
    return size == 0 ? QStringLiteral("") : QString::fromUtf8(bytes.constData() + begin, size);
}

/// As UTF-8. Nearly all is ASCII, and needs no text in between.
void append(QByteArray &bytes, QStringView text)
{
    const auto before = bytes.size();
    bytes.resize(int(before + text.size()));
    char *next = bytes.data() + before;
    ushort all = 0;
    for (const QChar c : text) {
        all |= c.unicode();
        *next++ = char(c.unicode());
    }
    if (all > 0x7f) {
        bytes.resize(int(before));
        bytes += text.toUtf8();
    }
}

} // namespace

XmlTree::XmlTree() : nodes { { none, none, 0, 0, none, none, {} } } { }

XmlTree::XmlTree(QIODevice *device) : XmlTree()
{
    XmlReader reader(device);
    if (readPlain(reader))
        return;
    *this = XmlTree();
    int current = 0;
    while (reader.readNext()) {
        if (reader.token().isStartElement()) {
            open(reader, current);
            current = int(nodes.size()) - 1;
        } else if (reader.token().isEndElement()) {
            end(current);
        } else if (reader.isText()) {
            append(texts, reader.token().text());
        }
    }
    nodes.front().text.size = int(texts.size());
}

/// False: what has been read so far is of no use.
bool XmlTree::readPlain(const XmlReader &reader)
{
    PlainXml plain(reader.document());
    QHash<QLatin1String, int> known;
    const auto idOf = [&](std::string_view name) {
        const QLatin1String key(name.data(), int(name.size()));
        const auto one = known.constFind(key);
        return one != known.cend() ? *one : *known.insert(key, nameId(QString(key)));
    };
    bool isPlain = true;
    int current = 0;
    for (auto token = plain.next(); isPlain && token != PlainXml::Done; token = plain.next()) {
        if (token == PlainXml::Start) {
            const int name = idOf(plain.name());
            const int firstAttribute = int(attributes.size());
            for (const auto &[key, value] : plain.attributes()) {
                const int begin = int(values.size());
                isPlain = isPlain && PlainXml::append(values, value);
                attributes.push_back({ idOf(key), { begin, int(values.size()) - begin } });
            }
            begin(name, firstAttribute, current);
            current = int(nodes.size()) - 1;
        } else if (token == PlainXml::End) {
            end(current);
        } else {
            isPlain = token == PlainXml::Text && PlainXml::append(texts, plain.text());
        }
    }
    nodes.front().text.size = int(texts.size());
    return isPlain;
}

void XmlTree::open(const XmlReader &reader, int parent)
{
    const int name = nameId(reader.token().qualifiedName());
    const int firstAttribute = int(attributes.size());
    const auto given = reader.token().attributes();
    for (const QXmlStreamAttribute &attribute : given) {
        const int begin = int(values.size());
        append(values, attribute.value());
        attributes.push_back({ nameId(attribute.qualifiedName()), { begin, int(values.size()) - begin } });
    }
    begin(name, firstAttribute, parent);
}

/// The element whose attributes are the last.
void XmlTree::begin(int name, int firstAttribute, int parent)
{
    nodes.push_back({ name, parent, firstAttribute, int(attributes.size()), none, none, { int(texts.size()), 0 } });
    addToGroup(parent, int(nodes.size()) - 1);
}

void XmlTree::end(int &current)
{
    Node &node = nodes[size_t(current)];
    node.text.size = int(texts.size()) - node.text.begin;
    current = node.parent;
}

void XmlTree::addToGroup(int parent, int child)
{
    int *link = &nodes[size_t(parent)].firstGroup;
    for (int count = 0; *link != none; ++count) {
        Group &group = groups[size_t(*link)];
        if (group.name == nodes[size_t(child)].name) {
            nodes[size_t(group.lastChild)].nextSameName = child;
            group.lastChild = child;
            return;
        }
        if (count == maxNamesInElement)
            throw ParseException(QStringLiteral("XML refused: too many names in one element"));
        link = &group.nextGroup;
    }
    *link = int(groups.size());
    groups.push_back({ nodes[size_t(child)].name, child, child, none });
}

int XmlTree::nameId(QStringView name)
{
    const auto known = nameIds.constFind(name);
    if (known != nameIds.cend())
        return *known;
    if (names.size() == maxNames)
        throw ParseException(QStringLiteral("XML refused: too many names"));
    names.push_back(name.toString());
    return *nameIds.insert(names.back(), int(names.size()) - 1);
}

XmlElement XmlTree::documentElement() const
{
    return nodes.size() > 1 ? XmlElement(this, 1) : XmlElement();
}

int XmlTree::count(const QString &name) const
{
    const int id = nameIds.value(name, none);
    return int(std::count_if(nodes.cbegin() + 1, nodes.cend(), [id](const Node &node) { return node.name == id; }));
}

XmlElement XmlElement::parent() const
{
    return elementOrNull(data().parent);
}

XmlElement XmlElement::firstChild(const QString &name) const
{
    for (int group = data().firstGroup; group != none; group = tree->groups[size_t(group)].nextGroup) {
        if (tree->names[size_t(tree->groups[size_t(group)].name)] == name)
            return { tree, tree->groups[size_t(group)].firstChild };
    }
    return {};
}

XmlElement XmlElement::nextSameName() const
{
    return elementOrNull(data().nextSameName);
}

std::optional<QString> XmlElement::attribute(const QString &name) const
{
    for (int i = data().firstAttribute; i < data().endAttribute; ++i) {
        const XmlTree::Attribute &attribute = tree->attributes[size_t(i)];
        if (tree->names[size_t(attribute.name)] == name)
            return textOf(tree->values, attribute.value.begin, attribute.value.size);
    }
    return std::nullopt;
}

QString XmlElement::text() const
{
    return textOf(tree->texts, data().text.begin, data().text.size);
}

} // namespace qv
