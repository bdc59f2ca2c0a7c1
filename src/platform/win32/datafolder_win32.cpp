#include "platform/datafolder.h"

#include <cstdlib>
#include <shlobj.h> // brings windows.h along
#include <string>

namespace fleetwright::platform {

std::filesystem::path applicationDataFolder()
{
    wchar_t buffer[MAX_PATH];
    if (SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, buffer) != S_OK)
        return {};
    return std::filesystem::path(buffer) / L"Fleetwright";
}

std::optional<std::filesystem::path> environmentPath(const char *name)
{
    // The wide copy of the environment, so a path outside the ANSI code page comes through whole.
    const std::string narrow(name);
    const std::wstring wide(narrow.begin(), narrow.end());
    if (const wchar_t *value = _wgetenv(wide.c_str()); value != nullptr && *value != L'\0')
        return std::filesystem::path(value);
    return std::nullopt;
}

} // namespace fleetwright::platform
