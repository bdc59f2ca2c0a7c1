#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace fleetwright::test {

// Aircraft folders that nobody should have to meet, made by the tests themselves: garbage, huge files, broken
// encodings, binary files that lie about their sizes, links that loop, names the code page lacks.
//
//     library/                  the folder that holds the aircraft folders (where aliases start)
//       <case>/                 one aircraft folder per case, aircraft.cfg and what stands beside it
//
// Every case folder also holds a usable model folder, texture folder and air file where its subject allows,
// so that the operations get past their first step and meet the hostile part.
struct HostileCase
{
    std::string name;
    std::function<void(const std::filesystem::path &folder)> make;
    bool needsSymbolicLinks = false; // POSIX only: Windows gives links to administrators alone
    bool needsLongPaths = false;     // deeper than Windows' 260 characters allow
};

// Every case, in a fixed order; the names are fit for test names.
const std::vector<HostileCase> &hostileCases();

// Where the case folders are made, each once per test program (the 20 MB line and the 100,000 sections take a
// moment); callers work on copies.
const std::filesystem::path &hostileLibrary();

// Copies the case folder, links as links, into library/<case> below target; returns the copy. The case is
// made first when this program has not made it yet.
std::filesystem::path copyCase(const std::string &name, const std::filesystem::path &target);

// What every entry below a folder holds: a file's size and a hash of its bytes and write permission, a
// folder's mark, a link's target. Two equal states mean no byte changed.
using FolderState = std::map<std::string, std::string>;
FolderState folderState(const std::filesystem::path &folder);

// The entries whose state differs between before and after (added and removed included), with "/" between
// the parts of their paths relative to the folder.
std::vector<std::string> changedEntries(const FolderState &before, const FolderState &after);

// Fails loudly when the operation under way runs longer than the limit: it names the operation and ends the
// test program, so that a hang shows as a failure and not as a stuck test run. Not a speed assertion: the
// limit is far beyond any honest run.
class HangGuard
{
public:
    explicit HangGuard(std::string operation, std::chrono::seconds limit = std::chrono::seconds(120));
    ~HangGuard();
    HangGuard(const HangGuard &) = delete;
    HangGuard &operator=(const HangGuard &) = delete;

private:
    std::mutex m_mutex;
    std::condition_variable m_done;
    bool m_finished = false;
    std::thread m_thread;
};

} // namespace fleetwright::test
