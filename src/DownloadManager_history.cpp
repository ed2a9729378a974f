// What is remembered between runs: last check, server, the packages already seen, the last catalogue. Loaded by the
// constructor, stored when the host asks.
#include "DownloadManager.h"

#include "FileUtils.h"
#include "Preferences.h"

#include <QFileInfo>

#include <algorithm>

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

    const QDateTime limit = QDateTime::currentDateTime().addYears(-YearsRemembered);
    // The stored size may be any number; the entries are there or not.
    const int size = settings.beginReadArray(HistoryKey);
    const int count = std::min(size, int(settings.childGroups().size()));
    for (int i = 0; i < count; ++i) {
        settings.setArrayIndex(i);
        const QDateTime time = Preferences::dateTimeValue(settings, TimeKey, QDateTime());
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

    settings.remove(HistoryKey);
    settings.beginWriteArray(HistoryKey, int(history.size()));
    int i = 0;
    for (auto entry = history.cbegin(); entry != history.cend(); ++entry) {
        settings.setArrayIndex(i++);
        settings.setValue(PackageKey, entry.key());
        Preferences::setDateTimeValue(settings, TimeKey, entry.value());
    }
    settings.endArray();
    settings.endGroup();
}

} // namespace qv
