#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace fleetwright::test {

// Aircraft folders nobody should have to meet, made by code: garbage, huge files, broken encodings, binary
// files that lie about their sizes, links that loop, names the code page lacks. Each stands as library/<case>;
// beside the hostile part it holds a usable model, texture and air file, so operations get as far as it.
struct HostileCase
{
    std::string name;
    std::function<void(const std::filesystem::path &folder)> make;
    bool needsSymbolicLinks = false; // Windows gives links to administrators alone
    bool needsLongPaths = false;     // deeper than Windows' 260 characters allow
};

const std::vector<HostileCase> &hostileCases();

// A copy of the case folder, links as links, as target/library/<case>; the case is made once per program.
std::filesystem::path copyCase(const std::string &name, const std::filesystem::path &target);

// Every entry below a folder: a file's size, hash and write permission, a folder's mark, a link's target.
using FolderState = std::map<std::string, std::string>;
FolderState folderState(const std::filesystem::path &folder);

// Entries that differ, appeared or went, "/" between the parts of their relative paths.
std::vector<std::string> changedEntries(const FolderState &before, const FolderState &after);

// Ends the program naming the operation when it runs past the limit, so a hang fails instead of stalling.
class HangGuard
{
public:
    explicit HangGuard(std::string operation, std::chrono::seconds limit = std::chrono::seconds(120));
    ~HangGuard();

private:
    std::mutex m_mutex;
    std::condition_variable m_done;
    bool m_finished = false;
    std::thread m_thread;
};

} // namespace fleetwright::test
