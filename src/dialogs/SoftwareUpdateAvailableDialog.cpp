// The update-available dialog: fills and hides table rows, and turns buttons into signals that carry row indexes.
// Made and driven by the client, which knows the packages behind the rows.
#include "SoftwareUpdateAvailableDialog.h"

#include "LogQt.h"

#include "ui_SoftwareUpdateAvailableGui.h"

#include <QScreen>
#include <QScrollBar>
#include <QSet>
#include <QSignalBlocker>
#include <QTextDocument>

namespace qv {

namespace {

/// A text that comes from a server may refer to any file of this machine; each such reference becomes one clear pixel.
class ClosedDocument : public QTextDocument
{
public:
    using QTextDocument::QTextDocument;

protected:
    QVariant loadResource(int type, const QUrl &) override
    {
        if (type != ImageResource)
            return {};
        QImage pixel(1, 1, QImage::Format_ARGB32);
        pixel.fill(Qt::transparent);
        return pixel;
    }
};

} // namespace

SoftwareUpdateAvailableDialog::SoftwareUpdateAvailableDialog(QWidget *parent, Qt::WindowFlags flags)
    : QDialog(parent, flags), ui(new Ui_SoftwareUpdateAvailableGui)
{
    qRegisterMetaType<SoftUpIndexList>("SoftUpIndexList"); // so that queued connections find the type by this name
    ui->setupUi(this);
    ui->commentText->setDocument(new ClosedDocument(ui->commentText));

    using Dialog = SoftwareUpdateAvailableDialog;
    connect(ui->downloadPushButton, &QPushButton::clicked, this, &Dialog::downloadPackagePressed);
    connect(ui->installPushButton, &QPushButton::clicked, this, &Dialog::installPackagePressed);
    connect(ui->releaseNotesPushButton, &QPushButton::clicked, this, &Dialog::releaseNotesPressed);
    connect(ui->tableWidget, &QTableWidget::itemSelectionChanged, this, &Dialog::currentItemsChanged);
    connect(ui->showAllLanguagesCheckBox, &QCheckBox::clicked, this, &Dialog::showAllLanguagesPressed);
    connect(ui->updateSettingsPushButton, &QPushButton::clicked, this, &Dialog::openUpdateSettings);

    ui->tableWidget->setEditTriggers(QAbstractItemView::NoEditTriggers);
    ui->installPushButton->setDefault(true);
    adjustSize();
    ui->commentText->hide();
}

SoftwareUpdateAvailableDialog::~SoftwareUpdateAvailableDialog() = default;

void SoftwareUpdateAvailableDialog::setTableEntries(const QList<QStringList> &rows)
{
    QTableWidget &table = *ui->tableWidget;
    {
        const QSignalBlocker silence(table); // the vanishing of the old selection is no news
        table.clear();
        table.setRowCount(0); // takes the hidden state of the old rows along
        table.setColumnCount(0);
    }
    ui->commentText->clear();
    ui->commentText->hide();
    if (rows.isEmpty()) {
        LogQt::write(Log::Error,
                     QStringLiteral("SoftwareUpdateAvailableDialog::setTableEntries() -> no table entries set!"));
        return;
    }

    const int columns = int(rows.first().size());
    table.setRowCount(int(rows.size()));
    table.setColumnCount(columns);
    table.verticalHeader()->hide();
    table.setSortingEnabled(false);
    for (int row = 0; row < rows.size(); ++row) {
        const QStringList &texts = rows.at(row);
        for (int column = 0; column < qMin(columns, int(texts.size())); ++column)
            table.setItem(row, column, new QTableWidgetItem(texts.at(column)));
    }
    table.resizeColumnsToContents();
    table.horizontalHeader()->setHighlightSections(false);
    table.horizontalHeader()->setSortIndicatorShown(false);
    table.horizontalHeader()->setStretchLastSection(true);
    currentItemsChanged();
}

void SoftwareUpdateAvailableDialog::setTableHeaders(const QStringList &headers)
{
    QTableWidget &table = *ui->tableWidget;
    table.setHorizontalHeaderLabels(headers);
    table.resizeColumnsToContents();
    if (isVisible())
        return;
    const QMargins around = layout()->contentsMargins();
    const int scrollBar = table.verticalScrollBar()->sizeHint().width();
    const int wanted =
        table.horizontalHeader()->length() + scrollBar + 2 * table.frameWidth() + around.left() + around.right();
    resize(qMax(width(), qMin(wanted, screen()->availableGeometry().width())), height());
}

void SoftwareUpdateAvailableDialog::setHiddenEntries(const SoftUpIndexList &rows)
{
    const QSet<int> hidden(rows.begin(), rows.end());
    for (int row = 0; row < ui->tableWidget->rowCount(); ++row)
        ui->tableWidget->setRowHidden(row, hidden.contains(row));
}

void SoftwareUpdateAvailableDialog::setCommentText(const QString &text)
{
    if (!text.isEmpty())
        ui->commentText->setHtml(text);
    ui->commentText->setVisible(!text.isEmpty());
}

bool SoftwareUpdateAvailableDialog::getShowAllLanguagesState() const
{
    return ui->showAllLanguagesCheckBox->isChecked();
}

void SoftwareUpdateAvailableDialog::setInstallButtonState(bool enabled)
{
    ui->installPushButton->setEnabled(enabled);
}

void SoftwareUpdateAvailableDialog::setDownloadButtonState(bool enabled)
{
    ui->downloadPushButton->setEnabled(enabled);
}

void SoftwareUpdateAvailableDialog::setRealeaseNotesButtonState(bool enabled)
{
    ui->releaseNotesPushButton->setEnabled(enabled);
}

void SoftwareUpdateAvailableDialog::downloadPackagePressed()
{
    emit downloadUrls(getCurrentSelectedItems());
}

// Deliberate: the current row, which with Ctrl+click need not be the selected one.
void SoftwareUpdateAvailableDialog::installPackagePressed()
{
    emit installPackage(ui->tableWidget->currentRow());
}

void SoftwareUpdateAvailableDialog::currentItemsChanged()
{
    emit currentItemsChangedSig(getCurrentSelectedItems());
}

void SoftwareUpdateAvailableDialog::releaseNotesPressed()
{
    emit downloadReleaseNotes(getCurrentSelectedItems());
}

SoftUpIndexList SoftwareUpdateAvailableDialog::getCurrentSelectedItems()
{
    SoftUpIndexList rows;
    QSet<int> seen;
    const QList<QTableWidgetItem *> items = ui->tableWidget->selectedItems();
    for (const QTableWidgetItem *item : items) {
        const int row = item->row();
        if (!seen.contains(row)) {
            seen.insert(row);
            rows.append(row);
        }
    }
    return rows;
}

void SoftwareUpdateAvailableDialog::showAllLanguagesPressed()
{
    emit showAllLanguages(ui->showAllLanguagesCheckBox->isChecked());
}

} // namespace qv
