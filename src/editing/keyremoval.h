#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace fleetwright {

class clsIniFile;

// The engine of frm_Remove: the distinct keys of the [fltsim.x] sections, and their removal from every one of
// those sections at once. Keys of other sections are neither listed nor touched.

// Whether the key stands in list: key is replaced, in the caller's own string, by its blank-trimmed lower-case
// form, and an entry matches when it equals key once trimmed and folded the same way.
void FindInList(const std::vector<std::u16string> &list, std::u16string &key, bool &found);

// Every distinct key name of the variation sections of the file, trimmed and in lower case, in ascending
// order of character codes, as the sorted list shows them. Atc_Id and atc_id give one entry; a commented-out
// key with a "=" ("//title=x") is a key like any other; ";" comment lines are not keys.
std::vector<std::u16string> LoadList(clsIniFile &AircraftIni);

// The question of cmd_Wipe, asked whatever ConfirmUpdates says.
inline const std::u16string WIPE_QUESTION =
    u"Are you absolutely sure that you wish to delete all marked keys in all sections in this aircraft.cfg?";

// The report after the delete: "A total of N keys have been deleted in the aircraft.cfg".
std::u16string wipeReport(std::int16_t count);

// Deletes every marked key from every variation section by writing it with the null value, so key matching
// ignores case and a header whose keys all go stays in place. The file is written once. Returns the number of
// attempts, marked keys times variation sections, whether or not a section held the key: that is what the
// report claims, also on a read-only file, whose writes are lost without a word. The count is 16-bit: the
// 32768th attempt throws RuntimeError 6 "Overflow", with the deletes made so far written.
std::int16_t RemoveMarkedKeys(clsIniFile &AircraftIni, const std::vector<std::u16string> &markedKeys);

} // namespace fleetwright
