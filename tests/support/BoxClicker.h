#pragma once

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

#include <functional>

/// Answers the modal boxes that appear while it lives, each by the button of the next text in @p answers, or "OK" when
/// there is none left, and writes down what they said:
/// "Critical|title|text|OK:Accept", with the buttons in the order in which they were added. A box without the button
/// is rejected, and the words tell so, as they do of one that is not modal.
///
/// A folder chooser is answered with @p folder, or cancelled where that is empty.
class BoxClicker : public QObject
{
public:
    explicit BoxClicker(const QStringList &answers = QStringList(), const QString &folder = QString())
        : answers(answers), folder(folder)
    {
        qApp->installEventFilter(this);
    }

    QStringList boxes;
    std::function<void()> onBox = [] {}; ///< called while a message box is shown

    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() != QEvent::Show)
            return false;
        if (auto *box = qobject_cast<QMessageBox *>(object))
            QTimer::singleShot(0, box, [this, box] { answer(box); });
        if (auto *dialog = qobject_cast<QFileDialog *>(object))
            QTimer::singleShot(0, dialog, [this, dialog] { choose(dialog); });
        return false;
    }

private:
    void answer(QMessageBox *box)
    {
        static const QStringList icons { "None", "Information", "Warning", "Critical", "Question" };
        static const QStringList roles { "Accept", "Reject" };
        const QString wanted = answers.isEmpty() ? QStringLiteral("OK") : answers.takeFirst();
        QPointer<QAbstractButton> found;
        QStringList buttons;
        for (auto *button : box->findChildren<QPushButton *>()) {
            const QString text = button->text().remove(QLatin1Char('&'));
            buttons << text + QLatin1Char(':') + roles.value(box->buttonRole(button), QStringLiteral("other"));
            if (text == wanted)
                found = button;
        }
        boxes << QStringList { icons.value(box->icon()), box->windowTitle(), box->text(), buttons.join(',') }.join('|');
        if (!box->isModal())
            boxes.last() += QStringLiteral(" (not modal)");
        if (!found)
            boxes.last() += QStringLiteral(" (no button ") + wanted + QLatin1Char(')');
        const QPointer<QMessageBox> shown(box);
        onBox(); // which may take the box along
        if (found)
            found->click();
        else if (shown)
            shown->reject();
    }

    void choose(QFileDialog *dialog)
    {
        boxes << dialog->windowTitle() + QLatin1Char('|') + dialog->directory().absolutePath();
        dialog->selectFile(folder);
        folder.isEmpty() ? dialog->reject() : static_cast<QDialog *>(dialog)->done(QDialog::Accepted);
    }

    QStringList answers;
    QString folder;
};
