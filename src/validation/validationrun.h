#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace fleetwright {

class clsIniFile;
class Dialogs;
class Journal;

// The journal's name for what a run changes: the byte order marks it takes out of texture.cfg and model.cfg.
inline constexpr std::u16string_view BOM_REMOVAL_OPERATION = u"Validate: removed byte order marks";

// What a run knows of the machine: start-up's findings.
struct ValidationEnvironment
{
    bool Fs9Found = false;
    bool FsxFound = false;
    std::vector<std::u16string> Fs9Airlines; // raw lines of airlines.cfg
    std::vector<std::u16string> FsxAirlines;
    std::u16string Fs9EffectsFolder; // the simulator's folder + "Effects", native
    std::u16string FsxEffectsFolder;
    std::u16string TempFolder; // ends in the separator
};

// With both simulators found, Ask puts the three-button question (never in a batch).
enum class SimulatorChoice
{
    Ask,
    Fs9,
    Fsx,
};

struct ValidationInput
{
    std::u16string folder;                         // Dir1.Path, native
    std::vector<std::u16string> AnalyzeOptionList; // 23 entries "0"/"1"; missing entries count as "0"
    ValidationEnvironment environment;
    SimulatorChoice choice = SimulatorChoice::Ask; // in a batch: frm_ValidateAll.OptATC
    std::u16string textureFormatText;              // txt_FSXVersion as the form shows it
    int gridRowCount = 0;                          // ListView1's rows
    bool BatchRunning = false;
    std::u16string reportPath; // empty: TempFolder + "corvanecheck.log"
    // Called once per folder of the empty-folder search, so the window can serve its events.
    std::function<void()> yieldToEvents = {};
    // When given, what the run changes in the folder is one operation in it, BOM_REMOVAL_OPERATION; a run
    // that changes nothing leaves no trace there.
    Journal *journal = nullptr;
};

enum class ValidationOutcome
{
    ReportWritten,
    Refused,
    Cancelled,
    NothingToReport, // all options 0
};

struct ValidationResult
{
    ValidationOutcome outcome = ValidationOutcome::Refused;
    bool ReportHasErrors = false;
    std::u16string BatchFailureText;               // only in a batch: why the run stopped
    std::u16string reportPath;                     // the file written
    std::vector<std::u16string> AnalyzeOptionList; // as the run left it (9-11 zeroed without simulators)
};

// mnuValidate_Click's engine: boxes go through dialogs (none in a batch except the all-options-off box), the
// report is written to reportPath; showing it is the caller's business. A run-time error that ends the run
// throws RuntimeError naming the procedure, and leaves whatever was written so far.
ValidationResult runValidation(const ValidationInput &input, clsIniFile &AircraftIni, Dialogs &dialogs);

} // namespace fleetwright
