// What one installation is offered of a catalogue, and the texts that people read of it. Called by the client after
// each check and for its table, and by qv-catalogue.
#include "Offer.h"

#include "Kinds.h"
#include "PackageIndex.h"
#include "Selection.h"

#include <QCoreApplication>
#include <QLocale>

namespace qv {

namespace {

/// True for what nobody sees and what turns the direction of the text around it.
bool isControl(QChar c)
{
    const bool turns = (c >= QChar(0x202a) && c <= QChar(0x202e)) || (c >= QChar(0x2066) && c <= QChar(0x2069));
    return turns || (c.category() == QChar::Other_Control && !c.isSpace());
}

/// Shows such characters as what they are: <U+202E>.
QString visible(const QString &text)
{
    QString shown;
    for (const QChar c : text) {
        shown += isControl(c)
            ? QStringLiteral("<U+%1>").arg(QString::number(c.unicode(), 16).toUpper(), 4, QLatin1Char('0'))
            : QString(c);
    }
    return shown;
}

QString joined(const QStringSet &words)
{
    return visible(QStringList(words.cbegin(), words.cend()).join(QStringLiteral(", ")));
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
    const auto filter = [status = transformReleaseStatus(beta)](const QString &name, const VersionNumber &installed,
                                                                const QStringSet &platforms) {
        return PackageInfo(QString(), name, installed.toString(), status, QDateTime(), platforms, QStringSet(),
                           QStringLiteral(""), QStringLiteral(""));
    };

    PackageInfoList cameraPackages;
    const PackageIndex index(catalogue);
    for (const auto &camera : settings.currentCameraVersions)
        cameraPackages += findPackageCandidates(catalogue, index, filter(QString(), camera.second, { camera.first }),
                                                Kind::cameraFirmware, QStringList());
    eliminateDuplicatePackages(cameraPackages);

    const QStringSet platforms(settings.supportedPlatforms.cbegin(), settings.supportedPlatforms.cend());
    // Deliberate: the application's name counts, not the stored product.
    return findPackageCandidates(catalogue, filter(applicationName, settings.versionNumber, platforms),
                                 Kind::application, settings.supportedPackageTypes)
        + cameraPackages;
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
