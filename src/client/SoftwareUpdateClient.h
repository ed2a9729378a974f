#pragma once

#include "PackageInfo.h"
#include "SoftwareUpdateTypes.h"
#include "UpdatePolicy.h"

#include <QNetworkProxy>
#include <QObject>
#include <QSettings>
#include <QWidget>

#include <memory>

class QNetworkReply;

namespace qv {

class SoftwareUpdateClientPrivate;

/// Software updates for a host application and for the cameras it manages. A host creates one, in the GUI thread, and
/// deletes it before its QApplication:
/// @code
/// QCoreApplication::setOrganizationName("Example");
/// QCoreApplication::setApplicationName("Camera Host"); // the "name" of its packages in the catalogue
/// ...
/// qv::SoftwareUpdateClient updates("Camera Host", qv::VersionNumber("1.4.0"),
///                                  "http://updates.example.com/catalogue.xml", &mainWindow);
/// updates.setCurrentCameraVersions({{"QC-2000", qv::VersionNumber("10.2.0")}});
/// updates.doInitialCheck(5000);
/// connect(checkForUpdatesAction, &QAction::triggered, &updates, [&updates] { updates.queryForUpdate(); });
/// @endcode
///
/// From then on the client checks by itself, at application start, daily, weekly or monthly as the user chose, and
/// shows the packages it finds in a dialog. A check that fails or finds nothing shows nothing, unless the settings
/// dialog is open: then its notification line tells. A host that tells its users otherwise sets an UpdatePolicy.
///
/// The user's choices live in the host's own settings store, at top level, under the keys that SoftwareUpdateSettings
/// names. They are read from there at every use, so a host may change them at any time.
///
/// The dialogs are children of the parent window and go with it at the latest; the client may outlive it, and opens its
/// dialogs without a parent then.
class SOFTWAREUPDATE_EXPORT SoftwareUpdateClient : public QObject
{
    Q_OBJECT

public:
    /// Reads the settings, writes product, version and package types back, and starts the hourly timer if automatic
    /// checking is on. Checks nothing, opens nothing, and touches no network. @p serverURL counts only until the store
    /// has a "serverURL" of its own, even an empty one.
    SoftwareUpdateClient(const QString &product, VersionNumber version, const QString &serverURL, QWidget *parent);
    ~SoftwareUpdateClient() override;

    /// Where the settings are; a host may change them before it creates the client. The organization and the
    /// application are those of QCoreApplication, or "Quorvel" and "softwareUpdate" where it has none.
    static QSettings::Format sSoftUpQSettingsFormat;
    static QSettings::Scope sSoftUpQSettingsScope;

    /// Reads all of the settings into @p settings. What is absent or unreadable gets its default.
    void getCurrentSettings(SoftwareUpdateSettings *settings) const;

    /// Writes @p settings. Deliberate: no key is ever removed; an empty list, a null text or date and the version 0
    /// leave in the store what was there. A store that cannot be used is left alone.
    void setCurrentSettings(const SoftwareUpdateSettings *settings);

    /// What this client does beyond the defaults, from now on; see UpdatePolicy. With trusted keys the serials of the
    /// catalogues that were seen are kept in the settings, below "seals".
    void setPolicy(const UpdatePolicy &policy);

    /// Checks by one click of the user, in the host's own window: the stored server, whatever was chosen for checks by
    /// themselves. The time is stored as for any other. It takes the place of those under way, and while it runs only
    /// "Check Now" starts another. UpdatePolicy::announce and UpdatePolicy::checked tell the outcome; packages that
    /// nobody announces come up in the table, and without UpdatePolicy::checked a box tells of any other outcome,
    /// unless the settings dialog is open: then its notification line does.
    void checkNow();

    /// Brings up the table of the packages that the last check found which reached its server; false, and nothing comes
    /// up, where there are none.
    bool showAvailable();

    /// The proxy for all requests: the host's NodeDB::globalProxy(), or none. The system's is never asked.
    QNetworkProxy networkProxy() const;

    /// True when a check of this @p interval (1 daily, 2 weekly, 3 monthly) is due. At the due instant itself it is
    /// not.
    static bool isCheckDue(int interval, const QDateTime &lastCheck, const QDateTime &now);

    /// What an installation with these @p settings is shown of @p catalogue: the newest packages of the application
    /// named @p applicationName that run on its platforms and have one of its package types, then the newest firmware
    /// for each of its cameras, their types set; all of them newer than what is installed. Releases of any status count
    /// with @p beta, which stands for settings.checkForBeta.
    static PackageInfoList offeredPackages(PackageInfoList catalogue, const QString &applicationName,
                                           const SoftwareUpdateSettings &settings, bool beta);

    /// The suffixes of the application's packages that each client writes into its store.
    static QStringList defaultPackageTypes();

    /// The five texts of a package's row: name with version, size, file type, languages, platforms.
    static QStringList packageRow(const PackageInfo &package);

    /// What is told of one selected package, as rich text; texts of the catalogue are escaped.
    static QString packageComment(const PackageInfo &package);

    /// The rows of camera firmware that a user of @p language ("de") has no use for, ascending; none where no firmware
    /// would be left. Deliberate: for "en" a firmware counts only when it has both "de" and "en".
    static SoftUpIndexList foreignLanguageRows(const PackageInfoList &packages, const QString &language);

public slots:
    /// Checks now: the server typed in the settings dialog if that is open, else the stored one if checking is on. The
    /// time of the check is stored when it starts, however it ends.
    void checkForUpdate();

    /// Checks after @p msDelay milliseconds, at once if that is not positive, provided that checking is on and that the
    /// settings dialog is not open then.
    void checkForUpdate(int msDelay);

    /// The check at application start: does nothing unless the user chose that interval.
    void doInitialCheck(int msDelay = 0);

    /// Opens the settings dialog; one that is open is filled afresh and raised, the arguments ignored. With no flags
    /// those of setWindowFlags() count.
    void queryForUpdate(Qt::WindowFlags flags = Qt::WindowFlags(), bool modal = true);

    /// Starts and stops the hourly timer; the stored setting stays as it is.
    void enableSoftwareUpdate();
    void disableSoftwareUpdate();

    /// Stores the version that is installed.
    void setVersionNumber(const VersionNumber &);

    /// Stores the firmware versions of the host's cameras. Model names have no "," and no ":". Deliberate: an empty
    /// list changes nothing.
    void setCurrentCameraVersions(const SoftUpCurrentCameraVersions &);

    /// The window for the dialogs to come; not owned, and forgotten when it is destroyed.
    void setParent(QWidget *parent);

    /// The window flags for the dialogs to come, at first dialogFlags(true).
    void setWindowFlags(Qt::WindowFlags flags);

private slots:
    void updateAvailable();
    void doBackgroundCheck();
    void applyDialogSettings(const SoftwareUpdateDialogSettings &dialogSettings);
    void downloadUrls(const SoftUpIndexList &rows);
    void downloadReleaseNotes(const SoftUpIndexList &rows);
    void downloadProgress(int value, int total);
    void downloadError(int httpStatusCode);
    void installPackage(int row);
    QList<int> determineForeignLanguageRows(const PackageInfoList &list);
    void downloadFinished();
    void abortDownload();
    void evaluateServerResponse(QNetworkReply *reply);
    void requestTimeout();
    void requestError(const QString &errorText);
    void queryLastUpdate(int msDelay = 0);
    void deleteUpdateDialog();
    void deleteUpdateAvailableDialog();
    void deleteNetworkmanager();
    void deleteProgressDialog();
    void startZipInstall();
    void unzippedMPKGPackage(const QString &unzippedFilePath);
    void manageUpdateAvailableDialog(const SoftUpIndexList &rows);
    void showHideForeignLanguageItems(bool state);
    void setUpdateAvailableNull(QObject *obj = nullptr);
    void setUpdateDialogNull(QObject *obj = nullptr);
    void openSettingsDialogFromUpdateAvailableDialog();

private:
    friend class SoftwareUpdateClientPrivate;
    const std::unique_ptr<SoftwareUpdateClientPrivate> d;
};

} // namespace qv
