// The reading operations over hostile folders: the folder load, opening every row, validation and the batch.
// None may crash or hang, each tells what the program tells, and none changes a byte it has no business with.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/clsinifile.h"
#include "core/errorbox.h"
#include "hostilefixture.h"
#include "platform/codepage.h"
#include "platform/fileio.h"
#include "simfiles/airfile.h"
#include "simfiles/modelfile.h"
#include "validation/batch.h"
#include "validation/checkerfeed.h"
#include "validation/validationrun.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

// ListView1_DblClick's reads of one row; the boxes it would show go to dialogs.
struct OpenedRow
{
    ModelConfig config;
    std::optional<ModelFileReading> model;
    AirFileReading air;
};

OpenedRow openRow(const std::u16string &folder, const GridRow &row, Dialogs &dialogs)
{
    OpenedRow opened;
    opened.config = resolveModelName(folder, row[GridColumn::Model], dialogs);
    AirFileState state;
    state.AirFileName = row[GridColumn::Sim];
    opened.air = ReadAirFile(folder, state, dialogs);
    if (!opened.config.missing)
        opened.model = readModelFile(folder, row[GridColumn::Model], opened.config.modelName);
    return opened;
}

std::u16string separated(const fs::path &folder)
{
    return widePath(folder) + static_cast<char16_t>(fs::path::preferred_separator);
}

} // namespace

TEST_P(Hostile, FolderLoadAndOpeningEveryRowChangeNothing)
{
    clsIniFile AircraftIni;
    FolderLoadResult result;
    std::vector<OpenedRow> rows;
    {
        const HangGuard guard("the folder load of " + GetParam());
        result = load(AircraftIni);
        for (const GridRow &row : result.rows)
            rows.push_back(openRow(wideFolder(), row, dialogs));
        clsIniFile feedIni;
        feedValidationFromFolder(wideFolder(), feedIni, dialogs);
    }
    expectOnlyChanged({}, "the folder load");
    EXPECT_FALSE(loadFault) << "the load failed with error " << loadFault->number();
    EXPECT_EQ(result.rows.size(), result.Descriptions.size());

    if (is("FolderNamedAircraftCfg")) {
        EXPECT_FALSE(result.isAircraftFolder);
        EXPECT_EQ(result.panel8.text, u"AC Folder");
        EXPECT_EQ(result.panel8.colour, PanelColour::Red);
    } else {
        EXPECT_TRUE(result.isAircraftFolder);
    }
    if (is("EmptyCfg") || is("FolderNamedAircraftCfg") || is("Utf16WithoutMark")) {
        EXPECT_TRUE(result.rows.empty());
        EXPECT_EQ(result.panel9.text, u"AC Status: n/a");
        EXPECT_EQ(result.panel10Text, u"0 aircraft variations defined");
        EXPECT_EQ(result.mnuDeleteCaption, u"&Delete [fltsim.x]");
    }
    if (is("HundredThousandSections")) {
        // The section list ends where the 8192-character buffer does: "fltsim.0" to "fltsim.753".
        EXPECT_EQ(result.rows.size(), 754u);
        EXPECT_EQ(result.rows.back()[GridColumn::Section], u"FLTSIM.753");
    }
    if (is("TwentyMegabyteLine")) {
        ASSERT_EQ(result.rows.size(), 2u);
        EXPECT_EQ(result.Descriptions[0].size(), 4095u);
        EXPECT_EQ(result.rows[0][GridColumn::Title], u"Hostile One");
    }
    if (is("Utf16LittleEndianWithMark") || is("Utf16BigEndianWithMark") || is("Utf8WithMark") || is("Utf8WithoutMark")
        || is("LoneCrLineEnds") || is("LfLineEnds") || is("Ordinary")) {
        ASSERT_EQ(result.rows.size(), 2u);
        EXPECT_EQ(result.rows[1][GridColumn::Title], u"Hostile Two");
        EXPECT_EQ(result.txt_general_atc_type, u"HOSTILE");
        EXPECT_EQ(result.panel10Text, u"2 aircraft variations defined");
    }
    if (is("HeadersWithoutBracket")) {
        // "[fltsim.0" is no header: its keys belong to nobody; "[[fltsim.2]" is the section "[fltsim.2".
        ASSERT_EQ(result.rows.size(), 1u);
        EXPECT_EQ(result.rows[0][GridColumn::Section], u"FLTSIM.1");
    }
    if (is("Mdl5Bytes")) {
        ASSERT_FALSE(rows.empty());
        ASSERT_TRUE(rows[0].model);
        EXPECT_EQ(rows[0].model->outcome, ModelFileOutcome::Failed);
        EXPECT_EQ(rows[0].model->failureMessage, modelFileReadFailureText(rows[0].model->ModelFilePath));
    }
    if (is("AirTruncatedHeader") || is("AirNegativeSizes") || is("AirHugeSizes")) {
        ASSERT_FALSE(rows.empty());
        EXPECT_EQ(rows[0].air.outcome, AirFileOutcome::NoAircraftSection);
    }
    if (is("Ordinary") || is("ReadOnlyCfg") || is("Nesting200Deep") || is("SymbolicLinkLoop")) {
        ASSERT_FALSE(rows.empty());
        EXPECT_EQ(rows[0].air.outcome, AirFileOutcome::TypeFound);
        ASSERT_TRUE(rows[0].model);
        EXPECT_EQ(rows[0].model->versionText, u"FS8/9");
        EXPECT_EQ(rows[0].model->radiusText, u"42");
    }
    if (is("NamesOutsideCodePage")) {
        // The file can only say "?" for the letters of the folder's name: model.? is no folder of the aircraft.
        ASSERT_FALSE(rows.empty());
        EXPECT_EQ(rows[0].config.path.substr(rows[0].config.path.size() - 17),
                  u"model.?" + std::u16string(1, static_cast<char16_t>(fs::path::preferred_separator)) + u"model.cfg");
        EXPECT_TRUE(rows[0].config.missing);
    }
}

TEST_P(Hostile, ValidationChangesNothingInTheFolder)
{
    TempDir temp;
    ValidationInput input;
    input.folder = wideFolder();
    input.AnalyzeOptionList.assign(23, u"1");
    input.environment.Fs9Found = true;
    input.environment.Fs9Airlines = {u"[airlines]", u"KLM"};
    input.environment.Fs9EffectsFolder = widePath(temp / "Effects");
    writeBytes(temp / "Effects" / "fx_wake.fx", "fx");
    input.environment.TempFolder = separated(temp.path());
    clsIniFile AircraftIni;
    NeverAskDialogs quiet;
    std::optional<ValidationResult> result;
    std::optional<RuntimeError> fault;
    {
        const HangGuard guard("the validation of " + GetParam());
        const ValidationFeed feed = feedValidationFromFolder(wideFolder(), AircraftIni, quiet);
        input.gridRowCount = feed.gridRowCount;
        input.textureFormatText = feed.textureFormatText;
        try {
            result = runValidation(input, AircraftIni, dialogs);
        } catch (const RuntimeError &error) {
            fault = error;
        }
    }
    expectOnlyChanged({}, "validation");

    auto expectFault = [&](int number, const char16_t *procedure) {
        ASSERT_TRUE(fault) << "the run ended without error " << number;
        EXPECT_EQ(fault->number(), number);
        EXPECT_EQ(fault->procedure(), procedure);
    };
    if (is("TextureCfg2Bytes")) {
        expectFault(9, u"mnuValidate_Click");
        EXPECT_EQ(fault->description(), u"Subscript out of range");
    } else if (is("SymbolicLinkLoop") || is("TextureTxtFile")) {
        // A link back up the walk, and a file that the texture.* wildcard hands to the walk.
        expectFault(76, u"AnalyzeTextureFolder");
        EXPECT_EQ(fault->description(), u"Path not found");
    } else if (is("FallbackWithoutDotDot")) {
        expectFault(5, u"mnuValidate_Click");
    } else {
        ASSERT_FALSE(fault) << "error " << fault->number() << " in " << platform::toCodePage(fault->procedure());
        ASSERT_TRUE(result);
    }
    if (is("FolderNamedAircraftCfg")) {
        EXPECT_EQ(result->outcome, ValidationOutcome::Refused);
        ASSERT_FALSE(dialogs.records().empty());
        EXPECT_EQ(dialogs.records().back().text, u"No aircraft.cfg file found in this folder. Exiting here...");
    }
    if (is("EmptyCfg") || is("Utf16WithoutMark")) {
        EXPECT_EQ(result->outcome, ValidationOutcome::Refused);
        ASSERT_FALSE(dialogs.records().empty());
        EXPECT_EQ(dialogs.records().back().text,
                  u"An aircraft.cfg file without any [fltsim.x] section found in folder . Exiting here...");
    }
    if (is("Ordinary") || is("ReadOnlyCfg") || is("Nesting200Deep") || is("TwentyMegabyteLine")
        || is("HundredThousandSections") || is("NamesOutsideCodePage") || is("AirNegativeSizes")) {
        EXPECT_EQ(result->outcome, ValidationOutcome::ReportWritten);
        EXPECT_TRUE(platform::readWholeFile(fs::path(result->reportPath)));
    }
    if (is("Nesting200Deep")) {
        // The empty folder at the bottom is found, 201 levels down.
        const std::string report = readBytes(fs::path(result->reportPath));
        std::string deepest = "..\\texture";
        for (int i = 0; i < 201; ++i)
            deepest += "\\d";
        EXPECT_NE(report.find(deepest + "\r\n"), std::string::npos);
    }
}

TEST_P(Hostile, BatchChangesNothingInTheLibrary)
{
    TempDir temp;
    BatchInput input;
    input.BatchRoot = widePath(library);
    input.AnalyzeOptionList.assign(23, u"1");
    input.environment.TempFolder = separated(temp.path());
    clsIniFile AircraftIni;
    NeverAskDialogs quiet;
    BatchResult result;
    {
        const HangGuard guard("the batch over " + GetParam());
        result = runBatchValidation(input, AircraftIni, quiet);
    }
    expectOnlyChanged({}, "the batch");
    ASSERT_EQ(result.folders.size(), 1u);
    EXPECT_TRUE(result.skippedErrors.empty());
    const std::string report = readBytes(fs::path(result.reportPath));
    EXPECT_NE(report.find("Validate all aircraft below folder : "), std::string::npos);
    const BatchFolder &done = result.folders[0];
    if (is("FolderNamedAircraftCfg")) {
        EXPECT_EQ(done.outcome, BatchFolderOutcome::Refused);
        EXPECT_NE(report.find(platform::toCodePage(u"No aircraft.cfg file found in folder " + done.folder + u" *")),
                  std::string::npos);
    } else if (is("TextureCfg2Bytes") || is("SymbolicLinkLoop") || is("FallbackWithoutDotDot")
               || is("TextureTxtFile")) {
        EXPECT_EQ(done.outcome, BatchFolderOutcome::RunFailed);
    } else if (is("Ordinary") || is("HundredThousandSections") || is("TwentyMegabyteLine")) {
        EXPECT_EQ(done.outcome, BatchFolderOutcome::Reported);
        EXPECT_TRUE(done.inReport);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, Hostile, ::testing::ValuesIn(hostileCaseNames()), caseName);

#ifndef _WIN32
// The batch counts its folders in 16 bits: a root with more folders than that is refused before any run.
TEST(HostileLibrary, BatchRefusesMoreFoldersThanItsCounterHolds)
{
    TempDir temp;
    const fs::path root = temp / "library";
    for (int i = 0; i <= 32767; ++i)
        fs::create_directories(root / std::to_string(i));
    const FolderState before = folderState(temp.path());
    BatchInput input;
    input.BatchRoot = widePath(root);
    input.AnalyzeOptionList.assign(23, u"1");
    input.environment.TempFolder = separated(temp / "tmp");
    clsIniFile AircraftIni;
    NeverAskDialogs quiet;
    std::optional<RuntimeError> fault;
    {
        const HangGuard guard("the batch over 32768 folders");
        try {
            runBatchValidation(input, AircraftIni, quiet);
        } catch (const RuntimeError &error) {
            fault = error;
        }
    }
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->number(), 6);
    EXPECT_EQ(fault->procedure(), u"cmdStart_Click");
    EXPECT_TRUE(changedEntries(before, folderState(temp.path())).empty());
}
#endif
