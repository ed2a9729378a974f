// Packages whose type has an installer of the host's own: asked about, downloaded and handed over, one after the other.
// Called by Install, with the rows that are selected; leaves a table without what was installed, and nothing on the
// disk.
#include "SoftwareUpdateClient_p.h"

#include "CatalogueValues.h"
#include "DialogFlags.h"
#include "DialogLabels.h"
#include "DownloadManager.h"
#include "InstallerRun.h"
#include "LogQt.h"
#include "Offer.h"
#include "PolicyTexts.h"
#include "SoftwareUpdateAvailableDialog.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QStyle>
#include <QTextEdit>

#include <algorithm>
#include <utility>

namespace qv {

namespace {

constexpr int longestName = 100, longestMessage = 1000; // characters
constexpr int longestLine = 240;                        // of the progress dialog
constexpr int mostLinesOfBox = 8, linesOfDetails = 12, charactersOfLine = 60;

/// The beginning of what may be long, in characters that are seen.
QString cut(const QString &text, int length)
{
    const QString seen = visible(text.left(length)).trimmed();
    return text.size() <= length ? seen : seen + QChar(0x2026);
}

QString nameOf(const PackageInfo &package)
{
    return cut(packageRow(package).constFirst().simplified(), longestName);
}

/// A box for texts of any origin.
QMessageBox *newBox(QMessageBox::Icon icon, const QString &title, const QString &text, QWidget *parent)
{
    auto *box = new QMessageBox(icon, title, QString(), QMessageBox::NoButton, parent, sheetDialogFlags(parent));
    box->setTextFormat(Qt::PlainText);
    box->setText(text);
    return box;
}

/// With the details on show, where there are any. Nothing of @p owner may be used if it goes meanwhile.
void show(QMessageBox *box, const QString &details, const QObject *owner)
{
    QObject::connect(owner, &QObject::destroyed, box, &QDialog::reject);
    if (!details.isEmpty()) {
        box->setDetailedText(details);
        const QList<QAbstractButton *> buttons = box->buttons();
        for (QAbstractButton *button : buttons) {
            if (box->buttonRole(button) == QMessageBox::ActionRole)
                button->click();
        }
        if (auto *text = box->findChild<QTextEdit *>()) {
            const QFontMetrics metrics(text->font());
            text->setMinimumWidth(metrics.averageCharWidth() * charactersOfLine);
            text->setFixedHeight(metrics.lineSpacing() * linesOfDetails);
        }
    }
    box->exec();
}

} // namespace

/// The way of some packages, from the question to the last word. Belongs to the client, goes at its end or with it.
class InstallQueue : public QObject
{
public:
    InstallQueue(SoftwareUpdateClientPrivate *client, const PackageInfoList &packages);
    ~InstallQueue() override;

    void begin();

private:
    struct Result
    {
        bool isInstalled;
        QString message;
    };

    void openProgress();
    void closeProgress();
    void next();
    void nextLater();
    void dropManager();
    void handOver();
    void told(int value, int total, const QString &line);
    void cancel();
    void ended(bool isInstalled, const QString &message);
    void conclude();
    void showOutcome();
    void showOutcomes();
    QWidget *window() const;

    SoftwareUpdateClientPrivate *const client;
    const PackageInfoList packages;
    QList<QPointer<PackageInstaller>> installers; // of each
    QList<Result> results;                        // of those that are through
    QPointer<QProgressDialog> progress;           // goes with the table
    QPointer<DownloadManager> manager;            // exists while a package downloads
    QPointer<InstallerRun> run;                   // has the file of the package whose turn it is
    bool isCancelled = false;
};

InstallQueue::InstallQueue(SoftwareUpdateClientPrivate *client, const PackageInfoList &packages)
    : QObject(client->q), client(client), packages(packages)
{
    for (const PackageInfo &package : packages)
        installers << client->installerOf(package);
}

InstallQueue::~InstallQueue()
{
    delete manager;
    if (run && run->hasBegun())
        run->cancel();
    else
        delete run;
    closeProgress();
}

/// What boxes stand before: the table, unless that has been closed.
QWidget *InstallQueue::window() const
{
    SoftwareUpdateAvailableDialog *table = client->availableDialog;
    return table && table->isVisible() ? table : client->parentWidget.data();
}

void InstallQueue::begin()
{
    const QPointer<InstallQueue> self(this);
    const QPointer<QMessageBox> box =
        newBox(QMessageBox::Question, QCoreApplication::translate("SoftwareUpdateClient", "Install Package"),
               packages.size() == 1 ? installQuestion(nameOf(packages.first())) : installQuestion(int(packages.size())),
               window());
    box->addButton(QCoreApplication::translate("SoftwareUpdateClient", "Cancel Install"), QMessageBox::RejectRole);
    const QPushButton *proceed =
        box->addButton(QCoreApplication::translate("SoftwareUpdateClient", "Proceed"), QMessageBox::AcceptRole);
    show(box, QString(), this);
    const bool isAccepted = box && box->clickedButton() == proceed;
    delete box;
    if (!self)
        return;
    if (!isAccepted) {
        LogQt::write(Log::Progress,
                     QStringLiteral("SoftwareUpdateClient::installPackage() -> user rejected installation"));
        conclude();
        return;
    }
    openProgress();
    next();
}

void InstallQueue::openProgress()
{
    progress = new QProgressDialog(window(), client->windowFlags);
    progress->setWindowTitle(QCoreApplication::translate("SoftwareUpdateClient", "Install Package"));
    auto *label = new WrappingLabel;
    label->setMargin(progress->style()->pixelMetric(QStyle::PM_LayoutTopMargin) / 2); // the dialog leaves none
    progress->setLabel(label);
    label->resize(QFontMetrics(label->font()).averageCharWidth() * charactersOfLine, 0);
    progress->setMinimumWidth(label->width());
    progress->setAutoReset(false);
    progress->setAutoClose(false);
    // Cancel is only the wish: the dialog stays until that has been granted.
    disconnect(progress, &QProgressDialog::canceled, progress, nullptr);
    connect(progress, &QProgressDialog::canceled, this, &InstallQueue::cancel);
}

void InstallQueue::closeProgress()
{
    if (!progress)
        return;
    progress->disconnect(this);
    progress->reset();
    progress->hide();
    progress->deleteLater();
    progress = nullptr;
}

/// The name of the package above the @p line, which may be of any length.
void InstallQueue::told(int value, int total, const QString &line)
{
    if (!progress)
        return;
    const int number = int(results.size()) + 1;
    const QString name = nameOf(packages.at(number - 1));
    progress->setLabelText((packages.size() == 1 ? name : installNumberText(number, int(packages.size()), name))
                           + QChar(QChar::LineSeparator)
                           + cut((isCancelled ? cancellingText() : line).simplified(), longestLine));
    progress->setRange(0, qMax(0, total));
    progress->setValue(qBound(0, value, qMax(0, total)));
    if (!progress->isVisible() && !isCancelled)
        progress->show();
}

void InstallQueue::next()
{
    if (isCancelled || results.size() == packages.size()) {
        conclude();
        return;
    }
    const int index = int(results.size());
    const PackageInfo package = packages.at(index);
    const QString line = SoftwareUpdateClientPrivate::downloadingText();
    told(0, 0, line);

    const QString file = SoftwareUpdateClientPrivate::newFile(package);
    run = new InstallerRun(installers.at(index), file);
    manager = client->newManager();
    manager->setParent(this);
    connect(manager, &DownloadManager::downloadProgress, this,
            [this, line](int value, int total) { told(value, total, line); });
    connect(manager, qOverload<>(&DownloadManager::downloadSuccess), this, &InstallQueue::handOver);
    connect(manager, qOverload<int>(&DownloadManager::downloadFailure), this, [this](int status) {
        delete run;
        ended(false, client->downloadErrorText(manager, status));
    });
    manager->startDownload(package, file);
}

void InstallQueue::handOver()
{
    dropManager();
    told(0, 0, installingText());
    connect(run, &InstallerRun::progress, this, &InstallQueue::told);
    // Queued: an installer may be through, or gone, before it has returned.
    connect(run, &InstallerRun::ended, this, &InstallQueue::ended, Qt::QueuedConnection);
    run->begin(packages.at(results.size()));
}

void InstallQueue::cancel()
{
    if (std::exchange(isCancelled, true))
        return;
    if (progress) {
        auto *button = progress->findChild<QPushButton *>();
        if (button)
            button->setEnabled(false);
    }
    if (run && run->hasBegun()) {
        told(0, 0, QString());
        run->cancel();
    } else if (run) {
        manager->abortDownload();
        dropManager();
        delete run;
        nextLater();
    }
}

void InstallQueue::ended(bool isInstalled, const QString &message)
{
    dropManager();
    results.append({ isInstalled, message });
    nextLater();
}

/// From the event loop: boxes stay out of slots of what is on its end.
void InstallQueue::nextLater()
{
    QTimer::singleShot(0, this, &InstallQueue::next);
}

void InstallQueue::dropManager()
{
    if (!manager)
        return;
    manager->disconnect(this);
    manager->deleteLater();
    manager = nullptr;
}

void InstallQueue::conclude()
{
    closeProgress();
    const QPointer<InstallQueue> self(this);
    if (packages.size() == 1 && !results.isEmpty())
        showOutcome();
    else if (!results.isEmpty())
        showOutcomes();
    if (!self)
        return;
    PackageInfoList installed;
    for (int index = 0; index < int(results.size()); ++index) {
        if (results.at(index).isInstalled)
            installed << packages.at(index);
    }
    client->installQueue = nullptr;
    deleteLater();
    client->forgetInstalled(installed);
}

void InstallQueue::showOutcome()
{
    const Result &result = results.first();
    if (!result.isInstalled && isCancelled && result.message.isEmpty())
        return;
    const QString name = nameOf(packages.first());
    QString text = result.isInstalled ? installedText(name) : notInstalledText(name);
    const bool isLong = result.message.size() > longestMessage / 2 || result.message.count(u'\n') > mostLinesOfBox;
    if (!isLong && !result.message.isEmpty())
        text += QStringLiteral("\n\n") + visible(result.message);
    const QPointer<QMessageBox> box =
        newBox(result.isInstalled ? QMessageBox::Information : QMessageBox::Critical,
               result.isInstalled ? QCoreApplication::translate("SoftwareUpdateClient", "Install Package")
                                  : QCoreApplication::translate("SoftwareUpdateClient", "Installation failed"),
               text, window());
    box->addButton(QMessageBox::Ok);
    show(box, isLong ? visible(result.message) : QString(), this);
    delete box;
}

/// A line for each package, in a part of the box that scrolls.
void InstallQueue::showOutcomes()
{
    QStringList lines;
    int installed = 0;
    for (int index = 0; index < int(packages.size()); ++index) {
        const QString name = nameOf(packages.at(index));
        const Result result = results.value(index, Result { false, QString() });
        const bool isLeftOut = index >= results.size() || (isCancelled && !result.isInstalled);
        const QString line = result.isInstalled ? installedLine(name)
            : isLeftOut                         ? cancelledLine(name)
                                                : notInstalledLine(name);
        installed += result.isInstalled ? 1 : 0;
        lines << (line + QLatin1Char(' ') + cut(result.message.simplified(), longestMessage)).trimmed();
    }
    const QPointer<QMessageBox> box =
        newBox(installed == packages.size() ? QMessageBox::Information : QMessageBox::Warning,
               QCoreApplication::translate("SoftwareUpdateClient", "Install Package"),
               installedCountText(installed, int(packages.size())), window());
    box->addButton(QMessageBox::Ok);
    show(box, lines.join(QLatin1Char('\n')), this);
    delete box;
}

/// Null where the policy names none, or one that has been deleted.
PackageInstaller *SoftwareUpdateClientPrivate::installerOf(const PackageInfo &package) const
{
    return installers.value(package.suffix);
}

/// Whether these rows can be installed in one go: all of them by installers of the host's own, which are free.
bool SoftwareUpdateClientPrivate::canQueue(const SoftUpIndexList &rows) const
{
    return !installQueue && !rows.isEmpty() && std::all_of(rows.cbegin(), rows.cend(), [this](int row) {
        return row >= 0 && row < packages.size() && installerOf(packages.at(row));
    });
}

/// False: the package of this @p row has no installer of the host's own. Else the rows that are selected with it go the
/// same way, if they can.
bool SoftwareUpdateClientPrivate::takeToInstallers(int row)
{
    if (row < 0 || row >= packages.size() || !installerOf(packages.at(row)))
        return false;
    if (installQueue) {
        LogQt::write(Log::Error, QStringLiteral("SoftwareUpdateClient::installPackage() -> another install runs"));
        return true;
    }
    SoftUpIndexList rows = availableDialog ? availableDialog->getCurrentSelectedItems() : SoftUpIndexList();
    if (!rows.contains(row) || !canQueue(rows))
        rows = { row };
    std::sort(rows.begin(), rows.end());
    PackageInfoList chosen; // now: a check may bring others while the box is open
    for (const int one : std::as_const(rows))
        chosen << packages.at(one);
    auto *queue = new InstallQueue(this, chosen);
    installQueue = queue;
    offerNothing(); // as the button is off from here on
    queue->begin();
    return true;
}

/// Takes what is installed out of the table, which goes when it is empty, and lets Install be pressed again.
void SoftwareUpdateClientPrivate::forgetInstalled(const PackageInfoList &installed)
{
    const auto isSame = [](const PackageInfo &one, const PackageInfo &other) {
        return one == other && one.url == other.url && one.release == other.release && one.platforms == other.platforms;
    };
    const int before = int(packages.size());
    for (const PackageInfo &package : installed) {
        const auto found = std::find_if(packages.begin(), packages.end(),
                                        [&](const PackageInfo &other) { return isSame(package, other); });
        if (found != packages.end())
            packages.erase(found);
    }
    if (!availableDialog || !availableDialog->isVisible())
        return;
    if (packages.isEmpty())
        q->deleteUpdateAvailableDialog();
    else if (packages.size() != before)
        q->updateAvailable();
    else
        offerNothing();
}

} // namespace qv
