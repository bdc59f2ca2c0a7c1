// The main window on the offscreen platform: start-up on a machine with both simulators, each with an
// airlines.cfg of 5,000 lines, until the window is shown; and the folder load of a generated aircraft.cfg of
// 700 variations through Dir1_Change, grid and opened first row included.
//
//   build/bench/bench_startup
//
// Runs on the offscreen platform unless QT_QPA_PLATFORM says otherwise. Reports the median of seven
// repetitions in wall time.

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include <QApplication>
#include <QTreeWidget>

#include "app/frm_main.h"
#include "core/dialogs.h"
#include "environment/programstate.h"
#include "folderview/gui/folderwidgets.h"
#include "workload.h"

namespace {

constexpr int AIRLINE_LINES = 5000;

void writeAirlines(const std::filesystem::path &file)
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    for (int line = 0; line < AIRLINE_LINES; line += 5) {
        out << "[atc_airline." << line / 5 << "]\r\n"
            << "name=Corvane Air Cargo " << line << "\r\n"
            << "callsign=CORVANE" << line << "\r\n"
            << "icao=CV" << char('A' + line % 26) << "\r\n"
            << "\r\n";
    }
}

// Two simulators in a folder of their own, removed when the program ends.
class Machine
{
public:
    Machine()
    {
        std::random_device random;
        m_root = std::filesystem::temp_directory_path() / ("fleetwright-bench-startup-" + std::to_string(random()));
        writeAirlines(m_root / "FS9" / "Aircraft" / "airlines.cfg");
        writeAirlines(m_root / "FSX" / "airlines.cfg");
        for (const char *folder : {"Airplanes", "Rotorcraft", "GroundVehicles", "Boats", "Misc"})
            std::filesystem::create_directories(m_root / "FSX" / "SimObjects" / folder);
        set("FLEETWRIGHT_FS9_DIR", m_root / "FS9");
        set("FLEETWRIGHT_FSX_DIR", m_root / "FSX");
        set("FLEETWRIGHT_APPDATA", m_root / "AppData");
        set("FLEETWRIGHT_SETTINGS", m_root / "settings.ini");
        set("WINEPREFIX", m_root / "no-prefix");
    }
    ~Machine()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_root, ignored);
    }

private:
    static void set(const char *name, const std::filesystem::path &value)
    {
        qputenv(name, QByteArray::fromStdString(value.string()));
    }
    std::filesystem::path m_root;
};

void BM_StartUpToShownWindow(benchmark::State &state)
{
    static Machine machine;
    fleetwright::NeverAskDialogs dialogs;
    std::pair<std::size_t, std::size_t> airlines;
    for (auto _ : state) {
        fleetwright::frm_Main form(&dialogs);
        form.show();
        QApplication::processEvents();
        benchmark::DoNotOptimize(form.state().FsxAirlines.size());
        airlines = {form.state().Fs9Airlines.size(), form.state().FsxAirlines.size()};
        state.PauseTiming();
        form.hide();
        state.ResumeTiming();
    }
    if (airlines != std::pair<std::size_t, std::size_t> {AIRLINE_LINES + 1, AIRLINE_LINES + 1})
        state.SkipWithError("the airline files were not loaded");
}
BENCHMARK(BM_StartUpToShownWindow)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(5)
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);

void BM_FolderLoadOf700Variations(benchmark::State &state)
{
    static Machine machine;
    const auto folder = std::filesystem::temp_directory_path() / "fleetwright-bench-folderload" / "Corvane Fleet";
    std::filesystem::create_directories(folder);
    {
        std::ofstream out(folder / "aircraft.cfg", std::ios::binary);
        out << fleetwright::bench::aircraftCfg({700, 20});
    }
    fleetwright::NeverAskDialogs dialogs;
    fleetwright::frm_Main form(&dialogs);
    form.controls().Dir1->setPath(QString::fromStdString(folder.string()));
    for (auto _ : state) {
        form.Dir1_Change();
        benchmark::DoNotOptimize(form.controls().ListView1);
    }
    if (form.controls().ListView1->topLevelItemCount() != 700)
        state.SkipWithError("the variations were not loaded");
    std::error_code ignored;
    std::filesystem::remove_all(folder.parent_path(), ignored);
}
BENCHMARK(BM_FolderLoadOf700Variations)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3)
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);

} // namespace
