#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace fleetwright {

class Dialogs;

// The text form of aircraft.cfg and the small rules every change of it shares: reading a file into a line
// array, the backup copy, the confirmation question, checked grid rows.
//
//     [fltsim.0]                      line array: "[fltsim.0]"
//     title=Cessna 172 N1234 // blue              "title=Cessna 172 N1234"
//     // painted by ...                           ""
//     texture=blue                                "texture=blue"

// Reads the 8-bit (Windows-1252) text file at path into lines, lines[0] being the first line, each element
// StripComment of its line. Lines end at CR LF, LF or a lone CR; a last line without a line end counts.
// lines ends up holding exactly the file's lines; an empty file leaves lines as it was passed.
//
// A missing file, or a folder in its place, returns at once and leaves lines untouched. A file that exists
// but cannot be read shows the common error box ("Procedure FileToArray") through dialogs, when given, and
// leaves the lines read so far. serveEvents, when given, runs after every line, so that the user interface
// stays live while a long file is read.
void FileToArray(const std::u16string &path, std::vector<std::u16string> &lines, Dialogs *dialogs = nullptr,
                 const std::function<void()> &serveEvents = {});

// Removes array[index], moving the elements above it down. An index outside the array throws RuntimeError 9
// "Subscript out of Range". An array of one element keeps it: the shrink to no element
// fails and the failure is ignored, and validation's results follow from that.
void ArrayRemoveItem(std::vector<std::u16string> &array, std::int32_t index);
// The same for a list that may not exist: nullptr, which stands for a value that is no array, throws
// RuntimeError 13 "Type Mismatch".
void ArrayRemoveItem(std::vector<std::u16string> *array, std::int32_t index);

// Where the backup of aircraftCfgPath goes: the path less its last four characters, plus ".corvane", so
// "...\aircraft.cfg" has "...\aircraft.corvane" beside it. A path shorter than four characters throws
// RuntimeError 5 "Invalid procedure call or argument".
std::u16string backupPath(const std::u16string &aircraftCfgPath);

// Takes the one backup of aircraft.cfg before a change, when autoBackupOn. A backup that exists is never
// replaced, so it keeps the file as it stood before the first change. A failed copy throws RuntimeError
// (procedure "MakeBackup"): 53 "File not found" when aircraft.cfg is missing, 76 "Path not found" when its
// folder is, 70 "Permission denied" when it cannot be read or the copy cannot be written. A failed copy
// leaves no backup file behind.
void MakeBackup(const std::u16string &aircraftCfgPath, bool autoBackupOn);

// The checked rows of the grid, given each row's check state from row 0: the positions of the checked rows
// as decimal text, "0", "2", .... The scan counts in 16 bits: a grid of more than 32767 rows throws
// RuntimeError 6 "Overflow", which ends the operation.
std::vector<std::u16string> checkedRowList(const std::vector<bool> &rowChecked);

// Whether the section in place sectionPlace (from 1) among all sections of the file is checked. Row r
// stands for the section in place r + 1 of the whole file, counted over every section: that matches the
// grid while the variation sections come first in grid order, and a section ahead of them shifts the match.
// Operations rely on exactly this.
bool sectionIsChecked(std::int32_t sectionPlace, const std::vector<std::u16string> &checkedRows);

inline const std::u16string STANDARD_QUESTION = u"Are you sure?";

// Asks text as a Yes/No question when confirmUpdates is on; true when the operation may go on.
bool confirmUpdate(Dialogs &dialogs, bool confirmUpdates, const std::u16string &text = STANDARD_QUESTION);

} // namespace fleetwright
