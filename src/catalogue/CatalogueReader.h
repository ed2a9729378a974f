#pragma once

#include "PackageInfo.h"

#include <QDomElement>
#include <QIODevice>

#include <optional>

namespace qv {

/// The packages of the catalogue that @p device, open for reading, holds: those that stand in a set itself, then those
/// of the sets in it. A value that a package does not have is taken from the nearest set around; platforms, languages
/// and links add up over all of them (docs/catalogue.md).
///
/// What is not well-formed XML, or is made to exhaust time or memory (see XmlUtils::parseXml() and Allowance), gives an
/// empty list and a line in the log. What is read can be selected, shown and remembered within 2 s of processor time
/// and 128 MiB.
PackageInfoList readCatalogue(QIODevice *device);

/// The same; throws ParseException with the reason.
PackageInfoList parseCatalogue(QIODevice *device);

/// What one level of a catalogue, an XmlElement for one, itself says of a value: its first child of that name, or else
/// its attribute.
template<class Element>
std::optional<QString> ownValue(const Element &level, const QString &word)
{
    const Element child = level.firstChild(word);
    return child.isNull() ? level.attribute(word) : child.text();
}

// The same rules for single nodes of a DOM.

/// Appends the packages of @p set.
void readSet(const QDomElement &set, PackageInfoList &out);

/// Fills what a catalogue says of a package; flags, local file and spare flag of @p info stay.
void readPackage(const QDomElement &package, PackageInfo &info);

/// The "file" child that holds a package's values, or the node itself.
QDomNode searchStart(const QDomNode &node);

/// The value that is found from there outwards; empty where there is none.
QString findString(const QDomNode &node, const QString &word);

/// Add the words and links of all levels to @p out and return how many they are.
int findAllStrings(const QDomNode &node, const QString &word, QStringSet &out);
int findAllTranslatedUrls(const QDomNode &node, const QString &word, UrlMap &out);

} // namespace qv
