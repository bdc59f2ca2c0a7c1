#pragma once

// A folder's entries as the system lists them, with the indexes by which lookups search them; what a
// snapshot holds of a folder, mended in place when the operation itself changes it.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace fleetwright::platform {

using NativeText = std::filesystem::path::string_type;

constexpr bool isSeparator(NativeText::value_type ch)
{
    return ch == std::filesystem::path::preferred_separator || ch == '/';
}

// A listed name in the engine's text; nothing for a name that is no valid UTF-8.
std::optional<std::u16string> wideOf(const NativeText &name);

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

// The entries of folder ("." for an empty path) up to the first error, in the order the system lists them.
// kept says that a snapshot will hold the listing.
std::shared_ptr<const Listing> listFolder(const NativeText &folder, bool kept);

// The listing with the entry name as the system has it now: gone, or there with its kind. Entries may change
// places; the indexes follow.
void mendListing(std::shared_ptr<const Listing> &held, const NativeText &name, const std::filesystem::path &path);

} // namespace fleetwright::platform
