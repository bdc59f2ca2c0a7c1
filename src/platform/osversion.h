#pragma once

#include <cstdint>
#include <string>

namespace fleetwright::platform {

// The system's version as Windows reports it in its extended version record, plus the few system values that
// turn it into a readable name. Off Windows only the numbers and systemName are filled; platformId stays 0,
// which no Windows system has.
struct OsVersionRecord
{
    std::uint32_t majorVersion = 0;
    std::uint32_t minorVersion = 0;
    std::uint32_t buildNumber = 0;
    std::uint32_t platformId = 0; // 1: Windows 95, 98, Me; 2: the NT family
    std::u16string servicePack;   // "Service Pack 3", up to its terminating NUL
    std::uint16_t servicePackMajor = 0;
    std::uint16_t servicePackMinor = 0;
    std::uint16_t suiteMask = 0;
    std::uint8_t productType = 0;  // 1 workstation, 2 domain controller, 3 server
    std::uint32_t productInfo = 0; // GetProductInfo, from Vista on; 0 before
    bool tabletPc = false;         // system metric 86
    bool mediaCenter = false;      // system metric 87
    bool starter = false;          // system metric 88
    bool serverR2 = false;         // system metric 89, Windows Server 2003 R2
    std::uint16_t languageId = 0;  // the system's default language (0 off Windows)
    std::u16string languageName;   // its name; off Windows the locale named by the environment
    std::int64_t bootTime = 0;     // seconds since 1970 when the system started, to the second
    std::u16string systemName;     // off Windows the system's own name, "Debian GNU/Linux 12 (bookworm)"
};

// This machine's record. On Windows: GetVersionExA with the short record, then with the long one where the
// system has it, GetProductInfo from version 6 on, and the system metrics. Elsewhere: uname and
// /etc/os-release; the version numbers are those of the kernel release ("6.1.0-27-amd64" gives 6, 1, 0).
OsVersionRecord ReadOsVersion();

// Whether the system is a 64-bit one. On Windows: a 64-bit program runs on nothing else, and a 32-bit one asks
// IsWow64Process, looked up at run time (false where the call does not exist or fails). Elsewhere: by the
// machine name that uname gives ("x86_64", "aarch64").
bool Is64BitOS();

} // namespace fleetwright::platform
