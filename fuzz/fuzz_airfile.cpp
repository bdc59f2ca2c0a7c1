// The .air record walk and the type patch: the walk must end, find only a real aircraft record, and the patch
// must change the two bytes of the type and nothing else.
#include <cstdint>
#include <filesystem>
#include <string>

#include "core/dialogs.h"
#include "fuzzsupport.h"
#include "platform/fileio.h"
#include "simfiles/airfile.h"

using namespace fleetwright;
using namespace fleetwright::fuzz;
namespace fs = std::filesystem;

namespace {

std::int32_t int32At(const std::string &bytes, std::size_t offset)
{
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        const std::size_t at = offset + static_cast<std::size_t>(i);
        value = (value << 8) | (at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0u);
    }
    return static_cast<std::int32_t>(value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    const AircraftSection section = locateAircraftSection(bytes);
    if (section.search == AircraftSectionSearch::Found) {
        if (section.offset < 0 || section.offset + 4 > static_cast<std::int64_t>(bytes.size()))
            fail("the aircraft record lies outside the file");
        if (int32At(bytes, static_cast<std::size_t>(section.offset)) != AIRCRAFT_RECORD_TYPE)
            fail("the walk found a record that is not the aircraft record");
        if (section.storedType != int32At(bytes, static_cast<std::size_t>(section.offset) + 8))
            fail("the stored type is not the value behind the record header");
    }

    // Through the file, as the form reads and patches it.
    const fs::path folder = scratchFolder("air");
    writeFile(folder / "corvane.air", bytes);
    NeverAskDialogs dialogs(true);
    AirFileState state;
    state.AirFileName = u"corvane";
    const AirFileReading reading = ReadAirFile(folder.u16string(), state, dialogs);
    const bool found = section.search == AircraftSectionSearch::Found;
    if ((reading.outcome == AirFileOutcome::TypeFound) != found)
        fail("ReadAirFile and the walk disagree");
    if (found && reading.storedType != section.storedType)
        fail("ReadAirFile read another type than the walk");

    const auto type = static_cast<AirType>(size % 3);
    const AirTypePatch patch = patchAirType(type, state, false, dialogs);
    const std::string after = platform::readWholeFile(folder / "corvane.air").bytes.value_or(std::string());
    if (patch.outcome != AirTypePatchOutcome::Written) {
        if (after != bytes)
            fail("a patch that did not write changed the file");
        if (found)
            fail("a file with an aircraft record was not patched");
        return 0;
    }
    if (!found)
        fail("a file without an aircraft record was patched");
    const auto at = static_cast<std::size_t>(section.offset + 8);
    std::string expected = bytes;
    if (expected.size() < at + 2)
        expected.resize(at + 2, '\0');
    expected[at] = static_cast<char>(static_cast<int>(type));
    expected[at + 1] = 0;
    if (after != expected)
        fail("the patch changed other bytes than the type's low half");
    // The new type reads back, unless the two bytes were also the size of a record the walk passes first.
    const AircraftSection reread = locateAircraftSection(after);
    if (reread.search == AircraftSectionSearch::Found && reread.offset == section.offset
        && (reread.storedType & 0xFFFF) != static_cast<std::int32_t>(static_cast<int>(type)))
        fail("the patched type does not read back");
    return 0;
}
