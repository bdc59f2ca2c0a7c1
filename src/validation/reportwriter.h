#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace fleetwright {

// Pieces of the report frame shared by the single report and the batch report.

// The moment a report is stamped with: SOURCE_DATE_EPOCH when that holds a number of seconds, else now.
std::int64_t reportTimeSeconds();

// "Fleetwright V.1.2.3 - <short date> <long time> - ", the start of every report header line.
std::u16string reportHeaderStart();

// A row of "*" as long as header.
std::u16string reportStars(std::u16string_view header);

// "-:" repeated half the length of header times, the half rounded to the even number.
std::u16string reportRule(std::u16string_view header);

// Text files of the reports: Windows-1252, every line closed by CR LF. writeReportFile creates or empties
// the file, appendReportBytes adds to its end (creating it); both throw RuntimeError 75 (path/file access
// error) naming procedure when the file cannot be opened for output.
void writeReportFile(const std::filesystem::path &path, const std::vector<std::u16string> &lines,
                     const std::u16string &procedure);
void appendReportBytes(const std::filesystem::path &path, const std::string &bytes, const std::u16string &procedure);
// The whole of a report file as it stands, CR LF kept; empty when it cannot be read. The batch passes a
// folder's report on as bytes: read into text and written back, every byte of the code page comes out as it went in.
std::string readReportBytes(const std::filesystem::path &path);

// The search for folders without any content below (and including) path. Each one found adds the row
// "..\" + its path from character EmptyFolderRoot.size() + 1 on, with "\" between the parts, to
// EmptyFolderList (joined by the list separator "¦"). Depth first, subfolders in listing order; a folder
// that cannot be read is passed over, and a link back into a folder being searched is left out.
// yieldToEvents, when set, is called once per folder.
void FindEmptyFolders(const std::u16string &path, const std::u16string &EmptyFolderRoot,
                      std::u16string &EmptyFolderList, const std::function<void()> &yieldToEvents = {});

} // namespace fleetwright
