#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace fleetwright {

// The parking types and parking codes of a variation (atc_parking_types, atc_parking_codes), held to what the
// simulator takes: types from a fixed list, at most five codes of at most five characters each.

// The pick-list's entries, in its order.
inline constexpr std::array<const char16_t *, 6> PARKING_TYPES = {u"CARGO",     u"DOCK",       u"GATE",
                                                                  u"MIL_CARGO", u"MIL_COMBAT", u"RAMP"};
using ParkingTypeSelection = std::array<bool, PARKING_TYPES.size()>;

// The entries that a caption such as "GATE,RAMP" names, each part compared exactly: no folding, no trimming.
// Parts that name no entry select nothing.
ParkingTypeSelection parkingTypesFromCaption(const std::u16string &caption);
// The selected entries joined with "," in the list's order; empty when none is selected.
std::u16string parkingTypesCaption(const ParkingTypeSelection &selected);

// The number of "," in text, each character compared on its low byte alone.
std::int32_t CountCommas(const std::u16string &text);

inline const std::u16string TOO_MANY_CODES = u"You are not allowed to add more than five (5) parkig codes";
inline const std::u16string CODE_TOO_LONG = u"A code may not be longer than 5 characters. If you want to efine another "
                                            u"parking code, please type a 'comma' (',') now.";

// What a key typed into the parking codes does: the key code to go on with (0 when it is swallowed) and the
// information message to show, if any. Only the end of text counts, wherever the caret stands: the last
// code is the one checked. A blank is always swallowed.
struct ParkingCodeKey
{
    int key = 0;
    std::u16string message;
};
ParkingCodeKey parkingCodeKeyPress(const std::u16string &text, int key);

} // namespace fleetwright
