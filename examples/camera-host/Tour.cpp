// The tour itself: its stages in order, how a step waits, what becomes of message boxes. Called by main(); leaves
// pictures of all windows. The stages are in the other rooms.
#include "Tour.h"

#include <QApplication>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTimer>
#include <cstdio>
#include <stdexcept>

namespace {

constexpr int msForOneStep = 30'000; // twice what a check may take
constexpr int msBetweenLooks = 20;

} // namespace

/// What the leak check shall not mind: the managers of installations are never freed, by design.
extern "C" Q_DECL_EXPORT const char *__lsan_default_suppressions() // NOLINT(bugprone-reserved-identifier)
{
    return "leak:qv::SoftwareUpdateClient::install\nleak:qv::HttpClient::";
}

Tour::Tour(QWidget &mainWindow, const QUrl &catalogue, const QString &folder)
    : mainWindow(mainWindow), catalogue(catalogue), pictures(folder)
{
    pictures.mkpath(".");
    for (const char *scheme : { "http", "file" })
        QDesktopServices::setUrlHandler(scheme, this, "openUrl");
    qApp->installEventFilter(this);
}

Tour::~Tour()
{
    for (const char *scheme : { "http", "file" })
        QDesktopServices::unsetUrlHandler(scheme);
}

bool Tour::run()
{
    return walk({ &Tour::seeMainWindow, &Tour::checkAtStart, &Tour::openSettings, &Tour::checkNow,
                  &Tour::selectPackages, &Tour::showAllLanguages, &Tour::followLinks, &Tour::closeTable,
                  &Tour::seeOtherOutcomes, &Tour::installFromTable, &Tour::seeFailures, &Tour::seeExpertSettings,
                  &Tour::queryCatalogue, &Tour::downloadFromCatalogue, &Tour::queryAgain });
}

bool Tour::update()
{
    return walk({ &Tour::updateProgram });
}

bool Tour::walk(const QList<Stage> &stages)
{
    try {
        for (const Stage stage : stages)
            (this->*stage)();
    } catch (const std::runtime_error &error) {
        fprintf(stderr, "The tour ends here: %s\n", error.what());
        return false;
    }
    printf("The tour is over. Its %d pictures are in %s\n", pictureCount, qPrintable(pictures.absolutePath()));
    return true;
}

void Tour::step(const QString &text, const std::function<bool()> &happened, const QString &name, QWidget *window)
{
    QElapsedTimer elapsed;
    elapsed.start();
    QTimer wakeUp; // the loop below waits for events, and what happens to files is none
    wakeUp.start(msBetweenLooks);
    while (!happened()) {
        if (!unexpectedBox.isEmpty())
            throw std::runtime_error("a box said: " + unexpectedBox.toStdString());
        if (elapsed.hasExpired(msForOneStep))
            throw std::runtime_error("this did not happen: " + text.toStdString());
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        // What has been released with deleteLater() goes in the outermost loop only.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    if (window)
        savePicture(window, name);
    printf("%s\n", qPrintable(text));
    fflush(stdout);
}

void Tour::savePicture(QWidget *window, const QString &name)
{
    QCoreApplication::processEvents(); // what has just been shown finds its place
    const QString file = QStringLiteral("%1-%2.png").arg(++pictureCount, 2, 10, QLatin1Char('0')).arg(name);
    if (!window->grab().save(pictures.filePath(file)))
        throw std::runtime_error("cannot write " + file.toStdString());
}

void Tour::expectBox(const QString &name, QMessageBox::ButtonRole answer, int count)
{
    boxName = name;
    boxAnswer = answer;
    boxesExpected = count;
}

void Tour::answer(QMessageBox *box)
{
    if (boxesExpected == 0) {
        unexpectedBox = box->text();
        box->reject(); // else the tour would wait in its event loop
        return;
    }
    savePicture(box, boxName);
    --boxesExpected;
    for (QAbstractButton *choice : box->buttons()) {
        if (box->buttonRole(choice) == boxAnswer || box->buttons().size() == 1)
            return choice->click();
    }
}

bool Tour::eventFilter(QObject *object, QEvent *event)
{
    auto *box = qobject_cast<QMessageBox *>(object);
    if (box && event->type() == QEvent::Show)
        QTimer::singleShot(0, box, [this, box] { answer(box); });
    return QObject::eventFilter(object, event);
}

void Tour::openUrl(const QUrl &url)
{
    openedUrls << url;
}
