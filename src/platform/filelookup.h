#pragma once

// Lookups of files and folders as Windows finds them, and the canonical form of paths: what the engine
// includes for anything it looks for on disk.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/lookupsnapshot.h"
#include "platform/namefolding.h"
#include "platform/wildcard.h"

namespace fleetwright::platform {

// Which entries of a folder a lookup returns. Links count as what they point to.
enum class LookupKind
{
    Files,
    FilesAndFolders,
    Folders,
};

// A wildcard lookup in the first-and-next form, as Windows does it: the folder part of the path is found
// without regard to case, the last component is the pattern, and the names come back without their folder,
// in the platform's listing order ("." and ".." never). On Windows this is the system's own lookup; elsewhere
// the pattern rules of matchesWildcard apply and names are listed in NTFS order (see listingOrderLess).
//
//     FileLookup textures(folderPrefix + u"texture.*", LookupKind::FilesAndFolders);
//     while (auto name = textures.next()) ...   // "texture", "Texture.KLM", "texture.txt"
//
// All names are read when the lookup is made; a folder that does not exist gives no names.
class FileLookup
{
public:
    explicit FileLookup(const std::filesystem::path &wildcardPath, LookupKind kind = LookupKind::Files);
    // The same for a path in the engine's text; within a snapshot the text itself is remembered, which spares
    // making a path of it when it is asked again.
    explicit FileLookup(const std::u16string &wildcardPath, LookupKind kind = LookupKind::Files);

    // The next name, the first one on the first call; nothing once all are taken.
    std::optional<std::u16string> next();
    // Every name of the lookup, whatever next() has handed out.
    const std::vector<std::u16string> &names() const;

    // The existing path whose every component matches path's without regard to case, with Windows' rules
    // for components: trailing points and blanks are dropped ("texture." is "texture"). Where several names
    // differ only in case, the exact spelling wins, else the first in listing order; a spelling that leads
    // nowhere further down gives way to the next. Nothing when no such path exists. On Windows the file system ignores
    // case itself: the path as given, if it exists.
    static std::optional<std::filesystem::path> resolve(const std::filesystem::path &path);
    static std::optional<std::filesystem::path> resolve(const std::u16string &path);
    // The file (not a folder) at path as resolve finds it; nothing for an empty path or no such file.
    static std::optional<std::filesystem::path> findFile(const std::u16string &path);
    // Whether resolve finds an entry of the given kind.
    static bool exists(const std::filesystem::path &path, LookupKind kind = LookupKind::Files);
    static bool exists(const std::u16string &path, LookupKind kind = LookupKind::Files);
    // Whether the folder at folder, a path as resolve gives it, can be opened for listing.
    static bool canList(const std::filesystem::path &folder);
    // The same for a folder in the engine's text, found as resolve finds it; false when it finds none.
    static bool canList(const std::u16string &folder);
    // Whether the entry at path (taken as it stands) can be looked at and is no symbolic link.
    static bool isNotLink(const std::filesystem::path &path);

private:
    std::shared_ptr<const std::vector<std::u16string>> m_names;
    std::size_t m_next = 0;
};

// The canonical form of path (links followed, no "." or ".." parts), or path itself when it has none.
std::filesystem::path canonicalOf(const std::filesystem::path &path);
// canonicalOf(child) for a child found in parent, whose canonical form is parentCanonical: a folder that is
// no link lies where its parent does, which spares asking the system for every folder of a walk.
std::filesystem::path canonicalBelow(const std::filesystem::path &parent, const std::filesystem::path &parentCanonical,
                                     const std::filesystem::path &child);

// std::filesystem::path(text) and path.u16string(), without the general conversion for ASCII, which most
// paths are. Both throw what those throw.
std::filesystem::path pathOf(std::u16string_view text);
std::u16string textOf(const std::filesystem::path &path);

} // namespace fleetwright::platform
