#pragma once

// What the journal knows, shared by its recording and its restoring halves. Not for use outside history/.

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "history/contentstore.h"
#include "history/journal.h"
#include "history/journallog.h"

namespace fleetwright {

// A file as it stands on disk, read whole.
struct DiskState
{
    bool readable = true; // false: it exists but could not be read (locked, no right)
    bool exists = false;
    bool readOnly = false;
    std::string bytes;
};

DiskState readDiskState(const std::filesystem::path &path);

struct StoredFile
{
    JournalFile file;
    std::uint64_t sizeBefore = 0;
    std::uint64_t sizeAfter = 0;
    bool hasAfter = false; // false: the operation has not ended, or left the file as it was
};

struct StoredOperation
{
    std::uint64_t id = 0;
    std::int64_t timeNs = 0;
    std::filesystem::path folder;
    std::u16string name;
    std::vector<StoredFile> files;
    bool ended = false;
    bool undone = false;
    bool dropped = false;

    // Listed in the folder's history: complete, not dropped, and it changed at least one file.
    bool isListed() const;
    JournalOperationRecord record() const;
};

struct Journal::State
{
    State(std::filesystem::path where, JournalLimits bounds);

    std::filesystem::path location;
    std::filesystem::path logPath;
    JournalLimits limits;
    ContentStore store;
    std::map<std::uint64_t, StoredOperation> operations;
    std::uint64_t nextId = 1;
    std::uint64_t logSize = 0; // how much of the log this state has taken in
    bool live = false;         // an operation of this process is recording: its record must not be read anew

    // Reads the log afresh and repairs a cut last line; recover: also completes what a crash left unfinished.
    // Throws RuntimeError when the log exists but cannot be read.
    void load(bool recover);
    // Reads the log again when another process has added to it.
    void refresh();
    void take(const JournalLogRecord &record);
    // Appends the records and takes them in; false when they could not be written. durable: flushed to the
    // disk before it returns.
    bool append(const std::vector<JournalLogRecord> &records, bool durable = true);

    // Records each changed file's present bytes as its "after" and ends the operation. A file holding its
    // "before" bytes was not changed and leaves the record. False when the bytes could not be stored.
    bool finish(StoredOperation &operation);
    // Drops whole oldest operations beyond the limits, and redos a new operation has cut off, with the contents
    // only they used. Called as an operation begins.
    void enforceLimits();

    // The folder's listed operations, newest first.
    std::vector<StoredOperation *> listed(const std::filesystem::path &folder);
    // Puts the files of one operation to their state before it (back) or after it; nothing is written when
    // a file was changed outside and force is false.
    JournalResult move(StoredOperation &operation, bool back, bool force);
};

// Absolute and lexically normal: how the journal keeps folders and files, whatever the caller's working folder.
std::filesystem::path fullPath(const std::filesystem::path &path);
std::string utf8Of(const std::filesystem::path &path);
std::filesystem::path pathOfUtf8(const std::string &text);

} // namespace fleetwright
