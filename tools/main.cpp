// qv-catalogue: what clients make of a catalogue, for those who run an update server. Reads the command line and hands
// over to the command; leaves its exit code.
#include "Commands.h"

#include "LogQt.h"

#include <QCoreApplication>

#include <cstdio>

using namespace qv;

namespace {

const char usage[] =
    R"(usage: qv-catalogue lint   FILE|URL [--ignore KINDS] [--packages DIR]
       qv-catalogue show   FILE|URL [--json]
       qv-catalogue offer  FILE|URL --name NAME --version VERSION [--beta] [--types TYPES]
                           [--platforms PLATFORMS] [--camera MODEL=VERSION]... [--language CODE]
       qv-catalogue seal   FILE --packages DIR --expires TIME
       qv-catalogue verify FILE|URL --key KEY [--key KEY]... [--signature FILE|URL]

lint    tells what is wrong or surprising in the catalogue of an update server, one finding a line
show    prints the packages as clients read them, inherited values filled in
offer   prints the table that an installation would be shown
seal    writes sizes and hashes of the packages, the next serial and a time of expiry into the file, to be signed
verify  says whether a client that trusts the keys would take the catalogue with its signature

  --ignore KINDS            leave out findings of these kinds; a finding's kind stands at its end, as in [order]
  --packages DIR            the folder with the packages' files: that of "http://host/a/b.zip" is a/b.zip or b.zip in it
  --json                    print an array of objects instead of a table
  --name NAME               the name of the application, as the host sets it
  --version VERSION         its installed version
  --beta                    releases of any status count, not those with the status STABLE alone
  --types TYPES             suffixes of the packages that the host takes; "" for any
                            (tar.gz,rpm,deb,tar.bz2 unless given)
  --platforms PLATFORMS     the platforms that the host takes (any unless given)
  --camera MODEL=VERSION    a camera and the firmware installed on it; may be repeated
  --language CODE           leave out the rows that are hidden from a user of this language, as en or de
  --expires TIME            12h, 30d or 4w from now, or a time in UTC as 2026-12-31T00:00:00Z
  --key KEY                 a public key of minisign, or the file with it
  --signature FILE|URL      the signature (the catalogue's address with .minisig behind it unless given)

KINDS, TYPES and PLATFORMS are lists separated by commas.

Exit status: 0 nothing found by lint, something to offer, accepted by verify; 1 findings, nothing to offer, refused;
2 the command could not work.
)";

struct Command
{
    const char *name;
    void (*addOptions)(QCommandLineParser &parser);
    ExitCode (*run)(const QString &source, const QCommandLineParser &options);
};

const Command commands[] = { { "lint", addLintOptions, lint },
                             { "show", addShowOptions, show },
                             { "offer", addOfferOptions, offer },
                             { "seal", addSealOptions, seal },
                             { "verify", addVerifyOptions, verify } };

ExitCode run(const Command &command, const QStringList &arguments)
{
    QCommandLineParser parser;
    command.addOptions(parser);
    if (!parser.parse(arguments))
        throw Failure(parser.errorText());
    if (parser.positionalArguments().size() != 1)
        throw Failure(QStringLiteral("%1 wants one file or URL").arg(QLatin1String(command.name)));
    return command.run(parser.positionalArguments().constFirst(), parser);
}

ExitCode run(QStringList arguments)
{
    const QString word = arguments.value(1);
    if (arguments.contains(QLatin1String("--help")) || word == QLatin1String("-h")) {
        std::fputs(usage, stdout);
        return Done;
    }
    if (word == QLatin1String("--version")) {
        std::puts("qv-catalogue " VERSION);
        return Done;
    }
    for (const Command &command : commands) {
        if (word == QLatin1String(command.name)) {
            arguments.removeAt(1);
            return run(command, arguments);
        }
    }
    std::fputs(usage, stderr);
    return Error;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    // What the library would log is told as findings and failures.
    for (const Log::ELevel level : { Log::Progress, Log::Warning, Log::Error })
        LogQt::setStream(level, nullptr);
    try {
        return run(QCoreApplication::arguments());
    } catch (const Failure &failure) {
        printLine(QStringLiteral("qv-catalogue: ") + QString::fromUtf8(failure.what()), stderr);
        return Error;
    }
}
