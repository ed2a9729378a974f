#pragma once

#include "PlatformExport.h"

#include <QByteArray>
#include <QHash>
#include <QIODevice>
#include <QString>

#include <optional>
#include <vector>

namespace qv {

class XmlElement;
class XmlReader;

/// A document as a read-only tree: at most a third of the time and a tenth of the memory of a DOM, and every look-up by
/// name takes the same time however many siblings there are. White space between elements is dropped, as by a DOM.
class QV_PLATFORM_EXPORT XmlTree
{
public:
    /// Reads all of @p device, which is open for reading. Throws ParseException for the same documents as
    /// XmlUtils::parseXml() does, when an element has children of more than 256 names, and for more than 4,096 names of
    /// elements and attributes in all.
    explicit XmlTree(QIODevice *device);

    XmlElement documentElement() const;

    /// How many elements there are, and the document around them.
    int size() const { return int(nodes.size()); }

    /// How many elements of that name there are, wherever they stand.
    int count(const QString &name) const;

private:
    friend class XmlElement;

    struct Piece ///< of texts or values
    {
        int begin;
        int size;
    };
    struct Attribute
    {
        int name;
        Piece value;
    };
    struct Node
    {
        int name;
        int parent;
        int firstAttribute;
        int endAttribute;
        int firstGroup;
        int nextSameName; ///< the next child of the parent with this name
        Piece text;
    };
    struct Group ///< the children of one name
    {
        int name;
        int firstChild;
        int lastChild;
        int nextGroup;
    };

    XmlTree();
    bool readPlain(const XmlReader &reader);
    void open(const XmlReader &reader, int parent);
    void begin(int name, int firstAttribute, int parent);
    void end(int &current);
    void addToGroup(int parent, int child);
    int nameId(QStringView name);

    std::vector<Node> nodes; // the first is the document itself
    std::vector<Group> groups;
    std::vector<Attribute> attributes;
    std::vector<QString> names; // each once; nameIds looks at their signs, which stay where they are
    QHash<QStringView, int> nameIds;
    QByteArray texts;  // of the whole document, UTF-8: an element's own is a piece of it
    QByteArray values; // of the attributes, likewise
};

/// An element of an XmlTree, or the document around its root, or null: a light value, as long-lived as the tree.
class QV_PLATFORM_EXPORT XmlElement
{
public:
    XmlElement() = default;

    bool isNull() const { return !tree; }

    /// Its place in the order in which the elements begin; the root has 1, the document 0.
    int index() const { return node; }

    /// The element around; for the root the document, for the document null.
    XmlElement parent() const;

    /// The first child of that name, or null.
    XmlElement firstChild(const QString &name) const;

    /// The next child of the same parent with the same name, or null.
    XmlElement nextSameName() const;

    /// The value of the attribute, if there is one.
    std::optional<QString> attribute(const QString &name) const;

    /// The whole text inside, that of the elements in it included; not null.
    QString text() const;

private:
    friend class XmlTree;
    XmlElement(const XmlTree *tree, int node) : tree(tree), node(node) { }

    XmlElement elementOrNull(int index) const { return index < 0 ? XmlElement() : XmlElement(tree, index); }
    const XmlTree::Node &data() const { return tree->nodes[size_t(node)]; }

    const XmlTree *tree = nullptr;
    int node = -1;
};

} // namespace qv
