#pragma once

// What the lookups of one platform ask of the file system, answered from the open LookupSnapshot when there
// is one: folder listings and the status of paths. Without a snapshot every call goes to the file system.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <vector>

#include "platform/filelookup.h"

namespace fleetwright::platform::lookupcache {

using NativeText = std::filesystem::path::string_type;
using Names = std::shared_ptr<const std::vector<std::u16string>>;

struct ListedEntry
{
    NativeText name;
    std::optional<std::u16string> wide; // nothing for a name that is no valid UTF-8
    // What the listing told of the entry: regular, directory or symlink; none when it told nothing.
    std::filesystem::file_type type = std::filesystem::file_type::none;
};

struct Listing
{
    bool opened = false; // the folder could be opened for listing
    bool kept = false;   // a snapshot holds it
    std::vector<ListedEntry> entries;
    // The entries with a wide name, in listing order (listingOrderLess).
    std::vector<std::uint32_t> sorted;

    // The entry named name; nothing when the listing lacks it.
    const ListedEntry *named(const NativeText &name) const;
    // The entries whose wide name is wide but for case, in listing order.
    std::vector<std::uint32_t> alike(std::u16string_view wide) const;

    // For a large listing that a snapshot holds, where each name stands and the entries by their upper-case
    // wide name in listing order; a small one is searched.
    bool mapped = false;
    std::unordered_map<NativeText, std::uint32_t> byName;
    std::unordered_map<std::u16string, std::vector<std::uint32_t>> byFoldedName;
};

// The entries of folder ("." for an empty path) up to the first error, in the order the system lists them but
// for names that a snapshot mended since.
std::shared_ptr<const Listing> listing(const NativeText &folder);

// std::filesystem::status(path, error), links followed.
std::filesystem::file_status status(const NativeText &path, std::error_code &error);

// status of an entry of listing(folder), without making its path when the listing told its kind.
std::filesystem::file_status statusOf(const NativeText &folder, const ListedEntry &entry, std::error_code &error);

// Whether path can be looked at and is no link.
bool notLink(const NativeText &path);

// What resolve answered for a path, and the names of a wildcard lookup, while the snapshot stands, by the
// path's native text or by the text the caller gave; nothing when not known (or no snapshot is open). keep
// does nothing without a snapshot. A known answer stays put until the snapshot forgets something.
const std::optional<std::filesystem::path> *knownResolve(const NativeText &path);
const std::optional<std::filesystem::path> *keepResolve(const NativeText &path,
                                                        std::optional<std::filesystem::path> resolved);
const std::optional<std::filesystem::path> *knownResolve(const std::u16string &path);
const std::optional<std::filesystem::path> *keepResolve(const std::u16string &path,
                                                        std::optional<std::filesystem::path> resolved);
// Whether a walk to a folder could have taken another turn, by the folder's native text: kept like resolve's answers.
std::optional<bool> knownTurns(const NativeText &folder);
void keepTurns(const NativeText &folder, bool turns);
Names knownNames(const NativeText &wildcardPath, LookupKind kind);
void keepNames(const NativeText &wildcardPath, LookupKind kind, const Names &names);
Names knownNames(const std::u16string &wildcardPath, LookupKind kind);
void keepNames(const std::u16string &wildcardPath, LookupKind kind, const Names &names);

} // namespace fleetwright::platform::lookupcache
