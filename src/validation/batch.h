#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/runtimeerror.h"
#include "validation/checkerfeed.h"
#include "validation/validationrun.h"

namespace fleetwright {

class clsIniFile;
class Dialogs;

// Validation of every aircraft folder directly below a root, joined into one report, "corvanecheckall.log"
// in the temporary folder:
//
//     ************************************************************************************************
//     Fleetwright V.1.0.0 - 23.11.2025 11:36:00 - Validate all aircraft below folder : C:\FS9\Aircraft" (full report) *
//     ************************************************************************************************
//     <the single report of each folder, frame included, or nothing in an error report>
//     ***************************************************************************
//     No aircraft.cfg file found in folder C:\FS9\Aircraft\texture-pack *
//     ***************************************************************************
//
// The lone double quote behind the folder is the form users know. There is no closing line and no count.

// How one folder of the batch went.
enum class BatchFolderOutcome
{
    Reported,  // a report was written; the folder's text is in the batch report unless errors only
    Refused,   // failureText says why; a failure block stands in the report
    NoReport,  // the run wrote nothing (all options off): the report gets what the single report file held
    RunFailed, // a run-time error ended the run; the report gets what the single report file held
};

struct BatchFolder
{
    std::u16string folder; // as the batch report names it
    BatchFolderOutcome outcome = BatchFolderOutcome::NoReport;
    bool ReportHasErrors = false;
    bool inReport = false;             // the folder put text of its own into the batch report
    std::u16string BatchFailureText;   // the run's refusal text, without the folder
    std::optional<RuntimeError> error; // the error that ended the run
};

// Handed to the progress callback after each folder: folder number done of count (ProgressBar1's value is
// done), and how that folder went.
struct BatchProgress
{
    std::size_t done = 0;
    std::size_t count = 0;
    const BatchFolder *folder = nullptr;
};

struct BatchInput
{
    std::u16string BatchRoot;        // where the folders come from: Dir1 when frm_ValidateAll opened
    std::u16string BatchStartFolder; // Dir1 at the start: named in the header; empty means BatchRoot
    bool errorsOnly = false;         // OptRep(1): only folders whose report has errors, and failure blocks
    std::vector<std::u16string> AnalyzeOptionList;
    ValidationEnvironment environment;
    SimulatorChoice choice = SimulatorChoice::Fsx; // OptATC: Fs9 or Fsx, used when both simulators are found
    std::u16string reportPath;                     // empty: TempFolder + "corvanecheckall.log"

    // Brings a folder up as the main form would before each run. Empty: feedValidationFromFolder. The form
    // moves Dir1 here, whose load leaves AircraftIni, the grid and txt_FSXVersion for the run.
    std::function<ValidationFeed(const std::u16string &folder)> loadFolder = {};
    // After each folder; the form moves its progress bar and serves its events here.
    std::function<void(const BatchProgress &)> progress = {};
    // Looked at between folders: once set, the batch ends after the folder under way.
    const std::atomic<bool> *stopRequested = nullptr;
    // Passed on to every run, for the empty-folder search.
    std::function<void()> yieldToEvents = {};
    // Passed on to every run: what a run changes is one operation of its folder.
    Journal *journal = nullptr;
};

struct BatchResult
{
    std::u16string reportPath;
    std::vector<BatchFolder> folders; // those validated, in order
    std::size_t folderCount = 0;      // all folders below the root
    bool stopped = false;             // a stop came before the last folder
    // The report options as the runs left them: without simulators entries 9 to 11 read "0" in memory.
    std::vector<std::u16string> AnalyzeOptionList;
    // Failures the batch passes over, as it passes over every error of its loop: a report file that cannot be
    // written or removed. One line each.
    std::vector<std::u16string> skippedErrors;
};

// frm_ValidateAll's cmdStart without the form. Folders are taken from BatchRoot's first level in listing order
// and validated one by one with BatchRunning set, each run reading TempFolder + "corvanecheck.log" back.
// "corvanecheck.log" is deleted in BatchStartFolder before and in each folder after its run.
//
// A BatchRoot that is not there throws RuntimeError 76 "Path not found", and no report is written; so does a
// root with more than 32767 folders, with error 6 "Overflow". From the report's frame on no error stops the
// batch: a run that fails is noted in its BatchFolder, a report file that cannot be written in skippedErrors.
// Moving the form back to BatchStartFolder and showing the report are the caller's business.
BatchResult runBatchValidation(const BatchInput &input, clsIniFile &AircraftIni, Dialogs &dialogs);

// The header line of the batch report, H.
std::u16string batchReportHeader(const std::u16string &BatchStartFolder, bool errorsOnly);

} // namespace fleetwright
