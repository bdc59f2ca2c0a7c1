#include <string>

#include <gtest/gtest.h>

#include "platform/codepage.h"
#include "platform/utf8.h"

using namespace fleetwright::platform;

TEST(CodePage, MappingAndRoundTrip)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all.push_back(static_cast<char>(byte));
    ASSERT_EQ(fromCodePage(all).size(), 256u);
    EXPECT_EQ(toCodePage(fromCodePage(all)), all);
    // The five bytes the code page leaves undefined (0x81, 0x8D, ...) stand for the C1 controls of that value.
    const std::pair<unsigned char, char16_t> rows[] = {
        {'A', u'A'},  {0x00, 0},    {0x7F, 0x7F}, {0x80, u'€'}, {0x8A, u'Š'}, {0x9A, u'š'},
        {0x9F, u'Ÿ'}, {0x96, u'–'}, {0x99, u'™'}, {0xA0, 0xA0}, {0xE9, u'é'}, {0xFF, u'ÿ'},
        {0x81, 0x81}, {0x8D, 0x8D}, {0x8F, 0x8F}, {0x90, 0x90}, {0x9D, 0x9D}};
    for (const auto &[byte, wide] : rows) {
        EXPECT_EQ(codePageToWide(byte), wide) << int(byte);
        EXPECT_EQ(static_cast<unsigned char>(wideToCodePage(wide)), byte) << int(byte);
    }
    // Characters outside become "?": one for a surrogate pair, one for a lone surrogate.
    EXPECT_EQ(toCodePage(u"\u20AC a\u0100b\u4E2D\U0001F600"), "\x80 a?b??");
    EXPECT_EQ(toCodePage(std::u16string(u"x") + char16_t(0xD800) + u"y" + char16_t(0xDC00)), "x?y?");
    EXPECT_EQ(wideToCodePage(u'\u0080'), '?') << "a C1 control the code page maps elsewhere";
}

TEST(CodePage, FoldUpper)
{
    EXPECT_EQ(foldUpper("fltsim.0[]"), "FLTSIM.0[]");
    EXPECT_EQ(foldUpper(toCodePage(u"éšÿœžàþÉŠŸ")), toCodePage(u"ÉŠŸŒŽÀÞÉŠŸ"));
    // ÷ and × sit among the letters but are no letters; ß has no single capital.
    for (const int byte : {0xD7, 0xDF, 0xB5, 0xAA})
        EXPECT_EQ(foldByteUpper(byte), byte) << byte;
    for (int byte = 0xE0; byte <= 0xFE; ++byte)
        EXPECT_EQ(foldByteUpper(byte), byte == 0xF7 ? 0xF7 : byte - 0x20) << byte;
}

TEST(Utf8, RoundTripAndOddInput)
{
    const std::u16string text = u"A \u00E9\u00A6\u20AC \u4E2D \U0001F600 \uFFFF";
    const std::string bytes = "A \xC3\xA9\xC2\xA6\xE2\x82\xAC \xE4\xB8\xAD \xF0\x9F\x98\x80 \xEF\xBF\xBF";
    EXPECT_EQ(toUtf8(text), bytes);
    EXPECT_EQ(fromUtf8(bytes), text);
    EXPECT_EQ(fromUtf8(std::string("a\0b", 3)), std::u16string(u"a\0b", 3));
    // A lone surrogate cannot be written as UTF-8.
    EXPECT_EQ(toUtf8(std::u16string(u"a") + char16_t(0xD800) + u"b" + char16_t(0xDC00)),
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD");
    // Bytes that start no valid sequence read as Windows-1252: cut short, overlong, a surrogate, beyond U+10FFFF.
    const std::pair<const char *, const char16_t *> rows[] = {{"\x80 5", u"\u20AC 5"},
                                                              {"\xC3", u"\u00C3"},
                                                              {"\xE2\x82", u"\u00E2\u201A"},
                                                              {"\xC0\xAF", u"\u00C0\u00AF"},
                                                              {"\xED\xA0\x80", u"\u00ED\u00A0\u20AC"},
                                                              {"\xF4\x90\x80\x80", u"\u00F4\u0090\u20AC\u20AC"}};
    for (const auto &[bytes, text] : rows)
        EXPECT_EQ(fromUtf8(bytes), text) << bytes;
}
