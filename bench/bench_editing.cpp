// Update-all against a large repaint pack: one key written into each of 700 variations.
//
//   build/bench/bench_editing
//
// The write runs as one batch with a single file write; the result must be byte for byte what 700 single key
// writes leave, which is computed once, before timing, as the reference. Median of seven repetitions, wall time.

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <system_error>
#include <vector>

#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/vbtext.h"
#include "editing/updateall.h"
#include "workload.h"

namespace {

using fleetwright::clsIniFile;
namespace bench = fleetwright::bench;

constexpr int VARIATIONS = 700;
constexpr int KEYS = 20;

std::string readAll(const std::filesystem::path &path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class Workload
{
public:
    Workload()
        : m_bytes(bench::aircraftCfg({VARIATIONS, KEYS}))
        , m_folder("editing")
        , m_file(m_folder.path() / "aircraft.cfg")
    {
        restore();
    }

    // The original bytes again.
    void restore() const { bench::writeSettledFile(m_file, m_bytes); }

    std::u16string widePath() const { return m_file.u16string(); }
    const std::filesystem::path &file() const { return m_file; }

private:
    std::string m_bytes;
    bench::BenchFolder m_folder;
    std::filesystem::path m_file;
};

Workload &workload()
{
    static Workload data;
    return data;
}

// The same writes one key at a time, each rewriting the file: what the batch must match.
std::string keyByKey(const std::u16string &key, const std::u16string &value)
{
    Workload &data = workload();
    data.restore();
    clsIniFile ini;
    ini.setPath(data.widePath());
    std::vector<std::u16string> sections;
    std::int32_t count = 0;
    ini.EnumerateAllSections(sections, count);
    for (const std::u16string &section : sections) {
        if (fleetwright::LCase(section.substr(0, 7)) != u"fltsim.")
            continue;
        ini.setSection(section);
        ini.setKey(key);
        ini.setValue(value);
    }
    return readAll(data.file());
}

void runUpdateAll(benchmark::State &state, const std::u16string &key)
{
    Workload &data = workload();
    const std::u16string value = u"Corvane Air Lines // from the update-all button";
    const std::string reference = keyByKey(key, value);
    fleetwright::NeverAskDialogs dialogs(true);
    for (auto _ : state) {
        state.PauseTiming();
        data.restore();
        state.ResumeTiming();

        clsIniFile ini;
        ini.setPath(data.widePath());
        fleetwright::updateAll(ini, key, value, {}, false, dialogs);
    }
    if (readAll(data.file()) != reference)
        state.SkipWithError("update-all left other bytes than key-by-key writing");
    state.SetItemsProcessed(state.iterations() * VARIATIONS);
}

// A key every variation has: each value is replaced where it stands.
void BM_UpdateAllExistingKey(benchmark::State &state)
{
    runUpdateAll(state, u"atc_airline");
}

// A key no variation has: each section grows by one line at its end.
void BM_UpdateAllNewKey(benchmark::State &state)
{
    runUpdateAll(state, u"ui_certified");
}

} // namespace

BENCHMARK(BM_UpdateAllExistingKey)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_UpdateAllNewKey)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7)->ReportAggregatesOnly(true);

BENCHMARK_MAIN();
