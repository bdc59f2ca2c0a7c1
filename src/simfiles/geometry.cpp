#include "simfiles/geometry.h"

#include <cmath>

#include "core/arraysearch.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"

namespace fleetwright {

namespace {

constexpr int KEY_COMMA = 44;
constexpr int KEY_POINT = 46;
constexpr int KEY_MINUS = 45;

// The text as the number reader takes it: thousands marks dropped, the decimal separator made a point.
std::u16string normalised(const std::u16string &text, char16_t decimalSeparator)
{
    const char16_t thousands = decimalSeparator == u',' ? u'.' : u',';
    std::u16string plain;
    plain.reserve(text.size());
    for (const char16_t ch : text) {
        if (ch == thousands)
            continue;
        plain.push_back(ch == decimalSeparator ? u'.' : ch);
    }
    return plain;
}

int filterKey(const std::u16string &text, int key, char16_t decimalSeparator, bool minusPasses)
{
    const bool separatorTyped = key == KEY_POINT || key == KEY_COMMA;
    if (separatorTyped && (text.find(u'.') != std::u16string::npos || text.find(u',') != std::u16string::npos))
        key = 0;
    if (key != KEY_BACKSPACE && !(minusPasses && key == KEY_MINUS)
        && !readsAsNumber(text + static_cast<char16_t>(key), decimalSeparator))
        key = 0;
    if (key == KEY_COMMA && decimalSeparator == u'.')
        key = KEY_POINT;
    else if (key == KEY_POINT && decimalSeparator == u',')
        key = KEY_COMMA;
    return key;
}

} // namespace

double platformNumber(const std::u16string &text, char16_t decimalSeparator)
{
    const std::u16string plain = normalised(text, decimalSeparator);
    if (!isNumericText(plain))
        throw RuntimeError::typeMismatch();
    return Val(plain);
}

bool readsAsNumber(const std::u16string &text, char16_t decimalSeparator)
{
    return isNumericText(normalised(text, decimalSeparator));
}

void CleanNumber(const std::u16string &text, double &result, char16_t decimalSeparator)
{
    static constexpr std::u16string_view NUMBER_CHARACTERS = u"0123456789,.";
    std::u16string run;
    for (const char16_t ch : text) {
        if (NUMBER_CHARACTERS.find(ch) == std::u16string_view::npos)
            break;
        run.push_back(ch);
    }
    result = platformNumber(run, decimalSeparator);
}

void RoundUpToWhole(const std::u16string &text, std::u16string &result, char16_t decimalSeparator)
{
    const std::size_t point = text.find(u'.');
    const std::size_t comma = text.find(u',');
    double value = 0;
    if (point == std::u16string::npos && comma == std::u16string::npos) {
        value = platformNumber(text, decimalSeparator);
    } else {
        const std::size_t split = point != std::u16string::npos ? point : comma;
        const char16_t separator = text[split];
        const std::size_t next = text.find(separator, split + 1);
        const std::u16string behind =
            text.substr(split + 1, next == std::u16string::npos ? std::u16string::npos : next - split - 1);
        if (Val(behind) > 0)
            value = Val(text.substr(0, split)) + 1;
        else
            value = std::nearbyint(platformNumber(text, decimalSeparator)); // to even, as the run time rounds
    }
    result = numberText(value, decimalSeparator);
}

std::u16string WingSpanMetres(const std::u16string &feet, char16_t decimalSeparator)
{
    if (feet.empty())
        return {};
    double value = 0;
    CleanNumber(feet, value, decimalSeparator);
    // Two steps, in this order: the last digit of the result depends on it.
    value = value * 0.0254;
    value = value * 12.0;
    return numberText(value, decimalSeparator);
}

std::u16string HalfSpan(const std::u16string &metres, char16_t decimalSeparator)
{
    if (metres.empty())
        return {};
    return numberText(platformNumber(metres, decimalSeparator) / 2.0, decimalSeparator);
}

std::u16string SpotSize(const std::u16string &halfSpan, char16_t decimalSeparator)
{
    if (halfSpan.empty())
        return {};
    std::u16string spot;
    RoundUpToWhole(halfSpan, spot, decimalSeparator);
    return spot;
}

int DecimalKeyFilter(const std::u16string &text, int key, char16_t decimalSeparator)
{
    return filterKey(text, key, decimalSeparator, false);
}

int SignedKeyFilter(const std::u16string &text, int key, char16_t decimalSeparator)
{
    return filterKey(text, key, decimalSeparator, true);
}

bool exitRowComplete(const std::array<std::u16string, 5> &values)
{
    for (const std::u16string &value : values) {
        if (value.empty())
            return false;
    }
    return true;
}

} // namespace fleetwright
