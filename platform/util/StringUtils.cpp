// Splits, translates and compares sets of words, wherever lists of words are read; takes passwords out of what is
// logged.
#include "StringUtils.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <algorithm>

namespace qv {

QStringSet StringUtils::splitStringSet(const QString &text, bool (*isSeparator)(QChar), Qt::SplitBehavior behavior,
                                       int *count)
{
    QStringSet words;
    int found = 0;
    auto begin = text.cbegin();
    for (;;) {
        const auto end = std::find_if(begin, text.cend(), isSeparator);
        if (end != begin || !behavior.testFlag(Qt::SkipEmptyParts)) {
            words.insert(QString(begin, int(end - begin)));
            ++found;
        }
        if (end == text.cend())
            break;
        begin = end + 1;
    }
    if (count)
        *count = found;
    return words;
}

void StringUtils::appendAll(QStringSet &target, const QStringSet &values, const QString &context)
{
    for (const QString &value : values)
        target.insert(translated(value, context));
}

QString StringUtils::translated(const QString &word, const QString &context)
{
    if (word.isEmpty()) // the empty source text stands for a catalogue's own header
        return word;
    return QCoreApplication::translate(context.toUtf8().constData(), word.toUtf8().constData());
}

bool StringUtils::intersectsOnBeginning(const QStringSet &a, const QStringSet &b)
{
    return std::any_of(a.cbegin(), a.cend(), [&b](const QString &left) {
        return std::any_of(b.cbegin(), b.cend(),
                           [&left](const QString &right) { return left.startsWith(right) || right.startsWith(left); });
    });
}

QString StringUtils::withoutPassword(const QString &url)
{
    static const QRegularExpression password(QStringLiteral("^([^/?#]*//[^/?#:]*):[^/?#]*@"));
    return QString(url).replace(password, QStringLiteral("\\1@"));
}

} // namespace qv
