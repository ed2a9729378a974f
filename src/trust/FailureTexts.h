#pragma once

#include <QLocale>
#include <QNetworkReply>
#include <QString>

namespace qv {

/// What is known of something that failed, for users to be told: facts, in plain values.
struct Failure
{
    enum Kind {
        Unreachable, ///< no way to the server
        ProxyUnreachable,
        ProxyLogin,
        Certificate,
        BadAddress, ///< no address of the web: place
        TimedOut,
        Status,      ///< an error status: status; 0: an end that cannot be told better
        WebPage,     ///< instead of a catalogue or a package: most likely a network that asks for a login
        NoCatalogue, ///< nothing that can be read, or an empty one
        Broken,      ///< on the way: received, expected
        DiskFull,    ///< expected: the room it takes, in the folder place
        NotWritable, ///< the folder place
        Damaged,     ///< wrong hash or size
        NotStarted,  ///< the installer, which lies in the folder place
        NoInstaller, ///< in the package
    };

    Failure(Kind kind = Status) : kind(kind) { }

    Kind kind;
    QString server; ///< its name, for users
    int status = 0;
    qint64 received = 0; ///< bytes
    qint64 expected = 0; ///< likewise; 0 where nobody knows
    QString place;
};

/// What a request came to that ended with this @p error of Qt's and this HTTP @p status, 0 where none came.
Failure failureOf(QNetworkReply::NetworkError error, int status);

/// Whether an answer is a page for a browser, by its Content-Type or its first bytes.
bool isWebPage(const QString &contentType, const QByteArray &beginning);

/// What happened, and what to do: plain text, in the user's language, numbers as @p locale has them.
QString failureText(const Failure &failure, const QLocale &locale = QLocale::system());

} // namespace qv
