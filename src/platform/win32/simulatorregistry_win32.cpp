// The registry of this machine, in the view a 32-bit program has of it.
#include "platform/simulatorregistry.h"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <shlobj.h>
#include <string>
#include <vector>
#include <windows.h>

namespace fleetwright::platform {

namespace {

std::wstring wide(std::u16string_view text)
{
    return std::wstring(text.begin(), text.end());
}

std::u16string fromWide(std::wstring_view text)
{
    return std::u16string(text.begin(), text.end());
}

// Read from the process's environment block, not the C run time's copy: only the block can hold a variable
// with an empty value, which says "not installed" (the run time's putenv removes such a variable instead).
std::optional<std::u16string> variable(const char *name)
{
    const std::wstring wideName(name, name + std::char_traits<char>::length(name));
    const DWORD size = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0);
    if (size == 0)
        return std::nullopt;
    std::wstring value(size, L'\0');
    value.resize(GetEnvironmentVariableW(wideName.c_str(), value.data(), size));
    return fromWide(value);
}

// Type and size first, then the data; the value may change in between, so a growing value is asked for
// again.
std::u16string queryValue(HKEY key, const std::wstring &name)
{
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExW(key, name.c_str(), nullptr, &type, nullptr, &size) != ERROR_SUCCESS)
        return {};
    if (type != REG_SZ && type != REG_DWORD)
        return {};
    std::vector<BYTE> data;
    LSTATUS status;
    do {
        data.assign(size + sizeof(wchar_t), 0);
        size = static_cast<DWORD>(data.size());
        status = RegQueryValueExW(key, name.c_str(), nullptr, &type, data.data(), &size);
    } while (status == ERROR_MORE_DATA);
    if (status != ERROR_SUCCESS)
        return {};
    if (type == REG_DWORD) {
        if (size != sizeof(DWORD))
            return {};
        std::uint32_t value = 0;
        for (int i = 3; i >= 0; --i)
            value = value << 8 | data[i];
        const std::string digits = std::to_string(static_cast<std::int32_t>(value));
        return std::u16string(digits.begin(), digits.end());
    }
    if (type != REG_SZ)
        return {};
    std::u16string text;
    for (DWORD i = 0; i + 1 < size; i += 2)
        text.push_back(static_cast<char16_t>(data[i] | data[i + 1] << 8));
    if (!text.empty() && text.back() == u'\0')
        text.pop_back();
    return text;
}

} // namespace

SimulatorRegistry::SimulatorRegistry() = default;

std::u16string SimulatorRegistry::GetRegistryValue(std::u16string_view keyPath, std::u16string_view valueName) const
{
    if (const char *name = registryOverrideVariable(keyPath, valueName)) {
        if (std::optional<std::u16string> value = variable(name))
            return *value;
    }
    HKEY key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, wide(keyPath).c_str(), 0, KEY_QUERY_VALUE | KEY_WOW64_32KEY, &key)
        != ERROR_SUCCESS)
        return {};
    std::u16string value = queryValue(key, wide(valueName));
    RegCloseKey(key);
    return value;
}

std::u16string SimulatorRegistry::nativePath(std::u16string_view windowsPath) const
{
    return std::u16string(windowsPath);
}

bool SimulatorRegistry::Is64BitOS() const
{
    HMODULE kernel = LoadLibraryW(L"kernel32.dll");
    if (kernel == nullptr)
        return false;
    using IsWow64ProcessCall = BOOL(WINAPI *)(HANDLE, PBOOL);
    const auto isWow64Process =
        reinterpret_cast<IsWow64ProcessCall>(reinterpret_cast<void *>(GetProcAddress(kernel, "IsWow64Process")));
    BOOL wow64 = FALSE;
    const bool result = isWow64Process != nullptr && isWow64Process(GetCurrentProcess(), &wow64) && wow64;
    FreeLibrary(kernel);
    return result;
}

std::u16string SimulatorRegistry::GetSpecialFolder(int folderId) const
{
    if (folderId == APPDATA_FOLDER) {
        if (std::optional<std::u16string> folder = variable("FLEETWRIGHT_APPDATA"))
            return *folder;
    }
    wchar_t buffer[MAX_PATH];
    if (FAILED(SHGetFolderPathW(nullptr, folderId, nullptr, SHGFP_TYPE_CURRENT, buffer)))
        return {};
    return fromWide(buffer);
}

} // namespace fleetwright::platform
