#include "support/operatingsystem.h"

#include <utility>

namespace fleetwright {

namespace {

constexpr std::uint32_t PLATFORM_WINDOWS = 1; // 95, 98, Me
constexpr std::uint32_t PLATFORM_NT = 2;
constexpr std::uint8_t WORKSTATION = 1;

// Suite mask bits of the version record.
constexpr std::uint16_t SUITE_SMALL_BUSINESS = 0x0001;
constexpr std::uint16_t SUITE_ENTERPRISE = 0x0002;
constexpr std::uint16_t SUITE_SMALL_BUSINESS_RESTRICTED = 0x0020;
constexpr std::uint16_t SUITE_EMBEDDED = 0x0040;
constexpr std::uint16_t SUITE_DATACENTER = 0x0080;
constexpr std::uint16_t SUITE_PERSONAL = 0x0200;
constexpr std::uint16_t SUITE_BLADE = 0x0400;
constexpr std::uint16_t SUITE_STORAGE_SERVER = 0x2000;
constexpr std::uint16_t SUITE_HOME_SERVER = 0x8000;

enum EditionValue : int
{
    STARTER = 0,
    HOME = 1,
    PROFESSIONAL = 2,
    STANDARD = 3,
    ENTERPRISE = 4,
    DATACENTER = 5,
    WEB = 6,
    MEDIA_CENTER = 7,
    TABLET_PC = 8,
    HOME_SERVER = 9,
    SMALL_BUSINESS = 10,
};

constexpr std::uint32_t WEB_SERVER_PRODUCT = 17;

std::u16string decimal(std::int64_t value)
{
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
}

std::u16string xpPart(const OsVersionRecord &record)
{
    if (record.suiteMask & SUITE_EMBEDDED)
        return u" XP Embedded";
    switch (Edition(record)) {
    case MEDIA_CENTER:
        return u" XP Media Center Edition";
    case TABLET_PC:
        return u" XP Tablet PC Edition";
    case STARTER:
        return u" XP Starter Edition";
    case HOME:
        return u" XP Home Edition";
    default:
        return u" XP Professional";
    }
}

std::u16string server2003Part(const OsVersionRecord &record)
{
    std::u16string part;
    const int edition = Edition(record);
    if (record.suiteMask & SUITE_STORAGE_SERVER)
        part = u" Storage Server 2003";
    else if (edition == HOME_SERVER)
        part = u" Home Server";
    else if (edition == SMALL_BUSINESS)
        part = u" Small Business Server 2003";
    else if (edition == WEB)
        part = u" Server 2003 Web Edition";
    else if (edition == DATACENTER)
        part = u" Server 2003 Datacenter Edition";
    else if (edition == ENTERPRISE)
        part = u" Server 2003 Enterprise Edition";
    else
        part = u" Server 2003 Standard Edition";
    if (record.serverR2)
        part += u" R2";
    return part;
}

std::u16string namePart(const OsVersionRecord &record)
{
    const bool workstation = record.productType == WORKSTATION;
    switch (Version(record)) {
    case 1:
        return Revision(record) == 1111 ? u" 95 OSR 2" : u" 95";
    case 2:
        return u" 98";
    case 3:
        return u" Me";
    case 4:
        return workstation ? u" NT 3.51 Workstation" : u" NT 3.51 Server";
    case 5:
        if (workstation)
            return u" NT Workstation 4.0";
        return (record.suiteMask & SUITE_ENTERPRISE) ? u" NT Server 4.0 Enterprise Edition" : u" NT Server 4.0";
    case 6:
        if (workstation)
            return u" 2000 Professional";
        if (record.suiteMask & SUITE_DATACENTER)
            return u" 2000 Datacenter Server";
        if (record.suiteMask & SUITE_ENTERPRISE)
            return u" 2000 Advanced Server";
        return u" 2000 Server";
    case 7:
        return xpPart(record);
    case 8:
        return server2003Part(record);
    case 9:
        return u" Vista " + ProductInfoString(record.productInfo);
    case 10:
        // No blank before "Web": the name reads "Microsoft WindowsWeb Server 2008 ", and is kept so.
        if (record.productInfo == WEB_SERVER_PRODUCT)
            return u"Web Server 2008 ";
        return u" Server 2008 " + ProductInfoString(record.productInfo);
    case 11:
        return u" 7 " + ProductInfoString(record.productInfo);
    case 12:
        if (record.productInfo == WEB_SERVER_PRODUCT)
            return u"Web Server 2008 R2";
        return u" Server 2008 R2" + ProductInfoString(record.productInfo);
    default:
        return {};
    }
}

} // namespace

int Version(const OsVersionRecord &record)
{
    const std::uint32_t major = record.majorVersion;
    const std::uint32_t minor = record.minorVersion;
    const bool workstation = record.productType == WORKSTATION;
    if (record.platformId == PLATFORM_WINDOWS && major == 4) {
        if (minor == 0)
            return 1;
        if (minor == 10)
            return 2;
        if (minor == 90)
            return 3;
        return 0;
    }
    if (record.platformId != PLATFORM_NT)
        return 0;
    if (major == 3 && minor == 51)
        return 4;
    if (major == 4)
        return 5;
    if (major == 5) {
        if (minor == 0)
            return 6;
        if (minor == 1 || (minor == 2 && workstation))
            return 7;
        if (minor == 2)
            return 8;
        return 0;
    }
    if (major == 6 && minor == 0)
        return workstation ? 9 : 10;
    if (major == 6 && minor == 1)
        return workstation ? 11 : 12;
    return 0;
}

int Edition(const OsVersionRecord &record)
{
    if (record.productType == WORKSTATION) {
        if (record.starter)
            return STARTER;
        if (record.mediaCenter)
            return MEDIA_CENTER;
        if (record.tabletPc)
            return TABLET_PC;
        return (record.suiteMask & SUITE_PERSONAL) ? HOME : PROFESSIONAL;
    }
    if (record.productType == 2 || record.productType == 3) {
        const std::uint16_t suite = record.suiteMask;
        if (suite & SUITE_HOME_SERVER)
            return HOME_SERVER;
        if (suite & SUITE_ENTERPRISE)
            return ENTERPRISE;
        if (suite & SUITE_DATACENTER)
            return DATACENTER;
        if (suite & SUITE_BLADE)
            return WEB;
        if (suite & (SUITE_SMALL_BUSINESS | SUITE_SMALL_BUSINESS_RESTRICTED))
            return SMALL_BUSINESS;
        return STANDARD;
    }
    return STARTER;
}

std::u16string ProductInfoString(std::uint32_t productInfo)
{
    switch (productInfo) {
    case 0xABCDABCD:
        return u"[Unlizenziert]";
    case 0:
        return u"[Unbekannt]";
    case 1:
        return u"Ultimate";
    case 2:
        return u"Home Basic";
    case 3:
        return u"Home Premium";
    case 4:
    case 10:
        return u"Enterprise";
    case 5:
        return u"Home Basic N";
    case 6:
        return u"Business";
    case 7:
        return u"Standard";
    case 8:
        return u"Datacenter";
    case 9:
        return u"Small Business Server";
    case 11:
        return u"Starter";
    case 12:
        return u"Datacenter (Core)";
    case 13:
        return u"Standard (Core)";
    case 14:
        return u"Enterprise (Core)";
    case 15:
        return u"for Itanium-Based Systems";
    case 16:
        return u"Business N";
    case 17:
        return u"Web Server";
    case 18:
        return u"Cluster";
    case 19:
        return u"Home Server";
    case 20:
        return u"Storage Express";
    case 21:
        return u"Storage Standard";
    case 22:
        return u"Storage Workgroup";
    case 23:
        return u"Storage Enterprise";
    case 24:
        return u"Server for Small Business";
    case 25:
        return u"Small Business Server Premium";
    case 26:
        return u"Home Premium N";
    case 27:
        return u"Enterprise N";
    case 28:
        return u"Ultimate N";
    default:
        return {};
    }
}

std::int32_t Revision(const OsVersionRecord &record)
{
    if (record.platformId == PLATFORM_WINDOWS)
        return static_cast<std::int32_t>(record.buildNumber & 0xFFFF);
    return static_cast<std::int32_t>(record.buildNumber);
}

std::u16string Name(const OsVersionRecord &record)
{
    if (!record.systemName.empty())
        return record.systemName;
    return u"Microsoft Windows" + namePart(record);
}

OperatingSystem::OperatingSystem()
    : OperatingSystem(platform::ReadOsVersion(), platform::Is64BitOS())
{}

OperatingSystem::OperatingSystem(OsVersionRecord record, bool is64Bit)
    : m_record(std::move(record))
    , m_is64Bit(is64Bit)
{}

std::u16string aboutPlatformText(const OperatingSystem &system)
{
    std::u16string servicePack = u"n/a";
    if (system.ServicePackMajor() + system.ServicePackMinor() >= 1)
        servicePack = system.ServicePack() + u" (" + decimal(system.ServicePackMajor()) + u"."
            + decimal(system.ServicePackMinor()) + u")";
    const std::u16string version = decimal(system.Major()) + u"." + decimal(system.Minor()) + u"."
        + decimal(system.Revision()) + (system.Is64BitOS() ? u" (64 Bit)" : u" (32 Bit)");
    return system.Name() + u" - " + servicePack + u" - " + version;
}

} // namespace fleetwright
