#pragma once

// What the lookups of one platform ask of the file system, answered from the open LookupSnapshot when there
// is one: folder listings and the status of paths. Without a snapshot every call goes to the file system.

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <unordered_set>
#include <vector>

#include "platform/filelookup.h"

namespace fleetwright::platform::lookupcache {

struct ListedEntry
{
    std::filesystem::path name;
    std::optional<std::u16string> wide; // nothing for a name that is no valid UTF-8
};

struct Listing
{
    bool opened = false; // the folder could be opened for listing
    std::vector<ListedEntry> entries;
    // The entries' names, kept only for listings that a snapshot holds.
    std::unordered_set<std::filesystem::path::string_type> names;
};

// The entries of folder ("." for an empty path) in the order the system lists them, up to the first error.
std::shared_ptr<const Listing> listing(const std::filesystem::path &folder);

// std::filesystem::status(path, error), links followed.
std::filesystem::file_status status(const std::filesystem::path &path, std::error_code &error);

// status(folder / name) for a plain name of folder's listing, without making the path unless it is looked at.
std::filesystem::file_status statusIn(const std::filesystem::path &folder, const std::filesystem::path &name,
                                      std::error_code &error);

// Whether path can be looked at and is no link.
bool notLink(const std::filesystem::path &path);

// What resolve answered for path, and the names of a wildcard lookup, while the snapshot stands; nothing
// when not known (or no snapshot is open). keep does nothing without a snapshot.
std::optional<std::optional<std::filesystem::path>> knownResolve(const std::filesystem::path &path);
void keepResolve(const std::filesystem::path &path, const std::optional<std::filesystem::path> &resolved);
const std::vector<std::u16string> *knownNames(const std::filesystem::path &wildcardPath, LookupKind kind);
void keepNames(const std::filesystem::path &wildcardPath, LookupKind kind, const std::vector<std::u16string> &names);

} // namespace fleetwright::platform::lookupcache
