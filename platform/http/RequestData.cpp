// A request's body: into its device or into its buffer, and as text.
#include "RequestData.h"

#include <QFileDevice>

#include <algorithm>

namespace qv {

RequestData::RequestData()
{
    buffer.open(QIODevice::ReadWrite);
}

RequestData::~RequestData() = default;

QString RequestData::getResponseText() const
{
    const QString type = header.value(QStringLiteral("Content-Type"));
    const bool isLatin1 = type.contains(QLatin1String("charset=iso-8859-1"), Qt::CaseInsensitive);
    return isLatin1 ? QString::fromLatin1(buffer.data()) : QString::fromUtf8(buffer.data());
}

// False when the request is to end here: the target takes no more, or the body has got too long.
bool RequestData::append(const char *bytes, qint64 size)
{
    QIODevice *target = isKept ? &buffer : output.data();
    if (!target || !target->isWritable())
        return false;
    const qint64 room = std::min(size, maxBodySize - received);
    const qint64 written = target->write(bytes, room);
    received += std::max<qint64>(written, 0);
    return written == size;
}

void RequestData::flush()
{
    buffer.seek(0);
    if (auto *file = qobject_cast<QFileDevice *>(output.data()))
        file->flush();
}

} // namespace qv
