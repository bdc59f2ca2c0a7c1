#include "core/vbtext.h"

#include <charconv>
#include <cstdint>
#include <string>
#include <system_error>

#include "core/runtimeerror.h"
#include "platform/filelookup.h"

namespace fleetwright {

namespace {

bool isDigit(char16_t ch)
{
    return ch >= u'0' && ch <= u'9';
}

int digitValue(char16_t ch)
{
    if (isDigit(ch))
        return ch - u'0';
    if (ch >= u'a' && ch <= u'f')
        return ch - u'a' + 10;
    if (ch >= u'A' && ch <= u'F')
        return ch - u'A' + 10;
    return 99;
}

// Lower case of the letters that Windows-1252 holds: ASCII, Latin-1 (not × and ß) and Š, Œ, Ž, Ÿ. The
// upper direction is the name folding of the platform layer, which covers the same letters.
char16_t lowerChar(char16_t ch)
{
    if (ch >= u'A' && ch <= u'Z')
        return ch + (u'a' - u'A');
    if (ch >= 0xC0 && ch <= 0xDE && ch != 0xD7)
        return ch + 0x20;
    switch (ch) {
    case 0x0160: // Š
        return 0x0161;
    case 0x0152: // Œ
        return 0x0153;
    case 0x017D: // Ž
        return 0x017E;
    case 0x0178: // Ÿ
        return 0x00FF;
    default:
        return ch;
    }
}

// "&H1F", "&o17": the prefix letter is matched without regard to case, as the run time does.
bool isHexOrOctal(std::u16string_view body)
{
    if (body.size() < 3 || body[0] != u'&')
        return false;
    const char16_t kind = body[1];
    const int radix = kind == u'H' || kind == u'h' ? 16 : kind == u'O' || kind == u'o' ? 8 : 0;
    if (radix == 0)
        return false;
    for (char16_t ch : body.substr(2)) {
        if (digitValue(ch) >= radix)
            return false;
    }
    return true;
}

// How many digits stand from pos on; pos moves behind them.
std::size_t digitRun(std::u16string_view text, std::size_t &pos)
{
    const std::size_t start = pos;
    while (pos < text.size() && isDigit(text[pos]))
        ++pos;
    return pos - start;
}

bool isDecimalNumber(std::u16string_view body, bool dMarksExponent)
{
    std::size_t pos = 0;
    if (pos < body.size() && (body[pos] == u'+' || body[pos] == u'-'))
        ++pos;
    std::size_t digits = digitRun(body, pos);
    if (pos < body.size() && body[pos] == u'.')
        digits += digitRun(body, ++pos);
    if (digits == 0)
        return false;
    if (pos < body.size()
        && (body[pos] == u'E' || body[pos] == u'e' || (dMarksExponent && (body[pos] == u'D' || body[pos] == u'd')))) {
        ++pos;
        if (pos < body.size() && (body[pos] == u'+' || body[pos] == u'-'))
            ++pos;
        if (digitRun(body, pos) == 0)
            return false;
    }
    return pos == body.size();
}

bool readsAsNumber(std::u16string_view text, bool dMarksExponent)
{
    const std::u16string body = Trim(text);
    return isHexOrOctal(body) || isDecimalNumber(body, dMarksExponent);
}

} // namespace

std::u16string LCase(std::u16string_view text)
{
    std::u16string lower(text);
    for (char16_t &ch : lower)
        ch = lowerChar(ch);
    return lower;
}

std::u16string UCase(std::u16string_view text)
{
    return platform::foldName(text);
}

std::u16string lowerAsciiOnly(std::u16string_view text)
{
    std::u16string lower(text);
    for (char16_t &ch : lower) {
        if (ch >= u'A' && ch <= u'Z')
            ch = static_cast<char16_t>(ch + (u'a' - u'A'));
    }
    return lower;
}

std::u16string Trim(std::u16string_view text)
{
    const std::size_t first = text.find_first_not_of(u' ');
    if (first == std::u16string_view::npos)
        return {};
    return std::u16string(text.substr(first, text.find_last_not_of(u' ') - first + 1));
}

bool isNumericText(std::u16string_view text)
{
    return readsAsNumber(text, false);
}

bool convertsToNumber(std::u16string_view text)
{
    return readsAsNumber(text, true);
}

std::optional<double> radixValue(std::u16string_view digits, int radix)
{
    std::uint64_t value = 0;
    for (std::size_t pos = 0; pos < digits.size() && digitValue(digits[pos]) < radix; ++pos) {
        value = value * static_cast<std::uint64_t>(radix) + static_cast<std::uint64_t>(digitValue(digits[pos]));
        if (value > 0xFFFFFFFFu)
            return std::nullopt;
    }
    if (value <= 0xFFFFu)
        return static_cast<std::int16_t>(static_cast<std::uint16_t>(value));
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

double Val(std::u16string_view text)
{
    std::u16string packed;
    packed.reserve(text.size());
    for (char16_t ch : text) {
        if (ch != u' ' && ch != u'\t' && ch != u'\n')
            packed += ch;
    }
    if (packed.size() >= 2 && packed[0] == u'&') {
        const int radix = packed[1] == u'H' || packed[1] == u'h' ? 16 : packed[1] == u'O' || packed[1] == u'o' ? 8 : 0;
        if (radix == 0)
            return 0;
        const std::optional<double> value = radixValue(std::u16string_view(packed).substr(2), radix);
        if (!value)
            throw RuntimeError::overflow();
        return *value;
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
        if (isDigit(ch)) {
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
        while (exponentPos < packed.size() && isDigit(packed[exponentPos])) {
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
            throw RuntimeError::overflow();
        return 0;
    }
    return value;
}

double valPlainDecimal(std::u16string_view text)
{
    std::size_t i = 0;
    while (i < text.size() && (text[i] == u' ' || text[i] == u'\t'))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) {
        negative = text[i] == u'-';
        ++i;
    }
    double value = 0;
    for (; i < text.size(); ++i) {
        if (isDigit(text[i]))
            value = value * 10 + (text[i] - u'0');
        else if (text[i] != u' ' && text[i] != u'\t')
            break;
    }
    if (i < text.size() && text[i] == u'.') {
        double scale = 0.1;
        for (++i; i < text.size(); ++i) {
            if (isDigit(text[i])) {
                value += (text[i] - u'0') * scale;
                scale /= 10;
            } else if (text[i] != u' ' && text[i] != u'\t') {
                break;
            }
        }
    }
    return negative ? -value : value;
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
