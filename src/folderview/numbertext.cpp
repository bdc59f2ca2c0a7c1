#include "folderview/numbertext.h"

#include <charconv>
#include <cstdint>
#include <string>
#include <system_error>

#include "core/runtimeerror.h"

namespace fleetwright {

namespace {

[[noreturn]] void overflow()
{
    throw RuntimeError(6, u"Overflow");
}

int digitValue(char16_t ch)
{
    if (ch >= u'0' && ch <= u'9')
        return ch - u'0';
    if (ch >= u'a' && ch <= u'f')
        return ch - u'a' + 10;
    if (ch >= u'A' && ch <= u'F')
        return ch - u'A' + 10;
    return 99;
}

// "&H" and "&O" numbers: as many digits as fit the radix. The run time hands back the narrowest signed
// type that holds the bits, so "&HFFFF" is -1 and "&H10000" is 65536.
double radixNumber(const std::u16string &text, std::size_t pos, int radix)
{
    std::uint64_t value = 0;
    while (pos < text.size() && digitValue(text[pos]) < radix) {
        value = value * static_cast<std::uint64_t>(radix) + static_cast<std::uint64_t>(digitValue(text[pos]));
        if (value > 0xFFFFFFFFu)
            overflow();
        ++pos;
    }
    if (value <= 0xFFFFu)
        return static_cast<std::int16_t>(static_cast<std::uint16_t>(value));
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

bool isDecimalDigit(char16_t ch)
{
    return ch >= u'0' && ch <= u'9';
}

} // namespace

double leadingNumber(const std::u16string &text)
{
    std::u16string packed;
    packed.reserve(text.size());
    for (char16_t ch : text) {
        if (ch != u' ' && ch != u'\t' && ch != u'\n')
            packed += ch;
    }
    if (packed.size() >= 2 && packed[0] == u'&') {
        if (packed[1] == u'H' || packed[1] == u'h')
            return radixNumber(packed, 2, 16);
        if (packed[1] == u'O' || packed[1] == u'o')
            return radixNumber(packed, 2, 8);
        return 0;
    }

    // The longest prefix of the form [sign] digits [. digits] [E|D [sign] digits], spelled for from_chars.
    std::string number;
    std::size_t pos = 0;
    if (pos < packed.size() && (packed[pos] == u'+' || packed[pos] == u'-')) {
        if (packed[pos] == u'-')
            number += '-';
        ++pos;
    }
    // Where the first significant digit stands against the decimal point, so that a number out of range
    // can be told too large from too small.
    long magnitude = 0;
    bool significant = false;
    bool anyDigit = false;
    bool fraction = false;
    for (; pos < packed.size(); ++pos) {
        const char16_t ch = packed[pos];
        if (isDecimalDigit(ch)) {
            anyDigit = true;
            if (ch != u'0')
                significant = true;
            if (!fraction && significant)
                ++magnitude;
            else if (fraction && !significant)
                --magnitude;
            number += static_cast<char>(ch);
        } else if (ch == u'.' && !fraction) {
            fraction = true;
            number += '.';
        } else {
            break;
        }
    }
    if (!anyDigit)
        return 0;
    if (pos < packed.size()
        && (packed[pos] == u'E' || packed[pos] == u'e' || packed[pos] == u'D' || packed[pos] == u'd')) {
        std::size_t exponentPos = pos + 1;
        std::string exponent = "e";
        if (exponentPos < packed.size() && (packed[exponentPos] == u'+' || packed[exponentPos] == u'-'))
            exponent += static_cast<char>(packed[exponentPos++]);
        long exponentValue = 0;
        bool exponentDigits = false;
        while (exponentPos < packed.size() && isDecimalDigit(packed[exponentPos])) {
            exponent += static_cast<char>(packed[exponentPos]);
            if (exponentValue < 100000)
                exponentValue = exponentValue * 10 + (packed[exponentPos] - u'0');
            exponentDigits = true;
            ++exponentPos;
        }
        if (exponentDigits) {
            number += exponent;
            magnitude += exponent[1] == '-' ? -exponentValue : exponentValue;
        }
    }

    double value = 0;
    if (std::from_chars(number.data(), number.data() + number.size(), value).ec == std::errc::result_out_of_range) {
        if (significant && magnitude > 0)
            overflow();
        return 0;
    }
    return value;
}

std::u16string numberText(double value, char16_t decimalSeparator)
{
    if (value == 0)
        return u"0";
    char buffer[40];
    const char *end = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 15).ptr;
    std::u16string text;
    for (const char *p = buffer; p != end; ++p) {
        if (*p == '.')
            text += decimalSeparator;
        else if (*p == 'e')
            text += u'E';
        else
            text += static_cast<char16_t>(*p);
    }
    return text;
}

} // namespace fleetwright
