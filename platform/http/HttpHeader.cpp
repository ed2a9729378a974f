// Header lines by name.
#include "HttpHeader.h"

namespace qv {

void HttpHeader::addValue(const QByteArray &name, const QByteArray &value)
{
    lines.append({ name, value });
}

bool HttpHeader::hasKey(const QString &name) const
{
    return !value(name).isNull();
}

QString HttpHeader::value(const QString &name) const
{
    const QByteArray key = name.toLatin1();
    for (auto line = lines.crbegin(); line != lines.crend(); ++line) {
        if (line->first.compare(key, Qt::CaseInsensitive) == 0)
            return line->second.isEmpty() ? QStringLiteral("") : QString::fromLatin1(line->second);
    }
    return QString();
}

} // namespace qv
