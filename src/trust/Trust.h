#pragma once

#include "PackageInfo.h"
#include "Seal.h"

#include <QSettings>

namespace qv {

/// The keys that a host trusts, and the seals that were seen: what a client and a manager each have one of. Keys are
/// those of UpdatePolicy::trustedKeys.
class Trust
{
public:
    void setKeys(const QStringList &keys);

    /// Whether catalogues have to be sealed: with any keys, even where none of them is one.
    bool isSet() const { return !keys.isEmpty(); }

    /// Whether the @p catalogue is to be believed, by examineSeal() at the present time. Tells the log if not; if it
    /// is, remembers the seal for as long as this object lives.
    Seal examine(const QByteArray &catalogue, const QByteArray &signature);

    /// Leaves those that have all that the seal vouches for: a hash and a size.
    static void keepVouched(PackageInfoList &packages);

    /// Reads what earlier runs have seen, and stores what this one saw, in the store's present group: for each key the
    /// highest serial of both. Without keys nothing is written.
    void load(QSettings &store);
    void save(QSettings &store) const;

private:
    QStringList keys;
    SeenSeals seen;
};

} // namespace qv
