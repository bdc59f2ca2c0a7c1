#include <string>

#include <gtest/gtest.h>

#include "platform/utf8.h"

using namespace fleetwright::platform;

TEST(Utf8, RoundTrip)
{
    const std::u16string text = u"A \u00E9\u00A6\u20AC \u4E2D \U0001F600 \uFFFF";
    const std::string bytes = toUtf8(text);
    EXPECT_EQ(bytes, "A \xC3\xA9\xC2\xA6\xE2\x82\xAC \xE4\xB8\xAD \xF0\x9F\x98\x80 \xEF\xBF\xBF");
    EXPECT_EQ(fromUtf8(bytes), text);
    EXPECT_EQ(toUtf8(u""), "");
    EXPECT_EQ(fromUtf8(std::string("a\0b", 3)), std::u16string(u"a\0b", 3));
}

TEST(Utf8, OddInput)
{
    // A lone surrogate cannot be written as UTF-8.
    EXPECT_EQ(toUtf8(std::u16string(u"a") + char16_t(0xD800) + u"b"),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(toUtf8(std::u16string(1, char16_t(0xDC00))), "\xEF\xBF\xBD");
    struct Row
    {
        const char *bytes;
        const char16_t *text;
    };
    // Bytes that start no valid sequence read as Windows-1252.
    const Row rows[] = {
        {"caf\xE9", u"caf\u00E9"},
        {"\x80 5", u"\u20AC 5"},
        {"\xC3", u"\u00C3"},                               // cut short
        {"\xC0\xAF", u"\u00C0\u00AF"},                     // overlong
        {"\xED\xA0\x80", u"\u00ED\u00A0\u20AC"},           // an encoded surrogate
        {"\xF4\x90\x80\x80", u"\u00F4\u0090\u20AC\u20AC"}, // beyond U+10FFFF
        {"\xE2\x82", u"\u00E2\u201A"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.bytes);
        EXPECT_EQ(fromUtf8(row.bytes), row.text);
    }
}
