// Lookups on file systems that tell case apart: every component is searched the way Windows would find it.
#include "platform/filelookup.h"

#include <algorithm>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/filelookupcache.h"

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
    std::vector<std::pair<std::u16string, fs::path>> found;
    const fs::path listed = folder.empty() ? fs::path(".") : folder;
    const auto entries = lookupcache::listing(listed);
    for (const lookupcache::ListedEntry &entry : entries->entries) {
        if (entry.name.native() == wanted)
            continue;
        std::error_code statusError;
        if (entry.wide && sameNameIgnoringCase(*entry.wide, *wantedWide)
            && isKind(lookupcache::statusIn(listed, entry.name, statusError), kind))
            found.emplace_back(*entry.wide, entry.name);
    }
    std::sort(found.begin(), found.end(),
              [](const auto &a, const auto &b) { return listingOrderLess(a.first, b.first); });
    std::vector<fs::path> names;
    for (auto &entry : found)
        names.push_back(std::move(entry.second));
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
        if (!fs::is_directory(lookupcache::status(current.empty() ? fs::path(".") : current, error)))
            return std::nullopt;
        return resolveBelow(current / fs::path(), components, index + 1);
    }
    if (component == "." || component == "..") {
        const fs::path next = current / component;
        if (!fs::is_directory(lookupcache::status(next, error)))
            return std::nullopt;
        return resolveBelow(next, components, index + 1);
    }
    const std::string name = windowsComponent(component.native());
    if (name.empty())
        return std::nullopt;
    const LookupKind kind = last ? LookupKind::FilesAndFolders : LookupKind::Folders;
    if (isKind(lookupcache::status(current / name, error), kind)) {
        if (std::optional<fs::path> resolved = resolveBelow(current / name, components, index + 1))
            return resolved;
    }
    for (const fs::path &spelling : otherSpellings(current, name, kind)) {
        if (std::optional<fs::path> resolved = resolveBelow(current / spelling, components, index + 1))
            return resolved;
    }
    return std::nullopt;
}

// The names of a wildcard lookup, in listing order.
std::vector<std::u16string> lookupNames(const fs::path &wildcardPath, LookupKind kind)
{
    std::vector<std::u16string> names;
    const std::optional<std::u16string> pattern = wideName(wildcardPath.filename());
    if (!pattern || pattern->empty())
        return names;
    fs::path folder = wildcardPath.parent_path();
    if (!folder.empty()) {
        const std::optional<fs::path> resolved = FileLookup::resolve(folder);
        if (!resolved)
            return names;
        folder = *resolved;
    }
    const fs::path listed = folder.empty() ? fs::path(".") : folder;
    const auto entries = lookupcache::listing(listed);
    const WildcardPattern matcher(*pattern);
    for (const lookupcache::ListedEntry &entry : entries->entries) {
        if (!entry.wide || !matcher.matches(*entry.wide))
            continue;
        std::error_code statusError;
        if (isKind(lookupcache::statusIn(listed, entry.name, statusError), kind))
            names.push_back(*entry.wide);
    }
    std::sort(names.begin(), names.end(),
              [](const std::u16string &a, const std::u16string &b) { return listingOrderLess(a, b); });
    return names;
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
    const auto knownParent = below ? lookupcache::knownResolve(parent) : std::nullopt;
    const bool parentElsewhere = knownParent && *knownParent && (*knownParent)->native() != parent.native();
    std::error_code error;
    if (plain && !parentElsewhere && fs::exists(lookupcache::status(path, error)))
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
    }
    return resolveBelow(path.root_path(), components, 0);
}

} // namespace

FileLookup::FileLookup(const fs::path &wildcardPath, LookupKind kind)
{
    if (const std::vector<std::u16string> *known = lookupcache::knownNames(wildcardPath, kind)) {
        m_names = *known;
        return;
    }
    m_names = lookupNames(wildcardPath, kind);
    lookupcache::keepNames(wildcardPath, kind, m_names);
}

std::optional<fs::path> FileLookup::resolve(const fs::path &path)
{
    if (path.empty())
        return std::nullopt;
    if (std::optional<std::optional<fs::path>> known = lookupcache::knownResolve(path))
        return *known;
    std::optional<fs::path> resolved = resolveUncached(path);
    lookupcache::keepResolve(path, resolved);
    return resolved;
}

bool FileLookup::exists(const fs::path &path, LookupKind kind)
{
    const std::optional<fs::path> resolved = resolve(path);
    std::error_code error;
    return resolved && isKind(lookupcache::status(*resolved, error), kind);
}

} // namespace fleetwright::platform
