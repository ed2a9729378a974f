#pragma once

#include "SoftwareUpdateExport.h"
#include "SoftwareUpdateTypes.h"

#include <QDialog>

#include <memory>

class QAbstractButton;
class Ui_SoftwareUpdateDialogGui;

namespace qv {

/// The "Check for Updates" dialog: shows the running version and the last check, offers "Check Now" and edits the
/// update settings. It decides nothing; whoever creates it fills it, connects its signals and says what to show.
///
/// The choice of beta versions and the server URL are for experts: they are shown only when a modifier key (Shift,
/// Ctrl, Alt, ...) is held while the dialog is being constructed. Hidden or not, their values pass through unchanged.
///
/// Lives on the GUI thread. A translator must be installed before the dialog is constructed.
/// @code
/// auto dialog = new SoftwareUpdateDialog(window, qv::dialogFlags(true));
/// connect(dialog, &SoftwareUpdateDialog::checkForUpdate, this, &Host::check);
/// connect(dialog, &SoftwareUpdateDialog::applySettings, this, &Host::store);
/// connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
/// dialog->setDialogSettings(settings);
/// dialog->show();
/// @endcode
class SOFTWAREUPDATE_EXPORT SoftwareUpdateDialog : public QDialog
{
    Q_OBJECT

public:
    SoftwareUpdateDialog(QWidget *parent, Qt::WindowFlags flags);
    ~SoftwareUpdateDialog() override;

    /// Shows @p text, always as plain text, below the date of the last check; an empty one clears the line. It wraps
    /// within the dialog's width; a tool tip holds all of it.
    void setNotificationText(const QString &text);

    /// Fills the widgets. A null `currentVersion` or `lastCheck` hides its caption and leaves the text beside it as it
    /// was.
    void setDialogSettings(const SoftwareUpdateDialogSettings &settings);

    /// What the widgets hold now, applied or not.
    SoftwareUpdateDialogSettings getDialogSettings() const;

signals:
    /// "Check Now" was pressed. The button stays enabled until enableProgress() is called.
    void checkForUpdate();

    /// OK was pressed; accepted() follows. Cancel and closing the window never send it.
    void applySettings(const SoftwareUpdateDialogSettings &);

    /// Asks for the update-available dialog. For others to send: the dialog itself never does.
    void forceUpdateAvailable();

public slots:
    /// A check runs: shows the busy indicator and disables "Check Now", whose keyboard focus waits on the indicator.
    void enableProgress();

    /// No check runs, as after construction (the odd spelling is kept: hosts connect by name). The focus goes back to
    /// "Check Now" unless the user has moved it.
    void disbaleProgress();

    void emitApplySettings(); ///< sends applySettings() with what the widgets hold

protected:
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void standardButtonClicked(QAbstractButton *button);

private:
    const std::unique_ptr<Ui_SoftwareUpdateDialogGui> ui;
};

} // namespace qv
