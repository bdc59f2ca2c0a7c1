#include "editing/keyremoval.h"

#include <algorithm>
#include <limits>

#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "environment/startupsettings.h"

namespace fleetwright {

namespace {

bool isVariationSection(const std::u16string &name)
{
    return LCase(name.substr(0, 7)) == u"fltsim.";
}

std::vector<std::u16string> variationSections(clsIniFile &AircraftIni)
{
    std::vector<std::u16string> sections;
    std::int32_t count = 0;
    AircraftIni.EnumerateAllSections(sections, count);
    std::erase_if(sections, [](const std::u16string &name) { return !isVariationSection(name); });
    return sections;
}

} // namespace

void FindInList(const std::vector<std::u16string> &list, std::u16string &key, bool &found)
{
    key = LCase(Trim(key));
    found = std::any_of(list.begin(), list.end(),
                        [&key](const std::u16string &entry) { return LCase(Trim(entry)) == key; });
}

std::vector<std::u16string> LoadList(clsIniFile &AircraftIni)
{
    std::vector<std::u16string> list;
    // One look at the file for all the sections' key lists.
    clsIniFile::Batch batch(AircraftIni);
    for (const std::u16string &section : variationSections(AircraftIni)) {
        AircraftIni.setSection(section);
        std::vector<std::u16string> keys;
        std::int32_t count = 0;
        AircraftIni.EnumerateCurrentSection(keys, count);
        for (std::u16string &key : keys) {
            bool found = false;
            FindInList(list, key, found);
            if (!found)
                list.insert(std::upper_bound(list.begin(), list.end(), key), key);
        }
    }
    return list;
}

std::u16string wipeReport(std::int16_t count)
{
    const std::string number = std::to_string(count);
    return u"A total of " + std::u16string(number.begin(), number.end())
        + u" keys have been deleted in the aircraft.cfg";
}

std::int16_t RemoveMarkedKeys(clsIniFile &AircraftIni, const std::vector<std::u16string> &markedKeys)
{
    std::int16_t counter = 0;
    clsIniFile::Batch batch(AircraftIni);
    for (const std::u16string &section : variationSections(AircraftIni)) {
        AircraftIni.setSection(section);
        for (const std::u16string &key : markedKeys) {
            AircraftIni.setKey(key);
            AircraftIni.setValue(nullptr);
            if (counter == std::numeric_limits<std::int16_t>::max())
                throw RuntimeError::overflow(u"cmd_Wipe_Click");
            ++counter;
        }
    }
    batch.commit();
    return counter;
}

} // namespace fleetwright
