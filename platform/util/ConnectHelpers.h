#pragma once

#include "PlatformExport.h"

#include <QGenericArgument>
#include <QObject>

namespace qv {

/// QObject::connect() by signatures, for slots that are overloaded, carry defaults or are called by name. A signal or
/// slot that does not exist is an error in the log besides Qt's own warning.
QV_PLATFORM_EXPORT QMetaObject::Connection connect(const QObject *sender, const char *signal, const QObject *receiver,
                                                   const char *method, Qt::ConnectionType type = Qt::AutoConnection);

/// Calls the slot @p slot of @p receiver from the receiver's event loop: plain name or SLOT() form. Types that the
/// receiver spells otherwise, with or without namespace, are the same as long as both spellings are registered with Qt.
/// Returns false, and logs it, when there is no receiver or no such slot.
/// @code
/// invokeQueued(receiver, "showPackages", Q_ARG(qv::PackageInfoList, packages));
/// @endcode
QV_PLATFORM_EXPORT bool invokeQueued(QObject *receiver, const char *slot,
                                     QGenericArgument argument0 = QGenericArgument(),
                                     QGenericArgument argument1 = QGenericArgument(),
                                     QGenericArgument argument2 = QGenericArgument());

} // namespace qv
