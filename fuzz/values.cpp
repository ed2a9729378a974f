// Versions, sizes, dates and suffixes, each line of the input one text: nothing throws, versions have an order, and the
// readings agree with slower ones.
#include "DownloadManager.h"
#include "Fuzz.h"
#include "LogQt.h"
#include "VersionNumber.h"

using namespace qv;

namespace {

void checkVersions(const VersionNumber &a, const VersionNumber &b, const VersionNumber &c)
{
    const int order = VersionNumber::compare(a, b);
    demand(order == -VersionNumber::compare(b, a), "an order does not hang on sides");
    demand(order > 0 || b > c || a <= c, "an order goes on");
    demand(order != 0 || VersionNumber::compare(a, c) == VersionNumber::compare(b, c), "equal ones compare equally");
    const VersionNumber copy = VersionNumber::fromText(a.toString());
    demand(a == copy && a.toString() == copy.toString(), "a version is its text");
    demand(a.toShortVersion().size() <= a.toString().size(), "a short version is short");
}

void checkText(const QString &text)
{
    const qint64 size = DownloadManager::parseFileSize(text);
    demand(DownloadManager::parseFileSize(QString::number(quint64(size))) == size, "sizes are read as written");
    demand(!text.startsWith('-') || size == 0, "no size is negative");

    QDateTime date;
    for (const char *format : { "yyyy-MM-dd hh:mm:ss", "yyyy-MM-dd" }) {
        if (!date.isValid())
            date = QDateTime::fromString(text, format);
    }
    const QDateTime read = DownloadManager::parseReleaseDate(text);
    demand(read.isValid() ? read == date : !date.isValid(), "dates are what Qt reads");

    const QString suffix = DownloadManager::parsePackageSuffix(text);
    demand(text.contains(suffix) || suffix == "tar.gz" || suffix == "tar.bz2", "a suffix stands in the URL");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    LogQt::setStream(Log::Error, nullptr);
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), int(size));
    const QStringList lines = text.split('\n');
    checkText(lines.first());
    checkVersions(VersionNumber::fromText(lines.value(0)), VersionNumber::fromText(lines.value(1)),
                  VersionNumber::fromText(lines.value(2)));
    return 0;
}
