#include <gtest/gtest.h>

#include "common/environment.h"
#include "core/runtimeerror.h"
#include "history/journalfixture.h"
#include "platform/fileio.h"

namespace fleetwright::test {
namespace {

std::uint64_t folderBytes(const std::filesystem::path &folder)
{
    std::uint64_t total = 0;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            total += entry.file_size();
    return total;
}

std::string utf16le(std::u16string_view text)
{
    std::string bytes = "\xFF\xFE";
    for (const char16_t ch : text) {
        bytes += static_cast<char>(ch & 0xff);
        bytes += static_cast<char>(ch >> 8);
    }
    return bytes;
}

struct Seed
{
    std::string file;
    std::string bytes;
    bool readOnly = false;
};

// Each operation is performed, undone (every file of the folder as before, bytes and read-only state),
// redone (as after) and undone again.
TEST(Journal, UndoAndRedoGiveBackEveryFileExactly)
{
    const std::string cfg = crlf("[fltsim.0]\ntitle=Cessna\nmodel=\n\n[fltsim.1]\ntitle=Cessna Floats\n");
    const struct Row
    {
        const char *name;
        std::vector<Seed> seeds;
        std::vector<Change> changes;
        std::size_t filesListed;
    } rows[] = {
        {"key write to a CRLF file", {{"aircraft.cfg", cfg}}, {{"aircraft.cfg", crlf("[fltsim.0]\ntitle=X\n")}}, 1},
        {"UTF-16 file", {{"readme.txt", utf16le(u"Caf\u00e9 \u2708\r\n")}}, {{"readme.txt", utf16le(u"Tea\r\n")}}, 1},
        {"LF-only file",
         {{"panel/panel.cfg", "[Window00]\nfile=a.bmp\n"}},
         {{"panel/panel.cfg", "[Window00]\nfile=b.bmp\n"}},
         1},
        {"file the operation creates", {{"aircraft.cfg", cfg}}, {{"aircraft.cfg.bak", cfg}}, 1},
        {"file the operation removes", {{"aircraft.cfg", cfg}, {"old.cfg", "x"}}, {{"old.cfg", std::nullopt}}, 1},
        {"read-only file the operation refused, beside one it changed",
         {{"aircraft.cfg", cfg, true}, {"model/model.cfg", "normal=a.mdl\r\n"}},
         {{"aircraft.cfg", crlf("[fltsim.0]\n")}, {"model/model.cfg", "normal=b.mdl\r\n"}},
         1},
        {"read-only file made writable and changed",
         {{"aircraft.cfg", cfg, true}},
         {{"aircraft.cfg", crlf("[fltsim.0]\n"), true}},
         1},
        {"one file written for every key",
         {{"aircraft.cfg", cfg}},
         {{"aircraft.cfg", cfg + "a=1\r\n"}, {"aircraft.cfg", cfg + "a=1\r\nb=2\r\n"}},
         1},
        {"empty file filled and another emptied", {{"a.txt", ""}, {"b.txt", "b"}}, {{"a.txt", "a"}, {"b.txt", ""}}, 2},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        JournalScene scene;
        for (const Seed &seed : row.seeds) {
            writeBytes(scene / seed.file, seed.bytes);
            if (seed.readOnly)
                platform::setReadOnly(scene / seed.file);
        }
        Journal journal(scene.location);
        const FolderSnapshot before = snapshot(scene.folder);
        perform(journal, scene.folder, u"Update [fltsim.0]", row.changes);
        const FolderSnapshot after = snapshot(scene.folder);
        ASSERT_NE(before, after);

        const std::vector<JournalOperationRecord> listed = journal.operations(scene.folder);
        ASSERT_EQ(listed.size(), 1u);
        EXPECT_EQ(listed[0].name, u"Update [fltsim.0]");
        EXPECT_EQ(listed[0].files.size(), row.filesListed);

        EXPECT_EQ(journal.undo(scene.folder).outcome, JournalOutcome::Done);
        EXPECT_EQ(snapshot(scene.folder), before);
        EXPECT_EQ(journal.redo(scene.folder).outcome, JournalOutcome::Done);
        EXPECT_EQ(snapshot(scene.folder), after);
        EXPECT_EQ(journal.undo(scene.folder).outcome, JournalOutcome::Done);
        EXPECT_EQ(snapshot(scene.folder), before);
        EXPECT_EQ(journal.undo(scene.folder).outcome, JournalOutcome::NothingToDo);

        // A journal opened afresh knows the same.
        Journal reopened(scene.location);
        ASSERT_TRUE(reopened.nextRedo(scene.folder));
        EXPECT_EQ(reopened.redo(scene.folder).outcome, JournalOutcome::Done);
        EXPECT_EQ(snapshot(scene.folder), after);
    }
}

TEST(Journal, UndoRefusesFilesChangedOutsideUntilForced)
{
    JournalScene scene;
    writeBytes(scene / "aircraft.cfg", "old\r\n");
    writeBytes(scene / "other.cfg", "one\r\n");
    Journal journal(scene.location);
    const FolderSnapshot before = snapshot(scene.folder);
    perform(journal, scene.folder, u"Renumber", {{"aircraft.cfg", "new\r\n"}, {"other.cfg", "two\r\n"}});
    writeBytes(scene / "aircraft.cfg", "edited by hand\r\n");
    const FolderSnapshot edited = snapshot(scene.folder);

    const JournalResult refused = journal.undo(scene.folder);
    EXPECT_EQ(refused.outcome, JournalOutcome::ChangedOutside);
    EXPECT_EQ(refused.changedOutside, std::vector<std::filesystem::path> {scene / "aircraft.cfg"});
    EXPECT_NE(refused.message.find((scene / "aircraft.cfg").u16string()), std::u16string::npos);
    EXPECT_EQ(snapshot(scene.folder), edited);
    EXPECT_EQ(journal.nextUndo(scene.folder)->name, u"Renumber");

    EXPECT_EQ(journal.undo(scene.folder, true).outcome, JournalOutcome::Done);
    EXPECT_EQ(snapshot(scene.folder), before);

    // Redo asks the same way.
    writeBytes(scene / "other.cfg", "three\r\n");
    EXPECT_EQ(journal.redo(scene.folder).outcome, JournalOutcome::ChangedOutside);
    EXPECT_EQ(readBytes(scene / "other.cfg"), "three\r\n");
}

TEST(Journal, UndoRedoChainAndRestore)
{
    JournalScene scene;
    writeBytes(scene / "aircraft.cfg", "0");
    Journal journal(scene.location);
    EXPECT_EQ(journal.undo(scene.folder).outcome, JournalOutcome::NothingToDo);
    EXPECT_FALSE(journal.nextUndo(scene.folder));

    const std::u16string names[] = {u"Update [fltsim.0]", u"Delete 2 sections", u"Renumber"};
    std::vector<FolderSnapshot> states {snapshot(scene.folder)};
    for (int i = 0; i < 3; ++i) {
        perform(journal, scene.folder, names[i], {{"aircraft.cfg", std::to_string(i + 1)}});
        states.push_back(snapshot(scene.folder));
    }
    // Another folder's operations are its own.
    JournalScene other;
    writeBytes(other / "aircraft.cfg", "x");
    perform(journal, other.folder, u"Sort keys", {{"aircraft.cfg", "y"}});

    const std::vector<JournalOperationRecord> listed = journal.operations(scene.folder);
    ASSERT_EQ(listed.size(), 3u);
    EXPECT_EQ(listed[0].name, u"Renumber"); // newest first
    EXPECT_EQ(listed[2].name, u"Update [fltsim.0]");
    EXPECT_EQ(journal.nextUndo(scene.folder)->name, u"Renumber");

    EXPECT_EQ(journal.undo(scene.folder).outcome, JournalOutcome::Done);
    EXPECT_EQ(snapshot(scene.folder), states[2]);
    EXPECT_EQ(journal.nextUndo(scene.folder)->name, u"Delete 2 sections");
    EXPECT_EQ(journal.nextRedo(scene.folder)->name, u"Renumber");

    // Back to before the first: everything later is undone too, and can be redone in order.
    EXPECT_EQ(journal.restoreBefore(scene.folder, listed[2].id).outcome, JournalOutcome::Done);
    EXPECT_EQ(snapshot(scene.folder), states[0]);
    EXPECT_EQ(journal.nextRedo(scene.folder)->name, u"Update [fltsim.0]");
    EXPECT_EQ(journal.redo(scene.folder).outcome, JournalOutcome::Done);
    EXPECT_EQ(snapshot(scene.folder), states[1]);
    EXPECT_EQ(journal.restoreBefore(scene.folder, listed[0].id).outcome, JournalOutcome::NothingToDo);

    // A new operation after undos cuts the redo chain off.
    perform(journal, scene.folder, u"Sort keys", {{"aircraft.cfg", "4"}});
    EXPECT_FALSE(journal.nextRedo(scene.folder));
    EXPECT_EQ(journal.operations(scene.folder).size(), 2u);
    EXPECT_EQ(snapshot(other.folder), (FolderSnapshot {{"aircraft.cfg", {"y", false}}}));
    EXPECT_EQ(journal.undo(other.folder).outcome, JournalOutcome::Done);
    EXPECT_EQ(snapshot(other.folder), (FolderSnapshot {{"aircraft.cfg", {"x", false}}}));
}

// The program and the checker each hold a journal on the same folder; each sees what the other recorded.
TEST(Journal, TwoJournalsOnOnePlaceSeeEachOthersOperations)
{
    JournalScene scene;
    writeBytes(scene / "aircraft.cfg", "0");
    Journal program(scene.location);
    Journal checker(scene.location);
    perform(program, scene.folder, u"Update [fltsim.0]", {{"aircraft.cfg", "1"}});
    perform(checker, scene.folder, u"Renumber", {{"aircraft.cfg", "2"}});

    const std::vector<JournalOperationRecord> seen = program.operations(scene.folder);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].name, u"Renumber");
    EXPECT_NE(seen[0].id, seen[1].id);
    EXPECT_EQ(program.undo(scene.folder).outcome, JournalOutcome::Done);
    EXPECT_EQ(readBytes(scene / "aircraft.cfg"), "1");
    EXPECT_EQ(checker.nextRedo(scene.folder)->name, u"Renumber");
    EXPECT_EQ(checker.undo(scene.folder).outcome, JournalOutcome::Done);
    EXPECT_EQ(readBytes(scene / "aircraft.cfg"), "0");
    EXPECT_FALSE(program.nextUndo(scene.folder));
}

TEST(Journal, AnOperationThatChangedNothingLeavesNoRecord)
{
    JournalScene scene;
    writeBytes(scene / "aircraft.cfg", "same");
    Journal journal(scene.location);
    perform(journal, scene.folder, u"Update [fltsim.0]", {{"aircraft.cfg", "same"}});
    {
        const JournalOperation notTouching(journal, scene.folder, u"Validate");
    }
    EXPECT_TRUE(journal.operations(scene.folder).empty());

    // An inner operation joins the outer one.
    {
        const JournalOperation outer(journal, scene.folder, u"Update all");
        perform(journal, scene.folder, u"Update [fltsim.0]", {{"aircraft.cfg", "one"}});
        perform(journal, scene.folder, u"Update [fltsim.1]", {{"aircraft.cfg", "two"}});
    }
    const std::vector<JournalOperationRecord> listed = journal.operations(scene.folder);
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_EQ(listed[0].name, u"Update all");
    EXPECT_EQ(journal.contents(listed[0].files[0].beforeDigest), "same");
    EXPECT_EQ(journal.contents(listed[0].files[0].afterDigest), "two");

    // Without a live operation nothing is journaled.
    journalBeforeChange(scene / "aircraft.cfg");
    writeBytes(scene / "aircraft.cfg", "three");
    EXPECT_EQ(journal.operations(scene.folder).size(), 1u);
}

TEST(Journal, IdenticalContentsAreStoredOnce)
{
    JournalScene scene;
    const std::string big(200000, 'k');
    for (int i = 0; i < 10; ++i)
        writeBytes(scene / ("texture." + std::to_string(i) + "/texture.cfg"), big);
    Journal journal(scene.location);
    std::vector<Change> changes;
    for (int i = 0; i < 10; ++i)
        changes.push_back({"texture." + std::to_string(i) + "/texture.cfg", big + "x"});
    perform(journal, scene.folder, u"Update all", changes);
    perform(journal, scene.folder, u"Update all", changes); // changes nothing
    EXPECT_EQ(journal.operations(scene.folder)[0].files.size(), 10u);
    EXPECT_LT(folderBytes(scene.location), 2 * big.size() + 100000);
}

TEST(Journal, LimitsDropTheOldestOperations)
{
    {
        SCOPED_TRACE("size");
        JournalScene scene;
        writeBytes(scene / "aircraft.cfg", std::string(1000, '0'));
        Journal journal(scene.location, {5000, 90});
        for (char c = '1'; c <= '9'; ++c)
            perform(journal, scene.folder, u"Update", {{"aircraft.cfg", std::string(1000, c)}});
        const std::vector<JournalOperationRecord> listed = journal.operations(scene.folder);
        ASSERT_GE(listed.size(), 2u);
        EXPECT_LT(listed.size(), 9u);
        // What is kept still undoes.
        EXPECT_EQ(journal.undo(scene.folder).outcome, JournalOutcome::Done);
        EXPECT_EQ(readBytes(scene / "aircraft.cfg"), std::string(1000, '8'));
        EXPECT_LT(folderBytes(scene.location), 5000u + 3000u + 10000u);
    }
    {
        SCOPED_TRACE("age");
        JournalScene scene;
        writeBytes(scene / "aircraft.cfg", "0");
        Journal journal(scene.location, {JournalLimits().maxBytes, 0});
        perform(journal, scene.folder, u"First", {{"aircraft.cfg", "1"}});
        perform(journal, scene.folder, u"Second", {{"aircraft.cfg", "2"}});
        const std::vector<JournalOperationRecord> listed = journal.operations(scene.folder);
        ASSERT_EQ(listed.size(), 1u);
        EXPECT_EQ(listed[0].name, u"Second");
        EXPECT_EQ(Journal(scene.location).operations(scene.folder).size(), 1u);
    }
}

TEST(Journal, AJournalThatCannotKeepTheOldBytesStopsTheChange)
{
    JournalScene scene;
    writeBytes(scene / "aircraft.cfg", "old");
    writeBytes(scene.dir / "blocked", "a file where the journal's folder would be");
    EXPECT_THROW(Journal(scene.dir / "blocked" / "history"), RuntimeError);

    Journal journal(scene.location);
    // The journal's folder goes away under it and a file stands in its place; even root cannot write there.
    std::filesystem::remove_all(scene.location);
    writeBytes(scene.location, "");
    const JournalOperation operation(journal, scene.folder, u"Update [fltsim.0]");
    EXPECT_THROW(journalBeforeChange(scene / "aircraft.cfg"), RuntimeError);
    EXPECT_EQ(readBytes(scene / "aircraft.cfg"), "old");
}

TEST(Journal, DefaultLocationFollowsTheEnvironment)
{
    const ScopedVariable chosen("FLEETWRIGHT_HISTORY", "journal-here");
    EXPECT_EQ(Journal::defaultLocation(), std::filesystem::path("journal-here"));
    const ScopedVariable unset("FLEETWRIGHT_HISTORY", std::nullopt);
    EXPECT_EQ(Journal::defaultLocation().filename(), "history");
#ifndef _WIN32
    // The data home as the base directory rules give it: an absolute XDG_DATA_HOME, else ~/.local/share.
    const ScopedVariable home("HOME", "/home/pilot");
    {
        const ScopedVariable data("XDG_DATA_HOME", "/srv/data");
        EXPECT_EQ(Journal::defaultLocation(), std::filesystem::path("/srv/data/fleetwright/history"));
    }
    for (const std::optional<std::string> &ignored :
         {std::optional<std::string>(), std::optional<std::string>(""), std::optional<std::string>("relative/data")}) {
        const ScopedVariable data("XDG_DATA_HOME", ignored);
        EXPECT_EQ(Journal::defaultLocation(), std::filesystem::path("/home/pilot/.local/share/fleetwright/history"));
    }
#endif
}

} // namespace
} // namespace fleetwright::test
