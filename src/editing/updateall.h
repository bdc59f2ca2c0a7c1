#pragma once

#include <array>
#include <string>
#include <vector>

namespace fleetwright {

class Dialogs;
class clsIniFile;

// The update-all family: nine buttons beside the variation fields, each copying one field's value into its key
// of every [fltsim.x] section, or of the sections whose grid rows are checked. Unlike every other write it
// takes no backup.
struct UpdateAllMember
{
    const char16_t *button; // objectName of the button
    const char16_t *key;
};

inline constexpr std::array<UpdateAllMember, 9> UPDATE_ALL_MEMBERS = {{
    {u"cmd_Update_all_atc_airline", u"atc_airline"},
    {u"cmd_Update_all_atc_heavy", u"atc_heavy"},
    {u"cmd_Update_all_atc_model", u"atc_model"},
    {u"cmd_Update_all_atc_Parking_codes", u"atc_parking_codes"},
    {u"cmd_Update_all_atc_Parking_types", u"atc_parking_types"},
    {u"cmd_Update_all_ui_Createdby", u"ui_createdby"},
    {u"cmd_Update_all_ui_Manufacturer", u"ui_manufacturer"},
    {u"cmd_Update_all_ui_Typerole", u"ui_typerole"},
    {u"cmd_Update_all_ui_Type", u"ui_type"},
}};

// Writes key=value into the variation sections, in file order, after "Are you sure?" when confirmUpdates;
// false when the answer was No. rowChecked holds each grid row's check box from row 0. With no row checked
// every variation section is written; with some checked only those whose place among all sections of the
// file, less 1, is a checked row, so a section ahead of [fltsim.0] shifts the check marks by one place. A key
// a section lacks goes at its end.
//
// Section and Key of AircraftIni are left on the last variation section and key, written or not. The checked
// rows are counted in 16 bits: more than 32767 rows throws RuntimeError 6 before anything is written.
bool updateAll(clsIniFile &AircraftIni, const std::u16string &key, const std::u16string &value,
               const std::vector<bool> &rowChecked, bool confirmUpdates, Dialogs &dialogs);

} // namespace fleetwright
