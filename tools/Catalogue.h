#pragma once

#include "PackageInfo.h"

#include <QDomDocument>
#include <QDomElement>
#include <QList>

#include <stdexcept>

namespace qv {

/// The command cannot do its work: a message for standard error, the program ends with 2.
class Failure : public std::runtime_error
{
public:
    explicit Failure(const QString &message) : std::runtime_error(message.toStdString()) { }
};

/// The catalogue is there and no client would read it. A failure for all commands but "lint", to which it is a finding.
class Refused : public Failure
{
public:
    using Failure::Failure;
};

/// A catalogue twice: as clients read it and as it is written.
struct Catalogue
{
    QString source; ///< file name or URL
    PackageInfoList packages;
    QDomDocument document;
    QList<QDomElement> elements; ///< of the document, one for each of the packages
};

/// Reads the catalogue from a file or, where @p source begins with http:// or https://, from a server; redirects are
/// followed. Throws Failure and Refused.
Catalogue loadCatalogue(const QString &source);

} // namespace qv
