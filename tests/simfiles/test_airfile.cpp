#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "common/airfilebuilder.h"
#include "core/scripteddialogs.h"
#include "platform/fileio.h"
#include "simfiles/airfile.h"
#include "common/tempdir.h"

using namespace fleetwright;
using fleetwright::test::AirFileBuilder;
using fleetwright::test::int32Bytes;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

const char16_t SEPARATOR = static_cast<char16_t>(fs::path::preferred_separator);

void makeReadOnly(const fs::path &path)
{
    fs::permissions(path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
}

// An aircraft folder holding one air file, "skyliner.air", with the given bytes.
struct AirFolder
{
    explicit AirFolder(const std::string &bytes) { writeBytes(file(), bytes); }

    fs::path file() const { return dir / "skyliner.air"; }
    std::u16string folder() const { return widePath(dir.path()); }

    // ReadAirFile as the grid's double-click runs it: AirFileName is the variation's sim value.
    AirFileReading read(AirFileState &state, ScriptedDialogs &dialogs) const
    {
        state.AirFileName = u"skyliner";
        return ReadAirFile(folder(), state, dialogs);
    }

    TempDir dir;
};

} // namespace

TEST(ReadAirFile, WalksTheRecordChainToTheAircraftSection)
{
    // At offset 8 the payload of the first record holds a header of its own, which the backward step finds.
    const std::string headerInPayload = int32Bytes(0x105) + int32Bytes(4) + int32Bytes(2);
    const struct
    {
        const char *name;
        std::string bytes;
        std::optional<AirType> selected;
    } rows[] = {
        {"record 0x105 first", AirFileBuilder().aircraft(2).bytes(), AirType::AI},
        {"behind other records",
         AirFileBuilder()
             .record(0x1, "DR 1050\0"s)
             .record(0x2, std::string(21, 'x'))
             .aircraft(1)
             .record(0x3, "ab")
             .bytes(),
         AirType::Helicopter},
        {"a size of 0 steps over the header", AirFileBuilder().record(0x7, "").aircraft(0).bytes(), AirType::Normal},
        {"a negative size steps backwards", AirFileBuilder().record(0x9, headerInPayload).record(0x3, -20, "").bytes(),
         AirType::AI},
        {"a header cut short keeps a whole type field; the value behind the end reads as 0",
         AirFileBuilder().record(0x1, "abcd").raw(int32Bytes(0x105) + "\x01\x00"s).bytes(), AirType::Normal},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        AirFolder air(row.bytes);
        ScriptedDialogs dialogs;
        AirFileState state;
        const AirFileReading reading = air.read(state, dialogs);
        EXPECT_EQ(reading.outcome, AirFileOutcome::TypeFound);
        EXPECT_EQ(reading.selected, row.selected);
        EXPECT_EQ(state.AirTypeShown, static_cast<std::int16_t>(*row.selected) + 1);
        EXPECT_TRUE(dialogs.records().empty());
    }
}

TEST(ReadAirFile, ChainsWithoutAnAircraftSectionEndAsNotFound)
{
    const struct
    {
        const char *name;
        std::string bytes;
    } rows[] = {
        {"chain ends at the end of the file", AirFileBuilder().record(0x1, "abc").record(0x341, "defgh").bytes()},
        {"size runs past the end", AirFileBuilder().record(0x1, 1000, "abcd").raw(int32Bytes(0x105)).bytes()},
        {"size -8 returns to its own header",
         AirFileBuilder().record(0x1, "ab").record(0x2, -8, "").aircraft(0).bytes()},
        {"size leads below the start", AirFileBuilder().record(0x1, "ab").record(0x2, -100, "").aircraft(0).bytes()},
        {"type field cut short", AirFileBuilder().record(0x1, "abcd").raw("\x05\x01"s).bytes()},
        {"next offset overflows", AirFileBuilder().record(0x1, 0x7FFFFFF8, "ab").aircraft(0).bytes()},
        {"empty file", ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        AirFolder air(row.bytes);
        ScriptedDialogs dialogs;
        AirFileState state;
        state.AirTypeShown = 3;
        const AirFileReading reading = air.read(state, dialogs);
        EXPECT_EQ(reading.outcome, AirFileOutcome::NoAircraftSection);
        EXPECT_EQ(reading.selected, std::nullopt);
        EXPECT_EQ(state.AirTypeShown, 3);
        EXPECT_TRUE(dialogs.records().empty());
    }
}

TEST(ReadAirFile, NameBecomesTheFullPathAndAMissingFileChangesNothing)
{
    AirFolder air(AirFileBuilder().aircraft(1).bytes());
    ScriptedDialogs dialogs;

    AirFileState state {u"", 2};
    EXPECT_EQ(ReadAirFile(air.folder(), state, dialogs).outcome, AirFileOutcome::NoFile);
    EXPECT_EQ(state.AirFileName, u"");

    state.AirFileName = u"missing";
    EXPECT_EQ(ReadAirFile(air.folder(), state, dialogs).outcome, AirFileOutcome::NoFile);
    EXPECT_EQ(state.AirFileName, air.folder() + SEPARATOR + u"missing.air");
    EXPECT_EQ(state.AirTypeShown, 2);

    // Names are found without regard to case, as the simulators' platform finds them.
    state.AirFileName = u"SKYLINER";
    const AirFileReading reading = ReadAirFile(air.folder(), state, dialogs);
    EXPECT_EQ(reading.outcome, AirFileOutcome::TypeFound);
    EXPECT_EQ(reading.selected, AirType::Helicopter);
    EXPECT_EQ(state.AirFileName, air.folder() + SEPARATOR + u"SKYLINER.air");
    EXPECT_TRUE(dialogs.records().empty());
}

TEST(ReadAirFile, NameTheFileSystemCannotTakeShowsTheCommonErrorBox)
{
#ifdef _WIN32
    GTEST_SKIP() << "Windows takes any UTF-16 name";
#else
    TempDir dir;
    ScriptedDialogs dialogs;
    AirFileState state {u"sky"s + char16_t(0xD800), 1};
    EXPECT_EQ(ReadAirFile(widePath(dir.path()), state, dialogs).outcome, AirFileOutcome::Failed);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0].kind, DialogKind::Plain);
    EXPECT_EQ(dialogs.records()[0].text,
              u"A runtime error has occured\r\n\r\nError number: 52\r\nError description: Bad "
              u"file name or number\r\nProcedure ReadAirFile\r\nLine: 0\r\nFormular frm_Main");
    EXPECT_EQ(state.AirTypeShown, 1);
#endif
}

TEST(ReadAirFile, TypeWithItsHighHalfSetSelectsNothing)
{
    AirFolder air(AirFileBuilder().record(0x1, "x").aircraft(0x00010002).bytes());
    ScriptedDialogs dialogs;
    AirFileState state {u"", 2};
    const AirFileReading reading = air.read(state, dialogs);
    EXPECT_EQ(reading.outcome, AirFileOutcome::TypeFound);
    EXPECT_EQ(reading.selected, std::nullopt);
    EXPECT_EQ(reading.storedType, 0x00010002);
    EXPECT_EQ(state.AirTypeShown, 2);
}

TEST(AirTypePatch, WritesTheLowHalfInPlaceAfterYes)
{
    const AirFileBuilder builder = AirFileBuilder().record(0x1, "DR 1050\0"s).aircraft(0x00010002).record(0x3, "tail");
    const std::size_t typeAt = 8 + 8 + 8;
    AirFolder air(builder.bytes());
    ScriptedDialogs dialogs;
    AirFileState state;
    air.read(state, dialogs);

    dialogs.pushAnswer(true);
    EXPECT_EQ(patchAirType(AirType::Normal, state, true, dialogs).outcome, AirTypePatchOutcome::Written);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0].kind, DialogKind::Question);
    EXPECT_EQ(dialogs.records()[0].text, u"Are you sure that you want to change this aircraft to type 0 = Normal?");

    std::string expected = builder.bytes();
    expected.replace(typeAt, 2, "\x00\x00"s);
    EXPECT_EQ(readBytes(air.file()), expected);
    // The high half stays, so the type still reads as none of the three.
    EXPECT_EQ(air.read(state, dialogs).selected, std::nullopt);

    EXPECT_EQ(airTypeQuestion(AirType::Helicopter),
              u"Are you sure that you want to change this aircraft to type 1 = Helicopter?");
    EXPECT_EQ(airTypeQuestion(AirType::AI), u"Are you sure that you want to change this aircraft to type 2 = AI?");
}

TEST(AirTypePatch, NoRestoresTheTypeLastRead)
{
    AirFolder air(AirFileBuilder().aircraft(0).bytes());
    ScriptedDialogs dialogs;
    AirFileState state;
    air.read(state, dialogs);

    // Without confirmation nothing is asked.
    EXPECT_EQ(patchAirType(AirType::AI, state, false, dialogs).outcome, AirTypePatchOutcome::Written);
    EXPECT_TRUE(dialogs.records().empty());
    EXPECT_EQ(readBytes(air.file()), AirFileBuilder().aircraft(2).bytes());

    dialogs.pushAnswer(false);
    const AirTypePatch refused = patchAirType(AirType::Helicopter, state, true, dialogs);
    EXPECT_EQ(refused.outcome, AirTypePatchOutcome::Refused);
    EXPECT_EQ(refused.restore, AirType::Normal); // what was read, not what the patch wrote
    EXPECT_EQ(readBytes(air.file()), AirFileBuilder().aircraft(2).bytes());

    AirFileState neverRead {state.AirFileName, 0};
    dialogs.pushAnswer(false);
    EXPECT_EQ(patchAirType(AirType::AI, neverRead, true, dialogs).restore, std::nullopt);
}

TEST(AirTypePatch, ReadOnlyFileIsReadAndPatched)
{
    AirFolder air(AirFileBuilder().record(0x2, "abc").aircraft(2).bytes());
    makeReadOnly(air.file());
    ScriptedDialogs dialogs;
    AirFileState state;
    EXPECT_EQ(air.read(state, dialogs).selected, AirType::AI);

    EXPECT_EQ(patchAirType(AirType::Helicopter, state, false, dialogs).outcome, AirTypePatchOutcome::Written);
    EXPECT_FALSE(platform::isReadOnly(air.file()));
    EXPECT_EQ(air.read(state, dialogs).selected, AirType::Helicopter);
    EXPECT_TRUE(dialogs.records().empty());
}

TEST(AirTypePatch, NothingWrittenWithoutAircraftSectionOrFile)
{
    const struct
    {
        const char *name;
        std::string bytes;
    } rows[] = {
        {"no record 0x105", AirFileBuilder().record(0x1, "abc").record(0x2, "").bytes()},
        {"size -8", AirFileBuilder().record(0x1, -8, "").aircraft(0).bytes()},
        {"chain past the end", AirFileBuilder().record(0x1, 500, "").aircraft(0).bytes()},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        AirFolder air(row.bytes);
        ScriptedDialogs dialogs;
        AirFileState state;
        air.read(state, dialogs);
        EXPECT_EQ(patchAirType(AirType::AI, state, false, dialogs).outcome, AirTypePatchOutcome::NoAircraftSection);
        EXPECT_EQ(readBytes(air.file()), row.bytes);
        EXPECT_TRUE(dialogs.records().empty());
    }

    TempDir dir;
    ScriptedDialogs dialogs;
    AirFileState state {widePath(dir / "gone.air"), 1};
    EXPECT_EQ(patchAirType(AirType::AI, state, false, dialogs).outcome, AirTypePatchOutcome::NoFile);
    EXPECT_FALSE(fs::exists(dir / "gone.air"));
    EXPECT_TRUE(dialogs.records().empty());
}

TEST(AirTypePatch, FailureShowsThePathAndLeavesTheBytes)
{
    const std::string bytes = AirFileBuilder().record(0x1, 0x7FFFFFF8, "ab").aircraft(0).bytes();
    AirFolder air(bytes);
    ScriptedDialogs dialogs;
    AirFileState state;
    air.read(state, dialogs);

    EXPECT_EQ(patchAirType(AirType::Normal, state, false, dialogs).outcome, AirTypePatchOutcome::Failed);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0].kind, DialogKind::Critical);
    EXPECT_EQ(dialogs.records()[0].text,
              state.AirFileName
                  + u"\r\n could not be opened for write access. Please make sure that the sim is not running and no "
                    u"other program access this file.");
    EXPECT_EQ(readBytes(air.file()), bytes);
}

// The simulator, or any program, holding the air file exclusively.
TEST(AirFileHeld, ReadShowsNoSectionAndPatchFailsWithoutAByteChanged)
{
    const std::string bytes = AirFileBuilder().record(0x2, "abc").aircraft(1).bytes();
    AirFolder air(bytes);
    ScriptedDialogs dialogs;
    AirFileState state;
    ASSERT_EQ(air.read(state, dialogs).selected, AirType::Helicopter);

    for (const platform::ExclusiveAccess access :
         {platform::ExclusiveAccess::Read, platform::ExclusiveAccess::ReadWrite}) {
        SCOPED_TRACE(access == platform::ExclusiveAccess::Read ? "held for reading" : "held for writing");
        {
            const platform::ExclusiveFile held = platform::ExclusiveFile::open(air.file(), access);
            ASSERT_TRUE(held.isOpen());
            makeReadOnly(air.file());

            // Silently, as a file without an aircraft section; the type last read stays.
            const AirFileReading reading = air.read(state, dialogs);
            EXPECT_EQ(reading.outcome, AirFileOutcome::NoAircraftSection);
            EXPECT_EQ(reading.selected, std::nullopt);
            EXPECT_EQ(state.AirTypeShown, 2);
            EXPECT_TRUE(dialogs.records().empty());

            EXPECT_EQ(patchAirType(AirType::AI, state, false, dialogs).outcome, AirTypePatchOutcome::Failed);
            ASSERT_EQ(dialogs.records().size(), 1u);
            EXPECT_EQ(dialogs.records()[0].kind, DialogKind::Critical);
            EXPECT_EQ(dialogs.records()[0].text, airFileWriteFailureText(state.AirFileName));
        }
        dialogs = ScriptedDialogs();
        EXPECT_EQ(readBytes(air.file()), bytes);
        // The read-only state went before the open failed, and stays gone.
        EXPECT_FALSE(platform::isReadOnly(air.file()));
    }

    // Let go, the file reads and patches again.
    EXPECT_EQ(air.read(state, dialogs).selected, AirType::Helicopter);
    EXPECT_EQ(patchAirType(AirType::AI, state, false, dialogs).outcome, AirTypePatchOutcome::Written);
    EXPECT_EQ(air.read(state, dialogs).selected, AirType::AI);
    EXPECT_TRUE(dialogs.records().empty());
}

TEST(AirFileCorpus, RealChains)
{
    const fs::path corpus = FLEETWRIGHT_CORPUS_DIR;
    if (!fs::is_directory(corpus))
        GTEST_SKIP() << "no corpus";
    const struct
    {
        const char *folder;
        const char16_t *sim;
        AirFileOutcome outcome;
    } rows[] = {
        {"jodel-dr1050-fsx", u"DLA_Jodel_DR-1050", AirFileOutcome::TypeFound},
        {"bonanza-a36", u"a36", AirFileOutcome::NoAircraftSection},
        {"c172ii-p3d", u"SingleEngineProp", AirFileOutcome::NoAircraftSection},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.folder);
        ScriptedDialogs dialogs;
        AirFileState state {row.sim, 0};
        const AirFileReading reading = ReadAirFile(widePath(corpus / row.folder), state, dialogs);
        EXPECT_EQ(reading.outcome, row.outcome);
        if (row.outcome == AirFileOutcome::TypeFound) {
            EXPECT_EQ(reading.selected, AirType::Normal);
        }
    }
    EXPECT_EQ(locateAircraftSection(readBytes(corpus / "jodel-dr1050-fsx" / "DLA_Jodel_DR-1050.air")).offset, 567);
}
