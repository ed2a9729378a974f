#pragma once

#include "Catalogue.h"

#include <QHash>
#include <QStringList>

namespace qv {

/// The findings of "lint", one for each cause: what stands once, on a set, is told once, with the packages that it
/// concerns. Printed in the order in which they were first told.
class Report
{
public:
    /// Findings of the kinds in @p ignored are left out; throws Failure where there is no such kind.
    Report(const Catalogue &catalogue, const QStringList &ignored);

    /// A finding on one package alone.
    void tell(int package, const char *kind, const QString &what, const QString &why);

    /// One on a value. Those with one reason on packages that have it from the same set (or another package), or that
    /// lack it in the same set, become one, which says @p what the first one says.
    void tell(int package, const char *kind, const Written &value, const QString &what, const QString &why);

    /// One on an element, whatever packages it concerns.
    void tell(const MarkupElement &element, const char *kind, const QString &what, const QString &why);

    /// False where there is nothing.
    bool print() const;

    const Catalogue &catalogue;

private:
    struct Finding
    {
        QString kind;
        QString what;
        QString why;
        int line;
        QList<int> packages;
    };

    bool isWanted(const char *kind) const;
    int lineOf(const XmlElement &element) const { return catalogue.markupOf(element).line; }

    QStringList ignored;
    QList<Finding> findings;
    QHash<QString, int> shared; // by cause, which of the findings
};

/// In quotes, and short enough for a line.
QString quoted(const QString &text);

// What "lint" looks at, each in a source of its own.
void checkNames(Report &report);    ///< what stands where nobody reads it, and links
void checkReleases(Report &report); ///< packages compared with each other

} // namespace qv
