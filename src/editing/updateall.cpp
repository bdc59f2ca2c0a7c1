#include "editing/updateall.h"

#include <cstdint>

#include "core/aircraftfilestore.h"
#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/vbtext.h"

namespace fleetwright {

bool updateAll(clsIniFile &AircraftIni, const std::u16string &key, const std::u16string &value,
               const std::vector<bool> &rowChecked, bool confirmUpdates, Dialogs &dialogs)
{
    if (!confirmUpdate(dialogs, confirmUpdates))
        return false;
    const std::vector<std::u16string> checkedRows = checkedRowList(rowChecked);
    std::vector<std::u16string> sections;
    std::int32_t count = 0;
    AircraftIni.EnumerateAllSections(sections, count);

    clsIniFile::Batch batch(AircraftIni);
    for (std::int32_t i = 1; i <= count; ++i) {
        const std::u16string &section = sections[static_cast<std::size_t>(i - 1)];
        if (LCase(section.substr(0, 7)) != u"fltsim.")
            continue;
        AircraftIni.setSection(section);
        AircraftIni.setKey(key);
        if (!checkedRows.empty() && !sectionIsChecked(i, checkedRows))
            continue;
        AircraftIni.setValue(value);
    }
    return true;
}

} // namespace fleetwright
