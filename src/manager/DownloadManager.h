#pragma once

#include "HttpHost.h"
#include "PackageInfo.h"
#include "RequestData.h"
#include "UpdatePolicy.h"
#include "UpdateResult.h"

#include <QDir>
#include <QDomElement>
#include <QIODevice>
#include <QObject>
#include <QSettings>
#include <QStringList>

#include <memory>

namespace qv {

class DownloadManagerPrivate;
class PackageIndex;

/// Asks an update server for its catalogue, remembers across runs which packages it has seen, downloads packages and
/// release notes, unpacks packages and hands over to installers. Its static members read catalogues and pick from them
/// what concerns the installed products.
///
/// Lives on the GUI thread and belongs to whoever creates it; it may be deleted at any time, in a slot of its own
/// signals too. Requests run one at a time, in the order of the calls. Nothing throws but runInstaller() and
/// runZipInstaller().
/// @code
/// DownloadManager manager(settings, cacheFile);
/// connect(&manager, &DownloadManager::packageFound, this, [](const PackageInfoList &packages) {
///     showNews(DownloadManager::countNew(packages));
/// });
/// manager.queryUpdate();
/// ...
/// manager.storeHistory(settings, cacheFile);
/// @endcode
class SOFTWAREUPDATE_EXPORT DownloadManager : public QObject
{
    Q_OBJECT

public:
    /// The update server of the build; what hosts store with versions before the third gives way to it.
    static const QString UPDATE_URL;

    /// Asks the server of @p host for @p path, and goes its way: direct or through its proxy.
    DownloadManager(const HttpHost &host, const QString &path);

    /// Asks for @p server, through the host application's global proxy where there is one.
    explicit DownloadManager(const QUrl &server);

    /// Goes on where storeHistory() left off. @p cacheFile is the path of the file that holds the last catalogue;
    /// empty: none is kept.
    DownloadManager(QSettings &settings, const QString &cacheFile);

    /// For the operations that need no server. Deliberate: without one it emits neither downloadStarted() nor
    /// downloadProgress().
    DownloadManager();

    ~DownloadManager() override;

    /// What this manager does beyond the defaults, from now on; see UpdatePolicy. With trusted keys storeHistory() also
    /// keeps the serials of the catalogues that were seen, and the catalogue of an earlier run does not count: nobody
    /// knows whether it was sealed.
    void setPolicy(const UpdatePolicy &policy);

    HttpHost &server();
    const HttpHost &server() const;

    /// The address of the catalogue. Deliberate: every change of it returns to the global proxy.
    void setServer(const QUrl &url);

    /// @p address is "[user[:password]@]host[:port]", port 80 unless said. One that is used joins
    /// HttpAccessHistory::proxies.
    void setProxy(HttpHost::ProxyPreference preference, const QString &address);

    /// True while a query or a download runs, or a download waits for its next attempt.
    bool isQueryBusy() const;

    /// What kept the last download from coming to its end, in Qt's words; empty where the transfer itself did not fail.
    QString errorText() const;

    /// What the last download failed of and what a user can do about it, a sentence or two of plain text in the user's
    /// language (translations "SoftwareUpdatePolicy_*"), whatever the policy; empty where none has failed. To be asked
    /// from a slot for downloadFailure() on.
    QString failureText() const;

    /// Whether the user asked for regular checks: remembered here, acted on by the host.
    bool isRegularCheck() const;
    void setRegularCheck(bool isRegular);

    /// The full address of the catalogue.
    QString queryUrl() const;

    /// Writes what is remembered into the group "Download" of @p settings, and the last catalogue into @p cacheFile,
    /// which is replaced in one step. What cannot be written is lost without notice.
    void storeHistory(QSettings &settings, const QString &cacheFile) const;

    /// True when the package that installLater() set aside lies on the disk with the size that its PackageInfo tells.
    bool hasInstallPackage() const;

    /// The package that installLater() set aside: its localFile, and in its spareFlag whether to ask before installing.
    PackageInfo &installPackage();
    const PackageInfo &installPackage() const;

    /// The program to start in an unpacked folder, relative to @p folder: the largest executable file of the first
    /// folder that has one, itself before its subfolders. Empty where there is none. Links that lead out do not count.
    static QString findDefaultExecutable(const QDir &folder);

    /// How the update ended by which this program was started: UpdateInstaller tells it with its option -tell, as the
    /// client does with UpdatePolicy::replacesApplication after "Restart now". Nothing is told after "Restart later",
    /// which starts no program: then the version tells, and the updater's log.
    ///
    /// Deliberate: the first call takes the variable QV_UPDATE_RESULT out of the environment, so that programs started
    /// from here do not take it for theirs. Call it early, from the GUI thread.
    static UpdateResult lastUpdateResult();

    // The words of a catalogue: its elements, and the values that stand in them as child elements or attributes.
    static const QString DOCUMENT_TAG; ///< "softwareList", the usual root; any other is read too
    static const QString PACKAGE_SET;
    static const QString PACKAGE;
    static const QString FILE;
    static const QString TYPE;
    static const QString NAME;
    static const QString NAME_PUBLIC;
    static const QString RELEASE_NOTES;
    static const QString README;
    static const QString LANGUAGE;
    static const QString RELEASE_VERSION;
    static const QString RELEASE_VERSION_PUBLIC;
    static const QString RELEASE_STATUS;
    static const QString RELEASE_DATE;
    static const QString URL;
    static const QString BASE_URL;
    static const QString FILE_SIZE;
    static const QString PLATFORM;
    static const QString COMMENT;

    /// The meta-type id of PackageInfoList.
    static const int qMetaTypes;

    /// The packages of the catalogue that @p device, open for reading, holds: those that stand in a set itself, then
    /// those of the sets in it. A value that a package does not have is taken from the nearest set around; platforms,
    /// languages and links add up over all of them (docs/catalogue.md).
    ///
    /// What is not well-formed XML, or is made to exhaust time or memory (see XmlUtils::parseXml(); likewise packages
    /// that would take more than 64 MiB for what they inherit and cannot share, or tables and indexes too long to
    /// walk), gives an empty list and a line in the log.
    static PackageInfoList parseXML(QIODevice *device);

    /// The same rules for single nodes of a DOM: appends the packages of @p set; fills the catalogue's fields of
    /// @p info; finds the "file" child that holds a package's values, or the node itself; looks a value up from there
    /// outwards; adds the words or links of all levels to @p out and returns how many they are.
    static void parseSet(const QDomElement &set, PackageInfoList &out);
    static void parsePackage(const QDomElement &package, PackageInfo &info);
    static QDomNode startSearchAt(const QDomNode &node);
    static QString findString(const QDomNode &node, const QString &tag);
    static int findAllStrings(const QDomNode &node, const QString &tag, QStringSet &out);
    static int findAllTranslatedUrls(const QDomNode &node, const QString &tag, UrlMap &out);

    /// Bytes: a number, or one with the unit "kB" or "MB" in any case (1024 and 1024 * 1024), cut to a whole number
    /// before the unit counts; 0 where unreadable or negative. Sizes from 2^63 on keep their bits: read the result as
    /// unsigned.
    static qint64 parseFileSize(const QString &text);

    /// "yyyy-MM-dd hh:mm:ss" or "yyyy-MM-dd", local time; null where unreadable.
    static QDateTime parseReleaseDate(const QString &text);

    /// What stands behind the last dot, or "tar.gz", "tar.bz2", and "mpkg" for ".mpkg.zip". A suspicious one is logged
    /// and returned all the same.
    static QString parsePackageSuffix(const QString &urlText);

    /// The packages that pass PackageInfo::filterPackageCandidate() and carry the newest release among them, their type
    /// set to @p type - in @p packages too, for all that pass.
    static PackageInfoList findPackageCandidates(PackageInfoList &packages, const PackageInfo &filter,
                                                 const QString &type, const QStringList &wantedSuffixes);

    /// The same, for asking one large catalogue about many platforms: @p index was made of @p packages.
    static PackageInfoList findPackageCandidates(PackageInfoList &packages, const PackageIndex &index,
                                                 const PackageInfo &filter, const QString &type,
                                                 const QStringList &wantedSuffixes);

    /// Keeps the first of equal packages.
    static void eliminateDuplicatePackages(PackageInfoList &packages);

    /// Of the packages that match @p filter, the best for each type and platform, in the order of "type/platform".
    static PackageInfoList findBestMatches(const PackageInfoList &packages, const PackageInfo &filter);

    /// How many packages no earlier query has listed.
    static int countNew(const PackageInfoList &packages);

public slots:
    /// Fetches the catalogue and reports all its packages, those that earlier answers listed marked with
    /// PackageInfo::PackageKnown: emits queryStarted(), packageFound() or noPackageFound(), and queryFinished(). A
    /// server that cannot be reached, and an answer that is no catalogue, count as an empty one.
    ///
    /// @p callbackSlot of @p callbackReceiver, plain name or SLOT() form, is called with the same PackageInfoList from
    /// the receiver's event loop. Callers look at isQueryBusy() first.
    ///
    /// Deliberate: the filter does not narrow what is delivered.
    void queryUpdate(const QString &filterTypes = QString(), const QString &filterNames = QString(),
                     const QString &filterReleaseVersion = QString(), const QString &filterReleaseStatus = QString(),
                     const QDateTime &filterTime = QDateTime(), const QStringSet &filterPlatform = QStringSet(),
                     const QStringSet &filterLanguages = QStringSet(), QObject *callbackReceiver = nullptr,
                     const char *callbackSlot = nullptr);
    void queryUpdate(const PackageInfo &filter, QObject *callbackReceiver = nullptr,
                     const char *callbackSlot = nullptr);

    /// A query for packages of the type "system", with @p filterLanguages as the platforms of its filter.
    void queryCameraFirmwareUpdate(const QString &filterVersion = QString(), const QString &filterRelease = QString(),
                                   const QStringSet &filterLanguages = QStringSet());

    /// All packages of the last catalogue, each marked as known; an empty list before the first. Deliberate: the filter
    /// is not used.
    PackageInfoList recentPackages(const PackageInfo &filter);
    PackageInfoList recentPackages(const QString &type, const QString &name, const QString &release,
                                   const QString &status, const QDateTime &releaseDate, const QStringSet &platforms,
                                   const QStringSet &languages);

    /// Fetches @p package into the file @p path, which is overwritten. Emits downloadStarted(), then downloadSuccess()
    /// or downloadFailure(), two of each; a package that announces no size stays silent throughout. The file is never
    /// removed here, but for one that has not the hash that the package announces (PackageInfo::sha256).
    ///
    /// Success is a file at least as long as announced, with that hash if there is one, whatever the server's status. A
    /// body that is maxSurplusBytes longer still is cut there, and a failure; so is a download that takes longer than
    /// its size at 1 KiB a second, or an hour, and one that would leave less than 64 MiB of the disk free. Deliberate:
    /// it leaves for port 80 over plain HTTP whatever the URL says. A policy may say otherwise
    /// (UpdatePolicy::followAddresses).
    void startDownload(const PackageInfo &package, const QString &path);

    /// Drops whatever runs, a query too, and the downloads that wait behind it: they emit nothing any more. Emits
    /// downloadAborted() in any case. What came of a file stays on the disk.
    void abortDownload();

    /// Fetches a page as text; releaseNotesDownloaded() follows in any case, for an empty URL before this returns.
    /// Deliberate: from port 80 over plain HTTP, as packages.
    void downloadReleaseNotes(const QUrl &url);

    /// Unpacks @p packageFile in the background into a new folder for temporary files, then deletes it and emits
    /// unzippingDone(). An archive that fails (see ZipReader::extractFiles()) leaves no folder; a message box tells,
    /// and the file stays. Deliberate: a manager unpacks one package in its life; further calls do nothing.
    void unzipPackage(const QString &packageFile);

    /// Replaces this process by the updater program: its path, the folder of the installed application, the folder with
    /// the new version, and the file name of the program to start there. Nothing of the host runs any more, no
    /// destructor either. Returns, and that at once, only when the updater cannot be started.
    static void startUpdate(const QString &updateApplicationPath, const QString &installationPath,
                            const QString &tempApplicationPath, const QString &newApplication);

    /// Sets a package aside for the host to find with hasInstallPackage() and installPackage(); nothing here installs
    /// it. The second form names files and folders: the package, the updater program, the folder to install into and
    /// the program to start.
    void installLater(const PackageInfo &info, bool confirmInstall);
    void installLater(const QString &packageFile, const QString &updaterExe, const QString &targetFolder,
                      const QString &applicationExe = QString());

    /// Runs runZipInstaller() for a name that ends with "zip". Throws an ExceptionQt for every other.
    void runInstaller(const QString &installerFile);

    /// Lets the user choose a folder, unpacks @p packageFile under a progress dialog, and replaces this process by the
    /// shell command that copies it there. Returns when the user cancelled or the shell cannot be started. An archive
    /// that fails is told in a message box and thrown as an IOException.
    ///
    /// Deliberate: the wait cursor stays; after the progress dialog's Cancel the emptied temporary folder does too.
    void runZipInstaller(const QString &packageFile);

signals:
    // By value: hosts name the overloads by these types.
    void queryStarted(QString url); ///< the server, without the path
    void packageFound(PackageInfoList allPackages);
    void noPackageFound();
    void queryFinished();

    void downloadStarted(PackageInfo pack, QString fileName);
    void downloadProgress(int bytes, int totalBytes);         ///< as HttpClient::downloadProgress(), of queries too
    void downloadSuccess(PackageInfo pack, QString fileName); ///< PackageInfo::localFile is set
    void downloadSuccess();
    void downloadFailure(PackageInfo pack, QString fileName);
    void downloadFailure(int httpStatusCode); ///< 0 where no answer came
    void downloadAborted();

    /// @p url as it was asked for; @p text is empty unless the server's status was 200.
    void releaseNotesDownloaded(QUrl url, QString text);

    void unzippingDone(QString folder); ///< the folder now belongs to the receiver

public:
    static constexpr qint64 maxSurplusBytes = 16LL * 1024 * 1024;

    struct RequestData; ///< what a running query carries; internal

private slots:
    void queryResult(const RequestPtr &resp);
    void queryResult(QIODevice *input, RequestData *data);
    void downloadStarting(const RequestPtr &request);
    void downloadResult(const RequestPtr &request);
    void releaseNotesResult(const RequestPtr &request);
    void unzippingFinished(const QString &folder);
    void unzippingFailed(const QString &message);

private:
    void connectRelays();

    friend class DownloadManagerPrivate;
    const std::unique_ptr<DownloadManagerPrivate> d;
};

} // namespace qv
