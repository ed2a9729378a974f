#pragma once

#include <QDir>
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QPushButton>
#include <QUrl>
#include <QWidget>

#include <functional>
#include <stdexcept>

class CatalogueWindow;
class QTableWidget;

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

    /// Only updates the program. Does not come back when that works; the version that is started then, new or old,
    /// takes the same way and sees that it has been.
    bool update();

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private slots:
    void openUrl(const QUrl &url);

private:
    using Stage = void (Tour::*)();
    bool walk(const QList<Stage> &stages);

    void seeMainWindow();
    void checkAtStart();
    void openSettings();
    void checkNow();
    void selectPackages();
    void showAllLanguages();
    void followLinks();
    void closeTable();
    void seeOtherOutcomes();
    void installFromTable();
    void seeFailures();
    void seeExpertSettings();
    void queryCatalogue();
    void downloadFromCatalogue();
    void queryAgain();
    void updateProgram();

    /// The part of @p window with that object name; the tour ends where there is none.
    template<class Widget>
    static Widget *find(const QWidget *window, const QString &name = QString());
    static QPushButton *button(const QWidget *window, const QString &name) { return find<QPushButton>(window, name); }

    /// Waits until @p happened, then saves the picture of @p window, if there is one, as @p name.
    void step(const QString &text, const std::function<bool()> &happened, const QString &name = QString(),
              QWidget *window = nullptr);
    void expectBox(const QString &name, QMessageBox::ButtonRole answer = QMessageBox::AcceptRole, int count = 1);
    void answer(QMessageBox *box);
    void savePicture(QWidget *window, const QString &name);
    void findPackages(const QString &document);
    void install(const QString &type, QMessageBox::ButtonRole answer = QMessageBox::AcceptRole);
    QStringList downloaded(const QString &pattern) const;
    void openCatalogue();
    int visibleRows() const;
    int newPackages() const;

    QWidget &mainWindow;
    const QUrl catalogue;
    const QDir pictures;
    int pictureCount = 0;
    int boxesExpected = 0; // message boxes that are to come, and to be answered
    QString boxName;       // for their pictures
    QMessageBox::ButtonRole boxAnswer = QMessageBox::AcceptRole;
    QString unexpectedBox;
    QList<QUrl> openedUrls; // what would have gone to the browser
    QPointer<qv::SoftwareUpdateDialog> settings;
    QPointer<qv::SoftwareUpdateAvailableDialog> available;
    QPointer<QTableWidget> table; // of the latter
    QPointer<CatalogueWindow> catalogueWindow;
};

template<class Widget>
Widget *Tour::find(const QWidget *window, const QString &name)
{
    Widget *found = window ? window->findChild<Widget *>(name) : nullptr;
    if (!found)
        throw std::runtime_error("there is no " + name.toStdString() + ", a " + Widget::staticMetaObject.className());
    return found;
}
