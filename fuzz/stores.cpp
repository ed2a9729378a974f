// What client and manager find in a settings file, and in the cached answer that stands behind a line "%%": whatever
// the bytes, what is written of them reads back the same, and what claims to be large takes no memory.
#include "DownloadManager.h"
#include "Fuzz.h"
#include "LogQt.h"
#include "Memory.h"
#include "SoftwareUpdateClient.h"

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

using namespace qv;

namespace {

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    demand(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(), "there is room");
}

/// The values of a store, without the order of the history.
QStringList valuesOf(const QSettings &store)
{
    QStringList values;
    for (const QString &key : store.allKeys())
        values << key.section('/', -1) + '=' + store.value(key).toString();
    values.sort();
    return values;
}

void checkClient(SoftwareUpdateClient &client, const QString &file)
{
    QStringList written[3];
    for (QStringList &values : written) {
        SoftwareUpdateSettings settings;
        client.getCurrentSettings(&settings);
        SoftwareUpdateClient::isCheckDue(settings.updateInterval, settings.lastCheck, QDateTime::currentDateTime());
        client.setCurrentSettings(&settings);
        values = valuesOf(QSettings(file, QSettings::IniFormat));
    }
    // Not the first: a camera without a name takes its version for one.
    demand(written[1] == written[2], "settings stay what they are");
}

void checkManager(const QString &file, const QString &cache)
{
    {
        QSettings found(file, QSettings::IniFormat), stored(file + ".1", QSettings::IniFormat);
        DownloadManager manager(found, cache);
        for (const PackageInfo &package : manager.recentPackages(PackageInfo()))
            demand(package.flags & PackageInfo::PackageKnown, "what is cached is known");
        manager.queryUrl();
        const int preference = manager.server().proxyPreference;
        demand(preference >= HttpHost::NoProxy && preference <= HttpHost::GlobalProxy, "a preference is one of three");
        manager.storeHistory(stored, QString());
    }
    QFile::rename(file + ".1", file + ".2"); // Qt would take the values that it remembers of the name
    QSettings read(file + ".2", QSettings::IniFormat), stored(file + ".3", QSettings::IniFormat);
    DownloadManager(read, cache).storeHistory(stored, QString());
    demand(valuesOf(read) == valuesOf(stored), "the history reads back");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static char name[] = "fuzz", *names[] = { name, nullptr };
    static int words = 1, count = 0;
    static const QCoreApplication application(words, names);
    LogQt::setStream(Log::Warning, nullptr);
    SoftwareUpdateClient::sSoftUpQSettingsFormat = QSettings::IniFormat;

    const QTemporaryDir home;
    for (const auto scope : { QSettings::UserScope, QSettings::SystemScope })
        QSettings::setPath(QSettings::IniFormat, scope, home.path());
    static SoftwareUpdateClient client("Host", VersionNumber("1"), "http://127.0.0.1/", nullptr);
    QCoreApplication::setApplicationName(QString::number(++count));

    const QByteArray bytes(reinterpret_cast<const char *>(data), int(size));
    const int end = int(bytes.indexOf("\n%%\n"));
    const QString file = home.filePath("Quorvel/" + QString::number(count) + ".ini"), cache = home.filePath("cache");
    QDir(home.path()).mkdir("Quorvel");
    for (const QString &one : { file, file + ".0" }) // each takes out what Qt must not see
        write(one, bytes.mid(0, end));
    const qint64 before = memoryKiB("VmPeak:");
    write(cache, end < 0 ? QByteArray() : bytes.mid(end + 4));
    checkManager(file + ".0", cache);
    checkClient(client, file);
    demand(memoryKiB("VmPeak:") - before < 1024 * 1024, "nothing takes more than it holds");
    return 0;
}
