// Found packages on show: the table's rows, the buttons and the comment that follow the selection, the rows of foreign
// languages, links opened in the browser. Called when a check found something, then by the dialog's signals.
#include "SoftwareUpdateClient_p.h"

#include "BrowserLinks.h"
#include "ConnectHelpers.h"
#include "LogLimit.h"
#include "Offer.h"
#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"
#include "StringUtils.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QLocale>

#include <algorithm>

namespace qv {

namespace {

/// An empty link is opened too, and does nothing.
void openInBrowser(const QUrl &url, const char *refusal, LogLimit *limit = nullptr)
{
    if (url.isEmpty() || isForBrowser(url))
        QDesktopServices::openUrl(url);
    else if (!limit || limit->hasRoom())
        LogQt::write(Log::Error, QLatin1String(refusal) + StringUtils::withoutPassword(url));
}

/// Equal texts are held once: thousands of packages may share long ones.
QList<QStringList> rowsOf(const PackageInfoList &packages)
{
    QStringSet texts;
    QList<QStringList> rows;
    rows.reserve(packages.size());
    for (const PackageInfo &package : packages) {
        rows << packageRow(package);
        for (QString &text : rows.last())
            text = *texts.insert(text);
    }
    return rows;
}

} // namespace

void SoftwareUpdateClient::updateAvailable()
{
    if (!d->availableDialog) {
        // Not a settings dialog that has just been closed: it would take this one with it.
        QWidget *parent = d->settingsDialog && !d->settingsDialog->isHidden() ? d->settingsDialog : d->parentWidget;
        d->availableDialog = new SoftwareUpdateAvailableDialog(parent, d->windowFlags);
        qv::connect(d->availableDialog, SIGNAL(downloadUrls(SoftUpIndexList)), this,
                    SLOT(downloadUrls(SoftUpIndexList)));
        qv::connect(d->availableDialog, SIGNAL(downloadReleaseNotes(SoftUpIndexList)), this,
                    SLOT(downloadReleaseNotes(SoftUpIndexList)));
        qv::connect(d->availableDialog, SIGNAL(installPackage(int)), this, SLOT(installPackage(int)));
        qv::connect(d->availableDialog, SIGNAL(accepted()), this, SLOT(deleteUpdateAvailableDialog()));
        qv::connect(d->availableDialog, SIGNAL(rejected()), this, SLOT(deleteUpdateAvailableDialog()));
        qv::connect(d->availableDialog, SIGNAL(currentItemsChangedSig(SoftUpIndexList)), this,
                    SLOT(manageUpdateAvailableDialog(SoftUpIndexList)));
        qv::connect(d->availableDialog, SIGNAL(showAllLanguages(bool)), this, SLOT(showHideForeignLanguageItems(bool)));
        qv::connect(d->availableDialog, SIGNAL(destroyed(QObject *)), this, SLOT(setUpdateAvailableNull(QObject *)));
        qv::connect(d->availableDialog, SIGNAL(openUpdateSettings()), this,
                    SLOT(openSettingsDialogFromUpdateAvailableDialog()));
    }
    d->fillTable();
    d->availableDialog->show();
    d->availableDialog->activateWindow();
}

void SoftwareUpdateClientPrivate::fillTable()
{
    availableDialog->setTableEntries(rowsOf(packages));
    availableDialog->setTableHeaders({ QCoreApplication::translate("SoftwareUpdateClient", "Name"),
                                       QCoreApplication::translate("SoftwareUpdateClient", "File Size"),
                                       QCoreApplication::translate("SoftwareUpdateClient", "File Type"),
                                       QCoreApplication::translate("SoftwareUpdateClient", "Languages"),
                                       QCoreApplication::translate("SoftwareUpdateClient", "Platforms") });
}

bool SoftwareUpdateClient::showAvailable()
{
    if (d->packages.isEmpty())
        return false;
    if (d->availableDialog && d->availableDialog->isHidden()) {
        // It was closed and waits for its deletion.
        d->availableDialog->disconnect(this);
        d->availableDialog = nullptr;
    }
    updateAvailable();
    return true;
}

void SoftwareUpdateClient::manageUpdateAvailableDialog(const SoftUpIndexList &rows)
{
    if (!d->availableDialog)
        return;
    d->availableDialog->setInstallButtonState(false);
    d->availableDialog->setRealeaseNotesButtonState(false);
    const SoftUpIndexList selected = d->availableDialog->getCurrentSelectedItems();
    showHideForeignLanguageItems(d->availableDialog->getShowAllLanguagesState());
    if (d->availableDialog->getCurrentSelectedItems() != selected)
        return; // what was hidden is selected no longer, and this is told anew
    // A later check may have emptied the list under the table: its rows are of no package then.
    const bool isStale = !rows.isEmpty() && *std::max_element(rows.cbegin(), rows.cend()) >= d->packages.size();
    d->availableDialog->setDownloadButtonState(!rows.isEmpty() && !isStale);
    if (rows.size() != 1 || isStale) {
        d->availableDialog->setInstallButtonState(d->canQueue(rows));
        d->availableDialog->setCommentText(QString());
        return;
    }
    const PackageInfo package = d->packages.at(rows.first());
    d->availableDialog->setInstallButtonState(d->isInstallable(package));
    d->availableDialog->setRealeaseNotesButtonState(!d->releaseNotesOf(package).isEmpty());
    d->availableDialog->setCommentText(packageComment(package));
}

QList<int> SoftwareUpdateClient::determineForeignLanguageRows(const PackageInfoList &list)
{
    return foreignLanguageRows(list, QLocale::system().name().section(QLatin1Char('_'), 0, 0));
}

void SoftwareUpdateClient::showHideForeignLanguageItems(bool state)
{
    if (d->availableDialog)
        d->availableDialog->setHiddenEntries(state ? SoftUpIndexList() : determineForeignLanguageRows(d->packages));
}

void SoftwareUpdateClient::downloadReleaseNotes(const SoftUpIndexList &rows)
{
    openInBrowser(d->releaseNotesOf(d->packages.value(rows.value(0, -1))),
                  "SoftwareUpdateClient::downloadReleaseNotes() -> no address for the browser: ");
}

void SoftwareUpdateClient::downloadUrls(const SoftUpIndexList &rows)
{
    LogLimit limit(Log::Error,
                   QStringLiteral("SoftwareUpdateClient::downloadUrls() -> %1 more are none for the browser"));
    for (const int row : rows)
        openInBrowser(d->packages.value(row).url,
                      "SoftwareUpdateClient::downloadUrls() -> no address for the browser: ", &limit);
}

void SoftwareUpdateClient::deleteUpdateAvailableDialog()
{
    if (!d->availableDialog)
        return;
    d->availableDialog->hide();
    d->availableDialog->deleteLater();
}

void SoftwareUpdateClient::setUpdateAvailableNull(QObject *)
{
    d->availableDialog = nullptr;
}

} // namespace qv
