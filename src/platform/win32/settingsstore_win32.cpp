#include "platform/settingsstore.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <windows.h>

#include "platform/settingsfile.h"

namespace fleetwright::platform {

namespace {

std::wstring wide(std::u16string_view text)
{
    return std::wstring(text.begin(), text.end());
}

std::wstring keyPath(const std::u16string &application, const std::u16string &section)
{
    return L"Software\\VB and VBA Program Settings\\" + wide(application) + L"\\" + wide(section);
}

// A store of the caller's own, in place of the registry: a test run must not read what an earlier one left
// in the user's registry, nor change the user's real settings.
std::optional<std::filesystem::path> settingsFileOverride()
{
    if (const wchar_t *file = _wgetenv(L"FLEETWRIGHT_SETTINGS"); file != nullptr && *file != L'\0')
        return std::filesystem::path(file);
    return std::nullopt;
}

} // namespace

std::u16string SettingsStore::GetSetting(std::u16string_view key, std::u16string_view defaultValue) const
{
    if (const std::optional<std::filesystem::path> file = settingsFileOverride())
        return readSettingsFile(*file, m_section, key, defaultValue);
    HKEY handle;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, keyPath(m_application, m_section).c_str(), 0, KEY_QUERY_VALUE, &handle)
        != ERROR_SUCCESS)
        return std::u16string(defaultValue);
    const std::wstring name = wide(key);
    std::wstring value;
    DWORD type = 0;
    DWORD bytes = 0;
    LSTATUS status = RegQueryValueExW(handle, name.c_str(), nullptr, &type, nullptr, &bytes);
    // Another process may make the value longer between the two calls; ask again then.
    while (status == ERROR_SUCCESS && type == REG_SZ) {
        value.assign(bytes / sizeof(wchar_t) + 1, L'\0');
        DWORD size = static_cast<DWORD>(value.size() * sizeof(wchar_t));
        status = RegQueryValueExW(handle, name.c_str(), nullptr, &type, reinterpret_cast<BYTE *>(value.data()), &size);
        if (status == ERROR_MORE_DATA) {
            bytes = size;
            status = ERROR_SUCCESS;
            continue;
        }
        value.resize(size / sizeof(wchar_t));
        break;
    }
    RegCloseKey(handle);
    if (status != ERROR_SUCCESS || type != REG_SZ)
        return std::u16string(defaultValue);
    // The stored size counts the terminating NUL, when the writer put one there.
    const std::size_t end = value.find(L'\0');
    if (end != std::wstring::npos)
        value.resize(end);
    return std::u16string(value.begin(), value.end());
}

bool SettingsStore::SaveSetting(std::u16string_view key, std::u16string_view text) const
{
    if (const std::optional<std::filesystem::path> file = settingsFileOverride())
        return writeSettingsFile(*file, m_section, key, text);
    HKEY handle;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, keyPath(m_application, m_section).c_str(), 0, nullptr,
                        REG_OPTION_NON_VOLATILE, KEY_SET_VALUE, nullptr, &handle, nullptr)
        != ERROR_SUCCESS)
        return false;
    const std::wstring value = wide(text);
    const LSTATUS status =
        RegSetValueExW(handle, wide(key).c_str(), 0, REG_SZ, reinterpret_cast<const BYTE *>(value.c_str()),
                       static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(handle);
    return status == ERROR_SUCCESS;
}

} // namespace fleetwright::platform
