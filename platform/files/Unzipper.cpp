// An archive unpacked in the background. Made by the download manager; leaves the unpacked folder, or no folder and a
// message.
#include "Unzipper.h"
#include "FileUtils.h"
#include "IOException.h"
#include "ZipExtractor.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

namespace qv {

Unzipper::Unzipper(const QString &archiveFile, const QString &targetFolder, bool flatten)
    : archive(archiveFile), folder(targetFolder), flat(flatten), worker([this] { run(); })
{
    if (qApp) // whoever forgets this object when the application ends still leaves nothing behind
        connect(qApp, &QCoreApplication::aboutToQuit, this, &Unzipper::stop);
}

Unzipper::~Unzipper()
{
    stop();
}

void Unzipper::stop()
{
    stopped = true;
    if (worker.joinable())
        worker.join();
}

bool Unzipper::removeZipFile()
{
    return FileUtils::erase(archive);
}

void Unzipper::run()
{
    QString failure;
    try {
        if (unpack())
            QMetaObject::invokeMethod(
                this, [this] { emit unzippingDone(folder); }, Qt::QueuedConnection);
        else
            QDir().rmdir(folder);
        return;
    } catch (const ExceptionQt &exception) {
        failure = exception.message();
    } catch (const std::exception &exception) {
        failure = QString::fromUtf8(exception.what());
    }
    QDir().rmdir(folder);
    QMetaObject::invokeMethod(
        this, [this, failure] { emit unzippingFailed(failure); }, Qt::QueuedConnection);
}

bool Unzipper::unpack()
{
    QFile file(archive);
    std::vector<ZipEntry> entries = readZipDirectory(file);
    if (flat)
        flattenZipPaths(entries);
    return extractZip(file, entries, folder, [this](quint64, quint64) { return !stopped; });
}

} // namespace qv
