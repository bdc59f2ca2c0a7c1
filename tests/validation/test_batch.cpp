#include <atomic>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/aircraftfolder.h"
#include "common/environment.h"
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

std::string framed(const std::u16string &line)
{
    const std::string stars = platform::toCodePage(reportStars(line));
    return stars + "\r\n" + platform::toCodePage(line) + "\r\n" + stars + "\r\n";
}

// Four folders: a clean aircraft, one that is no aircraft, one without variations, one with an error.
struct Library
{
    Library()
    {
        writeAircraft(root / "A-clean");
        writeBytes(root / "B-junk" / "corvanecheck.log", "left over");
        writeBytes(root / "C-nosections" / "aircraft.cfg", crlf("[general]\natc_type=CORVANE\n"));
        writeAircraft(root / "D-error");
        fs::remove_all(root / "D-error" / "texture.red"); // a texture missing: an error
        writeBytes(root / "corvanecheck.log", "left over");
    }
    std::u16string folder(const char *name) const { return widePath(root / name); }

    BatchInput input() const
    {
        BatchInput batch;
        batch.BatchRoot = widePath(root);
        batch.AnalyzeOptionList.assign(23, u"1");
        batch.environment.TempFolder = widePath(temp / "");
        return batch;
    }
    BatchResult run(const BatchInput &batch)
    {
        clsIniFile AircraftIni;
        return runBatchValidation(batch, AircraftIni, dialogs);
    }
    std::string report() const { return readBytes(temp / "corvanecheckall.log"); }

    // The report a single run writes for a folder when the main form has loaded it.
    std::string single(const char *name) const
    {
        NeverAskDialogs quiet;
        clsIniFile AircraftIni;
        const ValidationFeed feed = feedValidationFromFolder(folder(name), AircraftIni, quiet);
        ValidationInput run;
        run.folder = folder(name);
        run.AnalyzeOptionList.assign(23, u"1");
        run.environment.TempFolder = widePath(temp / "");
        run.textureFormatText = feed.textureFormatText;
        run.gridRowCount = feed.gridRowCount;
        run.BatchRunning = true;
        run.reportPath = widePath(temp / "expected.log");
        runValidation(run, AircraftIni, quiet);
        return readBytes(temp / "expected.log");
    }
    std::string refused(const char *name, const char16_t *why) const
    {
        return framed(std::u16string(why) + u" found in folder " + folder(name) + u" *");
    }

    ScopedVariable time {"SOURCE_DATE_EPOCH", "1700000000"};
    TempDir temp;
    TempDir library;
    fs::path root = library.path();
    NeverAskDialogs dialogs;
};

} // namespace

TEST(BatchValidation, FullReportJoinsEveryReportAndFailureBlock)
{
    Library lib;
    const BatchResult result = lib.run(lib.input());
    EXPECT_EQ(result.reportPath, widePath(lib.temp / "") + u"corvanecheckall.log");
    EXPECT_EQ(lib.report(),
              framed(batchReportHeader(widePath(lib.root), false)) + lib.single("A-clean")
                  + lib.refused("B-junk", u"No aircraft.cfg file")
                  + lib.refused("C-nosections", u"An aircraft.cfg file without any [fltsim.x] section")
                  + lib.single("D-error"));
    ASSERT_EQ(result.folders.size(), 4u);
    EXPECT_EQ(result.folderCount, 4u);
    EXPECT_FALSE(result.stopped);
    EXPECT_TRUE(result.skippedErrors.empty());
    const BatchFolderOutcome outcomes[] = {BatchFolderOutcome::Reported, BatchFolderOutcome::Refused,
                                           BatchFolderOutcome::Refused, BatchFolderOutcome::Reported};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(result.folders[i].outcome, outcomes[i]) << i;
        EXPECT_TRUE(result.folders[i].inReport);
        EXPECT_EQ(result.folders[i].ReportHasErrors, i == 3);
    }
    EXPECT_EQ(result.folders[1].BatchFailureText, u"No aircraft.cfg file found in folder ");
    // No box in a batch, and the reports left in the start folder and the folders are gone.
    EXPECT_TRUE(lib.dialogs.messages().empty());
    EXPECT_FALSE(fs::exists(lib.root / "corvanecheck.log"));
    EXPECT_FALSE(fs::exists(lib.root / "B-junk" / "corvanecheck.log"));
}

TEST(BatchValidation, ErrorReportKeepsErrorsAndFailuresOnly)
{
    Library lib;
    // A single missing model sits on its label and is no error: the folder is left out.
    writeAircraft(lib.root / "E-model-missing");
    writeBytes(lib.root / "E-model-missing" / "aircraft.cfg",
               crlf("[fltsim.0]\ntitle=Corvane One\nmodel=\ntexture=\nsim=corvane\n"
                    "[fltsim.1]\ntitle=Corvane Two\nmodel=gone\ntexture=red\nsim=corvane\n"));
    ASSERT_NE(lib.single("E-model-missing").find("Models missing in folder:          fltsim.1"), std::string::npos);

    BatchInput input = lib.input();
    input.errorsOnly = true;
    input.BatchStartFolder = lib.folder("A-clean");
    const BatchResult result = lib.run(input);
    EXPECT_EQ(lib.report(),
              framed(batchReportHeader(lib.folder("A-clean"), true)) + lib.refused("B-junk", u"No aircraft.cfg file")
                  + lib.refused("C-nosections", u"An aircraft.cfg file without any [fltsim.x] section")
                  + lib.single("D-error"));
    ASSERT_EQ(result.folders.size(), 5u);
    EXPECT_FALSE(result.folders[0].inReport);
    EXPECT_FALSE(result.folders[4].inReport);
    EXPECT_FALSE(result.folders[4].ReportHasErrors);
    EXPECT_EQ(result.folders[4].outcome, BatchFolderOutcome::Reported);
    // The header names the start folder; the root's own left-over report is not touched then.
    EXPECT_TRUE(fs::exists(lib.root / "corvanecheck.log"));
}

TEST(BatchValidation, StopEndsTheBatchAfterTheCurrentFolder)
{
    Library lib;
    std::atomic<bool> stop = false;
    BatchInput input = lib.input();
    input.stopRequested = &stop;
    std::vector<std::u16string> progressed;
    input.progress = [&](const BatchProgress &step) {
        EXPECT_EQ(step.count, 4u);
        progressed.push_back(step.folder->folder);
        stop = true; // the Stop button, pressed while the first folder is validated
    };
    EXPECT_TRUE(lib.run(input).stopped);
    EXPECT_EQ(progressed, std::vector<std::u16string> {lib.folder("A-clean")});
    EXPECT_EQ(lib.report(), framed(batchReportHeader(widePath(lib.root), false)) + lib.single("A-clean"));
}

TEST(BatchValidation, AllOptionsOffPassesOnWhateverTheSingleReportHolds)
{
    Library lib;
    writeBytes(lib.temp / "corvanecheck.log", "an earlier report\r\n");
    BatchInput input = lib.input();
    input.AnalyzeOptionList.assign(23, u"0");
    const BatchResult result = lib.run(input);
    // The box is not silenced by the batch: once per folder, and no folder is refused, since the run ends first.
    EXPECT_EQ(
        lib.dialogs.messages(),
        std::vector<DialogRecord>(
            4, {DialogKind::Information, u"", u"You have disabled all analysis reporting options. Exiting here...."}));
    std::string expected = framed(batchReportHeader(widePath(lib.root), false));
    for (int i = 0; i < 4; ++i)
        expected += "an earlier report\r\n";
    EXPECT_EQ(lib.report(), expected);
    for (const BatchFolder &folder : result.folders)
        EXPECT_EQ(folder.outcome, BatchFolderOutcome::NoReport);
}

TEST(BatchValidation, FormMayLoadTheFolders)
{
    Library lib;
    BatchInput input = lib.input();
    std::vector<std::u16string> loaded;
    clsIniFile AircraftIni;
    // A form that shows no rows for any folder: every aircraft folder is then refused for its empty grid.
    input.loadFolder = [&](const std::u16string &folder) {
        loaded.push_back(folder);
        ValidationFeed feed = feedValidationFromFolder(folder, AircraftIni, lib.dialogs);
        feed.gridRowCount = 0;
        return feed;
    };
    const BatchResult result = runBatchValidation(input, AircraftIni, lib.dialogs);
    EXPECT_EQ(loaded.size(), 4u);
    EXPECT_EQ(result.folders[0].outcome, BatchFolderOutcome::Refused);
    EXPECT_EQ(result.folders[0].BatchFailureText,
              u"An aircraft.cfg file without any [fltsim.x] section found in folder ");
}

namespace {

ValidationFeed feed(const TempDir &dir, NeverAskDialogs &dialogs)
{
    clsIniFile AircraftIni;
    return feedValidationFromFolder(widePath(dir.path()), AircraftIni, dialogs);
}

} // namespace

TEST(CheckerFeed, RowOneModelDecidesTheTextureFormat)
{
    const struct
    {
        std::string mdl; // empty: no model file
        bool withModelCfg;
        std::u16string expected;
    } rows[] = {
        {modelBytes("MDLX"), true, u"FSX"},
        {modelBytes("MDL9"), true, u"FS8/9"},
        {modelBytes("MDL8"), true, u"FS8/9"},
        {modelBytes("RIFF"), true, u"n/a"},
        // What ResetValues left: empty.
        {"", true, u""},
        {modelBytes("MDLX"), false, u""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        TempDir dir;
        writeBytes(dir / "aircraft.cfg",
                   crlf("[fltsim.0]\ntitle=a\nmodel=fsx\n[fltsim.1]\ntitle=b\nmodel=\n[fltsim.2]\ntitle=c\n"));
        if (row.withModelCfg)
            writeBytes(dir / "model.fsx" / "model.cfg", crlf("normal=plane.MDL\n"));
        if (!row.mdl.empty())
            writeBytes(dir / "model.fsx" / "plane.mdl", row.mdl);
        // Row 2's model is never opened.
        writeBytes(dir / "model" / "model.cfg", crlf("normal=other\n"));
        writeBytes(dir / "model" / "other.mdl", modelBytes("MDL9"));
        NeverAskDialogs dialogs;
        const ValidationFeed fed = feed(dir, dialogs);
        EXPECT_EQ(fed.gridRowCount, 3);
        EXPECT_EQ(fed.textureFormatText, row.expected);
        EXPECT_FALSE(fed.loadFault);
        EXPECT_TRUE(dialogs.messages().empty());
    }
}

TEST(CheckerFeed, UnreadableModelFileIsToldAndLeavesTheFormatEmpty)
{
    TempDir dir;
    writeBytes(dir / "aircraft.cfg", crlf("[fltsim.0]\ntitle=a\nmodel=\n"));
    writeBytes(dir / "model" / "model.cfg", crlf("normal=short\n"));
    writeBytes(dir / "model" / "short.mdl", modelBytes("MDL9", 20)); // no radius byte
    NeverAskDialogs dialogs;
    const ValidationFeed fed = feed(dir, dialogs);
    EXPECT_EQ(fed.gridRowCount, 1);
    EXPECT_EQ(fed.textureFormatText, u"");
    ASSERT_EQ(dialogs.messages().size(), 1u);
    EXPECT_EQ(dialogs.messages()[0].kind, DialogKind::Critical);
    EXPECT_TRUE(dialogs.messages()[0].text.starts_with(u"The model file:"));
}

TEST(CheckerFeed, LoadFaultKeepsTheRowsReadAndOpensNoRow)
{
    TempDir dir;
    writeBytes(dir / "aircraft.cfg",
               crlf("[fltsim.0]\ntitle=a\nmodel=\n[geometry]\nwing_span=1e400\n[fltsim.1]\ntitle=b\n"));
    writeBytes(dir / "model" / "model.cfg", crlf("normal=plane\n"));
    writeBytes(dir / "model" / "plane.mdl", modelBytes("MDLX"));
    NeverAskDialogs dialogs;
    const ValidationFeed fed = feed(dir, dialogs);
    ASSERT_TRUE(fed.loadFault);
    EXPECT_EQ(fed.loadFault->number(), 6);
    EXPECT_EQ(fed.loadFault->procedure(), u"Dir1_Change");
    EXPECT_EQ(fed.gridRowCount, 1);
    EXPECT_EQ(fed.textureFormatText, u"");
    ASSERT_EQ(dialogs.messages().size(), 1u);
    EXPECT_NE(dialogs.messages()[0].text.find(u"Procedure Dir1_Change"), std::string::npos);
}
