// The download manager at work for a host: query, memory of what was seen, release notes, download. Opened from the
// main window's menu.
#include "CatalogueWindow.h"

#include "FileUtils.h"
#include "SoftwareUpdateClient.h"

#include <QLocale>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QSplitter>
#include <QStatusBar>
#include <QTextDocumentFragment>
#include <QToolBar>
#include <QTreeWidget>

using qv::DownloadManager;

CatalogueWindow::CatalogueWindow(const QUrl &updateServer, const qv::UpdatePolicy &policy, QWidget *parent)
    : QMainWindow(parent), manager(settings, QString())
{
    list = new QTreeWidget;
    list->setHeaderLabels({ tr("Package"), tr("Size"), tr("Type"), tr("Languages"), tr("Platforms"), tr("New") });
    list->setRootIsDecorated(false);
    connect(list, &QTreeWidget::currentItemChanged, this, &CatalogueWindow::showReleaseNotes);
    notes = new QPlainTextEdit;
    notes->setReadOnly(true);
    auto *splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(list);
    splitter->addWidget(notes);
    splitter->setSizes({ 320, 160 });
    setCentralWidget(splitter);

    QToolBar *tools = addToolBar(tr("Catalogue"));
    tools->addAction(tr("Query Server"), &manager, [this] { manager.queryUpdate(); });
    downloadAction = tools->addAction(tr("Download"), this, &CatalogueWindow::download);
    cancelAction = tools->addAction(tr("Cancel"), &manager, &DownloadManager::abortDownload);
    progress = new QProgressBar;
    statusBar()->addPermanentWidget(progress);
    downloadEnded(QString());
    setWindowTitle(tr("Catalogue"));
    resize(760, 560);

    manager.setPolicy(policy);
    manager.setServer(updateServer);
    connect(&manager, &DownloadManager::packageFound, this, &CatalogueWindow::showPackages);
    connect(&manager, &DownloadManager::noPackageFound, this, [this] { showPackages({}); });
    connect(&manager, &DownloadManager::queryFinished, this, [this] { manager.storeHistory(settings, QString()); });
    connect(&manager, &DownloadManager::releaseNotesDownloaded, notes, [this](const QUrl &, const QString &html) {
        // As plain text: a page of the network shall not make the window read any file.
        notes->setPlainText(QTextDocumentFragment::fromHtml(html).toPlainText());
    });
    connect(&manager, &DownloadManager::downloadProgress, progress, &QProgressBar::setValue);
    connect(&manager, qOverload<qv::PackageInfo, QString>(&DownloadManager::downloadSuccess), this,
            [this](const qv::PackageInfo &, const QString &file) {
                unfinishedFile.clear();
                downloadEnded(tr("Saved as %1").arg(file));
            });
    connect(&manager, qOverload<int>(&DownloadManager::downloadFailure), this,
            [this] { downloadEnded(tr("The download failed. %1").arg(manager.errorText())); });
    connect(&manager, &DownloadManager::downloadAborted, this,
            [this] { downloadEnded(tr("The download was cancelled")); });
}

void CatalogueWindow::showPackages(const qv::PackageInfoList &found)
{
    packages = found;
    list->clear();
    for (const qv::PackageInfo &package : packages) {
        const bool isNew = !(package.flags & qv::PackageInfo::PackageKnown);
        const QStringList row = qv::SoftwareUpdateClient::packageRow(package) << (isNew ? tr("new") : QString());
        list->addTopLevelItem(new QTreeWidgetItem(row));
    }
    for (int column = 0; column < list->columnCount(); ++column)
        list->resizeColumnToContents(column);
    statusBar()->showMessage(
        tr("%1 packages, %2 of them new").arg(packages.size()).arg(DownloadManager::countNew(packages)));
}

void CatalogueWindow::showReleaseNotes()
{
    const qv::PackageInfo package = packages.value(list->indexOfTopLevelItem(list->currentItem()));
    manager.downloadReleaseNotes(package.releaseNotesUrl(QLocale::system().name(), "en"));
    downloadAction->setEnabled(list->currentItem() && !cancelAction->isEnabled());
}

void CatalogueWindow::download()
{
    const qv::PackageInfo package = packages.value(list->indexOfTopLevelItem(list->currentItem()));
    unfinishedFile = qv::FileUtils::createTempDir() + '/' + package.fileName();
    statusBar()->showMessage(tr("Downloading %1").arg(package.fileName()));
    progress->setRange(0, int(package.fileSize));
    progress->show();
    downloadAction->setEnabled(false);
    cancelAction->setEnabled(true);
    manager.startDownload(package, unfinishedFile);
}

void CatalogueWindow::downloadEnded(const QString &outcome)
{
    qv::FileUtils::erase(unfinishedFile);
    statusBar()->showMessage(outcome);
    progress->hide();
    cancelAction->setEnabled(false);
    downloadAction->setEnabled(list->currentItem());
}
