// A request's body: into its device or into its buffer, and as text.
#include "RequestData.h"

#include <QFileDevice>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <utility>

#include <sys/statvfs.h>

namespace qv {

namespace {

/// In lower case, without punctuation; empty where the Content-Type @p type names none.
QString charsetOf(const QString &type)
{
    // A quoted value may hold anything, the look of another parameter too.
    static const QRegularExpression parameter(
        QStringLiteral(R"re([;,\s]([^\s;,=]+)\s*=\s*("(?:[^"\\]|\\.)*"|[^\s;,]*))re"));
    static const QRegularExpression punctuation(QStringLiteral("[^a-z0-9]"));
    for (auto match = parameter.globalMatch(type); match.hasNext();) {
        const QRegularExpressionMatch one = match.next();
        if (one.captured(1).compare(QLatin1String("charset"), Qt::CaseInsensitive) == 0)
            return one.captured(2).toLower().remove(punctuation);
    }
    return QString();
}

/// Of windows-1252, too: but for a few signs it is the same.
bool isLatin1(const QString &charset)
{
    static const QStringList names {
        QStringLiteral("iso88591"), QStringLiteral("latin1"), QStringLiteral("l1"),     QStringLiteral("isoir100"),
        QStringLiteral("ibm819"),   QStringLiteral("cp819"),  QStringLiteral("cp1252"), QStringLiteral("windows1252"),
    };
    return names.contains(charset);
}

constexpr qint64 mostUnwanted = 1024LL * 1024;
constexpr qint64 bytesBetweenLooks = 4LL * 1024 * 1024;

bool isDiskFull(const QFileDevice *file)
{
    struct statvfs disk;
    return file && fstatvfs(file->handle(), &disk) == 0
        && quint64(disk.f_bavail) * disk.f_frsize < quint64(RequestData::diskReserve);
}

} // namespace

RequestData::RequestData()
{
    buffer.open(QIODevice::ReadWrite);
}

RequestData::~RequestData() = default;

QString RequestData::getResponseText() const
{
    const QString charset = charsetOf(header.value(QStringLiteral("Content-Type")));
    return isLatin1(charset) ? QString::fromLatin1(buffer.data()) : QString::fromUtf8(buffer.data());
}

void RequestData::resumeAt(qint64 bytes, const QByteArray &validator)
{
    resumedAt = bytes;
    if (bytes <= 0)
        return;
    setHeader("Range", "bytes=" + QByteArray::number(bytes) + '-');
    setHeader("If-Range", validator);
}

QByteArray RequestData::validator() const
{
    const QString tag = header.value(QStringLiteral("ETag"));
    return (tag.startsWith(QLatin1Char('"')) ? tag : header.value(QStringLiteral("Last-Modified"))).toLatin1();
}

// Says where a resumed body belongs: behind what is there, in its place, or nowhere.
void RequestData::begin(const HttpHeader &head)
{
    constexpr int ok = 200, partialContent = 206;
    if (std::exchange(isBegun, true) || resumedAt == 0)
        return;
    auto *file = qobject_cast<QFileDevice *>(output.data());
    const QString range = QStringLiteral("bytes %1-").arg(resumedAt);
    if (status == partialContent
        && head.value(QStringLiteral("Content-Range")).startsWith(range, Qt::CaseInsensitive)) {
        received = resumedAt;
        announced += announced < 0 ? 0 : resumedAt;
    } else if (status == ok && file && file->seek(0) && file->resize(0)) {
        resumedAt = 0;
    } else {
        isUnwanted = true;
    }
}

// False when the request is to end here: the target takes no more, or the body has got too long, for its disk too.
bool RequestData::append(const char *bytes, qint64 size)
{
    QIODevice *target = isKept ? &buffer : output.data();
    if (!target || !target->isWritable())
        return false;
    if (isUnwanted)
        return (unwantedBytes += size) < mostUnwanted;
    if (received >= nextLookAtDisk) {
        nextLookAtDisk += bytesBetweenLooks;
        deviceFull = isDiskFull(qobject_cast<QFileDevice *>(target));
        if (deviceFull)
            maxBodySize = received;
    }
    const qint64 taken = std::min(size, maxBodySize - received);
    const qint64 written = target->write(bytes, taken);
    received += std::max<qint64>(written, 0);
    cut = taken < size;
    deviceFull = deviceFull || written != taken;
    return written == size;
}

void RequestData::flush()
{
    buffer.seek(0);
    if (auto *file = qobject_cast<QFileDevice *>(output.data()))
        deviceFull = !file->flush() || deviceFull;
}

} // namespace qv
