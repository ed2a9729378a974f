#pragma once

#include "PackageInfo.h"

#include <QDateTime>
#include <QString>

namespace qv {

/// How a check for updates ended, for UpdatePolicy::checked. A plain value.
struct CheckOutcome
{
    enum Kind {
        UpdatesFound, ///< there are packages for this installation
        UpToDate,     ///< the catalogue has none that is newer
        NoCatalogue,  ///< what the server sent holds no packages, or is no catalogue
        NotTrusted,   ///< the catalogue is not sealed by a trusted key
        Unreachable,  ///< no connection, an error status, a login that failed
        TimedOut,     ///< no answer within 15 seconds
        Cancelled,    ///< another check took its place, or was answered first: that one tells
    };

    Kind kind = Cancelled;
    PackageInfoList packages; ///< what is offered, as the table shows it; empty unless updates were found

    /// What the settings dialog's notification line says of it, open or not: plain text in the user's language. Empty
    /// where updates were found, and when cancelled.
    QString text;

    QDateTime started;     ///< local time, as stored for the last check
    bool isByUser = false; ///< the user waits for it, by "Check Now" or checkNow(); not by timer or at start
};

} // namespace qv
