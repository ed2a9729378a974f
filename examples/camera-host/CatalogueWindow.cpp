// The download manager at work for a host: query, memory of what was seen, release notes, download. Opened from the
// main window's menu.
#include "CatalogueWindow.h"

#include "FileUtils.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QSplitter>
#include <QTextBrowser>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

/// Shows pages of the network, which shall not make it read any file.
class NotesView : public QTextBrowser
{
protected:
    QVariant loadResource(int, const QUrl &) override { return QVariant(); }
};

QString joined(const qv::QStringSet &words)
{
    QStringList sorted(words.values());
    sorted.sort();
    return sorted.join(", ");
}

} // namespace

CatalogueWindow::CatalogueWindow(const QUrl &updateServer, QWidget *parent)
    : QWidget(parent, Qt::Window), cacheFile(QFileInfo(settings.fileName()).path() + "/catalogue.xml"),
      manager(settings, cacheFile)
{
    manager.setServer(updateServer);
    build();
    showPackages(manager.recentPackages(qv::PackageInfo()));

    connect(&manager, &qv::DownloadManager::packageFound, this, &CatalogueWindow::showPackages);
    connect(&manager, &qv::DownloadManager::noPackageFound, this, [this] { status->setText(tr("No packages found")); });
    connect(&manager, &qv::DownloadManager::queryFinished, this, [this] {
        queryButton->setEnabled(true);
        manager.storeHistory(settings, cacheFile);
    });
    connect(&manager, &qv::DownloadManager::releaseNotesDownloaded, this,
            [this](const QUrl &, const QString &text) { notes->setHtml(text); });
    connect(&manager, &qv::DownloadManager::downloadProgress, this, [this](int bytes, int totalBytes) {
        if (!cancelButton->isEnabled())
            return; // of a query, or of release notes
        progress->setRange(0, totalBytes);
        progress->setValue(bytes);
    });
    connect(&manager, qOverload<qv::PackageInfo, QString>(&qv::DownloadManager::downloadSuccess), this,
            [this](const qv::PackageInfo &, const QString &file) { downloadEnded(tr("Saved as %1").arg(file)); });
    connect(&manager, qOverload<int>(&qv::DownloadManager::downloadFailure), this, [this](int httpStatusCode) {
        downloadEnded(tr("The download failed with HTTP status %1").arg(httpStatusCode));
        qv::FileUtils::erase(downloadedFile);
    });
    connect(&manager, &qv::DownloadManager::downloadAborted, this, [this] {
        downloadEnded(tr("The download was cancelled"));
        qv::FileUtils::erase(downloadedFile);
    });
}

void CatalogueWindow::build()
{
    list = new QTreeWidget;
    list->setHeaderLabels(
        { tr("Package"), tr("Release"), tr("Status"), tr("Type"), tr("Languages"), tr("Platforms"), tr("New") });
    list->setRootIsDecorated(false);
    list->setAlternatingRowColors(true);
    connect(list, &QTreeWidget::currentItemChanged, this, &CatalogueWindow::showReleaseNotes);

    notes = new NotesView;
    auto *splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(list);
    splitter->addWidget(notes);
    splitter->setStretchFactor(0, 2);
    splitter->setStretchFactor(1, 1);

    status = new QLabel;
    status->setObjectName("status");
    status->setTextFormat(Qt::PlainText);
    status->setTextInteractionFlags(Qt::TextSelectableByMouse);
    progress = new QProgressBar;

    auto *buttons = new QHBoxLayout;
    const auto button = [this, buttons](const QString &text, const char *name, void (CatalogueWindow::*pressed)()) {
        auto *made = new QPushButton(text);
        made->setObjectName(name);
        connect(made, &QPushButton::clicked, this, pressed);
        buttons->addWidget(made);
        return made;
    };
    queryButton = button(tr("&Query Server"), "query", &CatalogueWindow::query);
    buttons->addStretch();
    downloadButton = button(tr("&Download"), "download", &CatalogueWindow::download);
    cancelButton = new QPushButton(tr("&Cancel"));
    cancelButton->setObjectName("cancel");
    connect(cancelButton, &QPushButton::clicked, &manager, &qv::DownloadManager::abortDownload);
    buttons->addWidget(cancelButton);
    downloadButton->setEnabled(false);
    cancelButton->setEnabled(false);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(splitter);
    layout->addWidget(status);
    layout->addWidget(progress);
    layout->addLayout(buttons);
    setWindowTitle(tr("Catalogue"));
    setAttribute(Qt::WA_DeleteOnClose);
    resize(760, 560);
}

void CatalogueWindow::query()
{
    queryButton->setEnabled(false);
    manager.queryUpdate();
}

void CatalogueWindow::showPackages(const qv::PackageInfoList &found)
{
    packages = found;
    list->clear();
    for (const qv::PackageInfo &package : packages) {
        const bool isNew = !(package.flags & qv::PackageInfo::PackageKnown);
        auto *item = new QTreeWidgetItem({ package.displayName(true), package.displayReleaseVersion(true),
                                           package.status, package.suffix, joined(package.languages),
                                           joined(package.platforms), isNew ? tr("new") : QString() });
        list->addTopLevelItem(item);
    }
    for (int column = 0; column < list->columnCount(); ++column)
        list->resizeColumnToContents(column);
    status->setText(
        tr("%1 packages, %2 of them new").arg(packages.size()).arg(qv::DownloadManager::countNew(packages)));
}

void CatalogueWindow::showReleaseNotes()
{
    const qv::PackageInfo package = packages.value(list->indexOfTopLevelItem(list->currentItem()));
    manager.downloadReleaseNotes(package.releaseNotesUrl(QLocale::system().name(), "en"));
    downloadButton->setEnabled(list->currentItem() && !cancelButton->isEnabled());
}

void CatalogueWindow::download()
{
    const qv::PackageInfo package = packages.value(list->indexOfTopLevelItem(list->currentItem()));
    downloadedFile = qv::FileUtils::createTempDir() + '/' + package.fileName();
    status->setText(tr("Downloading %1").arg(package.fileName()));
    downloadButton->setEnabled(false);
    cancelButton->setEnabled(true);
    manager.startDownload(package, downloadedFile);
}

void CatalogueWindow::downloadEnded(const QString &outcome)
{
    status->setText(outcome);
    progress->reset();
    cancelButton->setEnabled(false);
    downloadButton->setEnabled(list->currentItem());
}
