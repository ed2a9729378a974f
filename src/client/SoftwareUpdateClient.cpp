// The client object: construction, proxy, parent window and flags, the hourly timer on and off. Hosts call all of it.
#include "SoftwareUpdateClient.h"

#include "ConnectHelpers.h"
#include "DialogFlags.h"
#include "NodeDB.h"

#include <QNetworkAccessManager>
#include <QTimer>

namespace qv {

namespace {

constexpr int msBetweenTicks = 3'600'000;

} // namespace

QSettings::Format SoftwareUpdateClient::sSoftUpQSettingsFormat = QSettings::NativeFormat;
QSettings::Scope SoftwareUpdateClient::sSoftUpQSettingsScope = QSettings::UserScope;

const QString SoftwareUpdateClient::applicationKind = QStringLiteral("Application");
const QString SoftwareUpdateClient::cameraKind = QStringLiteral("Camera Firmware");

SoftwareUpdateClient::SoftwareUpdateClient(const QString &product, VersionNumber version, const QString &serverURL,
                                           QWidget *parent)
    : parentWidget(parent), checkTimer(new QTimer(this)), windowFlags(dialogFlags(true))
{
    static const QStringList compatiblePlatforms;
    static QStringList supportedPackageTypes;
    static QStringList installablePackageTypes;
    // Deliberate: every client adds the types once more. The empty type makes the list one that is written.
    supportedPackageTypes << defaultPackageTypes();
    installablePackageTypes << QStringLiteral("");

    SoftwareUpdateSettings settings = currentSettings();
    settings.product = product;
    settings.versionNumber = version;
    settings.supportedPlatforms = compatiblePlatforms;
    settings.supportedPackageTypes = supportedPackageTypes;
    settings.installablePackageTypes = installablePackageTypes;
    if (settings.serverURL.isNull())
        settings.serverURL = serverURL;
    setCurrentSettings(&settings);

    qv::connect(checkTimer, SIGNAL(timeout()), this, SLOT(queryLastUpdate()));
    if (settings.doUpdateCheck)
        enableSoftwareUpdate();
    else
        disableSoftwareUpdate();
}

SoftwareUpdateClient::~SoftwareUpdateClient() = default;

QStringList SoftwareUpdateClient::defaultPackageTypes()
{
    return { QStringLiteral("tar.gz"), QStringLiteral("rpm"), QStringLiteral("deb"), QStringLiteral("tar.bz2") };
}

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
    checkTimer->start(msBetweenTicks);
}

void SoftwareUpdateClient::disableSoftwareUpdate()
{
    checkTimer->stop();
}

void SoftwareUpdateClient::setParent(QWidget *parent)
{
    parentWidget = parent;
}

void SoftwareUpdateClient::setWindowFlags(Qt::WindowFlags flags)
{
    windowFlags = flags;
}

} // namespace qv
