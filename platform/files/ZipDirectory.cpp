// The table of contents of a ZIP archive: found from the file's end, read whole, checked before anything is unpacked.
// Called when a ZipReader opens and when an Unzipper starts; leaves nothing behind.
#include "ZipDirectory.h"
#include "IOException.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <limits.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>

namespace qv {

namespace {

constexpr qint64 endSize = 22, end64Size = 56, locatorSize = 20, headerSize = 46, localHeaderSize = 30;
constexpr qint64 maxComment = 0xffff;
constexpr quint64 maxTableSize = 32 * 1024 * 1024; // some 300,000 entries
constexpr quint64 inExtraField = 0xffffffff;
constexpr int maxComponent = NAME_MAX, maxName = PATH_MAX - 1; // in bytes
constexpr int maxLevels = 128;
constexpr quint16 encryptedFlags = 1 | 1 << 6 | 1 << 13;

quint64 number16(const char *at)
{
    return qFromLittleEndian<quint16>(at);
}
quint64 number32(const char *at)
{
    return qFromLittleEndian<quint32>(at);
}
quint64 number64(const char *at)
{
    return qFromLittleEndian<quint64>(at);
}

[[noreturn]] void refuse(const QFile &archive, const QString &reason)
{
    throw IOException(QStringLiteral("%1: %2").arg(printableZipName(QFileInfo(archive).fileName().toUtf8()), reason));
}

[[noreturn]] void refuse(const QFile &archive, const ZipEntry &entry, const QString &reason)
{
    refuse(archive, QStringLiteral("the entry '%1' %2").arg(entry.printableName(), reason));
}

/// Where the table of contents lies.
struct Table
{
    quint64 position = 0;
    quint64 size = 0;
    quint64 count = 0;
    quint64 countMask = 0xffff; // older programs let a count of more than 16 bits overflow
    quint64 shift = 0;          // what was put in front of the archive, as a self-extracting one has it
};

QByteArray readAt(QFile &archive, quint64 position, qint64 size)
{
    if (position > quint64(archive.size()) || !archive.seek(qint64(position)))
        return QByteArray();
    return archive.read(size);
}

/// Takes the record at @p end, whose place in the file is @p endPosition, when it can be the end of an archive.
bool takeEnd(Table &table, quint64 size, quint64 offset, quint64 endPosition)
{
    if (size > endPosition || offset > endPosition - size)
        return false;
    table.size = size;
    table.position = endPosition - size;
    table.shift = table.position - offset;
    return true;
}

bool takeEnd64(Table &table, QFile &archive, const char *locator)
{
    const quint64 position = number64(locator + 8);
    const QByteArray end = readAt(archive, position, end64Size);
    if (end.size() < end64Size || !end.startsWith("PK\6\6"))
        return false;
    table.count = number64(end.constData() + 32);
    table.countMask = ~quint64(0);
    return takeEnd(table, number64(end.constData() + 40), number64(end.constData() + 48), position);
}

Table findTable(QFile &archive)
{
    const qint64 tailSize = std::min(archive.size(), endSize + maxComment + locatorSize);
    const quint64 tailPosition = quint64(archive.size() - tailSize);
    const QByteArray tail = readAt(archive, tailPosition, tailSize);
    for (auto at = tail.lastIndexOf("PK\5\6"); at >= 0; at = at > 0 ? tail.lastIndexOf("PK\5\6", at - 1) : -1) {
        const char *end = tail.constData() + at;
        if (at + endSize > tail.size())
            continue;
        Table table;
        if (at >= locatorSize && qstrncmp(end - locatorSize, "PK\6\7", 4) == 0) {
            if (takeEnd64(table, archive, end - locatorSize))
                return table;
            continue;
        }
        table.count = number16(end + 10);
        if (takeEnd(table, number32(end + 12), number32(end + 16), tailPosition + quint64(at)))
            return table;
    }
    refuse(archive, QStringLiteral("this is no ZIP archive, or its end is missing"));
}

/// True for devices, pipes and sockets. libarchive would make a pipe a file.
bool isSpecialFile(quint64 madeBy, quint64 attributes)
{
    constexpr quint64 unixSystem = 3, macSystem = 19;
    const auto type = mode_t(attributes >> 16) & S_IFMT;
    return (madeBy == unixSystem || madeBy == macSystem) && type != 0 && type != S_IFREG && type != S_IFDIR
        && type != S_IFLNK;
}

/// Replaces the values that did not fit into 32 bits by those of the zip64 field. False when the field lacks one.
bool readWideValues(const char *extra, const char *extraEnd, std::initializer_list<quint64 *> values)
{
    while (extraEnd - extra >= 4) {
        const quint64 id = number16(extra);
        const char *next = extra + 4 + number16(extra + 2);
        if (next > extraEnd)
            return true; // other programs end their fields sloppily; not our matter
        if (id == 1) {
            extra += 4;
            for (quint64 *value : values) {
                if (*value != inExtraField)
                    continue;
                if (next - extra < 8)
                    return false;
                *value = number64(extra);
                extra += 8;
            }
            return true;
        }
        extra = next;
    }
    return std::none_of(values.begin(), values.end(), [](const quint64 *value) { return *value == inExtraField; });
}

/// The entry's place below the target folder. Backslashes separate too: other programs will read them so.
QByteArray safePath(const QFile &archive, const ZipEntry &entry)
{
    const QByteArray &name = entry.name;
    if (name.isEmpty())
        refuse(archive, QStringLiteral("an entry has no name"));
    if (name.contains('\0'))
        refuse(archive, entry, QStringLiteral("has a NUL in its name"));
    if (name.size() > maxName)
        refuse(archive, entry, QStringLiteral("has too long a name"));
    const bool hasDrive = name.size() > 1 && name[1] == ':' && std::isalpha(static_cast<unsigned char>(name[0]));
    if (name.startsWith('/') || name.startsWith('\\') || hasDrive)
        refuse(archive, entry, QStringLiteral("has an absolute path"));
    if (QByteArray(name).replace('\\', '/').split('/').contains(".."))
        refuse(archive, entry, QStringLiteral("leads out of its folder"));
    QByteArray path;
    for (const QByteArray &component : name.split('/')) {
        if (component.size() > maxComponent)
            refuse(archive, entry, QStringLiteral("has too long a name"));
        if (!component.isEmpty() && component != ".")
            path += path.isEmpty() ? component : '/' + component;
    }
    if (path.count('/') >= maxLevels)
        refuse(archive, entry, QStringLiteral("lies too deep"));
    if (path.isEmpty() && !entry.isFolder())
        refuse(archive, entry, QStringLiteral("has no name"));
    return path;
}

std::vector<ZipEntry> readEntries(QFile &archive, const Table &table, const QByteArray &bytes)
{
    std::vector<ZipEntry> entries;
    const char *const end = bytes.constData() + bytes.size();
    for (const char *at = bytes.constData(); at < end;) {
        if (end - at < headerSize || qstrncmp(at, "PK\1\2", 4) != 0)
            refuse(archive, QStringLiteral("the table of contents is damaged"));
        const char *const name = at + headerSize;
        const char *const extra = name + number16(at + 28);
        const char *const comment = extra + number16(at + 30);
        const char *const next = comment + number16(at + 32);
        if (next > end)
            refuse(archive, QStringLiteral("the table of contents is damaged"));

        ZipEntry entry;
        entry.name = QByteArray(name, int(extra - name));
        if (number16(at + 4) >> 8 == 0)
            entry.name.replace('\\', '/');
        entry.path = safePath(archive, entry);
        entry.packedSize = number32(at + 20);
        entry.size = number32(at + 24);
        entry.offset = number32(at + 42);
        if (!readWideValues(extra, comment, { &entry.size, &entry.packedSize, &entry.offset }))
            refuse(archive, entry, QStringLiteral("is damaged"));
        if (entry.offset > table.position)
            refuse(archive, entry, QStringLiteral("is damaged"));
        entry.offset += table.shift;
        if (number16(at + 8) & encryptedFlags)
            refuse(archive, entry, QStringLiteral("is encrypted"));
        if (isSpecialFile(number16(at + 4) >> 8, number32(at + 38)))
            refuse(archive, entry, QStringLiteral("is neither file, folder nor link"));
        entries.push_back(std::move(entry));
        at = next;
    }
    return entries;
}

/// Bombs of the unrecursive kind point many entries at the same data.
void refuseOverlaps(const QFile &archive, const std::vector<ZipEntry> &entries, quint64 end)
{
    for (size_t i = 0; i < entries.size(); ++i) {
        const ZipEntry &entry = entries[i];
        const quint64 next = i + 1 < entries.size() ? entries[i + 1].offset : end;
        const quint64 room = next - std::min(next, entry.offset);
        if (room < localHeaderSize || entry.packedSize > room - localHeaderSize)
            refuse(archive, entry, QStringLiteral("overlaps with what follows it"));
    }
}

} // namespace

void flattenZipPaths(std::vector<ZipEntry> &entries)
{
    for (ZipEntry &entry : entries) {
        entry.path = entry.path.mid(entry.path.lastIndexOf('/') + 1);
        entry.wanted = entry.wanted && !entry.isFolder();
    }
}

QByteArray zipParent(const QByteArray &path)
{
    return path.left(std::max(path.lastIndexOf('/'), decltype(path.size())(0)));
}

bool zipLinkStaysInside(const QByteArray &link, const QByteArray &target, const QHash<QByteArray, QByteArray> &links)
{
    if (target.isEmpty() || target.startsWith('/'))
        return false;
    QByteArray place = zipParent(link);
    bool passedLink = false;
    for (const QByteArray &component : target.split('/')) {
        if (component.isEmpty() || component == ".")
            continue;
        if (component == "..") {
            if (passedLink || place.isEmpty())
                return false;
            place = zipParent(place);
        } else {
            place += place.isEmpty() ? component : '/' + component;
            passedLink = passedLink || links.contains(place);
        }
    }
    return true;
}

QString printableZipName(const QByteArray &bytes)
{
    constexpr int maxLength = 200;
    QString text = QString::fromUtf8(bytes.constData(), int(bytes.size())); // Qt 5 would stop at a NUL
    for (QChar &c : text) {
        // "<": the message may end up in a box that shows rich text
        if (c == QLatin1Char('<') || (!c.isPrint() && !c.isSurrogate()))
            c = QLatin1Char('?');
    }
    return text.size() > maxLength ? text.left(maxLength) + QChar(0x2026) : text;
}

QString ZipEntry::printableName() const
{
    return printableZipName(name);
}

std::vector<ZipEntry> readZipDirectory(QFile &archive)
{
    if (!archive.isOpen() && !archive.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        refuse(archive, archive.errorString());
    const Table table = findTable(archive);
    if (table.size > maxTableSize)
        refuse(archive, QStringLiteral("the table of contents is too large"));
    const QByteArray bytes = readAt(archive, table.position, qint64(table.size));
    std::vector<ZipEntry> entries = readEntries(archive, table, bytes);
    if ((entries.size() & table.countMask) != table.count)
        refuse(archive, QStringLiteral("the table of contents is not complete"));
    std::sort(entries.begin(), entries.end(), [](const ZipEntry &a, const ZipEntry &b) { return a.offset < b.offset; });
    refuseOverlaps(archive, entries, table.position);
    return entries;
}

} // namespace qv
