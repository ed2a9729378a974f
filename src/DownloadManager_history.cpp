// What is remembered between runs: last check, server, the packages already seen, the last catalogue. Loaded by the
// constructor, stored when the host asks.
#include "DownloadManager.h"

#include "FileUtils.h"
#include "Preferences.h"

#include <QFileInfo>

namespace qv {

namespace {

const QString Group = QStringLiteral("Download");
const QString LastCheckKey = QStringLiteral("last-check");
const QString RegularCheckKey = QStringLiteral("reg-check");
const QString OldRegularCheckKey = QStringLiteral("regular-check");
const QString VersionKey = QStringLiteral("ver");
const QString HistoryKey = QStringLiteral("hist");
const QString PackageKey = QStringLiteral("version"); // inside the history: the package's identity text
const QString TimeKey = QStringLiteral("time");

constexpr int CurrentVersion = 3;
constexpr int YearsRemembered = 2;

/// No answer is ever longer; and what is no plain file may have no end.
bool isCache(const QFileInfo &file)
{
    return file.isFile() && file.size() <= RequestData::MostBytesKept;
}

/// False behind the last entry: arrays have no gaps, whereas the stored size may be any number.
bool moveToEntry(QSettings &settings, int index)
{
    settings.setArrayIndex(index);
    return settings.contains(PackageKey) || settings.contains(TimeKey);
}

/// In UTC, as it is stored: local times for a long history take half a second.
QDateTime firstSeen(const QSettings &settings)
{
    return QDateTime::fromString(settings.value(TimeKey).toString(), Qt::ISODateWithMs).toUTC();
}

} // namespace

void DownloadManager::loadHistory(QSettings &settings, const QString &cacheFile)
{
    if (!cacheFile.isEmpty() && isCache(QFileInfo(cacheFile)))
        lastAnswer = FileUtils::readBytes(cacheFile);

    settings.beginGroup(Group);
    lastCheck = Preferences::dateTimeValue(settings, LastCheckKey, QDateTime());
    regularCheck = Preferences::boolValue(settings, RegularCheckKey, false);
    host.load(settings);
    if (Preferences::intValue(settings, VersionKey, 0) < CurrentVersion)
        setServer(QUrl(UPDATE_URL));

    const QDateTime limit = QDateTime::currentDateTime().addYears(-YearsRemembered).toUTC();
    const int size = settings.beginReadArray(HistoryKey);
    for (int i = 0; i < size && moveToEntry(settings, i); ++i) {
        const QDateTime time = firstSeen(settings);
        if (time.isValid() && time >= limit)
            history.insert(Preferences::stringValue(settings, PackageKey, QString()), time);
    }
    settings.endArray();
    settings.endGroup();
}

void DownloadManager::storeHistory(QSettings &settings, const QString &cacheFile) const
{
    if (!cacheFile.isEmpty() && !lastAnswer.isEmpty())
        FileUtils::writeBytes(lastAnswer, cacheFile);

    settings.beginGroup(Group);
    Preferences::setDateTimeValue(settings, LastCheckKey, lastCheck);
    settings.setValue(RegularCheckKey, regularCheck);
    settings.remove(OldRegularCheckKey);
    settings.setValue(VersionKey, CurrentVersion);
    host.store(settings, false);

    settings.beginWriteArray(HistoryKey, int(history.size()));
    int i = 0;
    for (auto entry = history.cbegin(); entry != history.cend(); ++entry) {
        settings.setArrayIndex(i++);
        settings.setValue(PackageKey, entry.key());
        Preferences::setDateTimeValue(settings, TimeKey, entry.value());
    }
    while (moveToEntry(settings, i++)) // of a longer history before
        settings.remove(QString());
    settings.endArray();
    settings.endGroup();
}

} // namespace qv
