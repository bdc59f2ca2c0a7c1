#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace fleetwright::bench {

// A generated aircraft.cfg the size of a large repaint pack, laid out as such packs are:
//
//   // Corvane benchmark fleet
//   [version]
//   [general]
//   atc_type=BOEING
//   [fltsim.0]
//   title=Corvane 737-800 Fleet 0000
//   texture=L0000   // repaint by the Corvane paint shop
//   ...
//   [fltsim.699]
//   [airplane_geometry]
//   wing_span=112.6
//
// Windows-1252 bytes with CR LF line ends. The same shape gives the same bytes on every run.
struct WorkloadShape
{
    int variations = 700;
    int keysPerVariation = 20; // at most variationKeys().size()
};

// Keys of a [fltsim.x] section in the order makers write them: the twenty every FSX repaint carries first,
// then keys that only some carry (the write benchmark adds those as new keys).
const std::vector<std::string_view> &variationKeys();

// The value the workload gives key in variation; a later generation gives every key a new value of about the
// same length, for rewriting a file in place.
std::string variationValue(int variation, std::string_view key, int generation = 0);

// The whole file.
std::string aircraftCfg(const WorkloadShape &shape);

// A folder of its own under the temporary folder, removed with everything in it when the object goes.
class BenchFolder
{
public:
    explicit BenchFolder(std::string_view stem);
    ~BenchFolder();
    BenchFolder(const BenchFolder &) = delete;
    BenchFolder &operator=(const BenchFolder &) = delete;

    const std::filesystem::path &path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

// Writes bytes to file, dated a few seconds back: a file written a moment ago is compared byte by byte before
// the profile engine trusts its parse, and no folder the user opens is that young.
void writeSettledFile(const std::filesystem::path &file, std::string_view bytes);

} // namespace fleetwright::bench
