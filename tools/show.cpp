// "show": the packages as clients read them, inherited values filled in, as a table or as JSON.
#include "Commands.h"

#include "Kinds.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace qv {

namespace {

constexpr QLatin1String jsonOption("json");

/// For each language the link that a look-up finds.
QJsonObject linksFound(const UrlMap &links)
{
    QJsonObject object;
    for (const QString &language : links.uniqueKeys())
        object.insert(language, links.value(language).toString());
    return object;
}

QJsonObject toJson(const PackageInfo &package)
{
    return {
        { Word::type, package.type },
        { Word::name, package.name },
        { Word::publicName, package.publicName },
        { Word::platform, QJsonArray::fromStringList(sorted(package.platforms)) },
        { Word::url, package.url.toString() },
        { Word::release, package.release },
        { Word::publicRelease, package.publicRelease },
        { Word::status, package.status },
        { Word::releaseDate, package.releaseDate.toString(Qt::ISODate) },
        { Word::fileSize, double(quint64(package.fileSize)) },
        { Word::sha256, QString::fromUtf8(package.sha256) },
        { Word::language, QJsonArray::fromStringList(sorted(package.languages)) },
        { Word::releaseNotes, linksFound(package.releaseNotes) },
        { Word::readme, linksFound(package.readme) },
        { Word::comment, package.comment },
        { QStringLiteral("suffix"), package.suffix },
        { QStringLiteral("identity"), package.stringID() },
    };
}

QStringList toRow(int number, const PackageInfo &package)
{
    return { QString::number(number),
             package.type,
             package.name,
             package.release,
             package.status,
             package.timeToString(Qt::ISODate),
             QString::number(quint64(package.fileSize)),
             package.suffix,
             joined(package.languages),
             joined(package.platforms),
             package.url.toString() };
}

} // namespace

void addShowOptions(QCommandLineParser &parser)
{
    parser.addOption(QCommandLineOption(jsonOption));
}

ExitCode show(const QString &source, const QCommandLineParser &options)
{
    const Catalogue catalogue = loadCatalogue(source);
    if (options.isSet(jsonOption)) {
        QJsonArray array;
        for (const PackageInfo &package : catalogue.packages)
            array.append(toJson(package));
        std::fputs(QJsonDocument(array).toJson().constData(), stdout);
        return Done;
    }
    QList<QStringList> rows { { QStringLiteral("No."), QStringLiteral("Type"), QStringLiteral("Name"),
                                QStringLiteral("Release"), QStringLiteral("Status"), QStringLiteral("Date"),
                                QStringLiteral("Size"), QStringLiteral("Suffix"), QStringLiteral("Languages"),
                                QStringLiteral("Platforms"), QStringLiteral("URL") } };
    for (const PackageInfo &package : catalogue.packages)
        rows.append(toRow(int(rows.size()), package));
    printTable(rows);
    return Done;
}

} // namespace qv
