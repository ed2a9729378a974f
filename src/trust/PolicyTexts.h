#pragma once

#include <QLocale>
#include <QString>

namespace qv {

struct Seal;

// What users read beyond the defaults, where a host has a policy: with the translations "SoftwareUpdatePolicy_*".

/// Why a catalogue with this @p seal was not taken; empty for one that was.
QString refusalText(const Seal &seal);

/// What keeps a package from replacing the application.
enum class Obstacle {
    NotWritable,      ///< the folder, with its path
    WritableByOthers, ///< likewise, for root
    NoUpdater,        ///< in the folder
    NoProgram,        ///< of that name in the package
};

QString obstacleText(Obstacle obstacle, const QString &name);

/// A download has failed, for that @p reason.
QString downloadFailureText(const QString &reason);

// Packages that installers of the host's own install. A package is named as the table names it.

/// What will happen: to one package, and to several.
QString installQuestion(const QString &package);
QString installQuestion(int count);

/// What happens, a line each: with which of several packages, and what.
QString installNumberText(int number, int count, const QString &package);
QString installingText();
QString cancellingText();

/// What has happened: to one package, and to several.
QString installedText(const QString &package);
QString notInstalledText(const QString &package);
QString installedCountText(int installed, int count);

/// The line of one of them.
QString installedLine(const QString &package);
QString notInstalledLine(const QString &package);
QString cancelledLine(const QString &package);

/// Why there is no word from an installer itself.
QString installerBusyText();
QString installerSilentText();
QString installerGoneText();

/// "12.3 of 40.0 MB", in the unit of the @p total; "12.3 MB" where that is 0 or less.
QString amountText(qint64 bytes, qint64 total, const QLocale &locale = QLocale::system());

/// How far a download is, @p msElapsed after its first bytes: "12.3 of 40.0 MB, about 2 minutes left". Of the time left
/// nothing is said in the first two seconds, and where nobody knows the @p total.
QString progressText(qint64 bytes, qint64 total, qint64 msElapsed, const QLocale &locale = QLocale::system());

} // namespace qv
