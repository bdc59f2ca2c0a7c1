#include "platform/regional.h"

#include <cwchar>
#include <windows.h>

namespace fleetwright::platform {

namespace {

constexpr std::int64_t TICKS_1601_TO_1970 = 116444736000000000LL;

bool localTime(std::int64_t secondsSinceEpoch, SYSTEMTIME &local)
{
    const auto ticks = static_cast<std::uint64_t>(secondsSinceEpoch * 10000000 + TICKS_1601_TO_1970);
    FILETIME utcFile;
    utcFile.dwLowDateTime = static_cast<DWORD>(ticks);
    utcFile.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    SYSTEMTIME utc;
    // The time zone rules of the moment itself, daylight saving included, not those of today.
    return FileTimeToSystemTime(&utcFile, &utc) && SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
}

} // namespace

char16_t DecimalSeparatorChar()
{
    wchar_t buffer[8] = {};
    if (GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_SDECIMAL, buffer, 8) < 2)
        return u'.';
    return static_cast<char16_t>(buffer[0]);
}

std::u16string shortDateText(std::int64_t secondsSinceEpoch)
{
    SYSTEMTIME local;
    wchar_t buffer[128];
    if (!localTime(secondsSinceEpoch, local)
        || GetDateFormatEx(LOCALE_NAME_USER_DEFAULT, DATE_SHORTDATE, &local, nullptr, buffer, 128, nullptr) == 0)
        return {};
    return std::u16string(buffer, buffer + wcslen(buffer));
}

std::u16string longTimeText(std::int64_t secondsSinceEpoch)
{
    SYSTEMTIME local;
    wchar_t buffer[128];
    if (!localTime(secondsSinceEpoch, local)
        || GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, 0, &local, nullptr, buffer, 128) == 0)
        return {};
    return std::u16string(buffer, buffer + wcslen(buffer));
}

} // namespace fleetwright::platform
