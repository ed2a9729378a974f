// "offer": the rows that an installation described on the command line would be shown.
#include "Commands.h"

#include "Offer.h"

namespace qv {

namespace {

constexpr QLatin1String nameOption("name");
constexpr QLatin1String versionOption("version");
constexpr QLatin1String betaOption("beta");
constexpr QLatin1String typesOption("types");
constexpr QLatin1String platformsOption("platforms");
constexpr QLatin1String cameraOption("camera");
constexpr QLatin1String languageOption("language");

SoftUpCurrentCameraVersions::value_type toCamera(const QString &text)
{
    const QString model = text.section(QLatin1Char('='), 0, 0);
    const QString version = text.section(QLatin1Char('='), 1);
    if (model.isEmpty() || version.isEmpty())
        throw Failure(QStringLiteral("--camera wants MODEL=VERSION, not \"%1\"").arg(text));
    return { model, VersionNumber::fromText(version) };
}

SoftwareUpdateSettings settingsOf(const QCommandLineParser &options)
{
    SoftwareUpdateSettings settings;
    settings.versionNumber = VersionNumber::fromText(options.value(versionOption));
    settings.supportedPlatforms = listOf(options.value(platformsOption));
    settings.supportedPackageTypes =
        options.isSet(typesOption) ? listOf(options.value(typesOption)) : defaultPackageTypes();
    for (const QString &camera : options.values(cameraOption))
        settings.currentCameraVersions.append(toCamera(camera));
    return settings;
}

} // namespace

void addOfferOptions(QCommandLineParser &parser)
{
    for (const QLatin1String name :
         { nameOption, versionOption, typesOption, platformsOption, cameraOption, languageOption })
        parser.addOption(QCommandLineOption(name, QString(), QStringLiteral("value")));
    parser.addOption(QCommandLineOption(betaOption));
}

ExitCode offer(const QString &source, const QCommandLineParser &options)
{
    for (const QLatin1String name : { nameOption, versionOption }) {
        if (options.value(name).isEmpty())
            throw Failure(QStringLiteral("offer wants --%1").arg(name));
    }
    const SoftwareUpdateSettings settings = settingsOf(options);
    const PackageInfoList offered =
        offeredPackages(loadCatalogue(source).packages, options.value(nameOption), settings, options.isSet(betaOption));

    if (offered.isEmpty()) {
        printLine(QStringLiteral("nothing to offer"), stderr);
        return Findings;
    }
    SoftUpIndexList hidden;
    if (options.isSet(languageOption))
        hidden = foreignLanguageRows(offered, options.value(languageOption));
    QList<QStringList> rows { { QStringLiteral("Name"), QStringLiteral("File Size"), QStringLiteral("File Type"),
                                QStringLiteral("Languages"), QStringLiteral("Platforms") } };
    for (int row = 0; row < offered.size(); ++row) {
        if (!hidden.contains(row))
            rows.append(packageRow(offered.at(row)));
    }
    printTable(rows);
    return Done;
}

} // namespace qv
