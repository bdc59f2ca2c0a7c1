// The parts of FileLookup that are the same on every platform: the wildcard rules, case folding, order.
#include "platform/filelookup.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/filelookupcache.h"

#ifndef _WIN32
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace fleetwright::platform {

// The pattern as Windows hands it to the file system: "?" is always the DOS question mark, "*" before a
// point the DOS star, and a point before "*", "?" or the end the DOS point.
enum class WildcardToken
{
    Literal,
    Star,
    DosStar,
    DosQuestion,
    DosDot,
};

struct PatternItem
{
    WildcardToken token;
    char16_t ch;
};

namespace {

void translate(std::u16string_view pattern, std::vector<PatternItem> &items)
{
    items.clear();
    items.reserve(pattern.size());
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char16_t ch = pattern[i];
        const char16_t following = i + 1 < pattern.size() ? pattern[i + 1] : u'\0';
        if (ch == u'?')
            items.push_back({WildcardToken::DosQuestion, ch});
        else if (ch == u'*')
            items.push_back({following == u'.' ? WildcardToken::DosStar : WildcardToken::Star, ch});
        else if (ch == u'.' && (following == u'\0' || following == u'*' || following == u'?'))
            items.push_back({WildcardToken::DosDot, ch});
        else
            items.push_back({WildcardToken::Literal, foldNameChar(ch)});
    }
}

class Matcher
{
public:
    // memo is scratch space that a caller matching many names may hand in again and again.
    Matcher(const std::vector<PatternItem> &items, std::u16string_view name, std::vector<signed char> &memo)
        : m_items(items)
        , m_name(name)
        , m_lastDot(name.rfind(u'.'))
        , m_memo(memo)
    {
        m_memo.assign((m_items.size() + 1) * (name.size() + 1), UNKNOWN);
    }

    bool matches() { return matchFrom(0, 0); }

private:
    static constexpr signed char UNKNOWN = -1;

    bool matchFrom(std::size_t item, std::size_t pos)
    {
        signed char &memo = m_memo[item * (m_name.size() + 1) + pos];
        if (memo == UNKNOWN)
            memo = compute(item, pos) ? 1 : 0;
        return memo == 1;
    }

    bool compute(std::size_t item, std::size_t pos)
    {
        const std::size_t size = m_name.size();
        if (item == m_items.size())
            return pos == size;
        const PatternItem &current = m_items[item];
        const bool atEnd = pos == size;
        switch (current.token) {
        case WildcardToken::Literal:
            return !atEnd && foldNameChar(m_name[pos]) == current.ch && matchFrom(item + 1, pos + 1);
        case WildcardToken::Star:
            for (std::size_t end = pos; end <= size; ++end) {
                if (matchFrom(item + 1, end))
                    return true;
            }
            return false;
        case WildcardToken::DosStar: {
            // Stops in front of the name's last point while one lies ahead.
            const std::size_t limit = m_lastDot != std::u16string_view::npos && m_lastDot >= pos ? m_lastDot : size;
            for (std::size_t end = pos; end <= limit; ++end) {
                if (matchFrom(item + 1, end))
                    return true;
            }
            return false;
        }
        case WildcardToken::DosQuestion:
            if (atEnd || m_name[pos] == u'.')
                return matchFrom(item + 1, pos);
            return matchFrom(item + 1, pos + 1);
        case WildcardToken::DosDot:
            if (atEnd)
                return matchFrom(item + 1, pos);
            return m_name[pos] == u'.' && matchFrom(item + 1, pos + 1);
        }
        return false;
    }

    const std::vector<PatternItem> &m_items;
    std::u16string_view m_name;
    std::size_t m_lastDot;
    std::vector<signed char> &m_memo;
};

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
template<typename Value> using ByNative = std::unordered_map<lookupcache::NativeText, Value, PathTextHash>;
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
    ByNative<std::shared_ptr<const lookupcache::Listing>> listings;
    ByNative<std::pair<std::filesystem::file_status, std::error_code>> statuses;
    ByNative<bool> notLinks;
    ByNative<Resolved> resolves;
    ByWide<Resolved> wideResolves;
    ByNative<bool> turns;
    // canonicalOf's answers: the canonical form, or nothing where there is none.
    ByNative<std::optional<std::filesystem::path>> canonicals;
    std::array<ByNative<lookupcache::Names>, 3> names;
    std::array<ByWide<lookupcache::Names>, 3> wideNames;

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

constexpr bool isSeparator(lookupcache::NativeText::value_type ch)
{
    return ch == std::filesystem::path::preferred_separator || ch == '/';
}

std::optional<std::u16string> wideOf(const lookupcache::NativeText &name)
{
    if (std::all_of(name.begin(), name.end(), [](auto ch) { return static_cast<std::uint32_t>(ch) < 0x80; }))
        return std::u16string(name.begin(), name.end());
    try {
        return std::filesystem::path(name).u16string();
    } catch (const std::system_error &) {
        return std::nullopt;
    }
}

#ifndef _WIN32
std::filesystem::file_type typeOf(unsigned char type)
{
    switch (type) {
    case DT_REG:
        return std::filesystem::file_type::regular;
    case DT_DIR:
        return std::filesystem::file_type::directory;
    case DT_LNK:
        return std::filesystem::file_type::symlink;
    default:
        return std::filesystem::file_type::none; // the system did not say: asked when it matters
    }
}
#endif

constexpr std::size_t MAPPED_FROM = 16;

std::shared_ptr<const lookupcache::Listing> listFolder(const lookupcache::NativeText &folder, bool kept)
{
    auto listed = std::make_shared<lookupcache::Listing>();
    const lookupcache::NativeText &listedFolder = folder.empty() ? lookupcache::NativeText(1, '.') : folder;
#ifndef _WIN32
    // The names and kinds come straight from the system: a path object per entry costs more than the listing.
    const auto add = [&](std::string_view name, unsigned char type) {
        if (name == "." || name == "..")
            return;
        lookupcache::ListedEntry &entry = listed->entries.emplace_back();
        entry.name = name;
        entry.wide = wideOf(entry.name);
        entry.type = typeOf(type);
    };
#ifdef __linux__
    // opendir takes a buffer of 32 KiB from the heap for every folder, and each such request makes the
    // allocator tidy up its small blocks first: one buffer serves every listing of the thread.
    const int fd = ::open(listedFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    listed->opened = fd >= 0;
    if (fd >= 0) {
        thread_local std::vector<std::uint64_t> buffer(4096);
        char *const bytes = reinterpret_cast<char *>(buffer.data());
        for (;;) {
            const ssize_t got = ::getdents64(fd, bytes, buffer.size() * sizeof(std::uint64_t));
            if (got <= 0)
                break; // the end, or the first error
            for (ssize_t at = 0; at < got;) {
                const auto *found = reinterpret_cast<const struct dirent64 *>(bytes + at);
                add(found->d_name, found->d_type);
                at += found->d_reclen;
            }
        }
        ::close(fd);
    }
#else
    DIR *dir = opendir(listedFolder.c_str());
    listed->opened = dir != nullptr;
    while (dir) {
        errno = 0;
        const dirent *found = readdir(dir);
        if (!found)
            break;
        add(found->d_name, found->d_type);
    }
    if (dir)
        closedir(dir);
#endif
#else
    std::error_code error;
    std::filesystem::directory_iterator it(listedFolder, error);
    listed->opened = !error;
    for (const std::filesystem::directory_iterator end; !error && it != end; it.increment(error)) {
        lookupcache::ListedEntry &entry = listed->entries.emplace_back();
        entry.name = it->path().filename().native();
        entry.wide = wideOf(entry.name);
    }
#endif
    for (std::uint32_t i = 0; i < listed->entries.size(); ++i) {
        if (listed->entries[i].wide)
            listed->sorted.push_back(i);
    }
    std::sort(listed->sorted.begin(), listed->sorted.end(), [&](std::uint32_t a, std::uint32_t b) {
        return listingOrderLess(*listed->entries[a].wide, *listed->entries[b].wide);
    });
    listed->kept = kept;
    // Maps pay off for folders that are asked about often and hold many entries, such as the one that holds
    // the aircraft; a texture folder's few entries are quicker searched.
    listed->mapped = kept && listed->entries.size() >= MAPPED_FROM;
    if (listed->mapped) {
        for (std::uint32_t i = 0; i < listed->entries.size(); ++i)
            listed->byName.try_emplace(listed->entries[i].name, i);
        for (const std::uint32_t i : listed->sorted)
            listed->byFoldedName[foldName(*listed->entries[i].wide)].push_back(i);
    }
    return listed;
}

#ifndef _WIN32
// The folder and name parts of a path's text, when the path names an entry of a folder as it would be
// listed: no trailing separator and no "." or "..".
std::optional<std::pair<lookupcache::NativeText, lookupcache::NativeText>>
splitEntry(const lookupcache::NativeText &path)
{
    std::size_t at = path.size();
    while (at > 0 && !isSeparator(path[at - 1]))
        --at;
    lookupcache::NativeText name = path.substr(at);
    if (name.empty() || name == lookupcache::NativeText(1, '.') || name == lookupcache::NativeText(2, '.'))
        return std::nullopt;
    if (at == 0)
        return std::pair(lookupcache::NativeText(1, '.'), std::move(name));
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
std::optional<const lookupcache::ListedEntry *> listedEntry(const lookupcache::NativeText &path)
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
bool plainText(const lookupcache::NativeText &text)
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
bool samePlace(const lookupcache::NativeText &key, const std::filesystem::path &place)
{
    // The last name tells most texts apart without a look at the rest.
    std::size_t end = key.size();
    while (end > 1 && isSeparator(key[end - 1]))
        --end;
    std::size_t start = end;
    while (start > 0 && !isSeparator(key[start - 1]))
        --start;
    const auto last = std::basic_string_view<lookupcache::NativeText::value_type>(key).substr(start, end - start);
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

// The listing with the entry name as the system has it now: gone, or there with its kind. Entries may change
// places; the indexes follow.
void mendListing(std::shared_ptr<const lookupcache::Listing> &held, const lookupcache::NativeText &name,
                 const std::filesystem::path &path)
{
    // Made by listFolder as a Listing that may change; a copy when someone else holds it meanwhile.
    std::shared_ptr<lookupcache::Listing> listed = held.use_count() == 1
        ? std::const_pointer_cast<lookupcache::Listing>(held)
        : std::make_shared<lookupcache::Listing>(*held);
    held = listed;
    auto &entries = listed->entries;
    const auto retarget = [&](std::uint32_t from, std::uint32_t to) {
        const lookupcache::ListedEntry &entry = entries[to];
        if (entry.wide)
            std::replace(listed->sorted.begin(), listed->sorted.end(), from, to);
        if (!listed->mapped)
            return;
        listed->byName[entry.name] = to;
        if (entry.wide) {
            auto &alike = listed->byFoldedName[foldName(*entry.wide)];
            std::replace(alike.begin(), alike.end(), from, to);
        }
    };
    if (const lookupcache::ListedEntry *gone = listed->named(name)) {
        const auto index = static_cast<std::uint32_t>(gone - entries.data());
        if (gone->wide)
            std::erase(listed->sorted, index);
        if (listed->mapped) {
            listed->byName.erase(name);
            if (gone->wide) {
                const auto alike = listed->byFoldedName.find(foldName(*gone->wide));
                std::erase(alike->second, index);
                if (alike->second.empty())
                    listed->byFoldedName.erase(alike);
            }
        }
        const auto last = static_cast<std::uint32_t>(entries.size() - 1);
        if (index != last) {
            entries[index] = std::move(entries[last]);
            retarget(last, index);
        }
        entries.pop_back();
    }
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::symlink_status(path, error);
    if (error || !std::filesystem::exists(status))
        return;
    const auto index = static_cast<std::uint32_t>(entries.size());
    lookupcache::ListedEntry &entry = entries.emplace_back();
    entry.name = name;
    entry.wide = wideOf(name);
    if (std::filesystem::is_symlink(status) || std::filesystem::is_directory(status)
        || std::filesystem::is_regular_file(status))
        entry.type = status.type();
    if (listed->mapped)
        listed->byName.try_emplace(name, index);
    if (!entry.wide)
        return;
    const auto before = [&](std::uint32_t a, std::uint32_t b) {
        return listingOrderLess(*entries[a].wide, *entries[b].wide);
    };
    listed->sorted.insert(std::upper_bound(listed->sorted.begin(), listed->sorted.end(), index, before), index);
    if (listed->mapped) {
        auto &alike = listed->byFoldedName[foldName(*entry.wide)];
        alike.insert(std::upper_bound(alike.begin(), alike.end(), index, before), index);
    }
}

} // namespace

namespace lookupcache {

const ListedEntry *Listing::named(const NativeText &name) const
{
    if (mapped) {
        const auto at = byName.find(name);
        return at == byName.end() ? nullptr : &entries[at->second];
    }
    for (const ListedEntry &entry : entries) {
        if (entry.name == name)
            return &entry;
    }
    return nullptr;
}

std::vector<std::uint32_t> Listing::alike(std::u16string_view wide) const
{
    if (mapped) {
        const auto at = byFoldedName.find(foldName(wide));
        return at == byFoldedName.end() ? std::vector<std::uint32_t>() : at->second;
    }
    std::vector<std::uint32_t> found;
    for (const std::uint32_t index : sorted) {
        if (sameNameIgnoringCase(*entries[index].wide, wide))
            found.push_back(index);
    }
    return found;
}

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

Names knownNames(const NativeText &wildcardPath, LookupKind kind)
{
    if (!openSnapshot)
        return nullptr;
    const auto &map = openSnapshot->names[kindIndex(kind)];
    const auto at = map.find(wildcardPath);
    return at == map.end() ? nullptr : at->second;
}

void keepNames(const NativeText &wildcardPath, LookupKind kind, const Names &names)
{
    if (openSnapshot)
        openSnapshot->names[kindIndex(kind)].insert_or_assign(wildcardPath, names);
}

Names knownNames(const std::u16string &wildcardPath, LookupKind kind)
{
    if (!openSnapshot)
        return nullptr;
    const auto &map = openSnapshot->wideNames[kindIndex(kind)];
    const auto at = map.find(wildcardPath);
    return at == map.end() ? nullptr : at->second;
}

void keepNames(const std::u16string &wildcardPath, LookupKind kind, const Names &names)
{
    if (openSnapshot)
        openSnapshot->wideNames[kindIndex(kind)].insert_or_assign(wildcardPath, names);
}

} // namespace lookupcache

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
    const lookupcache::NativeText folderName = folder.filename().native();
    const lookupcache::NativeText removedName = removed.filename().native();
    for (auto at = openSnapshot->listings.begin(); at != openSnapshot->listings.end();) {
        if (at->first.find(folderName) == lookupcache::NativeText::npos || !samePlace(at->first, folder)) {
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
        return entry.first.find(removedName) != lookupcache::NativeText::npos && samePlace(entry.first, removed);
    };
    std::erase_if(openSnapshot->statuses, isRemoved);
    std::erase_if(openSnapshot->notLinks, isRemoved);
    // A canonical form may run through the name only where the name is in the text.
    std::erase_if(openSnapshot->canonicals,
                  [&](const auto &entry) { return entry.first.find(removedName) != lookupcache::NativeText::npos; });
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
    lookupcache::NativeText prefix = folder.lexically_normal().native();
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
    const auto nativeSeparator = [](lookupcache::NativeText::value_type ch) { return isSeparator(ch); };
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

bool FileLookup::canList(const std::filesystem::path &folder)
{
    return lookupcache::listing(folder.native())->opened;
}

bool FileLookup::isNotLink(const std::filesystem::path &path)
{
    return lookupcache::notLink(path.native());
}

std::uint64_t LookupSnapshot::generation()
{
    return openSnapshot ? openSnapshot->generation : 0;
}

WildcardPattern::WildcardPattern(std::u16string_view pattern)
{
    // Only the general form keeps the translated pattern: the others read it once, from scratch space.
    thread_local std::vector<PatternItem> items;
    translate(pattern, items);
    const auto literal = [](const PatternItem &item) { return item.token == WildcardToken::Literal; };
    if (items.size() == 1 && items.front().token == WildcardToken::Star) {
        m_form = Form::Any;
    } else if (!items.empty() && std::all_of(items.begin(), items.end(), literal)) {
        m_form = Form::Exact;
    } else if (items.size() > 1
               && (items.front().token == WildcardToken::Star || items.front().token == WildcardToken::DosStar)
               && std::all_of(items.begin() + 1, items.end(), literal)) {
        // A star before a point stops at the name's last point, which is where such an ending starts anyway.
        m_form = Form::Ending;
    } else if (items.size() > 2 && items.back().token == WildcardToken::Star
               && items[items.size() - 2].token == WildcardToken::DosDot
               && std::all_of(items.begin(), items.end() - 2, literal)) {
        // "texture.*": the name, then the end or a point and anything.
        m_form = Form::NameAndAnyExtension;
    }
    const std::size_t literalFrom = m_form == Form::Ending ? 1 : 0;
    const std::size_t literalTo = m_form == Form::NameAndAnyExtension ? items.size() - 2 : items.size();
    if (m_form == Form::General)
        m_items = items;
    else
        for (std::size_t i = literalFrom; i < literalTo; ++i)
            m_literal += items[i].ch;
}

WildcardPattern::~WildcardPattern() = default;

bool WildcardPattern::matches(std::u16string_view name) const
{
    const auto endsLike = [&](std::size_t from) {
        return std::equal(m_literal.begin(), m_literal.end(), name.begin() + static_cast<std::ptrdiff_t>(from),
                          [](char16_t wanted, char16_t ch) { return foldNameChar(ch) == wanted; });
    };
    switch (m_form) {
    case Form::Any:
        return true;
    case Form::Exact:
        return name.size() == m_literal.size() && endsLike(0);
    case Form::Ending:
        return name.size() >= m_literal.size() && endsLike(name.size() - m_literal.size());
    case Form::NameAndAnyExtension:
        return name.size() >= m_literal.size() && (name.size() == m_literal.size() || name[m_literal.size()] == u'.')
            && std::equal(m_literal.begin(), m_literal.end(), name.begin(),
                          [](char16_t wanted, char16_t ch) { return foldNameChar(ch) == wanted; });
    case Form::General:
        break;
    }
    if (m_items.empty())
        return false;
    return Matcher(m_items, name, m_memo).matches();
}

bool matchesWildcard(std::u16string_view pattern, std::u16string_view name)
{
    return WildcardPattern(pattern).matches(name);
}

char16_t foldNameChar(char16_t ch)
{
    if (ch >= u'a' && ch <= u'z')
        return ch - (u'a' - u'A');
    if (ch < 0xE0)
        return ch;
    if (ch <= 0xFE)
        return ch == 0xF7 ? ch : ch - 0x20; // ÷ sits among the small letters
    switch (ch) {
    case 0x00FF: // ÿ
        return 0x0178;
    case 0x0153: // œ
        return 0x0152;
    case 0x0161: // š
        return 0x0160;
    case 0x017E: // ž
        return 0x017D;
    default:
        return ch;
    }
}

std::u16string foldName(std::u16string_view name)
{
    std::u16string folded(name);
    for (char16_t &ch : folded)
        ch = foldNameChar(ch);
    return folded;
}

bool sameNameIgnoringCase(std::u16string_view a, std::u16string_view b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char16_t x, char16_t y) {
               return foldNameChar(x) == foldNameChar(y);
           });
}

bool listingOrderLess(std::u16string_view a, std::u16string_view b)
{
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        const char16_t x = foldNameChar(a[i]);
        const char16_t y = foldNameChar(b[i]);
        if (x != y)
            return x < y;
    }
    if (a.size() != b.size())
        return a.size() < b.size();
    return a < b;
}

const std::vector<std::u16string> &FileLookup::names() const
{
    static const std::vector<std::u16string> none;
    return m_names ? *m_names : none;
}

std::optional<std::u16string> FileLookup::next()
{
    if (m_next >= names().size())
        return std::nullopt;
    return names()[m_next++];
}

std::optional<std::filesystem::path> FileLookup::findFile(const std::u16string &path)
{
    if (path.empty())
        return std::nullopt;
    std::optional<std::filesystem::path> resolved = resolve(path);
    std::error_code error;
    if (!resolved || std::filesystem::is_directory(lookupcache::status(resolved->native(), error)))
        return std::nullopt;
    return resolved;
}

namespace {

// The plain name by which text goes on from folder ("folder/name"); nothing for other texts.
std::optional<std::basic_string_view<lookupcache::NativeText::value_type>>
nameBelow(const lookupcache::NativeText &folder, const lookupcache::NativeText &text)
{
    if (folder.empty() || isSeparator(folder.back()) || text.size() <= folder.size() + 1
        || text.compare(0, folder.size(), folder) != 0 || !isSeparator(text[folder.size()]))
        return std::nullopt;
    const auto name = std::basic_string_view<lookupcache::NativeText::value_type>(text).substr(folder.size() + 1);
    const bool dots = name.size() <= 2 && name.find_first_not_of('.') == name.npos;
    if (dots || std::any_of(name.begin(), name.end(), [](auto ch) { return isSeparator(ch); }))
        return std::nullopt;
    return name;
}

std::filesystem::path joinedCanonical(const std::filesystem::path &folder,
                                      std::basic_string_view<lookupcache::NativeText::value_type> name)
{
    lookupcache::NativeText text = folder.native();
    if (!text.empty() && !isSeparator(text.back()))
        text += std::filesystem::path::preferred_separator;
    text += name;
    return std::filesystem::path(std::move(text));
}

// The canonical form of path, nothing when it has none. In a snapshot the answer is kept, and a path that
// goes on from its folder by a name that is no link takes the folder's answer: each folder on the way is
// asked about once, not once per path below it.
std::optional<std::filesystem::path> canonicalForm(const std::filesystem::path &path)
{
    if (openSnapshot) {
        if (const auto known = openSnapshot->canonicals.find(path.native()); known != openSnapshot->canonicals.end())
            return known->second;
    }
    std::optional<std::filesystem::path> found;
    const std::filesystem::path folder = openSnapshot ? path.parent_path() : std::filesystem::path();
    const auto name = nameBelow(folder.native(), path.native());
    if (name && FileLookup::isNotLink(path)) {
        if (const std::optional<std::filesystem::path> above = canonicalForm(folder))
            found = joinedCanonical(*above, *name);
    } else {
        std::error_code error;
        std::filesystem::path canonical = std::filesystem::canonical(path, error);
        if (!error)
            found = std::move(canonical);
    }
    if (openSnapshot)
        openSnapshot->canonicals.emplace(path.native(), found);
    return found;
}

} // namespace

std::filesystem::path canonicalOf(const std::filesystem::path &path)
{
    return canonicalForm(path).value_or(path);
}

std::filesystem::path canonicalBelow(const std::filesystem::path &parent, const std::filesystem::path &parentCanonical,
                                     const std::filesystem::path &child)
{
    // Mostly the child's text is the parent's, a separator and a plain name: then that text tells it.
    if (const auto name = nameBelow(parent.native(), child.native()))
        return FileLookup::isNotLink(child) ? joinedCanonical(parentCanonical, *name) : canonicalOf(child);
    if (child.parent_path() == parent && FileLookup::isNotLink(child))
        return parentCanonical / child.filename();
    return canonicalOf(child);
}

std::filesystem::path pathOf(std::u16string_view text)
{
    if (std::all_of(text.begin(), text.end(), [](char16_t ch) { return ch < 0x80; }))
        return std::filesystem::path(lookupcache::NativeText(text.begin(), text.end()));
    return std::filesystem::path(std::u16string(text));
}

std::u16string textOf(const std::filesystem::path &path)
{
    const lookupcache::NativeText &native = path.native();
    if (std::all_of(native.begin(), native.end(), [](auto ch) { return static_cast<std::uint32_t>(ch) < 0x80; }))
        return std::u16string(native.begin(), native.end());
    return path.u16string();
}

} // namespace fleetwright::platform
