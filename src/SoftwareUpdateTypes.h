#pragma once

#include "VersionNumber.h"

#include <QDateTime>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

namespace qv {

/// Rows of the update-available table; row i shows entry i of the client's package list.
using SoftUpIndexList = QList<int>;

/// The cameras that a host manages: for each model its name and the firmware version installed.
/// @code
/// SoftUpCurrentCameraVersions cameras {{"QC-2000", VersionNumber("10.2.0")}};
/// @endcode
using SoftUpCurrentCameraVersions = QList<QPair<QString, VersionNumber>>;

/// What the client keeps in the host's settings store, each field under the key of its name. A plain value; the store
/// is read into a fresh record before each use and written back after each change.
///
/// An empty list and a null string (or date, or version) are never written: they leave in the store what was there.
struct SoftwareUpdateSettings
{
    QString product;                     ///< name of the host product
    VersionNumber versionNumber;         ///< its installed version
    bool quietMode = false;              ///< never stored
    QString serverURL;                   ///< address of the catalogue; null: never set, empty: set to nothing
    bool doUpdateCheck = true;           ///< checks run by themselves
    bool checkForBeta = false;           ///< releases of any status count, not the stable ones alone
    int updateInterval = 0;              ///< 0 at application start, 1 daily, 2 weekly, 3 monthly, any other never
    QDateTime lastCheck;                 ///< when the last check was started, however it ended; null: never
    QStringList supportedPlatforms;      ///< platforms whose packages are offered; empty: all
    QStringList supportedPackageTypes;   ///< suffixes of the packages that are offered ("deb", "tar.gz", ...)
    QStringList installablePackageTypes; ///< suffixes of those that may be installed from here
    SoftUpCurrentCameraVersions currentCameraVersions; ///< firmware that the host's cameras run
};

/// What the client and the settings dialog tell each other. A plain value.
struct SoftwareUpdateDialogSettings
{
    bool doUpdateCheck = true; ///< checks run by themselves
    bool checkForBeta = false; ///< beta versions are offered too
    int updateInterval = 0;    ///< 0 at application start, 1 daily, 2 weekly, 3 monthly
    QString serverURL;         ///< address of the catalogue, as typed
    QString currentVersion;    ///< text for the installed version; a null one hides the caption, an empty one does not
    QString lastCheck;         ///< text for the time of the last check; null and empty likewise
};

} // namespace qv
