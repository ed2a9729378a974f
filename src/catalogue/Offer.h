#pragma once

#include "PackageInfo.h"
#include "SoftwareUpdateTypes.h"

namespace qv {

/// The suffixes of the application's packages that each client writes into its store.
QStringList defaultPackageTypes();

/// The status that packages must have: "STABLE", or with @p beta any, which is an empty text.
QString transformReleaseStatus(bool beta);

/// What an installation with these @p settings is shown of @p catalogue: the newest packages of the application named
/// @p applicationName that run on its platforms and have one of its package types, then the newest firmware for each
/// of its cameras, their types set; all of them newer than what is installed. Releases of any status count with
/// @p beta, which stands for settings.checkForBeta.
PackageInfoList offeredPackages(PackageInfoList catalogue, const QString &applicationName,
                                const SoftwareUpdateSettings &settings, bool beta);

/// The five texts of a package's row: name with version, size, file type, languages, platforms.
QStringList packageRow(const PackageInfo &package);

/// What is told of one selected package, as rich text; texts of the catalogue are escaped.
QString packageComment(const PackageInfo &package);

/// The rows of camera firmware that a user of @p language ("de") has no use for, ascending; none where no firmware
/// would be left. Deliberate: for "en" a firmware counts only when it has both "de" and "en".
SoftUpIndexList foreignLanguageRows(const PackageInfoList &packages, const QString &language);

} // namespace qv
