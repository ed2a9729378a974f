// An answer of an update server, from its bytes to what is offered, shown and remembered. Two readers and two ways to
// select must agree, and no text may bring markup or turn the text around it.
#include "DownloadManager.h"
#include "Fuzz.h"
#include "LogQt.h"
#include "PackageIndex.h"
#include "SoftwareUpdateClient.h"
#include "XmlUtils.h"

#include <QBuffer>
#include <QRegularExpression>

#include <algorithm>
#include <tuple>

using namespace qv;

namespace {

bool areSame(const PackageInfoList &left, const PackageInfoList &right)
{
    const auto all = [](const PackageInfo &p) {
        return std::tie(p.type, p.name, p.publicName, p.platforms, p.url, p.release, p.publicRelease, p.status,
                        p.releaseDate, p.fileSize, p.languages, p.releaseNotes, p.readme, p.flags, p.suffix, p.comment);
    };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [all](const PackageInfo &a, const PackageInfo &b) { return all(a) == all(b); });
}

/// The same catalogue, read by the operations on nodes of a DOM.
PackageInfoList readAsDom(QBuffer &catalogue)
{
    QDomDocument document;
    PackageInfoList packages;
    catalogue.seek(0);
    DownloadManager::parseSet(XmlUtils::parseXml(&catalogue, &document)->documentElement(), packages);
    return packages;
}

void checkTexts(const PackageInfo &package)
{
    PackageInfo plain;
    plain.releaseDate = package.releaseDate;
    const QString comment = SoftwareUpdateClient::packageComment(package);
    const QString shown = QString(comment).remove(QRegularExpression("href=\"[^\"]*\""));
    demand(comment.count('<') == SoftwareUpdateClient::packageComment(plain).count('<'), "texts are escaped");
    for (const QChar c : SoftwareUpdateClient::packageRow(package).join(' ') + shown)
        demand((c < QChar(0x202a) || c > QChar(0x202e)) && (c < QChar(0x2066) || c > QChar(0x2069)), "text is upright");
}

void checkSelection(const PackageInfoList &packages)
{
    const PackageIndex index(packages);
    QStringSet platforms { "QD" };
    for (const PackageInfo &package : packages.mid(0, 3)) {
        for (const QString &word : package.platforms)
            platforms << word << word.left(2) << word + "x";
    }
    SoftwareUpdateSettings settings;
    for (const QString &platform : platforms) {
        const PackageInfo filter({}, {}, "1.0", {}, {}, { platform }, {}, "", "");
        PackageInfoList one = packages, other = packages;
        demand(areSame(DownloadManager::findPackageCandidates(one, filter, "t", {}),
                       DownloadManager::findPackageCandidates(other, index, filter, "t", {}))
                   && areSame(one, other),
               "an index finds what is there");
        settings.currentCameraVersions.append({ platform, VersionNumber("1.0") });
    }
    const auto offered = SoftwareUpdateClient::offeredPackages(packages, "Camera Host", settings, true);
    const SoftUpIndexList rows = SoftwareUpdateClient::foreignLanguageRows(offered, "de");
    demand(rows.isEmpty() || (std::is_sorted(rows.begin(), rows.end()) && rows.last() < offered.size()), "rows");
    demand(DownloadManager::findBestMatches(packages, PackageInfo()).size() <= packages.size(), "best are few");
}

/// Asked twice, a manager knows all that it has seen.
void checkHistory(QBuffer &answer)
{
    DownloadManager manager(QUrl("http://127.0.0.1/"));
    PackageInfoList found;
    QObject::connect(&manager, &DownloadManager::packageFound, [&found](const PackageInfoList &all) { found = all; });
    struct RequestData;
    for (int time = 0; time < 2; ++time) {
        answer.seek(0);
        demand(QMetaObject::invokeMethod(&manager, "queryResult", Q_ARG(QIODevice *, &answer),
                                         Q_ARG(RequestData *, nullptr)),
               "the manager takes answers");
    }
    demand(DownloadManager::countNew(found) == 0, "what was seen is known");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    for (const auto level : { Log::Warning, Log::Error })
        LogQt::setStream(level, nullptr);
    QByteArray bytes(reinterpret_cast<const char *>(data), int(size));
    QBuffer catalogue(&bytes);
    catalogue.open(QIODevice::ReadOnly);
    const PackageInfoList packages = DownloadManager::parseXML(&catalogue);
    if (packages.isEmpty())
        return 0;
    demand(areSame(packages, readAsDom(catalogue)), "tree and DOM say the same");
    for (const PackageInfo &package : packages)
        checkTexts(package);
    checkSelection(packages);
    checkHistory(catalogue);
    return 0;
}
