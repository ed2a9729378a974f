// The client object: construction, proxy, parent window and flags, the hourly timer on and off; and the static members,
// which hand over to the catalogue's Offer. Hosts call all of it.
#include "SoftwareUpdateClient_p.h"

#include "ConnectHelpers.h"
#include "DialogFlags.h"
#include "NodeDB.h"
#include "Offer.h"

#include <utility>

namespace qv {

namespace {

constexpr int msBetweenTicks = 60 * 60 * 1000;

} // namespace

QSettings::Format SoftwareUpdateClient::sSoftUpQSettingsFormat = QSettings::NativeFormat;
QSettings::Scope SoftwareUpdateClient::sSoftUpQSettingsScope = QSettings::UserScope;

SoftwareUpdateClientPrivate::SoftwareUpdateClientPrivate(SoftwareUpdateClient *client)
    : q(client), checkTimer(new QTimer(client)), windowFlags(dialogFlags(true))
{
}

SoftwareUpdateClient::SoftwareUpdateClient(const QString &product, VersionNumber version, const QString &serverURL,
                                           QWidget *parent)
    : d(std::make_unique<SoftwareUpdateClientPrivate>(this))
{
    d->parentWidget = parent;

    static QStringList supportedPackageTypes;
    static QStringList installablePackageTypes;
    // Deliberate: every client adds the types once more. The empty type makes the list one that is written.
    supportedPackageTypes << defaultPackageTypes();
    installablePackageTypes << QStringLiteral("");

    SoftwareUpdateSettings settings = d->currentSettings();
    settings.product = product;
    settings.versionNumber = std::move(version);
    settings.supportedPlatforms.clear(); // of the build: none, so that the stored ones stay
    settings.supportedPackageTypes = supportedPackageTypes;
    settings.installablePackageTypes = installablePackageTypes;
    if (settings.serverURL.isNull())
        settings.serverURL = serverURL;
    setCurrentSettings(&settings);

    qv::connect(d->checkTimer, SIGNAL(timeout()), this, SLOT(queryLastUpdate()));
    if (settings.doUpdateCheck)
        enableSoftwareUpdate();
    else
        disableSoftwareUpdate();
}

SoftwareUpdateClient::~SoftwareUpdateClient() = default;

QNetworkProxy SoftwareUpdateClient::networkProxy() const
{
    const NetworkProxy proxy = NodeDB::getDB().globalProxy();
    if (!proxy.useProxy())
        return QNetworkProxy(QNetworkProxy::NoProxy);
    return QNetworkProxy(QNetworkProxy::HttpProxy, proxy.proxyAddress(), quint16(proxy.proxyPort()), proxy.proxyUser(),
                         proxy.proxyPassword());
}

void SoftwareUpdateClient::enableSoftwareUpdate()
{
    d->checkTimer->start(msBetweenTicks);
}

void SoftwareUpdateClient::disableSoftwareUpdate()
{
    d->checkTimer->stop();
    d->stopTurn();
}

void SoftwareUpdateClient::setParent(QWidget *parent)
{
    d->parentWidget = parent;
}

void SoftwareUpdateClient::setWindowFlags(Qt::WindowFlags flags)
{
    d->windowFlags = flags;
}

PackageInfoList SoftwareUpdateClient::offeredPackages(PackageInfoList catalogue, const QString &applicationName,
                                                      const SoftwareUpdateSettings &settings, bool beta)
{
    return qv::offeredPackages(std::move(catalogue), applicationName, settings, beta);
}

QStringList SoftwareUpdateClient::defaultPackageTypes()
{
    return qv::defaultPackageTypes();
}

QStringList SoftwareUpdateClient::packageRow(const PackageInfo &package)
{
    return qv::packageRow(package);
}

QString SoftwareUpdateClient::packageComment(const PackageInfo &package)
{
    return qv::packageComment(package);
}

SoftUpIndexList SoftwareUpdateClient::foreignLanguageRows(const PackageInfoList &packages, const QString &language)
{
    return qv::foreignLanguageRows(packages, language);
}

} // namespace qv
