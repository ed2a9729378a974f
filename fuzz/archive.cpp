// An archive, unpacked: nothing appears outside its folder, nothing in it leads out or may do more than it should, and
// a failure or a cancellation leaves nothing. What does not begin as an archive is a list of entries to make one of, a
// line for each, as "lname=target": so checksums are right.
#include "FileUtils.h"
#include "Fuzz.h"
#include "IOException.h"
#include "ZipBuilder.h"
#include "ZipExtractor.h"

#include <QFile>

#include <filesystem>

using namespace qv;
namespace fs = std::filesystem;

namespace {

QByteArray archiveOf(const QByteArray &bytes)
{
    if (bytes.startsWith("PK"))
        return bytes;
    QList<ZipItem> items;
    for (const QByteArray &line : bytes.split('\n')) {
        const int cut = int(line.indexOf('='));
        const char kind = line.isEmpty() ? ' ' : line[0];
        const unsigned type = kind == 'l' ? S_IFLNK : kind == 'd' ? S_IFDIR : kind == 'p' ? S_IFIFO : S_IFREG;
        ZipItem item(line.mid(1, cut < 0 ? -1 : cut - 1), cut < 0 ? QByteArray() : line.mid(cut + 1), type | 07777);
        items << (kind == 'z' ? item.deflate() : kind == 'w' ? item.wide() : kind == 'm' ? item.by(0) : item);
    }
    return ZipBuilder::archive(items);
}

QByteArray everythingIn(const fs::path &folder)
{
    QByteArray all;
    for (const auto &entry : fs::recursive_directory_iterator(folder)) {
        struct stat status = {};
        lstat(entry.path().c_str(), &status);
        all += entry.path().c_str() + QByteArray::number(status.st_mode) + QByteArray::number(qint64(status.st_size));
    }
    return all;
}

void checkUnpacked(const fs::path &folder, quint64 limit)
{
    quint64 total = 0;
    const std::string inside = folder.string() + '/';
    for (auto entry = fs::recursive_directory_iterator(folder); entry != fs::recursive_directory_iterator(); ++entry) {
        struct stat status = {};
        lstat(entry->path().c_str(), &status);
        demand(entry.depth() < 128, "no tree is too deep");
        if (S_ISLNK(status.st_mode)) {
            std::error_code loop;
            const fs::path target = fs::weakly_canonical(entry->path(), loop);
            demand(loop || (target / "").string().compare(0, inside.size(), inside) == 0, "links stay inside");
            continue;
        }
        demand(S_ISREG(status.st_mode) || S_ISDIR(status.st_mode), "neither devices nor pipes");
        demand((status.st_mode & 07777 & ~0755u) == 0 && (status.st_mode & 0600) == 0600, "modes are masked");
        total += S_ISREG(status.st_mode) ? quint64(status.st_size) : 4096;
    }
    demand(total <= limit, "sizes have a limit");
}

void unpack(const QString &arena, bool flat, int stepsUntilCancelled)
{
    QFile file(arena + "/archive.zip");
    const QString folder = arena + "/around/target";
    bool isWhole = false;
    try {
        std::vector<ZipEntry> entries = readZipDirectory(file);
        if (flat)
            flattenZipPaths(entries);
        isWhole = extractZip(file, entries, folder, [&](quint64, quint64) { return --stepsUntilCancelled != 0; });
        for (const ZipEntry &entry : entries)
            demand(!isWhole || !entry.wanted || entry.path.isEmpty()
                       || fs::exists(fs::symlink_status((folder + '/').toStdString() + entry.path.toStdString())),
                   "no entry is left out");
    } catch (const IOException &) {
    }
    const fs::path place = folder.toStdString();
    if (isWhole)
        checkUnpacked(place, qMax<quint64>(32 << 20, quint64(file.size()) * 250));
    else
        demand(!fs::exists(place) || fs::is_empty(place), "a failure leaves nothing");
    demand(!fs::exists(place) || FileUtils::eraseFolder(folder), "what was unpacked can be removed");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const struct Arena
    {
        Arena()
        {
            fs::create_directories((path + "/around/beside").toStdString());
            FileUtils::writeBytes("canary", path + "/around/canary");
        }
        ~Arena() { FileUtils::eraseFolder(path); }
        const QString path = FileUtils::createTempDir();
    } arena;
    const fs::path around = (arena.path + "/around").toStdString();
    const QByteArray before = everythingIn(around);
    FileUtils::writeBytes(archiveOf(QByteArray(reinterpret_cast<const char *>(data), int(size))),
                          arena.path + "/archive.zip");
    unpack(arena.path, false, 0);
    unpack(arena.path, size % 2 != 0, int(size / 2 % 8));
    demand(everythingIn(around) == before, "nothing else is touched");
    return 0;
}
