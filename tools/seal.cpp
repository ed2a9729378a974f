// "seal": writes the sizes and hashes of all packages, a serial and an expiry into a catalogue, for a signature to
// cover them. Changes these values in the file and not one byte besides.
#include "Commands.h"

#include "Kinds.h"
#include "PackageFiles.h"
#include "Seal.h"

#include <QRegularExpression>
#include <QSaveFile>

#include <limits>
#include <tuple>

namespace qv {

namespace {

constexpr QLatin1String packagesOption("packages");
constexpr QLatin1String expiresOption("expires");

/// What the root is to say.
struct RootValues
{
    qint64 serial;
    QDateTime expires;
};

QDateTime expiryOf(const QString &text)
{
    static const QRegularExpression span(QStringLiteral("^([0-9]{1,5})([hdw])$"));
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const auto match = span.match(text);
    const int hours = match.captured(2) == QLatin1String("h") ? 1 : match.captured(2) == QLatin1String("d") ? 24 : 168;
    const QDateTime expires =
        match.hasMatch() ? now.addSecs(qint64(3600) * hours * match.captured(1).toInt()) : readExpires(text);
    if (!expires.isValid())
        throw Failure(
            QStringLiteral("--expires wants hours, days or weeks from now, as in 12h, 30d or 4w, or a time in "
                           "UTC as in 2026-12-31T00:00:00Z, not \"%1\"")
                .arg(text));
    if (expires <= now)
        throw Failure(QStringLiteral("--expires is in the past"));
    return QDateTime::fromString(expires.toString(Qt::ISODate), Qt::ISODate); // whole seconds, as they are written
}

qint64 nextSerial(const XmlElement &root)
{
    const auto old = root.attribute(Word::serial);
    if (!old)
        return 1;
    const qint64 serial = readSerial(*old);
    if (serial == 0 || serial == std::numeric_limits<qint64>::max())
        throw Failure(
            QStringLiteral("no number follows the serial \"%1\": write the last published one there").arg(*old));
    return serial + 1;
}

/// The facts of all packages, in their order. Tells of each file that is missing or empty before it fails.
QList<PackageFiles::Facts> factsOf(const Catalogue &catalogue, const QString &folder)
{
    PackageFiles files(folder);
    QList<PackageFiles::Facts> facts;
    bool areThere = true;
    for (int i = 0; i < catalogue.packages.size(); ++i) {
        const QUrl &url = catalogue.packages.at(i).url;
        const QString path = files.find(url);
        facts.append(path.isEmpty() ? PackageFiles::Facts() : files.factsOf(path));
        if (facts.last().size > 0)
            continue;
        areThere = false;
        printLine(catalogue.title(i) + QStringLiteral(": \"%1\" is ").arg(url.toString())
                      + (path.isEmpty() ? QStringLiteral("not in ") + folder : QStringLiteral("empty")),
                  stderr);
    }
    if (!areThere)
        throw Failure(QStringLiteral("files of packages are missing; nothing was written"));
    return facts;
}

/// Where clients find the value of a package, or else an attribute where people look for it.
Edit packageEdit(const Catalogue &catalogue, const XmlElement &package, const QString &word, const QByteArray &value)
{
    const XmlElement file = package.firstChild(Word::file);
    for (const XmlElement &level : { file, package }) {
        if (level.isNull())
            continue;
        if (const XmlElement child = level.firstChild(word); !child.isNull())
            return contentEdit(catalogue.markupOf(child), value);
        if (catalogue.markupOf(level).attribute(word))
            return attributeEdit(catalogue.markupOf(level), word, value);
    }
    return attributeEdit(catalogue.markupOf(file.isNull() ? package : file), word, value);
}

QByteArray sealed(const Catalogue &catalogue, const QList<PackageFiles::Facts> &facts, const RootValues &values)
{
    const MarkupElement &root = catalogue.markupOf(catalogue.tree->documentElement());
    std::vector<Edit> edits { attributeEdit(root, Word::serial, QByteArray::number(values.serial)),
                              attributeEdit(root, Word::expires, values.expires.toString(Qt::ISODate).toLatin1()) };
    for (int i = 0; i < facts.size(); ++i) {
        const XmlElement &package = catalogue.elements.at(i);
        edits.push_back(packageEdit(catalogue, package, Word::fileSize, QByteArray::number(facts.at(i).size)));
        edits.push_back(packageEdit(catalogue, package, Word::sha256, facts.at(i).sha256));
    }
    return edited(catalogue.bytes, std::move(edits));
}

/// All that a catalogue says of a package and that a seal must leave alone.
auto otherValues(const PackageInfo &package)
{
    return std::tie(package.type, package.name, package.publicName, package.platforms, package.url, package.release,
                    package.publicRelease, package.status, package.releaseDate, package.languages, package.releaseNotes,
                    package.readme, package.suffix, package.comment);
}

/// Whether clients read in the @p result what was to be written, and else what they read @p before.
bool isAsIntended(const Catalogue &result, const Catalogue &before, const QList<PackageFiles::Facts> &facts,
                  const RootValues &values)
{
    const XmlElement root = result.tree->documentElement();
    bool same = result.packages.size() == before.packages.size()
        && readSerial(root.attribute(Word::serial).value_or(QString())) == values.serial
        && readExpires(root.attribute(Word::expires).value_or(QString())) == values.expires;
    for (int i = 0; same && i < facts.size(); ++i) {
        const PackageInfo &package = result.packages.at(i);
        same = package.fileSize == facts.at(i).size && package.sha256 == facts.at(i).sha256
            && otherValues(package) == otherValues(before.packages.at(i));
    }
    return same;
}

void replaceFile(const QString &path, const QByteArray &bytes)
{
    // Keeps the permissions; a symbolic link stays one, and what it leads to is replaced.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        throw Failure(path + QStringLiteral(": ") + file.errorString());
}

/// As one word of a shell's command.
QString shellWord(QString text)
{
    static const QRegularExpression plain(QStringLiteral("^[-A-Za-z0-9_./]+$"));
    if (plain.match(text).hasMatch())
        return text;
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QLatin1String("'\\''")) + QLatin1Char('\'');
}

} // namespace

void addSealOptions(QCommandLineParser &parser)
{
    for (const QLatin1String name : { packagesOption, expiresOption })
        parser.addOption(QCommandLineOption(name, QString(), QStringLiteral("value")));
}

ExitCode seal(const QString &source, const QCommandLineParser &options)
{
    for (const QLatin1String name : { packagesOption, expiresOption }) {
        if (options.value(name).isEmpty())
            throw Failure(QStringLiteral("seal wants --%1").arg(name));
    }
    if (isAddress(source))
        throw Failure(QStringLiteral("seal wants a file"));
    const Catalogue catalogue = loadCatalogue(source);
    if (catalogue.text != catalogue.bytes)
        throw Failure(source + QStringLiteral(": UTF-16 cannot be sealed, save the catalogue as UTF-8"));

    const RootValues values { nextSerial(catalogue.tree->documentElement()), expiryOf(options.value(expiresOption)) };
    const QList<PackageFiles::Facts> facts = factsOf(catalogue, options.value(packagesOption));
    const QByteArray bytes = sealed(catalogue, facts, values);
    if (!isAsIntended(parseCatalogue(source, bytes), catalogue, facts, values))
        throw Failure(source + QStringLiteral(": clients would not read what was to be written; nothing was"));
    replaceFile(source, bytes);

    printLine(QStringLiteral("serial %1, expires %2, packages: %3; now sign it:")
                  .arg(values.serial)
                  .arg(values.expires.toString(Qt::ISODate))
                  .arg(facts.size()));
    printLine(QStringLiteral("minisign -Sm ") + shellWord(source));
    return Done;
}

} // namespace qv
