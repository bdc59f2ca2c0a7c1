// A crash at any point leaves every file as before or as after, and a journal that opens and can put the
// folder back: the log cut at every byte of the last operation, and rewrites that fail part-way.

#include <gtest/gtest.h>

#include "history/journalfixture.h"
#include "platform/fileio.h"
#include "platform/utf8.h"

namespace fleetwright::test {
namespace {

std::uint64_t sizeOf(const std::filesystem::path &path)
{
    return std::filesystem::exists(path) ? std::filesystem::file_size(path) : 0;
}

void restoreFolder(const std::filesystem::path &folder, const FolderSnapshot &state)
{
    for (const auto &[file, content] : snapshot(folder)) {
        platform::clearReadOnly(folder / file);
        std::filesystem::remove(folder / file);
    }
    for (const auto &[file, content] : state) {
        writeBytes(folder / file, content.bytes);
        if (content.readOnly)
            platform::setReadOnly(folder / file);
    }
}

// The log is the journal's one record of what happened; a crash cuts it anywhere after its last flush. Every
// cut must open, keep the earlier operation, and either know the last one well enough to undo it exactly or,
// when its files were never changed, not list it. Caught here and nowhere else: a cut line glued to the next
// record, an unfinished operation left unfinished or wrongly completed, an "after" taken for a "before".
TEST(JournalCrash, ALogCutAtAnyByteStillPutsTheFolderBack)
{
    JournalScene scene;
    writeBytes(scene / "aircraft.cfg", crlf("[fltsim.0]\ntitle=A\n"));
    writeBytes(scene / "model/model.cfg", "normal=a.mdl\n");
    const FolderSnapshot original = snapshot(scene.folder);
    const std::filesystem::path log = scene.location / "journal.log";
    std::string wholeLog;
    std::uint64_t start = 0, firstKept = 0, secondKept = 0;
    FolderSnapshot before, halfway, after;
    {
        Journal journal(scene.location);
        perform(journal, scene.folder, u"Update [fltsim.0]", {{"aircraft.cfg", crlf("[fltsim.0]\ntitle=B\n")}});
        before = snapshot(scene.folder);
        start = sizeOf(log);

        const JournalOperation operation(journal, scene.folder, u"Renumber");
        journalBeforeChange(scene / "aircraft.cfg");
        firstKept = sizeOf(log);
        platform::replaceFileAtomically(scene / "aircraft.cfg", crlf("[fltsim.1]\ntitle=B\n"));
        halfway = snapshot(scene.folder);
        journalBeforeChange(scene / "model/created.cfg");
        secondKept = sizeOf(log);
        platform::replaceFileAtomically(scene / "model/created.cfg", "new\n");
    }
    after = snapshot(scene.folder);
    wholeLog = readBytes(log);
    // Each cut starts from the journal as the crash left it: the later checks add and drop records of their own.
    const std::filesystem::path kept = scene.dir / "journal-at-crash";
    std::filesystem::copy(scene.location, kept, std::filesystem::copy_options::recursive);
    ASSERT_LT(start, firstKept);
    ASSERT_LT(secondKept, wholeLog.size());

    for (std::uint64_t cut = start; cut <= wholeLog.size(); ++cut) {
        // What the files can be when the log ends here: no file changes before its old bytes are kept, and the
        // records that end the operation follow the last write.
        std::vector<const FolderSnapshot *> possible;
        if (cut <= secondKept)
            possible.push_back(&before);
        if (cut >= firstKept && cut <= secondKept)
            possible.push_back(&halfway);
        if (cut >= secondKept)
            possible.push_back(&after);
        for (const FolderSnapshot *files : possible) {
            SCOPED_TRACE("log cut at " + std::to_string(cut) + " of " + std::to_string(wholeLog.size())
                         + (files == &before        ? ", files before"
                                : files == &halfway ? ", one file written"
                                                    : ""));
            std::filesystem::remove_all(scene.location);
            std::filesystem::copy(kept, scene.location, std::filesystem::copy_options::recursive);
            writeBytes(log, wholeLog.substr(0, cut));
            restoreFolder(scene.folder, *files);

            Journal journal(scene.location);
            const std::vector<JournalOperationRecord> listed = journal.operations(scene.folder);
            ASSERT_EQ(listed.size(), files == &before ? 1u : 2u);
            if (files != &before) {
                const JournalResult undone = journal.undo(scene.folder);
                ASSERT_EQ(undone.outcome, JournalOutcome::Done) << platform::toUtf8(undone.message);
                ASSERT_EQ(snapshot(scene.folder), before);
                ASSERT_EQ(journal.redo(scene.folder).outcome, JournalOutcome::Done);
                ASSERT_EQ(snapshot(scene.folder), *files);
                ASSERT_EQ(journal.undo(scene.folder).outcome, JournalOutcome::Done);
            }
            ASSERT_EQ(journal.undo(scene.folder).outcome, JournalOutcome::Done);
            ASSERT_EQ(snapshot(scene.folder), original);

            // The repaired log takes new records on lines of their own.
            perform(journal, scene.folder, u"Sort keys", {{"aircraft.cfg", "sorted\r\n"}});
            Journal reopened(scene.location);
            ASSERT_FALSE(reopened.operations(scene.folder).empty());
            EXPECT_EQ(reopened.operations(scene.folder)[0].name, u"Sort keys");
            EXPECT_EQ(reopened.undo(scene.folder).outcome, JournalOutcome::Done);
            EXPECT_EQ(snapshot(scene.folder), original);
        }
    }
}

// A rewrite that fails part-way (a full disk, a pulled cable) during an operation and during an undo: the
// file it was writing stays whole, the operation keeps what it did change, and an undo that fails leaves the
// files as they stood.
TEST(JournalCrash, RewritesFailingAtAnyByteLeaveEveryFileBeforeOrAfter)
{
    const std::string oldCfg = crlf("[fltsim.0]\ntitle=A\nmodel=\n");
    const std::string newCfg = crlf("[fltsim.0]\ntitle=B\nmodel=x\n");
    for (std::size_t limit : {std::size_t {0}, std::size_t {1}, std::size_t {7}, newCfg.size() - 1}) {
        SCOPED_TRACE("writes fail after " + std::to_string(limit) + " bytes");
        JournalScene scene;
        writeBytes(scene / "aircraft.cfg", oldCfg);
        writeBytes(scene / "panel.cfg", "p\n");
        const FolderSnapshot before = snapshot(scene.folder);
        Journal journal(scene.location);
        {
            const JournalOperation operation(journal, scene.folder, u"Update all");
            perform(journal, scene.folder, u"Update all", {{"panel.cfg", "q\n"}});
            const platform::ReplaceFailureForTests failing(limit);
            perform(journal, scene.folder, u"Update all", {{"aircraft.cfg", newCfg}});
        }
        EXPECT_EQ(readBytes(scene / "aircraft.cfg"), oldCfg);
        const FolderSnapshot after = snapshot(scene.folder);
        ASSERT_EQ(journal.operations(scene.folder).size(), 1u);
        EXPECT_EQ(journal.operations(scene.folder)[0].files.size(), 1u);
        {
            const platform::ReplaceFailureForTests failing(limit);
            EXPECT_EQ(journal.undo(scene.folder).outcome, JournalOutcome::Failed);
        }
        EXPECT_EQ(snapshot(scene.folder), after);
        EXPECT_EQ(journal.undo(scene.folder).outcome, JournalOutcome::Done);
        EXPECT_EQ(snapshot(scene.folder), before);
    }
}

} // namespace
} // namespace fleetwright::test
