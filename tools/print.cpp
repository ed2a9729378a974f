// Lines and tables for the terminal, and words for both. Called by all commands.
#include "Commands.h"

#include <algorithm>

namespace qv {

void printLine(const QString &line, std::FILE *file)
{
    QString clean = line;
    for (QChar &c : clean) {
        if (c.category() == QChar::Other_Control)
            c = QLatin1Char('?');
    }
    std::fputs((clean + QLatin1Char('\n')).toUtf8().constData(), file);
}

void printTable(const QList<QStringList> &rows)
{
    QList<int> widths;
    for (const QStringList &row : rows) {
        while (widths.size() < row.size())
            widths.append(0);
        for (int column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths.at(column), int(row.at(column).size()));
    }
    for (const QStringList &row : rows) {
        QString line;
        for (int column = 0; column + 1 < row.size(); ++column)
            line += row.at(column).leftJustified(widths.at(column) + 2);
        printLine(line + row.last());
    }
}

QStringList sorted(const QStringSet &words)
{
    QStringList list = words.values();
    list.sort();
    return list;
}

QString joined(const QStringSet &words)
{
    return sorted(words).join(QLatin1Char(','));
}

QStringList listOf(const QString &text)
{
    return text.split(QLatin1Char(','), Qt::SkipEmptyParts);
}

} // namespace qv
