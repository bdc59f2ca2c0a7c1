#include "core/arraysearch.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "platform/filelookup.h"

namespace fleetwright {

namespace {

bool isDigit(char16_t ch)
{
    return ch >= u'0' && ch <= u'9';
}

bool isHexDigit(char16_t ch)
{
    return isDigit(ch) || (ch >= u'a' && ch <= u'f') || (ch >= u'A' && ch <= u'F');
}

bool isOctalDigit(char16_t ch)
{
    return ch >= u'0' && ch <= u'7';
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
    const std::u16string_view digits = body.substr(2);
    if (kind == u'H' || kind == u'h') {
        for (char16_t ch : digits) {
            if (!isHexDigit(ch))
                return false;
        }
        return true;
    }
    if (kind == u'O' || kind == u'o') {
        for (char16_t ch : digits) {
            if (!isOctalDigit(ch))
                return false;
        }
        return true;
    }
    return false;
}

bool isDecimalNumber(std::u16string_view body)
{
    std::size_t pos = 0;
    if (pos < body.size() && (body[pos] == u'+' || body[pos] == u'-'))
        ++pos;
    std::size_t digits = 0;
    while (pos < body.size() && isDigit(body[pos])) {
        ++pos;
        ++digits;
    }
    if (pos < body.size() && body[pos] == u'.') {
        ++pos;
        while (pos < body.size() && isDigit(body[pos])) {
            ++pos;
            ++digits;
        }
    }
    if (digits == 0)
        return false;
    if (pos < body.size() && (body[pos] == u'E' || body[pos] == u'e')) {
        ++pos;
        if (pos < body.size() && (body[pos] == u'+' || body[pos] == u'-'))
            ++pos;
        std::size_t exponentDigits = 0;
        while (pos < body.size() && isDigit(body[pos])) {
            ++pos;
            ++exponentDigits;
        }
        if (exponentDigits == 0)
            return false;
    }
    return pos == body.size();
}

std::u16string_view trimBlanks(std::u16string_view text)
{
    const std::size_t first = text.find_first_not_of(u' ');
    if (first == std::u16string_view::npos)
        return {};
    const std::size_t last = text.find_last_not_of(u' ');
    return text.substr(first, last - first + 1);
}

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

bool isInArray(std::u16string &value, const std::vector<std::u16string> &array, char16_t (*fold)(char16_t))
{
    if (!isNumericText(value)) {
        for (char16_t &ch : value)
            ch = fold(ch);
    }
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
    return std::u16string(trimBlanks(kept));
}

bool isNumericText(const std::u16string &text)
{
    const std::u16string_view body = trimBlanks(text);
    return isHexOrOctal(body) || isDecimalNumber(body);
}

bool IsInArrayUpper(std::u16string &value, const std::vector<std::u16string> &array)
{
    return isInArray(value, array, platform::foldNameChar);
}

bool IsInArrayLower(std::u16string &value, const std::vector<std::u16string> &array)
{
    return isInArray(value, array, lowerChar);
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

} // namespace fleetwright
