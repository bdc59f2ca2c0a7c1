#include "core/arraysearch.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "core/vbtext.h"

namespace fleetwright {

namespace {

// Whether one of the NUL-separated pieces of element is piece.
bool holdsPiece(std::u16string_view element, std::u16string_view piece)
{
    for (std::size_t start = 0;;) {
        const std::size_t end = element.find(u'\0', start);
        if (element.substr(start, end - start) == piece)
            return true;
        if (end == std::u16string_view::npos)
            return false;
        start = end + 1;
    }
}

bool isInArray(std::u16string &value, const std::vector<std::u16string> &array,
               std::u16string (*fold)(std::u16string_view))
{
    if (!isNumericText(value))
        value = fold(value);
    // Found as "NUL value NUL" in the elements joined by NULs: as a piece between two NULs. An element
    // without NULs is one piece, and only a longer element can hold a piece as long as value.
    if (value.find(u'\0') == std::u16string::npos) {
        if (array.empty())
            return value.empty();
        for (const std::u16string &element : array) {
            if (element.size() == value.size() ? element == value
                                               : element.size() > value.size() && holdsPiece(element, value))
                return true;
        }
        return false;
    }
    std::u16string joined(1, u'\0');
    for (const std::u16string &element : array) {
        joined += element;
        joined += u'\0';
    }
    // An empty list joins to an empty text, which stands between the two NULs.
    if (array.empty())
        joined += u'\0';
    std::u16string needle(1, u'\0');
    needle += value;
    needle += u'\0';
    return joined.find(needle) != std::u16string::npos;
}

} // namespace

std::u16string StripComment(const std::u16string &text)
{
    const std::size_t comment = text.find(u"//");
    const std::u16string_view kept = std::u16string_view(text).substr(0, comment);
    return Trim(kept);
}

bool IsInArrayUpper(std::u16string &value, const std::vector<std::u16string> &array)
{
    return isInArray(value, array, UCase);
}

bool IsInArrayLower(std::u16string &value, const std::vector<std::u16string> &array)
{
    return isInArray(value, array, LCase);
}

bool GrowingTextSearch::contains(std::u16string_view text, std::u16string_view part)
{
    if (part.size() < 2)
        return part.empty() || text.find(part.front()) != std::u16string_view::npos;
    const auto bucketAt = [](std::u16string_view in, std::size_t at) {
        const std::uint32_t pair = static_cast<std::uint32_t>(in[at]) << 16 | in[at + 1];
        return (pair * 2654435761u) >> 22; // the top ten bits: one of BUCKETS
    };
    if (text.size() < m_indexed || m_last.empty()) {
        m_last.assign(BUCKETS, 0);
        m_count.assign(BUCKETS, 0);
        m_before.clear();
        m_indexed = 0;
    }
    for (; m_indexed + 1 < text.size(); ++m_indexed) {
        const std::uint32_t bucket = bucketAt(text, m_indexed);
        m_before.push_back(m_last[bucket]);
        m_last[bucket] = static_cast<std::uint32_t>(m_indexed + 1);
        ++m_count[bucket];
    }
    // Part can only start that far in front of a place of its rarest pair.
    std::size_t offset = 0;
    for (std::size_t i = 1; i + 1 < part.size(); ++i) {
        if (m_count[bucketAt(part, i)] < m_count[bucketAt(part, offset)])
            offset = i;
    }
    for (std::uint32_t place = m_last[bucketAt(part, offset)]; place != 0; place = m_before[place - 1]) {
        const std::size_t pairAt = place - 1;
        if (pairAt < offset || text[pairAt] != part[offset] || text[pairAt + 1] != part[offset + 1])
            continue;
        const std::size_t at = pairAt - offset;
        if (text.size() - at >= part.size()
            && std::memcmp(text.data() + at, part.data(), part.size() * sizeof(char16_t)) == 0)
            return true;
    }
    return false;
}

} // namespace fleetwright
