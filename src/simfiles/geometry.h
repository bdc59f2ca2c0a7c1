#pragma once

#include <array>
#include <string>

namespace fleetwright {

// Numbers of the geometry tab: the wing span in feet and what a parking spot must measure for it, and the
// key filters of its number fields. decimalSeparator is the platform's, as the form found it at start-up:
// texts are read and written with it.

// The number that text starts with: the leading run of "0123456789,." read under the platform's number
// format, so "35.8 // wing" gives 35.8. A text with no such run throws RuntimeError 13 "Type mismatch";
// callers guard only against an empty text.
void CleanNumber(const std::u16string &text, double &result, char16_t decimalSeparator = u'.');

// The whole number at or above text, as decimal text: "31.01" gives "32", "31.0" gives "31". Only the part
// behind the separator is looked at, so a negative number goes the wrong way: "-3.5" gives "-2".
void RoundUpToWhole(const std::u16string &text, std::u16string &result, char16_t decimalSeparator = u'.');

// Text read as a number under the platform's number format: the other of "." and "," is a thousands mark and
// is dropped. A text that does not read as one throws RuntimeError 13 "Type mismatch".
double platformNumber(const std::u16string &text, char16_t decimalSeparator);
// Whether text reads as a number under the platform's number format, as the key filters test it.
bool readsAsNumber(const std::u16string &text, char16_t decimalSeparator);

// One step each of the wing span chain; an empty source gives an empty target.
//     "100"  ->  WingSpanMetres "30.48"  ->  HalfSpan "15.24"  ->  SpotSize "16"
std::u16string WingSpanMetres(const std::u16string &feet, char16_t decimalSeparator);
std::u16string HalfSpan(const std::u16string &metres, char16_t decimalSeparator);
std::u16string SpotSize(const std::u16string &halfSpan, char16_t decimalSeparator);

// The key filters of the number fields: given the field's text and the typed key code, the code to go on
// with, 0 for a swallowed key. A decimal point or comma is turned into decimalSeparator. The signed filter
// lets "-" through anywhere without a test.
constexpr int KEY_BACKSPACE = 8;
int DecimalKeyFilter(const std::u16string &text, int key, char16_t decimalSeparator);
int SignedKeyFilter(const std::u16string &text, int key, char16_t decimalSeparator);

// Whether an exit row has all five values: only emptiness counts, a blank is a value.
bool exitRowComplete(const std::array<std::u16string, 5> &values);

} // namespace fleetwright
