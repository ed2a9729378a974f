// "lint": what an operator would want to know before a catalogue goes on line, one line for each finding. Asks the
// library what became of a value and looks at the text only where nothing, or nothing good, did. What names and
// packages do among each other is looked at in lintNames.cpp and lintReleases.cpp.
#include "Commands.h"

#include "CatalogueValues.h"
#include "Kinds.h"
#include "PackageFiles.h"
#include "Report.h"
#include "Seal.h"
#include "VersionNumber.h"

#include <QRegularExpression>

#include <optional>

namespace qv {

namespace {

constexpr QLatin1String ignoreOption("ignore");
constexpr QLatin1String packagesOption("packages");

/// A value of which nothing became.
void tellUnread(Report &report, int index, const char *kind, const QString &tag, const QString &why)
{
    const Written value = written(report.catalogue.elements.at(index), tag);
    report.tell(index, kind, value,
                value.text.isEmpty() ? QStringLiteral("no ") + tag
                                     : tag + QStringLiteral(" is unreadable: ") + quoted(value.text),
                why);
}

void checkUrl(Report &report, int index, const PackageInfo &package)
{
    const XmlElement &element = report.catalogue.elements.at(index);
    const Written url = written(element, Word::url);
    const Written base = written(element, Word::baseUrl);
    if (url.text.isEmpty()) {
        report.tell(index, "url", url, QStringLiteral("no url"), QStringLiteral("there is nothing to download"));
        return;
    }
    const Written &start = base.text.isEmpty() ? url : base;
    if (package.url.host().isEmpty()) {
        report.tell(index, "url", start, QStringLiteral("url names no server: ") + quoted(base.text + url.text),
                    QStringLiteral("base-url and url are joined as they stand and must make a whole address"));
        return;
    }
    if (!base.text.isEmpty() && !base.text.endsWith(QLatin1Char('/')) && !base.text.contains(QLatin1Char('?'))
        && !url.text.startsWith(QLatin1Char('/')))
        report.tell(index, "url", base,
                    QStringLiteral("base-url does not end with \"/\", which gives ") + quoted(base.text + url.text),
                    QStringLiteral("url is put behind it as it stands"));
    constexpr int downloadPort = 80;
    if (package.url.scheme() != QLatin1String("http") || package.url.port(downloadPort) != downloadPort)
        report.tell(index, "port", start,
                    (base.text.isEmpty() ? Word::url : Word::baseUrl)
                        + QStringLiteral(" is not plain HTTP on port 80: ") + quoted(start.text),
                    QStringLiteral("Install fetches it from there whatever the url says; browsers follow the url"));
    if (isSuspiciousSuffix(package.suffix))
        report.tell(index, "suffix", url, QStringLiteral("suspicious suffix ") + quoted(package.suffix),
                    QStringLiteral("the suffix decides who is offered a package and how it is installed"));
}

/// Words that make a release newer than its numbers, as "final" does, and words where a number should stand.
void checkRelease(Report &report, int index, const QString &release)
{
    static const QRegularExpression numbersInFront(QStringLiteral("^\\s*[0-9]+(\\.[0-9]+)*"));
    static const QRegularExpression word(QStringLiteral("[^\\W\\d_]{2}"),
                                         QRegularExpression::UseUnicodePropertiesOption);
    const auto numbers = numbersInFront.match(release);
    QString why;
    if (!numbers.hasMatch())
        why = QStringLiteral("it does not begin with a number, and counts as older than any that does");
    else if (word.match(release).hasMatch()
             && VersionNumber::fromText(release) > VersionNumber::fromText(numbers.captured()))
        why = QStringLiteral("it counts as newer than ") + quoted(numbers.captured().trimmed())
            + QStringLiteral("; words that announce a release are alpha, beta, dev, pre, rc and snapshot");
    if (!why.isEmpty())
        report.tell(index, "release", written(report.catalogue.elements.at(index), Word::release),
                    QStringLiteral("release with words in it: ") + quoted(release), why);
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
    else
        checkRelease(report, index, package.release);
    const QString onlyBeta = QStringLiteral("it is offered only to those who ask for beta versions");
    if (package.status.isEmpty())
        tellUnread(report, index, "status", Word::status, onlyBeta);
    else if (package.status != Status::stable && package.status != Status::beta)
        report.tell(index, "status", written(report.catalogue.elements.at(index), Word::status),
                    QStringLiteral("status is neither STABLE nor BETA: ") + quoted(package.status), onlyBeta);
    if (!package.releaseNotes.isEmpty() && !package.releaseNotes.contains(defaultLanguage))
        report.tell(index, "notes", written(report.catalogue.elements.at(index), Word::releaseNotes),
                    QStringLiteral("release-notes only in other languages than en: ")
                        + package.releaseNotes.uniqueKeys().join(QStringLiteral(", ")),
                    QStringLiteral("the button Release Notes stays grey, whatever the user speaks"));
}

void checkHash(Report &report, int index, const PackageInfo &package, bool isSealed)
{
    const QString why = QStringLiteral("hosts that trust keys do not offer it");
    if (package.sha256.isEmpty() && isSealed)
        report.tell(index, "sha256", Written(), QStringLiteral("no sha256 in a sealed catalogue"), why);
    else if (!package.sha256.isEmpty() && !isSha256(package.sha256))
        report.tell(index, "sha256",
                    QStringLiteral("sha256 is unreadable: ") + quoted(QString::fromUtf8(package.sha256)), why);
}

void checkFile(Report &report, int index, const PackageInfo &package, PackageFiles &files)
{
    const XmlElement &element = report.catalogue.elements.at(index);
    const Written url = written(element, Word::url);
    if (url.text.isEmpty()) // which has been told
        return;
    const QString path = files.find(package.url);
    if (path.isEmpty()) {
        report.tell(index, "file", url, QStringLiteral("no file for ") + quoted(package.url.toString()),
                    QStringLiteral("there is nothing to upload"));
        return;
    }
    const PackageFiles::Facts facts = files.factsOf(path);
    if (package.fileSize != 0 && package.fileSize != facts.size)
        report.tell(
            index, "size", written(element, Word::fileSize),
            QStringLiteral("file-size is %1, but %2 has %3 bytes").arg(package.fileSize).arg(path).arg(facts.size),
            QStringLiteral("less than file-size counts as broken off, and much more is cut"));
    if (isSha256(package.sha256) && package.sha256 != facts.sha256)
        report.tell(index, "sha256", QStringLiteral("sha256 is not that of ") + path,
                    QStringLiteral("what is downloaded is thrown away"));
}

void tellSeal(Report &report, const QString &what)
{
    report.tell(report.catalogue.markupOf(report.catalogue.tree->documentElement()), "seal", what,
                QStringLiteral("hosts that trust keys refuse the catalogue"));
}

/// Whether the root has a serial or an expiry, and whether these are any good.
bool checkSeal(Report &report)
{
    const XmlElement root = report.catalogue.tree->documentElement();
    const auto serial = root.attribute(Word::serial);
    const auto expires = root.attribute(Word::expires);
    if (!serial && !expires)
        return false;
    if (!serial)
        tellSeal(report, QStringLiteral("expires without serial"));
    else if (readSerial(*serial) == 0)
        tellSeal(report, QStringLiteral("serial is no number above 0: ") + quoted(*serial));
    const QDateTime time = readExpires(expires.value_or(QString()));
    if (!expires)
        tellSeal(report, QStringLiteral("serial without expires"));
    else if (!time.isValid())
        tellSeal(report, QStringLiteral("expires is no time in UTC, as 2026-12-31T00:00:00Z is: ") + quoted(*expires));
    else if (time <= QDateTime::currentDateTimeUtc())
        tellSeal(report, QStringLiteral("expires is past: ") + quoted(*expires));
    return true;
}

} // namespace

void addLintOptions(QCommandLineParser &parser)
{
    parser.addOption(QCommandLineOption(ignoreOption, QString(), QStringLiteral("kinds")));
    parser.addOption(QCommandLineOption(packagesOption, QString(), QStringLiteral("folder")));
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
    std::optional<PackageFiles> files;
    if (options.isSet(packagesOption))
        files.emplace(options.value(packagesOption));
    Report report(catalogue, listOf(options.value(ignoreOption)));
    checkNames(report);
    const bool isSealed = checkSeal(report);
    for (int i = 0; i < catalogue.packages.size(); ++i) {
        const PackageInfo &package = catalogue.packages.at(i);
        checkUrl(report, i, package);
        checkValues(report, i, package);
        checkHash(report, i, package, isSealed);
        if (files)
            checkFile(report, i, package, *files);
    }
    checkReleases(report);
    const bool found = report.print();
    if (!catalogue.packages.isEmpty())
        return found ? Findings : Done;
    printLine(source + QStringLiteral(": no package in it; clients find no update in it [empty]"));
    return Findings;
}

} // namespace qv
