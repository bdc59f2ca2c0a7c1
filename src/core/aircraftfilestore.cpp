#include "core/aircraftfilestore.h"

#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "core/arraysearch.h"
#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/runtimeerror.h"
#include "history/journal.h"
#include "platform/codepage.h"
#include "platform/fileio.h"
#include "platform/filelookup.h"

namespace fleetwright {

namespace fs = std::filesystem;
using platform::FileLookup;
using platform::LookupKind;

namespace {

// The counters of the checked-rows scan are 16-bit.
constexpr std::size_t MAX_ROWS = std::numeric_limits<std::int16_t>::max();

std::u16string decimalText(std::size_t number)
{
    const std::string digits = std::to_string(number);
    return std::u16string(digits.begin(), digits.end());
}

} // namespace

void FileToArray(const std::u16string &path, std::vector<std::u16string> &lines, Dialogs *dialogs,
                 const std::function<void()> &serveEvents)
{
    const std::optional<fs::path> file = FileLookup::findFile(path);
    if (!file)
        return;
    const platform::WholeFile read = platform::readWholeFile(*file);
    if (!read.bytes) {
        if (dialogs)
            showCommonError(*dialogs, RuntimeError::readFailure(read.failure, u"FileToArray"));
        return;
    }

    const std::string_view text = *read.bytes;
    std::size_t index = 0;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find_first_of("\r\n", start);
        std::size_t next;
        if (end == std::string_view::npos) {
            end = text.size();
            next = end;
        } else if (text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n') {
            next = end + 2;
        } else {
            // A lone CR ends a line too, as a lone LF does: files saved on old Macs still read line by line.
            next = end + 1;
        }
        // The array grows by one element per line and keeps what it holds, deliberately: an array
        // passed in longer than the file ends cut to the file's lines. An empty file never gets here and
        // leaves the array as it came; both callers pass a fresh one, which so stays empty.
        lines.resize(index + 1);
        lines[index] = StripComment(platform::fromCodePage(text.substr(start, end - start)));
        ++index;
        start = next;
        if (serveEvents)
            serveEvents();
    }
}

void ArrayRemoveItem(std::vector<std::u16string> &array, std::int32_t index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= array.size())
        throw RuntimeError::subscriptOutOfRangeAsRaised(u"ArrayRemoveItem");
    // The last element cannot go: the shrink to no element fails, and the failure is ignored.
    if (array.size() == 1)
        return;
    array.erase(array.begin() + index);
}

void ArrayRemoveItem(std::vector<std::u16string> *array, std::int32_t index)
{
    if (!array)
        throw RuntimeError::typeMismatchAsRaised(u"ArrayRemoveItem");
    ArrayRemoveItem(*array, index);
}

std::u16string backupPath(const std::u16string &aircraftCfgPath)
{
    if (aircraftCfgPath.size() < 4)
        throw RuntimeError::invalidProcedureCall(u"MakeBackup");
    return aircraftCfgPath.substr(0, aircraftCfgPath.size() - 4) + u".corvane";
}

void MakeBackup(const std::u16string &aircraftCfgPath, bool autoBackupOn)
{
    if (!autoBackupOn)
        return;
    const fs::path backup(backupPath(aircraftCfgPath));
    if (FileLookup::exists(backup, LookupKind::Files))
        return;

    const std::optional<fs::path> source = FileLookup::findFile(aircraftCfgPath);
    if (!source) {
        const fs::path folder = fs::path(aircraftCfgPath).parent_path();
        if (!folder.empty() && !FileLookup::exists(folder, LookupKind::Folders))
            throw RuntimeError::pathNotFound(u"MakeBackup");
        throw RuntimeError::fileNotFound(u"MakeBackup");
    }
    // Beside the file as it was found, in the spelling given, as Windows would create it.
    const fs::path target = source->parent_path() / backup.filename();
    // Something may stand there that the existence test does not see: a folder of that name, a file hidden
    // from it. It is never touched.
    std::error_code error;
    const bool targetWasFree = !fs::exists(fs::symlink_status(target, error));
    // The backup is a file the user did not have before: an undo of the first change takes it away again.
    if (targetWasFree)
        journalBeforeChange(target);
    if (!fs::copy_file(*source, target, fs::copy_options::none, error)) {
        // A half-written copy would count as the backup from now on.
        if (targetWasFree) {
            std::error_code ignored;
            fs::remove(target, ignored);
        }
        throw RuntimeError::permissionDenied(u"MakeBackup");
    }
}

std::vector<std::u16string> checkedRowList(const std::vector<bool> &rowChecked)
{
    if (rowChecked.size() > MAX_ROWS)
        throw RuntimeError::overflow();
    std::vector<std::u16string> checked;
    for (std::size_t row = 0; row < rowChecked.size(); ++row) {
        if (rowChecked[row])
            checked.push_back(decimalText(row));
    }
    return checked;
}

bool sectionIsChecked(std::int32_t sectionPlace, const std::vector<std::u16string> &checkedRows)
{
    const std::string digits = std::to_string(static_cast<std::int64_t>(sectionPlace) - 1);
    std::u16string row(digits.begin(), digits.end());
    return IsInArrayUpper(row, checkedRows);
}

bool confirmUpdate(Dialogs &dialogs, bool confirmUpdates, const std::u16string &text)
{
    if (!confirmUpdates)
        return true;
    return dialogs.question(text, {});
}

} // namespace fleetwright
