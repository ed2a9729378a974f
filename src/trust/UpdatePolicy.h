#pragma once

#include "PackageInfo.h"

#include <QHash>
#include <QStringList>
#include <QUrl>

#include <functional>

namespace qv {

class PackageInstaller;
struct CheckOutcome;

/// What a host wants beyond the defaults, for SoftwareUpdateClient::setPolicy() and DownloadManager::setPolicy(): a
/// plain value. One as it is made changes nothing.
/// @code
/// qv::UpdatePolicy policy;
/// policy.trustedKeys << "RWQf6LRCGA9i53mlYecO4IzT51TGPpvWucNSCh1CBM0QTaLn73Y7GFO3";
/// updates.setPolicy(policy);
/// @endcode
///
/// Members are added at the end, and the libraries' major version grows with them.
struct UpdatePolicy
{
    /// Public keys of the minisign tool, the second line of its ".pub" files. With one or more, only catalogues count
    /// that are sealed with one of them (docs/catalogue.md), and only packages that have a hash and a size. A key that
    /// is none is told to the log and trusts nobody: with such keys alone nothing is offered.
    QStringList trustedKeys;

    /// Packages and release notes come from their URLs as these stand, scheme, port and credentials too, and not from
    /// port 80: over up to ten redirects, never from https to http, through the proxy with its credentials. A package
    /// is there when the status is 2xx and the size exactly the announced one; without one, when the answer came to its
    /// end as HTTP tells it, and then its outcome is told, too. Certificates are checked always.
    bool followAddresses = false;

    /// How often a package is asked for: where a connection breaks off, a server falls silent or cannot answer (5xx),
    /// the download goes on where it stopped after 1 second, the next time after 3, 9, 27... It begins anew where the
    /// server does not say that the file is the same (a strong ETag or Last-Modified) or sends all of it.
    int downloadAttempts = 1;

    /// A file that keeps the last catalogue with packages, and its signature, so that the server sends them again only
    /// when they have changed (RFC 9110: ETag, else Last-Modified; 304). Its folder is made where it is missing. For
    /// each address a file of its own: one of another address, or one that is broken, counts as none. What a
    /// signature vouches for is examined again each time, with serial and expiry, and fetched anew where it fails.
    /// Empty: nothing is kept, and every check fetches all.
    QString catalogueCache;

    /// Further addresses of the same catalogue, its signature beside it: asked in random order where the one before
    /// does not answer, answers with an error, or has a catalogue that is not accepted. Only with trustedKeys: what
    /// they vouch for is as good from anybody, and without them whoever runs any of the mirrors could offer anything.
    QList<QUrl> mirrors;

    // For SoftwareUpdateClient alone:

    /// Who installs packages of a suffix ("rpk"), in the place of the built-in routine. Not owned; one that has been
    /// deleted counts as none. What has an installer can be installed, whatever the settings say.
    QHash<QString, PackageInstaller *> installers;

    /// "zip" packages really replace the application's folder: the archive is looked at and unpacked before the user is
    /// asked for the restart, and "Restart later" installs when the application ends. Where the folder or the one
    /// around it cannot be written, or UpdateInstaller is not in it, a box says so instead of downloading.
    bool replacesApplication = false;

    // The next three are called in the GUI thread and must not throw. They may start a check, set another policy, or
    // delete the client; those of that client are called no more then.

    /// False keeps a package from being shown: one that the user wants to skip, or whose turn has not come. Asked once
    /// for each package that a check has found to be newer; where none is left, everything is up to date.
    std::function<bool(const PackageInfo &)> isOffered;

    /// Called with what a check has found, instead of opening the dialog; false opens it. The host tells in its own way
    /// and calls SoftwareUpdateClient::showAvailable() when the user wants to see them. A table that is open already
    /// shows them in any case. Not called for a check of the user's while the settings dialog is open, where "Check
    /// Now" is answered by the table.
    std::function<bool(const PackageInfoList &)> announce;

    /// Called at the end of every check that was started, however it ended, exactly once and after all else: log,
    /// notification, dialog. Where a check is under way the policy counts that is set when it ends. Never called by the
    /// client's destructor: a check that is under way then ends untold. To start another on CheckOutcome::Cancelled is
    /// to cancel the one that took its place.
    std::function<void(const CheckOutcome &)> checked;

    /// Failures are told in words that help, with the translations "SoftwareUpdatePolicy_*": what happened, and what to
    /// do. Progress tells bytes and time left, and "Release Notes" opens those of the user's language.
    bool explains = false;

    /// Milliseconds. Checks that nobody waits for, at start (doInitialCheck()) and by the weekly and the other rhythms
    /// (queryLastUpdate()), come later by a random part of it, another each time, so that a million installations that
    /// start at nine do not ask in one minute. With it, a failed one is made again after 1, 2, 4, ... hours and at most
    /// a day, and as much by chance, until a check succeeds; the store's key "failedChecks" counts them. "Check Now",
    /// checkNow() and checkForUpdate() never wait. 0: no delay, and after a failure nothing before the next in turn.
    int msSpread = 0;
};

} // namespace qv
