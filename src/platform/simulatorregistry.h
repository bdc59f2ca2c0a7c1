#pragma once

#include <string>
#include <string_view>

#include "platform/filelookup.h"

namespace fleetwright::platform {

// What simulator detection needs of the registry: one text value under HKEY_LOCAL_MACHINE, and a way to turn
// the Windows paths that the simulators record there (and in fsx.cfg) into paths of this machine. Start-up
// asks through this interface, so tests can hand it values of their own.
class RegistryReader
{
public:
    virtual ~RegistryReader() = default;

    // The value valueName of the key keyPath under HKEY_LOCAL_MACHINE, opened for querying only. A string
    // (REG_SZ) comes back without its final NUL, a 32-bit number (REG_DWORD) as its decimal text, taken as
    // signed. Any other type, a missing key or value, or any failure gives the empty text; nothing is
    // reported.
    virtual std::u16string GetRegistryValue(std::u16string_view keyPath, std::u16string_view valueName) const = 0;

    // The native path of a Windows path such as "C:\Program Files\FS9\". On Windows the text as it is. Text
    // that is no Windows path (no drive letter and colon, no "\\server\share") is taken as native already
    // and comes back unchanged. A trailing separator stays.
    virtual std::u16string nativePath(std::u16string_view windowsPath) const = 0;
};

// The registry of this machine.
//
// On Windows these are the registry calls themselves, in the registry's 32-bit view (KEY_WOW64_32KEY), so a
// 64-bit build sees what the 32-bit simulators' installers wrote, as a 32-bit program would.
//
// Elsewhere the simulators live in a Wine prefix ($WINEPREFIX, else ~/.wine), and the registry is the
// prefix's system.reg, read as Wine writes it:
//
//     #arch=win64
//
//     [Software\\Wow6432Node\\Microsoft\\Microsoft Games\\Flight Simulator\\9.0] 1700000000
//     #time=1da2b3c4d5e6f70
//     "EXE Path"="C:\\Program Files (x86)\\Microsoft Games\\FS9\\"
//     "Version"=dword:0000000a
//
// Key and value names ignore case. A win64 prefix counts as a 64-bit system (Is64BitOS), so start-up looks
// under Wow6432Node exactly as a 32-bit program in that prefix would. Windows paths go through the prefix's
// dosdevices folder ("c:" links to ../drive_c), and each component below the drive is found without regard
// to case; a path on a drive that the prefix does not map leads nowhere, so it does not exist.
//
// On every platform three variables stand in for the machine when set:
//   FLEETWRIGHT_FS9_DIR  for "EXE Path" of Microsoft Games\Flight Simulator\9.0 (under either prefix),
//   FLEETWRIGHT_FSX_DIR  for "SetupPath" of Microsoft Games\Flight Simulator\10.0,
//   FLEETWRIGHT_APPDATA  for the roaming application data folder (GetSpecialFolder(0x1A)).
// The variable's text is returned as the value itself, so start-up trims it, cuts a trailing backslash and
// tests the folder as it does with the registry's text. A native path passes nativePath unchanged; an empty
// variable reads as a simulator that is not installed.
class SimulatorRegistry final : public RegistryReader
{
public:
    SimulatorRegistry();

    std::u16string GetRegistryValue(std::u16string_view keyPath, std::u16string_view valueName) const override;
    std::u16string nativePath(std::u16string_view windowsPath) const override;

    // Whether this is a 32-bit program on a 64-bit system (IsWow64Process, looked up at run time; false when
    // the call does not exist or fails). Elsewhere: whether the Wine prefix is a win64 one.
    bool Is64BitOS() const;

    // The path of a shell folder, empty when it cannot be found. Only 0x1A, the user's roaming application
    // data, is known off Windows: the prefix's drive_c/users/<$USER>/AppData/Roaming (the user folder found
    // without regard to case; "Application Data" in older prefixes).
    std::u16string GetSpecialFolder(int folderId) const;

private:
    std::u16string m_prefix; // the Wine prefix off Windows; unused on Windows
};

// The shell folder id of the user's roaming application data (CSIDL_APPDATA).
inline constexpr int APPDATA_FOLDER = 0x1A;

// The variable that stands in for a registry value (see SimulatorRegistry), or nullptr when none does.
inline const char *registryOverrideVariable(std::u16string_view keyPath, std::u16string_view valueName)
{
    const auto endsWith = [keyPath](std::u16string_view tail) {
        return keyPath.size() >= tail.size()
            && sameNameIgnoringCase(keyPath.substr(keyPath.size() - tail.size()), tail);
    };
    if (endsWith(u"\\Microsoft Games\\Flight Simulator\\9.0") && sameNameIgnoringCase(valueName, u"EXE Path"))
        return "FLEETWRIGHT_FS9_DIR";
    if (endsWith(u"\\Microsoft Games\\Flight Simulator\\10.0") && sameNameIgnoringCase(valueName, u"SetupPath"))
        return "FLEETWRIGHT_FSX_DIR";
    return nullptr;
}

} // namespace fleetwright::platform
