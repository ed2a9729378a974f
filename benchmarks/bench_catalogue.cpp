// Reading catalogues, against building and destroying the DOM of the same bytes; choosing packages from them; making
// the client. TZ=Europe/Berlin bench_catalogue --benchmark_enable_random_interleaving=true --benchmark_repetitions=9
#include "DownloadManager.h"
#include "PackageIndex.h"
#include "SoftwareUpdateClient.h"
#include "XmlTree.h"

#include <QApplication>
#include <QBuffer>
#include <QDomDocument>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <benchmark/benchmark.h>

using namespace qv;

namespace {

QByteArray package(int number)
{
    const QByteArray n = QByteArray::number(number);
    return "<package><name>QC-" + QByteArray::number(number % 500) + "</name><public-name>Quorvel QC " + n
        + "</public-name><platform>QC-" + QByteArray::number(number % 500) + "</platform><release>10.2." + n
        + "</release><public-release>10.2</public-release><status>STABLE</status>"
          "<language>de en</language><file url='firmware/qc-"
        + n + ".zip' file-size='" + n
        + "kB' release-date='2024-03-05 10:20:30'/>"
          "<release-notes language='en' url='http://updates.example/notes/en/"
        + n + ".html'/><release-notes language='de' url='http://updates.example/notes/de/" + n + ".html'/></package>";
}

/// @p packagesPerSet of 0: all in one.
QByteArray catalogue(int packages, int packagesPerSet)
{
    QByteArray xml = "<softwareList base-url='http://updates.example/'>";
    if (packagesPerSet == 0)
        packagesPerSet = packages;
    for (int i = 0; i < packages; ++i) {
        if (i % packagesPerSet == 0)
            xml += "<package-set type='Camera Firmware'>";
        xml += package(i);
        if ((i + 1) % packagesPerSet == 0 || i + 1 == packages)
            xml += "</package-set>";
    }
    return xml + "</softwareList>";
}

PackageInfoList parse(QByteArray &xml)
{
    QBuffer device(&xml);
    device.open(QIODevice::ReadOnly);
    return DownloadManager::parseXML(&device);
}

void dom(benchmark::State &state)
{
    QByteArray xml = catalogue(int(state.range(0)), int(state.range(1)));
    for (auto _ : state) {
        QXmlStreamReader reader(xml);
        reader.setNamespaceProcessing(false);
        QDomDocument document;
        document.setContent(&reader, false);
        benchmark::DoNotOptimize(document);
    }
}

void tree(benchmark::State &state)
{
    QByteArray xml = catalogue(int(state.range(0)), int(state.range(1)));
    for (auto _ : state) {
        QBuffer device(&xml);
        device.open(QIODevice::ReadOnly);
        benchmark::DoNotOptimize(XmlTree(&device).documentElement());
    }
}

void parse(benchmark::State &state)
{
    QByteArray xml = catalogue(int(state.range(0)), int(state.range(1)));
    for (auto _ : state)
        benchmark::DoNotOptimize(parse(xml));
}

void candidatesOf500Models(benchmark::State &state)
{
    QByteArray xml = catalogue(int(state.range(0)), 0);
    PackageInfoList packages = parse(xml);
    for (auto _ : state) {
        const PackageIndex index(packages);
        for (int model = 0; model < 500; ++model) {
            PackageInfo filter;
            filter.release = "10.1";
            filter.status = "STABLE";
            filter.platforms = { "QC-" + QString::number(model) };
            benchmark::DoNotOptimize(
                DownloadManager::findPackageCandidates(packages, index, filter, "Camera Firmware", {}));
        }
    }
}

void duplicates(benchmark::State &state)
{
    QByteArray xml = catalogue(int(state.range(0)), 0);
    const PackageInfoList packages = parse(xml);
    for (auto _ : state) {
        PackageInfoList copy = packages;
        DownloadManager::eliminateDuplicatePackages(copy);
        benchmark::DoNotOptimize(copy);
    }
}

void makeClient(benchmark::State &state)
{
    for (auto _ : state)
        SoftwareUpdateClient client("Host", VersionNumber("1.0"), "http://127.0.0.1/", nullptr);
}

/// The settings traffic of a construction, with as many keys.
void makeClientSettingsOnly(benchmark::State &state)
{
    for (auto _ : state) {
        QSettings("Bench", "Bench").value("product");
        QSettings settings("Bench", "Bench");
        for (const char *key : { "a", "b", "c", "d", "e", "f", "g", "h" })
            settings.setValue(key, "value");
    }
}

void oneSetAndOnePerPackage(benchmark::internal::Benchmark *benchmark)
{
    for (const int packages : { 30, 1000, 10'000, 20'000 }) {
        benchmark->Args({ packages, 0 });
        benchmark->Args({ packages, 1 });
    }
}

BENCHMARK(dom)->Apply(oneSetAndOnePerPackage)->Unit(benchmark::kMillisecond);
BENCHMARK(tree)->Apply(oneSetAndOnePerPackage)->Unit(benchmark::kMillisecond);
BENCHMARK(parse)->Apply(oneSetAndOnePerPackage)->Unit(benchmark::kMillisecond);
BENCHMARK(candidatesOf500Models)->Arg(20'000)->Unit(benchmark::kMillisecond);
BENCHMARK(duplicates)->Arg(4000)->Unit(benchmark::kMillisecond);
BENCHMARK(makeClient)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(makeClientSettingsOnly)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir home;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home.path());
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("Bench");
    QCoreApplication::setApplicationName("Bench");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
