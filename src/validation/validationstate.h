#pragma once

// The working state of one validation run, shared by its check units. Nothing here outlives a run.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/arraysearch.h"
#include "core/vbtext.h"

namespace fleetwright {

class clsIniFile;
struct ValidationInput;

inline constexpr char16_t ListSeparator = u'\u00A6';
inline constexpr std::u16string_view ProcedureName = u"mnuValidate_Click";

// States of the texture, model and airfile of a section.
enum : int
{
    StateMissing = 0,
    StatePresent = 1,
    StateUndefined = 2,
};

struct SectionRecord
{
    std::u16string sectionName; // lower-cased
    std::optional<std::u16string> title;
    std::optional<std::u16string> model;
    std::optional<std::u16string> sim;
    std::optional<std::u16string> texture;
    int textureState = StateMissing;
    int modelState = StateMissing;
    int airfileState = StateMissing;
    int numberingState = 0;
    std::optional<std::u16string> airline;
    std::optional<int> airlineState;
};

struct RunState
{
    std::vector<std::u16string> options; // AnalyzeOptionList, 23 entries

    std::vector<SectionRecord> SectionTable;
    std::vector<std::u16string> SectionNames;
    bool simulatorFound = false;
    bool UseFs9 = false;
    std::vector<std::u16string> AirlineList;
    std::u16string Fs9EffectsFolder;
    std::u16string FsxEffectsFolder;
    std::u16string FolderPrefix; // native, lower-cased, ends in the separator
    std::u16string AliasingNote;
    std::u16string SeenText;
    GrowingTextSearch SeenTextSearch; // grows with SeenText
    std::u16string CurrentEffectFile;
    std::vector<std::u16string> EffectFiles; // the missing ones once the section is done
    std::u16string TextureMask;

    std::u16string TitlesUndefined, TitleDuplicates, SectionsMisnumbered;
    std::u16string TexturesUndefined, TexturesMissing, TexturesUnused, TexturesShared;
    std::u16string ModelsUndefined, ModelsMissing, ModelsUnused;
    std::u16string AirfilesUndefined, AirfilesMissing, AirfilesUnused;
    std::u16string AirlinesUndefined, AirlinesUnknown;
    std::u16string EmptyFolderList;

    bool AnyTitleUndefined = false, AnyTitleDuplicate = false, AnyMisnumbered = false, OutOfSequence = false;
    bool AnyTextureUndefined = false, AnyModelUndefined = false, AnyAirfileUndefined = false;
    bool AnyAirlineProblem = false;

    std::int16_t TexturesFound = 0, ModelsFound = 0, AirfilesFound = 0, AirlinesFound = 0;
};

// list = list + "¦" + row, or row alone while the list is empty.
void addRow(std::u16string &list, const std::u16string &row);
// The rows of a list; none for an empty text.
std::vector<std::u16string> splitRows(const std::u16string &list);
// "0" for a list that ended up empty.
void zeroWhenEmpty(std::u16string &list);
// A 16-bit counter of the run: passing 32767 ends the run.
void increment(std::int16_t &counter);
// The numeric value of an option entry, as the run reads it.
double optionValue(const RunState &state, int index);

// Section and title checks.
void checkNumbering(RunState &state, std::size_t index);
void titlePass(RunState &state);

// Texture, model and airfile checks.
void textureState(RunState &state, SectionRecord &record);
void airfileState(RunState &state, SectionRecord &record);
void modelState(RunState &state, SectionRecord &record);
void sharedTexturesPass(RunState &state);
void textureChecks(RunState &state, const std::u16string &textureFormatText);
void modelChecks(RunState &state);
void airfileChecks(RunState &state);

// Airline and effect checks.
void evaluateAirline(RunState &state, SectionRecord &record);
void airlinePass(RunState &state);
void effectSection(RunState &state, clsIniFile &AircraftIni, const std::u16string &sectionName);

// The report body and frame, ready to be written; sets reportHasErrors.
std::vector<std::u16string> reportLines(const RunState &state, bool &reportHasErrors);

} // namespace fleetwright
