#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "platform/utf8.h"

using namespace fleetwright;
using platform::toUtf8;

TEST(IsNumericText, FollowsTheRunTimesNumberForms)
{
    const std::pair<std::u16string, bool> rows[] = {
        {u"0", true},    {u"32767", true}, {u" 12 ", true}, {u"-1", true},     {u"+1", true},     {u"1.5", true},
        {u".5", true},   {u"5.", true},    {u"1e5", true},  {u"1E-5", true},   {u"2.5e+3", true}, {u"&H1F", true},
        {u"&hff", true}, {u"&O17", true},  {u"&o7", true},  {u"", false},      {u" ", false},     {u".", false},
        {u"-", false},   {u"1e", false},   {u"e5", false},  {u"1.2.3", false}, {u"&H", false},    {u"&O8", false},
        {u"&HG", false}, {u"12a", false},  {u"abc", false}, {u"1 2", false},   {u"\t1", false},   {u"--1", false},
    };
    for (const auto &[text, numeric] : rows)
        EXPECT_EQ(isNumericText(text), numeric) << toUtf8(text);
    // A conversion also takes "D" for the exponent; the check of typed text does not.
    for (const std::u16string text : {u"1D3", u" 2d-1 "}) {
        EXPECT_FALSE(isNumericText(text)) << toUtf8(text);
        EXPECT_TRUE(convertsToNumber(text)) << toUtf8(text);
    }
}

// The two leading-number rules read the same texts differently, and files rely on each.
TEST(Val, FullAndPlainDecimalRulesDifferWhereTheyShould)
{
    const std::tuple<std::u16string, double, double> rows[] = {
        // text               Val       valPlainDecimal
        {u"36.15  //Feet", 36.15, 36.15},
        {u" 1 2", 12, 12},
        {u"-\t3.5", -3.5, -3.5},
        {u"1.5e3", 1500, 1.5},
        {u"1D3", 1000, 1},
        {u"&H1F", 31, 0},
        {u"&HFFFF", -1, 0},
        {u"&o17", 15, 0},
        {u"1\n2", 12, 1},
        {u"abc", 0, 0},
        {u"", 0, 0},
    };
    for (const auto &[text, full, plain] : rows) {
        SCOPED_TRACE(toUtf8(text));
        EXPECT_DOUBLE_EQ(Val(text), full);
        EXPECT_DOUBLE_EQ(valPlainDecimal(text), plain);
    }
    EXPECT_THROW(Val(u"1e999"), RuntimeError);
    EXPECT_THROW(Val(u"&H100000000"), RuntimeError);
    EXPECT_EQ(Val(u"1e-999"), 0);
    EXPECT_EQ(valPlainDecimal(u"1e999"), 1);
}
