// Found packages on show: the table's rows, the buttons and the comment that follow the selection, the rows of foreign
// languages, links opened in the browser. Called when a check found something, then by the dialog's signals.
#include "SoftwareUpdateClient.h"

#include "ConnectHelpers.h"
#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QLocale>

namespace qv {

namespace {

const QString betaStatus = QStringLiteral("BETA");
const QString releaseNotesLanguage = QStringLiteral("en");

QString joined(const QStringSet &words)
{
    return QStringList(words.values()).join(QStringLiteral(", "));
}

/// Deliberate: the internal name comes first and the public release, unlike in PackageInfo::displayName().
QString nameAndRelease(const PackageInfo &package)
{
    return (package.name.isEmpty() ? package.publicName : package.name) + QLatin1Char(' ')
        + (package.publicRelease.isEmpty() ? package.release : package.publicRelease)
        + (package.status == betaStatus ? QStringLiteral(" BETA") : QString());
}

QString releaseLine(const PackageInfo &package)
{
    if (package.releaseDate.isNull())
        return QString();
    return QCoreApplication::translate("SoftwareUpdateClient", "Published on %1")
        .arg(QLocale::system().toString(package.releaseDate.date(), QLocale::LongFormat));
}

} // namespace

QStringList SoftwareUpdateClient::packageRow(const PackageInfo &package)
{
    const double megabytes = double(quint64(package.fileSize)) / 1'048'576;
    return { nameAndRelease(package), QString::number(megabytes, 'f', 1) + QStringLiteral(" MB"), package.suffix,
             package.type == cameraKind ? joined(package.languages)
                                        : QCoreApplication::translate("SoftwareUpdateClient", "Multilingual"),
             joined(package.platforms) };
}

QString SoftwareUpdateClient::packageComment(const PackageInfo &package)
{
    // Escaped: the catalogue's texts are no markup of ours, and the box would fetch what an image tag names.
    const QString url = package.url.toString().toHtmlEscaped();
    return QStringLiteral("<b>") + nameAndRelease(package).toHtmlEscaped() + QStringLiteral(", ")
        + package.type.toHtmlEscaped() + QStringLiteral("</b><br />") + releaseLine(package)
        + QStringLiteral("<a href=\"") + url + QStringLiteral("\">") + url + QStringLiteral("</a><br />");
}

SoftUpIndexList SoftwareUpdateClient::foreignLanguageRows(const PackageInfoList &packages, const QString &language)
{
    // Deliberate: to English users only what is offered in German too counts as theirs.
    const QStringSet wanted =
        language == QLatin1String("en") ? QStringSet { QStringLiteral("de"), language } : QStringSet { language };
    SoftUpIndexList foreign;
    bool oneMatches = false;
    for (int row = 0; row < packages.size(); ++row) {
        const PackageInfo &package = packages.at(row);
        if (package.type != cameraKind)
            continue;
        if (package.languages.contains(wanted))
            oneMatches = true;
        else
            foreign.append(row);
    }
    return oneMatches ? foreign : SoftUpIndexList();
}

void SoftwareUpdateClient::updateAvailable()
{
    if (!availableDialog) {
        // Not a settings dialog that has just been closed: it would take this one with it.
        QWidget *parent = settingsDialog && !settingsDialog->isHidden() ? settingsDialog : parentWidget;
        availableDialog = new SoftwareUpdateAvailableDialog(parent, windowFlags);
        qv::connect(availableDialog, SIGNAL(downloadUrls(SoftUpIndexList)), this, SLOT(downloadUrls(SoftUpIndexList)));
        qv::connect(availableDialog, SIGNAL(downloadReleaseNotes(SoftUpIndexList)), this,
                    SLOT(downloadReleaseNotes(SoftUpIndexList)));
        qv::connect(availableDialog, SIGNAL(installPackage(int)), this, SLOT(installPackage(int)));
        qv::connect(availableDialog, SIGNAL(accepted()), this, SLOT(deleteUpdateAvailableDialog()));
        qv::connect(availableDialog, SIGNAL(rejected()), this, SLOT(deleteUpdateAvailableDialog()));
        qv::connect(availableDialog, SIGNAL(currentItemsChangedSig(SoftUpIndexList)), this,
                    SLOT(manageUpdateAvailableDialog(SoftUpIndexList)));
        qv::connect(availableDialog, SIGNAL(showAllLanguages(bool)), this, SLOT(showHideForeignLanguageItems(bool)));
        qv::connect(availableDialog, SIGNAL(destroyed(QObject *)), this, SLOT(setUpdateAvailableNull(QObject *)));
        qv::connect(availableDialog, SIGNAL(openUpdateSettings()), this,
                    SLOT(openSettingsDialogFromUpdateAvailableDialog()));
    }
    QList<QStringList> rows;
    for (const PackageInfo &package : std::as_const(packages))
        rows << packageRow(package);
    availableDialog->setTableEntries(rows);
    availableDialog->setTableHeaders({ QCoreApplication::translate("SoftwareUpdateClient", "Name"),
                                       QCoreApplication::translate("SoftwareUpdateClient", "File Size"),
                                       QCoreApplication::translate("SoftwareUpdateClient", "File Type"),
                                       QCoreApplication::translate("SoftwareUpdateClient", "Languages"),
                                       QCoreApplication::translate("SoftwareUpdateClient", "Platforms") });
    availableDialog->show();
    availableDialog->activateWindow();
}

void SoftwareUpdateClient::manageUpdateAvailableDialog(SoftUpIndexList indexList)
{
    if (!availableDialog)
        return;
    availableDialog->setInstallButtonState(false);
    availableDialog->setRealeaseNotesButtonState(false);
    showHideForeignLanguageItems(availableDialog->getShowAllLanguagesState());
    availableDialog->setDownloadButtonState(!indexList.isEmpty());
    if (indexList.size() != 1) {
        availableDialog->setCommentText(QString());
        return;
    }
    // A background check may have emptied the list under the table: then the row is one of no package.
    const PackageInfo package = packages.value(indexList.first());
    availableDialog->setInstallButtonState(currentSettings().installablePackageTypes.contains(package.suffix));
    availableDialog->setRealeaseNotesButtonState(!package.releaseNotes.value(releaseNotesLanguage).isEmpty());
    availableDialog->setCommentText(packageComment(package));
}

QList<int> SoftwareUpdateClient::determineForeignLanguageRows(const PackageInfoList &list)
{
    return foreignLanguageRows(list, QLocale::system().name().section(QLatin1Char('_'), 0, 0));
}

void SoftwareUpdateClient::showHideForeignLanguageItems(bool state)
{
    if (availableDialog)
        availableDialog->setHiddenEntries(state ? SoftUpIndexList() : determineForeignLanguageRows(packages));
}

void SoftwareUpdateClient::downloadReleaseNotes(SoftUpIndexList indexes)
{
    QDesktopServices::openUrl(packages.value(indexes.value(0, -1)).releaseNotes.value(releaseNotesLanguage));
}

void SoftwareUpdateClient::downloadUrls(SoftUpIndexList itemIndexes)
{
    for (const int row : itemIndexes)
        QDesktopServices::openUrl(packages.value(row).url);
}

void SoftwareUpdateClient::deleteUpdateAvailableDialog()
{
    if (!availableDialog)
        return;
    availableDialog->hide();
    availableDialog->deleteLater();
}

void SoftwareUpdateClient::setUpdateAvailableNull(QObject *)
{
    availableDialog = nullptr;
}

} // namespace qv
