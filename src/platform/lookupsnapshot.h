#pragma once

// The snapshot in which one operation's lookups take what they once saw of the file system for the truth,
// and what the lookups ask of the file system through it.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "platform/folderlisting.h"

namespace fleetwright::platform {

enum class LookupKind; // filelookup.h

// While one stands, the lookups of this thread take what they once saw of the file system for the truth: each
// folder is listed once and each path looked at once. It is meant for one operation over a tree that nothing
// else changes meanwhile, such as checking an aircraft folder, which asks about the same folders hundreds of
// times. What the operation itself makes or removes it names with forget; after anything that may have changed the
// disk (the user's events served), forgetAll. Snapshots nest, the outermost one holds what was seen. On
// Windows the system's own lookup still answers every wildcard lookup and resolve.
class LookupSnapshot
{
public:
    LookupSnapshot();
    ~LookupSnapshot();
    LookupSnapshot(const LookupSnapshot &) = delete;
    LookupSnapshot &operator=(const LookupSnapshot &) = delete;

    // The file at path (as resolve gives it) was made or removed: its folder is listed again, path looked at
    // again, and every path resolved anew.
    static void forget(const std::filesystem::path &path);
    static void forgetAll();
    // Everything seen inside folder, under any spelling of its path, is looked at again; what lies outside
    // it is kept. For a run over many folders side by side that holds one snapshot for the folders around
    // them, which it would otherwise list again for every one.
    static void forgetBelow(const std::filesystem::path &folder);
    // A number that names what the open snapshot has seen: it changes when a snapshot opens and with every
    // forget, and is 0 while none is open. Whoever keeps what it read of files for the length of a snapshot
    // keys it by this.
    static std::uint64_t generation();
};

// The names a wildcard lookup found, shared with the lookups that ask for them again.
using FoundNames = std::shared_ptr<const std::vector<std::u16string>>;

// What the lookups of one platform ask of the file system, answered from the open LookupSnapshot when there
// is one: folder listings and the status of paths. Without a snapshot every call goes to the file system.

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
FoundNames knownNames(const NativeText &wildcardPath, LookupKind kind);
void keepNames(const NativeText &wildcardPath, LookupKind kind, const FoundNames &names);
FoundNames knownNames(const std::u16string &wildcardPath, LookupKind kind);
void keepNames(const std::u16string &wildcardPath, LookupKind kind, const FoundNames &names);
// What canonicalOf found for a path, kept like resolve's answers; nothing when not known.
const std::optional<std::filesystem::path> *knownCanonical(const NativeText &path);
void keepCanonical(const NativeText &path, std::optional<std::filesystem::path> canonical);

} // namespace fleetwright::platform
