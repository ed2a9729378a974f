#pragma once

#include "PlatformExport.h"

#include <QObject>
#include <QString>

#include <memory>
#include <thread>

namespace qv {

/// Unpacks one ZIP archive in a thread of its own, a large one with the help of up to three more, from the moment it is
/// made, and reports once. Its rules are those of ZipReader::extractFiles().
/// @code
/// auto *unzipper = new Unzipper(file, FileUtils::createTempDir(), false);
/// connect(unzipper, &Unzipper::unzippingDone, ...); // in time: signals wait for the event loop
/// @endcode
/// Destroying it in the middle stops the thread, without a signal; so does the end of the application. Where there is
/// much to remove then, that goes on in the background and is over when the QCoreApplication has been destroyed.
class QV_PLATFORM_EXPORT Unzipper : public QObject
{
    Q_OBJECT

public:
    /// @p folder is made where it is missing and else must be empty. It is removed when unpacking fails or is stopped.
    /// With @p flat every file lands in @p folder itself.
    Unzipper(const QString &archive, const QString &folder, bool flat);
    ~Unzipper() override;

    /// Deletes the archive file; false where that failed.
    bool removeZipFile();

signals:
    void unzippingDone(const QString &folder);
    /// @p message is for people; it names the archive and, where one is to blame, the entry. Also when there is no
    /// thread to be had.
    void unzippingFailed(const QString &message);

private:
    struct Job;

    void stop();
    static void run(const std::shared_ptr<Job> &job);
    static void report(const std::shared_ptr<Job> &job, bool isWhole, const QString &failure);

    std::shared_ptr<Job> job; // outlives this object where removing what was unpacked takes long
    std::thread worker;
};

} // namespace qv
