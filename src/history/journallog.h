#pragma once

// The journal's operation log: one UTF-8 text line per event, appended and flushed at each step, so a crash
// leaves at most a cut last line and an operation without its end. Fields are separated by a tab; a tab, line
// end or backslash inside a field is written \t, \n, \r, \\.
//
//   B <id> <start, ns since 1970> <folder> <name>                       an operation begins
//   F <id> <file> <existed 0|1> <read-only 0|1> <digest> <size>         its old bytes are stored: only now may
//                                                                       the file change
//   A <id> <file> <exists 0|1> <read-only 0|1> <digest> <size>          the file's bytes when the operation ended
//   E <id>                                                              the operation is complete
//   U <id> / R <id>                                                     undone / redone
//   D <id>                                                              dropped: a redo that a new operation cut off

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fleetwright {

struct JournalLogRecord
{
    char kind = 0; // 'B', 'F', 'A', 'E', 'U', 'R', 'D'
    std::uint64_t id = 0;
    std::vector<std::string> fields; // what follows the id, unescaped
};

// One record as a line, "\n" at its end.
std::string formatJournalLogRecord(const JournalLogRecord &record);

// The records of a log's text, in order. A line without its line end (cut by a crash) or one that does not
// read as a record is passed over. validLength receives the length of the text up to the end of the last
// whole line, the part a repaired log keeps.
std::vector<JournalLogRecord> parseJournalLog(std::string_view text, std::size_t *validLength = nullptr);

} // namespace fleetwright
