#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "common/aircraftfolder.h"
#include "common/airfilebuilder.h"
#include "common/tempdir.h"
#include "core/errorbox.h"
#include "core/runtimeerror.h"
#include "core/scripteddialogs.h"
#include "platform/fileio.h"
#include "platform/utf8.h"
#include "simfiles/airfile.h"
#include "simfiles/modelfile.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;
using namespace std::string_literals;
using Records = std::vector<DialogRecord>;

namespace {

const char16_t SEP = static_cast<char16_t>(fs::path::preferred_separator);

void makeReadOnly(const fs::path &path)
{
    fs::permissions(path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
}

// An aircraft folder holding "skyliner.air"; read() runs ReadAirFile with the variation's sim value as name.
struct AirFolder
{
    explicit AirFolder(const std::string &bytes) { writeBytes(file(), bytes); }
    fs::path file() const { return dir / "skyliner.air"; }
    AirFileReading read(AirFileState &state, Dialogs &dialogs) const
    {
        state.AirFileName = u"skyliner";
        return ReadAirFile(widePath(dir.path()), state, dialogs);
    }
    TempDir dir;
};

// A model file with the radius byte given, cut to size bytes.
std::string mdl(std::string_view tag, unsigned char radius, std::size_t size = 40)
{
    std::string bytes = modelBytes(tag);
    bytes[28] = static_cast<char>(radius);
    bytes.resize(size);
    return bytes;
}

} // namespace

// Each row is read, then patched to Helicopter: a file with record 0x105 at offset "at" gets 1 as the low half
// of its type; any other keeps its bytes.
TEST(AirFile, WalksTheRecordChainToTheAircraftTypeAndPatchesItInPlace)
{
    // At offset 8 the payload of the first record holds a header of its own, which the backward step finds.
    const std::string headerInPayload = int32Bytes(0x105) + int32Bytes(4) + int32Bytes(2);
    const std::optional<AirType> no;
    const struct
    {
        std::string bytes;
        std::int64_t at = -1;
        std::optional<AirType> selected = std::nullopt;
        std::int32_t stored = 0;
        bool overflow = false;
    } rows[] = {
        {AirFileBuilder().aircraft(2).bytes(), 0, AirType::AI, 2},
        {AirFileBuilder().record(1, "DR 1050\0"s).record(2, std::string(21, 'x')).aircraft(1).record(3, "ab").bytes(),
         45, AirType::Helicopter, 1},
        {AirFileBuilder().record(7, "").aircraft(0).bytes(), 8, AirType::Normal, 0},                 // size 0
        {AirFileBuilder().record(9, headerInPayload).record(3, -20, "").bytes(), 8, AirType::AI, 2}, // steps back
        // A header cut short counts when its type field is whole; the bytes behind the end read as 0.
        {AirFileBuilder().record(1, "abcd").raw(int32Bytes(0x105) + "\x01\x00"s).bytes(), 12, AirType::Normal, 0},
        {AirFileBuilder().aircraft(3).bytes(), 0, no, 3},
        {AirFileBuilder().aircraft(-1).bytes(), 0, no, -1},
        {AirFileBuilder().aircraft(0x00020000).bytes(), 0, no, 0x00020000}, // the high half stays after the patch
        {AirFileBuilder().record(1, "abc").record(0x341, "defgh").bytes()},
        {AirFileBuilder().record(1, 1000, "abcd").raw(int32Bytes(0x105)).bytes()},           // size past the end
        {AirFileBuilder().record(1, "ab").record(2, -8, "").aircraft(0).bytes()},            // back to its own header
        {AirFileBuilder().record(1, "ab").record(2, -100, "").aircraft(0).bytes()},          // below the start
        {AirFileBuilder().record(1, "abcd").raw("\x05\x01"s).bytes()},                       // type field cut short
        {AirFileBuilder().record(1, 0x7FFFFFF8, "ab").aircraft(0).bytes(), -1, no, 0, true}, // next offset overflows
        {""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.bytes));
        AirFolder air(row.bytes);
        ScriptedDialogs dialogs;
        AirFileState state;
        const AirFileReading reading = air.read(state, dialogs);
        EXPECT_EQ(reading.outcome, row.at < 0 ? AirFileOutcome::NoAircraftSection : AirFileOutcome::TypeFound);
        EXPECT_EQ(locateAircraftSection(row.bytes).offset, std::max<std::int64_t>(row.at, 0));
        EXPECT_EQ(reading.selected, row.selected);
        EXPECT_EQ(reading.storedType, row.stored);
        EXPECT_EQ(state.AirTypeShown, row.selected ? static_cast<std::int16_t>(*row.selected) + 1 : 0);

        EXPECT_EQ(patchAirType(AirType::Helicopter, state, false, dialogs).outcome,
                  row.overflow ? AirTypePatchOutcome::Failed
                               : (row.at < 0 ? AirTypePatchOutcome::NoAircraftSection : AirTypePatchOutcome::Written));
        // Where the patch of a type field cut short lands is left open.
        if (row.at < 0 || row.bytes.size() >= static_cast<std::size_t>(row.at) + 10) {
            std::string expected = row.bytes;
            if (row.at >= 0)
                expected.replace(static_cast<std::size_t>(row.at) + 8, 2, "\x01\x00"s);
            EXPECT_EQ(readBytes(air.file()), expected);
        }
        const Records failure = {{DialogKind::Critical, u"",
                                  state.AirFileName
                                      + u"\r\n could not be opened for write access. Please make sure that the sim "
                                        u"is not running and no other program access this file."}};
        EXPECT_EQ(dialogs.records(), row.overflow ? failure : Records {});
    }
}

TEST(ReadAirFile, NameBecomesTheFullPathFoundInAnyCase)
{
    AirFolder air(AirFileBuilder().aircraft(1).bytes());
    const std::u16string folder = widePath(air.dir.path());
    ScriptedDialogs dialogs;
    AirFileState state {u"", 2};
    EXPECT_EQ(ReadAirFile(folder, state, dialogs).outcome, AirFileOutcome::NoFile);
    EXPECT_EQ(state.AirFileName, u"");
    state.AirFileName = u"missing";
    EXPECT_EQ(ReadAirFile(folder, state, dialogs).outcome, AirFileOutcome::NoFile);
    EXPECT_EQ(state.AirFileName, folder + SEP + u"missing.air");
    EXPECT_EQ(state.AirTypeShown, 2);
    EXPECT_EQ(patchAirType(AirType::AI, state, false, dialogs).outcome, AirTypePatchOutcome::NoFile);
    EXPECT_FALSE(fs::exists(air.dir / "missing.air"));
    state.AirFileName = u"SKYLINER";
    EXPECT_EQ(ReadAirFile(folder, state, dialogs).selected, AirType::Helicopter);
    EXPECT_EQ(state.AirFileName, folder + SEP + u"SKYLINER.air");
#ifndef _WIN32
    // A name the file system cannot take (Windows takes any UTF-16 name).
    state.AirFileName = u"sky"s + char16_t(0xD800);
    EXPECT_EQ(ReadAirFile(folder, state, dialogs).outcome, AirFileOutcome::Failed);
    const Records expected = {
        {DialogKind::Plain, u"", commonErrorText(RuntimeError(52, u"Bad file name or number", u"ReadAirFile"))}};
    EXPECT_EQ(dialogs.records(), expected);
    EXPECT_EQ(state.AirTypeShown, 2);
#endif
}

TEST(AirTypePatch, WritesTheLowHalfInPlaceAfterYesAndRestoresTheTypeReadAfterNo)
{
    const AirFileBuilder builder = AirFileBuilder().record(0x1, "DR 1050\0"s).aircraft(0x00010002).record(3, "tail");
    AirFolder air(builder.bytes());
    makeReadOnly(air.file());
    ScriptedDialogs dialogs;
    AirFileState state;
    EXPECT_EQ(air.read(state, dialogs).storedType, 0x00010002);
    dialogs.pushAnswer(true);
    EXPECT_EQ(patchAirType(AirType::Helicopter, state, true, dialogs).outcome, AirTypePatchOutcome::Written);
    std::string expected = builder.bytes();
    expected.replace(8 + 8 + 8, 2, "\x01\x00"s);
    EXPECT_EQ(readBytes(air.file()), expected);
    EXPECT_FALSE(platform::isReadOnly(air.file()));
    // The high half stays, so the type still reads as none of the three.
    EXPECT_EQ(air.read(state, dialogs).selected, std::nullopt);

    AirFolder normal(AirFileBuilder().aircraft(0).bytes());
    normal.read(state, dialogs);
    EXPECT_EQ(patchAirType(AirType::AI, state, false, dialogs).outcome, AirTypePatchOutcome::Written);
    dialogs.pushAnswer(false);
    const AirTypePatch refused = patchAirType(AirType::Normal, state, true, dialogs);
    EXPECT_EQ(refused.outcome, AirTypePatchOutcome::Refused);
    EXPECT_EQ(refused.restore, AirType::Normal); // what was read, not what the patch wrote
    EXPECT_EQ(readBytes(normal.file()), AirFileBuilder().aircraft(2).bytes());
    dialogs.pushAnswer(false);
    EXPECT_EQ(patchAirType(AirType::AI, AirFileState {state.AirFileName, 0}, true, dialogs).restore, std::nullopt);
    const Records asked = {
        {DialogKind::Question, u"", u"Are you sure that you want to change this aircraft to type 1 = Helicopter?"},
        {DialogKind::Question, u"", u"Are you sure that you want to change this aircraft to type 0 = Normal?"},
        {DialogKind::Question, u"", u"Are you sure that you want to change this aircraft to type 2 = AI?"}};
    EXPECT_EQ(dialogs.records(), asked);
}

// A UTF-8 byte order mark is moved out of a small text file: the file is written again from its start and
// keeps its length, so its last three bytes stand twice.
TEST(ReadByteArray, MarkMovesOutWithoutTruncatingAndErrorsGoToTheCaller)
{
    const std::string mark = "\xEF\xBB\xBF";
    std::string text = "[fltsim]\r\n";
    for (int line = 0; text.size() < 32764; ++line)
        text += "fallback." + std::to_string(line) + "=..\\texture." + std::to_string(line * 7919 % 1000) + "\r\n";
    text.resize(32764);
    const struct
    {
        const char *name;
        std::optional<std::string> content;
        int error;
        std::string after;
        bool readOnly = false;
    } rows[] = {
        {"missing file", std::nullopt, 53, ""},
        {"empty file", "", 9, ""},
        {"two bytes", "\xEF\xBB"s, 9, "\xEF\xBB"s},
        {"the mark alone", mark, 0, mark},
        {"marked", mark + "[fltsim", 0, "[fltsimsim"},
        {"marked, 32767 bytes", mark + text, 0, text + text.substr(text.size() - 3)},
        {"marked, 32768 bytes", mark + text + "x", 6, mark + text + "x"},
        {"unmarked, 65528 bytes", text + text, 0, text + text},
        {"unmarked, read-only", text, 0, text, true},
        {"marked, read-only", mark + text, 75, mark + text, true},
    };
    TempDir dir;
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const fs::path file = dir / (std::string(row.name) + ".cfg");
        if (row.content)
            writeBytes(file, *row.content);
        if (row.readOnly)
            makeReadOnly(file);
        std::vector<std::uint8_t> bytes;
        int error = 0;
        try {
            ReadByteArray(widePath(file), bytes);
            EXPECT_EQ(bytes, std::vector<std::uint8_t>(row.content->begin(), row.content->end()));
        } catch (const RuntimeError &thrown) {
            error = thrown.number();
        }
        EXPECT_EQ(error, row.error);
        EXPECT_EQ(readBytes(file), row.after);
    }
}

TEST(ResolveModelName, FirstNormalLineInAnyCaseAndSection)
{
    const std::tuple<std::string, std::u16string> rows[] = {
        {"[models]\r\nNORMAL=Skyliner200.MDL\r\n", u"Skyliner200"},
        {"[models]\r\nnormal=  skyliner200  // main\r\n", u"skyliner200"},
        {"[models]\r\nNormal=sky.mdl.x\r\ninterior=cabin\r\n", u"sky.mdl.x"},
        {"[other]\r\nnormal=a.mdl\r\n[models]\r\nnormal=b\r\n", u"a"},
        {"[models]\r\nnormal =a\r\nnormal=b\r\n", u"b"},
        {"[models]\r\ninterior=cabin\r\nnormal=.MDL\r\n", u""},
        {"\xEF\xBB\xBF[models]\r\nnormal=skyliner200\r\n", u"skyliner200"},
        {"\xEF\xBB\xBFnormal=skyliner200\r\n", u""},
    };
    for (const auto &[modelCfg, modelName] : rows) {
        TempDir dir;
        writeBytes(dir / "model" / "model.cfg", modelCfg);
        ScriptedDialogs dialogs;
        const ModelConfig config = resolveModelName(widePath(dir.path()), u"<default>", dialogs);
        EXPECT_FALSE(config.missing);
        EXPECT_EQ(config.path, widePath(dir.path()) + SEP + u"model" + SEP + u"model.cfg");
        EXPECT_EQ(config.modelName, modelName) << modelCfg;
    }
}

TEST(ResolveModelName, FolderOfTheVariation)
{
    TempDir dir;
    const std::u16string folder = widePath(dir.path());
    writeBytes(dir / "Model.FSX" / "Model.CFG", "[models]\r\nnormal=skyliner200_fsx\r\n");
    ScriptedDialogs dialogs;
    ModelConfig config = resolveModelName(folder, u"fsx", dialogs);
    EXPECT_EQ(config.path, folder + SEP + u"model.fsx" + SEP + u"model.cfg");
    EXPECT_EQ(config.modelName, u"skyliner200_fsx");
    // A folder that ends in its separator, as a drive root does, gets no second one in front of model.cfg's
    // folder; the model file's path does not have that care.
    config = resolveModelName(folder + SEP, u"fsx", dialogs);
    EXPECT_EQ(config.path, folder + SEP + u"model.fsx" + SEP + u"model.cfg");
    EXPECT_EQ(readModelFile(folder + SEP, u"fsx", config.modelName).ModelFilePath,
              folder + SEP + SEP + u"model.fsx" + SEP + u"skyliner200_fsx.mdl");
    config = resolveModelName(folder, u"<default>", dialogs);
    EXPECT_TRUE(config.missing);
    EXPECT_EQ(config.modelName, u"");
    // No model key at all: nothing to resolve, and nothing missing.
    config = resolveModelName(folder, u"", dialogs);
    EXPECT_FALSE(config.missing);
    EXPECT_EQ(config.path, u"");
    EXPECT_TRUE(dialogs.records().empty());
}

TEST(ReadModelFile, VersionTagAndRadius)
{
    using enum ModelFileOutcome;
    const struct
    {
        std::string bytes;
        ModelFileOutcome outcome;
        std::u16string version, radius;
    } rows[] = {
        {mdl("MDL8", 0), Read, u"FS8/9", u"0"},       {mdl("MDL9", 255), Read, u"FS8/9", u"255"},
        {mdl("MDL9", 36, 29), Read, u"FS8/9", u"36"}, {mdl("MDL9", 36, 28), Failed, u"", u""},
        {mdl("MDLX", 77), Read, u"FSX", u"n/a"},      {mdl("MDLX", 0, 12), Read, u"FSX", u"n/a"},
        {mdl("MDLX", 0, 11), Failed, u"", u""},       {mdl("mdl9", 40), Read, u"n/a", u"n/a"},
        {mdl("ACMI", 40), Read, u"n/a", u"n/a"},      {"", Failed, u"", u""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.bytes));
        TempDir dir;
        const std::u16string path = widePath(dir.path()) + SEP + u"model" + SEP + u"skyliner200.mdl";
        // Found in any case, and read-only or not.
        writeBytes(dir / "Model" / "Skyliner200.MDL", row.bytes);
        makeReadOnly(dir / "Model" / "Skyliner200.MDL");
        const ModelFileReading reading = readModelFile(widePath(dir.path()), u"<default>", u"skyliner200");
        EXPECT_EQ(reading.outcome, row.outcome);
        EXPECT_EQ(reading.ModelFilePath, path);
        EXPECT_EQ(reading.versionText, row.version);
        EXPECT_EQ(reading.radiusText, row.radius);
        const bool editable = row.version == u"FS8/9";
        EXPECT_EQ(reading.radiusEditable, editable);
        EXPECT_EQ(reading.RadiusOnLoad, editable ? row.radius : u"");
        EXPECT_EQ(reading.failureMessage,
                  row.outcome == Read ? u""
                                      : u"The model file:" + path
                          + u"\r\n\r\n could not be opened for write access. Please make sure that the sim is "
                            u"not running and no other program access this file.");
    }
    // No normal= line: the name is empty and ".mdl" is looked for.
    const ModelFileReading missing = readModelFile(u"P", u"short", u"");
    EXPECT_EQ(missing.outcome, ModelFileOutcome::Missing);
    EXPECT_EQ(missing.ModelFilePath, u"P"s + SEP + u"model.short" + SEP + u".mdl");
}

TEST(RadiusByte, ConvertsAsTheRunTimeDoes)
{
    const std::optional<std::uint8_t> no;
    const std::tuple<std::u16string, std::optional<std::uint8_t>, char16_t> rows[] = {
        {u"0", 0, u'.'},       {u"255", 255, u'.'}, {u"256", no, u'.'},  {u"012", 12, u'.'}, {u" 200 ", 200, u'.'},
        {u"7.5", 8, u'.'},     {u"6.5", 6, u'.'},   {u"7,5", 8, u','},   {u"7,5", no, u'.'}, {u"255.4", 255, u'.'},
        {u"255.5", no, u'.'},  {u"-0.4", 0, u'.'},  {u"-0.6", no, u'.'}, {u"-1", no, u'.'},  {u"&HFF", 255, u'.'},
        {u"&HFFFF", no, u'.'}, {u"2e2", 200, u'.'}, {u"", no, u'.'},     {u"abc", no, u'.'},
    };
    for (const auto &[text, byte, separator] : rows)
        EXPECT_EQ(radiusByte(text, separator), byte) << platform::toUtf8(text);
}

TEST(WriteModelRadius, WritesOneByteWhenTheTextChangedAndAFailureLeavesTheBytes)
{
    TempDir dir;
    const fs::path file = dir / "model" / "skyliner200.mdl";
    const std::string original = mdl("MDL9", 30);
    writeBytes(file, original);
    const std::u16string path = widePath(file);
    ScriptedDialogs dialogs;
    EXPECT_EQ(writeModelRadius(path, u"30", u"30", u'.', dialogs), RadiusWriteOutcome::Unchanged);
    EXPECT_EQ(writeModelRadius(path, u"", u"n/a", u'.', dialogs), RadiusWriteOutcome::Unchanged);
    makeReadOnly(file);
    for (const std::u16string text : {u"256", u"abc", u"-3"})
        EXPECT_EQ(writeModelRadius(path, u"30", text, u'.', dialogs), RadiusWriteOutcome::Failed);
    EXPECT_EQ(readBytes(file), original);
    // The read-only state went before the conversion failed.
    EXPECT_FALSE(platform::isReadOnly(file));
    const Records failures(3,
                           {DialogKind::Critical, u"",
                            u"The changed radius value could not be written to the model file. Please make sure "
                            u"that the file is not opened by the sim or another program"});
    EXPECT_EQ(dialogs.records(), failures);
    // Texts are compared, not numbers.
    EXPECT_EQ(writeModelRadius(path, u"12", u"012", u'.', dialogs), RadiusWriteOutcome::Written);
    std::string expected = original;
    expected[28] = 12;
    EXPECT_EQ(readBytes(file), expected);
    EXPECT_EQ(writeModelRadius(path, u"12", u"255", u'.', dialogs), RadiusWriteOutcome::Written);
    EXPECT_EQ(static_cast<unsigned char>(readBytes(file)[28]), 255);
    EXPECT_EQ(dialogs.records().size(), 3u);
    // A model file that is gone is not made again.
    EXPECT_EQ(writeModelRadius(widePath(dir / "gone.mdl"), u"30", u"31", u'.', dialogs), RadiusWriteOutcome::Failed);
    EXPECT_FALSE(fs::exists(dir / "gone.mdl"));
}

// The simulator, or any program, holding a file exclusively: reads fail or find nothing, writes fail, and
// not a byte changes.
TEST(SimFilesHeld, ReadsAndWritesFailWithoutAByteChanged)
{
    AirFolder air(AirFileBuilder().record(0x2, "abc").aircraft(1).bytes());
    const fs::path model = air.dir / "model" / "skyliner200.mdl";
    writeBytes(model, mdl("MDL9", 30));
    const std::string airBytes = readBytes(air.file());
    ScriptedDialogs dialogs;
    AirFileState state;
    ASSERT_EQ(air.read(state, dialogs).selected, AirType::Helicopter);
    for (const auto access : {platform::ExclusiveAccess::Read, platform::ExclusiveAccess::ReadWrite}) {
        SCOPED_TRACE(static_cast<int>(access));
        {
            const platform::ExclusiveFile heldAir = platform::ExclusiveFile::open(air.file(), access);
            const platform::ExclusiveFile heldModel = platform::ExclusiveFile::open(model, access);
            ASSERT_TRUE(heldAir.isOpen() && heldModel.isOpen());
            makeReadOnly(air.file());
            // Silently, as a file without an aircraft section; the type last read stays.
            EXPECT_EQ(air.read(state, dialogs).outcome, AirFileOutcome::NoAircraftSection);
            EXPECT_EQ(state.AirTypeShown, 2);
            EXPECT_EQ(patchAirType(AirType::AI, state, false, dialogs).outcome, AirTypePatchOutcome::Failed);
            const ModelFileReading reading = readModelFile(widePath(air.dir.path()), u"<default>", u"skyliner200");
            EXPECT_EQ(reading.outcome, ModelFileOutcome::Failed);
            EXPECT_EQ(reading.failureMessage, modelFileReadFailureText(reading.ModelFilePath));
            // A valid radius and a text that is no number alike: the open fails first.
            for (const std::u16string text : {u"31", u"abc"})
                EXPECT_EQ(writeModelRadius(widePath(model), u"30", text, u'.', dialogs), RadiusWriteOutcome::Failed);
            const Records expected = {{DialogKind::Critical, u"", airFileWriteFailureText(state.AirFileName)},
                                      {DialogKind::Critical, u"", RADIUS_WRITE_FAILURE_TEXT},
                                      {DialogKind::Critical, u"", RADIUS_WRITE_FAILURE_TEXT}};
            EXPECT_EQ(dialogs.records(), expected);
        }
        dialogs = ScriptedDialogs();
        EXPECT_EQ(readBytes(air.file()), airBytes);
        EXPECT_EQ(readBytes(model), mdl("MDL9", 30));
        // The read-only state went before the open failed, and stays gone.
        EXPECT_FALSE(platform::isReadOnly(air.file()));
    }
    EXPECT_EQ(patchAirType(AirType::AI, state, false, dialogs).outcome, AirTypePatchOutcome::Written);
    EXPECT_EQ(air.read(state, dialogs).selected, AirType::AI);
    EXPECT_EQ(writeModelRadius(widePath(model), u"30", u"31", u'.', dialogs), RadiusWriteOutcome::Written);
    EXPECT_EQ(readModelFile(widePath(air.dir.path()), u"<default>", u"skyliner200").radiusText, u"31");
}
