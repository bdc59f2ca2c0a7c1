// fleetwright-check validate-all over a generated library of 2,000 aircraft folders of up to 100 variations
// each, against reading every file of the library once, in the same run with a warm cache.
//
//   build/bench/bench_validateall [FOLDERS] [--library DIR] [--rounds N]
//
// Prints the median of five rounds (or N) of each, their ratio and the peak memory of the process. The targets: the
// validation takes no more than 2x the read, and the peak stays under 100 MB.
//
// With --library the library is generated into DIR/Aircraft unless it stands there already, and kept, so that
// a profiler can be pointed at "fleetwright-check validate-all DIR/Aircraft" or later rounds skip generating.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <system_error>
#include <vector>

#include "cli/checkercommands.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

void write(const fs::path &path, const std::string &bytes)
{
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// One repaint pack: a texture folder per variation, a shared model folder with an FSX model, an air file.
void writeAircraft(const fs::path &folder, int number, int variations)
{
    fs::create_directories(folder / "model");
    std::string cfg = "[general]\r\natc_type=CORVANE\r\n";
    for (int v = 0; v < variations; ++v) {
        const std::string texture = "l" + std::to_string(v);
        cfg += "[fltsim." + std::to_string(v) + "]\r\ntitle=Corvane " + std::to_string(number) + " livery "
            + std::to_string(v) + "\r\nsim=corvane\r\nmodel=\r\ntexture=" + texture
            + "   // repaint by the Corvane paint shop\r\natc_airline=CORVANE\r\nui_variation=Livery "
            + std::to_string(v) + "\r\n\r\n";
        fs::create_directories(folder / ("texture." + texture));
        write(folder / ("texture." + texture) / "corvane_t.dds", std::string(4096, 'd'));
        write(folder / ("texture." + texture) / "corvane_l.dds", std::string(4096, 'd'));
    }
    write(folder / "aircraft.cfg", cfg);
    write(folder / "model" / "model.cfg", "[models]\r\nnormal=corvane\r\n");
    std::string mdl(65536, 'm');
    mdl.replace(8, 4, "MDLX");
    write(folder / "model" / "corvane.mdl", mdl);
    write(folder / "corvane.air", std::string(8192, 'a'));
}

std::size_t readEveryFile(const fs::path &root)
{
    std::size_t bytes = 0;
    std::vector<char> buffer(1 << 16);
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(root)) {
        if (!entry.is_regular_file())
            continue;
        std::ifstream file(entry.path(), std::ios::binary);
        while (file.read(buffer.data(), static_cast<std::streamsize>(buffer.size())) || file.gcount() > 0)
            bytes += static_cast<std::size_t>(file.gcount());
    }
    return bytes;
}

double seconds(Clock::duration duration)
{
    return std::chrono::duration<double>(duration).count();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char *argv[])
{
    int folders = 2000;
    int rounds = 5;
    fs::path kept;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--library" && i + 1 < argc) {
            kept = argv[++i];
        } else if (arg == "--rounds" && i + 1 < argc) {
            rounds = std::max(1, std::stoi(argv[++i]));
        } else if (!arg.empty() && arg.front() != '-') {
            folders = std::stoi(arg);
        } else {
            std::fprintf(stderr, "usage: bench_validateall [FOLDERS] [--library DIR] [--rounds N]\n");
            return 2;
        }
    }
    std::random_device random;
    const fs::path root = kept.empty()
        ? fs::temp_directory_path() / ("fleetwright-bench-all-" + std::to_string(random()) + std::to_string(random()))
        : fs::absolute(kept);
    const fs::path library = root / "Aircraft";
    // The checker opens its journal of changes: the benchmark's own, not the user's.
    ::setenv("FLEETWRIGHT_HISTORY", (root / "history").c_str(), 1);
    std::error_code missing;
    if (kept.empty() || !fs::is_directory(library, missing)) {
        std::printf("generating %d aircraft folders in %s\n", folders, root.string().c_str());
        for (int i = 0; i < folders; ++i)
            writeAircraft(library / ("corvane" + std::to_string(i)), i, 1 + (i * 37) % 100);
    } else {
        std::printf("reusing the library in %s\n", library.string().c_str());
    }
    const std::string report = (root / "corvanecheckall.log").string();
    const std::vector<std::string> args = {"validate-all", library.string(),          "--fs9",    "",    "--fsx", "",
                                           "--options",    "11111111111111111111111", "--report", report};

    std::size_t bytesRead = readEveryFile(library); // warms the cache
    std::vector<double> readTimes;
    std::vector<double> validateTimes;
    int exitCode = 0;
    for (int round = 0; round < rounds; ++round) {
        const Clock::time_point start = Clock::now();
        bytesRead = readEveryFile(library);
        readTimes.push_back(seconds(Clock::now() - start));
        std::ostringstream out;
        std::ostringstream err;
        const Clock::time_point validated = Clock::now();
        exitCode = fleetwright::runCheckerCommand(args, out, err);
        validateTimes.push_back(seconds(Clock::now() - validated));
    }
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    const double read = median(readTimes);
    const double validate = median(validateTimes);
    std::printf("read every file:  %.3f s (%zu bytes)\n", read, bytesRead);
    std::printf("validate-all:     %.3f s (exit status %d, report %ju bytes)\n", validate, exitCode,
                static_cast<std::uintmax_t>(fs::file_size(report)));
    std::printf("ratio:            %.2f (target 2.00 or less)\n", validate / read);
    std::printf("peak memory:      %.1f MB (target under 100 MB)\n", static_cast<double>(usage.ru_maxrss) / 1024.0);
    std::error_code ignored;
    if (kept.empty())
        fs::remove_all(root, ignored);
    else
        fs::remove(report, ignored);
    return exitCode == fleetwright::CHECK_EXIT_OK && validate <= 2 * read ? 0 : 1;
}
