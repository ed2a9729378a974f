// What is remembered between runs: last check, server, the packages already seen, the last catalogue. Loaded by the
// constructor, stored when the host asks, told again by recentPackages().
#include "DownloadManager_p.h"

#include "CatalogueReader.h"
#include "FileUtils.h"
#include "Preferences.h"

#include <QBuffer>
#include <QFileInfo>

#include <algorithm>
#include <vector>

namespace qv {

namespace {

constexpr QLatin1String groupName("Download");
constexpr QLatin1String lastCheckKey("last-check");
constexpr QLatin1String regularCheckKey("reg-check");
constexpr QLatin1String oldRegularCheckKey("regular-check");
constexpr QLatin1String versionKey("ver");
constexpr QLatin1String historyKey("hist");
constexpr QLatin1String packageKey("version"); // inside the history: the package's identity text
constexpr QLatin1String timeKey("time");

constexpr int currentVersion = 3;
constexpr int yearsRemembered = 2;
constexpr qsizetype mostRemembered = 100 * 1000;

/// No answer is ever longer; and what is no plain file may have no end.
bool isCache(const QFileInfo &file)
{
    return file.isFile() && file.size() <= RequestData::maxBytesKept;
}

/// The entries of the history that have keys, ascending: the stored size may be any number.
std::vector<int> storedIndexes(QSettings &settings)
{
    std::vector<int> indexes;
    settings.beginGroup(historyKey);
    for (const QString &name : settings.childGroups())
        indexes.push_back(name.toInt() - 1);
    settings.endGroup();
    std::sort(indexes.begin(), indexes.end());
    indexes.erase(indexes.begin(), std::lower_bound(indexes.begin(), indexes.end(), 0));
    return indexes;
}

/// In UTC, as it is stored: local times for a long history take half a second.
QDateTime firstSeen(const QSettings &settings)
{
    return QDateTime::fromString(settings.value(timeKey).toString(), Qt::ISODateWithMs).toUTC();
}

} // namespace

void DownloadManagerPrivate::loadHistory(QSettings &settings, const QString &cacheFile)
{
    if (!cacheFile.isEmpty() && isCache(QFileInfo(cacheFile)))
        lastAnswer = FileUtils::readBytes(cacheFile);

    if (!Preferences::mend(settings)) {
        setServer(QUrl(DownloadManager::UPDATE_URL));
        return;
    }
    settings.beginGroup(groupName);
    trust.load(settings);
    lastCheck = Preferences::dateTimeValue(settings, lastCheckKey, QDateTime());
    regularCheck = Preferences::boolValue(settings, regularCheckKey, false);
    host.load(settings);
    if (Preferences::intValue(settings, versionKey, 0) < currentVersion)
        setServer(QUrl(DownloadManager::UPDATE_URL));

    const QDateTime limit = QDateTime::currentDateTimeUtc().addYears(-yearsRemembered);
    const std::vector<int> indexes = storedIndexes(settings);
    const int size = settings.beginReadArray(historyKey);
    for (const int index : indexes) {
        if (index >= size)
            break;
        settings.setArrayIndex(index);
        const QDateTime time = firstSeen(settings);
        if (time.isValid() && time >= limit)
            history.insert(Preferences::stringValue(settings, packageKey, QString()), time);
    }
    settings.endArray();
    settings.endGroup();
    forgetOldest();
}

/// Keeps the youngest of a history that hostile answers have filled.
void DownloadManagerPrivate::forgetOldest()
{
    const auto surplus = qsizetype(history.size()) - mostRemembered;
    if (surplus <= 0)
        return;
    std::vector<std::pair<QDateTime, QString>> entries;
    for (auto entry = history.cbegin(); entry != history.cend(); ++entry)
        entries.emplace_back(entry.value(), entry.key());
    std::nth_element(entries.begin(), entries.begin() + surplus, entries.end());
    for (auto entry = entries.cbegin(); entry != entries.cbegin() + surplus; ++entry)
        history.remove(entry->second);
}

void DownloadManager::storeHistory(QSettings &settings, const QString &cacheFile) const
{
    if (!cacheFile.isEmpty() && !d->lastAnswer.isEmpty())
        FileUtils::writeBytes(d->lastAnswer, cacheFile);

    if (!Preferences::mend(settings))
        return;
    settings.beginGroup(groupName);
    Preferences::setDateTimeValue(settings, lastCheckKey, d->lastCheck);
    settings.setValue(regularCheckKey, d->regularCheck);
    settings.remove(oldRegularCheckKey);
    settings.setValue(versionKey, currentVersion);
    d->host.store(settings, false);
    d->trust.save(settings);

    settings.remove(historyKey); // a longer one before leaves nothing behind
    settings.beginWriteArray(historyKey, int(d->history.size()));
    int i = 0;
    for (auto entry = d->history.cbegin(); entry != d->history.cend(); ++entry) {
        settings.setArrayIndex(i++);
        settings.setValue(packageKey, entry.key());
        Preferences::setDateTimeValue(settings, timeKey, entry.value());
    }
    settings.endArray();
    settings.endGroup();
}

PackageInfoList DownloadManager::recentPackages(const PackageInfo &)
{
    if (d->lastAnswer.isEmpty())
        return PackageInfoList();
    QBuffer input(&d->lastAnswer);
    input.open(QIODevice::ReadOnly);
    PackageInfoList packages = d->read(&input);
    for (PackageInfo &package : packages)
        package.flags |= PackageInfo::PackageKnown;
    return packages;
}

PackageInfoList DownloadManager::recentPackages(const QString &type, const QString &name, const QString &release,
                                                const QString &status, const QDateTime &releaseDate,
                                                const QStringSet &platforms, const QStringSet &languages)
{
    return recentPackages(
        PackageInfo(type, name, release, status, releaseDate, platforms, languages, QString(), QString()));
}

} // namespace qv
