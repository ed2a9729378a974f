// What one installation is offered of a catalogue, and the texts that people read of it. Called by the client after
// each check and for its table, and by qv-catalogue.
#include "Offer.h"

#include "CatalogueValues.h"
#include "Kinds.h"
#include "Selection.h"

#include <QCoreApplication>
#include <QLocale>

namespace qv {

namespace {

QString joined(const QStringSet &words)
{
    QString text;
    const auto first = words.cbegin(); // once: to walk through a set of one takes as long as through a hundred
    for (auto word = first; word != words.cend(); ++word)
        text += word == first ? *word : QStringLiteral(", ") + *word;
    return visible(text);
}

/// Deliberate: the internal name comes first and the public release, unlike in PackageInfo::displayName().
QString nameAndRelease(const PackageInfo &package)
{
    return visible(package.name.isEmpty() ? package.publicName : package.name) + QLatin1Char(' ')
        + visible(package.publicRelease.isEmpty() ? package.release : package.publicRelease)
        + (package.status == Status::beta ? QStringLiteral(" BETA") : QString());
}

QString releaseLine(const PackageInfo &package)
{
    if (package.releaseDate.isNull())
        return QString();
    return QCoreApplication::translate("SoftwareUpdateClient", "Published on %1")
        .arg(QLocale::system().toString(package.releaseDate.date(), QLocale::LongFormat));
}

} // namespace

QStringList defaultPackageTypes()
{
    return { Suffix::tarGz, Suffix::rpm, Suffix::deb, Suffix::tarBz2 };
}

QString transformReleaseStatus(bool beta)
{
    return beta ? QString() : Status::stable;
}

PackageInfoList offeredPackages(PackageInfoList catalogue, const QString &applicationName,
                                const SoftwareUpdateSettings &settings, bool beta)
{
    const QString status = transformReleaseStatus(beta);
    const PackageInfoList firmware = findFirmware(catalogue, settings.currentCameraVersions, status);
    const QStringSet platforms(settings.supportedPlatforms.cbegin(), settings.supportedPlatforms.cend());
    // Deliberate: the application's name counts, not the stored product.
    const PackageInfo filter(QString(), applicationName, settings.versionNumber.toString(), status, QDateTime(),
                             platforms, QStringSet(), QString(), QString());
    return findPackageCandidates(catalogue, filter, Kind::application, settings.supportedPackageTypes) + firmware;
}

QStringList packageRow(const PackageInfo &package)
{
    const double megabytes = double(quint64(package.fileSize)) / (1 << 20);
    return { nameAndRelease(package), QString::number(megabytes, 'f', 1) + QStringLiteral(" MB"),
             visible(package.suffix),
             package.type == Kind::cameraFirmware ? joined(package.languages)
                                                  : QCoreApplication::translate("SoftwareUpdateClient", "Multilingual"),
             joined(package.platforms) };
}

QString packageComment(const PackageInfo &package)
{
    // Escaped: the catalogue's texts are no markup of ours, and the box would fetch what an image tag names.
    const QString url = package.url.toString();
    return QStringLiteral("<b>") + nameAndRelease(package).toHtmlEscaped() + QStringLiteral(", ")
        + visible(package.type).toHtmlEscaped() + QStringLiteral("</b><br />") + releaseLine(package)
        + QStringLiteral("<a href=\"") + url.toHtmlEscaped() + QStringLiteral("\">") + visible(url).toHtmlEscaped()
        + QStringLiteral("</a><br />");
}

SoftUpIndexList foreignLanguageRows(const PackageInfoList &packages, const QString &language)
{
    // Deliberate: to English users only what is offered in German too counts as theirs.
    const QStringSet wanted =
        language == QLatin1String("en") ? QStringSet { QStringLiteral("de"), language } : QStringSet { language };
    SoftUpIndexList foreign;
    bool oneMatches = false;
    for (int row = 0; row < packages.size(); ++row) {
        const PackageInfo &package = packages.at(row);
        if (package.type != Kind::cameraFirmware)
            continue;
        if (package.languages.contains(wanted))
            oneMatches = true;
        else
            foreign.append(row);
    }
    return oneMatches ? foreign : SoftUpIndexList();
}

} // namespace qv
