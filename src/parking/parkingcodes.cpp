#include "parking/parkingcodes.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "parking/parkingentry.h"

namespace fleetwright {

namespace {

constexpr std::int32_t MOST_COMMAS = 4;

std::vector<std::u16string> splitAtCommas(const std::u16string &text)
{
    std::vector<std::u16string> parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = text.find(u',', start);
        if (end == std::u16string::npos) {
            parts.push_back(text.substr(start));
            return parts;
        }
        parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
}

std::u16string asciiNumber(std::int64_t number)
{
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

} // namespace

ParkingCodeClick parkingCodeClick(const std::u16string &text, const std::u16string &code)
{
    if (text.empty())
        return {code, {}};
    if (text.find(code) == std::u16string::npos) {
        if (CountCommas(text) >= MOST_COMMAS)
            return {text, TOO_MANY_CODES};
        return {text + u',' + code, {}};
    }

    // The search above is a plain substring search, the removal an exact comparison of whole codes: when they
    // disagree, the index runs past the end and the last code goes.
    std::vector<std::u16string> parts = splitAtCommas(text);
    auto found = std::find(parts.begin(), parts.end(), code);
    if (found == parts.end())
        found = std::prev(parts.end());
    parts.erase(found);
    // Joined with nothing between: the commas are lost once three or more codes stood.
    std::u16string joined;
    for (const std::u16string &part : parts)
        joined += part;
    return {joined, {}};
}

std::u16string parkingCodeCounter(const std::u16string &text)
{
    const std::int64_t assigned = text.empty() ? 0 : std::int64_t {CountCommas(text)} + 1;
    return asciiNumber(assigned) + u" of 5";
}

} // namespace fleetwright
