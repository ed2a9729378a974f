// The settings store, key by key. Called at every use of a setting: nothing is kept between two calls, the store is the
// one truth that client, dialogs and host share.
#include "SoftwareUpdateClient.h"

#include <QCoreApplication>

namespace qv {

namespace {

const QString productKey = QStringLiteral("product");
const QString versionNumberKey = QStringLiteral("versionNumber");
[[maybe_unused]] const QString subVersionKey = QStringLiteral("subVersion"); // reserved, as is the next
[[maybe_unused]] const QString quietModeKey = QStringLiteral("quietMode");
const QString serverUrlKey = QStringLiteral("serverURL");
const QString doUpdateCheckKey = QStringLiteral("doUpdateCheck");
const QString checkForBetaKey = QStringLiteral("checkForBeta");
const QString updateIntervalKey = QStringLiteral("updateInterval");
const QString lastCheckKey = QStringLiteral("lastCheck");
const QString supportedPlatformsKey = QStringLiteral("supportedPlatforms");
const QString supportedPackageTypesKey = QStringLiteral("supportedPackageTypes");
const QString installablePackageTypesKey = QStringLiteral("installablePackageTypes");
const QString currentCameraVersionsKey = QStringLiteral("currentCameraVersions");

QSettings store()
{
    const QString organization = QCoreApplication::organizationName();
    const QString application = QCoreApplication::applicationName();
    return QSettings(SoftwareUpdateClient::sSoftUpQSettingsFormat, SoftwareUpdateClient::sSoftUpQSettingsScope,
                     organization.isEmpty() ? QStringLiteral("Quorvel") : organization,
                     application.isEmpty() ? QStringLiteral("softwareUpdate") : application);
}

bool boolOf(const QVariant &value, bool whenAbsent)
{
    return value.toString().isEmpty() ? whenAbsent : value.toBool();
}

VersionNumber versionOf(const QString &text)
{
    return VersionNumber(text.toLatin1().toStdString());
}

/// The text of a list. One that a person wrote into the file without quotes arrives as a list already.
QString listText(const QVariant &value)
{
    return value.toStringList().join(QLatin1Char(','));
}

QStringList listOf(const QVariant &value)
{
    return listText(value).split(QLatin1Char(','), Qt::SkipEmptyParts, Qt::CaseSensitive);
}

SoftUpCurrentCameraVersions camerasOf(const QVariant &value)
{
    SoftUpCurrentCameraVersions cameras;
    for (const QString &camera : listOf(value)) {
        const auto section = [&camera](int index) {
            return camera.section(QLatin1Char(':'), index, index, QString::SectionSkipEmpty);
        };
        cameras.append({ section(0), versionOf(section(1)) });
    }
    return cameras;
}

QString textOf(const SoftUpCurrentCameraVersions &cameras)
{
    QStringList parts;
    for (const auto &camera : cameras)
        parts << camera.first + QLatin1Char(':') + camera.second.toString();
    return parts.join(QLatin1Char(','));
}

void writeList(QSettings &settings, const QString &key, const QStringList &list)
{
    if (!list.isEmpty())
        settings.setValue(key, list.join(QLatin1Char(',')));
}

} // namespace

void SoftwareUpdateClient::getCurrentSettings(SoftwareUpdateSettings *settings) const
{
    const QSettings stored = store();
    *settings = SoftwareUpdateSettings();
    settings->doUpdateCheck = boolOf(stored.value(doUpdateCheckKey), true);
    settings->checkForBeta = boolOf(stored.value(checkForBetaKey), false);
    settings->updateInterval = stored.value(updateIntervalKey).toInt();
    settings->serverURL = stored.value(serverUrlKey).toString();
    settings->versionNumber = versionOf(stored.value(versionNumberKey, QStringLiteral("0")).toString());
    settings->product = stored.value(productKey).toString();
    settings->lastCheck = stored.value(lastCheckKey).toDateTime();
    settings->supportedPlatforms = listOf(stored.value(supportedPlatformsKey));
    settings->supportedPackageTypes = listOf(stored.value(supportedPackageTypesKey));
    settings->installablePackageTypes = listOf(stored.value(installablePackageTypesKey));
    settings->currentCameraVersions = camerasOf(stored.value(currentCameraVersionsKey));
}

void SoftwareUpdateClient::setCurrentSettings(const SoftwareUpdateSettings *settings)
{
    QSettings stored = store();
    stored.setValue(doUpdateCheckKey, settings->doUpdateCheck);
    stored.setValue(checkForBetaKey, settings->checkForBeta);
    stored.setValue(updateIntervalKey, settings->updateInterval);
    if (!settings->serverURL.isNull())
        stored.setValue(serverUrlKey, settings->serverURL);
    if (settings->versionNumber != VersionNumber())
        stored.setValue(versionNumberKey, settings->versionNumber.toString());
    if (!settings->product.isNull())
        stored.setValue(productKey, settings->product);
    if (!settings->lastCheck.isNull())
        stored.setValue(lastCheckKey, settings->lastCheck);
    writeList(stored, supportedPlatformsKey, settings->supportedPlatforms);
    writeList(stored, supportedPackageTypesKey, settings->supportedPackageTypes);
    writeList(stored, installablePackageTypesKey, settings->installablePackageTypes);
    if (!settings->currentCameraVersions.isEmpty())
        stored.setValue(currentCameraVersionsKey, textOf(settings->currentCameraVersions));
}

SoftwareUpdateSettings SoftwareUpdateClient::currentSettings() const
{
    SoftwareUpdateSettings settings;
    getCurrentSettings(&settings);
    return settings;
}

void SoftwareUpdateClient::applyDialogSettings(const SoftwareUpdateDialogSettings &dialogSettings)
{
    SoftwareUpdateSettings settings = currentSettings();
    settings.doUpdateCheck = dialogSettings.doUpdateCheck;
    settings.updateInterval = dialogSettings.updateInterval;
    settings.checkForBeta = dialogSettings.checkForBeta;
    settings.serverURL = dialogSettings.serverURL;
    setCurrentSettings(&settings);
    if (dialogSettings.doUpdateCheck)
        enableSoftwareUpdate();
    else
        disableSoftwareUpdate();
}

void SoftwareUpdateClient::setVersionNumber(const VersionNumber &version)
{
    SoftwareUpdateSettings settings = currentSettings();
    settings.versionNumber = version;
    setCurrentSettings(&settings);
}

void SoftwareUpdateClient::setCurrentCameraVersions(const SoftUpCurrentCameraVersions &cameraVersions)
{
    SoftwareUpdateSettings settings = currentSettings();
    settings.currentCameraVersions = cameraVersions;
    setCurrentSettings(&settings);
}

} // namespace qv
