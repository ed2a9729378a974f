// Formats internal version texts for users. Called for the release that a package shows.
#include "QuorvelSoftwareVersion.h"

namespace qv {

QString QuorvelSoftwareVersion::applicationVersion(const QString &version, const QString &unknownText, short numbers)
{
    if (version.trimmed().isEmpty())
        return unknownText;
    return numbers > 0 ? version.section(QLatin1Char('.'), 0, numbers - 1) : version;
}

} // namespace qv
