// What is remembered between runs: last check, server, the packages already seen, the last catalogue. Loaded by the
// constructor, stored when the host asks.
#include "DownloadManager.h"

#include "FileUtils.h"
#include "Preferences.h"

#include <QFileInfo>

namespace qv {

namespace {

const QString groupName = QStringLiteral("Download");
const QString lastCheckKey = QStringLiteral("last-check");
const QString regularCheckKey = QStringLiteral("reg-check");
const QString oldRegularCheckKey = QStringLiteral("regular-check");
const QString versionKey = QStringLiteral("ver");
const QString historyKey = QStringLiteral("hist");
const QString packageKey = QStringLiteral("version"); // inside the history: the package's identity text
const QString timeKey = QStringLiteral("time");

constexpr int currentVersion = 3;
constexpr int yearsRemembered = 2;

/// No answer is ever longer; and what is no plain file may have no end.
bool isCache(const QFileInfo &file)
{
    return file.isFile() && file.size() <= RequestData::maxBytesKept;
}

/// False behind the last entry: arrays have no gaps, whereas the stored size may be any number.
bool moveToEntry(QSettings &settings, int index)
{
    settings.setArrayIndex(index);
    return settings.contains(packageKey) || settings.contains(timeKey);
}

/// In UTC, as it is stored: local times for a long history take half a second.
QDateTime firstSeen(const QSettings &settings)
{
    return QDateTime::fromString(settings.value(timeKey).toString(), Qt::ISODateWithMs).toUTC();
}

} // namespace

void DownloadManager::loadHistory(QSettings &settings, const QString &cacheFile)
{
    if (!cacheFile.isEmpty() && isCache(QFileInfo(cacheFile)))
        lastAnswer = FileUtils::readBytes(cacheFile);

    settings.beginGroup(groupName);
    lastCheck = Preferences::dateTimeValue(settings, lastCheckKey, QDateTime());
    regularCheck = Preferences::boolValue(settings, regularCheckKey, false);
    host.load(settings);
    if (Preferences::intValue(settings, versionKey, 0) < currentVersion)
        setServer(QUrl(UPDATE_URL));

    const QDateTime limit = QDateTime::currentDateTime().addYears(-yearsRemembered).toUTC();
    const int size = settings.beginReadArray(historyKey);
    for (int i = 0; i < size && moveToEntry(settings, i); ++i) {
        const QDateTime time = firstSeen(settings);
        if (time.isValid() && time >= limit)
            history.insert(Preferences::stringValue(settings, packageKey, QString()), time);
    }
    settings.endArray();
    settings.endGroup();
}

void DownloadManager::storeHistory(QSettings &settings, const QString &cacheFile) const
{
    if (!cacheFile.isEmpty() && !lastAnswer.isEmpty())
        FileUtils::writeBytes(lastAnswer, cacheFile);

    settings.beginGroup(groupName);
    Preferences::setDateTimeValue(settings, lastCheckKey, lastCheck);
    settings.setValue(regularCheckKey, regularCheck);
    settings.remove(oldRegularCheckKey);
    settings.setValue(versionKey, currentVersion);
    host.store(settings, false);

    settings.beginWriteArray(historyKey, int(history.size()));
    int i = 0;
    for (auto entry = history.cbegin(); entry != history.cend(); ++entry) {
        settings.setArrayIndex(i++);
        settings.setValue(packageKey, entry.key());
        Preferences::setDateTimeValue(settings, timeKey, entry.value());
    }
    while (moveToEntry(settings, i++)) // of a longer history before
        settings.remove(QString());
    settings.endArray();
    settings.endGroup();
}

} // namespace qv
