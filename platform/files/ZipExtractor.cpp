// Writes what an archive holds: libarchive reads and checks it, we decide where it goes. Called by ZipReader and by
// Unzipper's thread; leaves a whole folder or an empty one.
//
// Large archives are written by several threads, each with a reader of its own that passes over what others have taken.
// Not archive_write_disk: that changes the umask of the whole process, and its working directory, while hosts' other
// threads run. Files and folders come first and links last, so that no file is ever written through a link.
#include "ZipExtractor.h"
#include "FileUtils.h"
#include "IOException.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <locale.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

namespace qv {

namespace {

constexpr size_t readBlock = 64 * 1024;
constexpr quint64 diskReserve = 64 * 1024 * 1024;
// Text deflates to a tenth, logs to a fiftieth; only long runs of one value come near deflate's own limit of 1030.
constexpr quint64 maxRatio = 250;
constexpr quint64 alwaysAllowed = 32 * 1024 * 1024;
constexpr quint64 bytesOfFolder = 4096; // on most disks
constexpr mode_t keptMode = 0755;
constexpr quint64 maxThreads = 4;
constexpr quint64 worthAThread = 1024 * 1024, worthAHeader = 1024; // in bytes to write; each thread reads all headers
constexpr quint64 maxHeaders = 200'000;                            // in memory at once, of all threads
constexpr std::chrono::milliseconds msBetweenQuestions(10);

struct Stopped
{
};

/// libarchive reads names in the thread's locale, and gives none at all in "C".
class Utf8Locale
{
public:
    Utf8Locale() : utf8(newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t())), before(uselocale(utf8)) { }
    ~Utf8Locale()
    {
        uselocale(before);
        if (utf8)
            freelocale(utf8);
    }
    Q_DISABLE_COPY(Utf8Locale)

private:
    locale_t utf8;
    locale_t before;
};

class Descriptor
{
public:
    explicit Descriptor(int descriptor) : fd(descriptor) { }
    ~Descriptor() { close(); }
    Q_DISABLE_COPY(Descriptor)

    operator int() const { return fd; }
    bool close() { return fd < 0 || ::close(std::exchange(fd, -1)) == 0; }

private:
    int fd;
};

/// What is set last: the permission bits and the times of access and modification.
struct Attributes
{
    explicit Attributes(archive_entry *header) : mode(archive_entry_perm(header) & keptMode)
    {
        if (archive_entry_mtime_is_set(header)) {
            times[0] = times[1] = { archive_entry_mtime(header), archive_entry_mtime_nsec(header) };
        }
    }

    mode_t mode;
    std::array<timespec, 2> times { timespec { 0, UTIME_NOW }, timespec { 0, UTIME_NOW } };
};

class Extraction
{
public:
    Extraction(QFile &file, const std::vector<ZipEntry> &all, const QString &folder, const ZipProgress &callback);

    void run();

private:
    struct Late
    {
        const ZipEntry *entry;
        Attributes attributes;
    };

    struct Worker // what each thread has of its own
    {
        const Utf8Locale locale;
        const std::shared_ptr<struct archive> reader { archive_read_new(), &archive_read_free };
        size_t headersRead = 0;
        QByteArray lastMade; // of the folders; hostile archives have so many that all would fill the memory
    };

    void checkLimits();
    void unpackAll();
    void unpackUnclaimed(int file);
    void attempt(const std::function<void()> &part) noexcept;
    void unpack(Worker &worker, const ZipEntry &entry, archive_entry *header);
    void writeFile(Worker &worker, const ZipEntry &entry, const Attributes &attributes);
    void writeBlock(const ZipEntry &entry, int file, const char *bytes, size_t size);
    bool isFolder(const QByteArray &path) const;
    void makeFolders(Worker &worker, const ZipEntry &entry, const QByteArray &path);
    void makeLinks();
    void setFolderAttributes();
    void step();

    [[noreturn]] void refuse(const QString &reason) const;
    [[noreturn]] void refuse(const ZipEntry &entry, const QString &reason) const;
    [[noreturn]] void refuseBySystem(const ZipEntry &entry) const;
    [[noreturn]] void refuseByReader(const Worker &worker, const ZipEntry &entry) const;

    QFile &archive;
    const std::vector<ZipEntry> &entries;
    const Descriptor root;
    const ZipProgress &progress;
    const std::thread::id caller = std::this_thread::get_id(); // it alone may be told the progress
    quint64 total = 0;
    quint64 limit = 0; // of that and of what folders take
    std::atomic<quint64> written { 0 };
    std::atomic<quint64> takenByFolders { 0 };
    std::atomic<size_t> unclaimed { 0 }; // the next entry that no thread has taken
    std::atomic<bool> stopped { false };
    std::exception_ptr failure; // of whoever stopped first
    std::mutex collecting;      // held while the three below change
    std::vector<Late> folders;
    std::vector<Late> links;
    QHash<QByteArray, QByteArray> targets; // of the links
};

Extraction::Extraction(QFile &file, const std::vector<ZipEntry> &all, const QString &folder,
                       const ZipProgress &callback)
    : archive(file), entries(all),
      root(open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)), progress(callback)
{
    if (root < 0)
        refuse(QStringLiteral("cannot unpack into '%1': %2").arg(folder, QString::fromLocal8Bit(strerror(errno))));
}

void Extraction::run()
{
    checkLimits();
    if (entries.empty()) // libarchive takes an archive without entries for something else
        return;
    unpackAll();
    for (std::vector<Late> *const late : { &folders, &links })
        std::sort(late->begin(), late->end(), [](const Late &a, const Late &b) { return a.entry < b.entry; });
    makeLinks();
    setFolderAttributes();
}

void Extraction::checkLimits()
{
    for (const ZipEntry &entry : entries) {
        if (!entry.wanted)
            continue;
        if (entry.size > std::numeric_limits<quint64>::max() / 2 - total)
            refuse(entry, QStringLiteral("cannot be as large as it says"));
        total += entry.size;
    }
    limit = std::max(alwaysAllowed, quint64(archive.size()) * maxRatio);
    if (total > limit)
        refuse(QStringLiteral("would unpack to %1 times its size").arg(total / quint64(archive.size())));
    struct statvfs disk;
    if (fstatvfs(root, &disk) == 0 && total + diskReserve > quint64(disk.f_bavail) * disk.f_frsize)
        refuse(QStringLiteral("would unpack to %1 bytes, and the disk is too full for that").arg(total));
}

void Extraction::unpackAll()
{
    const quint64 threads =
        std::min({ maxThreads, quint64(std::thread::hardware_concurrency()), maxHeaders / entries.size(),
                   total / (worthAThread + entries.size() * worthAHeader), quint64(entries.size()) });
    const QByteArray sameFile = "/proc/self/fd/" + QByteArray::number(archive.handle());
    const auto help = [&] {
        const Descriptor file(open(sameFile.constData(), O_RDONLY | O_CLOEXEC)); // with a position of its own
        if (file >= 0)
            attempt([&] { unpackUnclaimed(file); });
    };
    std::vector<std::future<void>> helpers;
    try {
        while (helpers.size() + 1 < threads)
            helpers.push_back(std::async(std::launch::async, help));
    } catch (const std::exception &) { // no more threads are to be had: those there are do it
    }
    attempt([&] {
        unpackUnclaimed(archive.handle());
        for (const std::future<void> &helper : helpers) {
            while (helper.wait_for(msBetweenQuestions) != std::future_status::ready)
                step();
        }
    });
    helpers.clear(); // waits for them
    if (failure)
        std::rethrow_exception(failure);
}

void Extraction::attempt(const std::function<void()> &part) noexcept
{
    try {
        part();
    } catch (...) {
        if (!stopped.exchange(true)) // the first part of the work that fails stops the others
            failure = std::current_exception();
    }
}

void Extraction::unpackUnclaimed(int file)
{
    Worker worker;
    struct archive *const reader = worker.reader.get();
    // The seekable reader alone: the streaming one unpacks half of a truncated archive before it notices.
    archive_read_support_format_zip_seekable(reader);
    if (lseek(file, 0, SEEK_SET) != 0 || archive_read_open_fd(reader, file, readBlock) != ARCHIVE_OK)
        refuse(QString::fromUtf8(archive_error_string(reader)));
    for (size_t number = unclaimed++; number < entries.size(); number = unclaimed++) {
        archive_entry *header = nullptr;
        for (; worker.headersRead <= number; ++worker.headersRead) {
            if (archive_read_next_header(reader, &header) != ARCHIVE_OK)
                refuseByReader(worker, entries[worker.headersRead]);
        }
        if (entries[number].wanted)
            unpack(worker, entries[number], header);
    }
}

void Extraction::unpack(Worker &worker, const ZipEntry &entry, archive_entry *header)
{
    const Attributes attributes(header);
    const auto type = archive_entry_filetype(header);
    if (type == AE_IFDIR ? entry.size > 0 : entry.isFolder())
        refuse(entry, QStringLiteral("is a folder and something else at once"));
    makeFolders(worker, entry, type == AE_IFDIR ? entry.path : zipParent(entry.path));
    if (type == AE_IFREG) {
        writeFile(worker, entry, attributes);
    } else if (type == AE_IFLNK) {
        const std::lock_guard<std::mutex> lock(collecting);
        targets.insert(entry.path, archive_entry_symlink(header));
        links.push_back({ &entry, attributes });
    } else if (type != AE_IFDIR) {
        refuse(entry, QStringLiteral("is neither file, folder nor link"));
    } else if (!entry.path.isEmpty()) {
        const std::lock_guard<std::mutex> lock(collecting);
        folders.push_back({ &entry, attributes });
    }
    step();
}

void Extraction::writeFile(Worker &worker, const ZipEntry &entry, const Attributes &attributes)
{
    Descriptor file(openat(root, entry.path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (file < 0)
        refuseBySystem(entry);
    quint64 size = 0;
    const void *block = nullptr;
    size_t blockSize = 0;
    la_int64_t offset = 0;
    int result = ARCHIVE_OK;
    while ((result = archive_read_data_block(worker.reader.get(), &block, &blockSize, &offset)) == ARCHIVE_OK) {
        size += blockSize;
        if (size > entry.size)
            refuse(entry, QStringLiteral("is larger than it says"));
        writeBlock(entry, file, static_cast<const char *>(block), blockSize);
        step();
    }
    if (result != ARCHIVE_EOF)
        refuseByReader(worker, entry);
    if (size != entry.size)
        refuse(entry, QStringLiteral("is smaller than it says"));
    if (fchmod(file, attributes.mode | 0600) != 0 || futimens(file, attributes.times.data()) != 0 || !file.close())
        refuseBySystem(entry);
}

void Extraction::writeBlock(const ZipEntry &entry, int file, const char *bytes, size_t size)
{
    while (size > 0) {
        const ssize_t count = write(file, bytes, size);
        if (count < 0 && errno != EINTR)
            refuseBySystem(entry);
        if (count <= 0)
            continue;
        bytes += count;
        size -= size_t(count);
        written += quint64(count);
    }
}

bool Extraction::isFolder(const QByteArray &path) const
{
    struct stat status;
    return fstatat(root, path.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

void Extraction::makeFolders(Worker &worker, const ZipEntry &entry, const QByteArray &path)
{
    if (path.isEmpty() || path == worker.lastMade)
        return;
    int result = mkdirat(root, path.constData(), 0755);
    if (result != 0 && errno == ENOENT) {
        makeFolders(worker, entry, zipParent(path));
        result = mkdirat(root, path.constData(), 0755);
    }
    if (result != 0 && (errno != EEXIST || !isFolder(path)))
        refuseBySystem(entry);
    worker.lastMade = path;
    takenByFolders += result == 0 ? bytesOfFolder : 0;
    if (total + takenByFolders > limit)
        refuse(QStringLiteral("would unpack to too many folders"));
}

void Extraction::makeLinks()
{
    for (const Late &link : links) {
        const QByteArray &path = link.entry->path;
        const QByteArray target = targets.value(path);
        if (!zipLinkStaysInside(path, target, targets))
            refuse(*link.entry, QStringLiteral("is a link that leads out of its folder"));
        if (symlinkat(target.constData(), root, path.constData()) != 0
            || utimensat(root, path.constData(), link.attributes.times.data(), AT_SYMLINK_NOFOLLOW) != 0)
            refuseBySystem(*link.entry);
        step();
    }
}

void Extraction::setFolderAttributes()
{
    for (const Late &folder : folders) {
        const char *path = folder.entry->path.constData();
        if (fchmodat(root, path, folder.attributes.mode | 0700, 0) != 0
            || utimensat(root, path, folder.attributes.times.data(), 0) != 0)
            refuseBySystem(*folder.entry);
    }
}

void Extraction::step()
{
    if (stopped || (std::this_thread::get_id() == caller && !progress(written, total)))
        throw Stopped();
}

void Extraction::refuse(const QString &reason) const
{
    throw IOException(QStringLiteral("%1: %2").arg(printableZipName(QFileInfo(archive).fileName().toUtf8()), reason));
}

void Extraction::refuse(const ZipEntry &entry, const QString &reason) const
{
    refuse(QStringLiteral("the entry '%1' %2").arg(entry.printableName(), reason));
}

void Extraction::refuseBySystem(const ZipEntry &entry) const
{
    const int error = errno;
    refuse(entry, QStringLiteral("cannot be written: %1").arg(QString::fromLocal8Bit(strerror(error))));
}

void Extraction::refuseByReader(const Worker &worker, const ZipEntry &entry) const
{
    const char *reason = archive_error_string(worker.reader.get());
    refuse(entry,
           QStringLiteral("cannot be read: %1").arg(QString::fromUtf8(reason ? reason : "the archive ends early")));
}

} // namespace

bool extractZip(QFile &archive, const std::vector<ZipEntry> &entries, const QString &folder,
                const ZipProgress &progress)
{
    if (folder.isEmpty() || !QDir().mkpath(folder)
        || !QDir(folder).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System))
        throw IOException(QStringLiteral("cannot unpack into '%1': it must be a folder without content").arg(folder));
    try {
        Extraction(archive, entries, folder, progress).run();
        return true;
    } catch (const Stopped &) {
        FileUtils::emptyFolder(folder);
        return false;
    } catch (...) {
        FileUtils::emptyFolder(folder);
        throw;
    }
}

} // namespace qv
