#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace qv {

// What is said to a camera's device service, and what its answers mean: plain functions. Answers are a stranger's.

/// The most bytes of an answer that are read.
inline constexpr int mostSoapBytes = 256 * 1024;

/// The body of an answer.
struct SoapAnswer
{
    /// The first text at @p path below the body, without outer blanks; null where there is none. Path steps carry the
    /// prefixes "s", "tds" and "tt", whatever the camera calls these namespaces:
    /// @code
    /// answer.text("tds:GetDeviceInformationResponse/tds:Model")
    /// @endcode
    QString text(const char *path) const { return texts.value(QLatin1String(path)); }

    bool isFault() const { return texts.contains(QStringLiteral("s:Fault")); }

    /// Whether a fault says so, "NotAuthorized": minding the name alone, as not every camera declares the prefix that
    /// it uses here.
    bool hasSubcode(const QString &name) const { return subcodes.contains(name); }

    /// What the camera says of its fault.
    QString reason() const { return text("s:Fault/s:Reason/s:Text"); }

    bool isValid = false;          ///< an envelope with a body
    QHash<QString, QString> texts; ///< by path; of elements that hold others, too
    QStringList subcodes;          ///< of a fault, from the outer to the inner one
};

/// Reads an answer as UTF-8. Not valid: what is no envelope, longer than mostSoapBytes, deeper than 32 levels, of more
/// than 4,000 elements or 64 attributes on one, or has a DTD.
SoapAnswer readSoap(const QByteArray &bytes);

/// The message with @p body, "<tds:GetDeviceInformation/>", and with @p header, which may be empty.
QByteArray soapMessage(const QString &body, const QString &header);

/// The header that names the user: with the digest of the password, @p nonce and @p created, which is by the camera's
/// clock.
QString usernameToken(const QString &user, const QString &password, const QByteArray &nonce, const QDateTime &created);

/// The time that a camera tells when asked for it; null where it tells none.
QDateTime cameraTime(const SoapAnswer &answer);

/// An XML Schema duration ("PT1M30S") in milliseconds, at most @p msMost; -1 for what is none, a negative one too.
int msDuration(const QString &text, int msMost);

/// Where the file goes, of the address @p told by a camera that was reached at @p asked: always to the host that was
/// asked, and never over http where that was https. The port is the one that is told; where none is told with another
/// host's name, or over http, it is that of @p asked. Empty for what is no address of http.
QUrl uploadAddress(const QString &told, const QUrl &asked);

/// @p text of a camera as one line for users: at most 200 characters, those that nobody sees as "?".
QString oneLine(const QString &text);

} // namespace qv
