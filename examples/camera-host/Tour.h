#pragma once

#include <QDir>
#include <QObject>
#include <QPointer>
#include <QUrl>

#include <functional>

class CatalogueWindow;
class QTableWidget;
class QWidget;

namespace qv {
class SoftwareUpdateAvailableDialog;
class SoftwareUpdateDialog;
} // namespace qv

/// Walks through all windows of the demo without a human, presses what a human would press, and saves a picture of
/// each window. Prints a line for each step.
class Tour : public QObject
{
    Q_OBJECT

public:
    /// @p catalogue is what the demo asks; pictures go into @p folder, which is made if need be.
    Tour(QWidget &mainWindow, const QUrl &catalogue, const QString &folder);
    ~Tour() override;

    /// Takes as long as its steps take; the event loop runs meanwhile. False when a step did not happen.
    bool run();

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private slots:
    void openUrl(const QUrl &url);

private:
    void seeMainWindow();
    void checkAtStart();
    void openSettings();
    void checkNow();
    void selectPackages();
    void showAllLanguages();
    void followLinks();
    void closeTable();
    void seeOtherOutcomes();
    void seeExpertSettings();
    void queryCatalogue();
    void downloadFromCatalogue();
    void queryAgain();

    /// Waits until @p happened, then saves the picture of @p window, if there is one, as @p name.
    void step(const QString &text, const std::function<bool()> &happened, const QString &name = QString(),
              QWidget *window = nullptr);
    void savePicture(QWidget *window, const QString &name);
    void openCatalogue();
    int visibleRows() const;
    int newPackages() const;

    QWidget &mainWindow;
    const QUrl catalogue;
    const QDir pictures;
    int pictureCount = 0;
    QString boxName;        // of the picture of the message box that is expected; it will be answered
    QList<QUrl> openedUrls; // what would have gone to the browser
    QPointer<qv::SoftwareUpdateDialog> settings;
    QPointer<qv::SoftwareUpdateAvailableDialog> available;
    QPointer<QTableWidget> table; // of the latter
    QPointer<CatalogueWindow> catalogueWindow;
};
