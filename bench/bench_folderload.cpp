// The reading half of a folder load against a large repaint pack: 700 variations of 20 keys, every section of
// the file read, the rows, the folder-wide fields and the file lists built.
//
//   build/bench/bench_folderload
//
// The median of seven repetitions in wall time, since the file system's work counts. The target is 50 ms.

#include <benchmark/benchmark.h>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <system_error>

#include "core/clsinifile.h"
#include "folderview/folderload.h"
#include "platform/codepage.h"
#include "workload.h"

namespace {

using namespace fleetwright;
namespace bench = fleetwright::bench;

constexpr int VARIATIONS = 700;
constexpr int KEYS = 20;

// The generated aircraft folder: aircraft.cfg, a texture folder per tenth variation, a model and an air file.
class AircraftFolder
{
public:
    AircraftFolder()
        : m_folder("load")
    {
        const std::filesystem::path &folder = m_folder.path();
        std::filesystem::create_directories(folder / "model");
        for (int v = 0; v < VARIATIONS; v += 10)
            std::filesystem::create_directories(folder / ("texture.L" + std::to_string(v)));
        std::ofstream(folder / "Corvane737.air", std::ios::binary) << "air";
        bench::writeSettledFile(folder / "aircraft.cfg", bench::aircraftCfg({VARIATIONS, KEYS}));
    }

    std::u16string path() const { return m_folder.path().u16string(); }

private:
    bench::BenchFolder m_folder;
};

void BM_FolderLoad(benchmark::State &state)
{
    static const AircraftFolder folder;
    FolderLoadInput input;
    input.folder = folder.path();
    FolderLoadResult result;
    for (auto _ : state) {
        // A fresh profile object, so the one parse of the file is inside the time.
        clsIniFile AircraftIni;
        readAircraftFolder(input, AircraftIni, result);
    }
    const std::u16string lastTitle = platform::fromCodePage(bench::variationValue(VARIATIONS - 1, "title"));
    if (result.rows.size() != VARIATIONS || result.rows.back()[GridColumn::Title] != lastTitle
        || result.textureChoices.size() != VARIATIONS / 10 || result.folderAirFiles.size() != 1)
        state.SkipWithError("the load read other rows than the workload holds");
    state.SetItemsProcessed(state.iterations() * VARIATIONS);
}

} // namespace

BENCHMARK(BM_FolderLoad)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7)->ReportAggregatesOnly(true);

BENCHMARK_MAIN();
