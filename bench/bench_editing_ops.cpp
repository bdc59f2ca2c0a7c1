// The whole-file editing operations against a large repaint pack: 700 variations of 20 keys, each operation
// on a fresh copy of the file, backups off.
//
//   build/bench/bench_editing_ops
//
// The median of seven repetitions in wall time, since writing the file counts. The target is 1 s each.

#include <benchmark/benchmark.h>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <system_error>

#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "editing/keyremoval.h"
#include "editing/sectionrenumber.h"
#include "editing/sortkeys.h"
#include "platform/fileio.h"
#include "workload.h"

namespace {

using namespace fleetwright;
namespace bench = fleetwright::bench;

constexpr int VARIATIONS = 700;
constexpr int KEYS = 20;

class AircraftFile
{
public:
    AircraftFile()
        : m_bytes(bench::aircraftCfg({VARIATIONS, KEYS}))
        , m_folder("edit")
    {}

    // The generated file, as it stands before each run.
    std::u16string fresh() const
    {
        const std::filesystem::path cfg = m_folder.path() / "aircraft.cfg";
        bench::writeSettledFile(cfg, m_bytes);
        return cfg.u16string();
    }

    std::string current() const { return platform::readWholeFile(m_folder.path() / "aircraft.cfg").bytes.value_or(""); }
    const std::string &original() const { return m_bytes; }

private:
    std::string m_bytes;
    bench::BenchFolder m_folder;
};

const AircraftFile &aircraftFile()
{
    static const AircraftFile file;
    return file;
}

void BM_Renumber(benchmark::State &state)
{
    const AircraftFile &file = aircraftFile();
    for (auto _ : state) {
        state.PauseTiming();
        const std::u16string path = file.fresh();
        state.ResumeTiming();
        Renumber_fltsim(path, false);
    }
    if (file.current().find("[fltsim.699]\r\n") == std::string::npos)
        state.SkipWithError("the renumbering lost sections");
    state.SetItemsProcessed(state.iterations() * VARIATIONS);
}

void BM_SortKeys(benchmark::State &state)
{
    const AircraftFile &file = aircraftFile();
    NeverAskDialogs dialogs;
    for (auto _ : state) {
        state.PauseTiming();
        const std::u16string path = file.fresh();
        state.ResumeTiming();
        clsIniFile AircraftIni;
        AircraftIni.setPath(path);
        DoSortKeys(AircraftIni, false, dialogs);
    }
    if (file.current().size() < file.original().size() / 2 || file.current() == file.original())
        state.SkipWithError("the sort left the file as it was, or lost it");
    state.SetItemsProcessed(state.iterations() * VARIATIONS);
}

void BM_KeyRemoval(benchmark::State &state)
{
    const AircraftFile &file = aircraftFile();
    std::int16_t count = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const std::u16string path = file.fresh();
        state.ResumeTiming();
        // What the dialog does: the list, the delete of three marked keys, the list again.
        clsIniFile AircraftIni;
        AircraftIni.setPath(path);
        const std::vector<std::u16string> list = LoadList(AircraftIni);
        count = RemoveMarkedKeys(AircraftIni, {list.at(0), list.at(1), list.at(2)});
        benchmark::DoNotOptimize(LoadList(AircraftIni));
    }
    if (count != 3 * VARIATIONS || file.current().size() >= file.original().size())
        state.SkipWithError("the delete did not reach every variation");
    state.SetItemsProcessed(state.iterations() * VARIATIONS);
}

} // namespace

BENCHMARK(BM_Renumber)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7)->ReportAggregatesOnly(true);
BENCHMARK(BM_SortKeys)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7)->ReportAggregatesOnly(true);
BENCHMARK(BM_KeyRemoval)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7)->ReportAggregatesOnly(true);

BENCHMARK_MAIN();
