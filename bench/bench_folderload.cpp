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
    {
        std::random_device random;
        m_folder = std::filesystem::temp_directory_path()
            / ("fleetwright-bench-load-" + std::to_string(random()) + "-" + std::to_string(random()));
        std::filesystem::create_directories(m_folder / "model");
        for (int v = 0; v < VARIATIONS; v += 10)
            std::filesystem::create_directories(m_folder / ("texture.L" + std::to_string(v)));
        std::ofstream(m_folder / "Corvane737.air", std::ios::binary) << "air";
        const std::string bytes = bench::aircraftCfg({VARIATIONS, KEYS});
        const std::filesystem::path cfg = m_folder / "aircraft.cfg";
        std::ofstream(cfg, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        // A file written a moment ago is compared byte by byte before its parse is trusted; no folder the
        // user opens is that young.
        std::filesystem::last_write_time(cfg, std::filesystem::file_time_type::clock::now() - std::chrono::seconds(5));
    }

    ~AircraftFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

    std::u16string path() const { return m_folder.u16string(); }

private:
    std::filesystem::path m_folder;
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
        || result.combo_Texture.size() != VARIATIONS / 10 || result.lst_Airfile.size() != 1)
        state.SkipWithError("the load read other rows than the workload holds");
    state.SetItemsProcessed(state.iterations() * VARIATIONS);
}

} // namespace

BENCHMARK(BM_FolderLoad)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7)->ReportAggregatesOnly(true);

BENCHMARK_MAIN();
