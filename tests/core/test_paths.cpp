#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "core/paths.h"
#include "platform/utf8.h"

using namespace fleetwright;
using platform::toUtf8;

// Written with "\" and made native, so the rows read the same on every platform.
static std::u16string native(std::u16string text)
{
    return nativeSeparators(std::move(text));
}

// joinPath adds a separator only where none stands; joinPathAlways adds one behind any folder.
TEST(Paths, JoinsWithOneSeparatorOrAlways)
{
    const std::tuple<std::u16string, std::u16string, std::u16string, std::u16string> rows[] = {
        // folder      name                joinPath                joinPathAlways
        {native(u"\\a"), u"b", native(u"\\a\\b"), native(u"\\a\\b")},
        {native(u"\\a\\"), u"b", native(u"\\a\\b"), native(u"\\a\\\\b")},
        {u"a/", u"b", u"a/b", u"a/" + native(u"\\b")},
        {u"", u"b", native(u"\\b"), native(u"\\b")},
        {native(u"\\a"), u"", native(u"\\a\\"), native(u"\\a\\")},
        {native(u"\\a"), u"x\\y", native(u"\\a\\") + u"x\\y", native(u"\\a\\x\\y")},
    };
    for (const auto &[folder, name, joined, always] : rows) {
        SCOPED_TRACE(toUtf8(folder) + " + " + toUtf8(name));
        EXPECT_EQ(joinPath(folder, name), joined);
        EXPECT_EQ(joinPathAlways(folder, name), always);
    }
    EXPECT_EQ(withTrailingSeparator(u""), native(u"\\"));
    EXPECT_EQ(withTrailingSeparator(u"a/"), u"a/");
    EXPECT_EQ(backslashSeparators(native(u"a\\b\\c")), u"a\\b\\c");
}
