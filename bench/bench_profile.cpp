// The profile engine against a large repaint pack: 700 variations of 20 keys, 14,000 values.
//
//   build/bench/bench_profile
//
// Every benchmark reports the median of seven repetitions in wall time, since the file system's work counts.

#include <benchmark/benchmark.h>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "core/clsinifile.h"
#include "platform/codepage.h"
#include "platform/fileio.h"
#include "workload.h"

namespace {

using fleetwright::clsIniFile;
namespace bench = fleetwright::bench;

constexpr int VARIATIONS = 700;
constexpr int KEYS = 20;
constexpr int NEW_KEYS = 3; // per variation, in the batch write
constexpr int SINGLE_WRITES = 200;

std::u16string wide(std::string_view bytes)
{
    return fleetwright::platform::fromCodePage(bytes);
}

// One generated aircraft.cfg in a folder of its own, removed when the program ends.
class Workload
{
public:
    Workload()
        : m_bytes(bench::aircraftCfg({VARIATIONS, KEYS}))
        , m_folder("profile")
        , m_file(m_folder.path() / "aircraft.cfg")
    {
        for (int v = 0; v < VARIATIONS; ++v)
            m_sections.push_back(wide("fltsim." + std::to_string(v)));
        for (std::string_view key : bench::variationKeys())
            m_keys.push_back(wide(key));
        restore();
    }

    // Puts the original bytes back.
    void restore() const { bench::writeSettledFile(m_file, m_bytes); }

    const std::filesystem::path &file() const { return m_file; }
    std::u16string widePath() const { return m_file.u16string(); }
    const std::u16string &section(int variation) const { return m_sections[static_cast<std::size_t>(variation)]; }
    const std::u16string &key(int index) const { return m_keys[static_cast<std::size_t>(index)]; }

private:
    std::string m_bytes;
    bench::BenchFolder m_folder;
    std::filesystem::path m_file;
    std::vector<std::u16string> m_sections;
    std::vector<std::u16string> m_keys;
};

Workload &workload()
{
    static Workload instance;
    return instance;
}

// A benchmark that measured a wrong result measured nothing: compare what the engine reads with what was meant
// to be there.
bool holds(clsIniFile &ini, int variation, std::string_view key, const std::string &expected)
{
    ini.setSection(workload().section(variation));
    ini.setKey(wide(key));
    return ini.Value() == wide(expected);
}

// (a) What a folder load costs the profile engine: every value of every variation, one call each, through a
// fresh object, so the one parse of the file is inside the time. Each call looks at the file again, as every
// call must see changes made by others.
std::size_t readAllValues(clsIniFile &ini)
{
    const Workload &data = workload();
    std::size_t characters = 0;
    for (int v = 0; v < VARIATIONS; ++v) {
        ini.setSection(data.section(v));
        for (int k = 0; k < KEYS; ++k) {
            ini.setKey(data.key(k));
            characters += ini.Value().size();
        }
    }
    return characters;
}

// The count of the last pass is checked here, which is what keeps the reads from being optimised away. It is not
// passed through benchmark::DoNotOptimize: with GCC that call ("+m,r") may leave garbage in the variable.
void finishRead(benchmark::State &state, std::size_t characters)
{
    clsIniFile check;
    check.setPath(workload().widePath());
    if (characters == 0 || !holds(check, 0, "title", bench::variationValue(0, "title"))
        || !holds(check, VARIATIONS - 1, "atc_id", bench::variationValue(VARIATIONS - 1, "atc_id")))
        state.SkipWithError("the profile engine read other values than the workload holds");
    state.SetItemsProcessed(state.iterations() * VARIATIONS * KEYS);
    state.counters["file_KiB"] = static_cast<double>(std::filesystem::file_size(workload().file())) / 1024.0;
}

void BM_ReadAllValues(benchmark::State &state)
{
    workload().restore();
    std::size_t characters = 0;
    for (auto _ : state) {
        clsIniFile ini;
        ini.setPath(workload().widePath());
        characters = readAllValues(ini);
    }
    finishRead(state, characters);
}

// (a') The same pass as one batch, which looks at the file once for all 14,000 calls.
void BM_ReadAllValuesInBatch(benchmark::State &state)
{
    workload().restore();
    std::size_t characters = 0;
    for (auto _ : state) {
        clsIniFile ini;
        ini.setPath(workload().widePath());
        clsIniFile::Batch batch(ini);
        characters = readAllValues(ini);
    }
    finishRead(state, characters);
}

// (b) The floor for (a): read the file and cut it into sections, keys and values, nothing more.
void BM_PlainParse(benchmark::State &state)
{
    Workload &data = workload();
    data.restore();
    struct Entry
    {
        std::string_view section;
        std::string_view key;
        std::string_view value;
    };
    std::vector<Entry> entries;
    for (auto _ : state) {
        const std::optional<std::string> bytes = fleetwright::platform::readWholeFile(data.file()).bytes;
        if (!bytes) {
            state.SkipWithError("the workload file cannot be read");
            break;
        }
        entries.clear();
        std::string_view rest(*bytes);
        std::string_view section;
        while (!rest.empty()) {
            const std::size_t end = rest.find_first_of("\r\n");
            std::string_view line = rest.substr(0, end);
            rest.remove_prefix(end == std::string_view::npos ? rest.size() : end);
            if (rest.starts_with("\r\n"))
                rest.remove_prefix(2);
            else if (!rest.empty())
                rest.remove_prefix(1);
            if (line.starts_with('[')) {
                const std::size_t close = line.rfind(']');
                if (close != std::string_view::npos)
                    section = line.substr(1, close - 1);
                continue;
            }
            const std::size_t equals = line.find('=');
            if (equals != std::string_view::npos)
                entries.push_back({section, line.substr(0, equals), line.substr(equals + 1)});
        }
        benchmark::DoNotOptimize(entries.data());
        benchmark::ClobberMemory();
    }
    if (entries.size() < static_cast<std::size_t>(VARIATIONS * KEYS))
        state.SkipWithError("the plain parse found fewer entries than the workload holds");
    state.SetItemsProcessed(state.iterations() * VARIATIONS * KEYS);
}

// New values for every key write of (c): per variation the first KEYS - NEW_KEYS keys get a new value, and
// NEW_KEYS keys the file lacks are added, 14,000 writes in all.
struct BatchWrite
{
    int variation;
    int key;
    std::u16string value;
};

const std::vector<BatchWrite> &batchWrites()
{
    static const std::vector<BatchWrite> writes = [] {
        std::vector<BatchWrite> list;
        for (int v = 0; v < VARIATIONS; ++v) {
            for (int k = 0; k < KEYS - NEW_KEYS; ++k)
                list.push_back({v, k, wide(bench::variationValue(v, bench::variationKeys()[k], 1))});
            for (int k = KEYS; k < KEYS + NEW_KEYS; ++k)
                list.push_back({v, k, wide(bench::variationValue(v, bench::variationKeys()[k], 1))});
        }
        return list;
    }();
    return writes;
}

// (c) An update-all or renumber sized change: 14,000 key writes in one batch, ending with the one file write.
void BM_BatchWrite(benchmark::State &state)
{
    Workload &data = workload();
    const std::vector<BatchWrite> &writes = batchWrites();
    for (auto _ : state) {
        state.PauseTiming();
        data.restore();
        state.ResumeTiming();

        clsIniFile ini;
        ini.setPath(data.widePath());
        clsIniFile::Batch batch(ini);
        for (const BatchWrite &write : writes) {
            ini.setSection(data.section(write.variation));
            ini.setKey(data.key(write.key));
            ini.setValue(write.value);
        }
        batch.commit();
    }
    clsIniFile check;
    check.setPath(data.widePath());
    const int last = VARIATIONS - 1;
    if (!holds(check, last, "title", bench::variationValue(last, "title", 1))
        || !holds(check, last, bench::variationKeys()[KEYS],
                  bench::variationValue(last, bench::variationKeys()[KEYS], 1)))
        state.SkipWithError("the batch did not leave the written values in the file");
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(writes.size()));
}

// (d) For comparison: single key writes without a batch, each of which rewrites the whole file.
void BM_SingleKeyWrites(benchmark::State &state)
{
    Workload &data = workload();
    for (auto _ : state) {
        state.PauseTiming();
        data.restore();
        state.ResumeTiming();

        clsIniFile ini;
        ini.setPath(data.widePath());
        ini.setKey(data.key(10)); // atc_flight_number
        for (int i = 0; i < SINGLE_WRITES; ++i) {
            const int variation = i * VARIATIONS / SINGLE_WRITES;
            ini.setSection(data.section(variation));
            ini.setValue(wide(bench::variationValue(variation, "atc_flight_number", 1)));
        }
    }
    clsIniFile check;
    check.setPath(data.widePath());
    const int last = (SINGLE_WRITES - 1) * VARIATIONS / SINGLE_WRITES;
    if (!holds(check, last, "atc_flight_number", bench::variationValue(last, "atc_flight_number", 1)))
        state.SkipWithError("the key writes did not reach the file");
    state.SetItemsProcessed(state.iterations() * SINGLE_WRITES);
}

} // namespace

BENCHMARK(BM_ReadAllValues)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7)->ReportAggregatesOnly(true);
BENCHMARK(BM_ReadAllValuesInBatch)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_PlainParse)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7)->ReportAggregatesOnly(true);
BENCHMARK(BM_BatchWrite)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7)->ReportAggregatesOnly(true);
BENCHMARK(BM_SingleKeyWrites)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7)->ReportAggregatesOnly(true);

BENCHMARK_MAIN();
