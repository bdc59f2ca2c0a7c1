// The parts of FileLookup that are the same on every platform: the wildcard rules, case folding, order.
#include "platform/filelookup.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/filelookupcache.h"

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

std::vector<PatternItem> translate(std::u16string_view pattern)
{
    std::vector<PatternItem> items;
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
    return items;
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
struct Snapshot
{
    int depth = 0;
    std::uint64_t generation = 0;
    std::unordered_map<std::filesystem::path::string_type, std::shared_ptr<const lookupcache::Listing>> listings;
    std::unordered_map<std::filesystem::path::string_type, std::pair<std::filesystem::file_status, std::error_code>>
        statuses;
    std::unordered_map<std::filesystem::path::string_type, bool> notLinks;
    std::unordered_map<std::filesystem::path::string_type, std::optional<std::filesystem::path>> resolves;
    std::map<std::pair<std::filesystem::path::string_type, LookupKind>, std::vector<std::u16string>> names;
};

thread_local Snapshot *openSnapshot = nullptr;
thread_local std::uint64_t lastGeneration = 0;

// With a snapshot open, the kind of every listed entry that is no link goes into its statuses as well: the
// listing tells it for free, and the lookups ask for little else.
std::shared_ptr<const lookupcache::Listing> listFolder(const std::filesystem::path &folder, Snapshot *snapshot)
{
    auto listed = std::make_shared<lookupcache::Listing>();
    std::error_code error;
    const std::filesystem::path listedFolder = folder.empty() ? std::filesystem::path(".") : folder;
    std::filesystem::directory_iterator it(listedFolder, error);
    listed->opened = !error;
    for (const std::filesystem::directory_iterator end; !error && it != end; it.increment(error)) {
        lookupcache::ListedEntry &entry = listed->entries.emplace_back();
        entry.name = it->path().filename();
        const auto &bytes = entry.name.native();
        if (std::all_of(bytes.begin(), bytes.end(), [](auto ch) { return static_cast<std::uint32_t>(ch) < 0x80; })) {
            // Most names are ASCII, and the general conversion costs more than the listing.
            entry.wide.emplace(bytes.begin(), bytes.end());
        } else {
            try {
                entry.wide = entry.name.u16string();
            } catch (const std::system_error &) {
                entry.wide.reset();
            }
        }
        if (snapshot)
            listed->names.insert(entry.name.native());
#ifndef _WIN32
        // Where the system leaves the kind out, asking would cost a call per entry: those are asked later.
        std::error_code kindError;
        if (snapshot && !it->is_symlink(kindError) && !kindError) {
            const auto key = (listedFolder / entry.name).native();
            snapshot->notLinks.try_emplace(key, true);
            std::filesystem::file_type type = std::filesystem::file_type::none;
            if (it->is_directory(kindError))
                type = std::filesystem::file_type::directory;
            else if (!kindError && it->is_regular_file(kindError))
                type = std::filesystem::file_type::regular;
            if (!kindError && type != std::filesystem::file_type::none)
                snapshot->statuses.try_emplace(key, std::filesystem::file_status(type), std::error_code());
        }
#else
        (void)snapshot;
#endif
    }
    return listed;
}

} // namespace

namespace lookupcache {

std::shared_ptr<const Listing> listing(const std::filesystem::path &folder)
{
    if (!openSnapshot)
        return listFolder(folder, nullptr);
    auto [at, added] = openSnapshot->listings.try_emplace(folder.native());
    if (added)
        at->second = listFolder(folder, openSnapshot);
    return at->second;
}

std::filesystem::file_status status(const std::filesystem::path &path, std::error_code &error)
{
    if (!openSnapshot)
        return std::filesystem::status(path, error);
    auto [at, added] = openSnapshot->statuses.try_emplace(path.native());
    if (added) {
        // A name that the listing of its folder does not hold is not there.
        const auto folder = openSnapshot->listings.find(path.parent_path().native());
        const std::filesystem::path name = path.filename();
        if (folder != openSnapshot->listings.end() && folder->second->opened && !name.empty() && name != "."
            && name != ".." && !folder->second->names.contains(name.native())) {
            at->second.first = std::filesystem::file_status(std::filesystem::file_type::not_found);
            at->second.second = std::make_error_code(std::errc::no_such_file_or_directory);
        } else {
            at->second.first = std::filesystem::status(path, at->second.second);
        }
    }
    error = at->second.second;
    return at->second.first;
}

std::filesystem::file_status statusIn(const std::filesystem::path &folder, const std::filesystem::path &name,
                                      std::error_code &error)
{
    if (!openSnapshot)
        return std::filesystem::status(folder / name, error);
    // The text that folder / name would have.
    std::filesystem::path::string_type key = folder.native();
    if (!key.empty() && key.back() != std::filesystem::path::preferred_separator && key.back() != '/')
        key += std::filesystem::path::preferred_separator;
    key += name.native();
    const auto known = openSnapshot->statuses.find(key);
    if (known == openSnapshot->statuses.end())
        return lookupcache::status(std::filesystem::path(std::move(key)), error);
    error = known->second.second;
    return known->second.first;
}

bool notLink(const std::filesystem::path &path)
{
    const auto lookAt = [&path] {
        std::error_code error;
        const std::filesystem::file_status status = std::filesystem::symlink_status(path, error);
        return !error && !std::filesystem::is_symlink(status);
    };
    if (!openSnapshot)
        return lookAt();
    auto [at, added] = openSnapshot->notLinks.try_emplace(path.native());
    if (added)
        at->second = lookAt();
    return at->second;
}

std::optional<std::optional<std::filesystem::path>> knownResolve(const std::filesystem::path &path)
{
    if (!openSnapshot)
        return std::nullopt;
    const auto known = openSnapshot->resolves.find(path.native());
    if (known == openSnapshot->resolves.end())
        return std::nullopt;
    return known->second;
}

void keepResolve(const std::filesystem::path &path, const std::optional<std::filesystem::path> &resolved)
{
    if (openSnapshot)
        openSnapshot->resolves.insert_or_assign(path.native(), resolved);
}

const std::vector<std::u16string> *knownNames(const std::filesystem::path &wildcardPath, LookupKind kind)
{
    if (!openSnapshot)
        return nullptr;
    const auto known = openSnapshot->names.find({wildcardPath.native(), kind});
    return known == openSnapshot->names.end() ? nullptr : &known->second;
}

void keepNames(const std::filesystem::path &wildcardPath, LookupKind kind, const std::vector<std::u16string> &names)
{
    if (openSnapshot)
        openSnapshot->names.insert_or_assign({wildcardPath.native(), kind}, names);
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
    const std::filesystem::path::string_type folderName = folder.filename().native();
    const std::filesystem::path::string_type removedName = removed.filename().native();
    std::erase_if(openSnapshot->listings, [&](const auto &entry) {
        if (entry.first.find(folderName) == std::filesystem::path::string_type::npos)
            return false;
        std::filesystem::path listed = std::filesystem::path(entry.first).lexically_normal();
        if (!listed.has_filename())
            listed = listed.parent_path();
        return listed == folder;
    });
    const auto isRemoved = [&](const auto &entry) {
        return entry.first.find(removedName) != std::filesystem::path::string_type::npos
            && std::filesystem::path(entry.first).lexically_normal() == removed;
    };
    std::erase_if(openSnapshot->statuses, isRemoved);
    std::erase_if(openSnapshot->notLinks, isRemoved);
    // Which spelling a path resolves to, and what a wildcard finds, may hang on any entry.
    openSnapshot->resolves.clear();
    openSnapshot->names.clear();
}

void LookupSnapshot::forgetAll()
{
    if (!openSnapshot)
        return;
    openSnapshot->generation = ++lastGeneration;
    openSnapshot->listings.clear();
    openSnapshot->statuses.clear();
    openSnapshot->notLinks.clear();
    openSnapshot->resolves.clear();
    openSnapshot->names.clear();
}

void LookupSnapshot::forgetBelow(const std::filesystem::path &folder)
{
    if (!openSnapshot)
        return;
    openSnapshot->generation = ++lastGeneration;
    std::filesystem::path::string_type prefix = folder.lexically_normal().native();
    while (prefix.size() > 1 && (prefix.back() == std::filesystem::path::preferred_separator || prefix.back() == '/'))
        prefix.pop_back();
    // Keys hold the path as it was asked for, so any spelling of the folder counts.
    const auto fold = [](auto ch) { return ch >= 'a' && ch <= 'z' ? ch - ('a' - 'A') : ch; };
    const auto inside = [&](const auto &entry) {
        const auto &key = entry.first;
        if (key.size() < prefix.size())
            return false;
        for (std::size_t i = 0; i < prefix.size(); ++i) {
            if (fold(key[i]) != fold(prefix[i]))
                return false;
        }
        return key.size() == prefix.size() || key[prefix.size()] == std::filesystem::path::preferred_separator
            || key[prefix.size()] == '/';
    };
    std::erase_if(openSnapshot->listings, inside);
    std::erase_if(openSnapshot->statuses, inside);
    std::erase_if(openSnapshot->notLinks, inside);
    std::erase_if(openSnapshot->resolves, inside);
    std::erase_if(openSnapshot->names, [&](const auto &entry) { return inside(entry.first); });
}

bool FileLookup::canList(const std::filesystem::path &folder)
{
    return lookupcache::listing(folder)->opened;
}

bool FileLookup::isNotLink(const std::filesystem::path &path)
{
    return lookupcache::notLink(path);
}

std::uint64_t LookupSnapshot::generation()
{
    return openSnapshot ? openSnapshot->generation : 0;
}

WildcardPattern::WildcardPattern(std::u16string_view pattern)
    : m_items(translate(pattern))
{}

WildcardPattern::~WildcardPattern() = default;

bool WildcardPattern::matches(std::u16string_view name) const
{
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

std::optional<std::u16string> FileLookup::next()
{
    if (m_next >= m_names.size())
        return std::nullopt;
    return m_names[m_next++];
}

std::optional<std::filesystem::path> FileLookup::findFile(const std::u16string &path)
{
    if (path.empty())
        return std::nullopt;
    std::optional<std::filesystem::path> resolved = resolve(std::filesystem::path(path));
    std::error_code error;
    if (!resolved || std::filesystem::is_directory(lookupcache::status(*resolved, error)))
        return std::nullopt;
    return resolved;
}

} // namespace fleetwright::platform
