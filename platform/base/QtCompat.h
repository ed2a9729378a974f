#pragma once

// All differences between Qt 5 and Qt 6 that this project's code knows of. Internal: no installed header includes it.

#include <QByteArray>
#include <QMetaType>
#include <QtGlobal>

namespace qv {

#if QT_VERSION_MAJOR >= 6

/// Whether a DOM keeps a CDATA section that holds nothing but white space.
constexpr bool domKeepsBlankSections = true;

/// Whether texts in a QSettings file are UTF-8; Latin-1 otherwise.
constexpr bool storesAreUtf8 = true;

/// The meta-type id of a registered type name, QMetaType::UnknownType for others.
inline int typeId(const QByteArray &name)
{
    return QMetaType::fromName(name).id();
}

#else

constexpr bool domKeepsBlankSections = false;
constexpr bool storesAreUtf8 = false;

inline int typeId(const QByteArray &name)
{
    return QMetaType::type(name);
}

#endif

} // namespace qv
