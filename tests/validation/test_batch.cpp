#include <atomic>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "batchfixtures.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/runtimeerror.h"
#include "platform/codepage.h"
#include "validation/batch.h"
#include "validation/checkerfeed.h"
#include "validation/reportwriter.h"
#include "validation/validationrun.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

std::vector<std::u16string> allOptions(const char16_t *digit = u"1")
{
    return std::vector<std::u16string>(23, digit);
}

std::u16string tempFolderOf(const TempDir &temp)
{
    return widePath(temp.path()) + static_cast<char16_t>(fs::path::preferred_separator);
}

BatchInput batchInput(const TempDir &temp, const fs::path &root)
{
    BatchInput input;
    input.BatchRoot = widePath(root);
    input.AnalyzeOptionList = allOptions();
    input.environment.TempFolder = tempFolderOf(temp);
    return input;
}

std::string text(const std::u16string &wide)
{
    return platform::toCodePage(wide);
}

std::string framed(const std::u16string &line)
{
    const std::string stars = text(reportStars(line));
    return stars + "\r\n" + text(line) + "\r\n" + stars + "\r\n";
}

// The report a single run writes for folder when the main form has loaded it.
std::string singleReport(const fs::path &folder, const TempDir &temp)
{
    NeverAskDialogs dialogs;
    clsIniFile AircraftIni;
    const ValidationFeed feed = feedValidationFromFolder(widePath(folder), AircraftIni, dialogs);
    ValidationInput input;
    input.folder = widePath(folder);
    input.AnalyzeOptionList = allOptions();
    input.environment.TempFolder = tempFolderOf(temp);
    input.textureFormatText = feed.textureFormatText;
    input.gridRowCount = feed.gridRowCount;
    input.BatchRunning = true;
    input.reportPath = widePath(temp / "expected.log");
    runValidation(input, AircraftIni, dialogs);
    return readBytes(temp / "expected.log");
}

// Four folders: a clean aircraft, one that is no aircraft, one without variations, one with an error.
struct Library
{
    Library()
    {
        writeAircraft(root / "A-clean");
        writeBytes(root / "B-junk" / "readme.txt", "no aircraft here");
        writeBytes(root / "B-junk" / "corvanecheck.log", "left over");
        writeBytes(root / "C-nosections" / "aircraft.cfg", crlf("[general]\natc_type=CORVANE\n"));
        writeAircraft(root / "D-error");
        fs::remove_all(root / "D-error" / "texture.red"); // a texture missing: an error
        writeBytes(root / "corvanecheck.log", "left over");
    }
    std::u16string folder(const char *name) const { return widePath(root / name); }

    TempDir temp;
    TempDir library;
    fs::path root = library.path();
};

} // namespace

TEST(BatchValidation, FullReportJoinsEveryReportAndFailureBlock)
{
    const ScopedVariable time("SOURCE_DATE_EPOCH", FIXED_TIME);
    const Library lib;
    const std::string clean = singleReport(lib.root / "A-clean", lib.temp);
    const std::string withError = singleReport(lib.root / "D-error", lib.temp);
    ASSERT_NE(withError.find("Textures missing in folder:        1\r\n"), std::string::npos) << withError;

    NeverAskDialogs dialogs;
    clsIniFile AircraftIni;
    const BatchResult result = runBatchValidation(batchInput(lib.temp, lib.root), AircraftIni, dialogs);

    EXPECT_EQ(result.reportPath, tempFolderOf(lib.temp) + u"corvanecheckall.log");
    const std::string expected = framed(batchReportHeader(widePath(lib.root), false)) + clean
        + framed(u"No aircraft.cfg file found in folder " + lib.folder("B-junk") + u" *")
        + framed(u"An aircraft.cfg file without any [fltsim.x] section found in folder " + lib.folder("C-nosections")
                 + u" *")
        + withError;
    EXPECT_EQ(readBytes(lib.temp / "corvanecheckall.log"), expected);

    ASSERT_EQ(result.folders.size(), 4u);
    EXPECT_EQ(result.folderCount, 4u);
    EXPECT_FALSE(result.stopped);
    EXPECT_TRUE(result.skippedErrors.empty());
    const std::vector<BatchFolderOutcome> outcomes = {BatchFolderOutcome::Reported, BatchFolderOutcome::Refused,
                                                      BatchFolderOutcome::Refused, BatchFolderOutcome::Reported};
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(result.folders[i].outcome, outcomes[i]);
        EXPECT_TRUE(result.folders[i].inReport);
        EXPECT_EQ(result.folders[i].ReportHasErrors, i == 3);
    }
    EXPECT_EQ(result.folders[1].BatchFailureText, u"No aircraft.cfg file found in folder ");
    // No box in a batch, and the reports left in the start folder and the folders are gone.
    EXPECT_TRUE(dialogs.messages().empty());
    EXPECT_FALSE(fs::exists(lib.root / "corvanecheck.log"));
    EXPECT_FALSE(fs::exists(lib.root / "B-junk" / "corvanecheck.log"));
}

TEST(BatchValidation, ErrorReportKeepsErrorsAndFailuresOnly)
{
    const ScopedVariable time("SOURCE_DATE_EPOCH", FIXED_TIME);
    const Library lib;
    // A single missing model sits on its label and is no error: the folder is left out.
    writeAircraft(lib.root / "E-model-missing");
    writeBytes(lib.root / "E-model-missing" / "aircraft.cfg",
               crlf("[fltsim.0]\ntitle=Corvane One\nmodel=\ntexture=\nsim=corvane\n"
                    "[fltsim.1]\ntitle=Corvane Two\nmodel=gone\ntexture=red\nsim=corvane\n"));
    const std::string modelMissing = singleReport(lib.root / "E-model-missing", lib.temp);
    ASSERT_NE(modelMissing.find("Models missing in folder:          fltsim.1"), std::string::npos) << modelMissing;
    const std::string withError = singleReport(lib.root / "D-error", lib.temp);

    BatchInput input = batchInput(lib.temp, lib.root);
    input.errorsOnly = true;
    input.BatchStartFolder = widePath(lib.root / "A-clean");
    NeverAskDialogs dialogs;
    clsIniFile AircraftIni;
    const BatchResult result = runBatchValidation(input, AircraftIni, dialogs);

    const std::string expected = framed(batchReportHeader(lib.folder("A-clean"), true))
        + framed(u"No aircraft.cfg file found in folder " + lib.folder("B-junk") + u" *")
        + framed(u"An aircraft.cfg file without any [fltsim.x] section found in folder " + lib.folder("C-nosections")
                 + u" *")
        + withError;
    EXPECT_EQ(readBytes(lib.temp / "corvanecheckall.log"), expected);
    ASSERT_EQ(result.folders.size(), 5u);
    EXPECT_FALSE(result.folders[0].inReport);
    EXPECT_FALSE(result.folders[4].inReport);
    EXPECT_FALSE(result.folders[4].ReportHasErrors);
    EXPECT_EQ(result.folders[4].outcome, BatchFolderOutcome::Reported);
    // The header names the start folder; the root's own left-over report is not touched then.
    EXPECT_TRUE(fs::exists(lib.root / "corvanecheck.log"));
}

TEST(BatchValidation, RootWithoutFoldersGivesTheFrameAlone)
{
    const ScopedVariable time("SOURCE_DATE_EPOCH", FIXED_TIME);
    TempDir temp;
    TempDir root;
    writeBytes(root / "aircraft.cfg", crlf("[fltsim.0]\ntitle=files are no folders\n"));
    BatchInput input = batchInput(temp, root.path());
    input.reportPath = widePath(temp / "all.log");
    std::vector<std::size_t> progress;
    input.progress = [&progress](const BatchProgress &step) { progress.push_back(step.done); };
    NeverAskDialogs dialogs;
    clsIniFile AircraftIni;
    const BatchResult result = runBatchValidation(input, AircraftIni, dialogs);
    EXPECT_TRUE(result.skippedErrors.empty());
    EXPECT_EQ(readBytes(temp / "all.log"), framed(batchReportHeader(widePath(root.path()), false)));
    EXPECT_TRUE(result.folders.empty());
    EXPECT_TRUE(progress.empty());
}

TEST(BatchValidation, StopEndsTheBatchAfterTheCurrentFolder)
{
    const ScopedVariable time("SOURCE_DATE_EPOCH", FIXED_TIME);
    const Library lib;
    const std::string clean = singleReport(lib.root / "A-clean", lib.temp);
    std::atomic<bool> stop = false;
    BatchInput input = batchInput(lib.temp, lib.root);
    input.stopRequested = &stop;
    std::vector<std::u16string> progressed;
    input.progress = [&](const BatchProgress &step) {
        EXPECT_EQ(step.count, 4u);
        progressed.push_back(step.folder->folder);
        stop = true; // the Stop button, pressed while the first folder is validated
    };
    NeverAskDialogs dialogs;
    clsIniFile AircraftIni;
    const BatchResult result = runBatchValidation(input, AircraftIni, dialogs);
    EXPECT_TRUE(result.stopped);
    EXPECT_EQ(progressed, std::vector<std::u16string> {lib.folder("A-clean")});
    EXPECT_EQ(readBytes(lib.temp / "corvanecheckall.log"),
              framed(batchReportHeader(widePath(lib.root), false)) + clean);
}

TEST(BatchValidation, AllOptionsOffPassesOnWhateverTheSingleReportHolds)
{
    const ScopedVariable time("SOURCE_DATE_EPOCH", FIXED_TIME);
    const Library lib;
    writeBytes(lib.temp / "corvanecheck.log", "an earlier report\r\n");
    BatchInput input = batchInput(lib.temp, lib.root);
    input.AnalyzeOptionList = allOptions(u"0");
    NeverAskDialogs dialogs;
    clsIniFile AircraftIni;
    const BatchResult result = runBatchValidation(input, AircraftIni, dialogs);

    // The box is not silenced by the batch: once per folder, and no folder is refused, since the run ends first.
    ASSERT_EQ(dialogs.messages().size(), 4u);
    for (const DialogRecord &box : dialogs.messages()) {
        EXPECT_EQ(box.kind, DialogKind::Information);
        EXPECT_EQ(box.text, u"You have disabled all analysis reporting options. Exiting here....");
    }
    std::string expected = framed(batchReportHeader(widePath(lib.root), false));
    for (int i = 0; i < 4; ++i)
        expected += "an earlier report\r\n";
    EXPECT_EQ(readBytes(lib.temp / "corvanecheckall.log"), expected);
    for (const BatchFolder &folder : result.folders)
        EXPECT_EQ(folder.outcome, BatchFolderOutcome::NoReport);
}

TEST(BatchValidation, MissingRootStartsNothing)
{
    TempDir temp;
    BatchInput input = batchInput(temp, temp / "gone");
    NeverAskDialogs dialogs;
    clsIniFile AircraftIni;
    try {
        runBatchValidation(input, AircraftIni, dialogs);
        FAIL() << "a missing root started a batch";
    } catch (const RuntimeError &error) {
        EXPECT_EQ(error.number(), 76);
    }
    EXPECT_FALSE(fs::exists(temp / "corvanecheckall.log"));
}

TEST(BatchValidation, FormMayLoadTheFolders)
{
    const ScopedVariable time("SOURCE_DATE_EPOCH", FIXED_TIME);
    const Library lib;
    BatchInput input = batchInput(lib.temp, lib.root);
    std::vector<std::u16string> loaded;
    NeverAskDialogs dialogs;
    clsIniFile AircraftIni;
    // A form that shows no rows for any folder: every aircraft folder is then refused for its empty grid.
    input.loadFolder = [&](const std::u16string &folder) {
        loaded.push_back(folder);
        ValidationFeed feed = feedValidationFromFolder(folder, AircraftIni, dialogs);
        feed.gridRowCount = 0;
        return feed;
    };
    const BatchResult result = runBatchValidation(input, AircraftIni, dialogs);
    EXPECT_EQ(loaded.size(), 4u);
    EXPECT_EQ(result.folders[0].outcome, BatchFolderOutcome::Refused);
    EXPECT_EQ(result.folders[0].BatchFailureText,
              u"An aircraft.cfg file without any [fltsim.x] section found in folder ");
}
