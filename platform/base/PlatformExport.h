#pragma once

#include <QtGlobal>

/// Marks what the platform library shows to others; everything else stays hidden.
#ifdef qvPlatform_EXPORTS
#define QV_PLATFORM_EXPORT Q_DECL_EXPORT
#else
#define QV_PLATFORM_EXPORT Q_DECL_IMPORT
#endif
