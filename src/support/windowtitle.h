#pragma once

#include <string>
#include <string_view>

namespace fleetwright {

// The ownership line that closes the main window's title.
inline constexpr std::u16string_view MAKER_LINE = u"© Corvane Tools";

// The main window's title grown from the form's own caption:
//
//   Fleetwright    V.0.1.0  -  © Corvane Tools
//
// The caption is followed by three blanks and then " V." (so four blanks stand before the "V"), the version
// of this build, "  -  " and the maker's line. Callers that match the title rely on that spacing.
std::u16string windowTitle(std::u16string_view caption);

} // namespace fleetwright
