// Only what every installer shares: that it can be derived from in a host.
#include "PackageInstaller.h"

namespace qv {

PackageInstaller::PackageInstaller(QObject *parent) : QObject(parent) { }

PackageInstaller::~PackageInstaller() = default;

} // namespace qv
