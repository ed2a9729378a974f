// Builds the tree in one pass over the tokens: flat tables, linked by index. Called for every catalogue.
#include "XmlTree.h"

#include "ParseException.h"
#include "XmlReader.h"

namespace qv {

namespace {

constexpr int none = -1;
constexpr int maxNamesInElement = 256;

} // namespace

XmlTree::XmlTree(QIODevice *device)
{
    XmlReader reader(device);
    nodes.push_back({ none, none, 0, 0, none, none, 0, 0 });
    int current = 0;
    while (reader.readNext()) {
        if (reader.token().isStartElement()) {
            open(reader, current);
            current = int(nodes.size()) - 1;
        } else if (reader.token().isEndElement()) {
            nodes[size_t(current)].textEnd = int(text.size());
            current = nodes[size_t(current)].parent;
        } else if (reader.isText()) {
            text += reader.token().text();
        }
    }
    nodes.front().textEnd = int(text.size());
}

void XmlTree::open(const XmlReader &reader, int parent)
{
    const int name = nameId(reader.token().qualifiedName());
    const int firstAttribute = int(attributes.size());
    const auto given = reader.token().attributes();
    for (const QXmlStreamAttribute &attribute : given)
        attributes.push_back({ nameId(attribute.qualifiedName()), attribute.value().toString() });
    const int start = int(text.size());
    nodes.push_back({ name, parent, firstAttribute, int(attributes.size()), none, none, start, start });
    addToGroup(parent, int(nodes.size()) - 1);
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
    names.push_back(name.toString());
    return *nameIds.insert(names.back(), int(names.size()) - 1);
}

XmlElement XmlTree::documentElement() const
{
    return nodes.size() > 1 ? XmlElement(this, 1) : XmlElement();
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
            return attribute.value;
    }
    return std::nullopt;
}

QString XmlElement::text() const
{
    return QString(tree->text.constData() + data().textBegin, data().textEnd - data().textBegin);
}

} // namespace qv
