// Windows' wildcard rules: the pattern translated into the tokens the file system matches by, and the matcher.
#include "platform/wildcard.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "platform/namefolding.h"

namespace fleetwright::platform {

// The pattern as Windows hands it to the file system: "?" is always the DOS question mark, "*" before a
// point the DOS star, and a point before "*", "?" or the end the DOS point.
enum class WildcardToken
{
    Literal,
    Star,
    DosStar,
    DosQuestion,
    DosDot,
};

struct PatternItem
{
    WildcardToken token;
    char16_t ch;
};

namespace {

void translate(std::u16string_view pattern, std::vector<PatternItem> &items)
{
    items.clear();
    items.reserve(pattern.size());
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char16_t ch = pattern[i];
        const char16_t following = i + 1 < pattern.size() ? pattern[i + 1] : u'\0';
        if (ch == u'?')
            items.push_back({WildcardToken::DosQuestion, ch});
        else if (ch == u'*')
            items.push_back({following == u'.' ? WildcardToken::DosStar : WildcardToken::Star, ch});
        else if (ch == u'.' && (following == u'\0' || following == u'*' || following == u'?'))
            items.push_back({WildcardToken::DosDot, ch});
        else
            items.push_back({WildcardToken::Literal, foldNameChar(ch)});
    }
}

class Matcher
{
public:
    // memo is scratch space that a caller matching many names may hand in again and again.
    Matcher(const std::vector<PatternItem> &items, std::u16string_view name, std::vector<signed char> &memo)
        : m_items(items)
        , m_name(name)
        , m_lastDot(name.rfind(u'.'))
        , m_memo(memo)
    {
        m_memo.assign((m_items.size() + 1) * (name.size() + 1), UNKNOWN);
    }

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
        case WildcardToken::Literal:
            return !atEnd && foldNameChar(m_name[pos]) == current.ch && matchFrom(item + 1, pos + 1);
        case WildcardToken::Star:
            for (std::size_t end = pos; end <= size; ++end) {
                if (matchFrom(item + 1, end))
                    return true;
            }
            return false;
        case WildcardToken::DosStar: {
            // Stops in front of the name's last point while one lies ahead.
            const std::size_t limit = m_lastDot != std::u16string_view::npos && m_lastDot >= pos ? m_lastDot : size;
            for (std::size_t end = pos; end <= limit; ++end) {
                if (matchFrom(item + 1, end))
                    return true;
            }
            return false;
        }
        case WildcardToken::DosQuestion:
            if (atEnd || m_name[pos] == u'.')
                return matchFrom(item + 1, pos);
            return matchFrom(item + 1, pos + 1);
        case WildcardToken::DosDot:
            if (atEnd)
                return matchFrom(item + 1, pos);
            return m_name[pos] == u'.' && matchFrom(item + 1, pos + 1);
        }
        return false;
    }

    const std::vector<PatternItem> &m_items;
    std::u16string_view m_name;
    std::size_t m_lastDot;
    std::vector<signed char> &m_memo;
};

} // namespace

WildcardPattern::WildcardPattern(std::u16string_view pattern)
{
    // Only the general form keeps the translated pattern: the others read it once, from scratch space.
    thread_local std::vector<PatternItem> items;
    translate(pattern, items);
    const auto literal = [](const PatternItem &item) { return item.token == WildcardToken::Literal; };
    if (items.size() == 1 && items.front().token == WildcardToken::Star) {
        m_form = Form::Any;
    } else if (!items.empty() && std::all_of(items.begin(), items.end(), literal)) {
        m_form = Form::Exact;
    } else if (items.size() > 1
               && (items.front().token == WildcardToken::Star || items.front().token == WildcardToken::DosStar)
               && std::all_of(items.begin() + 1, items.end(), literal)) {
        // A star before a point stops at the name's last point, which is where such an ending starts anyway.
        m_form = Form::Ending;
    } else if (items.size() > 2 && items.back().token == WildcardToken::Star
               && items[items.size() - 2].token == WildcardToken::DosDot
               && std::all_of(items.begin(), items.end() - 2, literal)) {
        // "texture.*": the name, then the end or a point and anything.
        m_form = Form::NameAndAnyExtension;
    }
    const std::size_t literalFrom = m_form == Form::Ending ? 1 : 0;
    const std::size_t literalTo = m_form == Form::NameAndAnyExtension ? items.size() - 2 : items.size();
    if (m_form == Form::General)
        m_items = items;
    else
        for (std::size_t i = literalFrom; i < literalTo; ++i)
            m_literal += items[i].ch;
}

WildcardPattern::~WildcardPattern() = default;

bool WildcardPattern::matches(std::u16string_view name) const
{
    const auto endsLike = [&](std::size_t from) {
        return std::equal(m_literal.begin(), m_literal.end(), name.begin() + static_cast<std::ptrdiff_t>(from),
                          [](char16_t wanted, char16_t ch) { return foldNameChar(ch) == wanted; });
    };
    switch (m_form) {
    case Form::Any:
        return true;
    case Form::Exact:
        return name.size() == m_literal.size() && endsLike(0);
    case Form::Ending:
        return name.size() >= m_literal.size() && endsLike(name.size() - m_literal.size());
    case Form::NameAndAnyExtension:
        return name.size() >= m_literal.size() && (name.size() == m_literal.size() || name[m_literal.size()] == u'.')
            && std::equal(m_literal.begin(), m_literal.end(), name.begin(),
                          [](char16_t wanted, char16_t ch) { return foldNameChar(ch) == wanted; });
    case Form::General:
        break;
    }
    if (m_items.empty())
        return false;
    return Matcher(m_items, name, m_memo).matches();
}

bool matchesWildcard(std::u16string_view pattern, std::u16string_view name)
{
    return WildcardPattern(pattern).matches(name);
}

} // namespace fleetwright::platform
