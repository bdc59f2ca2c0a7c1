#include "core/paths.h"

#include <algorithm>
#include <filesystem>

namespace fleetwright {

char16_t nativeSeparator()
{
    return static_cast<char16_t>(std::filesystem::path::preferred_separator);
}

bool isSeparator(char16_t ch)
{
    return ch == nativeSeparator() || ch == u'/';
}

bool endsWithSeparator(std::u16string_view folder)
{
    return !folder.empty() && isSeparator(folder.back());
}

std::u16string nativeSeparators(std::u16string text)
{
    const char16_t separator = nativeSeparator();
    for (char16_t &ch : text) {
        if (ch == u'\\' || ch == u'/')
            ch = separator;
    }
    return text;
}

std::u16string backslashSeparators(std::u16string path)
{
    std::replace(path.begin(), path.end(), nativeSeparator(), u'\\');
    return path;
}

std::u16string joinPath(std::u16string_view folder, std::u16string_view name)
{
    std::u16string path;
    path.reserve(folder.size() + 1 + name.size());
    path += folder;
    if (!endsWithSeparator(path))
        path += nativeSeparator();
    path += name;
    return path;
}

std::u16string joinPathAlways(std::u16string_view folder, std::u16string_view name)
{
    std::u16string path(folder);
    path.push_back(nativeSeparator());
    for (const char16_t ch : name)
        path.push_back(ch == u'\\' ? nativeSeparator() : ch);
    return path;
}

std::u16string withTrailingSeparator(std::u16string folder)
{
    if (!endsWithSeparator(folder))
        folder.push_back(nativeSeparator());
    return folder;
}

} // namespace fleetwright
