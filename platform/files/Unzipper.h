#pragma once

#include "PlatformExport.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <thread>

namespace qv {

/// Unpacks one ZIP archive in a thread of its own, from the moment it is made, and reports once. Its rules are those of
/// ZipReader::extractFiles().
/// @code
/// auto *unzipper = new Unzipper(file, FileUtils::createTempDir(), false);
/// connect(unzipper, &Unzipper::unzippingDone, ...); // in time: signals wait for the event loop
/// @endcode
/// Destroying it in the middle stops the thread, without a signal; so does the end of the application.
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
    /// @p message is for people; it names the archive and, where one is to blame, the entry.
    void unzippingFailed(const QString &message);

private:
    void stop();
    void run();
    bool unpack();

    const QString archive;
    const QString folder;
    const bool flat;
    std::atomic<bool> stopped { false };
    std::thread worker;
};

} // namespace qv
