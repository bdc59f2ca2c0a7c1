#include "platform/osversion.h"

#include <cstring>
#include <ctime>
#include <windows.h>

#include "platform/codepage.h"

namespace fleetwright::platform {

namespace {

// A call of kernel32 that older systems (and older MinGW headers) may lack, looked up at run time; null when
// the system has none. kernel32 stays loaded in every process, so the handle is not freed.
template<typename Call> Call kernelCall(const char *name)
{
    HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    if (kernel == nullptr)
        return nullptr;
    return reinterpret_cast<Call>(reinterpret_cast<void *>(GetProcAddress(kernel, name)));
}

std::u16string textOf(const char *text, std::size_t capacity)
{
    const void *end = std::memchr(text, '\0', capacity);
    const std::size_t length = end ? static_cast<std::size_t>(static_cast<const char *>(end) - text) : capacity;
    return fromCodePage(std::string_view(text, length));
}

std::u16string languageName(LANGID language)
{
    using VerLanguageNameCall = DWORD(WINAPI *)(DWORD, LPSTR, DWORD);
    const auto verLanguageName = kernelCall<VerLanguageNameCall>("VerLanguageNameA");
    if (verLanguageName == nullptr)
        return {};
    char buffer[256] = {};
    const DWORD length = verLanguageName(language, buffer, sizeof buffer);
    return length == 0 ? std::u16string() : textOf(buffer, sizeof buffer);
}

} // namespace

OsVersionRecord ReadOsVersion()
{
    OsVersionRecord record;

    // The short record first (148 bytes), which every system knows.
    OSVERSIONINFOA shortInfo {};
    shortInfo.dwOSVersionInfoSize = sizeof shortInfo;
    if (!GetVersionExA(&shortInfo))
        return record;

    // NT 4.0 before service pack 6 has no long record; its service pack number stands only in the text, as its
    // 14th character: "Service Pack 5".
    WORD textServicePack = 0;
    if (shortInfo.dwPlatformId == VER_PLATFORM_WIN32_NT && shortInfo.dwMajorVersion == 4
        && std::strlen(shortInfo.szCSDVersion) >= 14 && shortInfo.szCSDVersion[13] >= '0'
        && shortInfo.szCSDVersion[13] <= '9')
        textServicePack = static_cast<WORD>(shortInfo.szCSDVersion[13] - '0');

    OSVERSIONINFOEXA info {};
    const bool longRecord = shortInfo.dwPlatformId == VER_PLATFORM_WIN32_NT
        && (shortInfo.dwMajorVersion >= 5 || (shortInfo.dwMajorVersion == 4 && textServicePack >= 6));
    bool haveLong = false;
    if (longRecord) {
        info.dwOSVersionInfoSize = sizeof info; // 156 bytes
        haveLong = GetVersionExA(reinterpret_cast<OSVERSIONINFOA *>(&info)) != FALSE;
    }
    if (!haveLong) {
        info = {};
        info.dwMajorVersion = shortInfo.dwMajorVersion;
        info.dwMinorVersion = shortInfo.dwMinorVersion;
        info.dwBuildNumber = shortInfo.dwBuildNumber;
        info.dwPlatformId = shortInfo.dwPlatformId;
        std::memcpy(info.szCSDVersion, shortInfo.szCSDVersion, sizeof info.szCSDVersion);
        info.wServicePackMajor = textServicePack;
    }

    record.majorVersion = info.dwMajorVersion;
    record.minorVersion = info.dwMinorVersion;
    record.buildNumber = info.dwBuildNumber;
    record.platformId = info.dwPlatformId;
    record.servicePack = textOf(info.szCSDVersion, sizeof info.szCSDVersion);
    record.servicePackMajor = info.wServicePackMajor;
    record.servicePackMinor = info.wServicePackMinor;
    record.suiteMask = info.wSuiteMask;
    record.productType = info.wProductType;

    record.tabletPc = GetSystemMetrics(86) != 0;
    record.mediaCenter = GetSystemMetrics(87) != 0;
    record.starter = GetSystemMetrics(88) != 0;
    record.serverR2 = GetSystemMetrics(89) != 0;

    record.languageId = GetSystemDefaultLangID();
    record.languageName = languageName(record.languageId);
    // The tick count runs over after 49.7 days; the boot time is then that much too late, as it always was.
    record.bootTime = static_cast<std::int64_t>(std::time(nullptr)) - static_cast<std::int64_t>(GetTickCount() / 1000);

    if (record.platformId == VER_PLATFORM_WIN32_NT && record.majorVersion >= 6) {
        using GetProductInfoCall = BOOL(WINAPI *)(DWORD, DWORD, DWORD, DWORD, PDWORD);
        if (const auto getProductInfo = kernelCall<GetProductInfoCall>("GetProductInfo")) {
            DWORD product = 0;
            if (getProductInfo(record.majorVersion, record.minorVersion, record.servicePackMajor,
                               record.servicePackMinor, &product))
                record.productInfo = product;
        }
    }
    return record;
}

bool Is64BitOS()
{
    if constexpr (sizeof(void *) == 8)
        return true;
    using IsWow64ProcessCall = BOOL(WINAPI *)(HANDLE, PBOOL);
    const auto isWow64Process = kernelCall<IsWow64ProcessCall>("IsWow64Process");
    BOOL wow64 = FALSE;
    return isWow64Process != nullptr && isWow64Process(GetCurrentProcess(), &wow64) && wow64;
}

} // namespace fleetwright::platform
