// The settings dialog: moves a settings record into the widgets and back, and turns buttons into signals.
// Made and driven by the client, which stores what applySettings() brings.
#include "SoftwareUpdateDialog.h"

#include "ui_SoftwareUpdateDialogGui.h"

namespace qv {

SoftwareUpdateDialog::SoftwareUpdateDialog(QWidget *parent, Qt::WindowFlags flags)
    : QDialog(parent, flags), ui(new Ui_SoftwareUpdateDialogGui)
{
    ui->setupUi(this);
    if (QApplication::keyboardModifiers() == Qt::NoModifier) {
        ui->checkForBetaCheckBox->hide();
        ui->updateServerLabel->hide();
        ui->updateServerLineEdit->hide();
    }
    layout()->setSizeConstraint(QLayout::SetFixedSize);
    ui->progressBar->hide();
    connect(ui->updatePushButton, &QPushButton::clicked, this, &SoftwareUpdateDialog::checkForUpdate);
    connect(ui->buttonBox, &QDialogButtonBox::clicked, this, &SoftwareUpdateDialog::standardButtonClicked);
}

SoftwareUpdateDialog::~SoftwareUpdateDialog() = default;

void SoftwareUpdateDialog::setNotificationText(const QString &text)
{
    ui->updateNotificationLabel->setText(text);
}

void SoftwareUpdateDialog::setDialogSettings(const SoftwareUpdateDialogSettings &settings)
{
    ui->updateCheckBox->setChecked(settings.doUpdateCheck);
    ui->checkForBetaCheckBox->setChecked(settings.checkForBeta);
    ui->updateComboBox->setCurrentIndex(settings.updateInterval);
    ui->updateServerLineEdit->setText(settings.serverURL);

    // Deliberate: a null text hides the caption alone, the old text beside it stays.
    ui->currentVersionLabel->setVisible(!settings.currentVersion.isNull());
    if (!settings.currentVersion.isNull())
        ui->currentVersionNumberLabel->setText(settings.currentVersion);
    ui->lastCheckLabel->setVisible(!settings.lastCheck.isNull());
    if (!settings.lastCheck.isNull())
        ui->lastCheckDateLabel->setText(settings.lastCheck);
}

SoftwareUpdateDialogSettings SoftwareUpdateDialog::getDialogSettings() const
{
    SoftwareUpdateDialogSettings settings;
    settings.doUpdateCheck = ui->updateCheckBox->isChecked();
    settings.checkForBeta = ui->checkForBetaCheckBox->isChecked();
    settings.updateInterval = ui->updateComboBox->currentIndex();
    settings.serverURL = ui->updateServerLineEdit->text();
    settings.currentVersion = ui->currentVersionNumberLabel->text();
    settings.lastCheck = ui->lastCheckDateLabel->text();
    return settings;
}

void SoftwareUpdateDialog::enableProgress()
{
    ui->progressBar->show();
    ui->progressBar->setEnabled(true);
    ui->updatePushButton->setEnabled(false);
}

void SoftwareUpdateDialog::disbaleProgress()
{
    ui->progressBar->hide();
    ui->progressBar->setEnabled(false);
    ui->updatePushButton->setEnabled(true);
}

void SoftwareUpdateDialog::emitApplySettings()
{
    emit applySettings(getDialogSettings());
}

// Closing is not done here: the form wires accepted() and rejected() to accept() and reject().
void SoftwareUpdateDialog::standardButtonClicked(QAbstractButton *button)
{
    const QDialogButtonBox::ButtonRole role = ui->buttonBox->buttonRole(button);
    if (role == QDialogButtonBox::AcceptRole || role == QDialogButtonBox::ApplyRole)
        emitApplySettings();
}

} // namespace qv
