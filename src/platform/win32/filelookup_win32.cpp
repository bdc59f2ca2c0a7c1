// On Windows the file system applies the wildcard rules and ignores case itself.
#include "platform/filelookup.h"

#include <memory>
#include <vector>
#include <windows.h>

namespace fleetwright::platform {

namespace fs = std::filesystem;

namespace {

bool isKind(DWORD attributes, LookupKind kind)
{
    const bool folder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    switch (kind) {
    case LookupKind::Files:
        return !folder;
    case LookupKind::Folders:
        return folder;
    case LookupKind::FilesAndFolders:
        return true;
    }
    return false;
}

} // namespace

FileLookup::FileLookup(const fs::path &wildcardPath, LookupKind kind)
{
    auto names = std::make_shared<std::vector<std::u16string>>();
    m_names = names;
    if (!wildcardPath.has_filename())
        return;
    WIN32_FIND_DATAW data;
    // Limiting to folders is only a hint to the file system; the kind is checked on every entry anyway.
    const HANDLE find = FindFirstFileExW(
        wildcardPath.c_str(), FindExInfoBasic, &data,
        kind == LookupKind::Folders ? FindExSearchLimitToDirectories : FindExSearchNameMatch, nullptr, 0);
    if (find == INVALID_HANDLE_VALUE)
        return;
    do {
        const std::wstring_view name(data.cFileName);
        if (name == L"." || name == L"..")
            continue;
        // A link's own attributes: a link to a folder carries the folder flag, as the shell shows it.
        if (isKind(data.dwFileAttributes, kind))
            names->emplace_back(name.begin(), name.end());
    } while (FindNextFileW(find, &data));
    FindClose(find);
}

FileLookup::FileLookup(const std::u16string &wildcardPath, LookupKind kind)
    : FileLookup(pathOf(wildcardPath), kind)
{}

std::optional<fs::path> FileLookup::resolve(const fs::path &path)
{
    if (path.empty() || GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES)
        return std::nullopt;
    return path;
}

std::optional<fs::path> FileLookup::resolve(const std::u16string &path)
{
    return resolve(pathOf(path));
}

bool FileLookup::canList(const std::u16string &folder)
{
    const std::optional<fs::path> resolved = resolve(folder);
    return resolved && canList(*resolved);
}

bool FileLookup::exists(const std::u16string &path, LookupKind kind)
{
    return exists(pathOf(path), kind);
}

bool FileLookup::exists(const fs::path &path, LookupKind kind)
{
    if (path.empty())
        return false;
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && isKind(attributes, kind);
}

} // namespace fleetwright::platform
