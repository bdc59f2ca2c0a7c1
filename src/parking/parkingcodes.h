#pragma once

#include <string>

namespace fleetwright {

// The parking code dialog's rules for atc_parking_codes: a click on an airline's row adds its code to the
// variation's list, a second click takes it out again.

// What a click on a row does to the parking codes: the new text, and the information message to show
// instead when the list is full (the text is then the old one).
struct ParkingCodeClick
{
    std::u16string text;
    std::u16string message;
};

// text is the current atc_parking_codes, code the clicked row's code.
//
// A code that occurs nowhere in text (case respected) is added behind a ",", unless text already holds four
// commas. Otherwise it is taken out, with two results that users have always had and that stay:
// - the codes that remain are joined with nothing between them: "A,B,C" without B is "AC";
// - a code found only inside a longer one ("KL" in "KLM,DLH") takes out the last code instead.
ParkingCodeClick parkingCodeClick(const std::u16string &text, const std::u16string &code);

// The counter of assigned codes: "0 of 5" for an empty text, else the number of commas plus one, "3 of 5".
std::u16string parkingCodeCounter(const std::u16string &text);

} // namespace fleetwright
