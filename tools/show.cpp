// "show": the packages as clients read them, inherited values filled in, as a table or as JSON.
#include "Commands.h"

#include "DownloadManager.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace qv {

namespace {

using M = DownloadManager;

const QString jsonOption = QStringLiteral("json");

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
        { M::TYPE, package.type },
        { M::NAME, package.name },
        { M::NAME_PUBLIC, package.publicName },
        { M::PLATFORM, QJsonArray::fromStringList(sorted(package.platforms)) },
        { M::URL, package.url.toString() },
        { M::RELEASE_VERSION, package.release },
        { M::RELEASE_VERSION_PUBLIC, package.publicRelease },
        { M::RELEASE_STATUS, package.status },
        { M::RELEASE_DATE, package.releaseDate.toString(Qt::ISODate) },
        { M::FILE_SIZE, package.fileSize },
        { M::LANGUAGE, QJsonArray::fromStringList(sorted(package.languages)) },
        { M::RELEASE_NOTES, linksFound(package.releaseNotes) },
        { M::README, linksFound(package.readme) },
        { M::COMMENT, package.comment },
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
             QString::number(package.fileSize),
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
