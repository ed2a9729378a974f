// "offer": the rows that an installation described on the command line would be shown.
#include "Commands.h"

#include "Offer.h"

namespace qv {

namespace {

const QString nameOption = QStringLiteral("name");
const QString versionOption = QStringLiteral("version");
const QString betaOption = QStringLiteral("beta");
const QString typesOption = QStringLiteral("types");
const QString platformsOption = QStringLiteral("platforms");
const QString cameraOption = QStringLiteral("camera");
const QString languageOption = QStringLiteral("language");

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
    for (const QString &name :
         { nameOption, versionOption, typesOption, platformsOption, cameraOption, languageOption })
        parser.addOption(QCommandLineOption(name, QString(), QStringLiteral("value")));
    parser.addOption(QCommandLineOption(betaOption));
}

ExitCode offer(const QString &source, const QCommandLineParser &options)
{
    for (const QString &name : { nameOption, versionOption }) {
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
