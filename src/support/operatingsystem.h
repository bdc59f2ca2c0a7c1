#pragma once

#include <cstdint>
#include <string>

#include "platform/osversion.h"

namespace fleetwright {

using platform::OsVersionRecord;

// The readable name of a Windows version and its parts, computed from the version record alone, so that any
// system's record can be named on any machine.

// The family of the system: 0 unknown, 1 Windows 95, 2 98, 3 Me, 4 NT 3.51, 5 NT 4.0, 6 2000, 7 XP,
// 8 Server 2003, 9 Vista, 10 Server 2008, 11 Windows 7, 12 Server 2008 R2.
int Version(const OsVersionRecord &record);

// The edition: for a workstation 0 starter, 7 media center, 8 tablet PC, 1 home, 2 professional; for a server
// by its suite mask 9 home server, 4 enterprise, 5 datacenter, 6 web, 10 small business, 3 standard; 0 for any
// other product type.
int Edition(const OsVersionRecord &record);

// The edition text of a GetProductInfo number, "Home Premium" for 3; empty for a number the table lacks.
std::u16string ProductInfoString(std::uint32_t productInfo);

// The build number, except on the old platform 1 (95, 98, Me), which keeps other data in its high word.
std::int32_t Revision(const OsVersionRecord &record);

// "Microsoft Windows" and the family's name part, "Microsoft Windows XP Professional". A record that is no
// Windows one (systemName filled) gives the system's own name.
std::u16string Name(const OsVersionRecord &record);

// The system as the program reads it once, with the record's values as read-only members.
class OperatingSystem
{
public:
    // This machine.
    OperatingSystem();
    // A given system; is64Bit stands for what IsWow64Process would say.
    OperatingSystem(OsVersionRecord record, bool is64Bit);

    bool Is64BitOS() const { return m_is64Bit; }
    int Version() const { return fleetwright::Version(m_record); }
    bool IsWindowsServer2003R2() const { return m_record.serverR2; }
    std::u16string Name() const { return fleetwright::Name(m_record); }
    std::int32_t Major() const { return static_cast<std::int32_t>(m_record.majorVersion); }
    std::int32_t Minor() const { return static_cast<std::int32_t>(m_record.minorVersion); }
    std::int32_t Revision() const { return fleetwright::Revision(m_record); }
    const std::u16string &ServicePack() const { return m_record.servicePack; }
    int ServicePackMajor() const { return m_record.servicePackMajor; }
    int ServicePackMinor() const { return m_record.servicePackMinor; }
    std::uint32_t ProductInfo() const { return m_record.productInfo; }
    std::u16string ProductInfoString() const { return fleetwright::ProductInfoString(m_record.productInfo); }
    int ProductType() const { return m_record.productType; }
    int SuiteMask() const { return m_record.suiteMask; }
    int Edition() const { return fleetwright::Edition(m_record); }

    // The whole record, language and boot time included.
    const OsVersionRecord &record() const { return m_record; }

private:
    OsVersionRecord m_record;
    bool m_is64Bit = false;
};

// The about dialog's platform line: name, service pack and version joined by " - ",
// "Microsoft Windows XP Professional - Service Pack 3 (3.0) - 5.1.2600 (32 Bit)". A system with no service pack
// shows "n/a" in the middle.
std::u16string aboutPlatformText(const OperatingSystem &system);

} // namespace fleetwright
