#pragma once

#include <string>

namespace fleetwright {

// The number a text starts with, read the way numbers are read out of configuration values:
//
//     "36.15  //Feet"      36.15      blanks, tabs and line feeds are dropped first, anywhere in the text,
//     "26.44\t;/ 36.1"     26.44      so "1 2" is 12; reading stops at the first character that is no part
//     "1.5e3", "1D3"       1500, 1000 of a number; "." is the decimal mark, "E" or "D" the exponent
//     "&H1F", "&o17"       31, 15     hexadecimal and octal; up to four hex digits give a signed 16-bit
//     "&HFFFF"             -1         value, up to eight a signed 32-bit one
//     "", "abc", "-"       0
//
// A number too large for a double (or more than eight hexadecimal digits) throws RuntimeError 6
// "Overflow"; one too small to hold reads as 0.
double leadingNumber(const std::u16string &text);

// A number as the machine writes it: up to 15 significant digits, no trailing zeros, the exponent form
// ("1.5E-05", "1E+15") for the very small and the very large, decimalSeparator between the whole and the
// decimal part. 0 is "0", also when it was negative.
std::u16string numberText(double value, char16_t decimalSeparator);

} // namespace fleetwright
