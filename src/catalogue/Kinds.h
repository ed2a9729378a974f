#pragma once

#include <QString>
#include <QStringList>

namespace qv {

// What the catalogue's format and the stores call things, each written once.

/// The words of a catalogue: its elements, and the values that stand in them as child elements or attributes.
namespace Word {
inline const QString softwareList = QStringLiteral("softwareList"); // the usual root; any other is read too
inline const QString packageSet = QStringLiteral("package-set");
inline const QString package = QStringLiteral("package");
inline const QString file = QStringLiteral("file");
inline const QString type = QStringLiteral("type");
inline const QString name = QStringLiteral("name");
inline const QString publicName = QStringLiteral("public-name");
inline const QString releaseNotes = QStringLiteral("release-notes");
inline const QString readme = QStringLiteral("readme");
inline const QString language = QStringLiteral("language");
inline const QString release = QStringLiteral("release");
inline const QString publicRelease = QStringLiteral("public-release");
inline const QString status = QStringLiteral("status");
inline const QString releaseDate = QStringLiteral("release-date");
inline const QString url = QStringLiteral("url");
inline const QString baseUrl = QStringLiteral("base-url");
inline const QString fileSize = QStringLiteral("file-size");
inline const QString sha256 = QStringLiteral("sha256");
inline const QString platform = QStringLiteral("platform");
inline const QString comment = QStringLiteral("comment");
inline const QString serial = QStringLiteral("serial"); // attributes of the root
inline const QString expires = QStringLiteral("expires");
} // namespace Word

/// What a package updates: the types that candidates get.
namespace Kind {
inline const QString application = QStringLiteral("Application");
inline const QString cameraFirmware = QStringLiteral("Camera Firmware");
} // namespace Kind

namespace Status {
inline const QString stable = QStringLiteral("STABLE");
inline const QString beta = QStringLiteral("BETA");
} // namespace Status

/// File types of packages, as the ends of their URLs tell them.
namespace Suffix {
inline const QString exe = QStringLiteral("exe");
inline const QString mpkg = QStringLiteral("mpkg"); // of an archive named *.mpkg.zip
inline const QString zip = QStringLiteral("zip");
inline const QString msi = QStringLiteral("msi");
inline const QString deb = QStringLiteral("deb");
inline const QString rpk = QStringLiteral("rpk");
inline const QString rpm = QStringLiteral("rpm");
inline const QString tarGz = QStringLiteral("tar.gz");
inline const QString tarBz2 = QStringLiteral("tar.bz2");
} // namespace Suffix

/// When checks run by themselves, as the store counts them and the settings dialog lists them.
enum class Interval { AtApplicationStart = 0, Daily = 1, Weekly = 2, Monthly = 3 };

/// The language of links that name none, and the one whose release notes are opened unless a policy
/// says otherwise.
inline const QString defaultLanguage = QStringLiteral("en");

} // namespace qv
