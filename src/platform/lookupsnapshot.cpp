#include "platform/lookupsnapshot.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace fleetwright::platform {

namespace {

// What the open snapshot has seen, by the path's text as it was asked for.
// The paths that one operation asks about share a long start and differ towards their end: their hash is
// taken of the length and the last characters alone.
struct PathTextHash
{
    template<typename Text> std::size_t operator()(const Text &text) const
    {
        constexpr std::size_t TAIL = 24;
        const std::basic_string_view<typename Text::value_type> view(text);
        const auto tail = view.substr(view.size() > TAIL ? view.size() - TAIL : 0);
        return std::hash<std::basic_string_view<typename Text::value_type>>()(tail)
            ^ (view.size() * 0x9E3779B97F4A7C15ull);
    }
};
template<typename Value> using ByNative = std::unordered_map<NativeText, Value, PathTextHash>;
// The standard comparison of wide texts goes character by character; the keys here are long paths.
struct SameWideText
{
    bool operator()(const std::u16string &a, const std::u16string &b) const
    {
        return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0;
    }
};
template<typename Value> using ByWide = std::unordered_map<std::u16string, Value, PathTextHash, SameWideText>;
using Resolved = std::optional<std::filesystem::path>;

struct Snapshot
{
    int depth = 0;
    std::uint64_t generation = 0;
    ByNative<std::shared_ptr<const Listing>> listings;
    ByNative<std::pair<std::filesystem::file_status, std::error_code>> statuses;
    ByNative<bool> notLinks;
    ByNative<Resolved> resolves;
    ByWide<Resolved> wideResolves;
    ByNative<bool> turns;
    // canonicalOf's answers: the canonical form, or nothing where there is none.
    ByNative<std::optional<std::filesystem::path>> canonicals;
    std::array<ByNative<FoundNames>, 3> names;
    std::array<ByWide<FoundNames>, 3> wideNames;

    // Which spelling a path resolves to, and what a wildcard finds, may hang on any entry.
    void clearAnswers()
    {
        resolves.clear();
        wideResolves.clear();
        turns.clear();
        for (auto &byKind : names)
            byKind.clear();
        for (auto &byKind : wideNames)
            byKind.clear();
    }
};

thread_local Snapshot *openSnapshot = nullptr;
thread_local std::uint64_t lastGeneration = 0;

#ifndef _WIN32
// The folder and name parts of a path's text, when the path names an entry of a folder as it would be
// listed: no trailing separator and no "." or "..".
std::optional<std::pair<NativeText, NativeText>> splitEntry(const NativeText &path)
{
    std::size_t at = path.size();
    while (at > 0 && !isSeparator(path[at - 1]))
        --at;
    NativeText name = path.substr(at);
    if (name.empty() || name == NativeText(1, '.') || name == NativeText(2, '.'))
        return std::nullopt;
    if (at == 0)
        return std::pair(NativeText(1, '.'), std::move(name));
    std::size_t end = at;
    while (end > 1 && isSeparator(path[end - 1]) && isSeparator(path[end - 2]))
        --end;
    if (end > 1)
        --end; // the separator in front of the name, unless it is the root
    return std::pair(path.substr(0, end), std::move(name));
}
#endif

// What a listing that the snapshot holds tells of path: its entry, or that it is not there. Nothing when no
// such listing is known. Names are compared as they are on this system, which tells case apart only off
// Windows: there the listing cannot say that a name is missing.
std::optional<const ListedEntry *> listedEntry(const NativeText &path)
{
#ifndef _WIN32
    const auto parts = splitEntry(path);
    if (!parts)
        return std::nullopt;
    const auto folder = openSnapshot->listings.find(parts->first);
    if (folder == openSnapshot->listings.end() || !folder->second->opened)
        return std::nullopt;
    return folder->second->named(parts->second);
#else
    (void)path;
    return std::nullopt;
#endif
}

// Whether a path's text names its place one way only: no "." or ".." parts and no doubled separators, so
// that lexically_normal would leave it as it is (but for a trailing separator).
bool plainText(const NativeText &text)
{
    for (std::size_t start = 0; start <= text.size();) {
        std::size_t end = start;
        while (end < text.size() && !isSeparator(text[end]))
            ++end;
        const std::size_t length = end - start;
        if (end < text.size() && length == 0 && start != 0)
            return false;
        if ((length == 1 && text[start] == '.') || (length == 2 && text[start] == '.' && text[start + 1] == '.'))
            return false;
        start = end + 1;
    }
    return true;
}

// Whether key is the text of place (lexically normal, with no trailing separator), however it is spelled.
bool samePlace(const NativeText &key, const std::filesystem::path &place)
{
    // The last name tells most texts apart without a look at the rest.
    std::size_t end = key.size();
    while (end > 1 && isSeparator(key[end - 1]))
        --end;
    std::size_t start = end;
    while (start > 0 && !isSeparator(key[start - 1]))
        --start;
    const auto last = std::basic_string_view<NativeText::value_type>(key).substr(start, end - start);
    const bool dots = last.size() <= 2 && last.find_first_not_of('.') == last.npos;
    const auto &placeText = place.native();
    if (!dots
        && (placeText.size() < last.size()
            || placeText.compare(placeText.size() - last.size(), last.size(), last) != 0))
        return false;
    if (plainText(key)) {
        std::size_t size = key.size();
        if (size > 1 && isSeparator(key[size - 1]))
            --size;
        return std::basic_string_view(key.data(), size) == place.native();
    }
    std::filesystem::path normal = std::filesystem::path(key).lexically_normal();
    if (!normal.has_filename() && normal.has_relative_path())
        normal = normal.parent_path();
    return normal == place;
}

} // namespace

std::shared_ptr<const Listing> listing(const NativeText &folder)
{
    if (!openSnapshot)
        return listFolder(folder, false);
    if (folder.empty())
        return listing(NativeText(1, '.'));
    if (const auto known = openSnapshot->listings.find(folder); known != openSnapshot->listings.end())
        return known->second;
    return openSnapshot->listings.emplace(folder, listFolder(folder, true)).first->second;
}

std::filesystem::file_status status(const NativeText &path, std::error_code &error)
{
    if (!openSnapshot)
        return std::filesystem::status(path, error);
    auto [at, added] = openSnapshot->statuses.try_emplace(path);
    if (added) {
        const auto listed = listedEntry(path);
        if (listed && !*listed) {
            // A name that the listing of its folder does not hold is not there.
            at->second.first = std::filesystem::file_status(std::filesystem::file_type::not_found);
            at->second.second = std::make_error_code(std::errc::no_such_file_or_directory);
        } else if (listed && (*listed)->type != std::filesystem::file_type::none
                   && (*listed)->type != std::filesystem::file_type::symlink) {
            at->second.first = std::filesystem::file_status((*listed)->type);
        } else {
            at->second.first = std::filesystem::status(path, at->second.second);
        }
    }
    error = at->second.second;
    return at->second.first;
}

std::filesystem::file_status statusOf(const NativeText &folder, const ListedEntry &entry, std::error_code &error)
{
    if (entry.type == std::filesystem::file_type::regular || entry.type == std::filesystem::file_type::directory) {
        error.clear();
        return std::filesystem::file_status(entry.type);
    }
    NativeText path = folder.empty() ? NativeText(1, '.') : folder;
    if (!isSeparator(path.back()))
        path += std::filesystem::path::preferred_separator;
    path += entry.name;
    return status(path, error);
}

bool notLink(const NativeText &path)
{
    const auto lookAt = [&path] {
        std::error_code error;
        const std::filesystem::file_status status = std::filesystem::symlink_status(path, error);
        return !error && !std::filesystem::is_symlink(status);
    };
    if (!openSnapshot)
        return lookAt();
    auto [at, added] = openSnapshot->notLinks.try_emplace(path);
    if (added) {
        const auto listed = listedEntry(path);
        if (listed && *listed && (*listed)->type != std::filesystem::file_type::none)
            at->second = (*listed)->type != std::filesystem::file_type::symlink;
        else
            at->second = lookAt();
    }
    return at->second;
}

namespace {

template<typename Map> const Resolved *known(const Map &map, const typename Map::key_type &path)
{
    const auto at = map.find(path);
    return at == map.end() ? nullptr : &at->second;
}

template<typename Map> const Resolved *keep(Map &map, const typename Map::key_type &path, Resolved resolved)
{
    return &map.insert_or_assign(path, std::move(resolved)).first->second;
}

std::size_t kindIndex(LookupKind kind)
{
    return static_cast<std::size_t>(kind);
}

} // namespace

const Resolved *knownResolve(const NativeText &path)
{
    return openSnapshot ? known(openSnapshot->resolves, path) : nullptr;
}

const Resolved *keepResolve(const NativeText &path, Resolved resolved)
{
    return openSnapshot ? keep(openSnapshot->resolves, path, std::move(resolved)) : nullptr;
}

const Resolved *knownResolve(const std::u16string &path)
{
    return openSnapshot ? known(openSnapshot->wideResolves, path) : nullptr;
}

const Resolved *keepResolve(const std::u16string &path, Resolved resolved)
{
    return openSnapshot ? keep(openSnapshot->wideResolves, path, std::move(resolved)) : nullptr;
}

std::optional<bool> knownTurns(const NativeText &folder)
{
    if (!openSnapshot)
        return std::nullopt;
    const auto at = openSnapshot->turns.find(folder);
    return at == openSnapshot->turns.end() ? std::nullopt : std::optional<bool>(at->second);
}

void keepTurns(const NativeText &folder, bool turns)
{
    if (openSnapshot)
        openSnapshot->turns.insert_or_assign(folder, turns);
}

FoundNames knownNames(const NativeText &wildcardPath, LookupKind kind)
{
    if (!openSnapshot)
        return nullptr;
    const auto &map = openSnapshot->names[kindIndex(kind)];
    const auto at = map.find(wildcardPath);
    return at == map.end() ? nullptr : at->second;
}

void keepNames(const NativeText &wildcardPath, LookupKind kind, const FoundNames &names)
{
    if (openSnapshot)
        openSnapshot->names[kindIndex(kind)].insert_or_assign(wildcardPath, names);
}

FoundNames knownNames(const std::u16string &wildcardPath, LookupKind kind)
{
    if (!openSnapshot)
        return nullptr;
    const auto &map = openSnapshot->wideNames[kindIndex(kind)];
    const auto at = map.find(wildcardPath);
    return at == map.end() ? nullptr : at->second;
}

void keepNames(const std::u16string &wildcardPath, LookupKind kind, const FoundNames &names)
{
    if (openSnapshot)
        openSnapshot->wideNames[kindIndex(kind)].insert_or_assign(wildcardPath, names);
}

const std::optional<std::filesystem::path> *knownCanonical(const NativeText &path)
{
    return openSnapshot ? known(openSnapshot->canonicals, path) : nullptr;
}

void keepCanonical(const NativeText &path, std::optional<std::filesystem::path> canonical)
{
    if (openSnapshot)
        openSnapshot->canonicals.emplace(path, std::move(canonical));
}

LookupSnapshot::LookupSnapshot()
{
    if (!openSnapshot) {
        openSnapshot = new Snapshot;
        openSnapshot->generation = ++lastGeneration;
    }
    ++openSnapshot->depth;
}

LookupSnapshot::~LookupSnapshot()
{
    if (--openSnapshot->depth == 0) {
        delete openSnapshot;
        openSnapshot = nullptr;
    }
}

void LookupSnapshot::forget(const std::filesystem::path &path)
{
    if (!openSnapshot)
        return;
    openSnapshot->generation = ++lastGeneration;
    // The same place may have been asked for in other forms ("a//b", "a/./b"); those go as well.
    const std::filesystem::path removed = path.lexically_normal();
    const std::filesystem::path folder = removed.parent_path();
    // Only texts that hold the last name can stand for the place: the others are passed over unparsed.
    const NativeText folderName = folder.filename().native();
    const NativeText removedName = removed.filename().native();
    for (auto at = openSnapshot->listings.begin(); at != openSnapshot->listings.end();) {
        if (at->first.find(folderName) == NativeText::npos || !samePlace(at->first, folder)) {
            ++at;
        } else if (!at->second->opened || !at->second->kept) {
            at = openSnapshot->listings.erase(at);
        } else {
            // A folder such as the temporary one holds many entries: the one name is mended in place.
            mendListing(at->second, removedName, path);
            ++at;
        }
    }
    const auto isRemoved = [&](const auto &entry) {
        return entry.first.find(removedName) != NativeText::npos && samePlace(entry.first, removed);
    };
    std::erase_if(openSnapshot->statuses, isRemoved);
    std::erase_if(openSnapshot->notLinks, isRemoved);
    // A canonical form may run through the name only where the name is in the text.
    std::erase_if(openSnapshot->canonicals,
                  [&](const auto &entry) { return entry.first.find(removedName) != NativeText::npos; });
    openSnapshot->clearAnswers();
}

void LookupSnapshot::forgetAll()
{
    if (!openSnapshot)
        return;
    openSnapshot->generation = ++lastGeneration;
    openSnapshot->listings.clear();
    openSnapshot->statuses.clear();
    openSnapshot->notLinks.clear();
    openSnapshot->canonicals.clear();
    openSnapshot->clearAnswers();
}

void LookupSnapshot::forgetBelow(const std::filesystem::path &folder)
{
    if (!openSnapshot)
        return;
    openSnapshot->generation = ++lastGeneration;
    NativeText prefix = folder.lexically_normal().native();
    while (prefix.size() > 1 && isSeparator(prefix.back()))
        prefix.pop_back();
    std::optional<std::u16string> widePrefix = wideOf(prefix);
    // Keys hold the path as it was asked for, so any spelling of the folder counts, with either separator in
    // the engine's text.
    const auto inside = [](const auto &key, const auto &start, auto separator) {
        if (key.size() < start.size() || (key.size() > start.size() && !separator(key[start.size()])))
            return false;
        if (std::equal(start.begin(), start.end(), key.begin()))
            return true;
        const auto fold = [](auto ch) { return ch >= 'a' && ch <= 'z' ? ch - ('a' - 'A') : ch; };
        for (std::size_t i = 0; i < start.size(); ++i) {
            if (fold(key[i]) != fold(start[i]) && !(separator(key[i]) && separator(start[i])))
                return false;
        }
        return true;
    };
    const auto nativeSeparator = [](NativeText::value_type ch) { return isSeparator(ch); };
    const auto wideSeparator = [](char16_t ch) {
        return ch == u'/' || ch == u'\\' || ch == static_cast<char16_t>(std::filesystem::path::preferred_separator);
    };
    const auto insideNative = [&](const auto &entry) { return inside(entry.first, prefix, nativeSeparator); };
    std::erase_if(openSnapshot->listings, insideNative);
    std::erase_if(openSnapshot->statuses, insideNative);
    std::erase_if(openSnapshot->notLinks, insideNative);
    std::erase_if(openSnapshot->resolves, insideNative);
    std::erase_if(openSnapshot->turns, insideNative);
    std::erase_if(openSnapshot->canonicals, insideNative);
    for (auto &byKind : openSnapshot->names)
        std::erase_if(byKind, insideNative);
    if (!widePrefix) {
        openSnapshot->wideResolves.clear();
        for (auto &byKind : openSnapshot->wideNames)
            byKind.clear();
        return;
    }
    const auto insideWide = [&](const auto &entry) { return inside(entry.first, *widePrefix, wideSeparator); };
    std::erase_if(openSnapshot->wideResolves, insideWide);
    for (auto &byKind : openSnapshot->wideNames)
        std::erase_if(byKind, insideWide);
}

std::uint64_t LookupSnapshot::generation()
{
    return openSnapshot ? openSnapshot->generation : 0;
}

} // namespace fleetwright::platform
