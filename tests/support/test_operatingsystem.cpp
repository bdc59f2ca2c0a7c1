#include <cstdint>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "platform/utf8.h"
#include "support/operatingsystem.h"

using namespace fleetwright;
using fleetwright::platform::toUtf8;

// A record of the NT family (platform 2) or, with platform 1, of Windows 95, 98 and Me.
static OsVersionRecord record(std::uint32_t platform, std::uint32_t major, std::uint32_t minor, std::uint32_t build,
                              std::uint8_t type = 0, std::uint16_t suite = 0, std::uint32_t productInfo = 0)
{
    OsVersionRecord record;
    record.platformId = platform, record.majorVersion = major, record.minorVersion = minor, record.buildNumber = build;
    record.productType = type, record.suiteMask = suite, record.productInfo = productInfo;
    return record;
}

TEST(OperatingSystem, NamesWindowsSystemsFromTheirRecord)
{
    OsVersionRecord media = record(2, 5, 1, 2600, 1, 0x200), r2 = record(2, 5, 2, 3790, 3, 2);
    media.mediaCenter = r2.serverR2 = true;
    const std::tuple<OsVersionRecord, int, int, const char *> rows[] = {
        {record(2, 5, 1, 2600, 1, 0x100), 7, 2, " XP Professional"},
        {record(2, 5, 1, 2600, 1, 0x200), 7, 1, " XP Home Edition"},
        {media, 7, 7, " XP Media Center Edition"},
        {record(2, 5, 1, 2600, 1, 0x40), 7, 2, " XP Embedded"},
        {record(2, 5, 2, 3790, 1, 0), 7, 2, " XP Professional"},
        {r2, 8, 4, " Server 2003 Enterprise Edition R2"},
        {record(2, 5, 2, 3790, 3, 0x400), 8, 6, " Server 2003 Web Edition"},
        {record(2, 5, 2, 3790, 2, 0), 8, 3, " Server 2003 Standard Edition"},
        {record(2, 5, 2, 3790, 3, 0x20), 8, 10, " Small Business Server 2003"},
        {record(2, 5, 0, 2195, 3, 2), 6, 4, " 2000 Advanced Server"},
        {record(2, 4, 0, 1381, 3, 2), 5, 4, " NT Server 4.0 Enterprise Edition"},
        {record(2, 3, 51, 1057, 1, 0), 4, 2, " NT 3.51 Workstation"},
        {record(2, 6, 0, 6002, 1, 0x300, 3), 9, 1, " Vista Home Premium"},
        {record(2, 6, 1, 7601, 1, 0x100, 1), 11, 2, " 7 Ultimate"},
        {record(2, 6, 0, 6001, 3, 0x80, 8), 10, 5, " Server 2008 Datacenter"},
        // Web Server 2008 comes without a blank.
        {record(2, 6, 0, 6001, 3, 0x400, 17), 10, 6, "Web Server 2008 "},
        {record(2, 6, 1, 7600, 3, 0x400, 17), 12, 6, "Web Server 2008 R2"},
        {record(2, 6, 0, 6000, 1, 0, 0), 9, 2, " Vista [Unbekannt]"},
        {record(2, 6, 0, 6000, 1, 0, 0xABCDABCD), 9, 2, " Vista [Unlizenziert]"},
        {record(1, 4, 0, 0x040003B6), 1, 0, " 95"},
        {record(1, 4, 0, 0x04000457), 1, 0, " 95 OSR 2"},
        {record(1, 4, 10, 0x040A07CE), 2, 0, " 98"},
        {record(1, 4, 90, 0x045A0BB8), 3, 0, " Me"},
        // Windows 8, an unknown platform (CE) and an unknown version have no name part.
        {record(2, 6, 2, 9200, 1, 0x100, 48), 0, 2, ""},
        {record(2, 10, 0, 19045, 3, 0), 0, 3, ""},
        {record(3, 5, 1, 2600, 1, 0), 0, 2, ""},
    };
    for (const auto &[record, version, edition, name] : rows) {
        const OperatingSystem os(record, false);
        EXPECT_EQ(std::tuple(toUtf8(os.Name()), os.Version(), os.Edition()),
                  std::tuple("Microsoft Windows" + std::string(name), version, edition));
    }
    // The last product type that has a name, and the first that has none.
    EXPECT_EQ(ProductInfoString(28), u"Ultimate N");
    EXPECT_EQ(ProductInfoString(29), u"");
}

TEST(OperatingSystem, RevisionAndAboutLine)
{
    // Windows 95 keeps its version in the high word of the build number; NT's build number is the revision.
    EXPECT_EQ(OperatingSystem(record(1, 4, 0, 0x04000457), false).Revision(), 1111);
    EXPECT_EQ(OperatingSystem(record(2, 5, 1, 2600, 1), false).Revision(), 2600);
    OsVersionRecord xp = record(2, 5, 1, 2600, 1, 0x100);
    xp.servicePack = u"Service Pack 3";
    xp.servicePackMajor = 3;
    EXPECT_EQ(toUtf8(aboutPlatformText(OperatingSystem(xp, false))),
              "Microsoft Windows XP Professional - Service Pack 3 (3.0) - 5.1.2600 (32 Bit)");
    OsVersionRecord seven = record(2, 6, 1, 7601, 1, 0, 1);
    EXPECT_EQ(toUtf8(aboutPlatformText(OperatingSystem(seven, true))),
              "Microsoft Windows 7 Ultimate - n/a - 6.1.7601 (64 Bit)");
    // A minor service pack number alone counts too.
    seven.servicePack = u"Beta";
    seven.servicePackMinor = 1;
    EXPECT_EQ(toUtf8(aboutPlatformText(OperatingSystem(seven, true))),
              "Microsoft Windows 7 Ultimate - Beta (0.1) - 6.1.7601 (64 Bit)");
    OsVersionRecord debian = record(0, 6, 1, 0);
    debian.systemName = u"Debian GNU/Linux 12 (bookworm)";
    EXPECT_EQ(toUtf8(aboutPlatformText(OperatingSystem(debian, true))),
              "Debian GNU/Linux 12 (bookworm) - n/a - 6.1.0 (64 Bit)");
    EXPECT_FALSE(OperatingSystem().Name().empty());
    EXPECT_EQ(OperatingSystem().Is64BitOS(), platform::Is64BitOS());
}
