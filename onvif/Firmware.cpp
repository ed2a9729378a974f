// Compares versions and models of cameras with those of packages. Called by CameraUpdate and OnvifCameras.
#include "Firmware.h"

#include <QRegularExpression>

namespace qv {

VersionNumber firmwareVersion(const QString &text)
{
    static const QRegularExpression dotted(QStringLiteral("\\d+(?:\\.\\d+)+[^,:;()\\[\\]]*"));
    static const QRegularExpression plain(QStringLiteral("\\d+[^,:;()\\[\\]]*"));
    const QString beginning = text.left(200).simplified();
    const QString version = dotted.match(beginning).captured();
    return VersionNumber::fromText(version.isEmpty() ? plain.match(beginning).captured() : version);
}

bool isFirmware(const VersionNumber &running, const VersionNumber &wanted)
{
    static const QRegularExpression numbers(QStringLiteral("^\\d+(?:\\.\\d+)*"));
    const auto numbersOf = [](const VersionNumber &version) { return numbers.match(version.toString()).captured(); };
    const auto isPlain = [&](const VersionNumber &version) { return numbersOf(version) == version.toString(); };
    const auto rounded = [&](const VersionNumber &version) { return VersionNumber::fromText(numbersOf(version)); };
    return running == wanted || (rounded(running) == rounded(wanted) && isPlain(running > wanted ? wanted : running));
}

bool isForModel(const PackageInfo &package, const QString &model)
{
    return !model.isEmpty() && StringUtils::intersectsOnBeginning({ model }, package.platforms);
}

bool isStorable(const QString &model)
{
    return !model.contains(QLatin1Char(',')) && !model.contains(QLatin1Char(':'));
}

} // namespace qv
