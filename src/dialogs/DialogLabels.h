#pragma once

// The labels of the two forms that do what a plain QLabel does not.

#include <QFocusEvent>
#include <QLabel>
#include <QPainter>
#include <QStaticText>
#include <QtMath>

namespace qv {

/// Plain text that asks for no width: it takes what it is given, and breaks inside words that are longer than a line.
class WrappingLabel : public QLabel
{
public:
    using QLabel::QLabel;

    QSize minimumSizeHint() const override { return {}; }
    QSize sizeHint() const override { return { 0, heightForWidth(width()) }; }
    int heightForWidth(int width) const override
    {
        return qCeil(lines(width - 2 * margin()).size().height()) + 2 * margin();
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter(this).drawStaticText(margin(), margin(), lines(width() - 2 * margin()));
    }

private:
    QStaticText lines(int width) const
    {
        QTextOption option(alignment());
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        QStaticText lines(text());
        lines.setTextFormat(Qt::PlainText);
        lines.setTextOption(option);
        lines.setTextWidth(width);
        lines.prepare(QTransform(), font());
        return lines;
    }
};

/// A sentence with a link, which the Tab key reaches: it goes straight to the link, where Enter opens it. (In a plain
/// label the first Tab stops before the link, and Enter would press the dialog's default button.)
class LinkLabel : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void focusInEvent(QFocusEvent *event) override
    {
        QLabel::focusInEvent(event);
        if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason)
            QLabel::focusNextPrevChild(event->reason() == Qt::TabFocusReason);
    }
};

} // namespace qv
