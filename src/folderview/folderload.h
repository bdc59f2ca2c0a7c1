#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "environment/simulatorenvironment.h"

namespace fleetwright {

class clsIniFile;

// The reading half of a folder load: what the folder browser's change (and every reload after an edit) learns
// from an aircraft folder, as plain data that the main form applies to its controls.
//
//     [fltsim.0]                                    grid row: FLTSIM.0 | Corvane 737 | GATE ... | <default> ...
//     title=Corvane 737      // any comment
//     model=
//     texture=Blue/Tail
//     [effects]                                     effectNames[0] "fx_wake", effectRunsOnce[0]
//     wake=fx_wake, 1
//     [exits]                                       exitFields[0] "0.4" "12" "-3" "4" "0", ExitNote0 "//Door 1L"
//     exit.0=0.4, 12, -3, 4, 0  //Door 1L
//
// The form runs the load in this order: it erases Descriptions and returns at once while LoadGuard is on,
// runs ResetValues and disables cmd_DirUp; then calls readAircraftFolder, which does the aircraft test and
// reads every section; then applies the result: panels 8 and 9, cmd_DirUp, the rows, the folder-wide fields,
// ReadAirFile with AirFileName, the menus, the exit check boxes, the white fields and the "Path" setting,
// the selected row with mnuDelete's caption, the current fields and panel 10, opens rowToOpen with
// ListView1_DblClick, fills the combos and lst_Airfile, selects selectedFolderAirFile, and sets SSTab1's tab stop.

// The 17 texts of a grid row: the section name, then sub-items 1 to 16.
struct GridColumn
{
    enum : std::size_t
    {
        Section,
        Title,
        ParkingTypes,
        ParkingCodes,
        CreatedBy,
        TypeRole,
        Manufacturer,
        Type,
        Variation,
        Model,
        Sim,
        AtcId,
        FlightNumber,
        Airline,
        Heavy,
        AtcModel,
        Texture,
        Count,
    };
};
using GridRow = std::array<std::u16string, GridColumn::Count>;

// Colours of text boxes as 0xBBGGRR, blue in the high byte.
inline constexpr std::uint32_t COLOUR_NO_ROW = 0xE0E0E0;
inline constexpr std::uint32_t COLOUR_WHITE = 0xFFFFFF;
inline constexpr std::uint32_t COLOUR_GREEN = 0x00FF00;
inline constexpr std::uint32_t COLOUR_RED = 0x0000FF;

struct TextAndColour
{
    std::u16string text;
    std::uint32_t backColour = COLOUR_WHITE;

    bool operator==(const TextAndColour &) const = default;
};

// The effect keys of [effects], by their index in effectNames and effectRunsOnce.
inline constexpr std::size_t EFFECT_COUNT = 11;
extern const std::array<const char16_t *, EFFECT_COUNT> EFFECT_KEYS; // "wake", "water", ... "r_wingtipvortice"

// What the load reads, besides the folder itself: form state that a load only overwrites when the file says
// so, and the machine's decimal separator.
struct FolderLoadInput
{
    std::u16string folder; // Dir1.Path, native
    char16_t decimalSeparator = u'.';
    // They keep their text when the file gives no new one: no reset empties them.
    std::u16string ExitNote0;
    std::u16string ExitNote1;
    std::u16string WingSpanSection;
    // Rows after the first hold their section alone, with no key read: for a caller that wants the number of
    // rows and the first one only, as the checker does before a run. Nothing else of the load changes.
    bool firstRowOnly = false;
};

// Which operations on the folder the menus offer: mnuCFG, mnuDelKeys, mnuSortKeys, mnuRenumber, mnuValidate and
// mnuvalidateAll, in this order.
struct MenuStates
{
    bool openConfig = false;
    bool deleteKeys = false;
    bool sortKeys = false;
    bool renumber = false;
    bool validate = false;
    bool validateAll = false;
};

// The three "current" fields of a row, as a click on it reads them from the file.
struct CurrentFields
{
    std::u16string texture; // "<default>" when empty
    std::u16string model;   // "<default>" when empty
    std::u16string airFile; // "<none>" when empty

    bool operator==(const CurrentFields &) const = default;
};

struct FolderLoadResult
{
    // The aircraft test: a plain file "aircraft.cfg" (in any case) in the folder.
    bool isAircraftFolder = false;
    bool upwardsEnabled = false;       // cmd_DirUp: an aircraft folder that is no drive root
    PanelPaint folderPanel;            // panel 8, "AC Folder", green or red
    PanelPaint statusPanel;            // panel 9, "AC Status: OK" / "NOK" / "n/a"; painted by every finished load
    std::u16string variationCountText; // panel 10, n & " aircraft variations defined"

    // One row per variation section, in file order, and its description by the same index.
    std::vector<GridRow> rows;
    std::vector<std::u16string> Descriptions;

    // The effect files of txt_effects and whether each runs once (chk_Effect), by index.
    std::array<std::u16string, EFFECT_COUNT> effectNames;
    std::array<bool, EFFECT_COUNT> effectRunsOnce {};
    std::u16string wingSpanText; // txt_WingSpan_Org
    std::u16string WingSpanSection;
    // exitFields[0] holds the five fields of exit.0 (txt_Exit_0), and so on.
    std::array<std::array<std::u16string, 5>, 3> exitFields;
    std::u16string ExitNote0;
    std::u16string ExitNote1; // exit.1's note, overwritten by exit.2's
    TextAndColour jetways {u"Jetways possible: no", COLOUR_RED};
    // atc_model and atc_type of [General].
    std::u16string generalAtcModel;
    std::u16string generalAtcType;
    // The raw sim value of the first variation that has one: the air file that ReadAirFile is to read.
    std::u16string AirFileName;

    // Settled by the row count once the sections are read.
    MenuStates menus;
    std::array<bool, 3> exitComplete {}; // all five fields of the exit filled: chk_Exit_0 to 2
    // txt_general_atc_model, txt_general_atc_type, txt_WingSpan_New and the 15 exit fields turn white.
    bool fieldsWhite = false;
    std::optional<std::u16string> pathSetting; // the settings value "Path" to save: only with variations
    std::optional<std::size_t> selectedRow;    // 0, the first row, when there are rows
    std::u16string deleteCommandText;          // the caption of frm_RightClick.mnuDelete
    std::optional<CurrentFields> current;      // of the first row; nothing leaves the fields alone
    std::optional<std::size_t> rowToOpen;      // the row ListView1_DblClick opens
    // What the editor offers for texture=, model= and sim=: the suffixes of the texture and model folders, the
    // air files; and the air files of the folder as lst_Airfile lists them, with the one selected.
    std::vector<std::u16string> textureChoices;
    std::vector<std::u16string> modelChoices;
    std::vector<std::u16string> airFileChoices;
    std::vector<std::u16string> folderAirFiles;
    std::optional<std::size_t> selectedFolderAirFile; // entry 0 when the list has entries
    bool editorTabStop = false;                       // SSTab1 takes the focus by tab

    // Whether the load's own error handler still stood when a fault came out: the form then shows the common
    // error box, otherwise the fatal one. Handling the first key of a section that is neither a variation nor
    // [effects] switches the handler off for the rest of the load.
    bool errorHandlerOn = true;
};

// Reads the folder input.folder. For an aircraft folder, AircraftIni's path becomes that folder's
// aircraft.cfg (as spelled on disk) and the file is parsed once for the whole load; for any other folder
// AircraftIni is left as it stood. Section and Key are left as the last read set them.
//
// A file that cannot be read (no permission, garbage, a folder named aircraft.cfg) is no error: it yields no
// sections, or no aircraft folder. The one fault that can come out is RuntimeError 6 "Overflow", procedure
// "Dir1_Change", from a wing_span value too large for a number; result then holds everything read up to that
// key, and errorHandlerOn tells which error box the form shows. Nothing after the fault is read.
void readAircraftFolder(const FolderLoadInput &input, clsIniFile &AircraftIni, FolderLoadResult &result);
FolderLoadResult readAircraftFolder(const FolderLoadInput &input, clsIniFile &AircraftIni);

} // namespace fleetwright
