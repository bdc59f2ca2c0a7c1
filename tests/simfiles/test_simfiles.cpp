#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "common/aircraftfolder.h"
#include "common/airfilebuilder.h"
#include "common/scripteddialogs.h"
#include "common/tempdir.h"
#include "core/errorbox.h"
#include "core/runtimeerror.h"
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
    const std::string headerInPayload = int32Bytes(0x105) + int32Bytes(4) + int32Bytes(2);
    const std::optional<AirType> no;
    // Bytes; offset of record 0x105, -1 for none, -2 for none with a walk that fails; the type selected and stored.
    const std::tuple<std::string, std::int64_t, std::optional<AirType>, std::int32_t> rows[] = {
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
        {AirFileBuilder().record(1, "abc").record(0x341, "defgh").bytes(), -1, no, 0},
        {AirFileBuilder().record(1, 1000, "abcd").raw(int32Bytes(0x105)).bytes(), -1, no, 0},  // size past the end
        {AirFileBuilder().record(1, "ab").record(2, -8, "").aircraft(0).bytes(), -1, no, 0},   // to its own header
        {AirFileBuilder().record(1, "ab").record(2, -100, "").aircraft(0).bytes(), -1, no, 0}, // below the start
        {AirFileBuilder().record(1, "abcd").raw("\x05\x01"s).bytes(), -1, no, 0},              // type field cut short
        {AirFileBuilder().record(1, 0x7FFFFFF8, "ab").aircraft(0).bytes(), -2, no, 0},         // next offset overflows
        {"", -1, no, 0},
    };
    for (const auto &[bytes, at, selected, stored] : rows) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        const bool overflow = at == -2;
        AirFolder air(bytes);
        ScriptedDialogs dialogs;
        AirFileState state;
        const AirFileReading reading = air.read(state, dialogs);
        EXPECT_EQ(reading.outcome, at < 0 ? AirFileOutcome::NoAircraftSection : AirFileOutcome::TypeFound);
        EXPECT_EQ(locateAircraftSection(bytes).offset, std::max<std::int64_t>(at, 0));
        EXPECT_EQ(reading.selected, selected);
        EXPECT_EQ(reading.storedType, stored);
        EXPECT_EQ(state.AirTypeShown, selected ? static_cast<std::int16_t>(*selected) + 1 : 0);

        EXPECT_EQ(patchAirType(AirType::Helicopter, state, false, dialogs).outcome,
                  overflow ? AirTypePatchOutcome::Failed
                           : (at < 0 ? AirTypePatchOutcome::NoAircraftSection : AirTypePatchOutcome::Written));
        // Where the patch of a type field cut short lands is left open.
        if (at < 0 || bytes.size() >= static_cast<std::size_t>(at) + 10) {
            std::string expected = bytes;
            if (at >= 0)
                expected.replace(static_cast<std::size_t>(at) + 8, 2, "\x01\x00"s);
            EXPECT_EQ(readBytes(air.file()), expected);
        }
        const Records failure = {{DialogKind::Critical, u"",
                                  state.AirFileName
                                      + u"\r\n could not be opened for write access. Please make sure that the sim "
                                        u"is not running and no other program access this file."}};
        EXPECT_EQ(dialogs.records(), overflow ? failure : Records {});
    }
}

// The air file's name becomes the full path, in the spelling given, of the file found in any case.
TEST(AirTypePatch, WritesTheLowHalfInPlaceAfterYesAndRestoresTheTypeReadAfterNo)
{
    const AirFileBuilder builder = AirFileBuilder().record(0x1, "DR 1050\0"s).aircraft(0x00010002).record(3, "tail");
    AirFolder air(builder.bytes());
    const std::u16string folder = widePath(air.dir.path());
    fs::permissions(air.file(), fs::perms::owner_read);
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
    EXPECT_EQ(ReadAirFile(folder, state, dialogs).storedType, 0x00010002);
    EXPECT_EQ(state.AirFileName, folder + SEP + u"SKYLINER.air");
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
#ifndef _WIN32
    // A name the file system cannot take (Windows takes any UTF-16 name).
    state = {u"sky"s + char16_t(0xD800), 2};
    EXPECT_EQ(ReadAirFile(folder, state, dialogs).outcome, AirFileOutcome::Failed);
    EXPECT_EQ(dialogs.records().back(),
              (DialogRecord {DialogKind::Plain, u"",
                             commonErrorText(RuntimeError(52, u"Bad file name or number", u"ReadAirFile"))}));
    EXPECT_EQ(state.AirTypeShown, 2);
#endif
}

// A UTF-8 byte order mark is moved out of a small text file: the file is written again from its start and
// keeps its length, so its last three bytes stand twice.
TEST(ReadByteArray, MarkMovesOutWithoutTruncatingAndErrorsGoToTheCaller)
{
    const std::string mark = "\xEF\xBB\xBF";
    std::string text;
    for (int i = 0; i < 32764; ++i)
        text += static_cast<char>('a' + i % 26);
    // Name, content (none: no file), the error raised, the bytes after, read-only.
    const std::tuple<std::string, std::optional<std::string>, int, std::string, bool> rows[] = {
        {"missing file", std::nullopt, 53, "", false},
        {"empty file", "", 9, "", false},
        {"two bytes", "\xEF\xBB"s, 9, "\xEF\xBB"s, false},
        {"the mark alone", mark, 0, mark, false},
        {"marked", mark + "[fltsim", 0, "[fltsimsim", false},
        {"marked, 32767 bytes", mark + text, 0, text + text.substr(text.size() - 3), false},
        {"marked, 32768 bytes", mark + text + "x", 6, mark + text + "x", false},
        {"unmarked, 65528 bytes", text + text, 0, text + text, false},
        {"unmarked, read-only", text, 0, text, true},
        {"marked, read-only", mark + text, 75, mark + text, true},
    };
    TempDir dir;
    for (const auto &[name, content, raised, after, readOnly] : rows) {
        SCOPED_TRACE(name);
        const fs::path file = dir / (name + ".cfg");
        if (content)
            writeBytes(file, *content);
        if (readOnly)
            fs::permissions(file, fs::perms::owner_read);
        std::vector<std::uint8_t> bytes;
        int error = 0;
        try {
            ReadByteArray(widePath(file), bytes);
            EXPECT_EQ(bytes, std::vector<std::uint8_t>(content->begin(), content->end()));
        } catch (const RuntimeError &thrown) {
            error = thrown.number();
        }
        EXPECT_EQ(error, raised);
        EXPECT_EQ(readBytes(file), after);
    }
}

TEST(ResolveModelName, FirstNormalLineInAnyCaseAndSectionInTheVariationsFolder)
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
    ScriptedDialogs dialogs;
    for (const auto &[modelCfg, modelName] : rows) {
        TempDir dir;
        writeBytes(dir / "Model" / "MODEL.CFG", modelCfg);
        const ModelConfig config = resolveModelName(widePath(dir.path()), u"<default>", dialogs);
        EXPECT_FALSE(config.missing);
        EXPECT_EQ(config.path, widePath(dir.path()) + SEP + u"model" + SEP + u"model.cfg");
        EXPECT_EQ(config.modelName, modelName) << modelCfg;
    }
    TempDir dir;
    const std::u16string folder = widePath(dir.path());
    writeBytes(dir / "Model.FSX" / "Model.CFG", "[models]\r\nnormal=skyliner200_fsx\r\n");
    ModelConfig config = resolveModelName(folder, u"fsx", dialogs);
    EXPECT_EQ(config.path, folder + SEP + u"model.fsx" + SEP + u"model.cfg");
    EXPECT_EQ(config.modelName, u"skyliner200_fsx");
    // A folder ending in its separator (a drive root) gets no second one; the model file's path does.
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

// Found in any case, and read-only or not.
TEST(ReadModelFile, VersionTagAndRadius)
{
    using enum ModelFileOutcome;
    const std::tuple<std::string, ModelFileOutcome, std::u16string, std::u16string> rows[] = {
        {mdl("MDL8", 0), Read, u"FS8/9", u"0"},       {mdl("MDL9", 255), Read, u"FS8/9", u"255"},
        {mdl("MDL9", 36, 29), Read, u"FS8/9", u"36"}, {mdl("MDL9", 36, 28), Failed, u"", u""},
        {mdl("MDLX", 77), Read, u"FSX", u"n/a"},      {mdl("MDLX", 0, 12), Read, u"FSX", u"n/a"},
        {mdl("MDLX", 0, 11), Failed, u"", u""},       {mdl("mdl9", 40), Read, u"n/a", u"n/a"},
        {mdl("ACMI", 40), Read, u"n/a", u"n/a"},      {"", Failed, u"", u""},
    };
    for (const auto &[bytes, outcome, version, radius] : rows) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        TempDir dir;
        const std::u16string path = widePath(dir.path()) + SEP + u"model" + SEP + u"skyliner200.mdl";
        writeBytes(dir / "Model" / "Skyliner200.MDL", bytes);
        fs::permissions(dir / "Model" / "Skyliner200.MDL", fs::perms::owner_read);
        const ModelFileReading reading = readModelFile(widePath(dir.path()), u"<default>", u"skyliner200");
        EXPECT_EQ(reading.outcome, outcome);
        EXPECT_EQ(reading.ModelFilePath, path);
        EXPECT_EQ(reading.versionText, version);
        EXPECT_EQ(reading.radiusText, radius);
        EXPECT_EQ(reading.radiusEditable, version == u"FS8/9");
        EXPECT_EQ(reading.RadiusOnLoad, version == u"FS8/9" ? radius : u"");
        EXPECT_EQ(reading.failureMessage,
                  outcome == Read ? u""
                                  : u"The model file:" + path
                          + u"\r\n\r\n could not be opened for write access. Please make sure that the sim is "
                            u"not running and no other program access this file.");
    }
    // No normal= line: the name is empty and ".mdl" is looked for.
    const ModelFileReading missing = readModelFile(u"P", u"short", u"");
    EXPECT_EQ(missing.outcome, ModelFileOutcome::Missing);
    EXPECT_EQ(missing.ModelFilePath, u"P"s + SEP + u"model.short" + SEP + u".mdl");
}

// Texts are compared, not numbers; the read-only state goes before the conversion or the open can fail. A file
// held by the simulator or any program: reads fail or find nothing, writes fail, and not a byte changes.
TEST(WriteModelRadius, ConvertsAsTheRunTimeAndWritesOneByteUnlessItFailsOrTheFileIsHeld)
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
    AirFolder air(AirFileBuilder().record(0x2, "abc").aircraft(1).bytes());
    const fs::path model = air.dir / "model" / "skyliner200.mdl";
    const std::u16string path = widePath(model);
    writeBytes(model, mdl("MDL9", 30));
    ScriptedDialogs dialogs;
    EXPECT_EQ(writeModelRadius(path, u"30", u"30", u'.', dialogs), RadiusWriteOutcome::Unchanged);
    EXPECT_EQ(writeModelRadius(path, u"", u"n/a", u'.', dialogs), RadiusWriteOutcome::Unchanged);
    fs::permissions(model, fs::perms::owner_read);
    EXPECT_EQ(writeModelRadius(path, u"30", u"256", u'.', dialogs), RadiusWriteOutcome::Failed);
    EXPECT_EQ(readBytes(model), mdl("MDL9", 30));
    EXPECT_FALSE(platform::isReadOnly(model));
    EXPECT_EQ(writeModelRadius(path, u"12", u"012", u'.', dialogs), RadiusWriteOutcome::Written);
    EXPECT_EQ(readBytes(model), mdl("MDL9", 12));
    EXPECT_EQ(writeModelRadius(path, u"12", u"255", u'.', dialogs), RadiusWriteOutcome::Written);
    EXPECT_EQ(readBytes(model), mdl("MDL9", 255));
    // A model file that is gone is not made again.
    EXPECT_EQ(writeModelRadius(widePath(air.dir / "gone.mdl"), u"3", u"4", u'.', dialogs), RadiusWriteOutcome::Failed);
    EXPECT_FALSE(fs::exists(air.dir / "gone.mdl"));

    const std::string airBytes = readBytes(air.file());
    AirFileState state;
    ASSERT_EQ(air.read(state, dialogs).selected, AirType::Helicopter);
    {
        const auto heldAir = platform::ExclusiveFile::open(air.file(), platform::ExclusiveAccess::Read);
        const auto heldModel = platform::ExclusiveFile::open(model, platform::ExclusiveAccess::ReadWrite);
        ASSERT_TRUE(heldAir.isOpen() && heldModel.isOpen());
        fs::permissions(air.file(), fs::perms::owner_read);
        // Silently, as a file without an aircraft section; the type last read stays.
        EXPECT_EQ(air.read(state, dialogs).outcome, AirFileOutcome::NoAircraftSection);
        EXPECT_EQ(state.AirTypeShown, 2);
        EXPECT_EQ(patchAirType(AirType::AI, state, false, dialogs).outcome, AirTypePatchOutcome::Failed);
        const ModelFileReading reading = readModelFile(widePath(air.dir.path()), u"<default>", u"skyliner200");
        EXPECT_EQ(reading.outcome, ModelFileOutcome::Failed);
        EXPECT_EQ(reading.failureMessage, modelFileReadFailureText(reading.ModelFilePath));
        // A valid radius and a text that is no number alike: the open fails first.
        for (const std::u16string text : {u"31", u"abc"})
            EXPECT_EQ(writeModelRadius(path, u"255", text, u'.', dialogs), RadiusWriteOutcome::Failed);
    }
    Records expected(5, {DialogKind::Critical, u"", RADIUS_WRITE_FAILURE_TEXT});
    expected[2].text = airFileWriteFailureText(state.AirFileName);
    EXPECT_EQ(dialogs.records(), expected);
    EXPECT_EQ(readBytes(air.file()), airBytes);
    EXPECT_EQ(readBytes(model), mdl("MDL9", 255));
    EXPECT_FALSE(platform::isReadOnly(air.file()));
    EXPECT_EQ(patchAirType(AirType::AI, state, false, dialogs).outcome, AirTypePatchOutcome::Written);
    EXPECT_EQ(writeModelRadius(path, u"255", u"31", u'.', dialogs), RadiusWriteOutcome::Written);
}
