#pragma once

#include "PlatformExport.h"

#include <QElapsedTimer>
#include <QObject>

class QNetworkAccessManager;

namespace qv {

/// Where access managers go when nobody needs them any more. Qt reads answers in a thread of the manager, and that
/// looks up only where a server has no more to say for a moment: one that sends header lines without end keeps it
/// reading, and to delete its manager would take 5 s. Such a manager stays here until its thread looks up again, and
/// while there is one, nobody sends through another: so at most one thread of those that ask here reads without end.
/// For a moment that is usual, and requests wait; behind a thread that is stuck they fail at once.
/// @code
/// HttpThreads::instance().release(std::exchange(network, nullptr));
/// timeout.start(HttpThreads::instance().areStuck() ? 0 : msTimeout);
/// if (HttpThreads::instance().areFree())
///     network = new QNetworkAccessManager(this); // else with freed()
/// @endcode
///
/// Lives on the GUI thread. What it still holds when the program ends, ends with that.
class QV_PLATFORM_EXPORT HttpThreads : public QObject
{
    Q_OBJECT

public:
    static HttpThreads &instance();

    /// Deletes @p manager, not before the event loop comes round; null is nothing. Nothing is heard of its requests any
    /// more.
    void release(QNetworkAccessManager *manager);

    /// Whether a request may leave through a manager of its own.
    bool areFree() const { return asked == 0; }

    /// Whether a thread has not looked up for a second: none does that but with a server that keeps it busy.
    bool areStuck() const { return asked > 0 && busy.elapsed() > msPatience; }

    /// For a QScopedPointer of a manager.
    struct Release
    {
        static void cleanup(QNetworkAccessManager *manager) { instance().release(manager); }
    };

signals:
    void freed();

private:
    HttpThreads() = default;

    static constexpr qint64 msPatience = 1000;

    int asked = 0;      // managers whose thread has not answered yet
    QElapsedTimer busy; // since the first of them was asked
};

} // namespace qv
