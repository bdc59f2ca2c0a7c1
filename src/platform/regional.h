#pragma once

#include <cstdint>
#include <string>

namespace fleetwright::platform {

// The user's regional settings, as the program shows numbers, dates and times. Windows takes them from the
// user's default locale; elsewhere from the environment's locale (LANG, LC_ALL, ...), or the "C" locale when
// that names none that is installed.

// The character between the whole and the decimal part of a number: "." or "," (or what the locale says).
char16_t DecimalSeparatorChar();

// The date and the time of a moment, in local time, in the user's short date and long time formats.
std::u16string shortDateText(std::int64_t secondsSinceEpoch);
std::u16string longTimeText(std::int64_t secondsSinceEpoch);

} // namespace fleetwright::platform
