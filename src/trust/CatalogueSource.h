#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

#include <functional>
#include <utility>

namespace qv {

struct UpdatePolicy;

/// Name and value; both empty: none.
using HeaderLine = std::pair<QByteArray, QByteArray>;

/// What a server answered for one address: a catalogue or its signature.
struct CatalogueAnswer
{
    CatalogueAnswer() = default;

    /// @p header tells the value of a header line by its name, empty where there is none.
    CatalogueAnswer(const QUrl &url, int status, const QByteArray &body,
                    const std::function<QByteArray(const char *name)> &header);

    /// It holds what was asked for, or says that this has not changed.
    bool isThere() const;

    QUrl url; ///< as asked for, without credentials
    int status = 0;
    QByteArray body;
    HeaderLine condition; ///< asks for another answer than this one: If-None-Match, or If-Modified-Since
};

/// Where one check gets its catalogue and the signature from, by the host's policy: from the server, or, where that
/// says that nothing has changed (RFC 9110, 13), from what was kept of an answer before; and then from the mirrors. A
/// plain value that goes with the check; of a default policy it holds nothing, and does nothing.
class CatalogueSource
{
public:
    CatalogueSource() = default;

    /// Reads what is kept. A file that is not there, broken, or of another format counts as empty.
    explicit CatalogueSource(const UpdatePolicy &policy);

    /// What a request for @p url is to say so that what is kept of it is not sent once more.
    HeaderLine condition(const QUrl &url) const;

    /// Whether @p status may be owed to that line: a server that finds fault with it (4xx) would never be heard again.
    bool isConditionRefused(const QUrl &url, int status) const;

    /// Takes the next answer, the catalogue before its signature, and returns it: one of status 304 with the body that
    /// is kept, or with none.
    CatalogueAnswer take(CatalogueAnswer answer);

    /// Whether there is a file.
    bool isKeeping() const { return !file.isEmpty(); }

    /// Whether anything that was taken had been kept.
    bool isOld() const;

    /// Forgets what was taken and what was kept: the next request asks for all.
    void askAnew();

    /// What was taken is good: keeps it in the place of what was kept, in one step and in the background (the global
    /// QThreadPool). Where a mirror gave the same catalogue, the server's stays.
    void keep() const;

    /// The next address to ask for the same catalogue, to be trusted for its seal alone; empty where there is none
    /// left. Forgets what was taken.
    QUrl nextMirror();
    bool hasMirrors() const { return !mirrors.isEmpty(); }

private:
    QString file;
    QList<QUrl> mirrors; // yet to be asked
    bool isOfMirror = false;
    QList<CatalogueAnswer> kept, taken;
};

} // namespace qv
