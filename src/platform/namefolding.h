#pragma once

// How NTFS compares and orders names: the case folding of lookups and the order of their listings.

#include <string>
#include <string_view>

namespace fleetwright::platform {

// Upper case of one character for name comparison, as NTFS compares names: ASCII letters, the Latin-1
// letters and the other letters of Windows-1252 (š, œ, ž, ÿ) fold; ß, µ, ÷ and × stay.
char16_t foldNameChar(char16_t ch);
std::u16string foldName(std::u16string_view name);
bool sameNameIgnoringCase(std::u16string_view a, std::u16string_view b);

// NTFS listing order: ordinal comparison of the upper-cased names (names equal so are ordered ordinally).
bool listingOrderLess(std::u16string_view a, std::u16string_view b);

} // namespace fleetwright::platform
