#pragma once

#include <QtGlobal>

/// Marks what the update library shows to hosts; everything else stays hidden.
#ifdef SoftwareUpdateClient_EXPORTS
#define SOFTWAREUPDATE_EXPORT Q_DECL_EXPORT
#else
#define SOFTWAREUPDATE_EXPORT Q_DECL_IMPORT
#endif
