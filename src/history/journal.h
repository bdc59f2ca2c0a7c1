#pragma once

// The journal of every change the program and the checker make to a user's files: what each operation
// changed, the bytes before and after, and the way back (undo, redo, restore to before an operation).

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace fleetwright {

struct JournalLimits
{
    std::uint64_t maxBytes = 500ull * 1024 * 1024; // stored contents; oldest operations dropped first
    std::int64_t maxAgeDays = 90;
};

// One file touched by an operation.
struct JournalFile
{
    std::filesystem::path path; // absolute, as written
    bool existedBefore = true;  // false: the operation created it
    bool existedAfter = true;   // false: the operation removed it
    bool readOnlyBefore = false;
    bool readOnlyAfter = false;
    std::string beforeDigest; // content address of the bytes before ("" when it did not exist)
    std::string afterDigest;  // of the bytes after ("" when removed, or when the change did not finish)
};

// One user operation: "Update [fltsim.3]", "Delete 2 sections", "Renumber", "Validate: removed byte order marks".
struct JournalOperationRecord
{
    std::uint64_t id = 0;         // increasing, unique in the journal
    std::int64_t timeNs = 0;      // start, nanoseconds since 1970 UTC
    std::filesystem::path folder; // the aircraft folder it worked on
    std::u16string name;
    std::vector<JournalFile> files;
    bool undone = false; // undone and not redone
};

enum class JournalOutcome
{
    Done,
    NothingToDo,    // no operation to undo / redo / restore to
    ChangedOutside, // a file no longer holds the bytes the journal left there; nothing written (ask, then force)
    Failed,         // a file could not be written; files already restored are put back (message says)
};

struct JournalResult
{
    JournalOutcome outcome = JournalOutcome::NothingToDo;
    std::u16string message; // for the user; names the operation and files
    std::vector<std::filesystem::path> changedOutside;
};

// The journal in its folder: journal.log, the append-only record of operations (journallog.h), and contents/,
// every kept version of a file once under its SHA-256 (contentstore.h). Before a file changes, its old bytes
// and then the log line naming them reach the disk. One writing process at a time is assumed; another's
// records are read when the log has grown. The limits are applied as an operation begins: whole oldest
// operations go, with the contents no remaining operation uses.
class Journal
{
public:
    // FLEETWRIGHT_HISTORY when set; else Windows: %LOCALAPPDATA%\Fleetwright\history; elsewhere
    // $XDG_DATA_HOME/fleetwright/history (default ~/.local/share/fleetwright/history).
    static std::filesystem::path defaultLocation();

    // Opens (creating when missing) the journal at location. An operation a crash left unfinished is
    // completed from the files on disk: a file that still holds its "before" bytes was not changed and leaves
    // the record, any other file's present bytes are taken as its "after". Throws RuntimeError when the
    // folder cannot be made or read.
    explicit Journal(std::filesystem::path location, JournalLimits limits = {});
    ~Journal();
    Journal(const Journal &) = delete;
    Journal &operator=(const Journal &) = delete;

    const std::filesystem::path &location() const;

    // Operations on the folder (compared as the file lookups compare paths), newest first.
    std::vector<JournalOperationRecord> operations(const std::filesystem::path &folder) const;
    // What Undo / Redo would act on now, for the menu text ("Undo Delete 2 sections").
    std::optional<JournalOperationRecord> nextUndo(const std::filesystem::path &folder) const;
    std::optional<JournalOperationRecord> nextRedo(const std::filesystem::path &folder) const;

    // force: overwrite files changed outside since the journaled change (after the user said yes).
    JournalResult undo(const std::filesystem::path &folder, bool force = false);
    JournalResult redo(const std::filesystem::path &folder, bool force = false);
    // Puts the folder's files back to how they stood just before operation id (undoing it and all later ones).
    JournalResult restoreBefore(const std::filesystem::path &folder, std::uint64_t id, bool force = false);

    // Stored bytes, for diffs; nothing when not stored.
    std::optional<std::string> contents(const std::string &digest) const;

    struct State;

private:
    friend class JournalOperation;
    std::unique_ptr<State> m_state;
};

// While one lives, every change to a user's file made through the engine's writers belongs to one journaled
// operation. Operations do not nest: an inner one joins the outer. Without a live operation, writers journal
// nothing (reports and settings are not users' aircraft files).
class JournalOperation
{
public:
    JournalOperation(Journal &journal, std::filesystem::path folder, std::u16string name);
    ~JournalOperation(); // closes the record; an operation that changed nothing leaves no record
    JournalOperation(const JournalOperation &) = delete;
    JournalOperation &operator=(const JournalOperation &) = delete;

private:
    bool m_outer = false; // false: joined an operation already running
};

// Called by every engine writer of a user's file (key writes and whole-file rewrites of aircraft.cfg, .air and
// .mdl patches, the byte-order-mark removal, the text editor's save) before the first byte changes. It stores
// the old bytes durably (written and flushed) first; when it cannot, it throws RuntimeError with a clear message,
// so the change does not happen. Nothing without a live JournalOperation. What the writers leave is read once,
// as the outermost operation ends.
void journalBeforeChange(const std::filesystem::path &file);

} // namespace fleetwright
