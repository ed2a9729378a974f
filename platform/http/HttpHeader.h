#pragma once

#include "PlatformExport.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

namespace qv {

/// The header lines of an answer, in the order they came. Names compare without case. A plain value.
class QV_PLATFORM_EXPORT HttpHeader
{
public:
    void addValue(const QByteArray &name, const QByteArray &value);

    bool hasKey(const QString &name) const;

    /// Null where there is no such line; the last one where there are several.
    QString value(const QString &name) const;

private:
    QList<QPair<QByteArray, QByteArray>> lines;
};

} // namespace qv
