// What holds for the temporary folder and the regional formats on every platform, whatever the user set.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "platform/regional.h"
#include "platform/tempfolder.h"

using namespace fleetwright::platform;

TEST(TempFolder, EndsInTheSeparator)
{
    const std::u16string folder = TempFolderPath();
    ASSERT_FALSE(folder.empty());
    EXPECT_EQ(folder.back(), static_cast<char16_t>(std::filesystem::path::preferred_separator));
    EXPECT_TRUE(std::filesystem::path(folder).is_absolute());
}

TEST(Regional, FormatsAreReadable)
{
    const char16_t separator = DecimalSeparatorChar();
    EXPECT_TRUE(separator == u'.' || separator == u',' || separator == u'\u066B') << int(separator);
    // 2009-02-13 23:31:30 UTC: whatever the zone, the day is the 13th or the 14th and the year shows.
    const std::u16string date = shortDateText(1234567890);
    EXPECT_TRUE(date.find(u"13") != std::u16string::npos || date.find(u"14") != std::u16string::npos);
    EXPECT_NE(date.find(u"09"), std::u16string::npos);
    // Zones differ by whole quarter hours at least, so the seconds show as they are.
    EXPECT_NE(longTimeText(1234567897).find(u"37"), std::u16string::npos);
}
