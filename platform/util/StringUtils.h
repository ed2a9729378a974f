#pragma once

#include "PlatformExport.h"

#include <QSet>
#include <QString>
#include <QUrl>

namespace qv {

using QStringSet = QSet<QString>;

/// Words, sets of words, and what a log may show of a URL.
class QV_PLATFORM_EXPORT StringUtils
{
public:
    /// Tells whether a character separates words: white space and commas do.
    static bool splitWords(QChar c) { return c == QLatin1Char(',') || c.isSpace(); }

    /// The parts of @p text between the characters for which @p isSeparator holds; @p count, unless null, receives
    /// how many they are, equal ones included.
    static QStringSet splitStringSet(const QString &text, bool (*isSeparator)(QChar), Qt::SplitBehavior behavior,
                                     int *count = nullptr);

    /// Adds @p values to @p target, each translated in @p context; without a translation the words as they are.
    static void appendAll(QStringSet &target, const QStringSet &values, const QString &context);

    /// @p word translated in @p context, or @p word itself.
    static QString translated(const QString &word, const QString &context);

    /// True when the sets share a word.
    static bool intersectsWith(const QStringSet &a, const QStringSet &b) { return a.intersects(b); }

    /// True when a word of one set begins with a word of the other, minding case.
    static bool intersectsOnBeginning(const QStringSet &a, const QStringSet &b);

    /// The text of @p url for logs and users: without the password, if its authority ("//user:password@host") has one.
    static QString withoutPassword(const QUrl &url) { return url.toString(QUrl::RemovePassword); }

    /// The same for what may not even be one; any other text as it stands.
    static QString withoutPassword(const QString &url);
};

} // namespace qv
