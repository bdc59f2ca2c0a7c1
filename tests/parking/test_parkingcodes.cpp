#include <string>

#include <gtest/gtest.h>

#include "parking/parkingcodes.h"
#include "parking/parkingentry.h"

using namespace fleetwright;

namespace {

struct ClickCase
{
    const char *name;
    std::u16string text;
    std::u16string code;
    std::u16string result;
};

} // namespace

TEST(ParkingCodeDialog, ClickAddsACodeOrTakesItOut)
{
    const ClickCase cases[] = {
        {"first code into an empty text", u"", u"KLM", u"KLM"},
        {"new code behind a comma", u"KLM", u"DLH", u"KLM,DLH"},
        {"a fifth code fits", u"A,B,C,D", u"E", u"A,B,C,D,E"},
        {"the case of a code counts", u"klm", u"KLM", u"klm,KLM"},
        {"the only code", u"KLM", u"KLM", u""},
        {"one of two", u"KLM,DLH", u"KLM", u"DLH"},
        {"the middle one of three runs the others together", u"A,B,C", u"B", u"AC"},
        {"the first one of three", u"KLM,DLH,BAW", u"KLM", u"DLHBAW"},
        {"one of five", u"A,B,C,D,E", u"C", u"ABDE"},
        {"a code found only inside a longer one takes out the last", u"KLM,DLH,BAW", u"KL", u"KLMDLH"},
        {"the same when the last is the longer one", u"DLH,KLMX", u"KLM", u"DLH"},
        {"an empty code into an empty text", u"", u"", u""},
        {"an empty code matches an empty part", u"A,,B", u"", u"AB"},
    };
    for (const ClickCase &c : cases) {
        SCOPED_TRACE(c.name);
        const ParkingCodeClick click = parkingCodeClick(c.text, c.code);
        EXPECT_EQ(click.text, c.result);
        EXPECT_TRUE(click.message.empty());
    }
}

TEST(ParkingCodeDialog, FiveCodesTakeNoSixth)
{
    const ParkingCodeClick full = parkingCodeClick(u"A,B,C,D,E", u"F");
    EXPECT_EQ(full.text, u"A,B,C,D,E");
    EXPECT_EQ(full.message, u"You are not allowed to add more than five (5) parkig codes");

    // Commas are counted on their low byte, as the typed entry counts them.
    EXPECT_EQ(parkingCodeClick(u"A,B,C,D\u012CE", u"F").message, TOO_MANY_CODES);
    // A code already there is still taken out.
    EXPECT_EQ(parkingCodeClick(u"A,B,C,D,E", u"E").text, u"ABCD");
}

TEST(ParkingCodeDialog, CounterIsCommasPlusOne)
{
    EXPECT_EQ(parkingCodeCounter(u""), u"0 of 5");
    EXPECT_EQ(parkingCodeCounter(u"KLM"), u"1 of 5");
    EXPECT_EQ(parkingCodeCounter(u"A,B,C,D,E"), u"5 of 5");
    // After a removal that ran the codes together the counter shows one.
    EXPECT_EQ(parkingCodeCounter(parkingCodeClick(u"A,B,C", u"B").text), u"1 of 5");
    // Typed text is not held to five codes; the counter shows what stands.
    EXPECT_EQ(parkingCodeCounter(u"A,B,C,D,E,F,"), u"7 of 5");
    EXPECT_EQ(parkingCodeCounter(u","), u"2 of 5");
}
