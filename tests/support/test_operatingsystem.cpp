#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/utf8.h"
#include "support/operatingsystem.h"

using fleetwright::OperatingSystem;
using fleetwright::OsVersionRecord;
using fleetwright::platform::toUtf8;

namespace {

struct System
{
    const char *label;
    OsVersionRecord record;
    int version;
    int edition;
    std::u16string name;
};

OsVersionRecord nt(std::uint32_t major, std::uint32_t minor, std::uint32_t build, std::uint8_t type,
                   std::uint16_t suite, std::uint32_t productInfo = 0)
{
    OsVersionRecord record;
    record.platformId = 2;
    record.majorVersion = major;
    record.minorVersion = minor;
    record.buildNumber = build;
    record.productType = type;
    record.suiteMask = suite;
    record.productInfo = productInfo;
    return record;
}

OsVersionRecord withServicePack(OsVersionRecord record, const char16_t *text, std::uint16_t major)
{
    record.servicePack = text;
    record.servicePackMajor = major;
    return record;
}

OsVersionRecord windows9x(std::uint32_t minor, std::uint32_t build)
{
    OsVersionRecord record;
    record.platformId = 1;
    record.majorVersion = 4;
    record.minorVersion = minor;
    record.buildNumber = build;
    return record;
}

OsVersionRecord r2(OsVersionRecord record)
{
    record.serverR2 = true;
    return record;
}

OsVersionRecord mediaCenter(OsVersionRecord record)
{
    record.mediaCenter = true;
    return record;
}

} // namespace

TEST(OperatingSystem, NamesWindowsSystemsFromTheirRecord)
{
    const std::vector<System> systems = {
        {"XP Professional SP3", withServicePack(nt(5, 1, 2600, 1, 0x100), u"Service Pack 3", 3), 7, 2,
         u"Microsoft Windows XP Professional"},
        {"XP Home", nt(5, 1, 2600, 1, 0x200), 7, 1, u"Microsoft Windows XP Home Edition"},
        {"XP Media Center beats home", mediaCenter(nt(5, 1, 2600, 1, 0x200)), 7, 7,
         u"Microsoft Windows XP Media Center Edition"},
        {"XP Embedded", nt(5, 1, 2600, 1, 0x40), 7, 2, u"Microsoft Windows XP Embedded"},
        {"XP x64 is a workstation 5.2", nt(5, 2, 3790, 1, 0), 7, 2, u"Microsoft Windows XP Professional"},
        {"Server 2003 R2 Enterprise", r2(nt(5, 2, 3790, 3, 2)), 8, 4,
         u"Microsoft Windows Server 2003 Enterprise Edition R2"},
        {"Server 2003 Web", nt(5, 2, 3790, 3, 0x400), 8, 6, u"Microsoft Windows Server 2003 Web Edition"},
        {"Server 2003 Standard", nt(5, 2, 3790, 2, 0), 8, 3, u"Microsoft Windows Server 2003 Standard Edition"},
        {"Small Business Server 2003", nt(5, 2, 3790, 3, 0x20), 8, 10, u"Microsoft Windows Small Business Server 2003"},
        {"2000 Advanced Server", nt(5, 0, 2195, 3, 2), 6, 4, u"Microsoft Windows 2000 Advanced Server"},
        {"NT 4.0 Enterprise", nt(4, 0, 1381, 3, 2), 5, 4, u"Microsoft Windows NT Server 4.0 Enterprise Edition"},
        {"NT 3.51 Workstation", nt(3, 51, 1057, 1, 0), 4, 2, u"Microsoft Windows NT 3.51 Workstation"},
        {"Vista Home Premium", nt(6, 0, 6002, 1, 0x300, 3), 9, 1, u"Microsoft Windows Vista Home Premium"},
        {"7 Ultimate", nt(6, 1, 7601, 1, 0x100, 1), 11, 2, u"Microsoft Windows 7 Ultimate"},
        {"Server 2008 Datacenter", nt(6, 0, 6001, 3, 0x80, 8), 10, 5, u"Microsoft Windows Server 2008 Datacenter"},
        {"Web Server 2008, no blank", nt(6, 0, 6001, 3, 0x400, 17), 10, 6, u"Microsoft WindowsWeb Server 2008 "},
        {"Web Server 2008 R2, no blank", nt(6, 1, 7600, 3, 0x400, 17), 12, 6, u"Microsoft WindowsWeb Server 2008 R2"},
        {"Vista, product unknown", nt(6, 0, 6000, 1, 0, 0), 9, 2, u"Microsoft Windows Vista [Unbekannt]"},
        {"Vista, unlicensed", nt(6, 0, 6000, 1, 0, 0xABCDABCD), 9, 2, u"Microsoft Windows Vista [Unlizenziert]"},
        {"95", windows9x(0, 0x040003B6), 1, 0, u"Microsoft Windows 95"},
        {"95 OSR 2", windows9x(0, 0x04000457), 1, 0, u"Microsoft Windows 95 OSR 2"},
        {"98", windows9x(10, 0x040A07CE), 2, 0, u"Microsoft Windows 98"},
        {"Me", windows9x(90, 0x045A0BB8), 3, 0, u"Microsoft Windows Me"},
        {"Windows 8 is unknown", nt(6, 2, 9200, 1, 0x100, 48), 0, 2, u"Microsoft Windows"},
        {"unknown platform", nt(10, 0, 19045, 3, 0), 0, 3, u"Microsoft Windows"},
    };
    for (const System &system : systems) {
        SCOPED_TRACE(system.label);
        const OperatingSystem os(system.record, false);
        EXPECT_EQ(os.Version(), system.version);
        EXPECT_EQ(os.Edition(), system.edition);
        EXPECT_EQ(toUtf8(os.Name()), toUtf8(system.name));
    }

    // The unknown platform id 3 (CE) has no name part either.
    OsVersionRecord ce = nt(5, 1, 2600, 1, 0);
    ce.platformId = 3;
    EXPECT_EQ(OperatingSystem(ce, false).Name(), u"Microsoft Windows");
}

TEST(OperatingSystem, ProductInfoTextsAndRevision)
{
    const std::vector<std::pair<std::uint32_t, std::u16string>> texts = {
        {2, u"Home Basic"},
        {4, u"Enterprise"},
        {10, u"Enterprise"},
        {15, u"for Itanium-Based Systems"},
        {25, u"Small Business Server Premium"},
        {28, u"Ultimate N"},
        {29, u""},
        {17, u"Web Server"},
    };
    for (const auto &[value, text] : texts)
        EXPECT_EQ(fleetwright::ProductInfoString(value), text) << value;

    // Windows 95 keeps its version in the high word of the build number; NT's build number is the revision.
    EXPECT_EQ(OperatingSystem(windows9x(0, 0x04000457), false).Revision(), 1111);
    EXPECT_EQ(OperatingSystem(nt(5, 1, 2600, 1, 0), false).Revision(), 2600);
}

TEST(OperatingSystem, AboutLineJoinsNameServicePackAndVersion)
{
    const OperatingSystem xp(withServicePack(nt(5, 1, 2600, 1, 0x100), u"Service Pack 3", 3), false);
    EXPECT_EQ(toUtf8(fleetwright::aboutPlatformText(xp)),
              "Microsoft Windows XP Professional - Service Pack 3 (3.0) - 5.1.2600 (32 Bit)");

    // A minor service pack number alone counts too.
    OsVersionRecord minorOnly = nt(6, 1, 7601, 1, 0, 1);
    minorOnly.servicePack = u"Beta";
    minorOnly.servicePackMinor = 1;
    EXPECT_EQ(toUtf8(fleetwright::aboutPlatformText(OperatingSystem(minorOnly, true))),
              "Microsoft Windows 7 Ultimate - Beta (0.1) - 6.1.7601 (64 Bit)");

    const OperatingSystem noPack(nt(6, 1, 7600, 1, 0, 1), true);
    EXPECT_EQ(toUtf8(fleetwright::aboutPlatformText(noPack)), "Microsoft Windows 7 Ultimate - n/a - 6.1.7600 (64 Bit)");

    OsVersionRecord debian;
    debian.systemName = u"Debian GNU/Linux 12 (bookworm)";
    debian.majorVersion = 6;
    debian.minorVersion = 1;
    EXPECT_EQ(toUtf8(fleetwright::aboutPlatformText(OperatingSystem(debian, true))),
              "Debian GNU/Linux 12 (bookworm) - n/a - 6.1.0 (64 Bit)");
}

TEST(OperatingSystem, ThisMachineHasAName)
{
    const OperatingSystem machine;
    EXPECT_FALSE(machine.Name().empty());
    EXPECT_EQ(machine.Is64BitOS(), fleetwright::platform::Is64BitOS());
}
