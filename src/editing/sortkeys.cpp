#include "editing/sortkeys.h"

#include "core/aircraftfilestore.h"
#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/vbtext.h"

namespace fleetwright {

namespace {

constexpr char16_t WRITTEN[] = u"$$$";

} // namespace

void SortArray(KeyTable &table, std::int16_t column)
{
    if (table.empty())
        return;
    const std::size_t c = static_cast<std::size_t>(column);
    const long upper = static_cast<long>(table.size()) - 1;
    long gap = upper;
    for (;;) {
        gap /= 2;
        if (gap < 1)
            return;
        bool swapped = true;
        while (swapped) {
            swapped = false;
            for (long i = 0; i <= upper - (gap + 1); ++i) {
                auto &row = table[static_cast<std::size_t>(i)];
                auto &other = table[static_cast<std::size_t>(i + gap)];
                if (row[c] > other[c]) {
                    std::swap(row[0], other[0]);
                    std::swap(row[1], other[1]);
                    swapped = true;
                }
            }
        }
    }
}

void DoSortKeys(clsIniFile &AircraftIni, bool autoBackupOn, Dialogs &dialogs)
{
    MakeBackup(AircraftIni.path(), autoBackupOn);
    std::vector<std::u16string> sections;
    std::int32_t sectionCount = 0;
    AircraftIni.EnumerateAllSections(sections, sectionCount);
    {
        clsIniFile::Batch batch(AircraftIni);
        for (const std::u16string &section : sections) {
            if (LCase(section.substr(0, 7)) != u"fltsim.")
                continue;
            AircraftIni.setSection(section);
            std::vector<std::u16string> keys;
            std::int32_t n = 0;
            AircraftIni.EnumerateCurrentSection(keys, n);
            KeyTable table(static_cast<std::size_t>(n) + 1);
            for (std::int32_t j = 0; j < n; ++j) {
                AircraftIni.setKey(keys[static_cast<std::size_t>(j)]);
                table[static_cast<std::size_t>(j)][0] = LCase(keys[static_cast<std::size_t>(j)]);
                table[static_cast<std::size_t>(j)][1] = AircraftIni.Value();
            }
            SortArray(table, 0);
            for (const std::u16string &key : keys) {
                AircraftIni.setKey(key);
                AircraftIni.DeleteKey();
            }
            const auto writeFirst = [&](const char16_t *name, bool blankForEmpty) {
                for (auto &row : table) {
                    if (row[0] != name)
                        continue;
                    AircraftIni.setKey(name);
                    AircraftIni.setValue(blankForEmpty && row[1].empty() ? std::u16string(u" ") : row[1]);
                    row[0] = WRITTEN;
                }
            };
            writeFirst(u"title", false);
            writeFirst(u"model", true);
            writeFirst(u"sim", true);
            writeFirst(u"texture", true);
            for (auto &row : table) {
                if (row[0] == WRITTEN || row[0].empty())
                    continue;
                AircraftIni.setKey(row[0]);
                AircraftIni.setValue(row[1]);
            }
        }
    }
    dialogs.information(u"The keys in the [fltsim.x] sections have been sorted", u"");
}

} // namespace fleetwright
