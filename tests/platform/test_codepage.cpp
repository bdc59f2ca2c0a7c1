#include <string>

#include <gtest/gtest.h>

#include "platform/codepage.h"

using namespace fleetwright::platform;

TEST(CodePage, EveryByteRoundTrips)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all.push_back(static_cast<char>(byte));
    const std::u16string wide = fromCodePage(all);
    ASSERT_EQ(wide.size(), 256u);
    EXPECT_EQ(toCodePage(wide), all);
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        EXPECT_EQ(static_cast<unsigned char>(wideToCodePage(codePageToWide(static_cast<unsigned char>(byte)))), byte);
    }
}

TEST(CodePage, Mapping)
{
    struct Row
    {
        unsigned char byte;
        char16_t wide;
    };
    const Row rows[] = {
        {'A', u'A'},
        {0x00, 0x0000},
        {0x7F, 0x007F},
        {0x80, u'€'},
        {0x8A, u'Š'},
        {0x9A, u'š'},
        {0x9F, u'Ÿ'},
        {0x96, u'–'},
        {0x99, u'™'},
        {0xA0, 0x00A0},
        {0xE9, u'é'},
        {0xFF, u'ÿ'},
        // The five bytes the code page leaves undefined stand for the C1 controls of the same value.
        {0x81, 0x0081},
        {0x8D, 0x008D},
        {0x8F, 0x008F},
        {0x90, 0x0090},
        {0x9D, 0x009D},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.byte);
        EXPECT_EQ(codePageToWide(row.byte), row.wide);
        EXPECT_EQ(static_cast<unsigned char>(wideToCodePage(row.wide)), row.byte);
    }
    EXPECT_EQ(fromCodePage("\x80 5"), u"€ 5");
    EXPECT_EQ(toCodePage(u"€ 5"), "\x80 5");
}

TEST(CodePage, CharactersOutsideBecomeQuestionMarks)
{
    EXPECT_EQ(toCodePage(u"a\u0100b"), "a?b");    // Ā
    EXPECT_EQ(toCodePage(u"\u4E2D\u6587"), "??"); // two CJK characters
    EXPECT_EQ(wideToCodePage(u'\u0080'), '?');    // a C1 control the code page maps elsewhere
    // One character beyond the 16-bit range, a surrogate pair: one "?".
    EXPECT_EQ(toCodePage(u"x\U0001F600y"), "x?y");
    // A lone surrogate is one unknown character as well.
    EXPECT_EQ(toCodePage(std::u16string(u"x") + char16_t(0xD800) + u"y"), "x?y");
    EXPECT_EQ(toCodePage(std::u16string(u"x") + char16_t(0xDC00)), "x?");
}

TEST(CodePage, FoldUpper)
{
    EXPECT_EQ(foldUpper("fltsim.0"), "FLTSIM.0");
    EXPECT_EQ(foldUpper(toCodePage(u"é")), toCodePage(u"É"));
    EXPECT_EQ(foldUpper(toCodePage(u"š")), toCodePage(u"Š"));
    EXPECT_EQ(foldUpper(toCodePage(u"ÿ")), toCodePage(u"Ÿ"));
    EXPECT_EQ(foldUpper(toCodePage(u"œž")), toCodePage(u"ŒŽ"));
    EXPECT_EQ(foldUpper(toCodePage(u"ÉŠŸ")), toCodePage(u"ÉŠŸ"));
    // ÷ and × sit among the letters but are no letters.
    EXPECT_EQ(foldUpper(toCodePage(u"÷")), toCodePage(u"÷"));
    EXPECT_EQ(foldUpper(toCodePage(u"×")), toCodePage(u"×"));
    EXPECT_EQ(foldByteUpper(0xF7), 0xF7);
    EXPECT_EQ(foldByteUpper(0xD7), 0xD7);
    // ß has no single capital in the code page.
    EXPECT_EQ(foldByteUpper(0xDF), 0xDF);
    EXPECT_EQ(foldByteUpper('['), '[');
}
