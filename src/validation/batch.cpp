#include "validation/batch.h"

#include <exception>
#include <filesystem>
#include <optional>
#include <system_error>

#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/paths.h"
#include "platform/codepage.h"
#include "platform/filelookup.h"
#include "platform/utf8.h"
#include "validation/reportwriter.h"

namespace fleetwright {

namespace fs = std::filesystem;
using platform::FileLookup;
using platform::LookupKind;
using platform::LookupSnapshot;

namespace {

const std::u16string PROCEDURE = u"cmdStart_Click";
const std::u16string SINGLE_REPORT = u"corvanecheck.log";
const std::u16string BATCH_REPORT = u"corvanecheckall.log";
constexpr std::size_t MAX_FOLDERS = 32767; // the folder count is a 16-bit number

// Stars, the line and Stars again, each closed by CR LF: the batch frame and the failure block alike.
std::u16string framed(const std::u16string &line)
{
    const std::u16string stars = reportStars(line);
    return stars + u"\r\n" + line + u"\r\n" + stars + u"\r\n";
}

// The batch goes on past every error of its loop; they are kept so that a caller can tell them.
template<typename Step> void skippingErrors(std::vector<std::u16string> &skipped, Step step)
{
    try {
        step();
    } catch (const RuntimeError &error) {
        skipped.push_back(error.description() + u" (" + error.procedure() + u")");
    } catch (const std::exception &error) {
        skipped.push_back(platform::fromUtf8(error.what()));
    }
}

// A report left in a folder by an earlier single run would be taken for a finding of the next one.
void deleteFolderReport(const std::u16string &folder, std::vector<std::u16string> &skipped)
{
    const std::optional<fs::path> report = FileLookup::findFile(joinPath(folder, SINGLE_REPORT));
    if (!report)
        return;
    std::error_code error;
    if (!fs::remove(*report, error) && error)
        skipped.push_back(u"Cannot delete " + report->u16string() + u": " + platform::fromUtf8(error.message()));
    LookupSnapshot::forget(*report);
}

} // namespace

std::u16string batchReportHeader(const std::u16string &BatchStartFolder, bool errorsOnly)
{
    return reportHeaderStart() + u"Validate all aircraft below folder : " + BatchStartFolder + u"\""
        + (errorsOnly ? u" (error report) *" : u" (full report) *");
}

BatchResult runBatchValidation(const BatchInput &input, clsIniFile &AircraftIni, Dialogs &dialogs)
{
    if (input.BatchRoot.empty() || !FileLookup::exists(input.BatchRoot, LookupKind::Folders))
        throw RuntimeError::pathNotFound(PROCEDURE);
    const std::vector<std::u16string> names = FileLookup(fs::path(input.BatchRoot) / u"*", LookupKind::Folders).names();
    if (names.size() > MAX_FOLDERS)
        throw RuntimeError::overflow(PROCEDURE);

    BatchResult result;
    result.folderCount = names.size();
    result.AnalyzeOptionList = input.AnalyzeOptionList;
    const std::u16string &startFolder = input.BatchStartFolder.empty() ? input.BatchRoot : input.BatchStartFolder;
    result.reportPath = input.reportPath.empty() ? input.environment.TempFolder + BATCH_REPORT : input.reportPath;
    const std::u16string singleReport = input.environment.TempFolder + SINGLE_REPORT;
    const fs::path reportFile(result.reportPath);

    deleteFolderReport(startFolder, result.skippedErrors);
    skippingErrors(result.skippedErrors, [&] {
        const std::u16string header = batchReportHeader(startFolder, input.errorsOnly);
        writeReportFile(reportFile, {reportStars(header), header, reportStars(header)}, PROCEDURE);
    });

    // Without a form in between, loading a folder, checking it and clearing its report up are one look at it,
    // and the folders around it do not change meanwhile: they are listed once for the whole batch. The form's
    // load serves events, after which nothing seen before counts.
    std::optional<LookupSnapshot> snapshot;
    if (!input.loadFolder)
        snapshot.emplace();
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (input.stopRequested && input.stopRequested->load()) {
            result.stopped = true;
            break;
        }
        BatchFolder &done = result.folders.emplace_back();
        done.folder = joinPath(input.BatchRoot, names[i]);
        std::string text; // what the folder adds to the report, in the code page
        skippingErrors(result.skippedErrors, [&] {
            const ValidationFeed feed = input.loadFolder ? input.loadFolder(done.folder)
                                                         : feedValidationFromFolder(done.folder, AircraftIni, dialogs);
            ValidationInput run;
            run.folder = done.folder;
            run.AnalyzeOptionList = result.AnalyzeOptionList;
            run.environment = input.environment;
            run.choice = input.choice;
            run.textureFormatText = feed.textureFormatText;
            run.gridRowCount = feed.gridRowCount;
            run.BatchRunning = true;
            run.reportPath = singleReport;
            run.yieldToEvents = input.yieldToEvents;
            run.journal = input.journal;
            try {
                const ValidationResult validated = runValidation(run, AircraftIni, dialogs);
                done.ReportHasErrors = validated.ReportHasErrors;
                done.BatchFailureText = validated.BatchFailureText;
                if (!validated.AnalyzeOptionList.empty())
                    result.AnalyzeOptionList = validated.AnalyzeOptionList;
                done.outcome = validated.outcome == ValidationOutcome::ReportWritten ? BatchFolderOutcome::Reported
                    : validated.outcome == ValidationOutcome::Refused                ? BatchFolderOutcome::Refused
                                                                                     : BatchFolderOutcome::NoReport;
            } catch (const RuntimeError &error) {
                done.outcome = BatchFolderOutcome::RunFailed;
                done.error = error;
            }
            // The file is read whether or not this run wrote it: a run that wrote nothing passes on the last
            // report there is, as the batch always did.
            if (!input.errorsOnly || done.ReportHasErrors)
                text = readReportBytes(fs::path(singleReport));
        });
        deleteFolderReport(done.folder, result.skippedErrors);
        if (snapshot) {
            // The run asks for the folder by its absolute path as well as by the path it was given.
            const fs::path checked(done.folder);
            std::error_code error;
            LookupSnapshot::forgetBelow(checked);
            if (const fs::path absolute = fs::absolute(checked, error); !error && absolute != checked)
                LookupSnapshot::forgetBelow(absolute);
        }
        if (!done.BatchFailureText.empty())
            text = platform::toCodePage(framed(done.BatchFailureText + done.folder + u" *"));
        done.inReport = !text.empty();
        skippingErrors(result.skippedErrors, [&] { appendReportBytes(reportFile, text, PROCEDURE); });
        if (input.progress)
            input.progress({i + 1, names.size(), &done});
    }
    return result;
}

} // namespace fleetwright
