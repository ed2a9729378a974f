#pragma once

#include "PackageInfo.h"
#include "SoftwareUpdateExport.h"

#include <QObject>
#include <QPointer>

namespace qv {

/// Installs packages of some type in the host's own way, for UpdatePolicy::installers: firmware onto a camera, a
/// plug-in into its folder. Lives in the GUI thread and stays the host's; one package at a time.
/// @code
/// class PlugInInstaller : public qv::PackageInstaller
/// {
///     void install(const qv::PackageInfo &package, const QString &file) override; // begins; later finished(true, "")
///     void cancel() override;                                                     // later finished(false, "...")
/// };
/// @endcode
class SOFTWAREUPDATE_EXPORT PackageInstaller : public QObject
{
    Q_OBJECT

public:
    explicit PackageInstaller(QObject *parent = nullptr);
    ~PackageInstaller() override;

    /// Begins to install @p package from @p file, which stays until finished() and goes then. Returns at once; the
    /// caller hears of it by signals, also from within this call. One that is silent for two minutes has failed.
    virtual void install(const PackageInfo &package, const QString &file) = 0;

    /// Ends what was begun as soon as that does no harm, with finished(). Called at most once for each install().
    virtual void cancel() = 0;

signals:
    /// How far it is, @p value of @p total (0: unknown); @p what is one line for the user.
    void progress(int value, int total, const QString &what);

    /// The end, once for each install(). @p message is plain text for the user: why it failed, or what there is to
    /// tell of a success; empty where there is nothing.
    void finished(bool isInstalled, const QString &message);

private:
    friend class InstallerRun;
    QPointer<QObject> run; // that it works for
};

} // namespace qv
