#pragma once

#include "PlatformExport.h"

#include <Qt>

class QWidget;

namespace qv {

/// The window flags of the maker's dialogs: title bar and close button, no context help. With @p sheet the dialog is a
/// sheet where the platform has them (macOS).
QV_PLATFORM_EXPORT Qt::WindowFlags dialogFlags(bool sheet);

/// The flags for a dialog of @p parent: a sheet when there is a window to attach it to.
QV_PLATFORM_EXPORT Qt::WindowFlags sheetDialogFlags(const QWidget *parent);

} // namespace qv
