// The update-available dialog: fills and hides table rows, and turns buttons into signals that carry row indexes.
// Made and driven by the client, which knows the packages behind the rows.
#include "SoftwareUpdateAvailableDialog.h"

#include "BrowserLinks.h"
#include "LogQt.h"

#include "ui_SoftwareUpdateAvailableGui.h"

#include <QDesktopServices>
#include <QHash>
#include <QPointer>
#include <QRegularExpression>
#include <QScreen>
#include <QScrollBar>
#include <QSet>
#include <QSignalBlocker>
#include <QStyledItemDelegate>
#include <QTextDocument>

#include <algorithm>

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

/// Light links, where a host has darkened all colours but that of links; else no style at all.
QString linkStyle(const QPalette &palette)
{
    const QColor link = palette.color(QPalette::Link), text = palette.color(QPalette::WindowText);
    if (qAbs(qGray(link.rgb()) - qGray(palette.color(QPalette::Window).rgb())) > 80)
        return QString();
    const auto mixed = [](int one, int two) { return (one + 2 * two) / 3; };
    const QColor light(mixed(link.red(), text.red()), mixed(link.green(), text.green()),
                       mixed(link.blue(), text.blue()));
    return QStringLiteral("a { color: %1 }").arg(light.name());
}

/// A cell that is nothing but a text: a third of the memory of one that can hold anything, and filled at once.
class TextItem : public QTableWidgetItem
{
public:
    explicit TextItem(const QString &text) : shown(text) { }

    QVariant data(int role) const override
    {
        return role == Qt::DisplayRole || role == Qt::EditRole ? shown : QTableWidgetItem::data(role);
    }

private:
    QString shown;
};

/// Lays each text out once while a table is filled: most cells repeat one, and columns are measured a second time when
/// they get their names.
class TextDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void forget() { hints.clear(); }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        if (option.font != font || option.rect != rect)
            hints.clear();
        font = option.font;
        rect = option.rect;
        const QString text = index.data().toString();
        const auto known = hints.constFind(text);
        return known != hints.cend() ? *known : *hints.insert(text, QStyledItemDelegate::sizeHint(option, index));
    }

private:
    mutable QHash<QString, QSize> hints; // for cells of this font, in a table of this size
    mutable QFont font;
    mutable QRect rect;
};

void forgetTexts(const QTableWidget &table)
{
    if (auto *delegate = dynamic_cast<TextDelegate *>(table.itemDelegate())) // unless a host has put one there
        delegate->forget();
}

constexpr qsizetype longestCell = 4096; // many screens wide

/// What of a text a cell has room for.
QString cellText(const QString &text)
{
    return text.size() <= longestCell ? text : text.left(int(longestCell)) + QChar(0x2026);
}

/// How many rows tell how wide columns are: as many as Qt asks of itself, but fewer of very long ones, whose texts
/// would take seconds to lay out.
int rowsToMeasure(const QList<QStringList> &rows)
{
    constexpr int usual = 1000;
    constexpr qsizetype mostCharacters = 256 * 1024;
    qsizetype characters = 0;
    int count = 0;
    while (count < qMin(usual, int(rows.size())) && characters < mostCharacters) {
        for (const QString &text : rows.at(count++))
            characters += qMin(qsizetype(text.size()), longestCell);
    }
    return characters < mostCharacters ? usual : count;
}

/// Of rows and columns that have just been made: that they hold texts is no change of them.
void fillCells(QTableWidget &table, const QList<QStringList> &rows)
{
    const QSignalBlocker silence(table.model());
    for (int row = 0; row < rows.size(); ++row) {
        const QStringList &texts = rows.at(row);
        for (int column = 0; column < qMin(table.columnCount(), int(texts.size())); ++column)
            table.setItem(row, column, new TextItem(cellText(texts.at(column))));
    }
}

/// Keeps the addresses that are read in links from being broken into lines.
QString withWholeLinks(QString html)
{
    static const QRegularExpression breakable(QStringLiteral("([^\\w<>])(?=[^<>]*</a>)"));
    return html.replace(breakable, QStringLiteral("\\1\u2060"));
}

} // namespace

SoftwareUpdateAvailableDialog::SoftwareUpdateAvailableDialog(QWidget *parent, Qt::WindowFlags flags)
    : QDialog(parent, flags), ui(new Ui_SoftwareUpdateAvailableGui)
{
    qRegisterMetaType<SoftUpIndexList>("SoftUpIndexList"); // so that queued connections find the type by this name
    ui->setupUi(this);
    ui->commentText->setDocument(new ClosedDocument(ui->commentText));
    ui->commentText->setOpenLinks(false); // of itself it would also show what a link to a file of this machine names
    ui->qvLinkLabel->setText(withWholeLinks(ui->qvLinkLabel->text()));
    const QString links = linkStyle(palette());
    if (!links.isEmpty()) {
        ui->commentText->document()->setDefaultStyleSheet(links);
        ui->qvLinkLabel->setText(QStringLiteral("<style>%1</style>").arg(links) + ui->qvLinkLabel->text());
    }
    ui->tableWidget->setAccessibleName(ui->label_3->text()); // a table does not ask whose buddy it is

    using Dialog = SoftwareUpdateAvailableDialog;
    connect(ui->downloadPushButton, &QPushButton::clicked, this, &Dialog::downloadPackagePressed);
    connect(ui->installPushButton, &QPushButton::clicked, this, &Dialog::installPackagePressed);
    connect(ui->releaseNotesPushButton, &QPushButton::clicked, this, &Dialog::releaseNotesPressed);
    connect(ui->tableWidget, &QTableWidget::itemSelectionChanged, this, &Dialog::currentItemsChanged);
    connect(ui->commentText, &QTextBrowser::anchorClicked, this, [](const QUrl &url) {
        if (isForBrowser(url))
            QDesktopServices::openUrl(url);
    });
    connect(ui->showAllLanguagesCheckBox, &QCheckBox::clicked, this, &Dialog::showAllLanguagesPressed);
    connect(ui->updateSettingsPushButton, &QPushButton::clicked, this, &Dialog::openUpdateSettings);

    ui->tableWidget->setItemDelegate(new TextDelegate(ui->tableWidget));
    ui->tableWidget->setEditTriggers(QAbstractItemView::NoEditTriggers);
    ui->installPushButton->setDefault(true);
    adjustSize();
    // On small screens that leaves too few rows of the table: all of the height is taken but that of a window's frame.
    const int highest = screen()->availableGeometry().height() - 2 * style()->pixelMetric(QStyle::PM_TitleBarHeight);
    resize(width(), qMax(height(), qMin(sizeHint().height(), highest)));
    ui->commentText->hide();
}

SoftwareUpdateAvailableDialog::~SoftwareUpdateAvailableDialog() = default;

void SoftwareUpdateAvailableDialog::setTableEntries(const QList<QStringList> &rows)
{
    QTableWidget &table = *ui->tableWidget;
    forgetTexts(table);
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

    table.verticalHeader()->hide();
    table.setRowCount(int(rows.size()));
    table.setColumnCount(int(rows.first().size()));
    table.setSortingEnabled(false);
    fillCells(table, rows);
    table.horizontalHeader()->setResizeContentsPrecision(rowsToMeasure(rows));
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
    forgetTexts(table);
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
    deselectHiddenRows();
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

void SoftwareUpdateAvailableDialog::installPackagePressed()
{
    moveCurrentIntoSelection(); // the cursor keys may have moved it since
    emit installPackage(ui->tableWidget->currentRow());
}

// A slot that is told of a selection may hide rows of it: what that changes is told when the slot has returned.
void SoftwareUpdateAvailableDialog::currentItemsChanged()
{
    if (selectionChanges++ > 0)
        return;
    const QPointer<SoftwareUpdateAvailableDialog> self(this);
    int told = 0;
    do {
        deselectHiddenRows();
        moveCurrentIntoSelection();
        told = selectionChanges;
        emit currentItemsChangedSig(getCurrentSelectedItems());
    } while (self && told != selectionChanges);
    if (self)
        selectionChanges = 0;
}

// What stays is selected anew, in one go: many rows taken off one selection would take the square of their number.
void SoftwareUpdateAvailableDialog::deselectHiddenRows()
{
    const QTableWidget &table = *ui->tableWidget;
    const QItemSelection selection = table.selectionModel()->selection();
    QItemSelection visible;
    bool isAnyHidden = false;
    for (const QItemSelectionRange &range : selection) {
        for (int row = range.top(), first = row; row <= range.bottom() + 1; ++row) {
            if (row <= range.bottom() && !table.isRowHidden(row))
                continue;
            if (first < row)
                visible.select(table.model()->index(first, range.left()), table.model()->index(row - 1, range.right()));
            isAnyHidden = isAnyHidden || row <= range.bottom();
            first = row + 1;
        }
    }
    if (isAnyHidden)
        table.selectionModel()->select(visible, QItemSelectionModel::ClearAndSelect);
}

void SoftwareUpdateAvailableDialog::moveCurrentIntoSelection()
{
    const QTableWidget &table = *ui->tableWidget;
    const SoftUpIndexList rows = getCurrentSelectedItems();
    const auto distance = [current = table.currentRow()](int row) { return qAbs(row - current); };
    const auto nearest =
        std::min_element(rows.begin(), rows.end(), [&](int one, int other) { return distance(one) < distance(other); });
    if (nearest != rows.end() && *nearest != table.currentRow())
        table.selectionModel()->setCurrentIndex(table.model()->index(*nearest, qMax(0, table.currentColumn())),
                                                QItemSelectionModel::NoUpdate);
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
