#include <gtest/gtest.h>

#include "parking/parkingentry.h"

using namespace fleetwright;

TEST(ParkingTypes, CaptionAndSelectionFollowTheListOrder)
{
    const ParkingTypeSelection selected = parkingTypesFromCaption(u"RAMP,GATE,gate, DOCK,JETWAY");
    EXPECT_EQ(selected, (ParkingTypeSelection {false, false, true, false, false, true}));
    EXPECT_EQ(parkingTypesCaption(selected), u"GATE,RAMP");
    EXPECT_EQ(parkingTypesFromCaption(u""), ParkingTypeSelection {});
    EXPECT_EQ(parkingTypesCaption(ParkingTypeSelection {}), u"");
    EXPECT_EQ(parkingTypesCaption({true, true, true, true, true, true}), u"CARGO,DOCK,GATE,MIL_CARGO,MIL_COMBAT,RAMP");
}

TEST(ParkingCodes, CountCommasLooksAtTheLowByte)
{
    EXPECT_EQ(CountCommas(u""), 0);
    EXPECT_EQ(CountCommas(u"KLM,MP,,X"), 3);
    EXPECT_EQ(CountCommas(u"\u012C"), 1);
}

TEST(ParkingCodes, FiveCodesOfFiveCharactersAtMost)
{
    const auto press = [](const char16_t *text, char16_t key) { return parkingCodeKeyPress(text, key); };

    // A fifth comma is refused; with three there is room for one more.
    EXPECT_EQ(press(u"A,B,C,D,E", u',').key, 0);
    EXPECT_EQ(press(u"A,B,C,D,E", u',').message, TOO_MANY_CODES);
    EXPECT_EQ(press(u"A,B,C,D", u',').key, u',');
    EXPECT_TRUE(press(u"A,B,C,D", u',').message.empty());
    // Letters after five codes are held by the length rule only.
    EXPECT_EQ(press(u"A,B,C,D,E", u'x').key, u'x');

    // A full last code takes no more characters, but a comma and Backspace.
    EXPECT_EQ(press(u"KLMAB", u'C').key, 0);
    EXPECT_EQ(press(u"KLMAB", u'C').message, CODE_TOO_LONG);
    EXPECT_EQ(press(u"KLMAB", u',').key, u',');
    EXPECT_EQ(press(u"KLMAB", 8).key, 8);
    EXPECT_EQ(press(u"KLMA", u'c').key, u'c');
    EXPECT_EQ(press(u"KLM,MPABC", u'1').message, CODE_TOO_LONG);
    // Only the last code counts, so a long first code passes.
    EXPECT_EQ(press(u"KLMABCDEF,MP", u'x').key, u'x');

    // A blank is always swallowed; at a full code it brings the length message as well.
    EXPECT_EQ(press(u"KL", u' ').key, 0);
    EXPECT_TRUE(press(u"KL", u' ').message.empty());
    EXPECT_EQ(press(u"KLMAB", u' ').message, CODE_TOO_LONG);
}
