#pragma once

#include <QUrl>

namespace qv {

/// True for links that the desktop's browser gets. Any other would start whatever program the desktop has for its
/// scheme.
inline bool isForBrowser(const QUrl &url)
{
    const QString scheme = url.scheme();
    return scheme == QLatin1String("http") || scheme == QLatin1String("https") || scheme == QLatin1String("ftp");
}

} // namespace qv
