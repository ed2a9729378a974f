// The settings store, key by key. Called at every use of a setting: the store is the one truth that client, dialogs and
// host share. What is kept between two calls is what the text of a fleet means.
#include "SoftwareUpdateClient_p.h"

#include "Preferences.h"

#include <QCoreApplication>

#include <algorithm>

namespace qv {

namespace {

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

/// The text of a list. One that a person wrote into the file without quotes arrives as a list already.
QString listText(const QVariant &value)
{
    return value.toStringList().join(QLatin1Char(','));
}

QStringList listOf(const QString &text)
{
    return text.split(QLatin1Char(','), Qt::SkipEmptyParts, Qt::CaseSensitive);
}

QStringList listOf(const QVariant &value)
{
    return listOf(listText(value));
}

SoftUpCurrentCameraVersions camerasOf(const QStringList &list)
{
    SoftUpCurrentCameraVersions cameras;
    for (const QString &camera : list) {
        const auto section = [&camera](int index) {
            return camera.section(QLatin1Char(':'), index, index, QString::SectionSkipEmpty);
        };
        cameras.append({ section(0), VersionNumber::fromText(section(1)) });
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
    QSettings stored = store();
    *settings = SoftwareUpdateSettings();
    if (!Preferences::mend(stored))
        return;
    settings->doUpdateCheck = boolOf(stored.value(Key::doUpdateCheck), true);
    settings->checkForBeta = boolOf(stored.value(Key::checkForBeta), false);
    settings->updateInterval = stored.value(Key::updateInterval).toInt();
    settings->serverURL = stored.value(Key::serverURL).toString();
    settings->versionNumber = VersionNumber::fromText(stored.value(Key::versionNumber, QStringLiteral("0")).toString());
    settings->product = stored.value(Key::product).toString();
    const QDateTime lastCheck = stored.value(Key::lastCheck).toDateTime();
    settings->lastCheck = lastCheck.isValid() ? lastCheck : QDateTime();
    settings->supportedPlatforms = listOf(stored.value(Key::supportedPlatforms));
    settings->supportedPackageTypes = listOf(stored.value(Key::supportedPackageTypes));
    settings->installablePackageTypes = listOf(stored.value(Key::installablePackageTypes));
    settings->currentCameraVersions = d->fleetOf(stored.value(Key::currentCameraVersions));
}

/// Those that @p value lists; read anew only when it is another text than the last.
SoftUpCurrentCameraVersions SoftwareUpdateClientPrivate::fleetOf(const QVariant &value)
{
    const QString text = listText(value);
    if (text != fleetText)
        fleet = camerasOf(listOf(text));
    fleetText = text;
    return fleet;
}

void SoftwareUpdateClient::setCurrentSettings(const SoftwareUpdateSettings *settings)
{
    QSettings stored = store();
    if (!Preferences::mend(stored))
        return;
    stored.setValue(Key::doUpdateCheck, settings->doUpdateCheck);
    stored.setValue(Key::checkForBeta, settings->checkForBeta);
    stored.setValue(Key::updateInterval, settings->updateInterval);
    if (!settings->serverURL.isNull())
        stored.setValue(Key::serverURL, settings->serverURL);
    if (settings->versionNumber != VersionNumber())
        stored.setValue(Key::versionNumber, settings->versionNumber.toString());
    if (!settings->product.isNull())
        stored.setValue(Key::product, settings->product);
    if (!settings->lastCheck.isNull())
        stored.setValue(Key::lastCheck, settings->lastCheck);
    writeList(stored, Key::supportedPlatforms, settings->supportedPlatforms);
    writeList(stored, Key::supportedPackageTypes, settings->supportedPackageTypes);
    writeList(stored, Key::installablePackageTypes, settings->installablePackageTypes);
    if (!settings->currentCameraVersions.isEmpty())
        stored.setValue(Key::currentCameraVersions, textOf(settings->currentCameraVersions));
}

SoftwareUpdateSettings SoftwareUpdateClientPrivate::currentSettings() const
{
    SoftwareUpdateSettings settings;
    q->getCurrentSettings(&settings);
    return settings;
}

void SoftwareUpdateClient::setVersionNumber(const VersionNumber &version)
{
    SoftwareUpdateSettings settings = d->currentSettings();
    settings.versionNumber = version;
    setCurrentSettings(&settings);
}

void SoftwareUpdateClient::setCurrentCameraVersions(const SoftUpCurrentCameraVersions &cameraVersions)
{
    SoftwareUpdateSettings settings = d->currentSettings();
    settings.currentCameraVersions = cameraVersions;
    setCurrentSettings(&settings);
}

void SoftwareUpdateClient::setPolicy(const UpdatePolicy &policy)
{
    d->policy = policy;
    d->installers.clear();
    for (auto one = policy.installers.cbegin(); one != policy.installers.cend(); ++one)
        d->installers.insert(one.key(), one.value());
    if (policy.msSpread <= 0)
        d->stopTurn();
    d->trust.setKeys(policy.trustedKeys);
    QSettings stored = store();
    if (d->trust.isSet() && Preferences::mend(stored))
        d->trust.load(stored);
}

/// 0 without a policy's spread.
int SoftwareUpdateClientPrivate::failedChecks() const
{
    if (policy.msSpread <= 0)
        return 0;
    QSettings stored = store();
    return Preferences::mend(stored) ? std::clamp(stored.value(Key::failedChecks).toInt(), 0, 100) : 0;
}

void SoftwareUpdateClientPrivate::storeFailedChecks(int count)
{
    QSettings stored = store();
    if (!Preferences::mend(stored))
        return;
    if (count > 0)
        stored.setValue(Key::failedChecks, count);
    else if (stored.contains(Key::failedChecks))
        stored.remove(Key::failedChecks);
}

void SoftwareUpdateClientPrivate::storeSeals()
{
    QSettings stored = store();
    if (Preferences::mend(stored))
        trust.save(stored);
}

} // namespace qv
