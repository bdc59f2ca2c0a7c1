#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace fleetwright::platform {

// The settings store as a small UTF-8 INI file, used off Windows and, on every platform, for the file that
// FLEETWRIGHT_SETTINGS names (so that a test has a store of its own that nothing else has written):
//
//     [Fleetwright]
//     ToolTips=1
//
// Characters that would break the line format are written as %XX: a line end or "%" anywhere, and in a key
// also "=", a leading "[", ";" or "#" and blanks at either end, in a value blanks at either end (so that
// "ToolTips = 1", written by hand, reads as "1"). Section and key names ignore case.

// The text stored under key in section, or defaultValue when the file, the section or the key is missing.
std::u16string readSettingsFile(const std::filesystem::path &file, std::u16string_view section, std::u16string_view key,
                                std::u16string_view defaultValue);

// Stores text under key in section, creating the file and its folder when missing. False when the file cannot
// be read or written; it then stays as it was.
bool writeSettingsFile(const std::filesystem::path &file, std::u16string_view section, std::u16string_view key,
                       std::u16string_view text);

} // namespace fleetwright::platform
