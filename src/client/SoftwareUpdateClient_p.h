#pragma once

// Not installed: the inside of SoftwareUpdateClient.

#include "CatalogueSource.h"
#include "CheckOutcome.h"
#include "FailureTexts.h"
#include "HttpThreads.h"
#include "PackageInstaller.h"
#include "SoftwareUpdateClient.h"
#include "Trust.h"

#include <QElapsedTimer>
#include <QHash>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QPointer>
#include <QProgressDialog>
#include <QScopedPointer>
#include <QTimer>

namespace qv {

class DownloadManager;
class Replacement;
class SoftwareUpdateAvailableDialog;
class SoftwareUpdateDialog;

/// The keys of the settings store.
namespace Key {
inline const QString product = QStringLiteral("product");
inline const QString versionNumber = QStringLiteral("versionNumber");
inline const QString subVersion = QStringLiteral("subVersion"); // reserved, as is the next
inline const QString quietMode = QStringLiteral("quietMode");
inline const QString serverURL = QStringLiteral("serverURL");
inline const QString doUpdateCheck = QStringLiteral("doUpdateCheck");
inline const QString checkForBeta = QStringLiteral("checkForBeta");
inline const QString updateInterval = QStringLiteral("updateInterval");
inline const QString lastCheck = QStringLiteral("lastCheck");
inline const QString supportedPlatforms = QStringLiteral("supportedPlatforms");
inline const QString supportedPackageTypes = QStringLiteral("supportedPackageTypes");
inline const QString installablePackageTypes = QStringLiteral("installablePackageTypes");
inline const QString failedChecks = QStringLiteral("failedChecks"); // with a policy's spread alone
inline const QString currentCameraVersions = QStringLiteral("currentCameraVersions");
} // namespace Key

/// What a catalogue has for this installation.
struct FoundOffer
{
    bool isCatalogue = false; // with packages, whoever they are for
    PackageInfoList packages;
};

class SoftwareUpdateClientPrivate
{
public:
    /// One package on its way to the disk.
    struct Download
    {
        PackageInfo package;
        QString file;
        QPointer<QProgressDialog> dialog;
        bool wasInstallable = false; // when Install was pressed
    };

    enum class Asker { Nobody, Timer, SettingsDialog, Host };
    static bool isUser(Asker asker) { return asker == Asker::SettingsDialog || asker == Asker::Host; }

    /// One check, from its start until its outcome is told.
    struct Check
    {
        int id = 0; // its requests carry it; 0: none, a slot was called by name
        Asker asker = Asker::Nobody;
        CheckOutcome outcome; // cancelled, until it ends otherwise
        CatalogueSource source;
        QUrl catalogue; // whose answer, or whose signature, is awaited
    };

    explicit SoftwareUpdateClientPrivate(SoftwareUpdateClient *client);

    SoftwareUpdateSettings currentSettings() const;
    SoftUpCurrentCameraVersions fleetOf(const QVariant &value);
    void storeSeals();
    int failedChecks() const;
    void storeFailedChecks(int count);

    static QString lastCheckText(const QDateTime &lastCheck);
    void passTableOn();

    void check(SoftwareUpdateSettings settings, Asker asker = Asker::Nobody);
    void checkLater(const SoftwareUpdateSettings &settings, int msDelay);
    void checkInTurn(const SoftwareUpdateSettings &settings, int msDelay);
    bool isTurnAwaited() const;
    void awaitTurn(qint64 msDelay);
    void stopTurn();
    qint64 msUntilRetry(const QDateTime &lastCheck) const;
    void countFailure(const Check &check, CheckOutcome::Kind kind);

    void performUpdateCheck(const QUrl &url);
    void sendRequests();
    void announceCheck(const QUrl &url);
    void takeAnswer(QNetworkReply *reply);
    void followRedirect(const QUrl &target);
    void failCheck(const QString &errorText, const Failure &failure);
    void parseServerResponse(const QByteArray &catalogue);
    void takeOffer(FoundOffer found);
    void reportNoCatalogue();
    void productUpToDate(const Check &check);
    void showNotification(const QString &text);
    void offerNothing();
    void fillTable();

    bool isSealAwaited() const;
    bool isSignatureMissing(const QNetworkReply &reply) const;
    void takeByPolicy(QNetworkReply *reply);
    bool examineSeal(const QByteArray &catalogue, const QByteArray &signature);
    void askAnew();
    bool askMirror(const QString &reason);
    bool askMirrorInTime();

    void beginCheck(const QDateTime &started, Asker asker);
    void resumeCheck(int id);
    bool isHostAsking() const;
    bool isSettingsDialogOpen() const;
    bool keepOffered(PackageInfoList &found);
    void announceUpdates(Check check);
    void endCheck(Check check, CheckOutcome::Kind kind, const QString &text);
    void tellOutcomes();
    void showOutcome(const CheckOutcome &outcome);

    void noteRequest(const QUrl &url);
    void noteAnswer(QNetworkReply &reply);
    static Failure failureOf(const QNetworkReply &reply);
    QString toldText(const QString &usual, Failure failure) const;
    QString toldText(const QString &usual, const DownloadManager *manager) const;
    void tellProgress(const Download &download, int value, int total);
    void tellNotStarted(Failure::Kind kind, const QString &folder);
    QUrl releaseNotesOf(const PackageInfo &package) const;

    static QString downloadingText();
    bool isInstallable(const PackageInfo &package) const;
    PackageInstaller *installerOf(const PackageInfo &package) const;
    bool canQueue(const SoftUpIndexList &rows) const;
    bool takeToInstallers(int row);
    void forgetInstalled(const PackageInfoList &installed);
    DownloadManager *newManager() const;
    static QString newFile(const PackageInfo &package);
    QString downloadErrorText(const QObject *manager, int httpStatusCode) const;
    Download downloadOf(const QObject *manager) const;
    Download takeDownload(const QObject *manager);
    void closeProgress(const Download &download);
    void failDownload(const Download &download, const QString &text);
    void discard(const Download &download);
    void showFailure(const QString &title, const QString &text) const;
    void installEXEPackage(const Download &download);
    void installMPKGPackage(const Download &download);
    void installZIPPackage(const Download &download);
    bool acceptsRestart() const;
    void failInstallation(const QString &reason = QString()) const;
    bool replaces(const PackageInfo &package) const;
    bool canReplace();
    void replaceApplication(const Download &download);
    void finishReplacement(Replacement *replacement);
    void installMSIPackage(const Download &download);
    void installDEBPackage(const Download &download);
    void installRPKPackage(const Download &download);
    void installTARGZPackage(const Download &download);

    SoftwareUpdateClient *const q;
    QPointer<QWidget> parentWidget;
    SoftUpCurrentCameraVersions fleet; // of the text that follows
    QString fleetText;
    QScopedPointer<QNetworkAccessManager, HttpThreads::Release> networkManager; // exists while a check waits
    UpdatePolicy policy;
    QHash<QString, QPointer<PackageInstaller>> installers; // of the policy, by suffix
    QPointer<QObject> installQueue;                        // exists from Install to the last word, for these
    Trust trust;
    QByteArray unsealed;            // the catalogue whose signature is awaited
    QList<QNetworkRequest> unsent;  // until HttpThreads are free
    QTimer *requestTimer = nullptr; // made by the first check
    QTimer *turnTimer = nullptr;    // likewise, by the first that waits
    Check current;                  // whose request leaves next, or whose answer has come
    QList<Check> underWay;          // that have a request
    QList<Check> untold;            // that have ended
    int lastCheckId = 0;
    int readings = 0;    // of catalogues, in another thread
    QUrl asked;          // by the last request of a check
    bool isPage = false; // what came in the place of a catalogue
    QTimer *const checkTimer;
    PackageInfoList packages;                       // what the last check found; row i of the table is package i
    SoftUpIndexList selectedRows;                   // the row that is being installed
    SoftwareUpdateDialog *settingsDialog = nullptr; // set until it is destroyed, hidden or not
    SoftwareUpdateAvailableDialog *availableDialog = nullptr; // likewise
    QPointer<QProgressDialog> progressDialog;                 // exists while a package downloads
    QElapsedTimer progressClock;                              // of that dialog, from the first bytes on
    qint64 msProgressTold = -1;                               // when its text was set
    QHash<const QObject *, Download> downloads;               // that are heard of, by their managers
    Download lastDownload;
    QString unpackedFolder; // Deliberate: stays empty, the updater gets an empty new folder
    Qt::WindowFlags windowFlags;
    DownloadManager *unpackingManager = nullptr; // exists while an "mpkg" package is unpacked
};

} // namespace qv
