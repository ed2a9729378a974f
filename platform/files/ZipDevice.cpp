// Progress and cancel of an extraction on the GUI thread. Called by ZipReader; leaves the dialog closed by its own
// rules.
#include "ZipDevice.h"

#include <QCoreApplication>
#include <QProgressDialog>

namespace qv {

namespace {

constexpr qint64 msBetweenEvents = 16;
constexpr int progressSteps = 1000; // byte counts would overflow the dialog's int

} // namespace

ZipDevice::ZipDevice(QObject *parent) : QObject(parent) { }

ZipDevice::~ZipDevice() = default;

void ZipDevice::attachProgressDialog(QProgressDialog *newDialog)
{
    dialog = newDialog;
}

void ZipDevice::beginProgress()
{
    canceled = false;
    sinceEvents.start();
    if (dialog) {
        dialog->setRange(0, progressSteps);
        dialog->setValue(0);
    }
}

bool ZipDevice::showProgress(quint64 done, quint64 total)
{
    if (dialog && sinceEvents.elapsed() >= msBetweenEvents) {
        dialog->setValue(total > 0 ? int(double(done) / double(total) * (progressSteps - 1)) : 0);
        QCoreApplication::processEvents();
        sinceEvents.restart();
    }
    canceled = dialog && dialog->wasCanceled();
    return !canceled;
}

void ZipDevice::endProgress()
{
    if (dialog && !canceled)
        dialog->setValue(progressSteps);
}

} // namespace qv
