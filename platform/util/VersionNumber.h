#pragma once

#include "PlatformExport.h"

#include <QString>

#include <string>

namespace qv {

/// A dotted version such as "2.10.1", "4.4.2.34" or "3.0 beta 2": a value, cheap to copy.
///
/// Versions are ordered number by number, whatever the count of numbers and of their digits; a missing number is zero.
/// Of equal numbers, one with a text that announces a release ("3.0-rc1": alpha, beta, dev, pre, rc, snapshot) comes
/// before the plain one, and one with any other text ("1.0.2a") behind it. Texts are compared without case, the digits
/// in them by value. Any input gives a version, nothing throws, and the order is a strict weak one for all of them:
/// what has no number in front counts as 0 with a text.
class QV_PLATFORM_EXPORT VersionNumber
{
public:
    /// The version 0.
    VersionNumber() = default;
    explicit VersionNumber(const std::string &ascii);

    /// The same from a text as catalogues and stores hold it: characters outside of Latin-1 count as "?".
    static VersionNumber fromText(const QString &text) { return VersionNumber(text.toLatin1().toStdString()); }

    /// The text that the version was made of, without outer blanks; "0" for one made of nothing.
    QString toString() const;

    /// The same with at most three numbers: "4.4.2" of "4.4.2.34", "3.0 beta" of "3.0 beta".
    QString toShortVersion() const;

    /// Negative, zero or positive as @p a is older than, equal to or newer than @p b.
    static int compare(const VersionNumber &a, const VersionNumber &b);

    friend bool operator==(const VersionNumber &a, const VersionNumber &b) { return compare(a, b) == 0; }
    friend bool operator!=(const VersionNumber &a, const VersionNumber &b) { return compare(a, b) != 0; }
    friend bool operator<(const VersionNumber &a, const VersionNumber &b) { return compare(a, b) < 0; }
    friend bool operator<=(const VersionNumber &a, const VersionNumber &b) { return compare(a, b) <= 0; }
    friend bool operator>(const VersionNumber &a, const VersionNumber &b) { return compare(a, b) > 0; }
    friend bool operator>=(const VersionNumber &a, const VersionNumber &b) { return compare(a, b) >= 0; }

private:
    std::string text = "0";
};

} // namespace qv
