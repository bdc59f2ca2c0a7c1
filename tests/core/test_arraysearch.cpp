#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/arraysearch.h"
#include "platform/utf8.h"

using fleetwright::GrowingTextSearch;
using fleetwright::IsInArrayLower;
using fleetwright::IsInArrayUpper;
using fleetwright::isNumericText;
using fleetwright::StripComment;

namespace {

std::string show(const std::u16string &text)
{
    return fleetwright::platform::toUtf8(text);
}

} // namespace

TEST(StripComment, CutsAtFirstDoubleSlashAndTrimsBlanksOnly)
{
    const struct
    {
        std::u16string line;
        std::u16string expected;
    } rows[] = {
        {u"title=abc // note", u"title=abc"},
        {u"   // only a comment", u""},
        {u"description=see a//b", u"description=see a"},
        {u"title=abc\t// note", u"title=abc\t"},
        {u"\ttitle=abc", u"\ttitle=abc"},
        {u"  texture=blue  ", u"texture=blue"},
        {u"exit.0=1,2 //note", u"exit.0=1,2"},
        {u"model=sub/dir /x", u"model=sub/dir /x"},
        {u"a ///b // c", u"a"},
        {u"url=http://example", u"url=http:"},
        {u"[fltsim.0]//x", u"[fltsim.0]"},
        {u"", u""},
        {u"    ", u""},
        {u"//", u""},
        {u"title=Caf\u00E9 \u20AC ", u"title=Caf\u00E9 \u20AC"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(show(row.line));
        EXPECT_EQ(StripComment(row.line), row.expected);
    }
}

TEST(IsNumericText, FollowsTheRunTimesNumberForms)
{
    const struct
    {
        std::u16string text;
        bool numeric;
    } rows[] = {
        {u"0", true},    {u"32767", true}, {u" 12 ", true}, {u"-1", true},     {u"+1", true},     {u"1.5", true},
        {u".5", true},   {u"5.", true},    {u"1e5", true},  {u"1E-5", true},   {u"2.5e+3", true}, {u"&H1F", true},
        {u"&hff", true}, {u"&O17", true},  {u"&o7", true},  {u"", false},      {u" ", false},     {u".", false},
        {u"-", false},   {u"1e", false},   {u"e5", false},  {u"1.2.3", false}, {u"&H", false},    {u"&O8", false},
        {u"&HG", false}, {u"12a", false},  {u"abc", false}, {u"1 2", false},   {u"\t1", false},   {u"--1", false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(show(row.text));
        EXPECT_EQ(isNumericText(row.text), row.numeric);
    }
}

TEST(IsInArray, MatchesWholeElementsAndLeavesTheValueFolded)
{
    const std::vector<std::u16string> zeroTenTwo = {u"0", u"10", u"2"};
    const std::vector<std::u16string> zeroOne = {u"0", u"1"};
    const struct
    {
        const char *name;
        bool upper;
        std::u16string value;
        std::vector<std::u16string> array;
        bool found;
        std::u16string valueAfter;
    } rows[] = {
        {"1 is no part of 10", true, u"1", zeroTenTwo, false, u"1"},
        {"1 is a whole element", true, u"1", zeroOne, true, u"1"},
        {"first element", true, u"0", zeroTenTwo, true, u"0"},
        {"last element", true, u"2", zeroTenTwo, true, u"2"},
        {"text folds up", true, u"fltsim.0", {u"GENERAL", u"FLTSIM.0"}, true, u"FLTSIM.0"},
        {"elements are not folded", true, u"fltsim.0", {u"fltsim.0"}, false, u"FLTSIM.0"},
        {"code page letters fold up",
         true,
         u"caf\u00E9 \u0161\u0153\u017E\u00FF",
         {u"CAF\u00C9 \u0160\u0152\u017D\u0178"},
         true,
         u"CAF\u00C9 \u0160\u0152\u017D\u0178"},
        {"sharp s and division sign stay", true, u"\u00DF\u00F7", {}, false, u"\u00DF\u00F7"},
        {"numeric text is not folded", true, u"1e5", {u"1E5"}, false, u"1e5"},
        {"hexadecimal text is not folded", true, u"&hff", {u"&HFF"}, false, u"&hff"},
        {"part of an element", true, u"ab", {u"xab", u"aby"}, false, u"AB"},
        {"empty value, empty element", true, u"", {u"a", u""}, true, u""},
        {"empty value, no empty element", true, u"", {u"a", u"b"}, false, u""},
        {"empty list", true, u"x", {}, false, u"X"},
        {"empty value, empty list", true, u"", {}, true, u""},
        {"an element's NUL parts it", true, u"b", {std::u16string(u"a\0B", 3)}, true, u"B"},
        {"text folds down", false, u"Texture.KLM", {u"texture", u"texture.klm"}, true, u"texture.klm"},
        {"code page letters fold down",
         false,
         u"\u00C9\u0160\u0152\u017D\u0178",
         {},
         false,
         u"\u00E9\u0161\u0153\u017E\u00FF"},
        {"multiplication sign stays", false, u"A\u00D7B", {u"a\u00D7b"}, true, u"a\u00D7b"},
        {"numeric text is not folded down", false, u"1E5", {u"1e5"}, false, u"1E5"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        std::u16string value = row.value;
        const bool found = row.upper ? IsInArrayUpper(value, row.array) : IsInArrayLower(value, row.array);
        EXPECT_EQ(found, row.found);
        EXPECT_EQ(value, row.valueAfter);
    }
}

TEST(GrowingTextSearch, FindsWhatFindFindsAsTheTextGrows)
{
    // Rows of a small alphabet, so that pairs repeat and parts are often found and often not.
    std::mt19937 random(7);
    const auto word = [&](std::size_t length) {
        std::u16string text;
        for (std::size_t i = 0; i < length; ++i)
            text += static_cast<char16_t>(u"abc\u00E9\u0100\u0161"[random() % 6]);
        return text;
    };
    GrowingTextSearch search;
    std::u16string text;
    int found = 0;
    for (int row = 0; row < 300; ++row) {
        const std::u16string part = word(random() % 6);
        const bool expected = text.find(part) != std::u16string::npos;
        EXPECT_EQ(search.contains(text, part), expected) << row;
        found += expected ? 1 : 0;
        text += part + u"\u00A6";
    }
    EXPECT_GT(found, 50);
    EXPECT_LT(found, 290);
    // A text that starts again from nothing is indexed anew.
    EXPECT_FALSE(search.contains(u"xy", u"ab"));
    EXPECT_TRUE(search.contains(u"xyab", u"ab"));
}
