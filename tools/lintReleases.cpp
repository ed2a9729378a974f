// What packages do among each other: identities, orders and spellings of releases, and the languages that a release
// speaks. Called by "lint".
#include "Commands.h"

#include "Kinds.h"
#include "Offer.h"
#include "Report.h"
#include "VersionNumber.h"

#include <QMap>

#include <algorithm>

namespace qv {

namespace {

void checkDuplicates(Report &report)
{
    QHash<QString, int> firstOf;
    for (int i = 0; i < report.catalogue.packages.size(); ++i) {
        const QString identity = report.catalogue.packages.at(i).stringID();
        const auto first = firstOf.constFind(identity);
        if (first == firstOf.cend())
            firstOf.insert(identity, i);
        else
            report.tell(i, "duplicate", Written { report.catalogue.elements.at(*first), QString() },
                        QStringLiteral("date and size are those of package %1").arg(*first + 1),
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
void checkOrder(Report &report)
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

/// The packages of the newest release that has this status, or any where it is empty.
QList<int> newestOf(const PackageInfoList &packages, const QList<int> &among, const QString &status)
{
    QList<int> newest;
    VersionNumber highest;
    for (const int i : among) {
        const VersionNumber version = VersionNumber::fromText(packages.at(i).release);
        if ((!status.isEmpty() && packages.at(i).status != status) || (!newest.isEmpty() && version < highest))
            continue;
        if (version > highest)
            newest.clear();
        highest = version;
        newest.append(i);
    }
    return newest;
}

/// The languages whose users find nothing of these packages, where others find something.
QStringList usersWithout(const QList<int> &release, const QMap<QString, SoftUpIndexList> &hidden)
{
    QStringList users;
    for (auto user = hidden.cbegin(); user != hidden.cend(); ++user) {
        const bool findsOne = std::any_of(release.cbegin(), release.cend(), [&user](int package) {
            return !std::binary_search(user->cbegin(), user->cend(), package);
        });
        if (!findsOne)
            users.append(user.key());
    }
    return users;
}

/// Looks at the releases that the users of a camera are shown: the newest for all, and the newest of any status.
void checkLanguages(Report &report)
{
    const PackageInfoList &packages = report.catalogue.packages;
    QMap<QString, SoftUpIndexList> hidden; // by the users' language
    for (const QString &language : { QStringLiteral("en"), QStringLiteral("de"), QStringLiteral("fr") })
        hidden.insert(language, foreignLanguageRows(packages, language));
    QMap<QString, QList<int>> firmware; // by the cameras that it is for
    for (int i = 0; i < packages.size(); ++i) {
        if (packages.at(i).type == Kind::cameraFirmware)
            firmware[joined(packages.at(i).platforms)].append(i);
    }
    QMap<int, QList<int>> releases; // by their first packages
    for (const QList<int> &ofCamera : std::as_const(firmware)) {
        for (const QString &status : { Status::stable, QString() }) {
            const QList<int> release = newestOf(packages, ofCamera, status);
            if (!release.isEmpty())
                releases.insert(release.first(), release);
        }
    }
    for (const QList<int> &release : std::as_const(releases)) {
        const QStringList users = usersWithout(release, hidden);
        if (users.isEmpty())
            continue;
        QStringSet languages;
        for (const int package : release)
            languages.unite(packages.at(package).languages);
        const bool isSurprise = users.contains(QLatin1String("en")) && languages.contains(QLatin1String("en"));
        report.tell(release.first(), "languages",
                    QStringLiteral("nothing of this release is shown to users of ") + users.join(QStringLiteral(", ")),
                    QStringLiteral("its languages are \"%1\"").arg(joined(languages))
                        + (isSurprise ? QStringLiteral(", and English users want de and en together") : QString()));
    }
}

} // namespace

void checkReleases(Report &report)
{
    checkDuplicates(report);
    checkOrder(report);
    checkLanguages(report);
}

} // namespace qv
