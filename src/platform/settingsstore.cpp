// The part of SettingsStore that is the same everywhere: the conversion of stored texts to booleans.
#include "platform/settingsstore.h"

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

#include "core/runtimeerror.h"
#include "platform/namefolding.h"

namespace fleetwright::platform {

namespace {

bool isBlank(char16_t ch)
{
    return ch == u' ' || ch == u'\t' || ch == u'\r' || ch == u'\n' || ch == u'\v' || ch == u'\f';
}

std::u16string_view trimmed(std::u16string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

bool isDigit(char16_t ch)
{
    return ch >= u'0' && ch <= u'9';
}

int digitValue(char16_t ch)
{
    if (isDigit(ch))
        return ch - u'0';
    const char16_t upper = foldNameChar(ch);
    if (upper >= u'A' && upper <= u'F')
        return upper - u'A' + 10;
    return 99;
}

// "&H1F" or "&O17": a 32-bit number as the old run time wrote such literals. Nothing if text is no such
// literal; throws Overflow when it does not fit.
std::optional<bool> radixLiteral(std::u16string_view text)
{
    if (text.size() < 3 || text[0] != u'&')
        return std::nullopt;
    const char16_t kind = foldNameChar(text[1]);
    const int radix = kind == u'H' ? 16 : kind == u'O' ? 8 : 0;
    if (radix == 0)
        return std::nullopt;
    std::uint64_t value = 0;
    for (const char16_t ch : text.substr(2)) {
        const int digit = digitValue(ch);
        if (digit >= radix)
            throw RuntimeError::typeMismatch();
        value = value * radix + digit;
        if (value > 0xFFFFFFFFu)
            throw RuntimeError::overflow();
    }
    return value != 0;
}

// A decimal number: [sign] digits [. digits] [E|D [sign] digits], at least one digit before the exponent.
// Its value is taken as a double, as the run time did: too large overflows, too small is zero.
std::optional<bool> decimalLiteral(std::u16string_view text)
{
    std::string ascii; // for from_chars, which knows no "+" and no "D" exponent
    std::size_t pos = 0;
    if (pos < text.size() && (text[pos] == u'+' || text[pos] == u'-'))
        ++pos;
    std::size_t mantissaDigits = 0;
    bool nonZero = false;
    int integerDigits = 0; // significant digits in front of the point
    bool seenPoint = false;
    int leadingFractionZeros = 0;
    for (; pos < text.size(); ++pos) {
        const char16_t ch = text[pos];
        if (isDigit(ch)) {
            ++mantissaDigits;
            if (ch != u'0')
                nonZero = true;
            if (!seenPoint && nonZero)
                ++integerDigits;
            if (seenPoint && !nonZero)
                ++leadingFractionZeros;
            ascii.push_back(static_cast<char>(ch));
        } else if (ch == u'.' && !seenPoint) {
            seenPoint = true;
            ascii.push_back('.');
        } else {
            break;
        }
    }
    if (mantissaDigits == 0)
        return std::nullopt;
    long long exponent = 0;
    if (pos < text.size()) {
        const char16_t marker = foldNameChar(text[pos]);
        if (marker != u'E' && marker != u'D')
            return std::nullopt;
        ++pos;
        bool negative = false;
        if (pos < text.size() && (text[pos] == u'+' || text[pos] == u'-'))
            negative = text[pos++] == u'-';
        if (pos == text.size())
            return std::nullopt;
        for (; pos < text.size(); ++pos) {
            if (!isDigit(text[pos]))
                return std::nullopt;
            if (exponent < 100000)
                exponent = exponent * 10 + (text[pos] - u'0');
        }
        if (negative)
            exponent = -exponent;
        ascii += 'e';
        ascii += std::to_string(exponent);
    }
    if (!nonZero)
        return false;
    double value = 0;
    const auto [end, error] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value);
    if (error == std::errc::result_out_of_range) {
        // The decimal magnitude says which way it ran out of range.
        const long long magnitude = integerDigits > 0 ? integerDigits + exponent : exponent - leadingFractionZeros;
        if (magnitude > 0)
            throw RuntimeError::overflow();
        return false;
    }
    if (error != std::errc() || end != ascii.data() + ascii.size())
        return std::nullopt;
    return value != 0.0;
}

} // namespace

bool settingToBool(std::u16string_view text)
{
    const std::u16string_view value = trimmed(text);
    if (sameNameIgnoringCase(value, u"True"))
        return true;
    if (sameNameIgnoringCase(value, u"False"))
        return false;
    if (const std::optional<bool> radix = radixLiteral(value))
        return *radix;
    if (const std::optional<bool> number = decimalLiteral(value))
        return *number;
    throw RuntimeError::typeMismatch();
}

SettingsStore::SettingsStore(std::u16string application, std::u16string section)
    : m_application(std::move(application))
    , m_section(std::move(section))
{}

bool SettingsStore::GetBoolSetting(std::u16string_view key, std::u16string_view defaultValue) const
{
    return settingToBool(GetSetting(key, defaultValue));
}

} // namespace fleetwright::platform
