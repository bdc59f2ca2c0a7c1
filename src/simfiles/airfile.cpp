#include "simfiles/airfile.h"

#include <filesystem>
#include <limits>
#include <unordered_set>

#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/paths.h"
#include "core/runtimeerror.h"
#include "history/journal.h"
#include "platform/fileio.h"
#include "platform/filelookup.h"
#include "simfiles/binaryfile.h"

namespace fleetwright {

namespace fs = std::filesystem;

namespace {

constexpr std::int64_t HEADER_SIZE = 8;
constexpr std::int64_t TYPE_OFFSET = 8; // of the aircraft type, from the record's first byte

// A little-endian 32-bit value at offset; bytes behind the end of the data read as 0.
std::int32_t int32At(std::string_view bytes, std::int64_t offset)
{
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        const std::int64_t at = offset + i;
        const auto byte = at < static_cast<std::int64_t>(bytes.size())
            ? static_cast<unsigned char>(bytes[static_cast<std::size_t>(at)])
            : 0u;
        value = (value << 8) | byte;
    }
    return static_cast<std::int32_t>(value);
}

std::optional<AirType> airTypeOf(std::int32_t storedType)
{
    if (storedType < 0 || storedType > 2)
        return std::nullopt;
    return static_cast<AirType>(storedType);
}

} // namespace

AircraftSection locateAircraftSection(std::string_view bytes)
{
    const auto size = static_cast<std::int64_t>(bytes.size());
    // The chain is a function of the offset alone: an offset seen before means the walk would go round for ever.
    std::unordered_set<std::int64_t> visited;
    std::int64_t offset = 0;
    for (;;) {
        if (offset >= size || !visited.insert(offset).second)
            return {};
        const std::int64_t left = size - offset;
        if (left < 4)
            return {};
        const std::int32_t type = int32At(bytes, offset);
        if (type == AIRCRAFT_RECORD_TYPE)
            return {AircraftSectionSearch::Found, offset, int32At(bytes, offset + TYPE_OFFSET)};
        if (left < HEADER_SIZE)
            return {};
        const std::int64_t next = offset + int32At(bytes, offset + 4) + HEADER_SIZE;
        if (next > std::numeric_limits<std::int32_t>::max() || next < std::numeric_limits<std::int32_t>::min())
            return {AircraftSectionSearch::Overflow};
        if (next < 0)
            return {};
        offset = next;
    }
}

AirFileReading ReadAirFile(const std::u16string &folder, AirFileState &state, Dialogs &dialogs)
{
    std::optional<fs::path> file;
    try {
        if (!state.AirFileName.empty())
            state.AirFileName = folder + nativeSeparator() + nativeSeparators(state.AirFileName) + u".air";
        file = existingFile(state.AirFileName);
    } catch (const fs::filesystem_error &) {
        // A name the file system cannot take at all.
        showCommonError(dialogs, RuntimeError::badFileNameOrNumber(u"ReadAirFile"));
        return {AirFileOutcome::Failed};
    }
    if (!file)
        return {AirFileOutcome::NoFile};

    // From the open on, a file that cannot be read (held by the simulator, say) reads as one without an
    // aircraft section, silently.
    const platform::ExclusiveFile air = platform::ExclusiveFile::open(*file, platform::ExclusiveAccess::Read);
    const std::optional<std::string> bytes = air.readAll();
    if (!bytes)
        return {AirFileOutcome::NoAircraftSection};
    const AircraftSection section = locateAircraftSection(*bytes);
    if (section.search != AircraftSectionSearch::Found)
        return {AirFileOutcome::NoAircraftSection};

    AirFileReading reading {AirFileOutcome::TypeFound, airTypeOf(section.storedType), section.storedType};
    if (reading.selected)
        state.AirTypeShown = static_cast<std::int16_t>(section.storedType + 1);
    return reading;
}

std::u16string airTypeQuestion(AirType type)
{
    switch (type) {
    case AirType::Normal:
        return u"Are you sure that you want to change this aircraft to type 0 = Normal?";
    case AirType::Helicopter:
        return u"Are you sure that you want to change this aircraft to type 1 = Helicopter?";
    case AirType::AI:
        break;
    }
    return u"Are you sure that you want to change this aircraft to type 2 = AI?";
}

std::u16string airFileWriteFailureText(const std::u16string &path)
{
    return path
        + u"\r\n could not be opened for write access. Please make sure that the sim is not running and no other "
          u"program access this file.";
}

namespace {

// Walks and writes under one exclusive open, so that nothing can change the chain in between; the file is
// closed again when this returns.
AirTypePatchOutcome writeAirType(const fs::path &file, AirType type)
{
    platform::ExclusiveFile air = platform::ExclusiveFile::open(file, platform::ExclusiveAccess::ReadWrite);
    const std::optional<std::string> bytes = air.readAll();
    if (!bytes)
        return AirTypePatchOutcome::Failed;
    const AircraftSection section = locateAircraftSection(*bytes);
    if (section.search == AircraftSectionSearch::Overflow)
        return AirTypePatchOutcome::Failed;
    if (section.search == AircraftSectionSearch::NotFound)
        return AirTypePatchOutcome::NoAircraftSection;

    // Only the low half: the type is written as a 16-bit value.
    const auto value = static_cast<std::uint16_t>(type);
    const char low[2] = {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8)};
    if (!air.writeAt(static_cast<std::uint64_t>(section.offset + TYPE_OFFSET), std::string_view(low, 2))
        || !air.close())
        return AirTypePatchOutcome::Failed;
    return AirTypePatchOutcome::Written;
}

} // namespace

AirTypePatch patchAirType(AirType type, const AirFileState &state, bool confirmUpdates, Dialogs &dialogs)
{
    if (confirmUpdates && !dialogs.question(airTypeQuestion(type), {}))
        return {AirTypePatchOutcome::Refused, airTypeOf(state.AirTypeShown - 1)};
    const std::optional<fs::path> file = existingFile(state.AirFileName);
    if (!file)
        return {AirTypePatchOutcome::NoFile};

    // Taken before the read-only state goes.
    journalBeforeChange(*file);
    const AirTypePatchOutcome outcome =
        platform::clearReadOnly(*file) ? writeAirType(*file, type) : AirTypePatchOutcome::Failed;
    if (outcome == AirTypePatchOutcome::Failed)
        dialogs.critical(airFileWriteFailureText(state.AirFileName), {});
    return {outcome};
}

void ReadByteArray(const std::u16string &path, std::vector<std::uint8_t> &bytes)
{
    const std::optional<fs::path> file = existingFile(path);
    if (!file) {
        if (!path.empty() && platform::FileLookup::exists(fs::path(path), platform::LookupKind::Folders))
            throw RuntimeError::pathFileAccessError();
        throw RuntimeError::fileNotFound();
    }
    const platform::WholeFile read = platform::readWholeFile(*file);
    if (!read.bytes)
        throw RuntimeError::readFailure(read.failure);
    const std::string &content = *read.bytes;
    bytes.assign(content.begin(), content.end());
    if (bytes.size() < 3)
        throw RuntimeError::subscriptOutOfRange();
    if (bytes[0] != 0xEF || bytes[1] != 0xBB || bytes[2] != 0xBF)
        return;
    // The copy loop counts in 16 bits.
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max()))
        throw RuntimeError::overflow();
    if (platform::isReadOnly(*file))
        throw RuntimeError::pathFileAccessError();
    // Written over the start and not truncated: the file keeps its length, its last three bytes stand twice.
    journalBeforeChange(*file);
    const bool written = writeBytesAt(*file, 0, std::string_view(content).substr(3));
    if (!written)
        throw RuntimeError::permissionDenied();
}

} // namespace fleetwright
