// Collects what "lint" finds, puts together what has one cause, and prints it. Called by all checks.
#include "Report.h"

#include "Commands.h"

#include <algorithm>
#include <array>

namespace qv {

namespace {

constexpr std::array kinds = { "url",       "port",   "suffix", "size",  "date",     "platform",
                               "release",   "status", "order",  "notes", "spelling", "duplicate",
                               "languages", "name",   "sha256", "seal",  "file" };

/// "1-3, 7" of the places 0, 1, 2 and 6; no more than fits on a line.
QString numbersOf(const QList<int> &packages)
{
    constexpr int mostRanges = 10;
    QStringList ranges;
    for (int first = 0, i = 0; i < packages.size(); ++i) {
        if (i + 1 < packages.size() && packages.at(i + 1) == packages.at(i) + 1)
            continue;
        if (ranges.size() == mostRanges)
            return ranges.join(QStringLiteral(", ")) + QStringLiteral(", ...");
        const QString last = QString::number(packages.at(i) + 1);
        ranges << (first == i ? last : QStringLiteral("%1-%2").arg(packages.at(first) + 1).arg(last));
        first = i + 1;
    }
    return ranges.join(QStringLiteral(", "));
}

} // namespace

Report::Report(const Catalogue &catalogue, const QStringList &ignored) : catalogue(catalogue), ignored(ignored)
{
    for (const QString &kind : ignored) {
        if (std::find(kinds.begin(), kinds.end(), kind) == kinds.end())
            throw Failure(QStringLiteral("there is no kind \"%1\" to ignore").arg(kind));
    }
}

bool Report::isWanted(const char *kind) const
{
    return !ignored.contains(QLatin1String(kind));
}

void Report::tell(int package, const char *kind, const QString &what, const QString &why)
{
    if (isWanted(kind))
        findings.append({ QLatin1String(kind), what, why, lineOf(catalogue.elements.at(package)), { package } });
}

void Report::tell(int package, const char *kind, const Written &value, const QString &what, const QString &why)
{
    const bool isMissing = value.level.isNull();
    const XmlElement cause = isMissing ? catalogue.elements.at(package).parent() : value.level;
    const QString key = QString::number(isMissing ? -cause.index() : cause.index()) + QLatin1String(kind) + why;
    const auto first = shared.constFind(key);
    if (first == shared.cend() || !isWanted(kind)) {
        shared.insert(key, int(findings.size()));
        tell(package, kind, what, why);
        return;
    }
    Finding &finding = findings[*first];
    finding.packages.append(package);
    if (!isMissing)
        finding.line = lineOf(cause);
}

void Report::tell(const MarkupElement &element, const char *kind, const QString &what, const QString &why)
{
    if (isWanted(kind))
        findings.append({ QLatin1String(kind), what, why, element.line, {} });
}

bool Report::print() const
{
    for (const Finding &finding : findings) {
        QString who;
        if (finding.packages.size() == 1)
            who = catalogue.title(finding.packages.first()) + QStringLiteral(": ");
        else if (!finding.packages.isEmpty())
            who = QStringLiteral("%1 packages (%2): ").arg(finding.packages.size()).arg(numbersOf(finding.packages));
        printLine(QStringLiteral("%1:%2: ").arg(catalogue.source).arg(finding.line) + who + finding.what
                  + QStringLiteral("; ") + finding.why + QStringLiteral(" [%1]").arg(finding.kind));
    }
    return !findings.isEmpty();
}

QString quoted(const QString &text)
{
    constexpr int longest = 80;
    return QLatin1Char('"') + (text.size() > longest ? text.left(longest) + QStringLiteral("...") : text)
        + QLatin1Char('"');
}

} // namespace qv
