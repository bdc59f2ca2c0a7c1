// The parts of FileLookup that are the same on every platform: the names of a lookup, the canonical form of
// paths, and paths made of the engine's text.
#include "platform/filelookup.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace fleetwright::platform {

bool FileLookup::canList(const std::filesystem::path &folder)
{
    return listing(folder.native())->opened;
}

bool FileLookup::isNotLink(const std::filesystem::path &path)
{
    return notLink(path.native());
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
    if (!resolved || std::filesystem::is_directory(status(resolved->native(), error)))
        return std::nullopt;
    return resolved;
}

namespace {

// The plain name by which text goes on from folder ("folder/name"); nothing for other texts.
std::optional<std::basic_string_view<NativeText::value_type>> nameBelow(const NativeText &folder,
                                                                        const NativeText &text)
{
    if (folder.empty() || isSeparator(folder.back()) || text.size() <= folder.size() + 1
        || text.compare(0, folder.size(), folder) != 0 || !isSeparator(text[folder.size()]))
        return std::nullopt;
    const auto name = std::basic_string_view<NativeText::value_type>(text).substr(folder.size() + 1);
    const bool dots = name.size() <= 2 && name.find_first_not_of('.') == name.npos;
    if (dots || std::any_of(name.begin(), name.end(), [](auto ch) { return isSeparator(ch); }))
        return std::nullopt;
    return name;
}

std::filesystem::path joinedCanonical(const std::filesystem::path &folder,
                                      std::basic_string_view<NativeText::value_type> name)
{
    NativeText text = folder.native();
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
    if (const std::optional<std::filesystem::path> *known = knownCanonical(path.native()))
        return *known;
    std::optional<std::filesystem::path> found;
    const std::filesystem::path folder =
        LookupSnapshot::generation() != 0 ? path.parent_path() : std::filesystem::path();
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
    keepCanonical(path.native(), found);
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
        return std::filesystem::path(NativeText(text.begin(), text.end()));
    return std::filesystem::path(std::u16string(text));
}

std::u16string textOf(const std::filesystem::path &path)
{
    const NativeText &native = path.native();
    if (std::all_of(native.begin(), native.end(), [](auto ch) { return static_cast<std::uint32_t>(ch) < 0x80; }))
        return std::u16string(native.begin(), native.end());
    return path.u16string();
}

} // namespace fleetwright::platform
