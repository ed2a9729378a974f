// "verify": whether a host that trusts the given keys, and has seen nothing yet, would take a catalogue with its
// signature, and what it would offer of it.
#include "Commands.h"

#include "Kinds.h"
#include "Minisign.h"
#include "Seal.h"

#include <QFile>

#include <algorithm>

namespace qv {

namespace {

constexpr QLatin1String keyOption("key");
constexpr QLatin1String signatureOption("signature");

/// The key that @p text is, or that stands in the file of that name.
QString keyOf(const QString &text)
{
    if (Minisign::keyFromText(text))
        return text;
    QFile file(text);
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : file.read(Minisign::longestSignature).split('\n')) {
            if (Minisign::keyFromText(QString::fromLatin1(line)))
                return QString::fromLatin1(line);
        }
    }
    throw Failure(QStringLiteral("\"%1\" is neither a public key of minisign nor a file with one").arg(text));
}

QStringList keysOf(const QStringList &texts)
{
    QStringList keys;
    for (const QString &text : texts)
        keys.append(keyOf(text));
    if (keys.isEmpty())
        throw Failure(QStringLiteral("verify wants --key"));
    return keys;
}

/// Where clients look for the signature of a catalogue.
QString signatureBeside(const QString &source)
{
    return isAddress(source) ? signatureUrl(QUrl(source)).toString(QUrl::FullyEncoded)
                             : source + QStringLiteral(".minisig");
}

QString reasonOf(const Seal &seal, const QString &signature)
{
    switch (seal.verdict) {
    case Seal::NoSignature:
        return QStringLiteral("there is no signature: ") + signature
            + QStringLiteral(" is missing or empty; minisign -Sm makes it");
    case Seal::NotASignature:
        return signature
            + QStringLiteral(" is no signature of minisign, or one that was made with -l, which clients do not take");
    case Seal::UnknownKey:
        return QStringLiteral("it is signed with the key %1, which is none of those given").arg(seal.key);
    case Seal::WrongSignature:
        return QStringLiteral("the signature of the key %1 is for another catalogue: this one was changed after it was "
                              "signed, or one of the two files is older than the other")
            .arg(seal.key);
    case Seal::NoSerial:
        return QStringLiteral(
                   "it is signed with the key %1, but has no serial and no time of expiry: seal it, then sign "
                   "it anew")
            .arg(seal.key);
    case Seal::Expired:
        return QStringLiteral("it expired at %1: seal and sign it anew").arg(seal.expires.toString(Qt::ISODate));
    case Seal::OlderThanSeen: // not where nothing has been seen
    case Seal::Accepted:
        break;
    }
    return QString();
}

void tellPackages(const Catalogue &catalogue)
{
    QStringList missing;
    for (int i = 0; i < catalogue.packages.size(); ++i) {
        const PackageInfo &package = catalogue.packages.at(i);
        QStringList lacks;
        if (!isSha256(package.sha256))
            lacks << Word::sha256;
        if (package.fileSize == 0)
            lacks << Word::fileSize;
        if (!lacks.isEmpty())
            missing << QStringLiteral("not offered: ") + catalogue.title(i) + QStringLiteral(": no ")
                    + lacks.join(QStringLiteral(", no "));
    }
    printLine(QStringLiteral("packages that can be offered: %1 of %2")
                  .arg(catalogue.packages.size() - missing.size())
                  .arg(catalogue.packages.size()));
    for (const QString &line : std::as_const(missing))
        printLine(line);
}

ExitCode refused(const QString &reason)
{
    printLine(QStringLiteral("refused: ") + reason);
    return Findings;
}

} // namespace

bool isSha256(const QByteArray &text)
{
    return text.size() == 64 && std::all_of(text.cbegin(), text.cend(), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
           });
}

void addVerifyOptions(QCommandLineParser &parser)
{
    for (const QLatin1String name : { keyOption, signatureOption })
        parser.addOption(QCommandLineOption(name, QString(), QStringLiteral("value")));
}

ExitCode verify(const QString &source, const QCommandLineParser &options)
{
    const QStringList keys = keysOf(options.values(keyOption));
    const QByteArray bytes = readSource(source);
    if (bytes.isNull())
        throw Failure(source + QStringLiteral(": not there"));
    const bool isGiven = options.isSet(signatureOption);
    const QString place = isGiven ? options.value(signatureOption) : signatureBeside(source);
    const QByteArray signature = readSource(place);
    if (isGiven && signature.isNull())
        throw Failure(place + QStringLiteral(": not there"));

    const Seal seal = examineSeal(bytes, signature, keys, SeenSeals(), QDateTime::currentDateTimeUtc());
    if (seal.verdict != Seal::Accepted)
        return refused(reasonOf(seal, place));
    try {
        const Catalogue catalogue = parseCatalogue(source, bytes);
        printLine(QStringLiteral("accepted: key %1, serial %2, expires %3")
                      .arg(seal.key)
                      .arg(seal.seal.serial)
                      .arg(seal.expires.toString(Qt::ISODate)));
        tellPackages(catalogue);
    } catch (const Refused &refusal) {
        return refused(QString::fromUtf8(refusal.what()));
    }
    return Done;
}

} // namespace qv
