// The parts of FileLookup that are the same on every platform: the wildcard rules, case folding, order.
#include "platform/filelookup.h"

#include <algorithm>
#include <vector>

namespace fleetwright::platform {

namespace {

// The pattern as Windows hands it to the file system: "?" is always the DOS question mark, "*" before a
// point the DOS star, and a point before "*", "?" or the end the DOS point.
enum class Token
{
    Literal,
    Star,
    DosStar,
    DosQuestion,
    DosDot,
};

struct PatternItem
{
    Token token;
    char16_t ch;
};

std::vector<PatternItem> translate(std::u16string_view pattern)
{
    std::vector<PatternItem> items;
    items.reserve(pattern.size());
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char16_t ch = pattern[i];
        const char16_t following = i + 1 < pattern.size() ? pattern[i + 1] : u'\0';
        if (ch == u'?')
            items.push_back({Token::DosQuestion, ch});
        else if (ch == u'*')
            items.push_back({following == u'.' ? Token::DosStar : Token::Star, ch});
        else if (ch == u'.' && (following == u'\0' || following == u'*' || following == u'?'))
            items.push_back({Token::DosDot, ch});
        else
            items.push_back({Token::Literal, foldNameChar(ch)});
    }
    return items;
}

class Matcher
{
public:
    Matcher(std::u16string_view pattern, std::u16string_view name)
        : m_items(translate(pattern))
        , m_name(name)
        , m_lastDot(name.rfind(u'.'))
        , m_memo((m_items.size() + 1) * (name.size() + 1), UNKNOWN)
    {}

    bool matches() { return matchFrom(0, 0); }

private:
    static constexpr signed char UNKNOWN = -1;

    bool matchFrom(std::size_t item, std::size_t pos)
    {
        signed char &memo = m_memo[item * (m_name.size() + 1) + pos];
        if (memo == UNKNOWN)
            memo = compute(item, pos) ? 1 : 0;
        return memo == 1;
    }

    bool compute(std::size_t item, std::size_t pos)
    {
        const std::size_t size = m_name.size();
        if (item == m_items.size())
            return pos == size;
        const PatternItem &current = m_items[item];
        const bool atEnd = pos == size;
        switch (current.token) {
        case Token::Literal:
            return !atEnd && foldNameChar(m_name[pos]) == current.ch && matchFrom(item + 1, pos + 1);
        case Token::Star:
            for (std::size_t end = pos; end <= size; ++end) {
                if (matchFrom(item + 1, end))
                    return true;
            }
            return false;
        case Token::DosStar: {
            // Stops in front of the name's last point while one lies ahead.
            const std::size_t limit = m_lastDot != std::u16string_view::npos && m_lastDot >= pos ? m_lastDot : size;
            for (std::size_t end = pos; end <= limit; ++end) {
                if (matchFrom(item + 1, end))
                    return true;
            }
            return false;
        }
        case Token::DosQuestion:
            if (atEnd || m_name[pos] == u'.')
                return matchFrom(item + 1, pos);
            return matchFrom(item + 1, pos + 1);
        case Token::DosDot:
            if (atEnd)
                return matchFrom(item + 1, pos);
            return m_name[pos] == u'.' && matchFrom(item + 1, pos + 1);
        }
        return false;
    }

    std::vector<PatternItem> m_items;
    std::u16string_view m_name;
    std::size_t m_lastDot;
    std::vector<signed char> m_memo;
};

} // namespace

bool matchesWildcard(std::u16string_view pattern, std::u16string_view name)
{
    if (pattern.empty())
        return false;
    return Matcher(pattern, name).matches();
}

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

std::optional<std::u16string> FileLookup::next()
{
    if (m_next >= m_names.size())
        return std::nullopt;
    return m_names[m_next++];
}

std::optional<std::filesystem::path> FileLookup::findFile(const std::u16string &path)
{
    if (path.empty())
        return std::nullopt;
    std::optional<std::filesystem::path> resolved = resolve(std::filesystem::path(path));
    std::error_code error;
    if (!resolved || std::filesystem::is_directory(*resolved, error))
        return std::nullopt;
    return resolved;
}

} // namespace fleetwright::platform
