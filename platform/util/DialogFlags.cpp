// The look of the maker's dialogs as windows.
#include "DialogFlags.h"

namespace qv {

Qt::WindowFlags dialogFlags(bool sheet)
{
#ifdef Q_OS_MACOS
    const Qt::WindowFlags type = sheet ? Qt::Sheet : Qt::Dialog;
#else
    Q_UNUSED(sheet)
    const Qt::WindowFlags type = Qt::Dialog;
#endif
    return type | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;
}

Qt::WindowFlags sheetDialogFlags(const QWidget *parent)
{
    return dialogFlags(parent != nullptr);
}

} // namespace qv
