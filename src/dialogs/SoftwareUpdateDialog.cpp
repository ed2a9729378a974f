// The settings dialog: moves a settings record into the widgets and back, and turns buttons into signals.
// Made and driven by the client, which stores what applySettings() brings.
#include "SoftwareUpdateDialog.h"

#include "ui_SoftwareUpdateDialogGui.h"

#include <QKeyEvent>
#include <QRegularExpression>

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
    QSizePolicy keepsItsPlace = ui->progressBar->sizePolicy();
    keepsItsPlace.setRetainSizeWhenHidden(true);
    ui->progressBar->setSizePolicy(keepsItsPlace);
    ui->progressBar->hide();

    // The check box is the combo box's caption too. On Linux a combo box is named by its value and only a label says
    // what that means.
    const QString caption = ui->updateCheckBox->text();
    ui->updateComboBox->setAccessibleName(caption);
    auto label = new QLabel(caption, this);
    label->setBuddy(ui->updateComboBox);
    label->hide();

    connect(ui->updatePushButton, &QPushButton::clicked, this, &SoftwareUpdateDialog::checkForUpdate);
    connect(ui->buttonBox, &QDialogButtonBox::clicked, this, &SoftwareUpdateDialog::standardButtonClicked);
}

SoftwareUpdateDialog::~SoftwareUpdateDialog() = default;

void SoftwareUpdateDialog::setNotificationText(const QString &text)
{
    ui->updateNotificationLabel->setText(text);

    // What does not fit the label's height is read in the tip, which is rich text lest its lines be endless.
    static const QRegularExpression partOfWord(QStringLiteral("(\\S{60})"));
    QString tip = text;
    tip.replace(partOfWord, QStringLiteral("\\1\u200b"));
    ui->updateNotificationLabel->setToolTip(tip.isEmpty() ? tip : QStringLiteral("<qt>") + tip.toHtmlEscaped());
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
    if (focusWidget() == ui->updatePushButton) // disabled, it would pass it on to the check box, and the next Space
        ui->progressBar->setFocus();
    ui->updatePushButton->setEnabled(false);
}

void SoftwareUpdateDialog::disbaleProgress()
{
    ui->updatePushButton->setEnabled(true);
    if (focusWidget() == ui->progressBar)
        ui->updatePushButton->setFocus();
    ui->progressBar->hide();
    ui->progressBar->setEnabled(false);
}

// Enter meant "Check Now" when the progress bar took the focus over: it does not press OK.
void SoftwareUpdateDialog::keyPressEvent(QKeyEvent *event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isEnter || focusWidget() != ui->progressBar)
        QDialog::keyPressEvent(event);
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
