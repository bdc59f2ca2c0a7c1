#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace fleetwright {

// The text before the first "//", with blanks (U+0020) trimmed at both ends; every reader of a value from
// aircraft.cfg or model.cfg applies it. A tab is no blank and stays: "title=abc\t// x" keeps its tab.
// "//" has no escape, so "description=see a//b" gives "description=see a".
std::u16string StripComment(const std::u16string &text);

// Whether value equals one element of array as a whole, compared exactly. A value that is not numeric is
// first folded to upper (lower) case, and the caller's variable keeps the folded text; the elements are
// compared as they stand, so callers fold their lists themselves.
//
// The search joins the elements with NUL and looks for NUL + value + NUL, so an empty value matches an empty
// element (and an empty list), and a value holding a NUL can match two neighbouring elements; callers rely on
// neither.
bool IsInArrayUpper(std::u16string &value, const std::vector<std::u16string> &array);
bool IsInArrayLower(std::u16string &value, const std::vector<std::u16string> &array);

// Tells whether part occurs in a text (an empty part always does), as text.find(part) would, for a text that
// only grows at its end, such as a list that rows are added to. It keeps where each pair of characters stands,
// so that a search looks at the few places where part could start instead of going through the whole text.
class GrowingTextSearch
{
public:
    bool contains(std::u16string_view text, std::u16string_view part);

private:
    static constexpr std::size_t BUCKETS = 1024;
    // The places where a pair of characters starts, chained by the pair's bucket: one more than the last
    // place of each bucket, and for each place one more than the place before it in its bucket (0: none).
    std::vector<std::uint32_t> m_last;
    std::vector<std::uint32_t> m_count; // places in each bucket
    std::vector<std::uint32_t> m_before;
    std::size_t m_indexed = 0; // the pairs that start before this place are known
};

} // namespace fleetwright
