#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/checkercommands.h"
#include "cli/checkrun.h"
#include "common/aircraftfolder.h"
#include "common/airfilebuilder.h"
#include "common/environment.h"
#include "common/tempdir.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

// Every command of this executable that writes journals into a scratch folder, never the user's own.
class ScratchJournal : public ::testing::Environment
{
public:
    void SetUp() override
    {
        m_dir.emplace();
        m_variable.emplace("FLEETWRIGHT_HISTORY", (*m_dir / "history").string());
    }
    void TearDown() override
    {
        m_variable.reset();
        m_dir.reset();
    }

private:
    std::optional<TempDir> m_dir;
    std::optional<ScopedVariable> m_variable;
};

[[maybe_unused]] const ::testing::Environment *const SCRATCH_JOURNAL =
    ::testing::AddGlobalTestEnvironment(new ScratchJournal);

// Every file below folder by its path from there, with its bytes and whether it is read-only.
std::map<std::string, std::string> folderState(const fs::path &folder)
{
    std::map<std::string, std::string> files;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file())
            continue;
        const bool readOnly = (entry.status().permissions() & fs::perms::owner_write) == fs::perms::none;
        files[entry.path().lexically_relative(folder).generic_string()] =
            (readOnly ? "read-only:" : "") + readBytes(entry.path());
    }
    return files;
}

void makeReadOnly(const fs::path &file)
{
    fs::permissions(file, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
}

const std::string CFG = crlf("[fltsim.3]\ntitle=A // first\nui_type=Skyliner\natc_id=CV-1\n[general]\natc_type=X\n"
                             "[fltsim.7]\nmodel=\ntitle=B\natc_id=CV-2\n");

std::string utf16(std::string_view text)
{
    std::string bytes = "\xFF\xFE";
    for (const char c : text)
        bytes += std::string {c, '\0'};
    return bytes;
}

// The ids of a history listing, newest first.
std::vector<std::string> listedIds(const std::string &listing)
{
    std::vector<std::string> ids;
    for (std::size_t at = 0; at < listing.size(); at = listing.find('\n', at) + 1)
        ids.push_back(listing.substr(at, listing.find('\t', at) - at));
    return ids;
}

} // namespace

// Each writing command, then undo: every file of the folder as before, byte for byte; redo: as after.
TEST(HistoryCommands, EveryWritingCommandIsUndoneAndRedoneByteForByte)
{
    const struct
    {
        const char *operation;
        std::function<void(const fs::path &)> setUp;
        std::vector<std::string> args; // "F" stands for the folder
    } rows[] = {
        // The backup the command creates goes again with the undo.
        {"Renumber", [](const fs::path &f) { writeBytes(f / "aircraft.cfg", CFG); }, {"renumber", "F"}},
        {"Sort keys",
         [](const fs::path &f) { writeBytes(f / "aircraft.cfg", "[fltsim.0]\ntitle=A\natc_id=B\nmodel=\n"); },
         {"sort-keys", "F", "--no-backup"}},
        {"Remove keys", [](const fs::path &f) { writeBytes(f / "aircraft.cfg", CFG); }, {"remove-keys", "F", "atc_id"}},
        {"Renumber",
         [](const fs::path &f) { writeBytes(f / "aircraft.cfg", utf16("[fltsim.4]\r\ntitle=A\r\n")); },
         {"renumber", "F", "--no-backup"}},
        // The read-only state goes with the patch and comes back with the undo.
        {"Air type",
         [](const fs::path &f) {
             writeBytes(f / "Sky.air",
                        AirFileBuilder().record(0x100, int32Bytes(7)).record(0x105, int32Bytes(0)).raw("tail").bytes());
             makeReadOnly(f / "Sky.air");
         },
         {"air-type", "F/Sky.air", "--set", "1"}},
        // The mark comes out of texture.cfg; the file keeps its length, so its last bytes stand twice.
        {"Validate: removed byte order marks",
         [](const fs::path &f) {
             writeAircraft(f);
             writeBytes(f / "aircraft.cfg", crlf("[fltsim.0]\ntitle=One\nmodel=\ntexture=alias\nsim=corvane\n"));
             writeBytes(f / "texture.alias" / "texture.cfg",
                        "\xEF\xBB\xBF" + crlf("[fltsim]\nfallback.1=..\\texture\n"));
         },
         {"validate", "F", "--fs9", "", "--fsx", "", "--options", ALL_ON, "--report", "-"}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.args.front() + " " + row.operation);
        TempDir dir;
        const fs::path folder = dir / "aircraft";
        row.setUp(folder);
        std::vector<std::string> args = row.args;
        for (std::string &arg : args) {
            if (arg == "F")
                arg = folder.string();
            else if (arg.starts_with("F/"))
                arg = (folder / arg.substr(2)).string();
        }
        const auto before = folderState(folder);
        const CheckRun run = check(args);
        EXPECT_NE(run.exitCode, CHECK_EXIT_NO_REPORT) << run.err;
        const auto after = folderState(folder);
        ASSERT_NE(after, before) << "the command changed nothing";

        const CheckRun history = check({"history", folder.string()});
        EXPECT_EQ(history.exitCode, CHECK_EXIT_OK) << history.err;
        EXPECT_NE(history.out.find("\t" + std::string(row.operation) + "\t"), std::string::npos) << history.out;
        EXPECT_EQ(listedIds(history.out).size(), 1u) << history.out;

        CheckRun undo = check({"undo", folder.string()});
        EXPECT_EQ(undo.exitCode, CHECK_EXIT_OK) << undo.err;
        EXPECT_EQ(undo.out, "undone: " + std::string(row.operation) + "\n");
        EXPECT_EQ(folderState(folder), before);
        EXPECT_TRUE(check({"history", folder.string()}).out.ends_with("\tundone\n"));
        CheckRun redo = check({"redo", folder.string()});
        EXPECT_EQ(redo.exitCode, CHECK_EXIT_OK) << redo.err;
        EXPECT_EQ(folderState(folder), after);
        EXPECT_EQ(check({"undo", (folder / "").string()}).exitCode, CHECK_EXIT_OK) << "the same folder";
        EXPECT_EQ(folderState(folder), before);
    }
}

TEST(HistoryCommands, RefusalsLeaveTheFilesAsTheyStand)
{
    TempDir dir;
    const fs::path folder = dir / "aircraft";
    const std::string f = folder.string();
    writeBytes(folder / "aircraft.cfg", CFG);

    // Nothing journaled yet: nothing to list, undo or redo.
    EXPECT_EQ(check({"history", f}).out, "");
    CheckRun run = check({"undo", f});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_EQ(run.err, "fleetwright-check: nothing to undo in " + f + "\n");
    EXPECT_EQ(check({"redo", f}).err, "fleetwright-check: nothing to redo in " + f + "\n");

    // A journal that cannot be opened refuses the change: no change without a way back.
    writeBytes(dir / "no-folder", "a file where the journal's folder would be");
    {
        const ScopedVariable broken("FLEETWRIGHT_HISTORY", (dir / "no-folder").string());
        run = check({"sort-keys", f, "--no-backup"});
        EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
        EXPECT_NE(run.err.find((dir / "no-folder").string()), std::string::npos) << run.err;
        EXPECT_EQ(readBytes(folder / "aircraft.cfg"), CFG);
    }

    // A refused write and a validation that repairs nothing leave no operation.
    makeReadOnly(folder / "aircraft.cfg");
    EXPECT_EQ(check({"remove-keys", f, "atc_id"}).exitCode, CHECK_EXIT_NO_REPORT);
    fs::permissions(folder / "aircraft.cfg", fs::perms::owner_write, fs::perm_options::add);
    writeAircraft(dir / "clean");
    EXPECT_EQ(check(hermetic({"validate", (dir / "clean").string(), "--report", "-"})).exitCode, CHECK_EXIT_OK);
    EXPECT_EQ(check({"history", (dir / "clean").string()}).out, "");
    EXPECT_EQ(check({"history", f}).out, "");

    // Changed outside since the renumbering: refused without --force, nothing written; with it, undone.
    ASSERT_EQ(check({"renumber", f, "--no-backup"}).exitCode, CHECK_EXIT_OK);
    const std::string outside = crlf("[fltsim.0]\ntitle=edited by hand\n");
    writeBytes(folder / "aircraft.cfg", outside);
    run = check({"undo", f});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_EQ(run.err,
              "fleetwright-check: " + (folder / "aircraft.cfg").string()
                  + " was changed outside since the journaled change\n"
                    "fleetwright-check: nothing written; --force overwrites the changes made outside\n");
    EXPECT_EQ(readBytes(folder / "aircraft.cfg"), outside);
    EXPECT_EQ(check({"undo", f, "--force"}).exitCode, CHECK_EXIT_OK);
    EXPECT_EQ(readBytes(folder / "aircraft.cfg"), CFG);

    // Two operations; restore to before the older one undoes both. An unknown id is refused.
    ASSERT_EQ(check({"renumber", f, "--no-backup"}).exitCode, CHECK_EXIT_OK);
    ASSERT_EQ(check({"sort-keys", f, "--no-backup"}).exitCode, CHECK_EXIT_OK);
    const std::vector<std::string> ids = listedIds(check({"history", f}).out);
    ASSERT_EQ(ids.size(), 2u);
    run = check({"restore", f, "--before", "999999"});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_NO_REPORT);
    EXPECT_EQ(run.err, "fleetwright-check: no operation 999999 in " + f + "\n");
    run = check({"restore", f, "--before", ids[1]});
    EXPECT_EQ(run.exitCode, CHECK_EXIT_OK) << run.err;
    EXPECT_EQ(run.out, "restored to before " + ids[1] + ": Renumber\n");
    EXPECT_EQ(readBytes(folder / "aircraft.cfg"), CFG);
}

TEST(HistoryCommands, WrongCommandLinesAreUsageErrors)
{
    const std::vector<std::pair<std::vector<std::string>, std::string>> rows = {
        {{"undo"}, "'undo' needs a folder"},
        {{"redo", "a", "b"}, "'redo' takes one folder, got 'a' and 'b'"},
        {{"history", "a", "--force"}, "'history' has no option '--force'"},
        {{"restore", "a"}, "'restore' needs '--before ID'"},
        {{"restore", "a", "--before"}, "'--before' needs an operation ID"},
        {{"restore", "a", "--before", "1x"}, "'--before' takes an operation ID as history lists it, got '1x'"},
        {{"undo", "a", "--before", "1"}, "'undo' has no option '--before'"},
    };
    for (const auto &[args, message] : rows) {
        const CheckRun run = check(args);
        EXPECT_EQ(run.exitCode, CHECK_EXIT_USAGE) << message;
        EXPECT_EQ(run.err, "fleetwright-check: " + message + TRY);
    }
    const CheckRun help = check({"--help"});
    for (const std::string name : {"history", "undo", "redo", "restore"})
        EXPECT_NE(help.out.find("\n  " + name + " FOLDER"), std::string::npos) << name;
}

// A script that works in the aircraft's folder and one that names it in full undo the same operation.
TEST(HistoryCommands, ARelativeFolderIsTheSameFolder)
{
    TempDir dir;
    writeBytes(dir / "aircraft" / "aircraft.cfg", CFG);
    const fs::path previous = fs::current_path();
    fs::current_path(dir.path());
    const CheckRun run = check({"renumber", "aircraft"});
    fs::current_path(previous);
    ASSERT_EQ(run.exitCode, CHECK_EXIT_OK) << run.err;
    EXPECT_EQ(run.out,
              "renumbered the [fltsim.x] sections of " + (fs::path("aircraft") / "aircraft.cfg").string() + "\n");

    const std::string folder = (dir / "aircraft").string();
    // Named from the folder, in the order they were first changed.
    const std::string listing = check({"history", folder}).out;
    EXPECT_TRUE(listing.ends_with("\tRenumber\taircraft.corvane, aircraft.cfg\n")) << listing;
    EXPECT_EQ(check({"undo", folder}).exitCode, CHECK_EXIT_OK);
    EXPECT_EQ(folderState(dir / "aircraft"), (std::map<std::string, std::string> {{"aircraft.cfg", CFG}}));
}

// validate-all takes the marks out folder by folder: each folder undoes its own.
TEST(HistoryCommands, ValidateAllJournalsEachFolderApart)
{
    TempDir dir;
    const std::string marked = "\xEF\xBB\xBF" + crlf("[fltsim]\nfallback.1=..\\texture\n");
    for (const char *name : {"a", "b"}) {
        writeAircraft(dir / "root" / name);
        writeBytes(dir / "root" / name / "aircraft.cfg",
                   crlf("[fltsim.0]\ntitle=One\nmodel=\ntexture=alias\nsim=corvane\n"));
        writeBytes(dir / "root" / name / "texture.alias" / "texture.cfg", marked);
    }
    const CheckRun run = check(hermetic({"validate-all", (dir / "root").string(), "--report", "-"}));
    EXPECT_NE(run.exitCode, CHECK_EXIT_NO_REPORT) << run.err;
    for (const char *name : {"a", "b"}) {
        SCOPED_TRACE(name);
        const std::string folder = (dir / "root" / name).string();
        EXPECT_NE(readBytes(dir / "root" / name / "texture.alias" / "texture.cfg"), marked);
        const std::string listing = check({"history", folder}).out;
        EXPECT_TRUE(listing.ends_with("\tValidate: removed byte order marks\t"
                                      + (fs::path("texture.alias") / "texture.cfg").string() + "\n"))
            << listing;
        EXPECT_EQ(check({"undo", folder}).exitCode, CHECK_EXIT_OK);
        EXPECT_EQ(readBytes(dir / "root" / name / "texture.alias" / "texture.cfg"), marked);
    }
    EXPECT_EQ(check({"history", (dir / "root").string()}).out, "");
}
