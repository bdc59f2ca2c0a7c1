#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace fleetwright {

class Dialogs;
class clsIniFile;

// A key table of one section: column 0 the key name in lower case, column 1 its value, column 2 never
// filled. With n keys the table has n + 1 rows; the last stays empty.
using KeyTable = std::vector<std::array<std::u16string, 3>>;

// Shell sort of the rows on one column, by character code and not folded, with repeated passes per gap. The
// last row never takes part, so the empty row stays at the end; equal rows are not exchanged.
void SortArray(KeyTable &table, std::int16_t column);

// Puts the keys of every [fltsim.x] section in the order title, model, sim, texture, then all others by
// their lower-case names: every key is deleted and written again, so the profile rule that a new key goes
// behind the last one builds the order. Key names come back in lower case; an empty model, sim or texture
// is written as one blank. Never asks; ends with the information box.
void DoSortKeys(clsIniFile &AircraftIni, bool autoBackupOn, Dialogs &dialogs);

} // namespace fleetwright
