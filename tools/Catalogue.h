#pragma once

#include "Markup.h"
#include "PackageInfo.h"
#include "XmlTree.h"

#include <QList>

#include <memory>
#include <stdexcept>

namespace qv {

/// The command cannot do its work: a message for standard error, the program ends with 2.
class Failure : public std::runtime_error
{
public:
    explicit Failure(const QString &message) : std::runtime_error(message.toStdString()) { }
};

/// The catalogue is there and no client would read it. A failure for all commands but "lint" and "verify", to which it
/// is a finding.
class Refused : public Failure
{
public:
    using Failure::Failure;
};

/// A catalogue twice: as clients read it and as it is written.
struct Catalogue
{
    QString source; ///< file name or URL
    QByteArray bytes;
    PackageInfoList packages;
    std::unique_ptr<const XmlTree> tree;
    QList<XmlElement> elements; ///< of the tree, one for each of the packages

    QByteArray text;                   ///< the bytes, or UTF-8 where these are UTF-16
    std::vector<MarkupElement> markup; ///< of the text, one for each element of the tree, by its index

    const MarkupElement &markupOf(const XmlElement &element) const { return markup.at(size_t(element.index())); }

    /// "package 3 Camera Host 1.2": the number as "show" counts, and what it is called.
    QString title(int index) const;
};

/// Where the value stands that counts for a package, and what it is: no level and no text where there is none.
struct Written
{
    XmlElement level;
    QString text;
};
Written written(const XmlElement &package, const QString &word);

bool isAddress(const QString &source);

/// The bytes of a file or, where isAddress(), of a server's answer with the status 200; redirects are followed. Null
/// where there is no such file or the server says 404. Throws Failure.
QByteArray readSource(const QString &source);

/// Throws Failure and Refused.
Catalogue loadCatalogue(const QString &source);

/// The same for bytes that have been read from @p source. Throws Refused.
Catalogue parseCatalogue(const QString &source, const QByteArray &bytes);

} // namespace qv
