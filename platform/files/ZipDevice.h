#pragma once

#include "PlatformExport.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

class QProgressDialog;

namespace qv {

/// What reading an archive on the GUI thread shows and asks while it works: progress, and whether to go on.
class QV_PLATFORM_EXPORT ZipDevice : public QObject
{
    Q_OBJECT

public:
    explicit ZipDevice(QObject *parent = nullptr);
    ~ZipDevice() override;

    /// Shows the progress of the next extraction in @p dialog, which the caller owns and may delete at any time; its
    /// Cancel button ends the extraction. Meanwhile the events of the application are handled, so that anything may
    /// happen but the deletion of this object.
    void attachProgressDialog(QProgressDialog *dialog);

    /// Tells whether the last extraction ended by the dialog's Cancel button.
    bool wasCanceled() const { return canceled; }

protected:
    void beginProgress();
    /// Returns false once the user cancelled. Cheap enough to be called for every block.
    bool showProgress(quint64 done, quint64 total);
    void endProgress();

private:
    QPointer<QProgressDialog> dialog;
    QElapsedTimer sinceEvents;
    bool canceled = false;
};

} // namespace qv
