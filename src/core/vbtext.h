#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace fleetwright {

// The text rules of the old run time that files, settings and reports were made with: case, blanks and
// numbers. Where two readers of the same kind exist, each rule differs from the other on purpose, and
// users' files depend on both; the names say how they differ.

// The text in lower or upper case, for the letters that Windows-1252 holds: ASCII, Latin-1 and Š, Œ, Ž, Ÿ.
std::u16string LCase(std::u16string_view text);
std::u16string UCase(std::u16string_view text);
// Lower case of "A" to "Z" only: model.cfg's "normal=" line and its ".mdl" ending are compared so, and an
// "É" there stays as it is.
std::u16string lowerAsciiOnly(std::u16string_view text);

// The text without the blanks (U+0020) around it; tabs and line ends stay.
std::u16string Trim(std::u16string_view text);

// Whether text reads as a number: blanks around it, an optional sign, digits with at most one decimal
// point (at least one digit), an optional exponent "E" with optional sign and digits; or "&H" with
// hexadecimal or "&O" with octal digits. The decimal point is ".".
bool isNumericText(std::u16string_view text);
// As isNumericText, and "D" also marks the exponent ("1D3"), as a conversion to a number accepts it.
bool convertsToNumber(std::u16string_view text);

// The value of the hexadecimal (radix 16) or octal (radix 8) digits that digits starts with, read up to the
// first character that is no such digit. The narrowest signed type that holds the bits gives the value, so
// "FFFF" is -1 and "10000" is 65536. Nothing when the digits need more than 32 bits.
std::optional<double> radixValue(std::u16string_view digits, int radix);

// The number a text starts with, read the way numbers are read out of configuration values:
//
//     "36.15  //Feet"      36.15      blanks, tabs and line feeds are dropped first, anywhere in the text,
//     "26.44\t;/ 36.1"     26.44      so "1 2" is 12; reading stops at the first character that is no part
//     "1.5e3", "1D3"       1500, 1000 of a number; "." is the decimal mark, "E" or "D" the exponent
//     "&H1F", "&o17"       31, 15     hexadecimal and octal, see radixValue
//     "", "abc", "-"       0
//
// A number too large for a double (or more than eight hexadecimal digits) throws RuntimeError 6
// "Overflow"; one too small to hold reads as 0.
double Val(std::u16string_view text);

// The leading number of a text with the plain decimal rule only: leading blanks and tabs skipped, an
// optional sign, digits and one decimal point, blanks and tabs between them passed over ("1 2" is 12).
// No exponent and no "&H": "1e3" is 1, "&H1F" is 0; a line feed ends the number; never overflows.
// Report options and section numbers are read so.
double valPlainDecimal(std::u16string_view text);

// A number as the machine writes it: up to 15 significant digits, no trailing zeros, the exponent form
// ("1.5E-05", "1E+15") for the very small and the very large, decimalSeparator between the whole and the
// decimal part. 0 is "0", also when it was negative.
std::u16string numberText(double value, char16_t decimalSeparator);

} // namespace fleetwright
