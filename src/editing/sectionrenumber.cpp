#include "editing/sectionrenumber.h"

#include <limits>

#include "core/aircraftfilestore.h"
#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "history/journal.h"
#include "platform/codepage.h"
#include "platform/fileio.h"
#include "platform/filelookup.h"

namespace fleetwright {

namespace {

constexpr std::size_t MAX_LINES = static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max()) + 1;

bool isVariationSection(const std::u16string &name)
{
    return LCase(name.substr(0, 7)) == u"fltsim.";
}

} // namespace

void Renumber_fltsim(const std::u16string &aircraftCfgPath, bool autoBackupOn, Dialogs *dialogs)
{
    MakeBackup(aircraftCfgPath, autoBackupOn);
    std::vector<std::u16string> lines;
    FileToArray(aircraftCfgPath, lines, dialogs);
    if (lines.empty())
        throw RuntimeError::subscriptOutOfRange(u"Renumber_fltsim");
    if (lines.size() > MAX_LINES)
        throw RuntimeError::overflow(u"Renumber_fltsim");

    int counter = 0;
    for (std::u16string &line : lines) {
        if (LCase(line.substr(0, 8)) == u"[fltsim.") {
            const std::string number = std::to_string(counter++);
            line = u"[fltsim." + std::u16string(number.begin(), number.end()) + u"]";
        }
    }

    const std::filesystem::path file =
        platform::FileLookup::findFile(aircraftCfgPath).value_or(std::filesystem::path(aircraftCfgPath));
    if (platform::isReadOnly(file))
        throw RuntimeError::pathFileAccessError(u"Renumber_fltsim");
    std::string bytes;
    for (const std::u16string &line : lines) {
        bytes += platform::toCodePage(line);
        bytes += "\r\n";
    }
    journalBeforeChange(file);
    const bool written = platform::replaceFileAtomically(file, bytes);
    if (!written)
        throw RuntimeError(57, u"Device I/O error", u"Renumber_fltsim");
}

bool FlightSimSectionRenumber(const std::u16string &aircraftCfgPath, bool confirmUpdates, bool autoBackupOn,
                              Dialogs &dialogs)
{
    if (!confirmUpdate(dialogs, confirmUpdates))
        return false;
    Renumber_fltsim(aircraftCfgPath, autoBackupOn, &dialogs);
    return true;
}

bool FlightSimSectionDelete(clsIniFile &AircraftIni, const GridRows &grid, bool confirmUpdates, bool autoBackupOn,
                            Dialogs &dialogs)
{
    if (!grid.selectedRow || *grid.selectedRow >= grid.texts.size()) {
        dialogs.information(u"You must select the [fltsim.x] entry which should be deleted", u"");
        return false;
    }
    MakeBackup(AircraftIni.path(), autoBackupOn);
    const std::vector<std::u16string> checkedRows = checkedRowList(grid.checked);
    if (!checkedRows.empty()) {
        if (checkedRows.size() > 1
            && !confirmUpdate(dialogs, confirmUpdates, u"About to delete several [fltsim.x] sections. Are you sure?"))
            return false;
        if (checkedRows.size() == 1) {
            const std::size_t row = std::stoul(std::string(checkedRows[0].begin(), checkedRows[0].end()));
            const std::u16string title = row < grid.titles.size() ? grid.titles[row] : std::u16string();
            if (!confirmUpdate(dialogs, confirmUpdates,
                               u"About to delete section [" + checkedRows[0] + u"] = " + title + u". Are you sure?"))
                return false;
        }
        std::vector<std::u16string> sections;
        std::int32_t count = 0;
        AircraftIni.EnumerateAllSections(sections, count);
        clsIniFile::Batch batch(AircraftIni);
        for (std::int32_t i = 1; i <= count; ++i) {
            const std::u16string &name = sections[static_cast<std::size_t>(i - 1)];
            if (!isVariationSection(name))
                continue;
            AircraftIni.setSection(name);
            if (sectionIsChecked(i, checkedRows))
                AircraftIni.DeleteSection();
        }
    } else {
        const std::size_t row = *grid.selectedRow;
        const std::u16string title = row < grid.titles.size() ? grid.titles[row] : std::u16string();
        if (!confirmUpdate(dialogs, confirmUpdates,
                           u"About to delete section [" + grid.texts[row] + u"] = " + title + u". Are you sure?"))
            return false;
        AircraftIni.setSection(grid.texts[row]);
        AircraftIni.DeleteSection();
    }
    Renumber_fltsim(AircraftIni.path(), autoBackupOn, &dialogs);
    return true;
}

} // namespace fleetwright
