#pragma once

// The few places where Qt 5 and Qt 6 differ for this project.

#include <QDomDocument>
#include <QSet>
#include <QStringList>
#include <QtGlobal>

namespace qv {

inline QSet<QString> toSet(const QStringList &list)
{
    return QSet<QString>(list.cbegin(), list.cend());
}

} // namespace qv
