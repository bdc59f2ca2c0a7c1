#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fleetwright {

class Dialogs;

// An .air file is the simulator's flight model: a chain of records with no file header, all integers
// little-endian and signed 32-bit.
//
//     offset 0   record type     0x105 marks the aircraft section; every other type is stepped over
//     offset 4   payload size    bytes behind the 8 header bytes; the next record starts at 8 + size
//     offset 8   payload         in record 0x105 its first 4 bytes are the aircraft type
//
// Only the aircraft type is read or changed. It is read as 32 bits and written as 16: a patch leaves the high
// half as it stood, so a type with a high half set never reads as 0, 1 or 2, before or after a patch.

inline constexpr std::int32_t AIRCRAFT_RECORD_TYPE = 0x105;

// The aircraft types of the frame "Aircraft type (.air)", by the value stored in the file.
enum class AirType : std::int16_t
{
    Normal = 0,     // opt_ac_Normal, listed in the simulator's selection menu
    Helicopter = 1, // opt_ac_Helicopter, listed as well
    AI = 2,         // opt_ac_AI, not listed
};

// The air-file state of the main form. AirFileName holds the base name (the variation's sim value) on the
// way into ReadAirFile and the full path afterwards; the patch works on that path. AirTypeShown is the type
// ReadAirFile last found, as stored value + 1 (1 Normal, 2 Helicopter, 3 AI, 0 before the first find): a
// patch does not change it, so answering No to a later question restores what the file last read as.
struct AirFileState
{
    std::u16string AirFileName;
    std::int16_t AirTypeShown = 0;
};

// Where the record walk ended. Overflow: the next offset left the signed 32-bit range, which counts
// as a run-time error.
enum class AircraftSectionSearch
{
    Found,
    NotFound,
    Overflow,
};

struct AircraftSection
{
    AircraftSectionSearch search = AircraftSectionSearch::NotFound;
    std::int64_t offset = 0;     // of the record header, when found
    std::int32_t storedType = 0; // the 32-bit value at offset + 8, when found
};

// Walks the record chain of an air file's bytes from offset 0. Sizes are not checked: 0 steps 8 bytes and a
// negative size steps backwards. A walk that reaches the end of the file, would visit an offset a second
// time (a size of -8 returns to its own header) or would leave the file below offset 0 finds nothing. A
// header cut short by the end of the file counts only when its whole type field is there and is 0x105;
// the missing bytes of a type value behind the end read as 0.
AircraftSection locateAircraftSection(std::string_view bytes);

// What ReadAirFile leaves the frame showing.
enum class AirFileOutcome
{
    NoFile,            // no name, or no such file: the option buttons stay as they were
    TypeFound,         // record 0x105: Normal, Helicopter and AI enabled; selected is the one to select
    NoAircraftSection, // no record 0x105, or the file could not be read: opt_ac_Nok selected, the others disabled
    Failed,            // the common error box was shown ("Procedure ReadAirFile"); EventsEnabled stays as it stood
};

struct AirFileReading
{
    AirFileOutcome outcome = AirFileOutcome::NoFile;
    // TypeFound with a stored value of 0, 1 or 2: the button to select. Any other value selects nothing and
    // leaves the selection and AirTypeShown as they were.
    std::optional<AirType> selected = {};
    // TypeFound: the 32-bit value as stored.
    std::int32_t storedType = 0;
};

// Reads the aircraft type of the air file that state.AirFileName names in folder (the folder of Dir1).
// A non-empty AirFileName becomes folder + separator + AirFileName + ".air" first; the file is looked up
// without regard to case and opened exclusively, so a file another program holds reads as one without an
// aircraft section. Sets AirTypeShown on a type of 0, 1 or 2. The form sets EventsEnabled false while
// it applies the result and true afterwards, except after Failed.
AirFileReading ReadAirFile(const std::u16string &folder, AirFileState &state, Dialogs &dialogs);

// The question of opt_ac_Normal, opt_ac_Helicopter or opt_ac_AI.
std::u16string airTypeQuestion(AirType type);

// The failure box of a patch: the path, a line break and the advice.
std::u16string airFileWriteFailureText(const std::u16string &path);

enum class AirTypePatchOutcome
{
    Refused,           // No to the question: nothing written; the form selects restore with events off
    NoFile,            // no file at AirFileName: nothing written, nothing said
    Written,           // the low 16 bits of the type now hold the new value
    NoAircraftSection, // no record 0x105: nothing written, nothing said
    Failed,            // the critical box was shown; the form reloads the folder (Dir1_Change)
};

struct AirTypePatch
{
    AirTypePatchOutcome outcome = AirTypePatchOutcome::NoFile;
    // Refused: the button that AirTypeShown names, nothing when it names none.
    std::optional<AirType> restore = {};
};

// The engine half of the Click handlers of opt_ac_Normal, opt_ac_Helicopter and opt_ac_AI (the form returns
// first while EventsEnabled is false). Asks airTypeQuestion when confirmUpdates, then clears the file's
// read-only state and writes type as a 16-bit value at offset 8 of record 0x105, in place and without a
// backup. A failure from the attribute change on shows airFileWriteFailureText as a critical box; the bytes
// stay as they were, the cleared read-only state stays cleared.
AirTypePatch patchAirType(AirType type, const AirFileState &state, bool confirmUpdates, Dialogs &dialogs);

// Removes a UTF-8 byte order mark from a small text file before it is read as a profile file. bytes gets
// the whole file as read, mark included (bytes[0] is the file's first byte). A marked file is written again
// from its start without the mark and is NOT truncated: it keeps its length, and its last three bytes stand
// twice at its end. Validation's results rely on exactly that.
//
// Errors go to the caller as RuntimeError: 53 "File not found"; 75 "Path/File access error" when the file
// cannot be opened (read-only, a folder) and 70 "Permission denied" when it is locked; 9 "Subscript out of
// range" for a file of fewer than 3 bytes; 6 "Overflow" for a marked file longer than 32767 bytes, which is
// not rewritten.
void ReadByteArray(const std::u16string &path, std::vector<std::uint8_t> &bytes);

} // namespace fleetwright
