// The package record, and which packages are picked for what is installed.
#include "DownloadManager.h"
#include "PackageIndex.h"
#include "QtCompat.h"
#include "Row.h"
#include "SoftwareUpdateClient.h"

#include <QtTest>

using namespace qv;

namespace {

PackageInfo package(const QString &release, const QString &status = "STABLE", const QStringSet &platforms = { "linux" })
{
    return PackageInfo("t", "Host", release, status, QDateTime(), platforms, {}, "zip", "");
}

QString releases(const PackageInfoList &packages)
{
    QStringList texts;
    for (const PackageInfo &package : packages)
        texts << package.release;
    return texts.join(' ');
}

PackageInfoList listOf(const QString &releases)
{
    PackageInfoList packages;
    for (const QString &release : releases.split(' '))
        packages << package(release);
    return packages;
}

struct Shouting : QTranslator
{
    QString translate(const char *context, const char *text, const char *, int) const override
    {
        return qstrcmp(context, "Download") == 0 ? QString::fromUtf8(text).toUpper() : QString();
    }
    bool isEmpty() const override { return false; }
};

} // namespace

class PackagesTest : public QObject
{
    Q_OBJECT

private slots:
    void identity()
    {
        PackageInfo a = package("1"), b("u", "Other", "2", "BETA", QDateTime(), {}, {}, "exe", "c");
        QVERIFY(a == b);
        a.releaseDate = b.releaseDate = QDateTime(QDate(2011, 4, 5), QTime(10, 30));
        a.fileSize = b.fileSize = 5242880;
        QVERIFY(a == b);
        QCOMPARE(a.stringID(), QStringLiteral("1-2011-04-05T10:30:00-5242880"));
        ++b.fileSize;
        QVERIFY(a != b);
        QVERIFY(a.matchesPackage("a", "b") && a.matchesPackage("", "x"));
        QVERIFY(DownloadManager::qMetaTypes != 0);
        for (const char *name : { "qv::PackageInfoList", "PackageInfoList" })
            QCOMPARE(typeId(name), DownloadManager::qMetaTypes);
    }

    void display()
    {
        PackageInfo p = package("4.4.2");
        QCOMPARE(p.publicRelease + p.publicName, QStringLiteral("4.4.2Host"));
        p.publicName = "Public";
        p.publicRelease = "2026";
        QCOMPARE(p.displayName(true) + p.displayName(false), QStringLiteral("PublicHost"));
        QCOMPARE(p.displayReleaseVersion(true) + ' ' + p.displayReleaseVersion(false), QStringLiteral("2026 4.4.2"));
        p.release.clear();
        p.publicName.clear();
        QCOMPARE(p.displayName(true) + p.displayReleaseVersion(false), QStringLiteral("Host2026"));
        p.url = QUrl("http://h/a/b%20c.zip?x=1/2");
        QCOMPARE(p.fileName(), QStringLiteral("b c.zip"));
        p.releaseDate = QDateTime(QDate(2011, 4, 5), QTime(0, 0));
        QCOMPARE(p.timeToString(Qt::ISODate), QStringLiteral("2011-04-05"));
        p.releaseDate = p.releaseDate.addSecs(1);
        QCOMPARE(p.timeToString(Qt::ISODate), QStringLiteral("2011-04-05T00:00:01"));
        for (const QString suffix : { "ZIP", "Rpm", "zip", "tar.gz", "msi", "" })
            QCOMPARE(PackageInfo::isInstallable(suffix), QStringList({ "ZIP", "Rpm", "zip" }).contains(suffix));
    }

    void languageFallback()
    {
        PackageInfo p;
        p.releaseNotes = UrlMap {
            { "de", QUrl("older") }, { "de", QUrl("newer") }, { "de_DE", QUrl("exact") }, { "en", QUrl("english") }
        };
        p.readme = p.releaseNotes;
        for (const QString one :
             { "de_DE en exact", "de_CH en_US newer", "fr_FR en english", "fr_FR en_US english", "fr it " }) {
            const QStringList words = one.split(' '); // asked for, fallback, found
            QCOMPARE(p.releaseNotesUrl(words[0], words[1]).toString(), words[2]);
            QCOMPARE(p.readmeUrl(words[0], words[1]).toString(), words[2]);
        }
    }

    void valueLists()
    {
        PackageInfoList list { package("1", "STABLE", { "b", "a" }), package(""), package("1") };
        list[0].languages = { "de" };
        const auto sorted = [](QStringList words) {
            words.sort();
            return words.join('|');
        };
        QCOMPARE(sorted(PackageInfo::allPlatforms(list, false)), QStringLiteral("a|b|linux"));
        QCOMPARE(sorted(PackageInfo::allReleases(list, true)), QStringLiteral("|1"));
        Shouting translator;
        QCoreApplication::installTranslator(&translator);
        QCOMPARE(sorted(PackageInfo::allPlatforms(list, false)), QStringLiteral("A|B|LINUX"));
        QCOMPARE(sorted(PackageInfo::allLanguages(list, false)), QStringLiteral("DE"));
        QCOMPARE(PackageInfo::allTypes(list, true), QStringList("T"));
        QCOMPARE(PackageInfo::allTypes(list, false), QStringList("t"));
        QCoreApplication::removeTranslator(&translator);
    }

    void filters_data()
    {
        // candidate: for a check; match: for a query
        columns<PackageInfo, QString, bool, bool>("filter", "suffixes", "candidate", "match");
        const auto filter = [](const QString &name, const QString &release, const QString &status,
                               const QStringSet &platforms, const QStringSet &languages = {},
                               const QDateTime &date = {}) {
            return PackageInfo("x", name, release, status, date, platforms, languages, "", "");
        };
        const QDateTime day(QDate(2020, 1, 2), QTime(0, 0));
        row("empty", PackageInfo(), "", true, true);
        row("all but the release's text", filter("Host", "2.9", "BETA", { "linux-arm" }, { "fr" }, day), "zip", true,
            false);
        row("all", filter("Host", "2.1", "BETA", { "lin" }, { "fr" }, day), "zip", true, true);
        row("name's case", filter("host", "", "", {}), "", false, true);
        row("same release", filter("", "2.10.0", "", {}), "", false, false);
        row("beta for stable", filter("", "", "STABLE", {}), "", false, true);
        row("beta for alpha", filter("", "", "ALPHA", {}), "", false, false);
        row("platform's case", filter("", "", "", { "Linux" }), "", false, true);
        row("suffix' case", PackageInfo(), "exe ZIP", false, true);
        row("languages are left out", filter("", "", "", {}, { "de" }), "", true, false);
        row("older", filter("", "", "", {}, {}, day.addSecs(1)), "", true, false);
    }
    void filters()
    {
        QFETCH(PackageInfo, filter);
        QFETCH(QString, suffixes);
        PackageInfo p = package("2.10", "BETA");
        p.releaseDate = QDateTime(QDate(2020, 1, 2), QTime(0, 0));
        p.languages = { "de", "en" };
        QTEST(p.filterPackageCandidate(filter, suffixes.split(' ', Qt::SkipEmptyParts)), "candidate");
        QTEST(p.matchesFilter(filter), "match");
    }

    void candidates()
    {
        // offered, installed, kept
        for (const QString words :
             { "2.9.1 2.10 2.8,2.9,2.10", "3.0 2.0 3.0,1,3.0 3.0", "2.1 2.1.0 2.1,1,2.1 2.1", " ,,", "1.0 2.0,2.0," }) {
            PackageInfoList packages = listOf(words.section(',', 0, 0));
            PackageInfo filter;
            filter.release = words.section(',', 1, 1);
            const PackageInfoList kept = DownloadManager::findPackageCandidates(packages, filter, "kind", {});
            QCOMPARE(releases(kept), words.section(',', 2));
            for (const PackageInfo &package : packages)
                QCOMPARE(package.type, QString(package.filterPackageCandidate(filter, {}) ? "kind" : "t"));
            for (const PackageInfo &package : kept)
                QCOMPARE(package.type, QStringLiteral("kind"));
        }
    }

    void indexFindsTheSame()
    {
        QRandomGenerator random(3);
        const auto words = [&random] {
            QStringSet set;
            for (int count = random.bounded(3); count > 0; --count)
                set << QString("QC-2000x").left(1 + random.bounded(8)) + QString(random.bounded(2), 'y');
            return set;
        };
        PackageInfoList packages;
        for (int i = 0; i < 200; ++i) {
            packages << package(QStringList { "0", "1", "2.0", "2" }.at(random.bounded(4)), "STABLE", words());
            packages.last().fileSize = i % 150;
        }
        const PackageIndex index(packages);
        for (int i = 0; i < 100; ++i) {
            PackageInfo filter;
            filter.platforms = words();
            PackageInfoList one = packages, other = packages;
            QCOMPARE(releases(DownloadManager::findPackageCandidates(one, index, filter, "kind", {})),
                     releases(DownloadManager::findPackageCandidates(other, filter, "kind", {})));
            for (int j = 0; j < packages.size(); ++j)
                QCOMPARE(one[j].type, other[j].type);

            // All cameras at once.
            SoftwareUpdateSettings settings;
            PackageInfoList expected;
            const QStringList models = filter.platforms.values();
            for (const QString &model : models + models) { // with two versions each
                filter.platforms = { model };
                filter.release = QString::number(random.bounded(3));
                settings.currentCameraVersions.append(qMakePair(model, VersionNumber::fromText(filter.release)));
                expected += DownloadManager::findPackageCandidates(one, filter, "kind", {});
            }
            DownloadManager::eliminateDuplicatePackages(expected);
            QCOMPARE(releases(SoftwareUpdateClient::offeredPackages(packages, "none", settings, true)),
                     releases(expected));
        }
    }

    void duplicates()
    {
        PackageInfoList packages = listOf("1 2 3 4");
        packages[1].fileSize = packages[3].fileSize = 5;
        DownloadManager::eliminateDuplicatePackages(packages);
        QCOMPARE(releases(packages), QStringLiteral("1 2"));
    }

    void bestMatches()
    {
        PackageInfoList packages { package("1.2"),
                                   package("1.3", "STABLE", { "lin", "linux", "mac" }),
                                   package("1.3", "STABLE", { "bsd" }),
                                   package("9", "STABLE", {}),
                                   package("1.0", "BETA", { "mac" }),
                                   package("1.3", "STABLE", { "bsd" }) };
        packages[2].comment = "first of equals";
        const PackageInfoList best = DownloadManager::findBestMatches(packages, PackageInfo());
        QCOMPARE(releases(best), QStringLiteral("1.3 1.3 1.0"));
        QCOMPARE(best[0].comment, QStringLiteral("first of equals"));
        PackageInfo filter;
        filter.release = "1.2";
        QCOMPARE(releases(DownloadManager::findBestMatches(packages, filter)), QStringLiteral("1.3 1.3"));
        packages[5].releaseDate = QDateTime(QDate(2020, 1, 2), QTime(0, 0));
        QCOMPARE(DownloadManager::findBestMatches(packages, PackageInfo()).value(0).comment, QString());

        packages[0].flags = PackageInfo::PackageKnown | 2;
        packages[1].flags = 2;
        QCOMPARE(DownloadManager::countNew(packages), 5);
    }
};

QTEST_MAIN(PackagesTest)
#include "tst_packages.moc"
