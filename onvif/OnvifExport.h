#pragma once

#include <QtGlobal>

/// Marks what the camera library shows to hosts; everything else stays hidden.
#ifdef qvOnvif_EXPORTS
#define ONVIF_EXPORT Q_DECL_EXPORT
#else
#define ONVIF_EXPORT Q_DECL_IMPORT
#endif
