#pragma once

#include "PackageInfo.h"
#include "SoftwareUpdateTypes.h"

namespace qv {

class PackageIndex;

/// The packages that pass PackageInfo::filterPackageCandidate() and carry the newest release among them, their type set
/// to @p type - in @p packages too, for all that pass.
PackageInfoList findPackageCandidates(PackageInfoList &packages, const PackageInfo &filter, const QString &type,
                                      const QStringList &wantedSuffixes);

/// The same, for asking one large catalogue about many platforms: @p index was made of @p packages.
PackageInfoList findPackageCandidates(PackageInfoList &packages, const PackageIndex &index, const PackageInfo &filter,
                                      const QString &type, const QStringList &wantedSuffixes);

/// The candidates, of @p status unless that is empty, of all @p cameras: camera firmware, of equal packages the first.
PackageInfoList findFirmware(const PackageInfoList &packages, const SoftUpCurrentCameraVersions &cameras,
                             const QString &status);

/// Keeps the first of equal packages.
void eliminateDuplicatePackages(PackageInfoList &packages);

/// Of the packages that match @p filter, the best for each type and platform, in the order of "type/platform".
PackageInfoList findBestMatches(const PackageInfoList &packages, const PackageInfo &filter);

/// How many packages no earlier query has listed.
int countNew(const PackageInfoList &packages);

} // namespace qv
