#pragma once

#include <array>
#include <optional>
#include <string>

namespace fleetwright {

class Dialogs;
class clsIniFile;

// The general data of the open variation as the editor holds it, written back by "1. Update": the
// variation's own keys, the wing span, the three exit lines and the two keys of [general].
//
//     [FLTSIM.3]             <- rowSection, the grid's capitals; the profile layer finds [fltsim.3]
//     title=...              <- thirteen keys, always written, an empty box as "key="
//     [airplane_geometry]
//     wing_span=112.6        <- only when wingSpanNew is not empty, "," written as "."
//     [exits]
//     exit.0= 0.4, 62.0, -2.0, 6.7, 0            //Main door
//     [general]
//     atc_model=B738
//     atc_type=BOEING
struct GeneralData
{
    std::u16string title;
    std::u16string atcParkingTypes; // caption of lblSelections
    std::u16string atcParkingCodes;
    std::u16string uiCreatedBy;
    std::u16string uiTypeRole;
    std::u16string uiManufacturer;
    std::u16string uiType;
    std::u16string uiVariation;
    std::u16string atcId;
    std::u16string atcFlightNumber;
    std::u16string atcAirline;
    std::u16string atcModel;
    bool atcHeavy = false;

    std::u16string wingSpanNew;
    std::array<std::array<std::u16string, 5>, 3> exits;
    std::u16string generalAtcModel;
    std::u16string generalAtcType;
};

// The ATC boxes as the grid row shows them, before the write: what the boxes hold between the variation's
// keys and the reload that opens the row again.
struct AtcBoxes
{
    std::u16string atcId;
    std::u16string atcFlightNumber;
    std::u16string atcAirline;
    bool atcHeavy = false;
    std::u16string atcModel;
};

// The ATC boxes of a grid row: sub-items 11 to 15, the heavy box checked when the number the heavy text
// starts with equals 1.
AtcBoxes atcBoxesOfRow(const std::u16string &atcId, const std::u16string &flightNumber, const std::u16string &airline,
                       const std::u16string &heavy, const std::u16string &atcModel);

struct GeneralUpdateInput
{
    // The text of the selected grid row; nothing when no row is selected.
    std::optional<std::u16string> rowSection;
    GeneralData data;
    // The grid row's ATC sub-items, put into the boxes after the variation's keys are written.
    AtcBoxes rowAtc;
    std::u16string ExitNote0;
    std::u16string ExitNote1;

    // The radius step.
    std::u16string ModelFilePath;
    std::u16string RadiusOnLoad;
    std::u16string radiusText; // txt_FS9Radius
    char16_t decimalSeparator = u'.';

    bool ConfirmUpdates = true;
    bool AutoBackupOn = true;
};

enum class GeneralUpdateOutcome
{
    Declined, // answer No: nothing written, no backup
    Written,  // reload and open the row again
    Failed,   // the common error box was shown; nothing more happens
};

struct GeneralUpdateResult
{
    GeneralUpdateOutcome outcome = GeneralUpdateOutcome::Declined;
    // What the ATC boxes hold once the keys are written, when they were set: the grid row's values.
    std::optional<AtcBoxes> atcBoxes;
};

// The value of an exit line: " e0, e1, e2, e3, e4" with "," in each value written as ".", then twelve blanks
// and the note, which carries its own "//".
std::u16string exitLineValue(const std::array<std::u16string, 5> &values, const std::u16string &note);

// The write of cmd_cfg_Update_Click, up to the reload: asks "Are you sure?" when ConfirmUpdates, takes the
// backup, patches a changed model radius, then writes key by key through AircraftIni. exit.2 carries
// ExitNote1, as exit.1 does: there are two notes for three lines, and files rely on it.
//
// Faults before the radius step (no selected row, a failed backup) show the common error box naming
// cmd_cfg_Update_Click and write nothing. Once the radius step has run, its failure box is the handler in
// force: a fault shows it and the writing starts again with the variation's keys, once; a second fault ends
// the operation with the common error box. A read-only aircraft.cfg loses every write without a word.
GeneralUpdateResult updateGeneralData(clsIniFile &AircraftIni, const GeneralUpdateInput &input, Dialogs &dialogs);

} // namespace fleetwright
