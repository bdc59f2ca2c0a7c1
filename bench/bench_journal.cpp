// What the journal adds to the operations it records: renumber, sort keys and update-all on a 700-variation
// aircraft.cfg, and validate-all of a 2,000-folder library that needs no repair, each without (journal:0)
// and inside (journal:1) a journaled operation. The journal lives in a folder of the benchmark's own.
//
//   build/bench/bench_journal [--benchmark_filter=ValidateAll]
//
// Medians of the repetitions, wall time. The targets: journal:1 at most 20 % above journal:0 for the three
// edits, at most 10 % for validate-all. Each edit starts from bytes the journal has not seen yet, as a
// user's next change does, so the old bytes are stored every time.

#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "editing/sectionrenumber.h"
#include "editing/sortkeys.h"
#include "editing/updateall.h"
#include "history/journal.h"
#include "validation/batch.h"
#include "workload.h"

namespace {

using namespace fleetwright;
namespace bench = fleetwright::bench;
namespace fs = std::filesystem;

constexpr int VARIATIONS = 700;
constexpr int KEYS = 20;
constexpr int LIBRARY_FOLDERS = 2000;

Journal &journal()
{
    static const bench::BenchFolder folder("journal");
    static Journal journal(folder.path() / "history");
    return journal;
}

class AircraftFile
{
public:
    AircraftFile()
        : m_bytes(bench::aircraftCfg({VARIATIONS, KEYS}))
        , m_folder("journaled-edit")
    {}

    // The generated file with a last line of its own, so that no two runs start from the same bytes.
    std::u16string fresh()
    {
        const fs::path cfg = m_folder.path() / "aircraft.cfg";
        bench::writeSettledFile(cfg, m_bytes + "// run " + std::to_string(++m_runs) + "\r\n");
        return cfg.u16string();
    }
    const fs::path &folder() const { return m_folder.path(); }

private:
    std::string m_bytes;
    bench::BenchFolder m_folder;
    int m_runs = 0;
};

AircraftFile &aircraftFile()
{
    static AircraftFile file;
    return file;
}

// Runs change once per iteration on a fresh file, inside a journaled operation when the argument says so.
template<typename Change> void runEdit(benchmark::State &state, const char16_t *name, Change change)
{
    AircraftFile &file = aircraftFile();
    const bool journaled = state.range(0) != 0;
    for (auto _ : state) {
        state.PauseTiming();
        const std::u16string path = file.fresh();
        state.ResumeTiming();
        std::optional<JournalOperation> operation;
        if (journaled)
            operation.emplace(journal(), file.folder(), name);
        change(path);
    }
    if (journaled && journal().operations(file.folder()).empty())
        state.SkipWithError("nothing was journaled");
    state.SetItemsProcessed(state.iterations() * VARIATIONS);
}

void BM_Renumber(benchmark::State &state)
{
    runEdit(state, u"Renumber", [](const std::u16string &path) { Renumber_fltsim(path, false); });
}

void BM_SortKeys(benchmark::State &state)
{
    NeverAskDialogs dialogs;
    runEdit(state, u"Sort keys", [&dialogs](const std::u16string &path) {
        clsIniFile AircraftIni;
        AircraftIni.setPath(path);
        DoSortKeys(AircraftIni, false, dialogs);
    });
}

void BM_UpdateAll(benchmark::State &state)
{
    NeverAskDialogs dialogs(true);
    runEdit(state, u"Update all atc_airline", [&dialogs](const std::u16string &path) {
        clsIniFile AircraftIni;
        AircraftIni.setPath(path);
        updateAll(AircraftIni, u"atc_airline", u"Corvane Air Lines", {}, false, dialogs);
    });
}

void write(const fs::path &path, const std::string &bytes)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// A small clean repaint pack: three variations with their textures, a shared FSX model, an air file.
void writeAircraft(const fs::path &folder, int number)
{
    std::string cfg = "[general]\r\natc_type=CORVANE\r\n";
    for (int v = 0; v < 3; ++v) {
        const std::string texture = "l" + std::to_string(v);
        cfg += "[fltsim." + std::to_string(v) + "]\r\ntitle=Corvane " + std::to_string(number) + " livery "
            + std::to_string(v) + "\r\nsim=corvane\r\nmodel=\r\ntexture=" + texture + "\r\nui_variation=Livery "
            + std::to_string(v) + "\r\n\r\n";
        write(folder / ("texture." + texture) / "corvane_t.dds", std::string(4096, 'd'));
    }
    write(folder / "aircraft.cfg", cfg);
    write(folder / "model" / "model.cfg", "[models]\r\nnormal=corvane\r\n");
    std::string mdl(4096, 'm');
    mdl.replace(8, 4, "MDLX");
    write(folder / "model" / "corvane.mdl", mdl);
    write(folder / "corvane.air", std::string(1024, 'a'));
}

// Generated once per run, removed at its end.
class Library
{
public:
    Library()
        : m_folder("journaled-library")
    {
        for (int i = 0; i < LIBRARY_FOLDERS; ++i)
            writeAircraft(m_folder.path() / "Aircraft" / ("corvane" + std::to_string(i)), i);
    }
    const fs::path &root() const { return m_folder.path(); }

private:
    bench::BenchFolder m_folder;
};

const fs::path &library()
{
    static const Library library;
    return library.root();
}

void BM_ValidateAll(benchmark::State &state)
{
    const fs::path &root = library();
    BatchInput input;
    input.BatchRoot = (root / "Aircraft").u16string();
    input.AnalyzeOptionList.assign(23, u"1");
    input.environment.TempFolder = (root / "").u16string();
    input.journal = state.range(0) != 0 ? &journal() : nullptr;
    NeverAskDialogs dialogs;
    std::size_t reported = 0;
    for (auto _ : state) {
        clsIniFile AircraftIni;
        const BatchResult result = runBatchValidation(input, AircraftIni, dialogs);
        reported = 0;
        for (const BatchFolder &folder : result.folders)
            reported += folder.outcome == BatchFolderOutcome::Reported && !folder.ReportHasErrors ? 1 : 0;
    }
    if (reported != LIBRARY_FOLDERS)
        state.SkipWithError("not every folder validated clean");
    if (!journal().operations(root / "Aircraft" / "corvane0").empty())
        state.SkipWithError("a clean folder left a journaled operation");
    state.SetItemsProcessed(state.iterations() * LIBRARY_FOLDERS);
}

} // namespace

BENCHMARK(BM_Renumber)
    ->ArgName("journal")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_SortKeys)
    ->ArgName("journal")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_UpdateAll)
    ->ArgName("journal")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_ValidateAll)
    ->ArgName("journal")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

BENCHMARK_MAIN();
