#include <random>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "core/arraysearch.h"
#include "platform/utf8.h"

using namespace fleetwright;
using platform::toUtf8;

// The value is folded to the function's case unless it reads as a number; the array is taken as it is.
TEST(IsInArray, MatchesWholeElementsAndLeavesTheValueFolded)
{
    using Array = std::vector<std::u16string>;
    const std::tuple<bool, std::u16string, Array, bool, std::u16string> rows[] = {
        {true, u"1", {u"01", u"10", u"2"}, false, u"1"},
        {true, u"0", {u"0", u"1"}, true, u"0"},
        {true, u"1", {u"0", u"1"}, true, u"1"},
        {true, u"fltsim.0", {u"GENERAL", u"FLTSIM.0"}, true, u"FLTSIM.0"},
        {true, u"fltsim.0", {u"fltsim.0"}, false, u"FLTSIM.0"},
        {true, u"\u00E9\u0161\u00FF", {u"\u00C9\u0160\u0178"}, true, u"\u00C9\u0160\u0178"},
        {true, u"\u00DF\u00F7", {}, false, u"\u00DF\u00F7"},
        {true, u"1e5", {u"1E5"}, false, u"1e5"},
        {true, u"", {u"a", u""}, true, u""},
        {true, u"", {u"a", u"b"}, false, u""},
        {true, u"", {}, true, u""},
        {true, u"b", {std::u16string(u"a\0B", 3)}, true, u"B"},
        {false, u"Texture.KLM", {u"texture", u"texture.klm"}, true, u"texture.klm"},
        {false, u"\u00C9\u0160\u0178", {}, false, u"\u00E9\u0161\u00FF"},
        {false, u"A\u00D7B", {u"a\u00D7b"}, true, u"a\u00D7b"},
        {false, u"1E5", {u"1e5"}, false, u"1E5"},
    };
    for (const auto &[upper, before, array, found, after] : rows) {
        std::u16string value = before;
        EXPECT_EQ(upper ? IsInArrayUpper(value, array) : IsInArrayLower(value, array), found) << toUtf8(before);
        EXPECT_EQ(value, after);
    }
}

TEST(GrowingTextSearch, FindsWhatFindFindsAsTheTextGrows)
{
    // A small alphabet, so that parts are often found and often not.
    std::mt19937 random(7);
    GrowingTextSearch search;
    std::u16string text;
    int found = 0;
    for (int row = 0; row < 300; ++row) {
        std::u16string part;
        for (std::size_t i = random() % 6; i > 0; --i)
            part += static_cast<char16_t>(u"abc\u00E9\u0100\u0161"[random() % 6]);
        const bool expected = text.find(part) != std::u16string::npos;
        EXPECT_EQ(search.contains(text, part), expected) << row;
        found += expected ? 1 : 0;
        text += part + u"\u00A6";
    }
    EXPECT_TRUE(found > 50 && found < 290) << found;
    // A text that starts again from nothing is indexed anew.
    EXPECT_FALSE(search.contains(u"xy", u"ab"));
    EXPECT_TRUE(search.contains(u"xyab", u"ab"));
}
