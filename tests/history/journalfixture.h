#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "common/tempdir.h"
#include "history/journal.h"

namespace fleetwright::test {

// Every file under a folder: its bytes and whether it is read-only, by path relative to the folder.
struct FileState
{
    std::string bytes;
    bool readOnly = false;
    bool operator==(const FileState &) const = default;
};
using FolderSnapshot = std::map<std::string, FileState>;
FolderSnapshot snapshot(const std::filesystem::path &folder);

// One change an operation makes, as the engine's writers make it: the journal is told first, then the file is
// rewritten through the atomic replacement (or removed). A read-only file refuses the rewrite unless the
// change first makes it writable.
struct Change
{
    std::string file;                 // relative to the folder
    std::optional<std::string> bytes; // nothing: the file is removed
    bool makeWritable = false;
};

void perform(Journal &journal, const std::filesystem::path &folder, const std::u16string &name,
             const std::vector<Change> &changes);

// A scratch journal and an aircraft folder beside it.
struct JournalScene
{
    TempDir dir;
    std::filesystem::path folder = dir / "Aircraft" / "Cessna";
    std::filesystem::path location = dir / "history";

    JournalScene() { std::filesystem::create_directories(folder); }
    std::filesystem::path operator/(const std::string &file) const { return folder / file; }
};

} // namespace fleetwright::test
