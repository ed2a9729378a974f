// Orders versions by reading their texts side by side: no number is ever converted, so none can overflow.
#include "VersionNumber.h"

#include <algorithm>
#include <string_view>

namespace qv {

namespace {

using std::string_view;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

string_view trimmed(string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Cuts the digits off the front of @p text.
string_view takeDigits(string_view &text)
{
    const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
    const string_view digits = text.substr(0, size_t(end - text.begin()));
    text.remove_prefix(digits.size());
    return digits;
}

/// Cuts the next number, and the dot before it unless it is the first, off the front of @p text; empty when none is
/// left.
string_view takeNumber(string_view &text, bool first)
{
    if (first)
        return takeDigits(text);
    if (text.size() < 2 || text[0] != '.' || !isDigit(text[1]))
        return {};
    text.remove_prefix(1);
    return takeDigits(text);
}

int sign(int value)
{
    return (value > 0) - (value < 0);
}

int compareNumbers(string_view a, string_view b)
{
    a.remove_prefix(std::min(a.find_first_not_of('0'), a.size()));
    b.remove_prefix(std::min(b.find_first_not_of('0'), b.size()));
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    return sign(a.compare(b));
}

/// Compares without case, and runs of digits by value: "beta 2" before "Beta 10".
int compareTexts(string_view a, string_view b)
{
    while (!a.empty() && !b.empty()) {
        if (isDigit(a.front()) && isDigit(b.front())) {
            if (const int order = compareNumbers(takeDigits(a), takeDigits(b)))
                return order;
            continue;
        }
        const auto left = static_cast<unsigned char>(lower(a.front()));
        const auto right = static_cast<unsigned char>(lower(b.front()));
        if (left != right)
            return left < right ? -1 : 1;
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    return int(b.empty()) - int(a.empty());
}

/// What stands behind the numbers, without the signs that separate it.
string_view textBehind(string_view rest)
{
    rest.remove_prefix(std::min(rest.find_first_not_of(" \t._-+~"), rest.size()));
    return rest;
}

bool startsWithWord(string_view text, string_view word)
{
    return text.size() >= word.size()
        && std::equal(word.begin(), word.end(), text.begin(), [](char w, char c) { return w == lower(c); });
}

/// -1: before the release of the same number, 0: that release, 1: after it.
int rankOfText(string_view text)
{
    if (text.empty())
        return 0;
    for (const string_view word : { "alpha", "beta", "dev", "pre", "rc", "snapshot" }) {
        if (startsWithWord(text, word))
            return -1;
    }
    return 1;
}

} // namespace

VersionNumber::VersionNumber(const std::string &ascii) : text(trimmed(ascii))
{
    if (text.empty())
        text = "0";
}

QString VersionNumber::toString() const
{
    return QString::fromLatin1(text.data(), int(text.size()));
}

QString VersionNumber::toShortVersion() const
{
    string_view rest = text;
    size_t end = 0;
    for (int count = 0; !takeNumber(rest, count == 0).empty(); ++count) {
        if (count < 3)
            end = text.size() - rest.size();
    }
    return QString::fromStdString(text.substr(0, end)) + QString::fromLatin1(rest.data(), int(rest.size()));
}

int VersionNumber::compare(const VersionNumber &a, const VersionNumber &b)
{
    string_view left = a.text;
    string_view right = b.text;
    for (bool first = true;; first = false) {
        const string_view leftNumber = takeNumber(left, first);
        const string_view rightNumber = takeNumber(right, first);
        if (const int order = compareNumbers(leftNumber, rightNumber))
            return order;
        if (!first && leftNumber.empty() && rightNumber.empty())
            break;
    }
    left = textBehind(left);
    right = textBehind(right);
    const int order = rankOfText(left) - rankOfText(right);
    return order != 0 ? sign(order) : compareTexts(left, right);
}

} // namespace qv
