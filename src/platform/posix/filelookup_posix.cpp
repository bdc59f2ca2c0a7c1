// Lookups on file systems that tell case apart: every component is searched the way Windows would find it.
#include "platform/filelookup.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/lookupsnapshot.h"

namespace fleetwright::platform {

namespace fs = std::filesystem;

namespace {

// A name the engine's text can hold. File names here are bytes, taken as UTF-8; one that is no valid UTF-8
// cannot be named by the engine and is left out.
std::optional<std::u16string> wideName(const fs::path &name)
{
    try {
        return name.u16string();
    } catch (const std::system_error &) {
        return std::nullopt;
    }
}

bool isKind(const fs::file_status &status, LookupKind kind)
{
    if (!fs::exists(status))
        return false;
    switch (kind) {
    case LookupKind::Files:
        return !fs::is_directory(status);
    case LookupKind::Folders:
        return fs::is_directory(status);
    case LookupKind::FilesAndFolders:
        return true;
    }
    return false;
}

// Windows drops trailing points and blanks from every component before it looks anything up.
std::string windowsComponent(std::string component)
{
    while (!component.empty() && (component.back() == '.' || component.back() == ' '))
        component.pop_back();
    return component;
}

// The entries of folder that are named like wanted without regard to case but spelled otherwise, in listing
// order.
std::vector<fs::path> otherSpellings(const fs::path &folder, const std::string &wanted, LookupKind kind)
{
    const std::optional<std::u16string> wantedWide = wideName(fs::path(wanted));
    if (!wantedWide)
        return {};
    std::vector<fs::path> names;
    const std::string listed = folder.empty() ? std::string(".") : folder.native();
    const auto entries = listing(listed);
    for (const std::uint32_t index : entries->alike(*wantedWide)) {
        const ListedEntry &entry = entries->entries[index];
        if (entry.name == wanted)
            continue;
        std::error_code statusError;
        if (isKind(statusOf(listed, entry, statusError), kind))
            names.emplace_back(entry.name);
    }
    return names;
}

// Resolves components[index...] below current. The exact spelling is tried first, then the other spellings
// in listing order, so a folder that exists only under one of several spellings is still found.
std::optional<fs::path> resolveBelow(const fs::path &current, const std::vector<fs::path> &components,
                                     std::size_t index)
{
    if (index == components.size())
        return current;
    const fs::path &component = components[index];
    const bool last = index + 1 == components.size();
    std::error_code error;
    if (component.empty()) {
        // A trailing separator: what stands before it must be a folder.
        if (!fs::is_directory(status(current.empty() ? std::string(".") : current.native(), error)))
            return std::nullopt;
        return resolveBelow(current / fs::path(), components, index + 1);
    }
    if (component == "." || component == "..") {
        const fs::path next = current / component;
        if (!fs::is_directory(status(next.native(), error)))
            return std::nullopt;
        return resolveBelow(next, components, index + 1);
    }
    const std::string name = windowsComponent(component.native());
    if (name.empty())
        return std::nullopt;
    const LookupKind kind = last ? LookupKind::FilesAndFolders : LookupKind::Folders;
    if (const fs::path exact = current / name; isKind(status(exact.native(), error), kind)) {
        if (std::optional<fs::path> resolved = resolveBelow(exact, components, index + 1))
            return resolved;
    }
    for (const fs::path &spelling : otherSpellings(current, name, kind)) {
        if (std::optional<fs::path> resolved = resolveBelow(current / spelling, components, index + 1))
            return resolved;
    }
    return std::nullopt;
}

// Most lookups find nothing: they share one empty list.
FoundNames noNames()
{
    static const FoundNames none = std::make_shared<const std::vector<std::u16string>>();
    return none;
}

// The names in a listing of folder that match pattern and are of kind, in listing order.
FoundNames matchingNames(const std::string &folder, const std::shared_ptr<const Listing> &entries,
                         std::u16string_view pattern, LookupKind kind)
{
    std::vector<std::u16string> names;
    const WildcardPattern matcher(pattern);
    for (const std::uint32_t index : entries->sorted) {
        const ListedEntry &entry = entries->entries[index];
        if (!matcher.matches(*entry.wide))
            continue;
        std::error_code statusError;
        if (isKind(statusOf(folder, entry, statusError), kind)) {
            if (names.empty())
                names.reserve(entries->sorted.size());
            names.push_back(*entry.wide);
        }
    }
    return names.empty() ? noNames() : std::make_shared<const std::vector<std::u16string>>(std::move(names));
}

// The names of a wildcard lookup, in listing order.
FoundNames lookupNames(const fs::path &wildcardPath, LookupKind kind)
{
    const std::optional<std::u16string> pattern = wideName(wildcardPath.filename());
    if (!pattern || pattern->empty())
        return noNames();
    std::string listed = ".";
    if (const fs::path folder = wildcardPath.parent_path(); !folder.empty()) {
        const std::optional<fs::path> resolved = FileLookup::resolve(folder);
        if (!resolved)
            return noNames();
        listed = resolved->native();
    }
    return matchingNames(listed, listing(listed), *pattern, kind);
}

// Whether a folder on the way to folder (a path as resolve gives it) holds another entry named like the one
// the way goes through: only then can a walk from the root take a turn that the way did not. Without a
// snapshot's index of the listings that cannot be told, and a turn is assumed.
bool turnsAbove(const fs::path &folder)
{
    if (const std::optional<bool> known = knownTurns(folder.native()))
        return *known;
    bool turns = false;
    fs::path current = folder.root_path();
    for (const fs::path &component : folder.relative_path()) {
        const std::string &name = component.native();
        if (!name.empty() && name != "." && name != "..") {
            const auto listed = listing(current.empty() ? std::string(".") : current.native());
            const std::optional<std::u16string> wide = wideName(component);
            if (!listed->kept || !wide || listed->alike(*wide).size() > 1) {
                turns = true;
                break;
            }
        }
        current /= component;
    }
    keepTurns(folder.native(), turns);
    return turns;
}

std::optional<fs::path> resolveUncached(const fs::path &path)
{
    const fs::path relative = path.relative_path();
    const std::vector<fs::path> components(relative.begin(), relative.end());
    // The exact spelling wins at every level, so a path that exists as written is its own answer: one look
    // instead of one per component. Components that Windows would trim take the long way.
    const bool plain = std::none_of(components.begin(), components.end(), [](const fs::path &component) {
        const std::string &text = component.native();
        return !text.empty() && text != "." && text != ".." && (text.back() == '.' || text.back() == ' ');
    });
    const fs::path parent = path.parent_path();
    const fs::path last = path.filename();
    const bool below = !last.empty() && last != "." && last != ".." && !parent.empty() && parent != path
        && parent.lexically_normal() == parent;
    // A folder known under another spelling does not stand as written, nor does anything in it.
    const std::optional<fs::path> *knownParent = below ? knownResolve(parent.native()) : nullptr;
    const bool parentElsewhere = knownParent && *knownParent && (*knownParent)->native() != parent.native();
    std::error_code error;
    if (plain && !parentElsewhere && fs::exists(status(path.native(), error)))
        return path;
    // The search goes through the folder's own candidates in the same order, and no candidate before the
    // folder's answer leads anywhere: so the answer lies below the folder's answer, if there. Only when it
    // does not are the later candidates walked.
    if (below) {
        const std::optional<fs::path> folder = FileLookup::resolve(parent);
        if (!folder)
            return std::nullopt;
        if (std::optional<fs::path> below = resolveBelow(*folder, {last}, 0))
            return below;
        if (!turnsAbove(*folder))
            return std::nullopt;
    }
    return resolveBelow(path.root_path(), components, 0);
}

} // namespace

FileLookup::FileLookup(const fs::path &wildcardPath, LookupKind kind)
{
    m_names = knownNames(wildcardPath.native(), kind);
    if (m_names)
        return;
    m_names = lookupNames(wildcardPath, kind);
    keepNames(wildcardPath.native(), kind, m_names);
}

std::optional<fs::path> FileLookup::resolve(const fs::path &path)
{
    if (path.empty())
        return std::nullopt;
    if (const std::optional<fs::path> *known = knownResolve(path.native()))
        return *known;
    std::optional<fs::path> resolved = resolveUncached(path);
    keepResolve(path.native(), resolved);
    return resolved;
}

namespace {

// What resolve answers for text, kept in the open snapshot; nothing without one.
const std::optional<fs::path> *resolveKept(const std::u16string &text);

// Whether a folder's text is as lexically_normal leaves it: no empty, "." or ".." parts.
bool normalText(std::u16string_view folder)
{
    for (std::size_t start = folder.front() == u'/' ? 1 : 0; start <= folder.size();) {
        const std::size_t end = std::min(folder.find(u'/', start), folder.size());
        const std::u16string_view part = folder.substr(start, end - start);
        if (part.empty() || part == u"." || part == u"..")
            return false;
        start = end + 1;
    }
    return true;
}

// Where the engine's text names an entry of a folder plainly ("folder/name", the name an ASCII name that
// Windows would not trim), its folder and name; otherwise nothing.
std::optional<std::pair<std::u16string, std::string>> plainEntry(const std::u16string &text)
{
    const std::size_t slash = text.rfind(u'/');
    if (slash == std::u16string::npos || slash == 0 || slash + 1 == text.size()
        || !normalText(std::u16string_view(text).substr(0, slash)))
        return std::nullopt;
    const std::u16string_view name = std::u16string_view(text).substr(slash + 1);
    if (name == u"." || name == u".." || name.back() == u'.' || name.back() == u' '
        || std::any_of(name.begin(), name.end(), [](char16_t ch) { return ch >= 0x80; }))
        return std::nullopt;
    return std::pair(text.substr(0, slash), std::string(name.begin(), name.end()));
}

// resolve for a plain entry as resolveUncached finds it, from the folder's answer and its listing alone:
// the name as written, else its other spellings, else (when the way to the folder could turn) the long
// way. Nothing when the text is no plain entry.
std::optional<std::optional<fs::path>> resolveEntry(const std::u16string &text)
{
    const auto entry = plainEntry(text);
    if (!entry)
        return std::nullopt;
    const std::optional<fs::path> *folder = resolveKept(entry->first);
    if (!*folder)
        return std::optional<fs::path>();
    std::string exact = (*folder)->native();
    if (exact.back() != '/')
        exact += '/';
    const std::size_t folderSize = exact.size();
    exact += entry->second;
    std::error_code error;
    if (fs::exists(status(exact, error)))
        return std::optional<fs::path>(std::move(exact));
    const std::vector<fs::path> spellings = otherSpellings(**folder, entry->second, LookupKind::FilesAndFolders);
    if (!spellings.empty()) {
        exact.resize(folderSize);
        return std::optional<fs::path>(exact + spellings.front().native());
    }
    if (turnsAbove(**folder))
        return std::optional<fs::path>(FileLookup::resolve(pathOf(text)));
    return std::optional<fs::path>();
}

const std::optional<fs::path> *resolveKept(const std::u16string &text)
{
    if (LookupSnapshot::generation() == 0)
        return nullptr;
    if (const std::optional<fs::path> *known = knownResolve(text))
        return known;
    if (std::optional<std::optional<fs::path>> found = resolveEntry(text))
        return keepResolve(text, std::move(*found));
    return keepResolve(text, text.empty() ? std::nullopt : FileLookup::resolve(pathOf(text)));
}

// The names of a wildcard lookup in the engine's text whose folder part is plain, from the folder's answer;
// nothing without a snapshot or for other texts.
FoundNames namesInEntryFolder(const std::u16string &wildcardPath, LookupKind kind)
{
    const std::size_t slash = wildcardPath.rfind(u'/');
    // The folder part is what parent_path leaves, and resolve takes it in any form.
    if (slash == std::u16string::npos || slash == 0 || wildcardPath[slash - 1] == u'/'
        || slash + 1 == wildcardPath.size())
        return nullptr;
    const std::u16string_view pattern = std::u16string_view(wildcardPath).substr(slash + 1);
    // A lone surrogate makes no path: such a text takes the long way, which fails on it.
    if (std::any_of(pattern.begin(), pattern.end(), [](char16_t ch) { return ch >= 0xD800 && ch <= 0xDFFF; }))
        return nullptr;
    const std::optional<fs::path> *folder = resolveKept(wildcardPath.substr(0, slash));
    if (!folder)
        return nullptr;
    if (!*folder)
        return noNames();
    const std::string &listed = (*folder)->native();
    return matchingNames(listed, listing(listed), pattern, kind);
}

} // namespace

FileLookup::FileLookup(const std::u16string &wildcardPath, LookupKind kind)
{
    m_names = knownNames(wildcardPath, kind);
    if (m_names)
        return;
    m_names = namesInEntryFolder(wildcardPath, kind);
    if (!m_names)
        m_names = FileLookup(pathOf(wildcardPath), kind).m_names;
    keepNames(wildcardPath, kind, m_names);
}

std::optional<fs::path> FileLookup::resolve(const std::u16string &path)
{
    if (const std::optional<fs::path> *kept = resolveKept(path))
        return *kept;
    return path.empty() ? std::nullopt : resolve(pathOf(path));
}

bool FileLookup::exists(const fs::path &path, LookupKind kind)
{
    const std::optional<fs::path> resolved = resolve(path);
    std::error_code error;
    return resolved && isKind(status(resolved->native(), error), kind);
}

bool FileLookup::canList(const std::u16string &folder)
{
    if (const std::optional<fs::path> *kept = resolveKept(folder))
        return *kept && canList(**kept);
    const std::optional<fs::path> resolved = resolve(folder);
    return resolved && canList(*resolved);
}

bool FileLookup::exists(const std::u16string &path, LookupKind kind)
{
    const std::optional<fs::path> *kept = resolveKept(path);
    if (!kept)
        return exists(pathOf(path), kind);
    std::error_code error;
    return *kept && isKind(status((*kept)->native(), error), kind);
}

} // namespace fleetwright::platform
