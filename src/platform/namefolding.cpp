#include "platform/namefolding.h"

#include <algorithm>

namespace fleetwright::platform {

char16_t foldNameChar(char16_t ch)
{
    if (ch >= u'a' && ch <= u'z')
        return ch - (u'a' - u'A');
    if (ch < 0xE0)
        return ch;
    if (ch <= 0xFE)
        return ch == 0xF7 ? ch : ch - 0x20; // ÷ sits among the small letters
    switch (ch) {
    case 0x00FF: // ÿ
        return 0x0178;
    case 0x0153: // œ
        return 0x0152;
    case 0x0161: // š
        return 0x0160;
    case 0x017E: // ž
        return 0x017D;
    default:
        return ch;
    }
}

std::u16string foldName(std::u16string_view name)
{
    std::u16string folded(name);
    for (char16_t &ch : folded)
        ch = foldNameChar(ch);
    return folded;
}

bool sameNameIgnoringCase(std::u16string_view a, std::u16string_view b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char16_t x, char16_t y) {
               return foldNameChar(x) == foldNameChar(y);
           });
}

bool listingOrderLess(std::u16string_view a, std::u16string_view b)
{
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        const char16_t x = foldNameChar(a[i]);
        const char16_t y = foldNameChar(b[i]);
        if (x != y)
            return x < y;
    }
    if (a.size() != b.size())
        return a.size() < b.size();
    return a < b;
}

} // namespace fleetwright::platform
