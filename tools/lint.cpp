// "lint": what an operator would want to know before a catalogue goes on line, one line for each finding. Asks the
// library what becomes of a value and looks the text up only where nothing became of it.
#include "Commands.h"

#include "CatalogueReader.h"
#include "CatalogueValues.h"
#include "Kinds.h"
#include "Offer.h"
#include "VersionNumber.h"

#include <QHash>
#include <QMap>

#include <algorithm>
#include <array>

namespace qv {

namespace {

constexpr QLatin1String ignoreOption("ignore");
constexpr std::array kinds = { "url",     "port",   "suffix", "size",     "date",      "platform",
                               "release", "status", "order",  "spelling", "duplicate", "languages" };

/// Prints findings, but for the kinds that are not wanted, and remembers whether there were any.
class Report
{
public:
    Report(const Catalogue &catalogue, const QStringList &ignored) : catalogue(catalogue), ignored(ignored)
    {
        for (const QString &kind : ignored) {
            if (std::find(kinds.begin(), kinds.end(), kind) == kinds.end())
                throw Failure(QStringLiteral("there is no kind \"%1\" to ignore").arg(kind));
        }
    }

    void tell(int index, const char *kind, const QString &what, const QString &why)
    {
        if (ignored.contains(QLatin1String(kind)))
            return;
        found = true;
        const PackageInfo &package = catalogue.packages.at(index);
        const QStringList where { QString::number(index + 1), package.name, package.release };
        printLine(catalogue.source + QStringLiteral(":%1: package ").arg(catalogue.elements.at(index).lineNumber())
                  + where.join(QLatin1Char(' ')).simplified() + QStringLiteral(": ") + what + QStringLiteral("; ") + why
                  + QStringLiteral(" [%1]").arg(QLatin1String(kind)));
    }

    /// What the catalogue says of a value, short enough for a line.
    QString written(int index, const QString &tag) const { return findString(catalogue.elements.at(index), tag); }

    const Catalogue &catalogue;
    bool found = false;

private:
    QStringList ignored;
};

QString quoted(const QString &text)
{
    constexpr int longest = 80;
    return QLatin1Char('"') + (text.size() > longest ? text.left(longest) + QStringLiteral("...") : text)
        + QLatin1Char('"');
}

/// A value of which nothing became.
void tellUnread(Report &report, int index, const char *kind, const QString &tag, const QString &why)
{
    const QString text = report.written(index, tag);
    report.tell(index, kind,
                text.isEmpty() ? QStringLiteral("no ") + tag : tag + QStringLiteral(" is unreadable: ") + quoted(text),
                why);
}

void checkUrl(Report &report, int index, const PackageInfo &package)
{
    if (report.written(index, Word::url).isEmpty()) {
        report.tell(index, "url", QStringLiteral("no url"), QStringLiteral("there is nothing to download"));
        return;
    }
    if (package.url.host().isEmpty()) {
        report.tell(index, "url",
                    QStringLiteral("url names no server: ")
                        + quoted(report.written(index, Word::baseUrl) + report.written(index, Word::url)),
                    QStringLiteral("base-url and url are joined as they stand and must make a whole address"));
        return;
    }
    constexpr int downloadPort = 80;
    if (package.url.scheme() != QLatin1String("http") || package.url.port(downloadPort) != downloadPort) {
        report.tell(index, "port",
                    QStringLiteral("url is not plain HTTP on port 80: ") + quoted(package.url.toString()),
                    QStringLiteral("Install fetches it from there whatever the url says; browsers follow the url"));
    }
    if (isSuspiciousSuffix(package.suffix)) {
        report.tell(index, "suffix", QStringLiteral("suspicious suffix ") + quoted(package.suffix),
                    QStringLiteral("the suffix decides who is offered a package and how it is installed"));
    }
}

void checkValues(Report &report, int index, const PackageInfo &package)
{
    if (package.fileSize == 0)
        tellUnread(report, index, "size", Word::fileSize,
                   QStringLiteral("a download without a size reports neither success nor failure: Install never ends"));
    if (package.releaseDate.isNull())
        tellUnread(report, index, "date", Word::releaseDate,
                   QStringLiteral("date and size together are what tells a package from all others"));
    if (package.platforms.isEmpty())
        tellUnread(report, index, "platform", Word::platform,
                   QStringLiteral("no camera is offered it, nor is a host that names its platforms"));
    if (package.release.isEmpty())
        tellUnread(report, index, "release", Word::release, QStringLiteral("it counts as 0 and is never offered"));
    if (package.status.isEmpty())
        tellUnread(report, index, "status", Word::status,
                   QStringLiteral("it is offered only to those who ask for beta versions"));
}

void checkDuplicates(Report &report)
{
    QHash<QString, int> firstOf;
    for (int i = 0; i < report.catalogue.packages.size(); ++i) {
        const QString identity = report.catalogue.packages.at(i).stringID();
        const auto first = firstOf.constFind(identity);
        if (first == firstOf.cend())
            firstOf.insert(identity, i);
        else
            report.tell(i, "duplicate", QStringLiteral("date and size are those of package %1").arg(*first + 1),
                        QStringLiteral("clients take the two for one: of firmware only the first is shown, and who has "
                                       "seen the first is not told of the second"));
    }
}

/// A release with the first package that has it.
struct Release
{
    QString text;
    VersionNumber version;
    int index;
};

void compareNeighbours(Report &report, const Release &older, const Release &newer)
{
    const QString other = QStringLiteral("%1 of package %2").arg(quoted(older.text)).arg(older.index + 1);
    if (newer.version == older.version)
        report.tell(newer.index, "spelling", quoted(newer.text) + QStringLiteral(" is the same version as ") + other,
                    QStringLiteral("only the spelling that stands first is offered"));
    else if (PackageInfo::compareVersion(newer.text, older.text) < 0)
        report.tell(newer.index, "order",
                    QStringLiteral("as text ") + quoted(newer.text) + QStringLiteral(" comes before ") + other,
                    QStringLiteral("update checks go by numbers, but hosts that pick best matches go by text and "
                                   "prefer the older one"));
}

/// Releases compete within a product: packages of one name, or of one set of platforms where they have no name.
void checkReleases(Report &report)
{
    QMap<QString, QMap<QString, int>> firstOf; // by product and release
    for (int i = 0; i < report.catalogue.packages.size(); ++i) {
        const PackageInfo &package = report.catalogue.packages.at(i);
        auto &releases = firstOf[package.name.isEmpty() ? joined(package.platforms) : package.name];
        if (!package.release.isEmpty() && !releases.contains(package.release))
            releases.insert(package.release, i);
    }
    for (const auto &releases : std::as_const(firstOf)) {
        QList<Release> ordered;
        for (auto release = releases.cbegin(); release != releases.cend(); ++release)
            ordered.append({ release.key(), VersionNumber::fromText(release.key()), release.value() });
        std::stable_sort(ordered.begin(), ordered.end(),
                         [](const Release &a, const Release &b) { return a.version < b.version; });
        for (int i = 1; i < ordered.size(); ++i)
            compareNeighbours(report, ordered.at(i - 1), ordered.at(i));
    }
}

void checkLanguages(Report &report)
{
    QMap<int, QStringList> usersOf; // by package: whose dialogs hide it
    for (const QString &language : { QStringLiteral("en"), QStringLiteral("de"), QStringLiteral("fr") }) {
        for (const int row : foreignLanguageRows(report.catalogue.packages, language))
            usersOf[row].append(language);
    }
    for (auto users = usersOf.cbegin(); users != usersOf.cend(); ++users) {
        const QStringSet languages = report.catalogue.packages.at(users.key()).languages;
        const bool isSurprise = users->contains(QLatin1String("en")) && languages.contains(QLatin1String("en"));
        report.tell(users.key(), "languages",
                    QStringLiteral("hidden from users of ") + users->join(QStringLiteral(", ")),
                    QStringLiteral("its languages are \"%1\"").arg(joined(languages))
                        + (isSurprise ? QStringLiteral(", and English users want de and en together") : QString()));
    }
}

} // namespace

void addLintOptions(QCommandLineParser &parser)
{
    parser.addOption(QCommandLineOption(ignoreOption, QString(), QStringLiteral("kinds")));
}

ExitCode lint(const QString &source, const QCommandLineParser &options)
{
    Catalogue catalogue;
    try {
        catalogue = loadCatalogue(source);
    } catch (const Refused &refusal) {
        printLine(QString::fromUtf8(refusal.what()) + QStringLiteral("; clients find no update in it [xml]"));
        return Findings;
    }
    Report report(catalogue, listOf(options.value(ignoreOption)));
    if (catalogue.packages.isEmpty()) {
        printLine(source + QStringLiteral(": no package in it; clients find no update in it [empty]"));
        return Findings;
    }
    for (int i = 0; i < catalogue.packages.size(); ++i) {
        checkUrl(report, i, catalogue.packages.at(i));
        checkValues(report, i, catalogue.packages.at(i));
    }
    checkDuplicates(report);
    checkReleases(report);
    checkLanguages(report);
    return report.found ? Findings : Done;
}

} // namespace qv
