#pragma once

#include "SoftwareUpdateExport.h"
#include "SoftwareUpdateTypes.h"

#include <QDialog>

#include <memory>

class Ui_SoftwareUpdateAvailableGui;

namespace qv {

/// The "Update Available" dialog: a table of packages, a comment on the selected one, and buttons. It knows no
/// packages: rows are texts, and whatever the user does leaves as a signal with the indexes of table rows. Whoever
/// creates it answers currentItemsChangedSig() by enabling buttons and setting the comment.
///
/// Lives on the GUI thread. A translator must be installed before the dialog is constructed.
/// @code
/// auto dialog = new SoftwareUpdateAvailableDialog(window, qv::dialogFlags(false));
/// connect(dialog, &SoftwareUpdateAvailableDialog::installPackage, this, &Host::install);
/// dialog->setTableEntries({{"Viewer 2.1", "12.5 MB"}, {"Viewer 2.2 BETA", "12.7 MB"}});
/// dialog->setTableHeaders({"Name", "File Size"});
/// dialog->show();
/// @endcode
class SOFTWAREUPDATE_EXPORT SoftwareUpdateAvailableDialog : public QDialog
{
    Q_OBJECT

public:
    SoftwareUpdateAvailableDialog(QWidget *parent, Qt::WindowFlags flags);
    ~SoftwareUpdateAvailableDialog() override;

    /// Replaces the table: one row for each entry of @p rows, as many columns as the first row has texts (what a later
    /// row has beyond that is not shown, nor what a text has beyond 4,096 characters). Nothing of the previous table
    /// remains: headers, selection, hidden rows and the comment go too. currentItemsChangedSig() follows, unless @p
    /// rows is empty: that is logged as an error.
    void setTableEntries(const QList<QStringList> &rows);

    /// Names the columns, from the left. To be called after setTableEntries(). A dialog not shown yet grows until all
    /// columns fit, as far as the screen allows.
    void setTableHeaders(const QStringList &headers);

    /// Hides exactly the rows in @p rows and shows all others. Hidden rows are not selected: when this takes the
    /// selection off some, currentItemsChangedSig() follows; from inside a slot for that signal, after the slot.
    void setHiddenEntries(const SoftUpIndexList &rows);

    /// Shows @p text, which is rich text, below the table; an empty one hides the box. Images and other resources that
    /// the text refers to are never loaded. Its links open in the browser: those to http, https and ftp.
    void setCommentText(const QString &text);

    bool getShowAllLanguagesState() const; ///< whether "Show all languages" is checked

    void setInstallButtonState(bool enabled);
    void setDownloadButtonState(bool enabled);
    void setRealeaseNotesButtonState(bool enabled); // (the odd spelling is kept: hosts use the name)

signals:
    void downloadUrls(SoftUpIndexList); ///< "Download Package": the selected rows

    /// "Install Package": the table's current row, which is one of the selected rows if there are any. -1: there is
    /// none.
    void installPackage(int);

    void currentItemsChangedSig(SoftUpIndexList); ///< another selection or another table: the selected rows
    void downloadReleaseNotes(SoftUpIndexList);   ///< "Release Notes": the selected rows
    void showAllLanguages(bool state);            ///< "Show all languages" was clicked: whether it is checked now
    void openUpdateSettings();                    ///< "Update Settings..." was clicked

private slots:
    void downloadPackagePressed();
    void installPackagePressed();
    void currentItemsChanged();
    void releaseNotesPressed();

public slots:
    /// The rows of the selected cells, each once, in the order of QTableWidget::selectedItems(): not sorted.
    SoftUpIndexList getCurrentSelectedItems();

private slots:
    void showAllLanguagesPressed();

private:
    void deselectHiddenRows();
    void moveCurrentIntoSelection();

    int selectionChanges = 0; // since the outermost currentItemsChanged() began
    const std::unique_ptr<Ui_SoftwareUpdateAvailableGui> ui;
};

} // namespace qv
