#pragma once

#include "LogLimit.h"
#include "ParseException.h"

#include <limits>

namespace qv {

/// What a catalogue may cost those who read it: packages; memory for what they inherit and cannot share, counted as it
/// is allocated, roughly; and characters of what they say, shared or not, as tables show and indexes walk them for each
/// package. Without a limit, a small document with large values in its outer sets becomes gigabytes.
class Allowance
{
public:
    static Allowance ofCatalogue() { return Allowance(48LL << 20, 8LL << 20); }
    static Allowance unlimited()
    {
        return Allowance(std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::max());
    }

    void checkLength(const QString &text, qint64 longest) const
    {
        if (isLimited && text.size() > longest)
            refuse("a value is too long");
    }
    void checkPackages(int count) const
    {
        if (count > mostPackages)
            refuse("too many packages");
    }
    void spendOnReading(qint64 characters) { spend(reading, characters, "names and words add up to too much"); }

    /// For a set of so many words, of which @p own are held nowhere else.
    void spendOnWords(qint64 count, qint64 own) { spend(memory, 200 + (count + own) * 40); }
    void spendOnLinks(qint64 count) { spend(memory, count * 100); }

    LogLimit suspiciousSuffixes {
        Log::Error, QStringLiteral("DownloadManager::parsePackageType() -> %1 more suspicious package suffixes")
    };

    /// For an address that is put together, and taken apart again by QUrl.
    void spendOnUrl(qint64 characters) { spend(memory, 250 + characters * 4); }

private:
    Allowance(qint64 bytes, qint64 characters) : memory(bytes), reading(characters) { }

    [[noreturn]] static void refuse(const char *reason)
    {
        throw ParseException(QStringLiteral("the catalogue is refused: ") + QLatin1String(reason));
    }

    static void spend(qint64 &left, qint64 cost, const char *excess = "inherited values unfold to too much")
    {
        left -= cost;
        if (left < 0)
            refuse(excess);
    }

    static constexpr int mostPackages = 20 * 1000;

    qint64 memory;
    qint64 reading;
    const bool isLimited = reading < std::numeric_limits<qint64>::max();
};

inline constexpr int longestText = 1024; // of a name, a word
inline constexpr int longestUrl = 2048;
inline constexpr int longestComment = 64 * 1024;
inline constexpr int longestWords = 64 * 1024; // all of one element together

} // namespace qv
